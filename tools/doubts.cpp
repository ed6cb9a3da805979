#include "doubts.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

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

/// True when an item of `sequence` holds an element whose letters are no type.
bool HoldsUnknownTypes(const VR& sequence) {
  bool unknown = false;
  for (const ItemArray::Node* node = sequence.Items->First; node != nullptr; node = node->next) {
    if (node->value == nullptr) continue;
    node->value->Elements.ForEach(
        [&](const VR& vr) { unknown = unknown || FindTraits(vr.TypeCode) == nullptr; });
  }
  return unknown;
}

/// Types are capital letters; programs have been seen to write blanks and other signs, but no control characters.
bool CouldBeLetters(VrCode type) {
  const auto couldBe = [](int letter) { return letter >= ' ' && letter <= '~'; };
  return couldBe(type >> 8) && couldBe(type & 0xFF);
}

/// Whether the length that was read in the implicit form begins with the letters of the element's own type.
bool HoldsItsLetters(const VR& vr) {
  return vr.TypeCode == ((vr.Length & 0xFF) << 8 | (vr.Length >> 8 & 0xFF));
}

bool IsKnown(TagKey tag, const RTC& dictionary) { return dictionary.Find(tag) != nullptr; }

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
  DoubtSearch(const Reading& reading, const RTC& dictionary)
      : reading_(reading), dictionary_(dictionary) {}

  void OnElement(const VR& vr, const DICOMObject& owner, int) override {
    if (!reading_.isExplicit || vr.Group == kStructuralGroup) return;
    if (!CouldBeLetters(vr.TypeCode) && noLetters.empty())
      noLetters = Place(vr) + " does not read as explicit; what was read is not to be trusted";
    if (vr.Length == 0 && IsLongByTheStandardOnly(vr.TypeCode) && !IsFollowedProperly(vr, owner)) {
      Doubt("the length of " + Place(vr) +
            " is in a form that is not read here; what follows is not to be trusted");
    }
  }
  void OnSequence(const VR& vr, const DICOMObject&, int) override {
    const bool isUnknown = reading_.isExplicit && vr.TypeCode == type_code::UN;
    if (isUnknown && (HoldsUnknownTypes(vr) || LacksLettersSomewhere()))
      Doubt("the items of " + Place(vr) + " are in a form that is not read here");
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

  [[nodiscard]] bool LacksLettersSomewhere() const {
    return std::ranges::any_of(reading_.oddities, [](const ParseOddity& oddity) {
      return oddity.kind == ParseOddity::Kind::kNoLetters;
    });
  }

  /// True when what was read behind the head of `vr` can be the rest of a file that was read rightly: nothing, or an element
  /// of a higher tag that exists. The rest of a misread length comes out as a tag of an even group, mostly as a group length.
  [[nodiscard]] bool IsFollowedProperly(const VR& vr, const DICOMObject& owner) const {
    const std::uint32_t end = vr.StreamPosition + kShortHead;
    const ParseStop& stop = reading_.stop;
    const bool cut = stop.why != ParseStop::Why::kNone && stop.why != ParseStop::Why::kPixelData;
    if (cut && stop.position == end) return false;
    const VR* next = owner.GetNextVR(&vr);
    if (next == nullptr) return !IsFollowed(vr, owner);
    const bool isGroupLength = next->TypeCode == type_code::UL && next->Length == 4;
    const bool exists = next->Group % 2 != 0 || IsKnown(next->Key(), dictionary_);
    return next->StreamPosition == end && exists && (next->Element != 0 || isGroupLength) &&
           FindTraits(next->TypeCode) != nullptr;
  }

  const Reading& reading_;
  const RTC& dictionary_;
};

/// Why the data set does not seem to be in the form or the order in which it was read, or empty.
std::string WhyEncodingIsAnother(const DICOMObject& object, const Reading& reading,
                                 const RTC& dictionary) {
  const VR* first = FirstRead(object);
  if (first == nullptr) return {};
  if (!reading.isExplicit && HoldsItsLetters(*first))
    return Place(*first) + " does not read as implicit; what was read is not to be trusted";
  const TagKey turned =
      MakeTagKey(__builtin_bswap16(first->Group), __builtin_bswap16(first->Element));
  if (!IsKnown(first->Key(), dictionary) && IsKnown(turned, dictionary))
    return Place(*first) + " reads in the wrong byte order; what was read is not to be trusted";
  return {};
}

/// What an oddity means for people; a warning does not make the content doubtful.
struct OddityWords {
  ParseOddity::Kind kind;
  bool isWarning;
  std::string_view before;
  std::string_view behind;
};

using Kind = ParseOddity::Kind;

constexpr OddityWords kOddityWords[] = {
    {Kind::kCutByView, false, "the length of ", " goes beyond what it stands in"},
    {Kind::kWrongLength, true, "the length of ", " does not fit what it holds"},
    {Kind::kElementInSequence, false, "", " stands in a sequence, but in no item"},
    {Kind::kItemOutside, false, "an item without a sequence: ", ""},
    {Kind::kStrayFragment, false, "", " stands among the fragments of pixel data"},
    {Kind::kNotASequence, false, "", " has an undefined length, which its type does not allow"},
    {Kind::kNoDelimiter, true, "", " has no delimiter behind it"},
    {Kind::kStrayDelimiter, true, "stray delimiter ", ""},
    {Kind::kWrongDelimiter, true, "", " is not the delimiter that is due"},
    {Kind::kLateSyntax, true, "", " stands behind the meta header and is dropped"},
    {Kind::kNoLetters, true, "", " has zeros where the letters of its type should stand"},
    {Kind::kTwice, true, "", " is there twice; the last one counts"},
};
static_assert(std::size(kOddityWords) == ParseOddity::kKinds);

/// The words for `oddity` where it is a warning, or where it is none; otherwise empty.
std::string WordsFor(const ParseOddity& oddity, bool asWarning) {
  const auto* row = std::ranges::find(kOddityWords, oddity.kind, &OddityWords::kind);
  if (row->isWarning != asWarning) return {};
  return std::string(row->before) + TagText(oddity.group, oddity.element) +
         Format(" at offset %llu", static_cast<unsigned long long>(oddity.position)) +
         std::string(row->behind);
}

std::string FirstDoubtfulOddity(const Reading& reading) {
  for (const ParseOddity& oddity : reading.oddities) {
    if (std::string words = WordsFor(oddity, false); !words.empty()) return words;
  }
  return {};
}

}  // namespace

std::string WhyToDoubt(const DICOMObject& object, const Reading& reading, const RTC& dictionary) {
  if (std::string words = WhyEncodingIsAnother(object, reading, dictionary); !words.empty())
    return words;
  DoubtSearch search(reading, dictionary);
  WalkObject(object, search);
  if (!search.words.empty()) return search.words;
  if (!search.noLetters.empty()) return search.noLetters;
  return FirstDoubtfulOddity(reading);
}

std::vector<std::string> Warnings(const Reading& reading) {
  std::vector<std::string> warnings;
  for (const ParseOddity& oddity : reading.oddities) {
    if (std::string words = WordsFor(oddity, true); !words.empty())
      warnings.push_back(std::move(words));
  }
  return warnings;
}

}  // namespace tessaret::tool
