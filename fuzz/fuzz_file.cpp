// A file from anywhere. It is read in place from a window; reading it through the operations of a stream gives the same
// object or the same words, and the same place to stop at. So does a reader that steps over long pixel data, of everything else.
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

/// Loads once more, past the pixel data that is longer than the upper bits of the options say.
void RequireSteppingAgrees(const fuzz::Input& input, const char* path, const DataSetCoder& coder,
                           const DICOMObject* whole) {
  const std::uint32_t longest = input.options >> 4;
  fuzz::PlainFileBuffer plainBuffer;
  for (FileBuffer* buffer :
       {static_cast<FileBuffer*>(nullptr), static_cast<FileBuffer*>(&plainBuffer)}) {
    DataSetCoder stepping(coder.Dictionary);
    stepping.LongestPixelValue = longest;
    const auto stepped = stepping.LoadFile(path, input.Option(0), input.Option(1), buffer);
    Require((stepped == nullptr) == (whole == nullptr),
            "it is loaded past the pixels or not at all");
    Require(Words(stepping) == Words(coder), "equal words past the pixels");
    fuzz::RequireSame(stepping.LastStop(), coder.LastStop());
    fuzz::RequireSame(stepping.Oddities(), coder.Oddities());
    if (stepped != nullptr && whole != nullptr) fuzz::RequireSameBesides(*whole, *stepped, longest);
  }
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
  RequireSteppingAgrees(input, file.Path(), coder, object.get());
  if (!object) return 0;
  fuzz::RequireSame(*object, *plain);
  fuzz::RequireWithin(*object, input.bytes.size());
  return 0;
}
