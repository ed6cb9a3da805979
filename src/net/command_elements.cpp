#include "net/command_elements.h"

#include <array>
#include <cstring>
#include <memory>

#include "base/byte_order.h"
#include "base/text.h"

namespace tessaret {
namespace {

// Tag and length of an implicit element.
constexpr std::uint32_t kElementHeadBytes = 8;

void Put(DICOMObject& object, std::unique_ptr<VR> element, VrCode type) {
  element->TypeCode = type;
  object.Push(element.get());
  element.release();
}

constexpr bool IsOfUid(char c) { return c == '.' || (c >= '0' && c <= '9'); }

}  // namespace

void PutBytes(DICOMObject& object, std::uint16_t group, std::uint16_t element, VrCode type,
              std::string_view bytes) {
  auto vr = std::make_unique<VR>(group, element, static_cast<std::uint32_t>(bytes.size()), true);
  if (!bytes.empty()) std::memcpy(vr->Data, bytes.data(), bytes.size());
  Put(object, std::move(vr), type);
}

void PutUid(DICOMObject& object, std::uint16_t group, std::uint16_t element, std::string_view uid) {
  PutBytes(object, group, element, type_code::UI, uid);
}

void PutNumber16(DICOMObject& object, std::uint16_t group, std::uint16_t element,
                 std::uint16_t value) {
  std::array<std::uint8_t, 2> bytes;
  StoreLittle16(bytes.data(), value);
  PutBytes(object, group, element, type_code::US,
           {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void PutNumber32(DICOMObject& object, std::uint16_t group, std::uint16_t element,
                 std::uint32_t value) {
  std::array<std::uint8_t, 4> bytes;
  StoreLittle32(bytes.data(), value);
  PutBytes(object, group, element, type_code::UL,
           {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::string_view ValueOf(const VR* vr) {
  if (vr == nullptr || vr->Items != nullptr || vr->Data == nullptr) return {};
  return {reinterpret_cast<const char*>(vr->Data), vr->Length};
}

std::optional<std::uint16_t> Number16(const DICOMObject& object, std::uint16_t group,
                                      std::uint16_t element) {
  const VR* vr = object.GetVR(group, element);
  if (ValueOf(vr).size() != 2) return std::nullopt;
  return LoadLittle16(vr->Data);
}

std::optional<UID> UidOf(const DICOMObject& object, std::uint16_t group, std::uint16_t element) {
  std::string_view text = ValueOf(object.GetVR(group, element));
  if (Trimmed(text).empty() || text.size() > UID::kMostBytes) return std::nullopt;
  if (!IsOfUid(text.back())) text.remove_suffix(1);
  return UID(text);
}

std::uint32_t CommandGroupLength(const DICOMObject& command) {
  std::uint32_t length = 0;
  for (const VR* vr = command.GetFirstVR(); vr != nullptr && vr->Group == 0;
       vr = command.GetNextVR(vr)) {
    if (vr->Element != 0) length += kElementHeadBytes + vr->Length + (vr->Length & 1);
  }
  return length;
}

}  // namespace tessaret
