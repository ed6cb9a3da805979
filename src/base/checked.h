// Arithmetic on numbers from outside: every size that a file, a peer or a caller names goes through here
// before anything is allocated, skipped or indexed with it.
#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace tessaret {

/// a + b, or nothing when the sum does not fit.
template <std::integral T>
[[nodiscard]] constexpr std::optional<T> CheckedAdd(T a, T b) {
  T sum{};
  if (__builtin_add_overflow(a, b, &sum)) return std::nullopt;
  return sum;
}

/// a * b, or nothing when the product does not fit.
template <std::integral T>
[[nodiscard]] constexpr std::optional<T> CheckedMultiply(T a, T b) {
  T product{};
  if (__builtin_mul_overflow(a, b, &product)) return std::nullopt;
  return product;
}

/// The product of all factors, or nothing when it does not fit. No factors give 1.
template <std::integral T, std::same_as<T>... More>
[[nodiscard]] constexpr std::optional<T> CheckedProduct(T first, More... more) {
  std::optional<T> product = first;
  ((product = product ? CheckedMultiply(*product, more) : product), ...);
  return product;
}

/// `value` in the type To, or the nearest end of its range.
template <std::integral To, std::integral From>
[[nodiscard]] constexpr To SaturatingCast(From value) {
  if (std::cmp_less(value, std::numeric_limits<To>::min())) return std::numeric_limits<To>::min();
  if (std::cmp_greater(value, std::numeric_limits<To>::max()))
    return std::numeric_limits<To>::max();
  return static_cast<To>(value);
}

/// `value` cut towards zero, or the nearest end of the range of To; NaN gives 0.
/// The language leaves the plain conversion undefined outside the range.
template <std::integral To>
[[nodiscard]] inline To SaturatingFromFloat(double value) {
  if (std::isnan(value)) return 0;
  // Both limits are compared as powers of two, which a double holds exactly.
  constexpr To kHalf = std::numeric_limits<To>::max() / 2 + 1;
  constexpr double kUpper = static_cast<double>(kHalf) * 2.0;
  constexpr double kLower = static_cast<double>(std::numeric_limits<To>::min());
  if (value >= kUpper) return std::numeric_limits<To>::max();
  if (value <= kLower) return std::numeric_limits<To>::min();
  return static_cast<To>(value);
}

}  // namespace tessaret
