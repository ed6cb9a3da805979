#include "facade/c_values.h"

#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/checked.h"
#include "facade/c_handles.h"
#include "tessaret/dispatch.hpp"

namespace tessaret {
namespace {

/// An array that the library gives, in one piece with what describes it. Whoever clears the value deletes it.
struct OwnedArray {
  explicit OwnedArray(VariantArray&& from) : entries(std::move(from)) {
    for (const ArrayBound& bound : entries.Bounds()) bounds.push_back({bound.lower, bound.count});
    shown = {bounds.data(), entries.Data(), entries.Count(),
             static_cast<std::uint32_t>(bounds.size())};
  }

  tessaret_array shown{};  // first: its address is that of this
  VariantArray entries;
  std::vector<tessaret_bound> bounds;
};
static_assert(offsetof(OwnedArray, shown) == 0);
// An empty value is all zeros, whatever is read of it.
static_assert(sizeof(tessaret_value::as) == sizeof(tessaret_value::as.string_value));

/// How many entries the bounds of `given` name; nothing where no number holds that.
std::optional<std::uint64_t> EntriesNamed(const tessaret_array& given) {
  if (given.dimensions == 0) return 0;
  // First of all, for then the others may be as long as they like.
  for (std::uint32_t at = 0; at < given.dimensions; ++at) {
    if (given.bounds[at].count == 0) return 0;
  }
  std::optional<std::uint64_t> count = 1;
  for (std::uint32_t at = 0; count && at < given.dimensions; ++at)
    count = CheckedMultiply<std::uint64_t>(*count, given.bounds[at].count);
  return count;
}

Status ArrayFromC(const tessaret_value& from, Variant& to) {
  const auto type = static_cast<VariantType>(from.type & ~TESSARET_ARRAY);
  const std::size_t size = EntrySize(type);
  const tessaret_array* given = from.as.array_value;
  if (size == 0 || given == nullptr) return kTypeMismatch;
  if (given->dimensions != 0 && given->bounds == nullptr) return kPointer;
  // What the bounds name has to be there before memory is taken for it.
  if (EntriesNamed(*given) != given->count || (given->count != 0 && given->entries == nullptr))
    return kInvalidArgument;
  std::vector<ArrayBound> bounds;
  for (std::uint32_t at = 0; at < given->dimensions; ++at)
    bounds.push_back({given->bounds[at].lower, given->bounds[at].count});
  VariantArray array(type, bounds);
  if (given->count != 0) std::memcpy(array.Data(), given->entries, array.ByteCount());
  to = Variant(std::move(array));
  return kOk;
}

Status ObjectFromC(const tessaret_value& from, Variant& to) {
  const Ref<IDispatch> object = HeldObject(from.as.object_value);
  if (!object && from.as.object_value != nullptr) return kNoObject;
  to = Variant(static_cast<IObject*>(object.Get()));
  return kOk;
}

String StringFromC(const tessaret_value& from) {
  const char* text = from.as.string_value;
  if (text == nullptr) return {};
  return {std::string_view(text, from.length != 0 ? from.length : std::strlen(text))};
}

}  // namespace

Status FromC(const tessaret_value& from, Variant& to) {
  if ((from.type & TESSARET_ARRAY) != 0) return ArrayFromC(from, to);
  switch (static_cast<VariantType>(from.type)) {
    case VariantType::kEmpty:
      to.Clear();
      return kOk;
    case VariantType::kShort:
      to = Variant(from.as.short_value);
      return kOk;
    case VariantType::kLong:
      to = Variant(from.as.long_value);
      return kOk;
    case VariantType::kFloat:
      to = Variant(from.as.float_value);
      return kOk;
    case VariantType::kDouble:
      to = Variant(from.as.double_value);
      return kOk;
    case VariantType::kDate:
      to = Variant(Date{from.as.date_value});
      return kOk;
    case VariantType::kString:
      to = Variant(StringFromC(from));
      return kOk;
    case VariantType::kObject:
      return ObjectFromC(from, to);
    case VariantType::kBool:
      to = Variant(VariantBool::Of(from.as.bool_value));
      return kOk;
    case VariantType::kSignedByte:
      to = Variant(from.as.signed_byte_value);
      return kOk;
    case VariantType::kByte:
      to = Variant(from.as.byte_value);
      return kOk;
  }
  return kTypeMismatch;
}

void ToC(Variant&& from, tessaret_value& to) {
  to = tessaret_value{};
  if (VariantArray* array = from.AsArray(); array != nullptr) {
    const std::uint16_t tag = from.Tag();
    auto owned = std::make_unique<OwnedArray>(std::move(*array));
    to.as.array_value = &owned.release()->shown;
    to.owned = 1;
    to.type = tag;
    return;
  }
  switch (from.Type()) {
    case VariantType::kEmpty:
      break;
    case VariantType::kShort:
      to.as.short_value = from.AsShort();
      break;
    case VariantType::kLong:
      to.as.long_value = from.AsLong();
      break;
    case VariantType::kFloat:
      to.as.float_value = from.AsFloat();
      break;
    case VariantType::kDouble:
      to.as.double_value = from.AsDouble();
      break;
    case VariantType::kDate:
      to.as.date_value = from.AsDate().days;
      break;
    case VariantType::kString: {
      const String string = from.ToString();
      if (string.IsNull()) break;
      const std::string text = string.Utf8();
      // Its length could not be told.
      if (text.size() > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
      auto copy = std::make_unique<char[]>(text.size() + 1);
      std::memcpy(copy.get(), text.c_str(), text.size() + 1);
      to.as.string_value = copy.release();
      to.length = static_cast<std::uint32_t>(text.size());
      to.owned = 1;
      break;
    }
    case VariantType::kObject:
      to.as.object_value = GiveHandle(Ref<IObject>(from.AsObject()).As<IDispatch>());
      to.owned = to.as.object_value != nullptr ? 1 : 0;
      break;
    case VariantType::kBool:
      to.as.bool_value = from.AsBool().value;
      break;
    case VariantType::kSignedByte:
      to.as.signed_byte_value = from.AsSignedByte();
      break;
    case VariantType::kByte:
      to.as.byte_value = from.AsByte();
      break;
  }
  to.type = from.Tag();
}

}  // namespace tessaret

void tessaret_clear(tessaret_value* value) {
  if (value == nullptr) return;
  if (value->owned != 0) {
    if ((value->type & TESSARET_ARRAY) != 0) {
      delete reinterpret_cast<const tessaret::OwnedArray*>(value->as.array_value);
    } else if (value->type == TESSARET_STRING) {
      delete[] value->as.string_value;
    } else if (value->type == TESSARET_OBJECT) {
      tessaret::ReleaseHandle(value->as.object_value);
    }
  }
  *value = {};
}
