#include "core/typed_vr.h"

namespace tessaret {

void VR_XXTYPED::ToWire(std::uint32_t /*count*/, std::uint8_t* /*data*/) const {}

void VR_XXTYPED::FromWire(std::uint32_t /*count*/, std::uint8_t* /*data*/) const {}

bool StoreValue(VR& vr, std::string_view value, Padding padding) {
  if (value.size() > kLongestValue || vr.Items != nullptr) return false;
  vr.ReplaceValue(value.data(), static_cast<std::uint32_t>(value.size()),
                  padding == Padding::kToEven);
  return true;
}

bool LoneTextVR::GetValue(std::int32_t index, std::string& out) const {
  const std::string_view text = ValueText(Record());
  if (index != 0 || text.empty()) return false;
  out = text;
  return true;
}

bool LoneTextVR::PutValue(std::int32_t index, std::string_view in) {
  return index == 0 && StoreValue(Record(), in);
}

bool SequenceVR::GetValue(std::int32_t /*index*/, std::string& /*out*/) const { return false; }

bool SequenceVR::PutValue(std::int32_t /*index*/, std::string_view /*in*/) { return false; }

}  // namespace tessaret
