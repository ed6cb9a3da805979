#include "object_builder.h"

#include <array>
#include <charconv>
#include <cstring>
#include <memory>

#include "base/byte_order.h"

namespace tessaret::tool {
namespace {

constexpr std::size_t kLongestDecimal = 16;

}  // namespace

std::string DecimalString(double number) {
  std::array<char, 64> text;
  auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  for (int digits = 15; end - text.data() > static_cast<std::ptrdiff_t>(kLongestDecimal);
       --digits) {
    end = std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general,
                        digits)
              .ptr;
  }
  return {text.data(), end};
}

void ObjectBuilder::Add(TagKey tag, VrCode type, const void* bytes, std::size_t size, char pad) {
  auto vr =
      std::make_unique<VR>(GroupOf(tag), ElementOf(tag), static_cast<std::uint32_t>(size), true);
  if (size != 0) std::memcpy(vr->Data, bytes, size);
  if (size % 2 == 1) vr->Data[size] = static_cast<std::uint8_t>(pad);
  vr->TypeCode = type;
  object_.Push(vr.get());
  vr.release();
}

void ObjectBuilder::Text(TagKey tag, VrCode type, std::string_view text) {
  Add(tag, type, text.data(), text.size(), type == type_code::UI ? '\0' : ' ');
}

void ObjectBuilder::Decimals(TagKey tag, std::initializer_list<double> numbers) {
  std::string text;
  for (const double number : numbers) {
    if (!text.empty()) text += '\\';
    text += DecimalString(number);
  }
  Text(tag, type_code::DS, text);
}

void ObjectBuilder::Integer(TagKey tag, std::int64_t number) {
  Text(tag, type_code::IS, std::to_string(number));
}

void ObjectBuilder::Unsigned16(TagKey tag, std::initializer_list<std::uint16_t> numbers) {
  Add(tag, type_code::US, std::data(numbers), numbers.size() * 2, '\0');
}

void ObjectBuilder::Unsigned32(TagKey tag, std::initializer_list<std::uint32_t> numbers) {
  Add(tag, type_code::UL, std::data(numbers), numbers.size() * 4, '\0');
}

void ObjectBuilder::Float64(TagKey tag, double number) {
  Add(tag, type_code::FD, &number, sizeof number, '\0');
}

void ObjectBuilder::TagValue(TagKey tag, TagKey value) {
  std::array<std::uint8_t, 4> bytes;
  StoreLittle16(bytes.data(), GroupOf(value));
  StoreLittle16(bytes.data() + 2, ElementOf(value));
  Add(tag, type_code::AT, bytes.data(), bytes.size(), '\0');
}

void ObjectBuilder::Bytes(TagKey tag, VrCode type, const std::vector<std::uint8_t>& bytes) {
  Add(tag, type, bytes.data(), bytes.size(), '\0');
}

void ObjectBuilder::EmptySequence(TagKey tag) { Add(tag, type_code::SQ, nullptr, 0, '\0'); }

ObjectBuilder ObjectBuilder::Item(TagKey sequence) {
  if (object_.GetVR(GroupOf(sequence), ElementOf(sequence)) == nullptr) EmptySequence(sequence);
  auto item = std::make_unique<DICOMDataObject>();
  DICOMObject& added = *item;
  VR* vr = object_.GetVR(GroupOf(sequence), ElementOf(sequence));
  if (!vr->AddItem(item.get())) throw std::bad_alloc();
  item.release();
  return ObjectBuilder(added);
}

}  // namespace tessaret::tool
