#include "core/vr.h"

#include <cstring>
#include <memory>

#include "core/dicom_object.h"

namespace tessaret {
namespace {

std::uint32_t EvenLength(std::uint32_t length) {
  if (length == kUndefinedLength) throw std::bad_alloc();
  return length + (length & 1);
}

std::uint8_t* CopyBytes(const std::uint8_t* data, std::uint32_t length) {
  auto* bytes = new std::uint8_t[length];
  std::memcpy(bytes, data, length);
  return bytes;
}

}  // namespace

VR::VR(std::uint16_t group, std::uint16_t element, std::uint32_t length, bool allocate)
    : Group(group), Element(element), Length(EvenLength(length)) {
  if (!allocate) return;
  Data = new std::uint8_t[Length];
  if (Length != length) Data[Length - 1] = 0;
}

VR::VR(const VR& source, bool deep) : VR(source, deep, WithoutItems{}) {
  if (source.Items != nullptr) Items = CloneItems(*source.Items, deep);
}

VR::VR(const VR& source, bool deep, WithoutItems)
    : Group(source.Group),
      Element(source.Element),
      Length(source.Length),
      Data(source.Data),
      OwnsData(deep ? 1 : 0),
      Moved(1),
      TypeCode(source.TypeCode) {
  if (!deep) return;
  ValueTag = source.ValueTag;
  Data = source.Data != nullptr && Length != 0 ? CopyBytes(source.Data, Length) : nullptr;
}

bool VR::Reset() {
  if (OwnsData != 0 && Data != Small) delete[] Data;
  Data = nullptr;
  Length = 0;
  OwnsData = 0;
  if (Items != nullptr) DestroyOwnItems();
  return true;
}

void VR::DestroyOwnItems() noexcept {
  ItemArray* items = Items;
  Items = nullptr;
  DestroyItems(*items);
  delete items;
}

bool VR::ReplaceFrom(VR* source) {
  if (source == nullptr || source->Key() != Key()) return false;
  if (source == this) return true;
  Reset();
  TakeValue(*source);
  TypeCode = source->TypeCode;
  Items = source->Items;
  source->Items = nullptr;
  source->Moved = 1;
  return true;
}

void VR::TakeValue(VR& source) noexcept {
  Length = source.Length;
  Data = source.Data;
  OwnsData = source.OwnsData;
  if (Data == source.Small) {
    std::memcpy(Small, source.Small, sizeof(Small));
    Data = Small;
  }
  source.Length = 0;
  source.Data = nullptr;
  source.OwnsData = 0;
}

std::uint8_t* VR::TakeData() {
  std::uint8_t* bytes = Data;
  if (Data != nullptr && (OwnsData == 0 || Data == Small)) bytes = CopyBytes(Data, Length);
  Data = nullptr;
  Length = 0;
  return bytes;
}

bool VR::MoveToObject(DICOMObject* target) {
  if (target == nullptr || (Length == 0 && Moved == 0)) return false;
  auto moved = std::make_unique<VR>(Group, Element, 0, nullptr);
  moved->TypeCode = TypeCode;
  VR* pushed = moved.get();
  target->Push(pushed);
  moved.release();
  pushed->TakeValue(*this);
  while (DICOMObject* item = PopFirstItem()) {
    // A target that forwards its elements has no last pushed element to nest into.
    if (!target->Push(item) && !pushed->AddItem(item)) delete item;
  }
  return true;
}

std::uint32_t VR::ItemCount() const { return Items == nullptr ? 0 : Items->ListLength; }

DICOMObject* VR::GetItem(std::uint32_t index) {
  if (Items == nullptr) return nullptr;
  const ItemArray::Node* node = Items->Get(index);
  return node == nullptr ? nullptr : node->value;
}

bool VR::AddItem(DICOMObject* item) {
  if (item == nullptr) return false;
  try {
    if (Items == nullptr) Items = new ItemArray;
    Items->Add(item);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

DICOMObject* VR::PopFirstItem() {
  if (Items == nullptr) return nullptr;
  DICOMObject* item = Items->First == nullptr ? nullptr : Items->First->value;
  Items->RemoveAt(0);
  if (Items->ListLength == 0) {
    delete Items;
    Items = nullptr;
  }
  return item;
}

VR* VR::Clone(bool deep) const {
  try {
    return new VR(*this, deep);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

}  // namespace tessaret
