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

constexpr std::uint32_t kShortHead = 8;  // tag, letters, 16-bit length

/// True when an element of `owner` was read from further on than `element`.
bool IsFollowed(const Element& element, const DataSet& owner) {
  bool followed = false;
  owner.ForEach([&](const Element& other) {
    followed = other.offset > element.offset;
    return !followed;
  });
  return followed;
}

std::string Place(const Element& element) {
  return TagText(element.tag) + Format(" at offset %u", element.offset);
}

/// Types are capital letters; programs have been seen to write blanks and other signs, but no control characters.
bool CouldBeLetters(VrCode type) {
  const auto couldBe = [](int letter) { return letter >= ' ' && letter <= '~'; };
  return couldBe(type >> 8) && couldBe(type & 0xFF);
}

/// Whether the length that was read in the implicit form begins with the letters of the element's own type.
bool HoldsItsLetters(const Element& element) {
  return element.type == ((element.length & 0xFF) << 8 | (element.length >> 8 & 0xFF));
}

/// The element of the data set that was read first.
std::optional<Element> FirstRead(const Listing& listing) {
  std::optional<Element> first;
  listing.ForEachOnTop([&](const Element& each) {
    const bool isEarlier = !first || each.offset < first->offset;
    if (GroupOf(each.tag) > kMetaGroup && isEarlier) first = each;
  });
  return first;
}

class DoubtSearch final : public ObjectVisitor {
 public:
  DoubtSearch(const Listing& listing, const Reading& reading, Host& host)
      : listing_(listing), reading_(reading), host_(host) {}

  void OnElement(const Element& element, DataSet& owner, int) override {
    if (!reading_.isExplicit || GroupOf(element.tag) == kStructuralGroup) return;
    if (!CouldBeLetters(element.type) && noLetters.empty())
      noLetters = Place(element) + " does not read as explicit; what was read is not to be trusted";
    if (element.length == 0 && IsLongByTheStandardOnly(element.type) &&
        !IsFollowedProperly(element, owner)) {
      Doubt("the length of " + Place(element) +
            " is in a form that is not read here; what follows is not to be trusted");
    }
  }
  void OnSequence(const Element& sequence, DataSet&, int) override {
    const bool isUnknown = reading_.isExplicit && sequence.type == type_code::UN;
    if (isUnknown && (HoldsUnknownTypes(sequence) || LacksLettersSomewhere()))
      Doubt("the items of " + Place(sequence) + " are in a form that is not read here");
  }
  void OnSequenceEnd(const Element&, DataSet&, int) override {}
  void OnItem(const Element&, std::uint32_t, DataSet&, int) override {}
  void OnItemEnd(const Element&, int) override {}

  std::string words;
  std::string noLetters;  // of an element that often follows from one of the others

 private:
  void Doubt(const std::string& why) {
    if (words.empty()) words = why;
  }

  /// True when an item of `sequence` holds an element whose letters are no type.
  [[nodiscard]] bool HoldsUnknownTypes(const Element& sequence) const {
    const int level = listing_.Level(sequence.row) + 1;
    for (std::size_t row = sequence.row + 1; row < listing_.Rows(); ++row) {
      if (listing_.Level(row) < level) return false;
      const bool isInItem = listing_.Level(row) == level && !listing_.IsItem(row);
      if (isInItem && FindTraits(listing_.Type(row)) == nullptr) return true;
    }
    return false;
  }

  [[nodiscard]] bool LacksLettersSomewhere() const {
    return std::ranges::any_of(reading_.oddities, [](const ReadingOddity& oddity) {
      return oddity.kind == ODDITY_NO_LETTERS;
    });
  }

  /// True when what was read behind the head of `element` can be the rest of a file that was read rightly: nothing, or an element
  /// of a higher tag that exists. The rest of a misread length comes out as a tag of an even group, mostly as a group length.
  [[nodiscard]] bool IsFollowedProperly(const Element& element, const DataSet& owner) const {
    const std::uint32_t end = element.offset + kShortHead;
    const bool cut = reading_.end.why != READ_TO_THE_END && reading_.end.why != READ_TO_PIXELS;
    if (cut && reading_.end.offset == end) return false;
    const auto next = owner.Next(element);
    if (!next) return !IsFollowed(element, owner);
    const bool isGroupLength = next->type == type_code::UL && next->length == 4;
    const bool exists = GroupOf(next->tag) % 2 != 0 || host_.Knows(next->tag);
    return next->offset == end && exists && (ElementOf(next->tag) != 0 || isGroupLength) &&
           FindTraits(next->type) != nullptr;
  }

  const Listing& listing_;
  const Reading& reading_;
  Host& host_;
};

/// Why the data set does not seem to be in the form or the order in which it was read, or empty.
std::string WhyEncodingIsAnother(const Listing& listing, const Reading& reading, Host& host) {
  const auto first = FirstRead(listing);
  if (!first) return {};
  if (!reading.isExplicit && HoldsItsLetters(*first))
    return Place(*first) + " does not read as implicit; what was read is not to be trusted";
  const TagKey turned =
      MakeTagKey(__builtin_bswap16(GroupOf(first->tag)), __builtin_bswap16(ElementOf(first->tag)));
  if (!host.Knows(first->tag) && host.Knows(turned))
    return Place(*first) + " reads in the wrong byte order; what was read is not to be trusted";
  return {};
}

/// What an oddity means for people; a warning does not make the content doubtful.
struct OddityWords {
  _EnumReadingOddity kind;
  bool isWarning;
  std::string_view before;
  std::string_view behind;
};

constexpr OddityWords kOddityWords[] = {
    {ODDITY_VALUE_BEYOND_ITEM, false, "the length of ", " goes beyond what it stands in"},
    {ODDITY_WRONG_LENGTH, true, "the length of ", " does not fit what it holds"},
    {ODDITY_ELEMENT_IN_SEQUENCE, false, "", " stands in a sequence, but in no item"},
    {ODDITY_ITEM_OUTSIDE, false, "an item without a sequence: ", ""},
    {ODDITY_STRAY_FRAGMENT, false, "", " stands among the fragments of pixel data"},
    {ODDITY_NOT_A_SEQUENCE, false, "", " has an undefined length, which its type does not allow"},
    {ODDITY_NO_DELIMITER, true, "", " has no delimiter behind it"},
    {ODDITY_STRAY_DELIMITER, true, "stray delimiter ", ""},
    {ODDITY_WRONG_DELIMITER, true, "", " is not the delimiter that is due"},
    {ODDITY_LATE_SYNTAX, true, "", " stands behind the meta header and is dropped"},
    {ODDITY_NO_LETTERS, true, "", " has zeros where the letters of its type should stand"},
    {ODDITY_TWICE, true, "", " is there twice; the last one counts"},
};

/// The words for `oddity` where it is a warning, or where it is none; otherwise empty.
std::string WordsFor(const ReadingOddity& oddity, bool asWarning) {
  const auto* row = std::ranges::find(kOddityWords, oddity.kind, &OddityWords::kind);
  if (row == std::end(kOddityWords) || row->isWarning != asWarning) return {};
  return std::string(row->before) + TagText(oddity.tag) +
         Format(" at offset %llu", static_cast<unsigned long long>(oddity.offset)) +
         std::string(row->behind);
}

std::string FirstDoubtfulOddity(const Reading& reading) {
  for (const ReadingOddity& oddity : reading.oddities) {
    if (std::string words = WordsFor(oddity, false); !words.empty()) return words;
  }
  return {};
}

}  // namespace

std::string WhyToDoubt(const Listing& listing, const Ref<IDCMObject>& object,
                       const Reading& reading, Host& host) {
  if (std::string words = WhyEncodingIsAnother(listing, reading, host); !words.empty())
    return words;
  DoubtSearch search(listing, reading, host);
  WalkObject(listing, object, search);
  if (!search.words.empty()) return search.words;
  if (!search.noLetters.empty()) return search.noLetters;
  return FirstDoubtfulOddity(reading);
}

std::vector<std::string> Warnings(const Reading& reading) {
  std::vector<std::string> warnings;
  for (const ReadingOddity& oddity : reading.oddities) {
    if (std::string words = WordsFor(oddity, true); !words.empty())
      warnings.push_back(std::move(words));
  }
  return warnings;
}

}  // namespace tessaret::tool
