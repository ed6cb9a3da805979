#include "core/binary_vr.h"

#include <algorithm>

namespace tessaret {
namespace {

void ReverseUnits(std::uint32_t unit, std::uint32_t count, std::uint8_t* data) {
  for (std::uint32_t at = 0; count - at >= unit; at += unit) {
    std::reverse(data + at, data + at + unit);
  }
}

/// Whether values of `width` bytes reach so far that a value at `begin` leaves too many of them empty.
bool SkipsTooMany(std::uint64_t oldEnd, std::uint64_t begin, std::uint32_t width) {
  return begin > oldEnd && (begin - oldEnd) / width > kMostSkippedValues;
}

}  // namespace

const std::uint8_t* FindBinaryValue(const VR& vr, std::int32_t index, std::uint32_t width) {
  if (index < 0 || vr.Data == nullptr) return nullptr;
  const std::uint64_t begin = std::uint64_t{static_cast<std::uint32_t>(index)} * width;
  return begin + width <= vr.Length ? vr.Data + begin : nullptr;
}

bool VR_XXMULTIBINARY::GetValue(std::int32_t index, std::string& out) const {
  const std::uint8_t* const bytes = FindBinaryValue(Record(), index, ValueWidth());
  if (bytes == nullptr) return false;
  out.assign(reinterpret_cast<const char*>(bytes), ValueWidth());
  return true;
}

bool VR_XXMULTIBINARY::PutValue(std::int32_t index, std::string_view in) {
  VR& vr = Record();
  const std::uint32_t width = ValueWidth();
  if (index < 0 || in.size() != width || vr.Items != nullptr) return false;
  const std::string_view old = ValueText(vr);
  const std::uint64_t begin = std::uint64_t{static_cast<std::uint32_t>(index)} * width;
  const std::uint64_t end = begin + width;
  if (end > kLongestValue || SkipsTooMany(old.size(), begin, width)) return false;
  if (end <= old.size() && vr.OwnsData != 0) {
    std::memmove(vr.Data + begin, in.data(), width);
    return true;
  }
  // Bytes that are not this element's own are not written to: another element may show them.
  std::string value(std::max<std::uint64_t>(old.size(), end), '\0');
  std::copy(old.begin(), old.end(), value.begin());
  std::copy(in.begin(), in.end(), value.begin() + static_cast<std::ptrdiff_t>(begin));
  return StoreValue(vr, value);
}

void VrAT::ToWire(std::uint32_t count, std::uint8_t* data) const {
  ReverseUnits(ValueWidth(), count, data);
}

void VrAT::FromWire(std::uint32_t count, std::uint8_t* data) const {
  ReverseUnits(ValueWidth(), count, data);
}

std::optional<std::int32_t> VrXS::Number(std::int32_t index) const {
  if (Code == type_code::SS) return BinaryValue<std::int16_t>(Record(), index);
  return BinaryValue<std::uint16_t>(Record(), index);
}

}  // namespace tessaret
