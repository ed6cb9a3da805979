// Storage of one object, whose SOP class it says itself.
#pragma once

#include "net/storage.h"

namespace tessaret {

class DicomStorage : public UnknownStorage {
 public:
  /// The SOP class is that of (0008,0016); where the object has none, it is told by the first two letters of (0008,0060), and is empty
  /// for modalities that do not tell it.
  explicit DicomStorage(const DICOMObject& object);

  bool GetUID(tessaret::UID& uid) override;

  tessaret::UID UID;
};

}  // namespace tessaret
