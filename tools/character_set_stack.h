// The character sets that count where a walk through an object stands: an item without a name of its own has those around it.
#pragma once

#include <utility>
#include <vector>

#include "character_sets.h"
#include "class_object.h"
#include "object_walk.h"

namespace tessaret::tool {

class CharacterSetStack {
 public:
  explicit CharacterSetStack(IDCMObject& object) { stack_.push_back(SetsOf(object, {})); }

  [[nodiscard]] const CharacterSets& Here() const { return stack_.back(); }

  void Enter(DataSet& item) {
    CharacterSets sets = item.Find(kCharacterSetTag) ? SetsOf(item.Object(), Here()) : Here();
    stack_.push_back(std::move(sets));
  }
  void Leave() { stack_.pop_back(); }

 private:
  std::vector<CharacterSets> stack_;
};

}  // namespace tessaret::tool
