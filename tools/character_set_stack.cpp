#include "character_set_stack.h"

#include "value_text.h"

namespace tessaret::tool {

void CharacterSetStack::Enter(const DICOMObject& object) {
  const VR* named = object.GetVR(0x0008, 0x0005);
  if (named != nullptr && named->Data != nullptr) {
    stack_.emplace_back(UnpaddedText(*named));
  } else if (stack_.empty() || named != nullptr) {
    stack_.emplace_back();
  } else {
    stack_.push_back(CharacterSets(stack_.back()));
  }
}

}  // namespace tessaret::tool
