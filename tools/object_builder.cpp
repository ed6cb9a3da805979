#include "object_builder.h"

#include <array>
#include <charconv>
#include <cstring>
#include <limits>

#include "base/byte_order.h"
#include "class_object.h"

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

void ObjectBuilder::Add(TagKey tag, VrCode type, std::span<const std::uint8_t> bytes) {
  PutBytes(*object_, tag, type, bytes);
}

template <class T>
void ObjectBuilder::AddNumbers(TagKey tag, VrCode type, std::initializer_list<T> numbers) {
  std::vector<std::uint8_t> bytes(numbers.size() * sizeof(T));
  if (!bytes.empty()) std::memcpy(bytes.data(), std::data(numbers), bytes.size());
  Add(tag, type, bytes);
}

void ObjectBuilder::Text(TagKey tag, VrCode type, std::string_view text) {
  std::vector<std::uint8_t> bytes(text.begin(), text.end());
  if (bytes.size() % 2 != 0) bytes.push_back(type == type_code::UI ? '\0' : ' ');
  Add(tag, type, bytes);
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
  AddNumbers(tag, type_code::US, numbers);
}

void ObjectBuilder::Unsigned32(TagKey tag, std::initializer_list<std::uint32_t> numbers) {
  AddNumbers(tag, type_code::UL, numbers);
}

void ObjectBuilder::Float64(TagKey tag, double number) { AddNumbers(tag, type_code::FD, {number}); }

void ObjectBuilder::TagValue(TagKey tag, TagKey value) {
  std::array<std::uint8_t, 4> bytes;
  StoreLittle16(bytes.data(), GroupOf(value));
  StoreLittle16(bytes.data() + 2, ElementOf(value));
  Add(tag, type_code::AT, bytes);
}

void ObjectBuilder::Bytes(TagKey tag, VrCode type, std::vector<std::uint8_t> bytes) {
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  Add(tag, type, bytes);
}

void ObjectBuilder::EmptySequence(TagKey tag) {
  Require(object_->putref_Sequence(GroupOf(tag), ElementOf(tag), 0, nullptr));
}

ObjectBuilder ObjectBuilder::Item(TagKey sequence) {
  // Behind the last one.
  constexpr std::int32_t kBehindAll = std::numeric_limits<std::int32_t>::max();
  Ref<IDCMObject> item = NewObject();
  Require(object_->putref_Sequence(GroupOf(sequence), ElementOf(sequence), kBehindAll, item.Get()));
  return ObjectBuilder(std::move(item));
}

}  // namespace tessaret::tool
