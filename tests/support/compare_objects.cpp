#include "support/compare_objects.h"

#include <cstring>

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
  if (a.Data == nullptr || a.Length != b.Length) return {};
  for (std::uint32_t at = 0; at < a.Length; ++at) {
    if (a.Data[at] != b.Data[at])
      return "byte " + std::to_string(at) + Numbers("", a.Data[at], b.Data[at]);
  }
  return {};
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

std::string ValueText(const VR& vr) {
  return vr.Data == nullptr ? std::string()
                            : std::string(reinterpret_cast<const char*>(vr.Data), vr.Length);
}

}  // namespace tessaret::test
