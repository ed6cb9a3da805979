#include "consistency.h"

#include <charconv>
#include <optional>

#include "base/checked.h"
#include "base/text.h"
#include "core/element_text.h"
#include "escape.h"
#include "object_walk.h"
#include "reencode.h"
#include "tag_text.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

/// A whole number of IS; nothing for an absent or another value.
std::optional<std::uint64_t> CountIn(const DICOMObject& object, std::uint16_t group,
                                     std::uint16_t element) {
  const VR* vr = object.GetVR(group, element);
  if (vr == nullptr || vr->Data == nullptr) return std::nullopt;
  std::string_view text = UnpaddedText(*vr);
  while (text.starts_with(' ') || text.starts_with('+')) text.remove_prefix(1);
  std::uint64_t count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return count;
}

/// What the attributes of an image say of the size of its pixel data (DICOM PS3.3, C.7.6.3).
struct PixelShape {
  std::uint64_t rows = 0;
  std::uint64_t columns = 0;
  std::uint64_t samples = 0;
  std::uint64_t frames = 1;
  std::uint64_t bitsAllocated = 0;

  /// The bytes of native pixel data without padding; nothing when the product fits no number.
  [[nodiscard]] std::optional<std::uint64_t> Bytes() const {
    const auto bits = CheckedProduct<std::uint64_t>(rows, columns, samples, frames, bitsAllocated);
    if (!bits) return std::nullopt;
    return *bits / 8 + (*bits % 8 != 0 ? 1 : 0);
  }
};

PixelShape ShapeOf(const DICOMObject& object) {
  PixelShape shape;
  shape.rows = object.GetUINT16(0x0028, 0x0010);
  shape.columns = object.GetUINT16(0x0028, 0x0011);
  shape.samples = object.GetUINT16(0x0028, 0x0002);
  shape.bitsAllocated = object.GetUINT16(0x0028, 0x0100);
  if (object.GetVR(0x0028, 0x0008) != nullptr)
    shape.frames = CountIn(object, 0x0028, 0x0008).value_or(1);
  const VR* interpretation = object.GetVR(0x0028, 0x0004);
  // Two pixels share their colour: two samples a pixel are stored.
  if (interpretation != nullptr && UnpaddedText(*interpretation).starts_with("YBR_FULL_422") &&
      shape.samples == 3) {
    shape.samples = 2;
  }
  return shape;
}

std::string Bytes(std::uint64_t count) {
  return Format("%llu bytes", static_cast<unsigned long long>(count));
}

std::string WhyPixelsAreOdd(const SourceFile& source, const UIDDictionary& uids) {
  const DICOMObject& object = *source.object;
  const VR* pixels = object.GetVR(0x7FE0, 0x0010);
  if (pixels == nullptr) {
    const VR* sopClass = object.GetVR(0x0008, 0x0016);
    const UIDEntry* entry = sopClass == nullptr ? nullptr : uids.FindEntry(UnpaddedText(*sopClass));
    const bool floats =
        object.GetVR(0x7FE0, 0x0008) != nullptr || object.GetVR(0x7FE0, 0x0009) != nullptr;
    return entry != nullptr && entry->IsImage && !floats ? "an image without pixel data" : "";
  }
  if (pixels->Items != nullptr) return {};
  const PixelShape shape = ShapeOf(object);
  const auto wanted = shape.Bytes();
  if (!wanted)
    return "rows, columns, samples, frames and bits name more pixel data than any file holds";
  if (*wanted == 0)
    return "rows, columns, samples, frames and bits leave no room for the pixel data that is there";
  const std::uint64_t there = pixels->Length;
  if (there < *wanted) return "pixel data has " + Bytes(there) + " of " + Bytes(*wanted);
  if (there > *wanted + *wanted % 2)
    return "pixel data has " + Bytes(there - *wanted) + " too many";
  return {};
}

/// An element that stands behind one of a higher tag, or empty.
std::string WhyOrderIsOdd(const DICOMObject& object) {
  const VR* last = nullptr;
  const VR* late = nullptr;
  object.Elements.ForEach([&](const VR& vr) {
    if (late == nullptr && last != nullptr && vr.StreamPosition < last->StreamPosition) late = last;
    last = &vr;
  });
  if (late == nullptr) return {};
  return TagText(*late) +
         Format(" at offset %u stands behind an element of a higher tag", late->StreamPosition);
}

class LetterCheck final : public ObjectVisitor {
 public:
  void OnElement(const VR& vr, const DICOMObject&, int) override {
    if (vr.Group == kStructuralGroup || FindTraits(vr.TypeCode) != nullptr || !words.empty())
      return;
    words = TagText(vr) + Format(" at offset %u", vr.StreamPosition) + " has the letters \"" +
            TypeLetters(vr.TypeCode) + "\" where the kind of value should stand";
  }
  void OnSequence(const VR&, const DICOMObject&, int) override {}
  void OnSequenceEnd(const VR&, int) override {}
  void OnItem(const VR&, std::uint32_t, const DICOMObject&, int) override {}
  void OnItemEnd(const VR&, int) override {}

  std::string words;
};

}  // namespace

std::vector<std::string> FindOddElements(const SourceFile& source) {
  LetterCheck letters;
  WalkObject(*source.object, letters);
  std::vector<std::string> oddities;
  for (std::string words : {WhyOrderIsOdd(*source.object), letters.words}) {
    if (!words.empty()) oddities.push_back(std::move(words));
  }
  return oddities;
}

std::vector<std::string> FindOddities(const SourceFile& source, const UIDDictionary& uids) {
  std::vector<std::string> oddities;
  if (std::string words = WhyPixelsAreOdd(source, uids); !words.empty())
    oddities.push_back(std::move(words));
  for (std::string& words : FindOddElements(source)) oddities.push_back(std::move(words));
  if (source.bigEndian && HasPixelsOfDoubtfulOrder(*source.object)) {
    oddities.emplace_back(
        "the order of the bytes in the pixel data is not certain, since programs write big endian "
        "pixels of this size in two ways");
  }
  return oddities;
}

}  // namespace tessaret::tool
