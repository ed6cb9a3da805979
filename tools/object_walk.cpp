#include "object_walk.h"

#include <deque>

#include "class_object.h"
#include "interrupt.h"

namespace tessaret::tool {
namespace {

class Walk {
 public:
  Walk(const Listing& listing, const Ref<IDCMObject>& object, ObjectVisitor& visitor)
      : listing_(listing), visitor_(visitor) {
    open_.push_back({DataSet(listing, object), {}, 0});
  }

  void Through() {
    for (std::size_t row = 0; row < listing_.Rows(); ++row) {
      StopIfInterrupted();
      listing_.IsItem(row) ? EnterItem(row) : Meet(row);
    }
    LeaveTo(0);
    EndSequence();
  }

 private:
  /// A data set on the way.
  struct Open {
    DataSet set;
    std::optional<Element> sequence;  // the one whose items are being visited
    std::uint32_t nextItem;
  };

  [[nodiscard]] int Depth() const { return static_cast<int>(open_.size()) - 1; }

  void Meet(std::size_t row) {
    LeaveTo(listing_.Level(row));
    EndSequence();
    const Element element = listing_.At(row);
    Open& here = open_.back();
    if (element.items == 0) return visitor_.OnElement(element, here.set, Depth());
    here.sequence = element;
    here.nextItem = 0;
    visitor_.OnSequence(element, here.set, Depth());
  }

  void EnterItem(std::size_t row) {
    LeaveTo(listing_.Level(row) - 1);
    Open& here = open_.back();
    const std::uint32_t index = here.nextItem++;
    open_.push_back({DataSet(here.set, here.sequence->tag, index, row + 1), {}, 0});
    visitor_.OnItem(*here.sequence, index, open_.back().set, Depth());
  }

  void LeaveTo(int depth) {
    while (Depth() > depth) {
      EndSequence();
      open_.pop_back();
      visitor_.OnItemEnd(*open_.back().sequence, Depth() + 1);
    }
  }

  void EndSequence() {
    Open& here = open_.back();
    if (!here.sequence) return;
    visitor_.OnSequenceEnd(*here.sequence, here.set, Depth());
    here.sequence.reset();
  }

  const Listing& listing_;
  ObjectVisitor& visitor_;
  std::deque<Open> open_;  // which do not move, as items look to what is around them
};

}  // namespace

IDCMObject& DataSet::Object() {
  if (!object_) object_ = ItemOf(parent_->Object(), sequence_, index_);
  if (!object_) throw CallError("an item is gone");
  return *object_;
}

IDcmFile& DataSet::File() {
  if (!file_) file_ = FileOf(Object());
  return *file_;
}

std::optional<Element> DataSet::Find(TagKey tag) const {
  std::optional<Element> found;
  ForEach([&](const Element& element) {
    if (element.tag == tag) found = element;
    return element.tag < tag;
  });
  return found;
}

std::optional<Element> DataSet::Next(const Element& element) const {
  const std::size_t row = listing_.Behind(element.row);
  return IsHere(row) ? std::optional(listing_.At(row)) : std::nullopt;
}

std::size_t DataSet::Count() const {
  std::size_t count = 0;
  ForEach([&](const Element&) { return ++count > 0; });
  return count;
}

void WalkObject(const Listing& listing, const Ref<IDCMObject>& object, ObjectVisitor& visitor) {
  Walk(listing, object, visitor).Through();
}

}  // namespace tessaret::tool
