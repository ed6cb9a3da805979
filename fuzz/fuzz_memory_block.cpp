// A file as a block of memory, from anywhere. The block is read in place; reading it through a plain stream gives the same.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "support.h"

namespace {

using namespace tessaret;
using tessaret::fuzz::Require;

constexpr std::size_t kMarkAt = 128;
constexpr std::size_t kMarkEnd = 132;

bool HasMark(std::span<const std::uint8_t> bytes) {
  return bytes.size() >= kMarkEnd && std::memcmp(bytes.data() + kMarkAt, "DICM", 4) == 0;
}

/// Loads what LoadMemory has loaded once more, through the operations of a stream.
void RequirePlainReadingAgrees(const fuzz::Input& input, const DataSetCoder& coder,
                               const DICOMObject* object) {
  const auto dataSet = input.bytes.subspan(HasMark(input.bytes) ? kMarkEnd : 0);
  const bool guessExplicit = dataSet.size() >= 6 && static_cast<std::int8_t>(dataSet[5]) > 10;
  DataSetCoder plainCoder(coder.Dictionary);
  plainCoder.FileMode = true;
  fuzz::PlainMemoryBuffer buffer(fuzz::BlockOf(dataSet), static_cast<std::uint32_t>(dataSet.size()),
                                 false);
  buffer.Position = static_cast<std::uint32_t>(input.bytes.size() - dataSet.size());
  DICOMDataObject plain;
  const bool read = plainCoder.File_ParseRawVRIntoDCM(
      buffer, plain, guessExplicit ? kExplicitLittle : kImplicitLittle, input.Option(0));
  Require(read == (object != nullptr), "plain reading has the same outcome");
  fuzz::RequireSame(plainCoder.LastStop(), coder.LastStop());
  if (object != nullptr) fuzz::RequireSame(plain, *object);
}

/// Loads it once more, past the pixel data that is longer than the upper bits of the options say.
void RequireSteppingAgrees(const fuzz::Input& input, const DataSetCoder& coder,
                           const DICOMObject* whole) {
  DataSetCoder stepping(coder.Dictionary);
  stepping.LongestPixelValue = input.options >> 4;
  const auto stepped =
      stepping.LoadMemory(input.bytes.data(), input.bytes.size(), input.Option(0), input.Option(1));
  Require((stepped == nullptr) == (whole == nullptr), "it is loaded past the pixels or not at all");
  fuzz::RequireSame(stepping.LastStop(), coder.LastStop());
  fuzz::RequireSame(stepping.Oddities(), coder.Oddities());
  if (stepped != nullptr && whole != nullptr)
    fuzz::RequireSameBesides(*whole, *stepped, stepping.LongestPixelValue);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Input input(data, size);
  const bool strict = input.Option(1);
  DataSetCoder coder(input.Option(2) ? nullptr : fuzz::StandardDictionary());
  const std::unique_ptr<DICOMDataObject> object =
      coder.LoadMemory(input.bytes.data(), input.bytes.size(), input.Option(0), strict);
  Require((object == nullptr) == (coder.ErrorText() != nullptr), "either an object or words");
  if (strict && !HasMark(input.bytes)) {
    Require(object == nullptr, "strict loading asks for the mark");
    Require(coder.ErrorText() == std::string_view("Error checking DICOM MetaHeader"),
            "it says that the mark is not there");
    return 0;
  }
  if (object) fuzz::RequireWithin(*object, input.bytes.size());
  RequirePlainReadingAgrees(input, coder, object.get());
  RequireSteppingAgrees(input, coder, object.get());
  return 0;
}
