#include "core/dicom_object.h"

#include <algorithm>
#include <vector>

#include "base/byte_order.h"
#include "core/object_watch.h"

namespace tessaret {
namespace {

/// One object whose elements are still to be copied into its clone.
struct PendingCopy {
  const DICOMObject* source;
  DICOMObject* target;
};

/// Takes items that fail to reach their owner down with it.
struct ItemArrayDestroyer {
  void operator()(ItemArray* items) const noexcept {
    DestroyItems(*items);
    delete items;
  }
};

/// New, still empty objects for all `items`; what they are to hold goes to `pending`.
std::unique_ptr<ItemArray, ItemArrayDestroyer> EmptyTwins(const ItemArray& items,
                                                          std::vector<PendingCopy>& pending) {
  std::unique_ptr<ItemArray, ItemArrayDestroyer> twins(new ItemArray);
  for (const ItemArray::Node* node = items.First; node != nullptr; node = node->next) {
    if (node->value == nullptr) {
      twins->Add(nullptr);
      continue;
    }
    auto twin = std::make_unique<DICOMObject>();
    pending.push_back({node->value, twin.get()});
    twins->Add(twin.get());
    twin.release();
  }
  return twins;
}

/// Takes what is to be copied into the items of `former` off the list: they go with it.
void ForgetItems(const VR& former, std::vector<PendingCopy>& pending) {
  if (former.Items == nullptr) return;
  std::erase_if(pending, [&former](const PendingCopy& each) {
    const ItemArray::Node* node = former.Items->First;
    while (node != nullptr && node->value != each.target) node = node->next;
    return node != nullptr;
  });
}

void CopyElements(const PendingCopy copy, bool deep, std::vector<PendingCopy>& pending) {
  const auto before = static_cast<std::ptrdiff_t>(pending.size());
  copy.target->Elements.Reserve(copy.source->Elements.Size());
  TagKey highest = 0;
  copy.source->Elements.ForEach([&](const VR& element) {
    auto twin = std::make_unique<VR>(element, deep, VR::WithoutItems{});
    if (element.Items != nullptr) twin->Items = EmptyTwins(*element.Items, pending).release();
    // Only where a tag was changed in place can a twin be there already, which the push will destroy.
    if (twin->Key() <= highest) {
      const VR* former = copy.target->Elements.Find(twin->Key());
      if (former != nullptr) ForgetItems(*former, pending);
    }
    highest = std::max(highest, twin->Key());
    copy.target->Push(twin.get());
    twin.release();
  });
  // The last one pending is copied next: the first item, so that the copy lies in memory in the order of a walk.
  std::reverse(pending.begin() + before, pending.end());
}

/// Copies everything that is pending and what comes up below it, one level at a time instead of by recursion.
void CopyAll(std::vector<PendingCopy>& pending, bool deep) {
  while (!pending.empty()) {
    const PendingCopy next = pending.back();
    pending.pop_back();
    CopyElements(next, deep, pending);
  }
}

}  // namespace

ItemArray* CloneItems(const ItemArray& items, bool deep) {
  std::vector<PendingCopy> pending;
  auto twins = EmptyTwins(items, pending);
  CopyAll(pending, deep);
  return twins.release();
}

void DestroyItems(ItemArray& items) noexcept {
  // Whatever hangs below an item joins the list before the item goes, so no destructor ever meets nesting. It joins at the
  // front: blocks freed in the order in which they were made serve the next object in that order too, and one that walks
  // memory at random takes many times as long to fill.
  while (items.First != nullptr) {
    DICOMObject* item = items.First->value;
    items.RemoveAt(0);
    if (item == nullptr) continue;
    ItemArray nested;
    item->DestroyElements(nested);
    items.SpliceFront(nested);
    delete item;
  }
}

DICOMObject* EndOfForwarding(DICOMObject& start) noexcept {
  DICOMObject* end = &start;
  // Goes half as fast, so that in a circle the end comes round to it.
  DICOMObject* behind = &start;
  for (bool odd = true; end->PushTarget != nullptr; odd = !odd) {
    end = end->PushTarget;
    if (!odd) behind = behind->PushTarget;
    if (end == behind) return nullptr;
  }
  return end;
}

DICOMObject::~DICOMObject() {
  if (Mark != nullptr) {
    Mark->object.store(nullptr, std::memory_order_release);
    Mark->Drop();
  }
  DICOMObject::Reset();
}

DICOMDataObject::~DICOMDataObject() = default;

DICOMCommandObject::~DICOMCommandObject() = default;

bool DICOMObject::Push(DICOMObject* item) {
  if (item == nullptr || item == this || LastPushedVR == nullptr) return false;
  const bool opens = LastPushedVR->Items == nullptr;
  if (!LastPushedVR->AddItem(item)) return false;
  SequenceBytes += (opens ? 16u : 0u) + 16u + item->SequenceBytes;
  return true;
}

bool DICOMObject::Push(VR* element) {
  if (element == nullptr) return false;
  if (PushTarget != nullptr || !Elements.TryAppend(element->Key(), element)) {
    return PushAnywhere(element);
  }
  LastPushedVR = element;
  Iterating = 0;
  return true;
}

bool DICOMObject::PushAnywhere(VR* element) {
  if (PushTarget != nullptr) return EndOfForwarding(*this) != nullptr && PushTarget->Push(element);
  VR** place = Elements.FindOrInsert(element->Key());
  LastPushedVR = element;
  if (*place != element) {
    if (*place != nullptr) ++Revision;
    delete *place;
    *place = element;
  }
  Iterating = 0;
  return true;
}

VR* DICOMObject::Pop() {
  // A walk always stands at the lowest tag: what lay below it has been popped, and a push starts the walk again.
  Iterating = 1;
  VR* vr = Elements.PopFirst();
  Forget(vr);
  return vr;
}

bool DICOMObject::Reset() {
  ItemArray nested;
  DestroyElements(nested);
  DestroyItems(nested);
  return true;
}

void DICOMObject::DestroyElements(ItemArray& nested) noexcept {
  ++Revision;
  LastPushedVR = nullptr;
  Elements.ForEach([&nested](VR& element) {
    if (element.Items != nullptr) nested.Splice(*element.Items);
    delete &element;
  });
  Elements.Clear();
}

VR* DICOMObject::GetVR(std::uint16_t group, std::uint16_t element) const {
  return Elements.Find(MakeTagKey(group, element));
}

VR* DICOMObject::GetFirstVR() const { return Elements.First(); }

VR* DICOMObject::GetNextVR(const VR* vr) const {
  return vr == nullptr ? nullptr : Elements.NextAfter(vr->Key());
}

std::uint16_t DICOMObject::GetUINT16(std::uint16_t group, std::uint16_t element) const {
  const VR* vr = GetVR(group, element);
  return vr != nullptr && vr->Data != nullptr && vr->Length == 2 ? LoadLittle16(vr->Data) : 0;
}

bool DICOMObject::MightHangBelow(const DICOMObject& top) const {
  if (&top == this) return true;
  return !top.Elements.ForEachWhile(
      [this](const VR& element) { return !element.MightHold(*this); });
}

VR* DICOMObject::Remove(std::uint16_t group, std::uint16_t element) {
  VR* vr = Elements.Remove(MakeTagKey(group, element));
  Forget(vr);
  return vr;
}

DICOMObject* DICOMObject::Clone(bool deep) const {
  try {
    auto clone = std::make_unique<DICOMObject>();
    std::vector<PendingCopy> pending{{this, clone.get()}};
    CopyAll(pending, deep);
    return clone.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

bool DICOMObject::CopyFrom(const DICOMObject& source) {
  if (&source == this) return true;
  std::unique_ptr<DICOMObject> copy(source.Clone(true));
  if (!copy) return false;
  try {
    Elements.Reserve(copy->Elements.Size());
    while (VR* first = copy->GetFirstVR()) {
      if (!Push(first)) return false;
      copy->Pop();
    }
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace tessaret
