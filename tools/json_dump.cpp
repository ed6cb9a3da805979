#include "json_dump.h"

#include "character_set_stack.h"
#include "json_values.h"
#include "object_walk.h"

namespace tessaret::tool {
namespace {

class JsonDump final : public ObjectVisitor {
 public:
  JsonDump(IDCMObject& object, JsonWriter& json) : json_(json), sets_(object) {}

  void OnElement(const Element& element, DataSet& owner, int) override {
    ValueBytes bytes(owner.File(), element.tag, element.hasValue ? element.length : 0);
    if (GroupOf(element.tag) == kStructuralGroup) {
      json_.BeginObject();
      BytesValue(element, bytes);
      json_.EndObject();
      return;
    }
    Begin(element);
    Value(element, bytes);
    json_.EndObject();
  }

  void OnSequence(const Element& sequence, DataSet&, int) override {
    Begin(sequence);
    json_.Key(HoldsFragments(sequence) ? "fragments" : "Value").BeginArray();
  }
  void OnSequenceEnd(const Element&, DataSet&, int) override { json_.EndArray().EndObject(); }
  void OnItem(const Element& sequence, std::uint32_t, DataSet& item, int) override {
    sets_.Enter(item);
    if (!HoldsFragments(sequence)) json_.BeginObject();
  }
  void OnItemEnd(const Element& sequence, int) override {
    sets_.Leave();
    if (!HoldsFragments(sequence)) json_.EndObject();
  }

 private:
  static bool HoldsFragments(const Element& sequence) { return sequence.tag == kPixelDataTag; }

  void Begin(const Element& element) {
    json_.Key(JsonTag(element.tag)).BeginObject();
    const bool hasItsType = element.items == 0 || HoldsFragments(element);
    json_.Member("vr", TypeLetters(hasItsType ? element.type : type_code::SQ));
  }

  void Value(const Element& element, ValueBytes& bytes) {
    if (element.length == 0) return;
    if (!element.hasValue) {
      if (element.type != type_code::SQ) json_.Member("length", std::uint64_t{element.length});
      return;
    }
    if (!WriteValues(json_, element.type, bytes, sets_.Here(), DecimalText::kAsWritten))
      BytesValue(element, bytes);
  }

  void BytesValue(const Element& element, ValueBytes& bytes) {
    if (element.hasValue && element.length <= kLongestInlineBinary) {
      WriteInlineBinary(json_, bytes);
    } else {
      json_.Member("length", std::uint64_t{element.length});
    }
  }

  JsonWriter& json_;
  CharacterSetStack sets_;
};

}  // namespace

void DumpJson(const SourceFile& source, JsonWriter& json) {
  json.BeginObject();
  JsonDump dump(*source.object, json);
  WalkObject(source.listing, source.object, dump);
  json.EndObject();
}

}  // namespace tessaret::tool
