#include "doubts.h"

#include "base/text.h"
#include "object_walk.h"
#include "tag_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr std::uint16_t kMetaGroup = 0x0002;
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

/// Types are capital letters; programs have been seen to write blanks and other signs, but no control characters.
bool CouldBeLetters(VrCode type) {
  const auto couldBe = [](int letter) { return letter >= ' ' && letter <= '~'; };
  return couldBe(type >> 8) && couldBe(type & 0xFF);
}

/// Whether the length that was read in the implicit form begins with the letters of a type.
bool HoldsLetters(std::uint32_t length) {
  const auto letters = static_cast<VrCode>((length & 0xFF) << 8 | (length >> 8 & 0xFF));
  return FindTraits(letters) != nullptr;
}

/// The element of the data set that was read first, or null.
const VR* FirstRead(const DICOMObject& object) {
  const VR* first = nullptr;
  object.Elements.ForEach([&](const VR& vr) {
    const bool isEarlier = first == nullptr || vr.StreamPosition < first->StreamPosition;
    if (vr.Group > kMetaGroup && isEarlier) first = &vr;
  });
  return first;
}

class DoubtSearch final : public ObjectVisitor {
 public:
  DoubtSearch(bool isExplicit, const ParseStop& stop) : explicit_(isExplicit), stop_(stop) {}

  void OnElement(const VR& vr, const DICOMObject& owner, int) override {
    if (explicit_ && vr.Group != kStructuralGroup && !CouldBeLetters(vr.TypeCode) &&
        noLetters.empty())
      noLetters = Place(vr) + " does not read as explicit; what was read is not to be trusted";
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
  std::string noLetters;  // of an element that often follows from one of the others

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
  const VR* first = FirstRead(object);
  if (!isExplicit && first != nullptr && HoldsLetters(first->Length))
    return Place(*first) + " does not read as implicit; what was read is not to be trusted";
  DoubtSearch search(isExplicit, stop);
  WalkObject(object, search);
  return search.words.empty() ? search.noLetters : search.words;
}

}  // namespace tessaret::tool
