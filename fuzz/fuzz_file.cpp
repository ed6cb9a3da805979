// A file from anywhere. It is read in place from a window; reading it through the operations of a stream gives the same
// object or the same words, and the same place to stop at.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "support.h"

namespace {

using namespace tessaret;
using tessaret::fuzz::Require;

std::string_view Words(const DataSetCoder& coder) {
  return coder.ErrorText() == nullptr ? std::string_view() : coder.ErrorText();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static fuzz::MemoryFile file;
  const fuzz::Input input(data, size);
  file.Hold(input.bytes);
  const bool pixels = input.Option(0);
  const bool strict = input.Option(1);
  const RTC* dictionary = input.Option(2) ? nullptr : fuzz::StandardDictionary();

  DataSetCoder coder(dictionary);
  const auto object = coder.LoadFile(file.Path(), pixels, strict);
  Require((object == nullptr) == (coder.ErrorText() != nullptr), "either an object or words");

  DataSetCoder plainCoder(dictionary);
  fuzz::PlainFileBuffer plainBuffer;
  const auto plain = plainCoder.LoadFile(file.Path(), pixels, strict, &plainBuffer);
  Require((plain == nullptr) == (object == nullptr), "both load it or none does");
  Require(Words(coder) == Words(plainCoder), "equal words");
  fuzz::RequireSame(coder.LastStop(), plainCoder.LastStop());
  if (!object) return 0;
  fuzz::RequireSame(*object, *plain);
  fuzz::RequireWithin(*object, input.bytes.size());
  return 0;
}
