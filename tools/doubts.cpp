#include "doubts.h"

#include "base/text.h"
#include "object_walk.h"
#include "tag_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr std::uint32_t kShortHead = 8;  // tag, letters, 16-bit length

/// True when an element of `owner` was read from further on than `vr`.
bool IsFollowed(const VR& vr, const DICOMObject& owner) {
  bool followed = false;
  owner.Elements.ForEach(
      [&](const VR& other) { followed = followed || other.StreamPosition > vr.StreamPosition; });
  return followed;
}

std::string Place(const VR& vr) { return TagText(vr) + Format(" at offset %u", vr.StreamPosition); }

/// True when an item of `sequence` begins with an element whose letters are no type.
bool HoldsUnknownTypes(const VR& sequence) {
  for (const ItemArray::Node* node = sequence.Items->First; node != nullptr; node = node->next) {
    const VR* first = node->value == nullptr ? nullptr : node->value->GetFirstVR();
    if (first != nullptr && FindTraits(first->TypeCode) == nullptr) return true;
  }
  return false;
}

class DoubtSearch final : public ObjectVisitor {
 public:
  DoubtSearch(bool isExplicit, const ParseStop& stop) : explicit_(isExplicit), stop_(stop) {}

  void OnElement(const VR& vr, const DICOMObject& owner, int) override {
    const bool suspect = explicit_ && vr.Length == 0 && IsLongByTheStandardOnly(vr.TypeCode);
    if (!suspect || IsFollowedProperly(vr, owner)) return;
    Doubt("the length of " + Place(vr) +
          " is in a form that is not read here; what follows is not to be trusted");
  }
  void OnSequence(const VR& vr, const DICOMObject&, int) override {
    if (vr.Data != nullptr) Doubt("an item without a sequence follows " + Place(vr));
    if (explicit_ && vr.TypeCode == type_code::UN && HoldsUnknownTypes(vr)) {
      Doubt("the items of " + Place(vr) + " are in a form that is not read here");
    }
  }
  void OnSequenceEnd(const VR&, int) override {}
  void OnItem(const VR&, std::uint32_t, const DICOMObject&, int) override {}
  void OnItemEnd(const VR&, int) override {}

  std::string words;

 private:
  void Doubt(const std::string& why) {
    if (words.empty()) words = why;
  }

  /// True when what was read behind the head of `vr` can be the rest of a file that was read rightly: nothing, or an element
  /// of a higher tag and a known type. Misread lengths come out as low tags.
  [[nodiscard]] bool IsFollowedProperly(const VR& vr, const DICOMObject& owner) const {
    const std::uint32_t end = vr.StreamPosition + kShortHead;
    const bool cut = stop_.why != ParseStop::Why::kNone && stop_.why != ParseStop::Why::kPixelData;
    if (cut && stop_.position == end) return false;
    const VR* next = owner.GetNextVR(&vr);
    if (next == nullptr) return !IsFollowed(vr, owner);
    return next->StreamPosition == end && FindTraits(next->TypeCode) != nullptr;
  }

  const bool explicit_;
  const ParseStop& stop_;
};

}  // namespace

std::string WhyToDoubt(const DICOMObject& object, bool isExplicit, const ParseStop& stop) {
  DoubtSearch search(isExplicit, stop);
  WalkObject(object, search);
  return search.words;
}

}  // namespace tessaret::tool
