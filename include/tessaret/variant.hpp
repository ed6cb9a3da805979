/// Values of any type, as the public interface passes them where the type is not known beforehand.
#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "tessaret/object.hpp"
#include "tessaret/status.hpp"
#include "tessaret/string.hpp"
#include "tessaret/variant_array.hpp"

namespace tessaret {

/// One value, which it owns. Copies are deep, but an object is shared: the copy holds a reference of its own. Moves are free.
/// Numbers, dates and texts turn into one another by ChangeType, which never looks at the process's locale.
class Variant {
 public:
  /// Empty.
  Variant() noexcept = default;
  Variant(std::int16_t value) noexcept : type_(VariantType::kShort) { value_.shortValue = value; }
  Variant(std::int32_t value) noexcept : type_(VariantType::kLong) { value_.longValue = value; }
  Variant(float value) noexcept : type_(VariantType::kFloat) { value_.floatValue = value; }
  Variant(double value) noexcept : type_(VariantType::kDouble) { value_.doubleValue = value; }
  /// From bool or VariantBool only: no pointer and no number passes for a boolean.
  Variant(VariantBool value) noexcept : type_(VariantType::kBool) {
    value_.boolValue = value.value;
  }
  template <std::same_as<bool> Truth>
  Variant(Truth value) noexcept : Variant(VariantBool(value)) {}
  Variant(Date value) noexcept : type_(VariantType::kDate) { value_.doubleValue = value.days; }
  Variant(std::uint8_t value) noexcept : type_(VariantType::kByte) { value_.byteValue = value; }
  Variant(std::int8_t value) noexcept : type_(VariantType::kSignedByte) {
    value_.signedByteValue = value;
  }
  Variant(String value) noexcept : type_(VariantType::kString) {
    value_.string = std::exchange(value.units_, nullptr);
  }
  /// From UTF-8, as String. Throws std::bad_alloc.
  Variant(const char* utf8) : Variant(String(utf8)) {}
  Variant(std::string_view utf8) : Variant(String(utf8)) {}
  Variant(const std::string& utf8) : Variant(String(utf8)) {}
  /// Takes a reference of its own; null is an object too.
  explicit Variant(IObject* object) noexcept : type_(VariantType::kObject) {
    value_.object = object;
    if (object != nullptr) object->AddRef();
  }
  /// Throws std::bad_alloc.
  Variant(VariantArray array) : type_(array.Type()), isArray_(true) {
    value_.array = new VariantArray(std::move(array));
  }
  /// Throws std::bad_alloc.
  Variant(const Variant& other)
      : type_(other.type_), isArray_(other.isArray_), value_(other.value_) {
    if (isArray_) {
      value_.array = new VariantArray(*other.value_.array);
    } else if (type_ == VariantType::kString) {
      String copy = other.ToString();
      value_.string = std::exchange(copy.units_, nullptr);
    } else if (type_ == VariantType::kObject && value_.object != nullptr) {
      value_.object->AddRef();
    }
  }
  Variant(Variant&& other) noexcept { Swap(other); }
  Variant& operator=(Variant other) noexcept {
    Swap(other);
    return *this;
  }
  ~Variant() { Free(); }

  /// Frees what is held; empty afterwards, and already so for an object that looks here while it dies.
  void Clear() noexcept {
    Variant former;
    Swap(former);
  }

  /// Of an array: the type of its entries.
  [[nodiscard]] VariantType Type() const noexcept {
    // The array may have been assigned another one meanwhile.
    return isArray_ ? value_.array->Type() : type_;
  }
  [[nodiscard]] bool IsArray() const noexcept { return isArray_; }
  [[nodiscard]] bool IsEmpty() const noexcept { return Is(VariantType::kEmpty); }
  /// Whether one value of this type is held.
  [[nodiscard]] bool Is(VariantType type) const noexcept { return type_ == type && !isArray_; }
  /// The type as one number, kArrayFlag included.
  [[nodiscard]] std::uint16_t Tag() const noexcept {
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(Type()) |
                                      (isArray_ ? kArrayFlag : 0));
  }

  // What is held, where it is of that type; otherwise 0, null or an empty view. Nothing is converted.
  [[nodiscard]] std::int16_t AsShort() const noexcept {
    return Is(VariantType::kShort) ? value_.shortValue : std::int16_t{0};
  }
  [[nodiscard]] std::int32_t AsLong() const noexcept {
    return Is(VariantType::kLong) ? value_.longValue : 0;
  }
  [[nodiscard]] float AsFloat() const noexcept {
    return Is(VariantType::kFloat) ? value_.floatValue : 0;
  }
  [[nodiscard]] double AsDouble() const noexcept {
    return Is(VariantType::kDouble) ? value_.doubleValue : 0;
  }
  [[nodiscard]] Date AsDate() const noexcept {
    return {Is(VariantType::kDate) ? value_.doubleValue : 0};
  }
  [[nodiscard]] VariantBool AsBool() const noexcept {
    return VariantBool::Of(Is(VariantType::kBool) ? value_.boolValue : std::int16_t{0});
  }
  [[nodiscard]] std::uint8_t AsByte() const noexcept {
    return Is(VariantType::kByte) ? value_.byteValue : std::uint8_t{0};
  }
  [[nodiscard]] std::int8_t AsSignedByte() const noexcept {
    return Is(VariantType::kSignedByte) ? value_.signedByteValue : std::int8_t{0};
  }
  /// Stays owned here, and valid until this changes.
  [[nodiscard]] std::u16string_view AsString() const noexcept {
    if (!Is(VariantType::kString) || value_.string == nullptr) return {};
    return {value_.string, String::HeaderOf(value_.string)->length};
  }
  /// A copy; null where no string, or a null one, is held. Throws std::bad_alloc.
  [[nodiscard]] String ToString() const {
    return Is(VariantType::kString) && value_.string != nullptr ? String(AsString()) : String();
  }
  /// The reference stays this Variant's.
  [[nodiscard]] IObject* AsObject() const noexcept {
    return Is(VariantType::kObject) ? value_.object : nullptr;
  }
  /// Null where no array is held. Stays owned here.
  [[nodiscard]] const VariantArray* AsArray() const noexcept {
    return isArray_ ? value_.array : nullptr;
  }
  [[nodiscard]] VariantArray* AsArray() noexcept { return isArray_ ? value_.array : nullptr; }

  /// Turns the value into `type` in place.
  ///  - Numbers, booleans and dates: by value; fractions are rounded to the nearest whole number, halves to the even one. Any
  ///    number but 0 is true, which becomes -1. kOverflow where it does not fit; not-a-number fits no whole number.
  ///  - From text: a decimal number as in "-12.5e3", too small a one being 0; "True" and "False" in any case for any number (-1
  ///    and 0); dates as 2001-02-03, 2001/02/03, 2001.02.03 or 20010203, alone or with a time behind a blank or T, and times
  ///    alone, on 1899-12-30, as 14:05, 14:05:06 or 14:05:06.25. Blanks around them count for nothing. kTypeMismatch for any
  ///    other text, and for a number too large for a double.
  ///  - To text: whole numbers in decimal, others in the shortest form that reads back the same, "True" or "False", dates as
  ///    2001-02-03, with 14:05:06 behind a blank unless that is midnight, and with .250 where milliseconds are not 0; a date
  ///    outside the years 100 to 9999 as its number of days.
  ///  - Empty becomes 0, midnight of 1899-12-30 or empty text.
  /// kTypeMismatch for objects and arrays, unless they have that type already; kOutOfMemory. Nothing changes after a failure.
  [[nodiscard]] Status ChangeType(VariantType type);

 private:
  union Value {
    double doubleValue = 0;
    std::int16_t shortValue;
    std::int32_t longValue;
    float floatValue;
    std::int16_t boolValue;
    std::uint8_t byteValue;
    std::int8_t signedByteValue;
    char16_t* string;  // as String owns it
    IObject* object;
    VariantArray* array;
  };

  void Free() noexcept {
    if (isArray_) {
      delete value_.array;
    } else if (type_ == VariantType::kString) {
      String::Free(value_.string);
    } else if (type_ == VariantType::kObject && value_.object != nullptr) {
      value_.object->Release();
    }
  }
  void Swap(Variant& other) noexcept {
    std::swap(type_, other.type_);
    std::swap(isArray_, other.isArray_);
    std::swap(value_, other.value_);
  }

  VariantType type_ = VariantType::kEmpty;
  bool isArray_ = false;
  Value value_;
};

}  // namespace tessaret

/// Behind Variant::ChangeType: `variant` is a tessaret::Variant, `type` one of its types.
extern "C" std::int32_t tessaret_variant_change_type(void* variant, std::uint16_t type);

inline tessaret::Status tessaret::Variant::ChangeType(VariantType type) {
  return tessaret_variant_change_type(this, static_cast<std::uint16_t>(type));
}
