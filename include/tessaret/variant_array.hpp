/// Arrays of the public interface: numbers, booleans or dates of one type, in any number of dimensions with any lower bounds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <type_traits>
#include <vector>

#include "tessaret/status.hpp"

namespace tessaret {

/// What a Variant holds. The numbers are part of the interface.
enum class VariantType : std::uint16_t {
  kEmpty = 0,
  kShort = 2,        // signed 16 bits
  kLong = 3,         // signed 32 bits
  kFloat = 4,        // 32 bits
  kDouble = 5,       // 64 bits
  kDate = 7,         // days since 1899-12-30 as 64-bit floating point, see Date
  kString = 8,       // String
  kObject = 9,       // a counted reference, may be null
  kBool = 11,        // VariantBool
  kSignedByte = 16,  // 8 bits
  kByte = 17,        // unsigned 8 bits
};

/// The flag that a type carries where an array of it is meant, as in 0x2011 for bytes.
inline constexpr std::uint16_t kArrayFlag = 0x2000;

/// A point in time without a zone: days since 1899-12-30 00:00 as a number with a fraction. Before that day the fraction still
/// counts forwards: -1.25 is 6 o'clock on 1899-12-29. Milliseconds keep their value from the year 100 to 9999.
struct Date {
  double days = 0;
  friend bool operator==(const Date&, const Date&) = default;
};

/// One dimension: its entries have the indices lower to lower + count - 1.
struct ArrayBound {
  std::int32_t lower = 0;
  std::uint32_t count = 0;
  friend bool operator==(const ArrayBound&, const ArrayBound&) = default;
};

/// The bytes of one entry of an array of this type; 0 for types that no array can have.
constexpr std::size_t EntrySize(VariantType type) {
  switch (type) {
    case VariantType::kShort:
    case VariantType::kBool:
      return 2;
    case VariantType::kLong:
    case VariantType::kFloat:
      return 4;
    case VariantType::kDouble:
    case VariantType::kDate:
      return 8;
    case VariantType::kSignedByte:
    case VariantType::kByte:
      return 1;
    case VariantType::kEmpty:
    case VariantType::kString:
    case VariantType::kObject:
      break;
  }
  return 0;
}

/// Owns its entries, which lie without gaps; the index of the first dimension runs fastest.
class VariantArray {
 public:
  /// No dimensions and no entries.
  VariantArray() = default;
  /// All entries 0. Throws std::bad_alloc where they are more than memory holds, or `type` has no arrays.
  VariantArray(VariantType type, std::span<const ArrayBound> bounds)
      : type_(type), bounds_(bounds.begin(), bounds.end()), count_(CountIn(type, bounds)) {
    if (count_ != 0) entries_.reset(new std::byte[count_ * EntrySize(type)]());
  }
  /// One dimension from index 0.
  VariantArray(VariantType type, std::uint32_t count)
      : VariantArray(type, std::span<const ArrayBound>(
                               std::initializer_list<ArrayBound>{{0, count}}.begin(), 1)) {}
  /// Unsigned bytes, one dimension from index 0, with this content.
  static VariantArray OfBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    VariantArray made;
    made.type_ = VariantType::kByte;
    made.bounds_.push_back({0, static_cast<std::uint32_t>(bytes.size())});
    made.count_ = bytes.size();
    if (made.count_ != 0) {
      made.entries_.reset(new std::byte[made.count_]);
      std::memcpy(made.entries_.get(), bytes.data(), made.count_);
    }
    return made;
  }

  VariantArray(const VariantArray& other)
      : type_(other.type_), bounds_(other.bounds_), count_(other.count_) {
    if (count_ == 0) return;
    entries_.reset(new std::byte[ByteCount()]);
    std::memcpy(entries_.get(), other.entries_.get(), ByteCount());
  }
  VariantArray(VariantArray&& other) noexcept { Swap(other); }
  VariantArray& operator=(VariantArray other) noexcept {
    Swap(other);
    return *this;
  }
  ~VariantArray() = default;

  [[nodiscard]] VariantType Type() const noexcept { return type_; }
  [[nodiscard]] std::span<const ArrayBound> Bounds() const noexcept { return bounds_; }
  /// Of all dimensions together.
  [[nodiscard]] std::size_t Count() const noexcept { return count_; }
  [[nodiscard]] std::size_t ByteCount() const noexcept { return count_ * EntrySize(type_); }
  /// Null without entries.
  [[nodiscard]] const void* Data() const noexcept { return entries_.get(); }
  [[nodiscard]] void* Data() noexcept { return entries_.get(); }
  [[nodiscard]] std::span<const std::uint8_t> Bytes() const noexcept {
    return {static_cast<const std::uint8_t*>(Data()), ByteCount()};
  }

  /// All entries in the order in which they lie. Requires: T has the size of an entry.
  template <class T>
  [[nodiscard]] std::span<T> Entries() noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    return {static_cast<T*>(Data()), sizeof(T) == EntrySize(type_) ? count_ : 0};
  }
  template <class T>
  [[nodiscard]] std::span<const T> Entries() const noexcept {
    static_assert(std::is_trivially_copyable_v<T>);
    return {static_cast<const T*>(Data()), sizeof(T) == EntrySize(type_) ? count_ : 0};
  }

 private:
  static std::size_t CountIn(VariantType type, std::span<const ArrayBound> bounds) {
    const std::size_t size = EntrySize(type);
    if (size == 0) throw std::bad_alloc();
    if (bounds.empty()) return 0;
    // First of all, for then the others may be as long as they like.
    for (const ArrayBound& bound : bounds) {
      if (bound.count == 0) return 0;
    }
    std::size_t count = 1;
    for (const ArrayBound& bound : bounds) {
      if (count > std::numeric_limits<std::ptrdiff_t>::max() / size / bound.count)
        throw std::bad_alloc();
      count *= bound.count;
    }
    return count;
  }
  void Swap(VariantArray& other) noexcept {
    std::swap(type_, other.type_);
    bounds_.swap(other.bounds_);
    std::swap(count_, other.count_);
    entries_.swap(other.entries_);
  }

  VariantType type_ = VariantType::kByte;
  std::vector<ArrayBound> bounds_;
  std::size_t count_ = 0;
  std::unique_ptr<std::byte[]> entries_;
};

}  // namespace tessaret
