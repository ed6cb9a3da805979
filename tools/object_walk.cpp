#include "object_walk.h"

#include <vector>

#include "interrupt.h"

namespace tessaret::tool {
namespace {

/// One object on the way.
struct Level {
  const DICOMObject* object;
  const VR* next;                         // the element to be visited next
  const VR* sequence = nullptr;           // the one whose items are being visited
  const ItemArray::Node* item = nullptr;  // of `sequence`, to be visited next
  std::uint32_t itemIndex = 0;
};

class Walk {
 public:
  explicit Walk(ObjectVisitor& visitor) : visitor_(visitor) {}

  void Through(const DICOMObject& object) {
    Enter(object);
    while (!levels_.empty()) Step();
  }

 private:
  [[nodiscard]] int Depth() const { return static_cast<int>(levels_.size()) - 1; }

  void Enter(const DICOMObject& object) { levels_.push_back({&object, object.GetFirstVR()}); }

  void Step() {
    StopIfInterrupted();
    Level& level = levels_.back();
    if (level.sequence != nullptr) return StepItem(level);
    if (level.next == nullptr) return Leave();
    const VR& vr = *level.next;
    level.next = level.object->GetNextVR(&vr);
    if (vr.Items == nullptr) return visitor_.OnElement(vr, *level.object, Depth());
    level.sequence = &vr;
    level.item = vr.Items->First;
    level.itemIndex = 0;
    visitor_.OnSequence(vr, *level.object, Depth());
  }

  void StepItem(Level& level) {
    if (level.item == nullptr) {
      visitor_.OnSequenceEnd(*level.sequence, Depth());
      level.sequence = nullptr;
      return;
    }
    const DICOMObject* item = level.item->value;
    level.item = level.item->next;
    const std::uint32_t index = level.itemIndex++;
    if (item == nullptr) return;
    visitor_.OnItem(*level.sequence, index, *item, Depth() + 1);
    Enter(*item);
  }

  void Leave() {
    levels_.pop_back();
    if (!levels_.empty()) visitor_.OnItemEnd(*levels_.back().sequence, Depth() + 1);
  }

  ObjectVisitor& visitor_;
  std::vector<Level> levels_;
};

}  // namespace

void WalkObject(const DICOMObject& object, ObjectVisitor& visitor) {
  Walk(visitor).Through(object);
}

}  // namespace tessaret::tool
