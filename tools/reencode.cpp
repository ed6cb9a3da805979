#include "reencode.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "base/byte_order.h"
#include "core/element_reader.h"
#include "core/element_text.h"
#include "core/memory_buffer.h"
#include "core/meta_header.h"
#include "core/transfer_syntax.h"
#include "core/value_order.h"
#include "object_walk.h"
#include "tag_text.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr const char* kExplicitLittleUid = "1.2.840.10008.1.2.1";
constexpr const char* kExplicitBigUid = "1.2.840.10008.1.2.2";

constexpr std::uint16_t kMetaGroup = 0x0002;
constexpr std::size_t kHeadSize = 8;  // of an implicit element
constexpr TagKey kDirectoryRecords = MakeTagKey(0x0004, 0x1220);

bool IsNativeSyntax(std::string_view uid) {
  return uid == kImplicitLittleUid || uid == kExplicitLittleUid || uid == kExplicitBigUid;
}

/// US or SS, as Pixel Representation says: the rows of data/tables/elements.tsv that name these two and no third. The dictionary
/// has one type a tag: US.
constexpr TagKey kSignedWithPixels[] = {
    MakeTagKey(0x0018, 0x9810), MakeTagKey(0x0022, 0x1452), MakeTagKey(0x0028, 0x0071),
    MakeTagKey(0x0028, 0x0104), MakeTagKey(0x0028, 0x0105), MakeTagKey(0x0028, 0x0106),
    MakeTagKey(0x0028, 0x0107), MakeTagKey(0x0028, 0x0108), MakeTagKey(0x0028, 0x0109),
    MakeTagKey(0x0028, 0x0110), MakeTagKey(0x0028, 0x0111), MakeTagKey(0x0028, 0x0120),
    MakeTagKey(0x0028, 0x0121), MakeTagKey(0x0028, 0x1100), MakeTagKey(0x0028, 0x1101),
    MakeTagKey(0x0028, 0x1102), MakeTagKey(0x0028, 0x1103), MakeTagKey(0x0028, 0x1111),
    MakeTagKey(0x0028, 0x1112), MakeTagKey(0x0028, 0x1113), MakeTagKey(0x0028, 0x3002),
    MakeTagKey(0x0040, 0x9211), MakeTagKey(0x0040, 0x9216), MakeTagKey(0x0060, 0x3004),
    MakeTagKey(0x0060, 0x3006),
};

bool IsSignedWithPixels(TagKey key) {
  return std::find(std::begin(kSignedWithPixels), std::end(kSignedWithPixels), key) !=
         std::end(kSignedWithPixels);
}

/// What stands in the way of a native encoding anywhere in an object.
class FragmentSearch final : public ObjectVisitor {
 public:
  void OnElement(const VR&, const DICOMObject&, int) override {}
  void OnSequence(const VR& vr, const DICOMObject&, int) override {
    found = found || vr.Key() == kPixelDataTag;
  }
  void OnSequenceEnd(const VR&, int) override {}
  void OnItem(const VR&, std::uint32_t, const DICOMObject&, int) override {}
  void OnItemEnd(const VR&, int) override {}

  bool found = false;
};

bool HoldsFragments(const DICOMObject& object) {
  FragmentSearch search;
  WalkObject(object, search);
  return search.found;
}

/// Sets types and drops what no longer fits, in an object and everything nested in it.
class Preparation {
 public:
  Preparation(const SourceFile& source, std::string_view syntax)
      : sourceImplicit_(IsImplicit(source.code)), writesTypes_(syntax != kImplicitLittleUid) {}

  void Of(DICOMObject& object) {
    pending_.push_back({&object, false});
    while (!pending_.empty()) {
      const Level level = pending_.back();
      pending_.pop_back();
      Prepare(level);
    }
  }

 private:
  struct Level {
    DICOMObject* object;
    bool signedPixels;  // as the nearest object around says
  };

  void Prepare(Level level) {
    if (level.object->GetVR(0x0028, 0x0103) != nullptr) {
      level.signedPixels = level.object->GetUINT16(0x0028, 0x0103) == 1;
    }
    VR* vr = level.object->GetFirstVR();
    while (vr != nullptr) {
      VR* next = level.object->GetNextVR(vr);
      const bool groupLength = vr->Element == 0 && vr->Group != kMetaGroup;
      if (groupLength) {
        delete level.object->Remove(vr->Group, vr->Element);
      } else {
        PrepareElement(*vr, level.signedPixels);
      }
      vr = next;
    }
  }

  void PrepareElement(VR& vr, bool signedPixels) {
    if (vr.Items != nullptr) {
      for (const ItemArray::Node* node = vr.Items->First; node != nullptr; node = node->next) {
        if (node->value != nullptr) pending_.push_back({node->value, signedPixels});
      }
      return;
    }
    if (!writesTypes_ || vr.Group == kMetaGroup || vr.Group == kStructuralGroup) return;
    if (sourceImplicit_) {
      vr.TypeCode = ShownType(vr);
      if (signedPixels && vr.TypeCode == type_code::US && IsSignedWithPixels(vr.Key()))
        vr.TypeCode = type_code::SS;
    }
    // Values of UN are little endian whatever surrounds them, as the numbers are here.
    if (!FitsExplicitForm(vr.TypeCode, vr.Length)) vr.TypeCode = type_code::UN;
  }

  bool sourceImplicit_;
  bool writesTypes_;
  std::vector<Level> pending_;
};

void SetSyntax(DICOMObject& object, const std::string& uid) {
  auto vr = std::make_unique<VR>(GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag),
                                 static_cast<std::uint32_t>(uid.size()), true);
  std::copy(uid.begin(), uid.end(), vr->Data);
  vr->TypeCode = type_code::UI;
  object.Push(vr.get());
  vr.release();
}

/// Elements are written in the order of their tags. Group lengths are left out here, as they will be then.
const VR* FindBelowMetaHeader(const DICOMObject& object) {
  const VR* vr = object.GetFirstVR();
  while (vr != nullptr && vr->Element == 0) vr = object.GetNextVR(vr);
  return vr != nullptr && vr->Group < kMetaGroup ? vr : nullptr;
}

std::string SyntaxOfCode(std::int32_t code) {
  if (IsImplicit(code)) return std::string(kImplicitLittleUid);
  return IsBigEndian(code) ? kExplicitBigUid : kExplicitLittleUid;
}

/// Without a mark readers guess the form from the second byte of the first length: in the explicit form that is a letter.
bool LooksExplicitWhenBare(const DICOMObject& object) {
  const VR* first = object.GetFirstVR();
  while (first != nullptr && (first->Group <= kMetaGroup || first->Element == 0))
    first = object.GetNextVR(first);
  if (first == nullptr || first->Items != nullptr) return false;
  const auto second = static_cast<std::int8_t>((first->Length + first->Length % 2) >> 8);
  return second > 10;
}

/// Looks for what a file in another form cannot hold, or cannot tell to its reader.
class LossSearch final : public ObjectVisitor {
 public:
  /// `toImplicit`: the types are lost, and readers go by the dictionary.
  LossSearch(const RTC& dictionary, bool toImplicit)
      : dictionary_(dictionary), toImplicit_(toImplicit) {}

  void OnElement(const VR& vr, const DICOMObject&, int level) override {
    FindMetaElement(vr, level);
    deepest = std::max(deepest, level);
    const bool isToBeSequence = toImplicit_ && vr.Length != 0 && TypeOf(vr) == type_code::SQ;
    if (isToBeSequence && !HoldsImplicitItems(vr, level))
      Say(TagText(vr) + " is " + TypeLetters(vr.TypeCode) + ", but a sequence by the dictionary");
  }
  void OnSequence(const VR& vr, const DICOMObject&, int level) override {
    FindMetaElement(vr, level);
    const VrCode type = TypeOf(vr);
    const bool fits = type == type_code::SQ || type == type_code::UN || type == type_code::kNone ||
                      vr.Key() == kPixelDataTag;
    if (toImplicit_ && !fits)
      Say(TagText(vr) + " is a sequence, but " + TypeLetters(type) + " by the dictionary");
  }
  void OnSequenceEnd(const VR&, int) override {}
  void OnItem(const VR&, std::uint32_t, const DICOMObject&, int level) override {
    deepest = std::max(deepest, level);
  }
  void OnItemEnd(const VR&, int) override {}

  std::string words;
  int deepest = 0;  // level of an item or of an element

 private:
  void Say(const std::string& why) {
    if (words.empty()) words = why;
  }
  void FindMetaElement(const VR& vr, int level) {
    if (level > 0 && vr.Group == kMetaGroup)
      Say(TagText(vr) + " stands in an item and would be lost");
  }
  [[nodiscard]] VrCode TypeOf(const VR& vr) const {
    return dictionary_.RunTimeClass(vr.Group, vr.Element, nullptr);
  }
  /// What is unknown holds the implicit form already (DICOM PS3.5, 6.2.2): there it becomes the sequence that it was. Whether
  /// that can be read, below `level`, and holds nothing that would be lost in turn.
  [[nodiscard]] bool HoldsImplicitItems(const VR& vr, int level) const {
    if (vr.TypeCode != type_code::UN || vr.Data == nullptr) return false;
    std::vector<std::uint8_t> bytes(kHeadSize + vr.Length);
    StoreLittle16(bytes.data(), vr.Group);
    StoreLittle16(bytes.data() + 2, vr.Element);
    StoreLittle32(bytes.data() + 4, vr.Length);
    std::memcpy(bytes.data() + kHeadSize, vr.Data, vr.Length);
    MemoryBuffer stream(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
    DataSetCoder coder(&dictionary_);
    DICOMDataObject object;
    const bool isWhole = coder.ImplicitLittleIn(stream, object) &&
                         coder.LastStop().why == ParseStop::Why::kNone && coder.Oddities().empty();
    if (!isWhole || object.Elements.Size() != 1) return false;
    LossSearch losses(dictionary_, false);
    WalkObject(object, losses);
    return losses.words.empty() && level + losses.deepest <= kMaxNesting;
  }

  const RTC& dictionary_;
  const bool toImplicit_;
};

}  // namespace

bool HasPixelsOfDoubtfulOrder(const DICOMObject& object) {
  const VR* pixels = object.GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
  const VR* bits = object.GetVR(0x0028, 0x0100);
  if (pixels == nullptr || pixels->Items != nullptr || bits == nullptr || bits->Data == nullptr ||
      bits->Length != 2) {
    return false;
  }
  return LoadLittle16(bits->Data) > 8 * NumberWidth(pixels->TypeCode);
}

std::string WhyNotToHold(const SourceFile& source, Target target, const RTC& dictionary) {
  const DICOMObject& object = *source.object;
  if (const VR* low = target == Target::kBare ? nullptr : FindBelowMetaHeader(object);
      low != nullptr) {
    return TagText(*low) + " would come before the meta header, where no file can hold it";
  }
  if (object.GetVR(GroupOf(kDirectoryRecords), ElementOf(kDirectoryRecords)) != nullptr) {
    return "is a DICOMDIR: its records point to places in the file that would move";
  }
  const bool toImplicit = target == Target::kImplicit || target == Target::kBare;
  LossSearch losses(dictionary, toImplicit && !IsImplicit(source.code));
  WalkObject(object, losses);
  if (!losses.words.empty()) return losses.words;
  if (target == Target::kBare && LooksExplicitWhenBare(object))
    return "without a mark it would be taken for explicit, for its first element is that long";
  return {};
}

std::string WhyNotToEncode(const SourceFile& source, Target target, const RTC& dictionary) {
  if (std::string why = WhyNotToHold(source, target, dictionary); !why.empty()) return why;
  const DICOMObject& object = *source.object;
  const bool fragments = HoldsFragments(object);
  const bool compressedSyntax = !source.syntax.empty() && !IsNativeSyntax(source.syntax);
  const bool pixels = object.GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag)) != nullptr;
  if (target == Target::kKeep) {
    if (fragments && !compressedSyntax)
      return "holds fragments of compressed pixel data but names no compression";
    return {};
  }
  if (fragments || (compressedSyntax && pixels)) {
    return "its pixel data is compressed and cannot be made native; without --syntax it is kept as "
           "it is";
  }
  if (source.bigEndian && HasPixelsOfDoubtfulOrder(object)) {
    return "the order of the bytes in its pixel data is not certain, since programs write big "
           "endian pixels of "
           "this size in two ways";
  }
  return {};
}

std::string TargetSyntax(const SourceFile& source, Target target) {
  switch (target) {
    case Target::kImplicit:
    case Target::kBare:
      return std::string(kImplicitLittleUid);
    case Target::kExplicit:
      return kExplicitLittleUid;
    case Target::kKeep:
      break;
  }
  return source.syntax.empty() ? SyntaxOfCode(source.code) : source.syntax;
}

void PrepareElements(SourceFile& source, std::string_view syntax) {
  Preparation(source, syntax).Of(*source.object);
}

void PrepareToEncode(SourceFile& source, Target target) {
  const std::string syntax = TargetSyntax(source, target);
  PrepareElements(source, syntax);
  SetSyntax(*source.object, syntax);
}

}  // namespace tessaret::tool
