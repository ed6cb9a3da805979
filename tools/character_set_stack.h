// The character sets that count where a walk through an object stands: an item without a name of its own has those around it.
#pragma once

#include <vector>

#include "character_sets.h"
#include "core/dicom_object.h"

namespace tessaret::tool {

class CharacterSetStack {
 public:
  explicit CharacterSetStack(const DICOMObject& object) { Enter(object); }

  [[nodiscard]] const CharacterSets& Here() const { return stack_.back(); }

  void Enter(const DICOMObject& object);
  void Leave() { stack_.pop_back(); }

 private:
  std::vector<CharacterSets> stack_;
};

}  // namespace tessaret::tool
