#include "character_set_change.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "character_sets.h"
#include "class_object.h"
#include "decoded_text.h"
#include "listing.h"
#include "object_walk.h"
#include "value_bytes.h"
#include "value_text.h"

namespace tessaret::tool {
namespace {

/// Whether a byte is the same character in every set.
bool IsPlain(char c) {
  return static_cast<std::uint8_t>(c) < 0x80 && c != '\x1B' && c != '\\' && c != '~';
}

/// What counted for a text and what counts now.
struct BothSets {
  CharacterSets before;
  CharacterSets now;
};

class OtherTextSearch final : public ObjectVisitor {
 public:
  OtherTextSearch(DataSet object, const std::vector<FormerCharacterSet>& former,
                  const std::vector<TagPath>& written)
      : former_(former), written_(written) {
    sets_.push_back(SetsIn(object, {}));
  }

  void OnElement(const Element& element, DataSet& owner, int) override {
    const VrCode type = ShownType(element);
    if (!first.empty() || !element.hasValue || !IsInCharacterSet(type)) return;
    ValueBytes bytes(owner.File(), element.tag, element.length);
    const std::string_view text = bytes.Text();
    if (std::ranges::all_of(text, &IsPlain) || IsWritten(element.tag)) return;
    const BothSets& sets = sets_.back();
    if (DecodedText(sets.before, type, text) != DecodedText(sets.now, type, text))
      first = TextOf(PathTo(element.tag));
  }
  void OnSequence(const Element&, DataSet&, int) override {}
  void OnSequenceEnd(const Element&, DataSet&, int) override {}
  void OnItem(const Element& sequence, std::uint32_t index, DataSet& item, int) override {
    steps_.push_back({sequence.tag, index});
    sets_.push_back(SetsIn(item, sets_.back()));
  }
  void OnItemEnd(const Element&, int) override {
    sets_.pop_back();
    steps_.pop_back();
  }

  std::string first;

 private:
  /// To an element of the data set that the walk is in.
  [[nodiscard]] TagPath PathTo(TagKey tag) const {
    TagPath path{steps_, {}};
    path.steps.push_back({tag, 0});
    return path;
  }

  [[nodiscard]] bool IsWritten(TagKey tag) const {
    const TagPath path = PathTo(tag);
    return std::ranges::find(written_, path.steps, &TagPath::steps) != written_.end();
  }

  BothSets SetsIn(DataSet& set, const BothSets& around) const {
    BothSets sets = around;
    if (set.Find(kCharacterSetTag)) sets.before = sets.now = SetsOf(set.Object(), {});
    const TagPath path = PathTo(kCharacterSetTag);
    const auto former = std::ranges::find_if(
        former_, [&](const FormerCharacterSet& each) { return each.path.steps == path.steps; });
    if (former != former_.end())
      sets.before = former->value ? CharacterSets(*former->value) : around.before;
    return sets;
  }

  const std::vector<FormerCharacterSet>& former_;
  const std::vector<TagPath>& written_;
  std::vector<TagStep> steps_;  // to the item that the walk is in
  std::vector<BothSets> sets_;  // there and around
};

}  // namespace

void CharacterSetChange::Keep(const Ref<IDCMObject>& object, const TagPath& path) {
  if (path.Tag() != kCharacterSetTag) return;
  const Place place = Find(object, path);
  if (!place.object) return;
  FormerCharacterSet former{path, {}};
  if (FactsOf(*place.object, kCharacterSetTag))
    former.value = TextOf(*FileOf(*place.object), kCharacterSetTag);
  former_.push_back(std::move(former));
}

std::string CharacterSetChange::FirstOtherText(const Ref<IDCMObject>& object,
                                               const std::vector<TagPath>& written) const {
  if (former_.empty()) return {};
  const Listing listing(*object);
  OtherTextSearch search(DataSet(listing, object), former_, written);
  WalkObject(listing, object, search);
  return search.first;
}

}  // namespace tessaret::tool
