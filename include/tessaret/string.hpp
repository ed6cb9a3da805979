/// The strings of the public interface: 16-bit characters with a length, which may be null.
///
/// Two narrow forms exist. UTF-8 is that of names, paths and programs. The narrow form proper has one byte a character and
/// carries the values of data elements, whose bytes have to go out and come back unchanged whatever their character set.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace tessaret {

/// A string that owns its characters. Copies are deep, moves are free. Any 16-bit units may be in it, also 0.
class String {
 public:
  /// Null, which is not the same as empty.
  String() noexcept = default;
  String(std::nullptr_t) noexcept {}

  /// From UTF-8. A null pointer gives a null string. A byte that is part of no character becomes the single unit
  /// 0xDC00 + byte, which Utf8() and Narrow() turn into that byte again: names of files need not be UTF-8.
  /// Throws std::bad_alloc, and so do all that copy.
  String(const char* utf8) {
    if (utf8 != nullptr) *this = FromUtf8(utf8);
  }
  String(std::string_view utf8) : String(FromUtf8(utf8)) {}
  String(const std::string& utf8) : String(std::string_view(utf8)) {}

  /// From 16-bit units; a null pointer gives a null string.
  String(const char16_t* units) {
    if (units != nullptr) Assign(std::u16string_view(units));
  }
  String(std::u16string_view units) { Assign(units); }
  String(const std::u16string& units) : String(std::u16string_view(units)) {}

  String(const String& other) {
    if (!other.IsNull()) Assign(other.View());
  }
  String(String&& other) noexcept : units_(std::exchange(other.units_, nullptr)) {}
  String& operator=(const String& other) {
    if (this != &other) *this = String(other);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    std::swap(units_, other.units_);
    return *this;
  }
  ~String() { Free(units_); }

  /// From the narrow form: each byte is one character.
  static String FromNarrow(std::string_view bytes) {
    String made;
    char16_t* to = made.Allocate(bytes.size());
    for (const char byte : bytes) *to++ = static_cast<unsigned char>(byte);
    return made;
  }
  static String FromUtf8(std::string_view utf8);

  [[nodiscard]] bool IsNull() const noexcept { return units_ == nullptr; }
  /// True for a null string too.
  [[nodiscard]] bool IsEmpty() const noexcept { return Length() == 0; }
  /// In 16-bit units; 0 for a null string.
  [[nodiscard]] std::size_t Length() const noexcept {
    return units_ == nullptr ? 0 : HeaderOf(units_)->length;
  }
  /// With a terminating 0 behind the last unit. Never null: a null string gives an empty one.
  [[nodiscard]] const char16_t* Units() const noexcept { return units_ == nullptr ? u"" : units_; }
  [[nodiscard]] std::u16string_view View() const noexcept { return {Units(), Length()}; }

  /// One byte a character: '?' for what lies above 255.
  [[nodiscard]] std::string Narrow() const;
  /// A unit that belongs to no pair becomes U+FFFD.
  [[nodiscard]] std::string Utf8() const;

  /// Null and empty compare equal, and strings by their units.
  friend bool operator==(const String& a, const String& b) noexcept { return a.View() == b.View(); }
  friend std::strong_ordering operator<=>(const String& a, const String& b) noexcept {
    return a.View() <=> b.View();
  }

 private:
  friend class Variant;

  /// Stands before the units, in one piece of memory with them.
  struct Header {
    std::size_t length;
  };

  static Header* HeaderOf(const char16_t* units) noexcept {
    return reinterpret_cast<Header*>(const_cast<char16_t*>(units)) - 1;
  }
  static void Free(char16_t* units) noexcept {
    if (units != nullptr) ::operator delete(HeaderOf(units));
  }

  /// Room for `length` units, with the 0 behind them set. Requires: this is null.
  char16_t* Allocate(std::size_t length) {
    if (length > (std::numeric_limits<std::size_t>::max() - sizeof(Header)) / sizeof(char16_t) - 1)
      throw std::bad_alloc();
    void* block = ::operator new(sizeof(Header) + (length + 1) * sizeof(char16_t));
    units_ = reinterpret_cast<char16_t*>(::new (block) Header{length} + 1);
    units_[length] = 0;
    return units_;
  }
  void Assign(std::u16string_view units) {
    char16_t* to = Allocate(units.size());
    if (!units.empty()) std::memcpy(to, units.data(), units.size() * sizeof(char16_t));
  }

  char16_t* units_ = nullptr;
};

}  // namespace tessaret

#include "tessaret/string_coding.hpp"
