#include "json_dump.h"

#include "character_set_stack.h"
#include "core/element_text.h"
#include "json_values.h"
#include "object_walk.h"

namespace tessaret::tool {
namespace {

class JsonDump final : public ObjectVisitor {
 public:
  JsonDump(const DICOMObject& object, JsonWriter& json) : json_(json), sets_(object) {}

  void OnElement(const VR& vr, const DICOMObject&, int) override {
    if (vr.Group == kStructuralGroup) {
      json_.BeginObject();
      BytesValue(vr);
      json_.EndObject();
      return;
    }
    Begin(vr);
    Value(vr);
    json_.EndObject();
  }

  void OnSequence(const VR& vr, const DICOMObject&, int) override {
    Begin(vr);
    json_.Key(HoldsFragments(vr) ? "fragments" : "Value").BeginArray();
  }
  void OnSequenceEnd(const VR&, int) override { json_.EndArray().EndObject(); }
  void OnItem(const VR& sequence, std::uint32_t, const DICOMObject& item, int) override {
    sets_.Enter(item);
    if (!HoldsFragments(sequence)) json_.BeginObject();
  }
  void OnItemEnd(const VR& sequence, int) override {
    sets_.Leave();
    if (!HoldsFragments(sequence)) json_.EndObject();
  }

 private:
  static bool HoldsFragments(const VR& sequence) { return sequence.Key() == kPixelDataTag; }

  void Begin(const VR& vr) {
    json_.Key(JsonTag(vr.Group, vr.Element)).BeginObject();
    json_.Member(
        "vr", TypeLetters(vr.Items == nullptr || HoldsFragments(vr) ? vr.TypeCode : type_code::SQ));
  }

  void Value(const VR& vr) {
    if (vr.Length == 0) return;
    if (vr.Data == nullptr) {
      if (vr.TypeCode != type_code::SQ) json_.Member("length", std::uint64_t{vr.Length});
      return;
    }
    if (!WriteValues(json_, vr.TypeCode, {vr.Data, vr.Length}, sets_.Here(),
                     DecimalText::kAsWritten))
      BytesValue(vr);
  }

  void BytesValue(const VR& vr) {
    if (vr.Data != nullptr && vr.Length <= kLongestInlineBinary) {
      WriteInlineBinary(json_, {vr.Data, vr.Length});
    } else {
      json_.Member("length", std::uint64_t{vr.Length});
    }
  }

  JsonWriter& json_;
  CharacterSetStack sets_;
};

}  // namespace

void DumpJson(const DICOMObject& object, JsonWriter& json) {
  json.BeginObject();
  JsonDump dump(object, json);
  WalkObject(object, dump);
  json.EndObject();
}

}  // namespace tessaret::tool
