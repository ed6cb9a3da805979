// Loads, stores and in-place swaps of 16 and 32 bit numbers in a stated byte order, from bytes of any alignment.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tessaret {

static_assert(std::endian::native == std::endian::little,
              "values are kept in host order and the host is taken to be little endian");

[[nodiscard]] inline std::uint16_t LoadLittle16(const std::uint8_t* bytes) {
  std::uint16_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

[[nodiscard]] inline std::uint32_t LoadLittle32(const std::uint8_t* bytes) {
  std::uint32_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

[[nodiscard]] inline std::uint16_t LoadBig16(const std::uint8_t* bytes) {
  return __builtin_bswap16(LoadLittle16(bytes));
}

[[nodiscard]] inline std::uint32_t LoadBig32(const std::uint8_t* bytes) {
  return __builtin_bswap32(LoadLittle32(bytes));
}

inline void StoreLittle16(std::uint8_t* bytes, std::uint16_t value) {
  std::memcpy(bytes, &value, sizeof value);
}

inline void StoreLittle32(std::uint8_t* bytes, std::uint32_t value) {
  std::memcpy(bytes, &value, sizeof value);
}

inline void StoreBig16(std::uint8_t* bytes, std::uint16_t value) {
  StoreLittle16(bytes, __builtin_bswap16(value));
}

inline void StoreBig32(std::uint8_t* bytes, std::uint32_t value) {
  StoreLittle32(bytes, __builtin_bswap32(value));
}

/// Reverses each whole 16-bit unit of `length` bytes in place. An odd last byte stays as it is.
void SwapBytes16(void* data, std::size_t length);

/// Reverses all four bytes of each whole 32-bit unit of `length` bytes in place. Up to three last bytes stay.
void SwapBytes32(void* data, std::size_t length);

}  // namespace tessaret
