#include "reencode.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "base/byte_order.h"
#include "class_object.h"
#include "meant_type.h"
#include "object_walk.h"
#include "tag_text.h"
#include "transfer_syntaxes.h"
#include "value_bytes.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr std::uint32_t kHeadSize = 8;  // of an implicit element
constexpr TagKey kDirectoryRecords = MakeTagKey(0x0004, 0x1220);

/// What stands in the way of a native encoding, in an object from `level` down.
bool HoldsFragments(const Listing& listing, int level = 0) {
  for (std::size_t row = 0; row < listing.Rows(); ++row) {
    const bool isPixelData = !listing.IsItem(row) && listing.Tag(row) == kPixelDataTag;
    if (isPixelData && listing.Level(row) >= level && listing.At(row).items != 0) return true;
  }
  return false;
}

bool NamesCompression(const SourceFile& source) {
  return !source.syntax.empty() && !IsNativeSyntax(source.syntax);
}

constexpr const char* kUnnamedCompression =
    "holds fragments of compressed pixel data but names no compression";

bool IsGroupLength(TagKey tag) { return ElementOf(tag) == 0 && GroupOf(tag) != kMetaGroup; }

/// Sets types and drops what no longer fits, in an object and everything nested in it.
class Preparation final : public ObjectVisitor {
 public:
  Preparation(const SourceFile& source, std::string_view syntax)
      : sourceImplicit_(source.IsImplicit()), writesTypes_(syntax != kImplicitLittle) {
    signedPixels_.push_back(HasSignedPixels(*source.object, false));
  }

  void OnElement(const Element& element, DataSet& owner, int) override {
    if (IsGroupLength(element.tag)) {
      Remove(owner.Object(), element.tag);
    } else if (const VrCode type = TypeFor(element); type != element.type) {
      VariantBool found;
      Require(owner.File().SetType(GroupOf(element.tag), ElementOf(element.tag),
                                   String::FromNarrow(LettersOf(type)), &found));
    }
  }
  void OnSequence(const Element&, DataSet&, int) override {}
  void OnSequenceEnd(const Element& sequence, DataSet& owner, int) override {
    if (IsGroupLength(sequence.tag)) Remove(owner.Object(), sequence.tag);
  }
  void OnItem(const Element&, std::uint32_t, DataSet& item, int) override {
    // As the nearest object around says.
    signedPixels_.push_back(item.Find(kPixelRepresentationTag)
                                ? HasSignedPixels(item.Object(), false)
                                : signedPixels_.back());
  }
  void OnItemEnd(const Element&, int) override { signedPixels_.pop_back(); }

 private:
  [[nodiscard]] VrCode TypeFor(const Element& element) const {
    const std::uint16_t group = GroupOf(element.tag);
    if (!writesTypes_ || group == kMetaGroup || group == kStructuralGroup) return element.type;
    VrCode type = element.type;
    if (sourceImplicit_) type = MeantType(element.tag, type, true, signedPixels_.back());
    // Values of UN are little endian whatever surrounds them, as the numbers are here.
    return FitsExplicitForm(type, element.length) ? type : type_code::UN;
  }

  bool sourceImplicit_;
  bool writesTypes_;
  std::vector<bool> signedPixels_;
};

/// Elements are written in the order of their tags. Group lengths are left out here, as they will be then.
std::optional<TagKey> FindBelowMetaHeader(const Listing& listing) {
  std::optional<TagKey> first;
  listing.ForEachOnTop([&](const Element& each) {
    if (!first && ElementOf(each.tag) != 0) first = each.tag;
  });
  return first && GroupOf(*first) < kMetaGroup ? first : std::nullopt;
}

std::string SyntaxOf(_EnumDataEncoding encoding) {
  if (encoding == ENCODING_IMPLICIT_LITTLE) return std::string(kImplicitLittle);
  return std::string(encoding == ENCODING_EXPLICIT_BIG ? kExplicitBig : kExplicitLittle);
}

/// Without a mark readers guess the form from the second byte of the first length: in the explicit form that is a letter.
bool LooksExplicit(const Element& first) {
  if (first.items != 0) return false;
  const auto second = static_cast<std::int8_t>((first.length + first.length % 2) >> 8);
  return second > 10;
}

/// Why a data set without meta header and group lengths could not be read again, or empty. Readers take a file without a
/// mark for one when it begins with a tag that they know.
std::string WhyNotReadBare(const Listing& listing, Host& host) {
  std::optional<Element> first;
  listing.ForEachOnTop([&](const Element& each) {
    if (!first && GroupOf(each.tag) != kMetaGroup && ElementOf(each.tag) != 0) first = each;
  });
  const std::string notTaken = "without a mark it would not be taken for DICOM, for it ";
  if (!first) return notTaken + "is empty";
  if (GroupOf(first->tag) < kMetaGroup || !host.Knows(first->tag))
    return notTaken + "begins with " + TagText(first->tag);
  if (LooksExplicit(*first))
    return "without a mark it would be taken for explicit, for its first element is that long";
  return {};
}

/// Looks for what a file in another form cannot hold, or cannot tell to its reader.
class LossSearch final : public ObjectVisitor {
 public:
  /// `toImplicit`: the types are lost, and readers go by the dictionary.
  LossSearch(Host& host, bool toImplicit) : host_(host), toImplicit_(toImplicit) {}

  void OnElement(const Element& element, DataSet& owner, int level) override {
    FindMetaElement(element, level);
    deepest = std::max(deepest, level);
    const bool isToBeSequence =
        toImplicit_ && element.length != 0 && host_.TypeOfElement(element.tag) == type_code::SQ;
    if (isToBeSequence && !HoldsImplicitItems(element, owner, level))
      Say(TagText(element.tag) + " is " + TypeLetters(element.type) +
          ", but a sequence by the dictionary");
  }
  void OnSequence(const Element& sequence, DataSet&, int level) override {
    FindMetaElement(sequence, level);
    if (!toImplicit_ || sequence.tag == kPixelDataTag) return;
    const VrCode type = host_.TypeOfElement(sequence.tag);
    const bool fits = type == type_code::SQ || type == type_code::UN || type == type_code::kNone;
    if (!fits)
      Say(TagText(sequence.tag) + " is a sequence, but " + TypeLetters(type) +
          " by the dictionary");
  }
  void OnSequenceEnd(const Element&, DataSet&, int) override {}
  void OnItem(const Element&, std::uint32_t, DataSet&, int level) override {
    deepest = std::max(deepest, level);
  }
  void OnItemEnd(const Element&, int) override {}

  std::string words;
  int deepest = 0;  // level of an item or of an element

 private:
  void Say(const std::string& why) {
    if (words.empty()) words = why;
  }
  void FindMetaElement(const Element& element, int level) {
    if (level > 0 && GroupOf(element.tag) == kMetaGroup)
      Say(TagText(element.tag) + " stands in an item and would be lost");
  }
  /// What is unknown holds the implicit form already (DICOM PS3.5, 6.2.2): there it becomes the sequence that it was. Whether
  /// that can be read, below `level`, and holds nothing that would be lost in turn.
  [[nodiscard]] bool HoldsImplicitItems(const Element& element, DataSet& owner, int level) const;

  Host& host_;
  const bool toImplicit_;
};

bool IsReadWithoutOddity(IDcmFile& file) {
  const Reading reading = ReadingOf(file);
  return reading.end.why == READ_TO_THE_END && reading.oddities.empty();
}

/// The element as a file in the implicit form has it. Throws CallError and std::bad_alloc.
Variant InImplicitForm(const Element& element, IDcmFile& file) {
  VariantArray array(VariantType::kByte, kHeadSize + element.length);
  const std::span<std::uint8_t> bytes = array.Entries<std::uint8_t>();
  StoreLittle16(bytes.data(), GroupOf(element.tag));
  StoreLittle16(bytes.data() + 2, ElementOf(element.tag));
  StoreLittle32(bytes.data() + 4, element.length);
  ValueBytes value(file, element.tag, element.length);
  for (std::uint32_t at = 0; at < element.length; at += ValueBytes::kPortion) {
    const std::uint32_t count = std::min(ValueBytes::kPortion, element.length - at);
    std::copy_n(value.At(at, count), count, bytes.data() + kHeadSize + at);
  }
  return Variant(std::move(array));
}

bool LossSearch::HoldsImplicitItems(const Element& element, DataSet& owner, int level) const {
  constexpr std::uint32_t kLongest = 0x7FFFFFFF - kHeadSize;  // that a block may have
  if (element.type != type_code::UN || !element.hasValue || element.length > kLongest) return false;
  const Ref<IDCMObject> object = NewObject();
  const Ref<IDcmFile> file = FileOf(*object);
  const Status status =
      file->LoadBytes(InImplicitForm(element, owner.File()), LOAD_PIXELS, ENCODING_IMPLICIT_LITTLE);
  if (Failed(status) || !IsReadWithoutOddity(*file)) return false;
  const Listing listing(*object);
  if (listing.CountOnTop() != 1) return false;
  LossSearch losses(host_, false);
  WalkObject(listing, object, losses);
  return losses.words.empty() && level + losses.deepest <= kMaxNesting;
}

}  // namespace

bool HasPixelsOfDoubtfulOrder(const SourceFile& source) {
  VariantBool doubtful;
  Require(FileOf(*source.object)->get_HasPixelsOfDoubtfulOrder(&doubtful));
  return doubtful.IsTrue();
}

std::string WhyNotToHold(const SourceFile& source, Target target, Host& host) {
  const Listing& listing = source.listing;
  if (const auto low = target == Target::kBare ? std::nullopt : FindBelowMetaHeader(listing))
    return TagText(*low) + " would come before the meta header, where no file can hold it";
  if (listing.FindOnTop(kDirectoryRecords))
    return "is a DICOMDIR: its records point to places in the file that would move";
  const bool toImplicit = target == Target::kImplicit || target == Target::kBare;
  LossSearch losses(host, toImplicit && !source.IsImplicit());
  WalkObject(listing, source.object, losses);
  if (!losses.words.empty()) return losses.words;
  return target == Target::kBare ? WhyNotReadBare(listing, host) : std::string();
}

std::string WhyNotToEncode(const SourceFile& source, Target target, Host& host) {
  if (std::string why = WhyNotToHold(source, target, host); !why.empty()) return why;
  const bool fragments = HoldsFragments(source.listing);
  const bool compressedSyntax = NamesCompression(source);
  const bool pixels = source.listing.FindOnTop(kPixelDataTag).has_value();
  if (target == Target::kKeep) {
    return fragments && !compressedSyntax ? kUnnamedCompression : "";
  }
  if (fragments || (compressedSyntax && pixels)) {
    return "its pixel data is compressed and cannot be made native; without --syntax it is kept as "
           "it is";
  }
  if (source.IsBigEndian() && HasPixelsOfDoubtfulOrder(source)) {
    return "the order of the bytes in its pixel data is not certain, since programs write big "
           "endian pixels of "
           "this size in two ways";
  }
  return {};
}

std::string WhyNotToKeepFragments(const SourceFile& source, std::string_view syntax) {
  if (HoldsFragments(source.listing) && !NamesCompression(source)) return kUnnamedCompression;
  if (HoldsFragments(source.listing, 1) && source.syntax != syntax)
    return "the pixel data of an item is compressed, and only that of the image itself is changed";
  return {};
}

void SetSyntax(IDCMObject& object, std::string_view uid) {
  std::vector<std::uint8_t> bytes(uid.begin(), uid.end());
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  PutBytes(object, kTransferSyntaxTag, type_code::UI, bytes);
}

std::string TargetSyntax(const SourceFile& source, Target target) {
  switch (target) {
    case Target::kImplicit:
    case Target::kBare:
      return std::string(kImplicitLittle);
    case Target::kExplicit:
      return std::string(kExplicitLittle);
    case Target::kKeep:
      break;
  }
  return source.syntax.empty() ? SyntaxOf(source.encoding) : source.syntax;
}

void PrepareElements(SourceFile& source, std::string_view syntax) {
  Preparation preparation(source, syntax);
  WalkObject(source.listing, source.object, preparation);
}

void PrepareToEncode(SourceFile& source, Target target) {
  const std::string syntax = TargetSyntax(source, target);
  PrepareElements(source, syntax);
  SetSyntax(*source.object, syntax);
}

}  // namespace tessaret::tool
