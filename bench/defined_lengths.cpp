#include "defined_lengths.h"

#include "core/dicom_object.h"
#include "core/element_reader.h"

namespace tessaret::bench {
namespace {

using Bytes = std::vector<std::uint8_t>;

void Append(Bytes& to, const Bytes& more) { to.insert(to.end(), more.begin(), more.end()); }

void Append16(Bytes& to, std::uint32_t value) {
  to.push_back(static_cast<std::uint8_t>(value));
  to.push_back(static_cast<std::uint8_t>(value >> 8));
}

void Append32(Bytes& to, std::uint32_t value) {
  Append16(to, value & 0xFFFF);
  Append16(to, value >> 16);
}

void AppendTag(Bytes& to, TagKey tag) {
  Append16(to, GroupOf(tag));
  Append16(to, ElementOf(tag));
}

Bytes EncodeItem(const DICOMObject& item) {
  Bytes content;
  item.Elements.ForEach([&](const VR& vr) { Append(content, EncodeWithDefinedLengths(vr)); });
  Bytes bytes;
  AppendTag(bytes, MakeTagKey(kStructuralGroup, kItemElement));
  Append32(bytes, static_cast<std::uint32_t>(content.size()));
  Append(bytes, content);
  return bytes;
}

Bytes ValueOf(const VR& element) {
  if (element.Items == nullptr) return Bytes(element.Data, element.Data + element.Length);
  Bytes items;
  for (const auto* node = element.Items->First; node != nullptr; node = node->next) {
    Append(items, EncodeItem(*node->value));
  }
  return items;
}

}  // namespace

Bytes EncodeWithDefinedLengths(const VR& element) {
  const Bytes value = ValueOf(element);
  const auto length = static_cast<std::uint32_t>(value.size());
  Bytes bytes;
  AppendTag(bytes, element.Key());
  bytes.push_back(static_cast<std::uint8_t>(FirstLetter(element.TypeCode)));
  bytes.push_back(static_cast<std::uint8_t>(SecondLetter(element.TypeCode)));
  if (HasLongForm(element.TypeCode)) {
    Append16(bytes, 0);
    Append32(bytes, length);
  } else {
    Append16(bytes, length);
  }
  Append(bytes, value);
  return bytes;
}

}  // namespace tessaret::bench
