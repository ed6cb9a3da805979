// Whatever comes out of a stream can be saved, with and without being kept, in the same bytes; loads again as what it was; and
// is then saved in the same bytes once more.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "base/byte_order.h"
#include "core/element_reader.h"
#include "core/element_writer.h"
#include "core/meta_header.h"
#include "saved_files.h"
#include "saved_form.h"
#include "support.h"

namespace {

using namespace tessaret;
using tessaret::fuzz::Require;
using Bytes = std::vector<std::uint8_t>;

/// Preamble and mark, as SaveFile puts them before everything else.
void SendStart(Buffer& buffer) {
  Bytes start(128, 0);
  for (const char c : {'D', 'I', 'C', 'M'}) start.push_back(static_cast<std::uint8_t>(c));
  buffer.SendBinary(start.data(), static_cast<std::uint32_t>(start.size()));
}

/// The file that SaveFile makes of `object`. False when it refuses.
bool SaveClone(DataSetCoder& coder, const DICOMObject& object, Bytes& bytes) {
  const std::unique_ptr<DICOMObject> clone(object.Clone(false));
  fuzz::CollectingBuffer buffer;
  SendStart(buffer);
  const bool saved = coder.AddMetaHeader(*clone, 3) &&
                     coder.File_ParseDCMIntoRawVR(*clone, buffer, kExplicitLittle);
  Require(clone->IsEmpty(), "saving empties the object");
  bytes = buffer.Written();
  return saved;
}

/// The file that SaveKeeping makes of `object`.
bool SaveAndKeep(DataSetCoder& coder, DICOMObject& object, Bytes& bytes) {
  fuzz::CollectingBuffer buffer;
  SendStart(buffer);
  DICOMObject meta;
  VrCode pixelType = type_code::kNone;
  BuildMetaHeaderBeside(object, 3, coder.CallingAETitle, meta, pixelType);
  ElementWriter writer(coder, buffer, ElementWriter::After::kKeep);
  const bool saved = writer.WriteFileWithMeta(object, meta, pixelType, kExplicitLittle);
  bytes = buffer.Written();
  return saved;
}

/// The form that `object` is saved in; `known` is false when its syntax is in no table.
fuzz::SavedForm FormOf(const DICOMObject& object, const RTC* dictionary, bool& known) {
  fuzz::SavedForm saved{ElementForm::kImplicit, true, dictionary};
  const VR* syntax = object.GetVR(0x0002, 0x0010);
  known = true;
  if (syntax == nullptr) return saved;
  const auto code = FindTransferSyntax(TransferSyntaxText(*syntax));
  known = code.has_value();
  if (known && !IsImplicit(*code)) saved.form = ElementForm::kExplicit;
  const bool big = known && IsBigEndian(*code);
  const VR* pixels = object.GetVR(0x7FE0, 0x0010);
  const bool stays = big && pixels != nullptr &&
                     (pixels->TypeCode == type_code::OB || pixels->TypeCode == type_code::OW);
  if (stays) return saved;
  const std::uint16_t bits = object.GetUINT16(0x0028, 0x0100);
  const auto count = static_cast<std::uint16_t>(big ? bits >> 8 | bits << 8 : bits);
  saved.pixelType = count > 8 ? type_code::OW : type_code::OB;
  return saved;
}

/// Whether anything asks for the syntax: group lengths do not.
bool HasDataSet(const DICOMObject& object) {
  bool has = false;
  object.Elements.ForEach(
      [&](const VR& vr) { has = has || (vr.Group > 0x0002 && vr.Element != 0); });
  return has;
}

/// Group 0002 states how long it is.
void RequireMetaLength(const DICOMObject& object) {
  const VR* length = object.GetVR(0x0002, 0x0000);
  Require(length != nullptr && length->Length == 4, "the meta header has a length");
  const std::uint32_t end = 132 + 12 + LoadLittle32(length->Data);
  object.Elements.ForEach([&](const VR& vr) {
    if (vr.Group == 0x0002) Require(vr.StreamPosition < end, "the length covers the meta header");
    if (vr.Group > 0x0002)
      Require(vr.StreamPosition >= end, "the length ends with the meta header");
  });
}

void CheckSaving(DataSetCoder& coder, DICOMObject& object, bool inFiles) {
  bool known = false;
  const fuzz::SavedForm form = FormOf(object, coder.Dictionary, known);
  const fuzz::SavedLimits limits = LimitsOf(object, form);
  const std::unique_ptr<DICOMObject> before(object.Clone(true));
  Bytes kept;
  Bytes bytes;
  const bool saved = SaveAndKeep(coder, object, kept);
  Require(SaveClone(coder, object, bytes) == saved, "kept or not, an object is saved or refused");
  Require(saved == (!limits.unwritable && (known || !HasDataSet(object))),
          "saved unless it cannot be encoded");
  if (inFiles) fuzz::RequireSameInFiles(coder, object, saved ? &bytes : nullptr);
  if (!saved) return;
  Require(kept == bytes, "kept or not, an object is saved in the same bytes");

  const auto after = coder.LoadMemory(bytes.data(), bytes.size(), true, true);
  if (limits.changes || !known) return;
  Require(after != nullptr, "what was saved can be loaded");
  RequireMetaLength(*after);
  RequireReadsBack(*before, *after, form);
  Bytes again;
  Require(SaveClone(coder, *after, again), "what was loaded again can be saved");
  Require(limits.settles || again == bytes, "saving it again gives the same bytes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::Input input(data, size);
  DataSetCoder coder(fuzz::StandardDictionary());
  coder.FileMode = !input.Option(2);
  MemoryBuffer buffer(fuzz::BlockOf(input.bytes), static_cast<std::uint32_t>(input.bytes.size()),
                      false);
  // What came before a failure is an object too.
  DICOMDataObject object;
  constexpr std::int32_t kCodes[] = {kExplicitLittle, kImplicitLittle, kExplicitBig,
                                     kExplicitLittle};
  coder.File_ParseRawVRIntoDCM(buffer, object, kCodes[input.options & 3], true);
  CheckSaving(coder, object, (input.options & 0xF0) == 0xF0);
  return 0;
}
