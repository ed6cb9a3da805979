#include "line_dump.h"

#include <algorithm>
#include <map>
#include <vector>

#include "base/text.h"
#include "character_set_stack.h"
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
  LineDump(IDCMObject& object, const LineDumpOptions& options, Host& host)
      : host_(host),
        sets_(object),
        most_(options.wholeValues ? kNoLimit : kLongestValue),
        colours_(host.ColoursOutput()) {}

  void OnElement(const Element& element, DataSet& owner, int level) override {
    if (IsPrivateCreator(element.tag)) creators_.back().insert_or_assign(element.tag, element);
    if (GroupOf(element.tag) == kStructuralGroup) return Fragment(element, owner, level);
    if (element.type == type_code::SQ) return Sequence(element, owner, level);
    const std::string description = Description(element.tag, owner);
    ShownValue value(element, owner);
    BeginLine(ElementIndent(level), TagText(element.tag), Letters(element));
    const std::size_t columns = value.Show(host_.output, most_, sets_.Here());
    const std::string names = UidNames(element, value);
    host_.output.Write(names);
    EndLine(columns + Columns(names), {Length(element), value.Multiplicity(), description});
  }

  void OnSequence(const Element& sequence, DataSet& owner, int level) override {
    if (ShownValue(sequence, owner).IsHere()) OnElement(sequence, owner, level);
    Sequence(sequence, owner, level);
  }

  void OnSequenceEnd(const Element&, DataSet&, int level) override { SequenceEnd(level); }

  void OnItem(const Element& sequence, std::uint32_t, DataSet& item, int level) override {
    sets_.Enter(item);
    creators_.emplace_back();
    if (HoldsFragments(sequence)) return;
    Line(ItemIndent(level), TagText(kStructuralGroup, kItemElement), "na",
         Format("(Item #=%zu)", item.Count()), {std::string(kNotKept), 1, "Item"});
  }

  void OnItemEnd(const Element& sequence, int level) override {
    sets_.Leave();
    creators_.pop_back();
    if (HoldsFragments(sequence)) return;
    Line(ItemIndent(level), TagText(kStructuralGroup, kItemDelimiterElement), "na",
         "(ItemDelimitationItem)", {"0", 0, "Item Delimitation Item"});
  }

 private:
  static bool HoldsFragments(const Element& sequence) { return sequence.tag == kPixelDataTag; }

  static std::string Letters(const Element& element) { return Escaped(TypeLetters(element.type)); }

  static std::string Length(const Element& element) {
    if (element.length == kUndefinedLength || (element.items != 0 && element.length == 0))
      return std::string(kUndefined);
    return std::to_string(element.length);
  }

  void Sequence(const Element& sequence, DataSet& owner, int level) {
    const bool undefined = Length(sequence) == kUndefined;
    const std::string description = Description(sequence.tag, owner);
    const std::string words = HoldsFragments(sequence) ? "PixelSequence"
                              : undefined              ? "Sequence with undefined length"
                                                       : "Sequence with explicit length";
    Line(ElementIndent(level), TagText(sequence.tag), Letters(sequence),
         Format("(%s #=%u)", words.c_str(), sequence.items), {Length(sequence), 1, description});
    // The end of a list without items follows at once.
    if (sequence.items == 0 && sequence.length != 0) SequenceEnd(level);
  }

  void SequenceEnd(int level) {
    Line(ElementIndent(level), TagText(kStructuralGroup, kSequenceDelimiterElement), "na",
         "(SequenceDelimitationItem)", {"0", 0, "Sequence Delimitation Item"});
  }

  void Fragment(const Element& fragment, DataSet& owner, int level) {
    BeginLine(ItemIndent(level), TagText(fragment.tag), "pi");
    const std::size_t columns = ShownValue(fragment, owner).Show(host_.output, most_, sets_.Here());
    EndLine(columns, {Length(fragment), 1, "Item"});
  }

  /// "=CTImageStorage" behind a UID that has a name, one for each of several. Cut like the value: a name is longer than its UID.
  std::string UidNames(const Element& element, ShownValue& value) {
    if (element.type != type_code::UI || !element.hasValue) return {};
    std::string names;
    bool any = false;
    std::string_view rest = value.Text();
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
  std::string Description(TagKey tag, DataSet& owner) {
    if (const KnownElement* known = host_.FindElement(tag)) return known->name;
    const std::uint16_t element = ElementOf(tag);
    if (element == 0) return "Group Length";
    if (GroupOf(tag) % 2 == 0) return "Unknown";
    if (IsPrivateCreator(tag)) return "Private Creator";
    // Below (gggg,1000) no element belongs to a creator.
    if (element < 0x1000) return "Private";
    const auto creator = creators_.back().find(MakeTagKey(GroupOf(tag), element >> 8));
    if (creator == creators_.back().end() || !creator->second.hasValue) return "Private";
    ShownValue value(creator->second, owner);
    const std::string name =
        DecodedText(sets_.Here(), ShownType(creator->second), value.Text(), kLongestValue);
    return "Private (" + Escaped(name, kLongestValue) + ')';
  }

  void Line(int indent, std::string_view tag, std::string_view letters, std::string_view value,
            const Comment& comment) {
    BeginLine(indent, tag, letters);
    host_.output.Write(value);
    EndLine(Columns(value), comment);
  }

  void BeginLine(int indent, std::string_view tag, std::string_view letters) {
    std::string line(static_cast<std::size_t>(indent), ' ');
    line.append(tag).append(" ").append(letters).append(" ");
    host_.output.Write(line);
  }

  /// Behind a value of so many columns.
  void EndLine(std::size_t columns, const Comment& comment) {
    std::string line(columns < kValueColumns ? kValueColumns - columns : 0, ' ');
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
  std::vector<std::map<TagKey, Element>> creators_{1};  // met so far, in each data set on the way
  std::size_t most_;
  bool colours_;
};

}  // namespace

void DumpLines(const SourceFile& source, const LineDumpOptions& options, Host& host) {
  LineDump dump(*source.object, options, host);
  WalkObject(source.listing, source.object, dump);
}

}  // namespace tessaret::tool
