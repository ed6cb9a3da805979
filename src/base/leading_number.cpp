#include "base/leading_number.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "base/text.h"

namespace tessaret {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

void SkipSpace(std::string_view& text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
}

/// True for a minus. Takes a sign of either kind.
bool TakeSign(std::string_view& text) {
  if (!text.starts_with('-') && !text.starts_with('+')) return false;
  const bool isMinus = text.front() == '-';
  text.remove_prefix(1);
  return isMinus;
}

/// Whether a decimal number of no double is too large rather than too small: where its first digit that counts stands.
/// Requires: `number` is digits with a point and an exponent, as from_chars took them.
bool IsTooLarge(std::string_view number) {
  const std::size_t exponentAt = std::min(number.find_first_of("eE"), number.size());
  const std::string_view digits = number.substr(0, exponentAt);
  const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
  const std::size_t first = digits.find_first_of("123456789");
  const std::int64_t place =
      first == std::string_view::npos ? 0 : point - static_cast<std::int64_t>(first);
  const std::string_view exponent = number.substr(std::min(exponentAt + 1, number.size()));
  return place + LeadingLong(exponent) > 0;
}

}  // namespace

std::int32_t LeadingLong(std::string_view text) {
  constexpr std::int64_t kLeast = std::numeric_limits<std::int32_t>::min();
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  SkipSpace(text);
  const std::int64_t sign = TakeSign(text) ? -1 : 1;
  std::int64_t value = 0;
  for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
    value = std::clamp(value * 10 + sign * (text.front() - '0'), kLeast, kMost);
  }
  return static_cast<std::int32_t>(value);
}

double LeadingDouble(std::string_view text) {
  SkipSpace(text);
  const double sign = TakeSign(text) ? -1 : 1;
  if (text.empty() || !(IsDigit(text.front()) || text.front() == '.')) return 0;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error == std::errc::result_out_of_range) {
    const std::string_view number(text.data(), static_cast<std::size_t>(end - text.data()));
    value = IsTooLarge(number) ? std::numeric_limits<double>::infinity() : 0;
  }
  return value == 0 ? 0 : sign * value;
}

}  // namespace tessaret
