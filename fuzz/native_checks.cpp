#include "native_checks.h"

#include <memory>

namespace tessaret::fuzz {
namespace {

/// Empties a clone of `object` into `bytes`. The clone shares its values.
bool WriteClone(DataSetCoder& coder, const NativeEncoding& encoding, const DICOMObject& object,
                CollectingBuffer& bytes) {
  const std::unique_ptr<DICOMObject> clone(object.Clone(false));
  const bool written = (coder.*encoding.out)(*clone, bytes);
  Require(clone->IsEmpty(), "writing empties the object");
  return written;
}

/// Whether anything that is to be written was stepped over. The meta header and group lengths are not written, with whatever may
/// be in them; items of pixel data are written as fragments, or not at all.
bool LacksBytes(const DICOMObject& object) {
  return !object.Elements.ForEachWhile([](VR& vr) {
    if (vr.Group == 0x0002 || vr.Element == 0) return true;
    if (vr.IsSteppedOver) return false;
    for (std::uint32_t at = 0; at < vr.ItemCount(); ++at) {
      const DICOMObject& item = *vr.GetItem(at);
      const VR* const fragment = item.GetVR(kStructuralGroup, kItemElement);
      if (vr.Key() != kPixelDataTag ? LacksBytes(item)
                                    : fragment != nullptr && fragment->IsSteppedOver)
        return false;
    }
    return true;
  });
}

/// A stream that states its total refuses what is longer, with words; otherwise nothing is different.
void CheckStatedTotal(const Input& input, const NativeEncoding& encoding, const DataSetCoder& other,
                      const DICOMObject& object) {
  DataSetCoder coder(other.Dictionary);
  TotallingBuffer block(BlockOf(input.bytes), static_cast<std::uint32_t>(input.bytes.size()),
                        false);
  DICOMDataObject again;
  (coder.*encoding.in)(block, again);
  if (coder.LastStop().why == ParseStop::Why::kTooLong) {
    Require(coder.ErrorText() != nullptr, "it says which length is too long");
    return;
  }
  RequireSame(coder.LastStop(), other.LastStop());
  RequireSame(again, object);
}

/// A reader that steps over pixel data with more bytes than a few gives all else, from a block and from a stream; what it gives is
/// not written where a value lacks.
void CheckStepping(const Input& input, const NativeEncoding& encoding, std::int32_t outEndian,
                   const DataSetCoder& other, const DICOMObject& whole, bool isRead) {
  const std::uint32_t longest = input.options >> 5;
  const auto size = static_cast<std::uint32_t>(input.bytes.size());
  MemoryBuffer block(BlockOf(input.bytes), size, false);
  PlainMemoryBuffer stream(BlockOf(input.bytes), size, false);
  for (Buffer* buffer : {static_cast<Buffer*>(&block), static_cast<Buffer*>(&stream)}) {
    DataSetCoder coder(other.Dictionary);
    coder.LongestPixelValue = longest;
    buffer->OutEndian = outEndian;
    DICOMDataObject stepped;
    Require((coder.*encoding.in)(*buffer, stepped) == isRead, "equal results past the pixels");
    RequireSame(coder.LastStop(), other.LastStop());
    RequireSame(coder.Oddities(), other.Oddities());
    RequireSameBesides(whole, stepped, longest);
    CollectingBuffer bytes;
    const std::unique_ptr<DICOMObject> copy(stepped.Clone(true));
    const bool written = (coder.*encoding.out)(*copy, bytes);
    Require(!written || !LacksBytes(stepped), "nothing is written that lacks bytes");
  }
}

void CheckWriting(DataSetCoder& coder, const NativeEncoding& encoding, const DICOMObject& object) {
  const SavedForm saved{encoding.form, false, coder.Dictionary};
  const SavedLimits limits = LimitsOf(object, saved);
  const std::unique_ptr<DICOMObject> before(object.Clone(true));
  CollectingBuffer first;
  const bool written = WriteClone(coder, encoding, object, first);
  Require(written == !limits.unwritable, "written unless it cannot be encoded");
  if (!written) return;

  const std::vector<std::uint8_t>& bytes = first.Written();
  MemoryBuffer buffer(BlockOf(bytes), static_cast<std::uint32_t>(bytes.size()), false);
  DICOMDataObject after;
  const bool read = (coder.*encoding.in)(buffer, after);
  if (limits.changes) return;
  Require(read && buffer.Available() == 0, "what was written can be read");
  RequireReadsBack(*before, after, saved);
  CollectingBuffer second;
  Require(WriteClone(coder, encoding, after, second), "what was read back can be written");
  Require(limits.settles || second.Written() == bytes, "writing it again gives the same bytes");
}

}  // namespace

void CheckNativeEncoding(const Input& input, const NativeEncoding& encoding) {
  const RTC* dictionary = input.Option(0) ? nullptr : StandardDictionary();
  const std::int32_t outEndian = input.Option(1) ? kBigEndian : kLittleEndian;

  DataSetCoder coder(dictionary);
  MemoryBuffer block(BlockOf(input.bytes), static_cast<std::uint32_t>(input.bytes.size()), false);
  block.OutEndian = outEndian;
  DICOMDataObject object;
  const bool read = (coder.*encoding.in)(block, object);

  DataSetCoder slowCoder(dictionary);
  // Seldom, because a reader then takes memory on trust, which is slow.
  const bool knowsSupply = (input.options & 0x1C) != 0x1C;
  DrippingBuffer drops(input.bytes, 1 + (input.options >> 5), knowsSupply);
  drops.OutEndian = outEndian;
  DICOMDataObject slowObject;
  Require((slowCoder.*encoding.in)(drops, slowObject) == read, "equal results drop by drop");
  RequireSame(coder.LastStop(), slowCoder.LastStop());
  RequireSame(object, slowObject);
  Require(!read || block.Position == drops.Position, "equal numbers of bytes consumed");
  RequireWithin(object, input.bytes.size());

  CheckStepping(input, encoding, outEndian, coder, object, read);
  if (outEndian == kLittleEndian) CheckStatedTotal(input, encoding, coder, object);
  CheckWriting(coder, encoding, object);
}

}  // namespace tessaret::fuzz
