// A walk through an object and everything nested in it, in the order of a file, on a flat stack.
#pragma once

#include <cstdint>

#include "core/dicom_object.h"

namespace tessaret::tool {

/// What a walk meets. Levels count from 0; an item and its elements are one level below their sequence.
class ObjectVisitor {
 public:
  virtual ~ObjectVisitor() = default;

  /// An element without items. `owner` is the object that it is in.
  virtual void OnElement(const VR& vr, const DICOMObject& owner, int level) = 0;
  /// An element with items, fragments of pixel data included; its items follow, and then its end.
  virtual void OnSequence(const VR& vr, const DICOMObject& owner, int level) = 0;
  virtual void OnSequenceEnd(const VR& vr, int level) = 0;
  /// Item number `index` of `sequence`, counted from 0; its elements follow, and then its end.
  virtual void OnItem(const VR& sequence, std::uint32_t index, const DICOMObject& item,
                      int level) = 0;
  virtual void OnItemEnd(const VR& sequence, int level) = 0;
};

/// Shows all of `object` to `visitor`. Throws Interrupted and what the visitor throws.
void WalkObject(const DICOMObject& object, ObjectVisitor& visitor);

}  // namespace tessaret::tool
