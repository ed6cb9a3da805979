// Sequences: their items as objects of their own, and objects that become items.
#include <algorithm>

#include "base/checked.h"
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {

using namespace dcm_object;

namespace {

/// Holds a data set that was taken from its owner, and gives it back unless it finds a place.
class Taken {
 public:
  Taken(IDcmObjectManager& from) : from_(from) {
    if (from_.GetPtr(1, &item_) != kOk) item_ = nullptr;
  }
  Taken(const Taken&) = delete;
  Taken& operator=(const Taken&) = delete;
  ~Taken() {
    if (item_ != nullptr) from_.SetOwner();
  }
  [[nodiscard]] DICOMObject* Get() const { return item_; }
  void HasPlace() { item_ = nullptr; }

 private:
  IDcmObjectManager& from_;
  DICOMObject* item_ = nullptr;
};

/// Stores `item` in place of item `index`, or behind the last one. False without memory.
bool Store(VR& sequence, std::int32_t index, DICOMObject* item) {
  ItemArray::Node* const node = index < 0 || sequence.Items == nullptr
                                    ? nullptr
                                    : sequence.Items->Get(static_cast<std::uint32_t>(index));
  if (node == nullptr) return sequence.AddItem(item);
  delete std::exchange(node->value, item);
  return true;
}

}  // namespace

Status CDCMObject::get_SequencesCount(std::int32_t Group, std::int32_t Element,
                                      std::int16_t* pVal) {
  if (pVal == nullptr) return kPointer;
  return Answer([&] {
    const VR* const vr = Find(Group, Element);
    *pVal = vr == nullptr ? std::int16_t{0} : SaturatingCast<std::int16_t>(vr->ItemCount());
    return kOk;
  });
}

Status CDCMObject::get_Sequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                                IDCMObject** pVal) {
  if (pVal == nullptr) return kPointer;
  return Answer([&] {
    *pVal = nullptr;
    VR* const vr = Find(Group, Element);
    if (vr == nullptr || Idx < 0) return kOk;
    DICOMObject* const item = vr->GetItem(static_cast<std::uint32_t>(Idx));
    if (item == nullptr) return kOk;
    ObjectWatch(item).SetHolder(ObjectHolder::kSequence);
    *pVal = Wrap(item, false, this).Detach();
    return kOk;
  });
}

Status CDCMObject::putref_Sequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                                   IDCMObject* newVal) {
  return Answer([&] {
    if (Object.Get() == nullptr) return FailWith(kNothingToPutInto);
    Ref<IDcmObjectManager> source;
    DICOMObject* item = nullptr;
    if (newVal != nullptr) {
      const Status status = newVal->QueryInterface(IDcmObjectManager::kId,
                                                   reinterpret_cast<void**>(source.Receive()));
      if (Failed(status)) return status;
      source->GetPtr(0, &item);
      if (item == nullptr) return kInvalidArgument;
    }
    // A source of the host's own may have changed this object while it was asked.
    DICOMObject* const target = Object.Get();
    if (target == nullptr) return FailWith(kNothingToPutInto);
    // What would hang below itself would have no owner.
    if (item != nullptr && target->MightHangBelow(*item)) return kInvalidArgument;
    VR* const present = Find(Group, Element);
    if (!source) {
      if (present == nullptr) {
        AddSequence(KeyOf(Group, Element));
      } else {
        target->Push(present);
      }
      return kOk;
    }
    if (present != nullptr && present->Data != nullptr && present->Length != 0)
      return FailWith(kHoldsBytes);
    return Nest(KeyOf(Group, Element), Idx, *source, item);
  });
}

VR& CDCMObject::AddSequence(TagKey tag) {
  auto made = std::make_unique<VR>(GroupOf(tag), ElementOf(tag), 0, nullptr);
  made->TypeCode = type_code::SQ;
  return Add(std::move(made));
}

Status CDCMObject::Nest(TagKey tag, std::int32_t index, IDcmObjectManager& source,
                        const DICOMObject* expected) {
  Taken taken(source);
  if (taken.Get() == nullptr || taken.Get() != expected) return kInvalidArgument;
  if (Object.Get() == nullptr) return FailWith(kNothingToPutInto);
  ObjectWatch item(taken.Get());
  VR* const present = Object.Get()->GetVR(GroupOf(tag), ElementOf(tag));
  VR& sequence = present != nullptr ? *present : AddSequence(tag);
  Object.Get()->Push(&sequence);
  if (!Store(sequence, index, taken.Get())) {
    if (present == nullptr) delete Object.Get()->Remove(GroupOf(tag), ElementOf(tag));
    throw std::bad_alloc();
  }
  taken.HasPlace();
  item.SetHolder(ObjectHolder::kSequence);
  return kOk;
}

Status CDCMObject::RemoveSequence(std::int32_t, std::int32_t, std::int32_t, VariantBool*) {
  // That it does nothing is what it promises.
  return kOk;
}

}  // namespace tessaret
