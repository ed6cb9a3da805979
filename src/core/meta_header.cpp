#include "core/meta_header.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "base/byte_order.h"
#include "core/element_reader.h"
#include "core/transfer_syntax.h"

namespace tessaret {
namespace {

constexpr std::uint16_t kMetaGroup = 0x0002;
constexpr std::size_t kAeTitleSize = 16;
// What the length field of a UID can state, less the odd one.
constexpr std::uint32_t kLongestUid = 0xFFFE;

/// Adds elements to the meta header and counts their bytes. The standard's count: 8 for each, and 4 more for a head with a
/// 32-bit length.
class MetaBuilder {
 public:
  explicit MetaBuilder(DICOMObject& object) : object_(object) {}

  void Add(std::uint16_t element, VrCode type, const void* bytes, std::size_t size) {
    auto vr = std::make_unique<VR>(kMetaGroup, element, static_cast<std::uint32_t>(size), true);
    if (size != 0) std::memcpy(vr->Data, bytes, size);
    vr->TypeCode = type;
    Count(*vr);
    if (object_.Push(vr.get())) vr.release();
  }
  void Add(std::uint16_t element, VrCode type, std::string_view text) {
    Add(element, type, text.data(), text.size());
  }

  void Count(const VR& vr) {
    count_ += 8 + vr.Length + (vr.Length & 1) + (HasLongForm(vr.TypeCode) ? 4 : 0);
  }

  void AddGroupLength() {
    std::array<std::uint8_t, 4> bytes;
    StoreLittle32(bytes.data(), count_);
    Add(0x0000, type_code::UL, bytes.data(), bytes.size());
  }

 private:
  DICOMObject& object_;
  std::uint32_t count_ = 0;
};

void MoveAll(DICOMObject& from, DICOMObject& to) {
  while (VR* popped = from.Pop()) {
    std::unique_ptr<VR> vr(popped);
    if (to.Push(popped)) vr.release();
  }
}

/// Brings elements to their place whose tags were changed where they lay: what is added and removed by tag is not to meet
/// them under their former ones. Of two with one tag the latter stays.
void PutInOrder(DICOMObject& object) {
  if (object.Elements.IsInOrder()) return;
  DICOMObject aside;
  MoveAll(object, aside);
  MoveAll(aside, object);
}

void RemoveMetaGroup(DICOMObject& object, bool keepSyntax) {
  PutInOrder(object);
  VR* vr = object.GetFirstVR();
  while (vr != nullptr && vr->Group <= kMetaGroup) {
    VR* next = object.GetNextVR(vr);
    const bool kept = keepSyntax && vr->Key() == kTransferSyntaxTag;
    if (vr->Group == kMetaGroup && !kept) delete object.Remove(vr->Group, vr->Element);
    vr = next;
  }
}

/// What is longer than its length field can state shrinks to the text that counts of it: cut in its length alone, it would
/// make the file unreadable.
void ShortenSyntax(VR& syntax) {
  if (syntax.Data == nullptr || syntax.Length <= kLongestUid) return;
  const std::string text = TransferSyntaxText(syntax);
  syntax.Reset();
  if (text.empty()) return;
  syntax.Length = static_cast<std::uint32_t>(text.size());
  syntax.AllocateValue();
  std::memcpy(syntax.Data, text.data(), text.size());
}

bool IsBigEndianSyntax(const VR& syntax) {
  const auto code = FindTransferSyntax(TransferSyntaxText(syntax));
  return code && IsBigEndian(*code);
}

void DeclarePixelType(DICOMObject& object, const VR& syntax) {
  VR* pixels = object.GetVR(0x7FE0, 0x0010);
  if (pixels == nullptr) return;
  std::uint16_t bits = object.GetUINT16(0x0028, 0x0100);
  if (IsBigEndianSyntax(syntax)) {
    if (pixels->TypeCode == type_code::OB || pixels->TypeCode == type_code::OW) return;
    bits = __builtin_bswap16(bits);
  }
  pixels->TypeCode = bits > 8 ? type_code::OW : type_code::OB;
}

void CopyUid(DICOMObject& object, std::uint16_t sourceElement, MetaBuilder& meta,
             std::uint16_t element) {
  const VR* uid = object.GetVR(0x0008, sourceElement);
  if (uid == nullptr || (uid->Data == nullptr && uid->Length != 0)) return;
  // The meta header has to stay readable, whatever the object holds.
  if (uid->Length > kLongestUid) return;
  meta.Add(element, type_code::UI, uid->Data, uid->Length);
}

}  // namespace

void BuildMetaHeader(DICOMObject& object, std::int32_t mode, std::string_view callingAeTitle) {
  RemoveMetaGroup(object, mode == kMetaKeepSyntax);
  VR* syntax = object.GetVR(kMetaGroup, 0x0010);
  if (syntax != nullptr) {
    ShortenSyntax(*syntax);
    DeclarePixelType(object, *syntax);
  }

  MetaBuilder meta(object);
  constexpr std::array<std::uint8_t, 2> kVersion = {0x00, 0x01};
  meta.Add(0x0001, type_code::OB, kVersion.data(), kVersion.size());
  CopyUid(object, 0x0016, meta, 0x0002);
  CopyUid(object, 0x0018, meta, 0x0003);
  if (syntax == nullptr) {
    meta.Add(0x0010, type_code::UI, kImplicitLittleUid);
  } else {
    syntax->TypeCode = type_code::UI;
    // Items that a broken stream left here would go out instead of the UID.
    if (syntax->Items != nullptr) syntax->DestroyOwnItems();
    meta.Count(*syntax);
  }
  meta.Add(0x0012, type_code::UI, kImplementationClassUid);
  meta.Add(0x0013, type_code::SH, kImplementationVersionName);
  std::array<char, kAeTitleSize> title;
  title.fill(' ');
  std::copy_n(callingAeTitle.begin(), std::min(callingAeTitle.size(), kAeTitleSize), title.begin());
  meta.Add(0x0016, type_code::AE, title.data(), title.size());
  meta.AddGroupLength();
}

void BuildMetaHeaderBeside(const DICOMObject& object, std::int32_t mode,
                           std::string_view callingAeTitle, DICOMObject& meta, VrCode& pixelType) {
  // All that the meta header is made from, and the pixel data for its type alone.
  constexpr std::array<TagKey, 5> kSources = {kTransferSyntaxTag, MakeTagKey(0x0008, 0x0016),
                                              MakeTagKey(0x0008, 0x0018),
                                              MakeTagKey(0x0028, 0x0100), kPixelDataTag};
  for (const TagKey key : kSources) {
    const VR* source = object.Elements.Find(key);
    if (source == nullptr) continue;
    auto shared = std::make_unique<VR>(*source, false, VR::WithoutItems{});
    if (meta.Push(shared.get())) shared.release();
  }
  BuildMetaHeader(meta, mode, callingAeTitle);
  const VR* pixels = meta.Elements.Find(kPixelDataTag);
  pixelType = pixels == nullptr ? type_code::kNone : pixels->TypeCode;
  for (const TagKey key : kSources) {
    if (key != kTransferSyntaxTag) delete meta.Elements.Remove(key);
  }
}

}  // namespace tessaret
