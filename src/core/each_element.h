// Every element of a data set, with those of its items.
#pragma once

#include <vector>

#include "core/dicom_object.h"

namespace tessaret {

/// Does `act(VR&)` to every element but those of group 0002, at any depth on a flat stack. `act` must change no object's elements.
/// Throws std::bad_alloc with some elements visited and some not.
template <class Act>
void ForEachElement(DICOMObject& object, Act act) {
  constexpr std::uint16_t kMetaGroup = 0x0002;
  std::vector<DICOMObject*> pending{&object};
  while (!pending.empty()) {
    DICOMObject* current = pending.back();
    pending.pop_back();
    current->Elements.ForEach([&](VR& vr) {
      if (vr.Group == kMetaGroup) return;
      act(vr);
      if (vr.Items == nullptr) return;
      for (const ItemArray::Node* node = vr.Items->First; node != nullptr; node = node->next) {
        if (node->value != nullptr) pending.push_back(node->value);
      }
    });
  }
}

}  // namespace tessaret
