// A view of bytes from outside that never reads past its end: each read asks for room first and says whether it
// got it. Sub-ranges are values of their own. The bytes belong to the caller and must outlive the reader.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "base/byte_order.h"

namespace tessaret {

class BoundedReader {
 public:
  BoundedReader() = default;
  BoundedReader(const void* bytes, std::uint64_t size)
      : at_(static_cast<const std::uint8_t*>(bytes)), left_(size) {}

  [[nodiscard]] std::uint64_t Left() const { return left_; }
  [[nodiscard]] bool Need(std::uint64_t count) const { return count <= left_; }

  /// The byte to be read next. Requires: Left() > 0.
  [[nodiscard]] const std::uint8_t* Here() const { return at_; }

  /// Steps over `count` bytes; false, and nothing moves, when fewer are left.
  [[nodiscard]] bool Skip(std::uint64_t count) {
    if (!Need(count)) return false;
    at_ += count;
    left_ -= count;
    return true;
  }

  /// Copies `count` bytes out; false, and nothing moves, when fewer are left.
  [[nodiscard]] bool Copy(void* to, std::uint64_t count) {
    if (!Need(count)) return false;
    if (count != 0) std::memcpy(to, at_, count);
    return Skip(count);
  }

  [[nodiscard]] std::optional<std::uint8_t> U8() {
    if (!Need(1)) return std::nullopt;
    const std::uint8_t value = *at_;
    Advance(1);
    return value;
  }

  [[nodiscard]] std::optional<std::uint16_t> Little16() {
    if (!Need(2)) return std::nullopt;
    const std::uint16_t value = LoadLittle16(at_);
    Advance(2);
    return value;
  }

  [[nodiscard]] std::optional<std::uint32_t> Little32() {
    if (!Need(4)) return std::nullopt;
    const std::uint32_t value = LoadLittle32(at_);
    Advance(4);
    return value;
  }

  /// The next `count` bytes as a reader of their own, stepping over them here; nothing when fewer are left.
  [[nodiscard]] std::optional<BoundedReader> Sub(std::uint64_t count) {
    if (!Need(count)) return std::nullopt;
    const BoundedReader part(at_, count);
    Advance(count);
    return part;
  }

  /// The text up to the next NUL, stepping over both; nothing when no NUL is left.
  [[nodiscard]] std::optional<std::string_view> NulText() {
    const void* end = left_ == 0 ? nullptr : std::memchr(at_, 0, left_);
    if (end == nullptr) return std::nullopt;
    const auto length = static_cast<std::uint64_t>(static_cast<const std::uint8_t*>(end) - at_);
    const std::string_view text(reinterpret_cast<const char*>(at_), length);
    Advance(length + 1);
    return text;
  }

 private:
  void Advance(std::uint64_t count) {
    at_ += count;
    left_ -= count;
  }

  const std::uint8_t* at_ = nullptr;
  std::uint64_t left_ = 0;
};

}  // namespace tessaret
