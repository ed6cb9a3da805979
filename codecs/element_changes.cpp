#include "element_changes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "base/text.h"
#include "failure.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint16_t Type(char first, char second) {
  return static_cast<std::uint16_t>(first << 8 | second);
}

struct Attribute {
  std::uint16_t group;
  std::uint16_t element;
  std::uint16_t type;
};

constexpr Attribute kImageType = {0x0008, 0x0008, Type('C', 'S')};
constexpr Attribute kPhotometric = {0x0028, 0x0004, Type('C', 'S')};
constexpr Attribute kPlanar = {0x0028, 0x0006, Type('U', 'S')};
constexpr Attribute kBitsAllocated = {0x0028, 0x0100, Type('U', 'S')};
constexpr Attribute kBitsStored = {0x0028, 0x0101, Type('U', 'S')};
constexpr Attribute kHighBit = {0x0028, 0x0102, Type('U', 'S')};
constexpr Attribute kLossy = {0x0028, 0x2110, Type('C', 'S')};
constexpr Attribute kLossyRatio = {0x0028, 0x2112, Type('D', 'S')};
constexpr Attribute kLossyMethod = {0x0028, 0x2114, Type('C', 'S')};

/// What colours are called once they are not compressed: coded names stand for transforms or subsampling that are undone then.
struct NativeName {
  std::string_view coded;
  std::string_view native;
};
constexpr NativeName kNativeNames[] = {
    {"YBR_FULL_422", "YBR_FULL"},
    {"YBR_RCT", "RGB"},
    {"YBR_ICT", "RGB"},
};

std::string TextOf(const DICOMObject* object, const Attribute& attribute) {
  const VR* element = tessaret_codec_element(object, attribute.group, attribute.element);
  const std::uint8_t* bytes = tessaret_codec_bytes(element);
  if (bytes == nullptr) return {};
  return std::string(
      Trimmed({reinterpret_cast<const char*>(bytes), tessaret_codec_length(element)}));
}

/// The engine refuses only what it has no memory for: all these elements are a codec's to change.
void SetBytes(DICOMObject* object, const Attribute& attribute, Bytes bytes) {
  if (tessaret_codec_set(object, attribute.group, attribute.element, attribute.type, bytes.data(),
                         static_cast<std::uint32_t>(bytes.size())) == 0) {
    throw std::bad_alloc();
  }
}

void SetText(DICOMObject* object, const Attribute& attribute, std::string_view text) {
  SetBytes(object, attribute, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void SetNumber(DICOMObject* object, const Attribute& attribute, std::uint32_t number) {
  const std::array<std::uint8_t, 2> bytes = {static_cast<std::uint8_t>(number & 0xFF),
                                             static_cast<std::uint8_t>(number >> 8)};
  SetBytes(object, attribute, bytes);
}

std::size_t SeparatorsIn(const std::string& values) {
  return static_cast<std::size_t>(std::count(values.begin(), values.end(), '\\'));
}

std::size_t CountOf(const std::string& values) {
  return values.empty() ? 0 : SeparatorsIn(values) + 1;
}

/// Puts the value at this place, from 0, behind those that are there. Empty ones fill up what lies between.
void PutBehind(DICOMObject* object, const Attribute& attribute, std::string values,
               std::size_t place, std::string_view value) {
  values.append(place - SeparatorsIn(values), '\\');
  SetText(object, attribute, values.append(value));
}

std::string NativePhotometric(const FrameFormat& format, const DecodedFrame& decoded) {
  if (format.samples == 1) return format.photometric;
  if (decoded.isRgb) return "RGB";
  for (const NativeName& name : kNativeNames) {
    if (format.photometric == name.coded) return std::string(name.native);
  }
  return format.photometric;
}

void DescribeColour(DICOMObject* object, const FrameFormat& format, const DecodedFrame& decoded,
                    std::uint32_t index) {
  const std::string name = NativePhotometric(format, decoded);
  const std::string present = TextOf(object, kPhotometric);
  if (present == name) return;
  if (index > 0) {
    Fail("its colours are %s, those of the frames before are %s", name.c_str(), present.c_str());
  }
  SetText(object, kPhotometric, name);
}

void SetPlanar(DICOMObject* object, const FrameFormat& format) {
  const bool isThere =
      tessaret_codec_length(tessaret_codec_element(object, kPlanar.group, kPlanar.element)) == 2;
  if (format.samples > 1 ? format.isPlanar || !isThere : format.isPlanar) {
    SetNumber(object, kPlanar, 0);
  }
}

/// A decoder that loses something goes beyond the values that were stored, and some streams have more bits than the data set says.
void DescribeBits(DICOMObject* object, const FrameFormat& format, const DecodedFrame& decoded,
                  Bytes frame) {
  if (format.bitsAllocated == 1) {
    SetNumber(object, kBitsAllocated, 8);
    SetNumber(object, kBitsStored, 1);
    SetNumber(object, kHighBit, 0);
    return;
  }
  // Bits beside those stored may be overlays (DICOM PS3.5, 8.1.1), which lossless methods bring back as they were.
  if (!decoded.isLossy || format.highBit + 1 != format.bitsStored) return;
  const std::uint32_t said = tessaret_codec_uint16(object, kBitsStored.group, kBitsStored.element);
  if (decoded.precision <= said || !NeedsMoreThanStored(frame, format)) return;
  SetNumber(object, kBitsStored, decoded.precision);
  SetNumber(object, kHighBit, decoded.precision - 1);
}

std::string RatioText(std::uint64_t nativeBytes, std::uint64_t codedBytes) {
  // Never through the locale. Two digits behind the point: 9999999999.99 has 13 characters of the 16 that a DS may have. Of an image
  // that is smaller than what it becomes they could be zeros.
  std::array<char, 32> digits{};
  char* const begin = digits.data();
  const double ratio = static_cast<double>(nativeBytes) / static_cast<double>(codedBytes);
  const auto end =
      ratio < 1 ? std::to_chars(begin, begin + digits.size(), ratio, std::chars_format::general, 3)
                : std::to_chars(begin, begin + digits.size(), ratio, std::chars_format::fixed, 2);
  return {begin, end.ptr};
}

void NameDerived(DICOMObject* object) {
  constexpr std::string_view kDerived = "DERIVED";
  std::string values = TextOf(object, kImageType);
  if (values.empty()) values = "DERIVED\\PRIMARY";
  const std::size_t end = std::min(values.find('\\'), values.size());
  SetText(object, kImageType, values.replace(0, end, kDerived));
}

}  // namespace

void DescribeDecoded(DICOMObject* object, const FrameFormat& format, const DecodedFrame& decoded,
                     Bytes frame, std::uint32_t index) {
  DescribeColour(object, format, decoded, index);
  if (index == 0) SetPlanar(object, format);
  DescribeBits(object, format, decoded, frame);
}

void DescribeEncoded(DICOMObject* object, const FrameFormat& format, const FrameCoder& coder,
                     bool isLossy) {
  const std::string name = coder.EncodedPhotometric(format, isLossy);
  if (name != format.photometric) SetText(object, kPhotometric, name);
  SetPlanar(object, format);
}

void DescribeLoss(DICOMObject* object, std::uint64_t nativeBytes, std::uint64_t codedBytes,
                  const char* method) {
  SetText(object, kLossy, "01");
  // Both have as many values, though many files tell only one of the two.
  std::string ratios = TextOf(object, kLossyRatio);
  std::string methods = TextOf(object, kLossyMethod);
  const std::size_t earlier = std::max(CountOf(ratios), CountOf(methods));
  PutBehind(object, kLossyRatio, std::move(ratios), earlier, RatioText(nativeBytes, codedBytes));
  PutBehind(object, kLossyMethod, std::move(methods), earlier, method);
  NameDerived(object);
}

}  // namespace tessaret::codecs
