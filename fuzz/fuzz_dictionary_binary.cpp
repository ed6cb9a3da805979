// The binary form of the data dictionary. Whatever it holds, the dictionary is sound afterwards; a file that is refused
// leaves what was loaded, holds the entries that came whole, or had none.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/rtc.h"
#include "core/rtc_binary.h"
#include "dictionary_checks.h"

namespace {

using tessaret::RTC;
using tessaret::fuzz::Require;

constexpr std::string_view kBefore = "\n{0x0008 0x0060 CS \"before\"}\n";

void Check(const std::uint8_t* data, std::size_t size, bool keepDescriptions) {
  RTC rtc(keepDescriptions);
  Require(rtc.AttachBytes(kBefore.data(), kBefore.size()));
  const bool good = rtc.AttachBytes(data, size);
  Require(good == rtc.LastErrorText().empty());
  Require(!good || rtc.Table);
  tessaret::fuzz::RequireSound(rtc);
  tessaret::fuzz::RequireBinaryRoundTrip(rtc);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The mark comes from here, so that no input is spent on the other form.
  std::string file(tessaret::kRtcBinaryMark);
  const std::size_t skipped = size < file.size() ? size : file.size();
  file.append(reinterpret_cast<const char*>(data) + skipped, size - skipped);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(file.data());
  Check(bytes, file.size(), true);
  Check(bytes, file.size(), false);
  return 0;
}
