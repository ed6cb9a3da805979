#include "core/image_info.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

#include "base/checked.h"
#include "base/text.h"

namespace tessaret {
namespace {

constexpr std::uint16_t kImageGroup = 0x0028;
constexpr std::uint16_t kSamples = 0x0002;
constexpr std::uint16_t kPhotometric = 0x0004;
constexpr std::uint16_t kPlanarConfiguration = 0x0006;
constexpr std::uint16_t kFrames = 0x0008;
constexpr std::uint16_t kRows = 0x0010;
constexpr std::uint16_t kColumns = 0x0011;
constexpr std::uint16_t kBitsAllocated = 0x0100;
constexpr std::uint16_t kBitsStored = 0x0101;

/// What is looked at of the number of frames.
constexpr std::size_t kLongestFrames = 31;

/// The elements that are read as numbers of 16 bits.
constexpr std::array kNumbers = {kSamples, kPlanarConfiguration, kRows,
                                 kColumns, kBitsAllocated,       kBitsStored};

/// Types whose two bytes may be a number of 16 bits. Two characters of text are none.
constexpr std::array kNumberTypes = {type_code::kNone, type_code::US, type_code::SS,
                                     type_code::UN,    type_code::OB, type_code::OW};

std::string_view ValueIn(const VR* vr) {
  if (vr == nullptr || vr->Data == nullptr) return {};
  return {reinterpret_cast<const char*>(vr->Data), vr->Length};
}

std::uint32_t NumberIn(const DICOMObject& object, std::uint16_t element) {
  return object.GetUINT16(kImageGroup, element);
}

bool IsSound(const DICOMObject& object, std::uint16_t element) {
  const VR* vr = object.GetVR(kImageGroup, element);
  if (vr == nullptr || vr->Data == nullptr || vr->Length != 2) return true;  // counts as 0
  if (vr->TypeCode == type_code::SS) return NumberIn(object, element) < 0x8000;
  return std::find(kNumberTypes.begin(), kNumberTypes.end(), vr->TypeCode) != kNumberTypes.end();
}

/// Nothing for a text that is no number, or none of 32 bits.
std::optional<std::uint32_t> Decimal(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  std::optional<std::uint32_t> number = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') return std::nullopt;
    if (number) number = CheckedMultiply(*number, 10u);
    if (number) number = CheckedAdd(*number, static_cast<std::uint32_t>(digit - '0'));
  }
  return number;
}

bool ReadFrames(const DICOMObject& object, ImageInfo& info) {
  info.Frames = 1;
  const std::string_view value = ValueIn(object.GetVR(kImageGroup, kFrames));
  const std::string_view text = Trimmed(value.substr(0, kLongestFrames));
  if (text.empty()) return true;
  const std::optional<std::uint32_t> frames = Decimal(text);
  info.Frames = frames.value_or(0);
  return frames.has_value();
}

void ReadPhotometric(const DICOMObject& object, ImageInfo& info) {
  std::string_view text = ValueIn(object.GetVR(kImageGroup, kPhotometric));
  text = Trimmed(text.substr(0, text.find('\0'))).substr(0, sizeof(info.Photometric) - 1);
  if (!text.empty()) std::memcpy(info.Photometric, text.data(), text.size());
}

/// The strides and sizes; false when one does not fit.
bool ComputeSizes(ImageInfo& info, bool planar) {
  const auto pixel = planar ? std::optional(info.BytesPerSample)
                            : CheckedMultiply(info.Samples, info.BytesPerSample);
  const auto line = pixel ? CheckedMultiply(info.Columns, *pixel) : std::nullopt;
  const auto plane = line ? CheckedMultiply(info.Rows, *line) : std::nullopt;
  const auto frame = plane && planar ? CheckedMultiply(info.Samples, *plane) : plane;
  if (!frame) return false;
  info.PixelStride = *pixel;
  info.LineStride = *line;
  info.PlaneSize = planar ? *plane : 1;
  info.FrameSize = *frame;
  return true;
}

}  // namespace

std::string ReadImageInfo(const DICOMObject& object, ImageInfo& info) {
  info = {};
  for (const std::uint16_t element : kNumbers) {
    if (!IsSound(object, element)) {
      return Format("Element (0028,%04X) is not a number of 16 bits", unsigned{element});
    }
  }
  if (!ReadFrames(object, info)) return "Element (0028,0008) is not a number of frames";
  const std::uint32_t bits = NumberIn(object, kBitsAllocated);
  info.BytesPerSample = bits % 8 + bits / 8;
  info.Samples = NumberIn(object, kSamples);
  info.Columns = NumberIn(object, kColumns);
  info.Rows = NumberIn(object, kRows);
  info.BitsStored = NumberIn(object, kBitsStored);
  ReadPhotometric(object, info);
  if (!ComputeSizes(info, NumberIn(object, kPlanarConfiguration) != 0)) {
    return Format("A frame of %u x %u pixels with %u samples of %u bytes is too large",
                  info.Columns, info.Rows, info.Samples, info.BytesPerSample);
  }
  return {};
}

}  // namespace tessaret
