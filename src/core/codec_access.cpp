// The functions by which codecs look at data sets and change them.
#include <cstring>
#include <memory>
#include <new>

#include "core/codec_conversion.h"
#include "core/dicom_object.h"
#include "tessaret/codec.h"

namespace tessaret {
namespace {

/// The conversion of this thread, if these are its pixels.
CodecConversion* ConversionOf(const VR* pixels) noexcept {
  CodecConversion* conversion = CodecConversion::Current();
  const bool isIts = pixels != nullptr && conversion != nullptr && conversion->Pixels() == pixels;
  return isIts ? conversion : nullptr;
}

std::uint32_t ItemsBeforeFragments(const VR* pixels) noexcept {
  const CodecConversion* conversion = ConversionOf(pixels);
  return conversion == nullptr ? 0 : conversion->ItemsBeforeFragments();
}

/// Looking an item up moves a mark in the list, and changes nothing else.
DICOMObject* ItemAt(const VR& element, std::uint32_t index) noexcept {
  return index < element.ItemCount() ? const_cast<VR&>(element).GetItem(index) : nullptr;
}

/// Throws std::bad_alloc with nothing changed.
bool AddFragment(VR& pixels, const std::uint8_t* bytes, std::uint32_t length) {
  auto value = std::make_unique<VR>(kStructuralGroup, kItemElement, length, true);
  std::memcpy(value->Data, bytes, length);
  auto item = std::make_unique<DICOMDataObject>();
  if (!item->Push(value.get())) return false;
  static_cast<void>(value.release());
  if (!pixels.AddItem(item.get())) return false;
  static_cast<void>(item.release());
  return true;
}

/// False where there is no memory.
template <class Act>
CodecBool Attempt(Act act) noexcept {
  try {
    return act() ? 1 : 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

}  // namespace

extern "C" {

const VR* tessaret_codec_element(const DICOMObject* object, std::uint16_t group,
                                 std::uint16_t element) {
  return object == nullptr ? nullptr : object->GetVR(group, element);
}

std::uint16_t tessaret_codec_uint16(const DICOMObject* object, std::uint16_t group,
                                    std::uint16_t element) {
  return object == nullptr ? std::uint16_t{0} : object->GetUINT16(group, element);
}

std::uint16_t tessaret_codec_type(const VR* element) {
  return element == nullptr ? type_code::kNone : element->TypeCode;
}

std::uint32_t tessaret_codec_length(const VR* element) {
  return tessaret_codec_bytes(element) == nullptr ? 0 : element->Length;
}

const std::uint8_t* tessaret_codec_bytes(const VR* element) {
  return element == nullptr ? nullptr : element->Data;
}

std::uint32_t tessaret_codec_item_count(const VR* element) {
  return element == nullptr ? 0 : element->ItemCount() - ItemsBeforeFragments(element);
}

const DICOMObject* tessaret_codec_item(const VR* element, std::uint32_t index) {
  if (index >= tessaret_codec_item_count(element)) return nullptr;
  return ItemAt(*element, index + ItemsBeforeFragments(element));
}

const std::uint8_t* tessaret_codec_fragment(const VR* pixels, std::uint32_t index,
                                            std::uint32_t* length) {
  const VR* fragment =
      tessaret_codec_element(tessaret_codec_item(pixels, index), kStructuralGroup, kItemElement);
  if (length != nullptr) *length = tessaret_codec_length(fragment);
  return tessaret_codec_bytes(fragment);
}

CodecBool tessaret_codec_add_fragment(VR* pixels, const std::uint8_t* bytes, std::uint32_t length) {
  const CodecConversion* conversion = ConversionOf(pixels);
  if (conversion == nullptr || !conversion->IsCompressing()) return 0;
  if (bytes == nullptr || length == 0) return 0;
  return Attempt([&] { return AddFragment(*pixels, bytes, length); });
}

CodecBool tessaret_codec_set(DICOMObject* object, std::uint16_t group, std::uint16_t element,
                             std::uint16_t type, const std::uint8_t* bytes, std::uint32_t length) {
  CodecConversion* conversion = CodecConversion::Current();
  if (object == nullptr || conversion == nullptr || &conversion->Object() != object) return 0;
  if (bytes == nullptr && length != 0) return 0;
  return Attempt([&] { return conversion->Set(MakeTagKey(group, element), type, bytes, length); });
}

CodecBool tessaret_codec_frame(const VR* pixels, CodecFrame* frame) {
  const CodecConversion* conversion = ConversionOf(pixels);
  if (conversion == nullptr || frame == nullptr) return 0;
  *frame = conversion->Frame();
  return 1;
}

void tessaret_codec_fail(const char* text) {
  CodecConversion* conversion = CodecConversion::Current();
  if (conversion != nullptr && text != nullptr) conversion->Fail(text);
}

}  // extern "C"

}  // namespace tessaret
