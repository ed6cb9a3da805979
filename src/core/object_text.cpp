#include "core/object_text.h"

#include <vector>

#include "base/text.h"
#include "core/element_text.h"

namespace tessaret {
namespace {

struct Punctuation {
  VrCode type;
  std::string_view dropped;
};

// Old files write "12:30:00.0" and "1999.12.31"; both forms are listed as the present one.
constexpr Punctuation kPunctuation[] = {{type_code::TM, ":."}, {type_code::DA, "."}};

std::string WithoutPunctuation(std::string_view text, VrCode type) {
  std::string kept(text);
  for (const Punctuation& row : kPunctuation) {
    if (row.type != type) continue;
    std::erase_if(kept, [&](char c) { return row.dropped.find(c) != std::string_view::npos; });
  }
  return kept;
}

std::string ValueText(const VR& vr, VrCode type) {
  switch (FormOfValue(vr, type)) {
    case ValueForm::kEmpty:
      return std::string(kEmptyValue);
    case ValueForm::kText:
      return WithoutControls(WithoutPunctuation(Trimmed(FirstCharacters(vr)), type));
    case ValueForm::kNumber:
      return NumberText(vr, type);
    case ValueForm::kBytes:
      break;
  }
  return BytesText(vr);
}

/// Walks an object and what is nested in it with a stack of its own.
class Listing {
 public:
  Listing(const RTC* dictionary, const LineSink& sink, std::size_t firstLine = 0)
      : dictionary_(dictionary), sink_(sink), passedBy_(firstLine) {}

  void Of(const DICOMObject& object, int depth) {
    Enter(&object, depth);
    Walk();
  }

  void OfElement(const VR& vr, int depth) {
    Enter(nullptr, depth);
    levels_.back().elements.push_back(&vr);
    Walk();
  }

 private:
  /// One object that is being listed.
  struct Level {
    int depth;
    std::string prefix;
    std::vector<const VR*> elements;
    std::size_t next = 0;                   // of elements
    const VR* sequence = nullptr;           // the one whose items are being listed
    const ItemArray::Node* item = nullptr;  // of sequence; null before the first
    int itemNumber = 0;
  };

  void Walk() {
    while (!levels_.empty() && !ended_) Step(levels_.back());
  }

  void Enter(const DICOMObject* object, int depth) {
    Level level{.depth = depth, .prefix = {}, .elements = {}};
    if (depth > 0) level.prefix = std::string(static_cast<std::size_t>(depth), '>') + ' ';
    // An item list may hold null.
    if (object != nullptr) {
      level.elements.reserve(object->Elements.Size());
      object->Elements.ForEach([&](const VR& vr) { level.elements.push_back(&vr); });
    }
    levels_.push_back(std::move(level));
  }

  /// The next line or two. The level may be gone or moved afterwards.
  void Step(Level& level) {
    if (level.sequence != nullptr) return StepItem(level);
    if (level.next == level.elements.size()) return levels_.pop_back();
    const VR& vr = *level.elements[level.next++];
    if (vr.ItemCount() == 0) return List(level, vr);
    ListSequence(level, vr);
  }

  void List(const Level& level, const VR& vr) {
    Line(level, [&] {
      const TagWords words = LookUpTag(dictionary_, vr);
      const VrCode type = ShownType(vr, words);
      return Format("(%4.4X,%4.4X) '%s' [%6d] '%s' : ", vr.Group, vr.Element,
                    TypeLetters(type).c_str(), static_cast<int>(vr.Length),
                    words.description.c_str()) +
             ValueText(vr, type);
    });
  }

  void ListSequence(Level& level, const VR& vr) {
    Line(level, [&] {
      return Format("(%4.4X,%4.4X) 'SQ' %d items '%s'", vr.Group, vr.Element,
                    static_cast<int>(vr.ItemCount()),
                    LookUpTag(dictionary_, vr).description.c_str());
    });
    level.sequence = &vr;
    level.item = nullptr;
    level.itemNumber = 0;
    if (level.depth < kDeepestListedLevel) return;
    Line(level, [] { return std::string("..."); });
    EndSequence(level);
  }

  void StepItem(Level& level) {
    if (level.itemNumber > 0) Line(level, [&] { return Format("#end item %d", level.itemNumber); });
    level.item = level.itemNumber == 0 ? level.sequence->Items->First : level.item->next;
    if (level.item == nullptr) return EndSequence(level);
    ++level.itemNumber;
    Line(level, [&] { return Format("#start item %d", level.itemNumber); });
    Enter(level.item->value, level.depth + 1);
  }

  void EndSequence(Level& level) {
    Line(level, [&] {
      return Format("End sequence (%4.4X,%4.4X)", level.sequence->Group, level.sequence->Element);
    });
    level.sequence = nullptr;
  }

  /// `make` gives the words of a line. Making them is nearly all that a listing costs, so none are made that nobody sees.
  template <class Make>
  void Line(const Level& level, Make make) {
    if (ended_) return;
    if (passedBy_ > 0) {
      --passedBy_;
      return;
    }
    line_.assign(level.prefix).append(make()).append("\n");
    ended_ = !sink_(line_);
  }

  const RTC* const dictionary_;
  const LineSink& sink_;
  std::size_t passedBy_;  // lines that come before the first one that is wanted
  bool ended_ = false;    // the sink wants no more
  std::string line_;      // keeps its room from line to line
  std::vector<Level> levels_;
};

}  // namespace

void ListObject(const DICOMObject& object, int depth, const RTC* dictionary, const LineSink& sink) {
  Listing(dictionary, sink).Of(object, depth);
}

void ListElement(const VR& vr, std::size_t firstLine, const RTC* dictionary, const LineSink& sink) {
  Listing(dictionary, sink, firstLine).OfElement(vr, 0);
}

std::string ObjectToText(const DICOMObject& object, int depth, const RTC* dictionary) {
  std::string text;
  ListObject(object, depth, dictionary, [&text](std::string_view line) {
    text += line;
    return true;
  });
  return text;
}

std::string VRValueToText(const VR& vr) { return ValueText(vr, vr.TypeCode); }

}  // namespace tessaret
