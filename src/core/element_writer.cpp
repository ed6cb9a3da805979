#include "core/element_writer.h"

#include <array>
#include <limits>

#include "base/text.h"
#include "core/dump.h"
#include "core/each_element.h"
#include "core/element_reader.h"
#include "core/parse_trace.h"
#include "core/trace.h"

namespace tessaret {
namespace {

constexpr bool IsPixelData(const VR& vr) { return vr.Group == 0x7FE0 && vr.Element == 0x0010; }

bool IsLeftOut(const VR& vr, ElementForm form) {
  if (vr.Group == 0x0002) return true;
  return vr.Element == 0 && (form == ElementForm::kExplicit || vr.Group != 0);
}

/// Numbers in the outgoing byte order, gathered so that a head is one write.
class HeadBytes {
 public:
  explicit HeadBytes(bool big) : big_(big) {}
  void Put8(std::uint8_t value) { bytes_[size_++] = value; }
  void Put16(std::uint16_t value) {
    big_ ? StoreBig16(&bytes_[size_], value) : StoreLittle16(&bytes_[size_], value);
    size_ += 2;
  }
  void Put32(std::uint32_t value) {
    big_ ? StoreBig32(&bytes_[size_], value) : StoreLittle32(&bytes_[size_], value);
    size_ += 4;
  }
  void WriteTo(Buffer& buffer) const { buffer.Write(bytes_.data(), size_); }

 private:
  bool big_;
  std::uint32_t size_ = 0;
  std::array<std::uint8_t, 12> bytes_;
};

std::uint32_t EvenLength(std::uint32_t length) { return length + (length & 1); }

bool CanState(VrCode type, std::uint32_t length) {
  return HasLongForm(type) || EvenLength(length) <= std::numeric_limits<std::uint16_t>::max();
}

bool HasBytes(const VR& vr) { return vr.Items == nullptr && vr.Data != nullptr && vr.Length != 0; }

bool IsBlankPaddedUid(const VR& vr, VrCode type) {
  return type == type_code::UI && HasBytes(vr) && vr.Data[vr.Length - 1] == ' ';
}

}  // namespace

void CallLongValuesUnknown(DICOMObject& object) {
  ForEachElement(object, [](VR& vr) {
    // What has no type gets one that has room when it is written.
    const bool isNamed = vr.TypeCode != type_code::kNone && vr.Items == nullptr;
    if (isNamed && !CanState(vr.TypeCode, vr.Length)) vr.TypeCode = type_code::UN;
  });
}

VrCode TypeInStream(const VR& vr, VrCode type, ElementForm form, const RTC* dictionary) {
  if (type == type_code::kNone || (form == ElementForm::kExplicit && type == type_code::UN)) {
    const VrCode known = dictionary == nullptr
                             ? type_code::kNone
                             : dictionary->RunTimeClass(vr.Group, vr.Element, nullptr);
    type = known != type_code::kNone ? known : vr.Items != nullptr ? type_code::SQ : type_code::UN;
    if (vr.Items == nullptr && !CanState(type, vr.Length)) type = type_code::UN;
  }
  // Bytes without items under the name of a sequence would have to go.
  if (type == type_code::SQ && HasBytes(vr)) return type_code::UN;
  if (vr.Items == nullptr || (IsPixelData(vr) && HasLongForm(type))) return type;
  // What holds items goes out as what holds items, whatever it was called: anything else could not be read again.
  return IsPixelData(vr) ? type_code::OB : type_code::SQ;
}

ElementWriter::ElementWriter(DataSetCoder& coder, Buffer& buffer, After after)
    : coder_(coder), buffer_(buffer), after_(after), tracing_(IsDumping(kDumpParse)) {}

bool ElementWriter::WriteLevel(DICOMObject& object, ElementForm form, std::int32_t depth) {
  // Here each level is an item and its sequence in one.
  const bool written = depth > kMaxNesting ? RefuseDepth() : WriteElements(object, form, depth);
  if (after_ == After::kEmpty) object.Reset();
  return written;
}

bool ElementWriter::WriteElements(DICOMObject& object, ElementForm form, std::int32_t depth) {
  return object.Elements.ForEachWhile([&](VR& vr) {
    if (IsLeftOut(vr, form)) return true;
    const VrCode type = TypeToWrite(vr, vr.TypeCode, form);
    return IsBlankPaddedUid(vr, type) ? WriteBlankPaddedUid(vr, type, form, depth)
                                      : WriteElement(vr, type, form, depth);
  });
}

bool ElementWriter::WriteBlankPaddedUid(VR& vr, VrCode type, ElementForm form, std::int32_t depth) {
  // UIDs are padded with NUL. This one is put right where it is stored, unless the object is to stay: other threads may
  // be writing it too.
  if (after_ == After::kEmpty) {
    vr.Data[vr.Length - 1] = 0;
    return WriteElement(vr, type, form, depth);
  }
  VR corrected(vr, true, VR::WithoutItems{});
  corrected.StreamPosition = vr.StreamPosition;
  corrected.Data[corrected.Length - 1] = 0;
  return WriteElement(corrected, type, form, depth);
}

bool ElementWriter::WriteFile(DICOMObject& object, std::int32_t code) {
  buffer_.SetInEndian(IsBigEndian(code) ? kBigEndian : kLittleEndian);
  FileState state{code, std::nullopt};
  const bool written =
      object.Elements.ForEachWhile([&](VR& vr) { return WriteFileElement(vr, state); });
  if (after_ == After::kEmpty) object.Reset();
  return written;
}

bool ElementWriter::WriteFileWithMeta(DICOMObject& object, DICOMObject& meta, VrCode pixelType,
                                      std::int32_t code) {
  buffer_.SetInEndian(IsBigEndian(code) ? kBigEndian : kLittleEndian);
  FileState state{code, std::nullopt};
  pixelType_ = pixelType;
  bool metaWritten = false;
  const auto writeMeta = [&] {
    metaWritten = true;
    return meta.Elements.ForEachWhile([&](VR& vr) { return WriteFileElement(vr, state); });
  };
  const bool written = object.Elements.ForEachWhile([&](VR& vr) {
    if (vr.Group == 0x0002) return true;
    if (vr.Group > 0x0002 && !metaWritten && !writeMeta()) return false;
    return WriteFileElement(vr, state);
  });
  return written && (metaWritten || writeMeta());
}

bool ElementWriter::WriteFileElement(VR& vr, FileState& state) {
  // The form that rules so far decides about a group length, before any switch.
  if (!IsImplicit(state.code) && vr.Element == 0 && vr.Group != 2) return true;
  if (vr.Group > 2 && state.heldSyntax && !SwitchSyntax(state)) return false;
  const ElementForm form = IsImplicit(state.code) ? ElementForm::kImplicit : ElementForm::kExplicit;
  const VrCode type = TypeToWrite(vr, GivenType(vr, 0), form);
  if (!WriteElement(vr, type, form, 0)) return false;
  if (vr.Key() == kTransferSyntaxTag) state.heldSyntax = TransferSyntaxText(vr);
  return true;
}

bool ElementWriter::SwitchSyntax(FileState& state) {
  const auto found = FindTransferSyntax(*state.heldSyntax);
  if (!found) return false;
  if (*found != state.code) {
    state.code = *found;
    buffer_.SetOutEndian(IsBigEndian(state.code) ? kBigEndian : kLittleEndian);
  }
  state.heldSyntax.reset();
  return true;
}

bool ElementWriter::RefuseDepth() {
  coder_.SetError("Sequences are nested too deeply");
  return false;
}

VrCode ElementWriter::GivenType(const VR& vr, std::int32_t depth) const {
  const bool renamed = pixelType_ != type_code::kNone && depth == 0 && IsPixelData(vr);
  return renamed ? pixelType_ : vr.TypeCode;
}

bool ElementWriter::WriteElement(VR& vr, VrCode type, ElementForm form, std::int32_t depth) {
  if (vr.Group == kStructuralGroup) return Refuse(vr, "cannot stand in a data set");
  // Under any type and with any items: what lacks its bytes is not to pass for what is whole.
  if (vr.IsSteppedOver) return CheckValue(vr);
  const bool hasValue = vr.Items == nullptr && vr.Length != 0 && type != type_code::SQ;
  if (hasValue && !CheckValue(vr)) return false;
  if (tracing_) TraceElement(vr, form, depth);
  WriteHead(vr, type, form);
  if (hasValue && !WriteValue(vr)) return false;
  if (vr.Items != nullptr && !WriteItems(vr, form, depth)) return false;
  return buffer_.FlushIfMuchWaits();
}

bool ElementWriter::CheckValue(const VR& vr) {
  // The largest length is odd, and with a pad byte beyond 32 bits; of a fragment it would be taken for no length at all.
  if (vr.Data != nullptr && vr.Length != kUndefinedLength) return true;
  if (vr.IsSteppedOver) return Refuse(vr, "was stepped over when it was read");
  return Refuse(vr, vr.Data == nullptr ? "has a length but no value" : "is too long to be written");
}

bool ElementWriter::Refuse(const VR& vr, const char* why) {
  coder_.SetError(Format("VR(%4.4X,%4.4X) %s", vr.Group, vr.Element, why).c_str());
  return false;
}

void ElementWriter::TraceElement(const VR& vr, ElementForm form, std::int32_t depth) const {
  const bool implicit = form == ElementForm::kImplicit;
  if (vr.Items == nullptr || (IsPixelData(vr) && !implicit)) {
    const DumpService service{coder_.Dictionary};
    // Pixel data that an object keeps under another type is shown as what goes out.
    VR shown(vr, false, VR::WithoutItems{});
    shown.StreamPosition = vr.StreamPosition;
    shown.TypeCode = GivenType(vr, depth);
    DumpVR(shown, &service);
  } else if (IsPixelData(vr)) {
    AppendToDump(parse_trace::ImplicitPixelData(vr.Group, vr.Element, vr.Length));
  } else {
    AppendToDump(implicit
                     ? parse_trace::ImplicitSequence(vr.Group, vr.Element, vr.Items->ListLength)
                     : parse_trace::ExplicitSequence(vr.Group, vr.Element, kUndefinedLength));
  }
}

void ElementWriter::WriteHead(const VR& vr, VrCode type, ElementForm form) {
  HeadBytes head(buffer_.OutEndian == kBigEndian);
  head.Put16(vr.Group);
  head.Put16(vr.Element);
  const bool hasItems = vr.Items != nullptr;
  std::uint32_t length = hasItems ? kUndefinedLength : EvenLength(vr.Length);
  if (type == type_code::SQ && !hasItems) length = 0;
  if (form == ElementForm::kImplicit) {
    head.Put32(length);
  } else {
    head.Put8(static_cast<std::uint8_t>(type >> 8));
    head.Put8(static_cast<std::uint8_t>(type & 0xFF));
    if (HasLongForm(type)) {
      head.Put16(0);
      head.Put32(length);
    } else {
      // A longer value than the field can state goes out all the same; its reader has to know.
      head.Put16(static_cast<std::uint16_t>(length));
    }
  }
  head.WriteTo(buffer_);
}

bool ElementWriter::WriteValue(const VR& vr) {
  if (!buffer_.WriteLong(vr.Data, vr.Length, vr.OwnsData == 0)) return false;
  return vr.Length % 2 == 0 || buffer_.Write8(0);
}

bool ElementWriter::WriteItems(VR& vr, ElementForm form, std::int32_t depth) {
  if (IsPixelData(vr)) {
    // Without one the first fragment would be taken for the offset table.
    if (vr.LacksTable) WriteStructural(kItemElement, 0);
    return after_ == After::kKeep ? WriteFragments(*vr.Items)
                                  : coder_.WriteEncapsulated(*vr.Items, buffer_);
  }
  const bool boundaries = tracing_ && form == ElementForm::kImplicit;
  std::uint32_t number = 0;
  for (ItemArray::Node* node = vr.Items->First; node != nullptr; node = node->next) {
    ++number;
    WriteStructural(kItemElement, kUndefinedLength);
    if (boundaries)
      AppendToDump(
          parse_trace::StartItem(kStructuralGroup, kItemElement, kUndefinedLength, number));
    if (node->value != nullptr && !WriteNested(*node->value, form, depth + 1)) return false;
    WriteStructural(kItemDelimiterElement, 0);
    if (boundaries)
      AppendToDump(parse_trace::EndItem(kStructuralGroup, kItemDelimiterElement, 0, number));
  }
  WriteStructural(kSequenceDelimiterElement, 0);
  if (boundaries)
    AppendToDump(parse_trace::SequenceTerminator(kStructuralGroup, kSequenceDelimiterElement, 0));
  return true;
}

bool ElementWriter::WriteNested(DICOMObject& item, ElementForm form, std::int32_t depth) {
  if (after_ == After::kKeep) return WriteLevel(item, form, depth);
  return form == ElementForm::kImplicit ? coder_.Implicit_ParseDCMIntoRawVR(item, buffer_, depth)
                                        : coder_.Explicit_ParseDCMIntoRawVR(item, buffer_, depth);
}

void ElementWriter::WriteStructural(std::uint16_t element, std::uint32_t length) {
  HeadBytes head(buffer_.OutEndian == kBigEndian);
  head.Put16(kStructuralGroup);
  head.Put16(element);
  head.Put32(length);
  head.WriteTo(buffer_);
}

bool ElementWriter::WriteFragments(ItemArray& items) {
  for (ItemArray::Node* node = items.First; node != nullptr; node = node->next) {
    if (node->value == nullptr) continue;
    const bool written = WriteFragment(*node->value);
    if (after_ == After::kEmpty) node->value->Reset();
    if (!written || !buffer_.FlushIfMuchWaits()) return false;
  }
  WriteStructural(kSequenceDelimiterElement, 0);
  return true;
}

bool ElementWriter::WriteFragment(DICOMObject& item) {
  const VR* vr = item.GetVR(kStructuralGroup, kItemElement);
  if (vr == nullptr) return true;
  if (vr->Length != 0 && !CheckValue(*vr)) return false;
  if (tracing_) TraceElement(*vr, ElementForm::kExplicit, 0);
  WriteStructural(kItemElement, vr->Length);
  return vr->Length == 0 || buffer_.WriteLong(vr->Data, vr->Length, vr->OwnsData == 0);
}

}  // namespace tessaret
