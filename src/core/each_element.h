// Every element of a data set, with those of its items.
#pragma once

#include <vector>

#include "core/dicom_object.h"

namespace tessaret {

/// Whether `is(VR&)` is true of any element but those of group 0002, at any depth on a flat stack; the first such one is the last that
/// is asked. `is` must change no object's elements. Throws std::bad_alloc with some elements asked and some not.
template <class Is>
bool AnyElement(const DICOMObject& object, Is is) {
  constexpr std::uint16_t kMetaGroup = 0x0002;
  std::vector<const DICOMObject*> pending{&object};
  while (!pending.empty()) {
    const DICOMObject* current = pending.back();
    pending.pop_back();
    const bool isNone = current->Elements.ForEachWhile([&](VR& vr) {
      if (vr.Group == kMetaGroup) return true;
      if (is(vr)) return false;
      if (vr.Items == nullptr) return true;
      for (const ItemArray::Node* node = vr.Items->First; node != nullptr; node = node->next) {
        if (node->value != nullptr) pending.push_back(node->value);
      }
      return true;
    });
    if (!isNone) return true;
  }
  return false;
}

/// Does `act(VR&)` to every element but those of group 0002, in the same way.
template <class Act>
void ForEachElement(DICOMObject& object, Act act) {
  AnyElement(object, [&act](VR& vr) {
    act(vr);
    return false;
  });
}

}  // namespace tessaret
