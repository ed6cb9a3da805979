#include "model_dump.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "base/byte_order.h"
#include "base/text.h"
#include "class_object.h"
#include "file_walk.h"
#include "interrupt.h"
#include "json_values.h"
#include "meant_type.h"
#include "tag.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

bool IsPartOfModel(TagKey tag) {
  return ElementOf(tag) != 0 && GroupOf(tag) != kMetaGroup && GroupOf(tag) != kStructuralGroup;
}

/// The tag behind `tag`, or the first one for none.
std::optional<TagKey> NextTag(IDCMObject& object, std::optional<TagKey> tag) {
  std::int32_t group = tag ? GroupOf(*tag) : 0;
  std::int32_t element = tag ? ElementOf(*tag) : 0;
  VariantBool found;
  Require(tag ? object.GetNextVR(&group, &element, &found)
              : object.GetFirstVR(&group, &element, &found));
  if (!found.IsTrue()) return std::nullopt;
  return static_cast<std::uint32_t>(group) << 16 | static_cast<std::uint32_t>(element);
}

/// Writes the fragments of compressed pixel data as a file has them, each behind its tag and length.
void WriteFragments(JsonWriter& json, IDCMObject& object, TagKey tag) {
  InlineBinary binary(json);
  for (std::uint32_t index = 0;; ++index) {
    const Ref<IDCMObject> item = ItemOf(object, tag, index);
    if (!item) return binary.End();
    StopIfInterrupted();
    const Ref<IDcmFile> file = FileOf(*item);
    const TagKey inside = NextTag(*item, std::nullopt).value_or(0);
    ValueBytes value(*file, inside, StoredSize(*file, inside));
    std::uint8_t head[8];
    StoreLittle16(head, kStructuralGroup);
    StoreLittle16(head + 2, kItemElement);
    StoreLittle32(head + 4, value.Size());
    binary.Add(head);
    binary.Add(value);
  }
}

/// Goes through an object and its items without the stack of calls that deep nesting would take.
class ModelDump {
 public:
  ModelDump(bool isImplicit, const std::string& uri, JsonWriter& json)
      : isImplicit_(isImplicit), uri_(uri), json_(json) {}

  void Of(IDCMObject& object) {
    Enter(Ref<IDCMObject>(&object), {}, false, uri_ + '#');
    while (!levels_.empty()) Step();
  }

 private:
  struct Level {
    Ref<IDCMObject> object;
    CharacterSets sets;
    bool signedPixels;
    std::string path;           // what its elements are behind, "#00081140/0/"
    std::optional<TagKey> tag;  // the element that the walk stands at
    bool inItems = false;       // of that element
    std::uint32_t nextItem = 0;
  };

  void Enter(Ref<IDCMObject> object, const CharacterSets& around, bool signedAround,
             std::string path) {
    CharacterSets sets = SetsOf(*object, around);
    const bool isSigned = isImplicit_ && HasSignedPixels(*object, signedAround);
    levels_.push_back(
        {std::move(object), std::move(sets), isSigned, std::move(path), {}, false, 0});
    json_.BeginObject();
  }

  void Step() {
    StopIfInterrupted();
    Level& level = levels_.back();
    if (level.inItems) return StepItem(level);
    level.tag = NextTag(*level.object, level.tag);
    if (!level.tag) {
      levels_.pop_back();
      json_.EndObject();
    } else if (IsPartOfModel(*level.tag)) {
      Element(level, *level.tag);
    }
  }

  void StepItem(Level& level) {
    const std::uint32_t index = level.nextItem++;
    Ref<IDCMObject> item = ItemOf(*level.object, *level.tag, index);
    if (!item) {
      level.inItems = false;
      json_.EndArray().EndObject();
      return;
    }
    Enter(std::move(item), level.sets, level.signedPixels,
          level.path + JsonTag(*level.tag) + '/' + std::to_string(index) + '/');
  }

  void Element(Level& level, TagKey tag) {
    IDCMObject& object = *level.object;
    ElementFacts facts = *FactsOf(object, tag);
    if (const VrCode type = MeantType(tag, facts.type, isImplicit_, level.signedPixels);
        type != facts.type) {
      facts.type = type;
      facts.letters = LettersOf(type);
    }
    // The model has no other types than the standard.
    if (FindTraits(facts.type) == nullptr) facts.letters = LettersOf(type_code::UN);
    const bool hasItems = HasItems(object, tag);
    const std::string name = JsonTag(tag);
    json_.Key(name).BeginObject();
    if (tag == kPixelDataTag && hasItems) {
      json_.Member("vr", facts.letters);
      WriteFragments(json_, object, tag);
    } else if (hasItems || facts.type == type_code::SQ) {
      json_.Member("vr", "SQ");
      if (hasItems) {
        json_.Key("Value").BeginArray();
        level.inItems = true;
        level.nextItem = 0;
        return;
      }
    } else if (tag == kCharacterSetTag && !level.sets.IsUnnamed()) {
      // What text is written in here.
      json_.Member("vr", "CS").Key("Value").BeginArray().String("ISO_IR 192").EndArray();
    } else {
      json_.Member("vr", facts.letters);
      if (facts.length != 0) Value(level, tag, facts, level.path + name);
    }
    json_.EndObject();
  }

  void Value(const Level& level, TagKey tag, const ElementFacts& facts, const std::string& uri) {
    const Ref<IDcmFile> file = FileOf(*level.object);
    ValueBytes value(*file, tag, StoredSize(*file, tag));
    if (value.Size() == 0) {
      json_.Member("BulkDataURI", uri);
    } else if (!WriteValues(json_, facts.type, value, level.sets)) {
      WriteInlineBinary(json_, value);
    }
  }

  const bool isImplicit_;
  const std::string& uri_;
  JsonWriter& json_;
  std::vector<Level> levels_;
};

bool IsUriCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         std::string_view("/-._~").find(c) != std::string_view::npos;
}

}  // namespace

void DumpModel(const SourceFile& source, const std::string& uri, JsonWriter& json) {
  ModelDump(source.IsImplicit(), uri, json).Of(*source.object);
}

std::string UriOf(const std::string& path) {
  if (path == kStandardInput) return {};
  std::error_code error;
  std::string uri = "file://";
  for (const char c : std::filesystem::absolute(path, error).string()) {
    if (IsUriCharacter(c)) {
      uri += c;
    } else {
      uri += Format("%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    }
  }
  return uri;
}

}  // namespace tessaret::tool
