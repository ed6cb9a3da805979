#include "consistency.h"

#include <charconv>
#include <limits>
#include <optional>

#include "base/checked.h"
#include "base/text.h"
#include "class_object.h"
#include "reencode.h"
#include "tag_text.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

/// A whole number of IS; nothing for an absent or another value.
std::optional<std::uint64_t> CountIn(IDcmFile& file, TagKey tag) {
  const std::string value = TextOf(file, tag);
  std::string_view text = UnpaddedText(value);
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

PixelShape ShapeOf(const SourceFile& source) {
  const Ref<IDcmFile> file = FileOf(*source.object);
  PixelShape shape;
  shape.rows = UnsignedOf(*file, MakeTagKey(0x0028, 0x0010));
  shape.columns = UnsignedOf(*file, MakeTagKey(0x0028, 0x0011));
  shape.samples = UnsignedOf(*file, MakeTagKey(0x0028, 0x0002));
  shape.bitsAllocated = UnsignedOf(*file, MakeTagKey(0x0028, 0x0100));
  constexpr TagKey kFrames = MakeTagKey(0x0028, 0x0008);
  if (source.listing.FindOnTop(kFrames)) shape.frames = CountIn(*file, kFrames).value_or(1);
  const std::string interpretation = TextOf(*file, MakeTagKey(0x0028, 0x0004));
  // Two pixels share their colour: two samples a pixel are stored.
  if (interpretation.starts_with("YBR_FULL_422") && shape.samples == 3) shape.samples = 2;
  return shape;
}

std::string Bytes(std::uint64_t count) {
  return Format("%llu bytes", static_cast<unsigned long long>(count));
}

/// An image as its class says, with no pixels of any kind.
bool LacksPixels(const SourceFile& source, Host& host) {
  const bool floats = source.listing.FindOnTop(MakeTagKey(0x7FE0, 0x0008)) ||
                      source.listing.FindOnTop(MakeTagKey(0x7FE0, 0x0009));
  if (floats) return false;
  const std::string sopClass = TextOf(*FileOf(*source.object), MakeTagKey(0x0008, 0x0016));
  const auto known = host.FindUid(UnpaddedText(sopClass));
  return known && known->isImage;
}

std::string WhyPixelsAreOdd(const SourceFile& source, Host& host) {
  const auto pixels = source.listing.FindOnTop(kPixelDataTag);
  if (!pixels) return LacksPixels(source, host) ? "an image without pixel data" : "";
  if (pixels->items != 0) return {};
  const PixelShape shape = ShapeOf(source);
  const auto wanted = shape.Bytes();
  if (!wanted)
    return "rows, columns, samples, frames and bits name more pixel data than any file holds";
  if (*wanted == 0)
    return "rows, columns, samples, frames and bits leave no room for the pixel data that is there";
  const std::uint64_t there = pixels->length;
  if (there < *wanted) return "pixel data has " + Bytes(there) + " of " + Bytes(*wanted);
  if (there > *wanted + *wanted % 2)
    return "pixel data has " + Bytes(there - *wanted) + " too many";
  return {};
}

/// An element that stands behind one of a higher tag, or empty.
std::string WhyOrderIsOdd(const SourceFile& source) {
  // Offsets begin anew at 4 GiB, and then say nothing of what stands behind what.
  if (source.bytes > std::numeric_limits<std::uint32_t>::max()) return {};
  const Listing& listing = source.listing;
  std::optional<Element> last;
  std::optional<Element> late;
  listing.ForEachOnTop([&](const Element& each) {
    if (!late && last && each.offset < last->offset) late = last;
    last = each;
  });
  if (!late) return {};
  return TagText(late->tag) +
         Format(" at offset %u stands behind an element of a higher tag", late->offset);
}

/// An element, at any depth, whose letters are no type, or empty.
std::string WhyLettersAreOdd(const Listing& listing) {
  for (std::size_t row = 0; row < listing.Rows(); ++row) {
    const bool isOdd = !listing.IsItem(row) && GroupOf(listing.Tag(row)) != kStructuralGroup &&
                       FindTraits(listing.Type(row)) == nullptr;
    if (!isOdd) continue;
    const Element element = listing.At(row);
    if (element.items != 0) continue;
    return TagText(element.tag) + Format(" at offset %u", element.offset) + " has the letters \"" +
           TypeLetters(element.type) + "\" where the kind of value should stand";
  }
  return {};
}

/// A character set that nobody knows, or empty.
std::string WhyTextIsOdd(const SourceFile& source) {
  const std::string unknown = SetsOf(*source.object, {}).Unknown();
  if (unknown.empty()) return {};
  return "the character set \"" + unknown + "\" of (0008,0005) is not known";
}

}  // namespace

std::vector<std::string> FindOddElements(const SourceFile& source) {
  std::vector<std::string> oddities;
  for (std::string words : {WhyOrderIsOdd(source), WhyLettersAreOdd(source.listing)}) {
    if (!words.empty()) oddities.push_back(std::move(words));
  }
  return oddities;
}

std::vector<std::string> FindOddities(const SourceFile& source, Host& host) {
  std::vector<std::string> oddities;
  for (std::string words : {WhyPixelsAreOdd(source, host), WhyTextIsOdd(source)}) {
    if (!words.empty()) oddities.push_back(std::move(words));
  }
  for (std::string& words : FindOddElements(source)) oddities.push_back(std::move(words));
  if (source.IsBigEndian() && HasPixelsOfDoubtfulOrder(source)) {
    oddities.emplace_back(
        "the order of the bytes in the pixel data is not certain, since programs write big endian "
        "pixels of this size in two ways");
  }
  return oddities;
}

}  // namespace tessaret::tool
