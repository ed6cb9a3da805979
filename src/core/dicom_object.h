// A data set: every DICOM file, command set and sequence item is one of these, an ordered map from tag to element.
//
// The order is that of the tag as one unsigned number, whatever the order of insertion, and a tag occurs at most once. An
// object owns its elements, an element owns its items, and nothing else holds an owning reference: Push takes ownership,
// Pop and Remove hand it out. One thread at a time.
#pragma once

#include <cstdint>

#include "core/element_map.h"
#include "core/vr.h"

namespace tessaret {

struct ObjectMark;

class DICOMObject {
 public:
  DICOMObject() = default;
  DICOMObject(const DICOMObject&) = delete;
  DICOMObject& operator=(const DICOMObject&) = delete;

  /// Destroys every element with all that is nested below it, at any depth, on a flat stack.
  virtual ~DICOMObject();

  /// Appends `item` to the element that Push(VR*) added last, and takes it over. False, and the item stays with the
  /// caller, when there is no such element, `item` is null or this object itself, or there is no memory.
  /// Requires: this object does not hang below `item`.
  virtual bool Push(DICOMObject* item);

  /// Takes `element` over and files it under its tag. An element that is there already under this tag is destroyed: the
  /// last one wins; pushing the very same element again does nothing. A walk by Pop starts again at the lowest tag.
  /// With PushTarget set all this happens there. True; false, with nothing changed, for null and where the targets lead in
  /// a circle. Throws std::bad_alloc, with the element still the caller's, when there is no memory.
  /// Requires: nobody else owns `element`, nor does this object under another tag, when the tag was changed in place; and
  /// this object does not hang below it.
  virtual bool Push(VR* element);

  /// Takes out the element with the lowest tag, for the caller to own; null when there is none. This is the normal way to
  /// walk an object: one that is needed afterwards is walked in a shallow Clone.
  virtual VR* Pop();

  /// Destroys every element. True.
  virtual bool Reset();

  /// The element, which stays owned here, or null.
  [[nodiscard]] VR* GetVR(std::uint16_t group, std::uint16_t element) const;

  /// The element with the lowest tag, which stays owned here, or null.
  [[nodiscard]] VR* GetFirstVR() const;

  /// The element with the tag after that of `vr`; null for the last, for a tag that is not here and for null.
  [[nodiscard]] VR* GetNextVR(const VR* vr) const;

  /// The first two bytes as a host number when the element is here, has Data and a Length of exactly 2; otherwise 0.
  [[nodiscard]] std::uint16_t GetUINT16(std::uint16_t group, std::uint16_t element) const;

  /// Takes the element out for the caller to own; null when there is none.
  VR* Remove(std::uint16_t group, std::uint16_t element);

  /// A plain DICOMObject with a copy of every element. Deep decides about the bytes only; item objects are always new.
  /// A shallow clone shares the bytes and must die before this object. Null when there is no memory.
  [[nodiscard]] DICOMObject* Clone(bool deep) const;

  /// Adds a deep copy of every element of `source` by Push. Copying an object into itself changes nothing. True; false when
  /// there is no memory or Push refuses an element, with those before it copied.
  bool CopyFrom(const DICOMObject& source);

  [[nodiscard]] bool IsEmpty() const { return Elements.IsEmpty(); }

  /// True when this object hangs below `top`, at any depth, or is `top`; and without memory to look further.
  [[nodiscard]] bool MightHangBelow(const DICOMObject& top) const;

  /// Destroys every element of this level; the items below them go to the end of `nested`, for the caller to destroy.
  void DestroyElements(ItemArray& nested) noexcept;

  VR* LastPushedVR =
      nullptr;  // Push(DICOMObject*) nests into it; null again once that element is taken out
  std::uint32_t SequenceBytes =
      0;                        // estimate: 16 a sequence opened, 16 plus its own estimate an item
  std::uint32_t Iterating = 0;  // not 0 while a walk by Pop is under way
  DICOMObject* PushTarget = nullptr;  // where Push(VR*) goes instead; not owned
  // Raised whenever an element leaves: a pointer to one that was found before may lead nowhere then.
  std::uint64_t Revision = 0;
  ObjectMark* Mark =
      nullptr;  // of those who watch this, see core/object_watch.h; null while nobody ever did
  ElementMap Elements;

 private:
  /// Push where the element does not just go behind the last one; apart, so that the usual way needs no stack frame.
  [[gnu::noinline]] bool PushAnywhere(VR* element);
  void Forget(const VR* taken) noexcept {
    ++Revision;
    if (LastPushedVR == taken) LastPushedVR = nullptr;
  }
};

/// Where an element that is pushed into `start` comes to lie: the end of the way along PushTarget. Null where that leads in
/// a circle.
DICOMObject* EndOfForwarding(DICOMObject& start) noexcept;

/// Destroys all objects in `items`, with all that is nested below them, on a flat stack.
void DestroyItems(ItemArray& items) noexcept;

/// A new list with a copy of every item, made on a flat stack; where an item is null, so is its copy. Deep decides about the
/// bytes only. Throws std::bad_alloc.
ItemArray* CloneItems(const ItemArray& items, bool deep);

/// What the parsers create for files and items.
class DICOMDataObject : public DICOMObject {
 public:
  ~DICOMDataObject() override;
};

/// The command set of a DIMSE message (DICOM PS3.7, 6.3.1).
class DICOMCommandObject : public DICOMObject {
 public:
  ~DICOMCommandObject() override;
};

}  // namespace tessaret
