#include "object_builder.h"

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "core/data_set_coder.h"
#include "core/module_dictionaries.h"

namespace tessaret::bench {
namespace {

constexpr std::string_view kImplicitLittleUid = "1.2.840.10008.1.2";
constexpr std::string_view kExplicitLittleUid = "1.2.840.10008.1.2.1";

VrCode TypeOf(TagKey tag) {
  const VrCode type = ModuleDictionary().RunTimeClass(GroupOf(tag), ElementOf(tag), nullptr);
  if (type == type_code::kNone) throw std::logic_error("a tag that the dictionary does not know");
  return type;
}

void PushInto(DICOMObject& object, std::unique_ptr<VR> vr) {
  object.Push(vr.get());
  static_cast<void>(vr.release());
}

}  // namespace

void ObjectBuilder::Add(TagKey tag, VrCode type, const void* bytes, std::size_t size) {
  auto vr = std::make_unique<VR>(GroupOf(tag), ElementOf(tag), static_cast<std::uint32_t>(size),
                                 size != 0);
  if (size != 0) std::memcpy(vr->Data, bytes, size);
  if (size % 2 != 0) vr->Data[size] = type == type_code::UI ? '\0' : ' ';
  vr->TypeCode = type;
  PushInto(object_, std::move(vr));
}

void ObjectBuilder::Text(TagKey tag, std::string_view text) {
  Add(tag, TypeOf(tag), text.data(), text.size());
}

void ObjectBuilder::PrivateText(TagKey tag, VrCode type, std::string_view text) {
  Add(tag, type, text.data(), text.size());
}

void ObjectBuilder::U16(TagKey tag, std::uint16_t value) {
  Add(tag, type_code::US, &value, sizeof value);
}

void ObjectBuilder::F32(TagKey tag, float value) { Add(tag, type_code::FL, &value, sizeof value); }

void ObjectBuilder::F64(TagKey tag, double value) { Add(tag, type_code::FD, &value, sizeof value); }

void ObjectBuilder::Pixels(std::span<const std::uint16_t> pixels) {
  // A writer only reads the bytes of an element; the field is not const because most elements own theirs.
  auto* bytes = reinterpret_cast<std::uint8_t*>(const_cast<std::uint16_t*>(pixels.data()));
  auto vr = std::make_unique<VR>(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag),
                                 static_cast<std::uint32_t>(pixels.size_bytes()), bytes, false);
  vr->TypeCode = type_code::OW;
  PushInto(object_, std::move(vr));
}

DICOMObject& ObjectBuilder::Item(TagKey tag) {
  VR* sequence = object_.GetVR(GroupOf(tag), ElementOf(tag));
  if (sequence == nullptr) {
    Add(tag, type_code::SQ, nullptr, 0);
    sequence = object_.GetVR(GroupOf(tag), ElementOf(tag));
  }
  auto item = std::make_unique<DICOMDataObject>();
  if (!sequence->AddItem(item.get())) throw std::bad_alloc();
  return *item.release();
}

void SaveObject(DICOMObject& object, Syntax syntax, const std::filesystem::path& path) {
  ObjectBuilder(object).Text(kTransferSyntaxTag,
                             syntax == Syntax::kImplicit ? kImplicitLittleUid : kExplicitLittleUid);
  DataSetCoder coder(&ModuleDictionary());
  if (coder.SaveFile(path.c_str(), 3, object)) return;
  const char* why = coder.ErrorText();
  throw std::runtime_error("saving " + path.string() + ": " + (why != nullptr ? why : "failed"));
}

}  // namespace tessaret::bench
