#include "support/compare_objects.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/text.h"

namespace tessaret::test {
namespace {

std::string NameOf(const VR& vr) { return Format("(%4.4X,%4.4X)", vr.Group, vr.Element); }

std::string Numbers(const char* field, std::uint64_t a, std::uint64_t b) {
  if (a == b) return {};
  return std::string(field) + " " + std::to_string(a) + " and " + std::to_string(b);
}

std::string DifferenceOfBytes(const VR& a, const VR& b) {
  if ((a.Data == nullptr) != (b.Data == nullptr)) return "Data null and not null";
  if (a.IsSteppedOver != b.IsSteppedOver) return "stepped over and not stepped over";
  if (a.Length != b.Length) return {};
  const auto one = a.FirstBytes();
  const auto other = b.FirstBytes();
  for (std::size_t at = 0; at < one.size(); ++at) {
    if (one[at] != other[at]) return "byte " + std::to_string(at) + Numbers("", one[at], other[at]);
  }
  return {};
}

bool IsOfPixels(const VR& vr) {
  const bool isPixels =
      vr.Group == 0x7FE0 && (vr.Element == 0x0008 || vr.Element == 0x0009 || vr.Element == 0x0010);
  const std::string_view types[] = {"OB", "OW", "OF", "OD", "OL", "OV", "UN"};
  const auto isItsType = [&](std::string_view letters) {
    return vr.TypeCode == MakeTypeCode(letters[0], letters[1]);
  };
  return (isPixels || vr.Group == 0xFFFE) &&
         (vr.TypeCode == type_code::kNone || std::ranges::any_of(types, isItsType));
}

std::string DifferenceOfItems(const VR& a, const VR& b, CompareLeniently leniently) {
  if ((a.Items == nullptr) != (b.Items == nullptr)) return ": Items null and not null";
  if (a.Items == nullptr) return {};
  if (const auto count = Numbers(": ItemCount", a.Items->ListLength, b.Items->ListLength);
      !count.empty()) {
    return count;
  }
  const ItemArray::Node* other = b.Items->First;
  std::uint32_t number = 0;
  for (const ItemArray::Node* node = a.Items->First; node != nullptr;
       node = node->next, other = other->next) {
    const std::string inside = Difference(*node->value, *other->value, leniently);
    if (!inside.empty()) return "[" + std::to_string(number) + "] " + inside;
    ++number;
  }
  return {};
}

std::string DifferenceOfElements(const VR& a, const VR& b, CompareLeniently leniently) {
  if (a.Key() != b.Key()) return ": tag " + NameOf(a) + " and " + NameOf(b);
  const bool anyLength = leniently.sequenceLengths && a.Items != nullptr && b.Items != nullptr;
  const std::string parts[] = {
      anyLength ? "" : Numbers("Length", a.Length, b.Length),
      leniently.types ? "" : Numbers("TypeCode", a.TypeCode, b.TypeCode),
      leniently.positions ? "" : Numbers("StreamPosition", a.StreamPosition, b.StreamPosition),
      Numbers("OwnsData", a.OwnsData, b.OwnsData),
      Numbers("Moved", a.Moved, b.Moved),
      Numbers("ValueTag", a.ValueTag, b.ValueTag),
      DifferenceOfBytes(a, b),
  };
  for (const std::string& part : parts) {
    if (!part.empty()) return ": " + part;
  }
  return DifferenceOfItems(a, b, leniently);
}

}  // namespace

std::string Difference(const DICOMObject& a, const DICOMObject& b, CompareLeniently leniently) {
  const VR* one = a.GetFirstVR();
  const VR* other = b.GetFirstVR();
  for (; one != nullptr && other != nullptr; one = a.GetNextVR(one), other = b.GetNextVR(other)) {
    const std::string inside = DifferenceOfElements(*one, *other, leniently);
    if (!inside.empty()) return NameOf(*one) + inside;
  }
  if (one != nullptr) return NameOf(*one) + " and no further element";
  if (other != nullptr) return "no further element and " + NameOf(*other);
  return Numbers("SequenceBytes", a.SequenceBytes, b.SequenceBytes);
}

std::string Difference(const VR& a, const VR& b, CompareLeniently leniently) {
  const std::string inside = DifferenceOfElements(a, b, leniently);
  return inside.empty() ? inside : NameOf(a) + inside;
}

void StepOverPixels(DICOMObject& object, std::uint32_t longest) {
  object.Elements.ForEach([longest](VR& vr) {
    for (std::uint32_t at = 0; at < vr.ItemCount(); ++at) StepOverPixels(*vr.GetItem(at), longest);
    if (vr.Data == nullptr || vr.Length <= longest || !IsOfPixels(vr)) return;
    constexpr std::uint32_t kBeginning = 256;
    std::unique_ptr<std::uint8_t[]> start(new std::uint8_t[kBeginning]());
    std::copy_n(vr.Data, std::min(vr.Length, kBeginning), start.get());
    const std::uint32_t length = vr.Length;
    delete[] vr.TakeData();
    vr.Length = length;
    vr.Start = start.release();
    vr.IsSteppedOver = true;
  });
}

std::string ValueText(const VR& vr) {
  return vr.Data == nullptr ? std::string()
                            : std::string(reinterpret_cast<const char*>(vr.Data), vr.Length);
}

}  // namespace tessaret::test
