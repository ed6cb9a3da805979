#include "class_object.h"

#include <new>

#include "base/byte_order.h"
#include "meant_type.h"
#include "value_bytes.h"
#include "vr_traits.h"

namespace tessaret::tool {
void Require(Status status) {
  if (status == kOutOfMemory) throw std::bad_alloc();
  if (Failed(status)) throw CallError(LastError().text);
}

Ref<IDCMObject> NewObject() {
  Ref<IDCMObject> made;
  Require(Create("Tessaret.DCMObject", made));
  return made;
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

std::uint32_t StoredSize(IDcmFile& file, TagKey tag) {
  String letters;
  double length = 0;
  double offset = 0;
  VariantBool hasValue;
  std::int32_t items = 0;
  VariantBool found;
  Require(file.GetElement(GroupOf(tag), ElementOf(tag), &letters, &length, &offset, &hasValue,
                          &items, &found));
  return hasValue.IsTrue() ? static_cast<std::uint32_t>(length) : 0;
}

std::string TextOf(IDcmFile& file, TagKey tag) {
  return std::string(ValueBytes(file, tag, StoredSize(file, tag)).Text());
}

std::uint16_t UnsignedOf(IDcmFile& file, TagKey tag) {
  Variant value;
  // One more than wanted, so that a longer value shows.
  Require(file.GetBytes(GroupOf(tag), ElementOf(tag), 0, 3, &value));
  const auto bytes = BytesIn(value);
  return bytes.size() == 2 ? LoadLittle16(bytes.data()) : std::uint16_t{0};
}

void PutBytes(IDCMObject& object, TagKey tag, VrCode type, std::span<const std::uint8_t> bytes) {
  Require(object.PutVRData(GroupOf(tag), ElementOf(tag), String::FromNarrow(LettersOf(type)),
                           Variant(VariantArray::OfBytes(bytes))));
}

void Remove(IDCMObject& object, TagKey tag) {
  VariantBool removed;
  Require(object.RemoveVR(GroupOf(tag), ElementOf(tag), &removed));
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
  return CharacterSets(TextOf(*FileOf(object), kCharacterSetTag));
}

Place Find(Ref<IDCMObject> object, const TagPath& path) {
  Place place{std::move(object), {}};
  place.sets = SetsOf(*place.object, {});
  place.signedPixels = HasSignedPixels(*place.object, false);
  for (std::size_t at = 0; at + 1 < path.steps.size(); ++at) {
    place.object = ItemOf(*place.object, path.steps[at].tag, path.steps[at].item);
    if (!place.object) break;
    place.sets = SetsOf(*place.object, place.sets);
    place.signedPixels = HasSignedPixels(*place.object, place.signedPixels);
  }
  return place;
}

}  // namespace tessaret::tool
