// Text by its character sets: a byte that chooses the type, the value of (0008,0005) to the end of its line, and the text.
//
// Whatever the bytes are, what comes out is UTF-8, lines are decoded one by one, a limit leaves the start as it is, and what can be
// written again reads back the same.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include "decoded_text.h"

namespace {

using tessaret::tool::VrCode;
using namespace tessaret::tool;
namespace type_code = tessaret::tool::type_code;

constexpr VrCode kTypes[] = {type_code::PN, type_code::LO, type_code::LT, type_code::UT};

void Require(bool holds) {
  if (!holds) std::abort();
}

void RequireLinesByThemselves(const CharacterSets& sets, std::string_view text) {
  const std::size_t end = text.find('\n');
  if (end == std::string_view::npos) return;
  Require(DecodedText(sets, type_code::LT, text) ==
          DecodedText(sets, type_code::LT, text.substr(0, end)) + '\n' +
              DecodedText(sets, type_code::LT, text.substr(end + 1)));
}

/// A listing that cuts the value shows the same.
void RequireStart(const CharacterSets& sets, VrCode type, std::string_view text,
                  const std::string& whole) {
  constexpr std::size_t kFew = 7;
  Require(Escaped(DecodedText(sets, type, text, kFew), kFew) == Escaped(whole, kFew));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const VrCode type = kTypes[data[0] % std::size(kTypes)];
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  const CharacterSets sets(rest.substr(0, end));
  const std::string_view text = rest.substr(std::min(end + 1, rest.size()));

  const std::string whole = DecodedText(sets, type, text);
  Require(sets.IsUnnamed() ? whole == text : IsUtf8(whole));
  RequireLinesByThemselves(sets, text);
  RequireStart(sets, type, text, whole);
  if (const auto bytes = EncodedText(sets, type, whole))
    Require(DecodedText(sets, type, *bytes) == whole);
  return 0;
}
