#include "line_dump.h"

#include <algorithm>

#include "base/text.h"
#include "character_set_stack.h"
#include "core/element_text.h"
#include "decoded_text.h"
#include "escape.h"
#include "object_walk.h"
#include "tag_text.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr std::size_t kValueColumns = 40;  // a longer value pushes its comment to the right
constexpr std::size_t kLongestValue = 64;
constexpr std::string_view kDim = "\x1b[2m";
constexpr std::string_view kPlain = "\x1b[0m";

/// What stands behind "#".
struct Comment {
  std::string length;
  std::uint32_t multiplicity;
  std::string_view description;
};

// Two blanks for an item and two more for what is in it.
constexpr int ElementIndent(int level) { return 4 * level; }
constexpr int ItemIndent(int level) { return 4 * level - 2; }

constexpr std::string_view kUndefined = "u/l";
// Items are held without the length that the file gives them.
constexpr std::string_view kNotKept = "-";

class LineDump final : public ObjectVisitor {
 public:
  LineDump(const DICOMObject& object, const LineDumpOptions& options, Host& host)
      : host_(host),
        sets_(object),
        most_(options.wholeValues ? kNoLimit : kLongestValue),
        colours_(host.ColoursOutput()) {}

  void OnElement(const VR& vr, const DICOMObject& owner, int level) override {
    if (vr.Group == kStructuralGroup) return Fragment(vr, level);
    if (vr.TypeCode == type_code::SQ) return Sequence(vr, owner, level);
    const std::string description = Description(vr, owner);
    Line(ElementIndent(level), TagText(vr), Letters(vr),
         ShownValue(vr, most_, sets_.Here()) + UidNames(vr),
         {Length(vr), Multiplicity(vr), description});
  }

  void OnSequence(const VR& vr, const DICOMObject& owner, int level) override {
    if (vr.Data != nullptr) OnElement(vr, owner, level);
    Sequence(vr, owner, level);
  }

  void OnSequenceEnd(const VR&, int level) override {
    Line(ElementIndent(level), TagText(kStructuralGroup, kSequenceDelimiterElement), "na",
         "(SequenceDelimitationItem)", {"0", 0, "Sequence Delimitation Item"});
  }

  void OnItem(const VR& sequence, std::uint32_t, const DICOMObject& item, int level) override {
    sets_.Enter(item);
    if (HoldsFragments(sequence)) return;
    Line(ItemIndent(level), TagText(kStructuralGroup, kItemElement), "na",
         Format("(Item #=%zu)", item.Elements.Size()), {std::string(kNotKept), 1, "Item"});
  }

  void OnItemEnd(const VR& sequence, int level) override {
    sets_.Leave();
    if (HoldsFragments(sequence)) return;
    Line(ItemIndent(level), TagText(kStructuralGroup, kItemDelimiterElement), "na",
         "(ItemDelimitationItem)", {"0", 0, "Item Delimitation Item"});
  }

 private:
  static bool HoldsFragments(const VR& sequence) { return sequence.Key() == kPixelDataTag; }

  static std::string Letters(const VR& vr) { return Escaped(TypeLetters(vr.TypeCode)); }

  static std::string Length(const VR& vr) {
    if (vr.Length == kUndefinedLength || (vr.Items != nullptr && vr.Length == 0))
      return std::string(kUndefined);
    return std::to_string(vr.Length);
  }

  void Sequence(const VR& vr, const DICOMObject& owner, int level) {
    const bool undefined = Length(vr) == kUndefined;
    const std::string description = Description(vr, owner);
    const std::string words = HoldsFragments(vr) ? "PixelSequence"
                              : undefined        ? "Sequence with undefined length"
                                                 : "Sequence with explicit length";
    Line(ElementIndent(level), TagText(vr), Letters(vr),
         Format("(%s #=%u)", words.c_str(), vr.ItemCount()), {Length(vr), 1, description});
    // The end of a list without items follows at once.
    if (vr.Items == nullptr && vr.Length != 0) OnSequenceEnd(vr, level);
  }

  void Fragment(const VR& vr, int level) {
    Line(ItemIndent(level), TagText(vr), "pi", ShownValue(vr, most_, sets_.Here()),
         {Length(vr), 1, "Item"});
  }

  /// "=CTImageStorage" behind a UID that has a name, one for each of several. Cut like the value: a name is longer than its UID.
  std::string UidNames(const VR& vr) {
    if (vr.TypeCode != type_code::UI || vr.Data == nullptr) return {};
    std::string names;
    bool any = false;
    std::string_view rest = UnpaddedText(vr);
    for (;;) {
      const std::size_t end = rest.find('\\');
      const std::string name = host_.NameOfUid(rest.substr(0, end));
      any = any || !name.empty();
      names += name;
      if (end == std::string_view::npos || names.size() > most_) break;
      names += '\\';
      rest.remove_prefix(end + 1);
    }
    return any ? " =" + Escaped(names, most_) : std::string();
  }

  /// What the dictionary says of a tag; for a private one whose it is.
  std::string Description(const VR& vr, const DICOMObject& owner) {
    if (const _RTCElement* entry = host_.Tags().Find(vr.Key()); entry != nullptr) {
      return entry->Description == nullptr ? std::string() : entry->Description;
    }
    if (vr.Element == 0) return "Group Length";
    if (vr.Group % 2 == 0) return "Unknown";
    if (vr.Element >= 0x0010 && vr.Element <= 0x00FF) return "Private Creator";
    // Below (gggg,1000) no element belongs to a creator.
    const VR* creator = vr.Element < 0x1000 ? nullptr : owner.GetVR(vr.Group, vr.Element >> 8);
    if (creator == nullptr || creator->Data == nullptr) return "Private";
    const std::string name =
        DecodedText(sets_.Here(), ShownType(*creator), UnpaddedText(*creator), kLongestValue);
    return "Private (" + Escaped(name, kLongestValue) + ')';
  }

  void Line(int indent, std::string_view tag, std::string_view letters, std::string_view value,
            const Comment& comment) {
    std::string line(static_cast<std::size_t>(indent), ' ');
    line.append(tag).append(" ").append(letters).append(" ").append(value);
    const std::size_t columns = Columns(value);
    line.append(columns < kValueColumns ? kValueColumns - columns : 0, ' ');
    line += ' ';
    if (colours_) line += kDim;
    line.append("# ")
        .append(comment.length)
        .append(", ")
        .append(std::to_string(comment.multiplicity));
    line.append(" ").append(comment.description);
    if (colours_) line += kPlain;
    host_.output.Line(line);
  }

  Host& host_;
  CharacterSetStack sets_;
  std::size_t most_;
  bool colours_;
};

}  // namespace

void DumpLines(const DICOMObject& object, const LineDumpOptions& options, Host& host) {
  LineDump dump(object, options, host);
  WalkObject(object, dump);
}

}  // namespace tessaret::tool
