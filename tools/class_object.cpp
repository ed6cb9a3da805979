#include "class_object.h"

#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr TagKey kCharacterSetTag = MakeTagKey(0x0008, 0x0005);

}  // namespace

void Require(Status status) {
  if (Failed(status)) throw CallError(LastError().text);
}

Ref<IDCMObject> NewObject() {
  Ref<IDCMObject> made;
  Require(Create("Tessaret.DCMObject", made));
  return made;
}

Ref<IDCMObject> ObjectOver(DICOMObject& data) {
  Ref<IDCMObject> object = NewObject();
  Require(object.As<IDcmObjectManager>()->PutPtr(0, &data));
  return object;
}

std::optional<ElementFacts> FactsOf(IDCMObject& object, TagKey tag) {
  String name;
  String letters;
  std::int32_t length = 0;
  std::int32_t count = 0;
  VariantBool found;
  Require(
      object.GetVRDescr(GroupOf(tag), ElementOf(tag), &name, &letters, &length, &count, &found));
  if (!found.IsTrue()) return std::nullopt;
  std::string narrow = letters.Narrow();
  const VrCode type = TypeCodeOf(narrow);
  return ElementFacts{type, std::move(narrow), static_cast<std::uint32_t>(length)};
}

Variant ValueOf(IDCMObject& object, TagKey tag) {
  String letters;
  Variant value;
  Require(object.GetVRData(GroupOf(tag), ElementOf(tag), &letters, &value));
  return value;
}

std::span<const std::uint8_t> BytesIn(const Variant& value) {
  const VariantArray* array = value.AsArray();
  return array == nullptr ? std::span<const std::uint8_t>() : array->Bytes();
}

Ref<IDCMObject> ItemOf(IDCMObject& object, TagKey tag, std::uint32_t index) {
  Ref<IDCMObject> item;
  Require(object.get_Sequence(GroupOf(tag), ElementOf(tag), static_cast<std::int32_t>(index),
                              item.Receive()));
  return item;
}

bool HasItems(IDCMObject& object, TagKey tag) {
  std::int16_t count = 0;
  Require(object.get_SequencesCount(GroupOf(tag), ElementOf(tag), &count));
  return count > 0;
}

CharacterSets SetsOf(IDCMObject& object, const CharacterSets& around) {
  if (!FactsOf(object, kCharacterSetTag)) return around;
  const Variant value = ValueOf(object, kCharacterSetTag);
  const auto bytes = BytesIn(value);
  return CharacterSets({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

Place Find(Ref<IDCMObject> object, const TagPath& path) {
  Place place{std::move(object), {}};
  place.sets = SetsOf(*place.object, {});
  for (std::size_t at = 0; at + 1 < path.steps.size(); ++at) {
    place.object = ItemOf(*place.object, path.steps[at].tag, path.steps[at].item);
    if (!place.object) break;
    place.sets = SetsOf(*place.object, place.sets);
  }
  return place;
}

}  // namespace tessaret::tool
