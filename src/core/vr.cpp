#include "core/vr.h"

#include <cstring>
#include <map>
#include <memory>
#include <utility>
#include <vector>

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

/// True when `is(object)` is true of any object below `top`, at any depth on a flat stack; and without memory to look
/// further, for what hung below itself would have no owner and a walk through it no end.
template <class Is>
bool AnyBelowMightBe(const VR& top, Is is) try {
  std::vector<const VR*> pending;
  for (const VR* sequence = &top;;) {
    const ItemArray::Node* node = sequence->Items == nullptr ? nullptr : sequence->Items->First;
    for (; node != nullptr; node = node->next) {
      if (node->value == nullptr) continue;
      if (is(*node->value)) return true;
      node->value->Elements.ForEach([&pending](const VR& vr) {
        if (vr.Items != nullptr) pending.push_back(&vr);
      });
    }
    if (pending.empty()) return false;
    sequence = pending.back();
    pending.pop_back();
  }
} catch (const std::bad_alloc&) {
  return true;
}

/// The elements that hold bytes, by these.
using Holders = std::map<const std::uint8_t*, VR*>;

std::uint8_t* BytesIn(const VR& vr) { return vr.IsSteppedOver ? vr.Start : vr.Data; }

bool HoldsBytes(const VR& vr) { return BytesIn(vr) != nullptr && vr.OwnsData != 0; }

/// Adds what holds bytes below `dying`, but for what hangs below `leaving`. Bytes of `leaving` itself go where it goes, unless
/// they lie within it. False without memory.
bool AddHoldersBelow(const VR& dying, VR& leaving, Holders& holders) {
  ItemArray* const leavingItems = std::exchange(leaving.Items, nullptr);
  const bool failed = AnyBelowMightBe(dying, [&](const DICOMObject& object) {
    object.Elements.ForEach([&](VR& vr) {
      const bool goes = &vr == &leaving && vr.Data != vr.Small;
      if (HoldsBytes(vr) && !goes) holders.emplace(BytesIn(vr), &vr);
    });
    return false;
  });
  leaving.Items = leavingItems;
  return !failed;
}

/// Lets the bytes that `borrower` has from `holder` outlive that one. Of several borrowers of an array the first owns it.
void TakeOver(VR& borrower, VR& holder) noexcept {
  if (holder.Data != holder.Small) {
    borrower.OwnsData = std::exchange(holder.OwnsData, 0u);
    return;
  }
  std::memcpy(borrower.Small, holder.Small, sizeof(borrower.Small));
  borrower.Data = borrower.Small;
  borrower.OwnsData = 1;
}

/// Lets all bytes in `source` outlive `former`, from which it may borrow them. False, and nothing changes, when `former`
/// hangs below `source`, and without memory to find that out.
bool OutliveFormer(VR& source, VR& former) try {
  std::vector<VR*> borrowers;
  const auto noteBorrower = [&borrowers](VR& vr) {
    if (BytesIn(vr) != nullptr && !HoldsBytes(vr)) borrowers.push_back(&vr);
  };
  noteBorrower(source);
  // Not by the tag, which may have been changed in place.
  const auto holdsFormer = [&](const DICOMObject& object) {
    return !object.Elements.ForEachWhile([&](VR& vr) {
      noteBorrower(vr);
      return &vr != &former;
    });
  };
  if (AnyBelowMightBe(source, holdsFormer)) return false;
  if (borrowers.empty()) return true;
  Holders holders;
  if (HoldsBytes(former)) holders.emplace(BytesIn(former), &former);
  if (!AddHoldersBelow(former, source, holders)) return false;
  for (VR* borrower : borrowers) {
    const auto holder = holders.find(BytesIn(*borrower));
    if (holder != holders.end()) TakeOver(*borrower, *holder->second);
  }
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

/// A new element of the same tag, type and kind of items, without them and a value; null without memory.
VR* EmptyLike(const VR& vr) {
  try {
    auto empty = std::make_unique<VR>(vr.Group, vr.Element, 0, nullptr);
    empty->TypeCode = vr.TypeCode;
    empty->LacksTable = vr.LacksTable;
    return empty.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool PushSafely(DICOMObject& target, VR* element) {
  try {
    return target.Push(element);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

/// Pushes all `items` into `place`, where `element` was pushed last, and frees their list. Without memory for the list
/// there the rest of them hangs over as it is.
void HandItemsOver(ItemArray* items, DICOMObject& place, VR& element) {
  if (items == nullptr) return;
  while (items->First != nullptr && place.LastPushedVR == &element &&
         place.Push(items->First->value))
    items->RemoveAt(0);
  if (items->First != nullptr && element.Items == nullptr) std::swap(items, element.Items);
  if (items == nullptr) return;
  if (element.Items != nullptr) element.Items->Splice(*items);
  delete items;
}

}  // namespace

VR::VR(std::uint16_t group, std::uint16_t element, std::uint32_t length, bool allocate)
    : Group(group), Element(element), Length(EvenLength(length)) {
  if (!allocate || Length == 0) return;
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
      TypeCode(source.TypeCode),
      LacksTable(source.LacksTable),
      IsSteppedOver(source.IsSteppedOver) {
  if (IsSteppedOver) Start = deep ? CopyBytes(source.Start, kStartSize) : source.Start;
  if (!deep) return;
  ValueTag = source.ValueTag;
  Data = source.Data != nullptr && Length != 0 ? CopyBytes(source.Data, Length) : nullptr;
}

bool VR::Reset() {
  if (IsSteppedOver) DropStart();
  if (OwnsData != 0 && Data != Small) delete[] Data;
  Data = nullptr;
  Length = 0;
  OwnsData = 0;
  if (Items != nullptr) DestroyOwnItems();
  return true;
}

void VR::DropStart() noexcept {
  if (OwnsData != 0) delete[] Start;
  IsSteppedOver = false;
}

void VR::DestroyOwnItems() noexcept {
  ItemArray* items = Items;
  Items = nullptr;
  LacksTable = false;
  DestroyItems(*items);
  delete items;
}

bool VR::ReplaceFrom(VR* source) {
  if (source == nullptr || source->Key() != Key()) return false;
  if (source == this) return true;
  if (!OutliveFormer(*source, *this)) return false;
  // What was here dies last: the source may hang below it.
  VR former;
  former.TakeValue(*this);
  former.Items = std::exchange(Items, std::exchange(source->Items, nullptr));
  TakeValue(*source);
  TypeCode = source->TypeCode;
  LacksTable = std::exchange(source->LacksTable, false);
  source->Moved = 1;
  return true;
}

void VR::TakeValue(VR& source) noexcept {
  Length = source.Length;
  Data = source.Data;
  OwnsData = source.OwnsData;
  IsSteppedOver = std::exchange(source.IsSteppedOver, false);
  if (IsSteppedOver) Start = source.Start;
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
  if (IsSteppedOver) DropStart();
  Data = nullptr;
  Length = 0;
  return bytes;
}

void VR::ReplaceValue(const void* bytes, std::uint32_t length, bool toEven) {
  VR made;
  made.Length = toEven ? EvenLength(length) : length;
  if (length != 0) {
    made.AllocateValue();
    std::memcpy(made.Data, bytes, length);
    if (made.Length != length) made.Data[length] = 0;
  }
  VR former;
  former.TakeValue(*this);
  TakeValue(made);
}

bool VR::MoveToObject(DICOMObject* target) {
  if (target == nullptr || (Length == 0 && Moved == 0)) return false;
  DICOMObject* const place = EndOfForwarding(*target);
  if (place == nullptr) return false;
  if (place->GetVR(Group, Element) == this) return true;
  if (MightHold(*place)) return false;
  std::unique_ptr<VR> moved(EmptyLike(*this));
  if (!moved) return false;
  // All is taken out of here before the push, which may destroy this element: it may hang below the one that is
  // replaced.
  moved->TakeValue(*this);
  ItemArray* items = std::exchange(Items, nullptr);
  LacksTable = false;
  if (!PushSafely(*target, moved.get())) {
    TakeValue(*moved);
    Items = items;
    LacksTable = moved->LacksTable;
    return false;
  }
  HandItemsOver(items, *place, *moved.release());
  return true;
}

bool VR::MightHold(const DICOMObject& object) const {
  return AnyBelowMightBe(*this, [&object](const DICOMObject& each) { return &each == &object; });
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
    if (Items != nullptr) {
      Items->Add(item);
      return true;
    }
    auto items = std::make_unique<ItemArray>();
    items->Add(item);
    Items = items.release();
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
    LacksTable = false;
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
