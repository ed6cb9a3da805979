// Elements, objects and deep nests for tests, and what they hold as text.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/dicom_object.h"
#include "support/bytes.h"

namespace tessaret::test {

inline constexpr TagKey kSequenceTag = MakeTagKey(0x0040, 0xA730);
inline constexpr TagKey kTextTag = MakeTagKey(0x0040, 0xA160);

/// An array of the caller's, as an element takes it over.
inline std::uint8_t* NewBytes(const Bytes& value) {
  auto* bytes = new std::uint8_t[value.size()];
  std::copy(value.begin(), value.end(), bytes);
  return bytes;
}

/// A new element that owns a copy of `value`; no value gives no Data.
inline VR* NewVR(TagKey key, const Bytes& value = {}, VrCode type = type_code::OB) {
  auto vr = std::make_unique<VR>(GroupOf(key), ElementOf(key),
                                 static_cast<std::uint32_t>(value.size()), nullptr);
  if (!value.empty()) vr->Data = NewBytes(value);
  vr->TypeCode = type;
  return vr.release();
}

inline VR* NewVR(TagKey key, std::string_view text) {
  return NewVR(key, BytesOf(text), type_code::UT);
}

/// A new object that holds these elements.
inline DICOMObject* NewObject(std::initializer_list<VR*> elements) {
  auto object = std::make_unique<DICOMObject>();
  for (VR* element : elements) object->Push(element);
  return object.release();
}

/// A new sequence element with these items.
inline VR* NewSequence(TagKey key, std::initializer_list<DICOMObject*> items) {
  VR* vr = NewVR(key, Bytes{}, type_code::SQ);
  for (DICOMObject* item : items) vr->AddItem(item);
  return vr;
}

inline Bytes ValueOf(const VR& vr) {
  return vr.Data == nullptr ? Bytes{} : Bytes(vr.Data, vr.Data + vr.Length);
}

inline std::string TextOf(const VR& vr) { return TextOf(ValueOf(vr)); }

/// The keys in order, as GetFirstVR and GetNextVR tell them.
inline std::vector<TagKey> KeysOf(const DICOMObject& object) {
  std::vector<TagKey> keys;
  for (const VR* vr = object.GetFirstVR(); vr != nullptr; vr = object.GetNextVR(vr)) {
    keys.push_back(vr->Key());
  }
  return keys;
}

/// All values and items in order, nested ones in brackets. For objects that are not deep.
inline std::string Outline(const DICOMObject& object) {
  std::string text;
  for (VR* vr = object.GetFirstVR(); vr != nullptr; vr = object.GetNextVR(vr)) {
    if (!text.empty()) text += ' ';
    text += std::to_string(vr->Group) + "." + std::to_string(vr->Element) + "=" + TextOf(*vr);
    for (std::uint32_t at = 0; at < vr->ItemCount(); ++at) {
      text += "[" + Outline(*vr->GetItem(at)) + "]";
    }
  }
  return text;
}

/// The text that the item at `level` of a nest holds; the innermost is at 1.
inline std::string NestText(std::uint32_t level) { return "level " + std::to_string(level); }

/// An object with an element and a sequence of one item, which holds the same, and so on: `depth` objects, all made
/// without recursion. The outermost holds the highest number.
inline std::unique_ptr<DICOMObject> NewNest(std::uint32_t depth) {
  std::unique_ptr<DICOMObject> object;
  for (std::uint32_t level = 1; level <= depth; ++level) {
    auto outer = std::make_unique<DICOMObject>();
    outer->Push(NewVR(kTextTag, NestText(level)));
    if (object) {
      outer->Push(NewVR(kSequenceTag, Bytes{}, type_code::SQ));
      outer->Push(object.release());
    }
    object = std::move(outer);
  }
  return object;
}

/// The item one level further in, or null.
inline DICOMObject* InnerOf(const DICOMObject& object) {
  VR* sequence = object.GetVR(GroupOf(kSequenceTag), ElementOf(kSequenceTag));
  return sequence == nullptr || sequence->ItemCount() == 0 ? nullptr : sequence->GetItem(0);
}

/// How many levels from the outermost are as NewNest made them; `depth` when all are.
inline std::uint32_t IntactLevels(const DICOMObject& nest, std::uint32_t depth) {
  std::uint32_t intact = 0;
  for (const DICOMObject* at = &nest; at != nullptr; at = InnerOf(*at)) {
    const VR* text = at->GetVR(GroupOf(kTextTag), ElementOf(kTextTag));
    if (text == nullptr || TextOf(*text) != NestText(depth - intact)) break;
    ++intact;
  }
  return intact;
}

}  // namespace tessaret::test
