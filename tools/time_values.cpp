#include "time_values.h"

#include <algorithm>
#include <array>

#include "tessaret/calendar.hpp"

namespace tessaret::tool {
namespace {

bool IsDigits(std::string_view text) {
  return text.find_first_not_of("0123456789") == std::string_view::npos;
}

int Number(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) number = 10 * number + (digit - '0');
  return number;
}

std::string Without(std::string_view text, char separator) {
  std::string rest;
  for (const char c : text) {
    if (c != separator) rest += c;
  }
  return rest;
}

/// Two digits that are `most` at most; nothing otherwise.
bool IsUpTo(std::string_view digits, int most) {
  return digits.size() == 2 && IsDigits(digits) && Number(digits) <= most;
}

/// Year, month and day as far as they are there.
bool IsDate(std::string_view digits) {
  if (!IsDigits(digits) || digits.size() < 4 || digits.size() > 8 || digits.size() % 2 != 0)
    return false;
  const int year = Number(digits.substr(0, 4));
  const int month = digits.size() < 6 ? 1 : Number(digits.substr(4, 2));
  const int day = digits.size() < 8 ? 1 : Number(digits.substr(6, 2));
  return year > 0 && month > 0 && day > 0 && day <= calendar::DaysIn(year, month);
}

/// Hours and what is known behind them.
bool IsTime(std::string_view text) {
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view whole = text.substr(0, point);
  const std::string_view fraction = text.substr(point);
  constexpr std::array<int, 3> kMost = {23, 59, 60};
  if (whole.empty() || whole.size() > 6 || whole.size() % 2 != 0) return false;
  for (std::size_t at = 0; at < whole.size(); at += 2) {
    if (!IsUpTo(whole.substr(at, 2), kMost[at / 2])) return false;
  }
  if (fraction.empty()) return true;
  return whole.size() == 6 && fraction.size() >= 2 && fraction.size() <= 7 &&
         IsDigits(fraction.substr(1));
}

bool HasSeparatorsAt(std::string_view text, char separator, std::size_t first, std::size_t width) {
  if (text.ends_with(separator)) return false;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool wanted = at >= first && (at - first) % width == 0;
    if ((text[at] == separator) != wanted) return false;
  }
  return true;
}

/// The digits of a date with or without separators; empty for what is none.
std::string DateDigits(std::string_view text) {
  for (const char separator : {'-', '.'}) {
    if (text.size() > 4 && HasSeparatorsAt(text, separator, 4, 3)) return Without(text, separator);
  }
  return std::string(text);
}

std::string TimeDigits(std::string_view text) {
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view whole = text.substr(0, point);
  if (!HasSeparatorsAt(whole, ':', 2, 3)) return std::string(text);
  return Without(whole, ':') + std::string(text.substr(point));
}

/// Minutes that places on earth are ahead of or behind universal time at most (DICOM PS3.5, 6.2).
constexpr int kMostAhead = 14 * 60;
constexpr int kMostBehind = 12 * 60;

/// "+0100" is one, "-0000" is none.
bool IsOffset(char sign, std::string_view digits) {
  if (digits.size() != 4 || !IsUpTo(digits.substr(0, 2), 14) || !IsUpTo(digits.substr(2), 59))
    return false;
  const int minutes = 60 * Number(digits.substr(0, 2)) + Number(digits.substr(2));
  return sign == '+' ? minutes <= kMostAhead : minutes > 0 && minutes <= kMostBehind;
}

/// Takes "+0100", or "-05:00", both with or without a blank before, off the end of `text`; empty where there is none.
std::string TakeOffset(std::string_view& text) {
  for (const std::size_t size : {std::size_t{5}, std::size_t{6}}) {
    if (text.size() <= size) break;
    const std::string_view end = text.substr(text.size() - size);
    if (end[0] != '+' && end[0] != '-') continue;
    if (size == 6 && end[3] != ':') continue;
    const std::string digits = Without(end.substr(1), ':');
    if (!IsOffset(end[0], digits)) continue;
    text.remove_suffix(size);
    if (text.ends_with(' ')) text.remove_suffix(1);
    return end[0] + digits;
  }
  return {};
}

}  // namespace

std::string DateValue(std::string_view text) {
  std::string digits = DateDigits(text);
  return digits.size() == 8 && IsDate(digits) ? digits : std::string();
}

std::string TimeValue(std::string_view text) {
  std::string digits = TimeDigits(text);
  return IsTime(digits) ? digits : std::string();
}

std::string DateTimeValue(std::string_view text) {
  // A month and a day with a dash before them are no offset.
  const std::string offset = DateValue(text).empty() ? TakeOffset(text) : std::string();
  std::string date;
  std::string time;
  if (const std::size_t gap = text.find_first_of(" T"); gap != std::string_view::npos) {
    date = DateDigits(text.substr(0, gap));
    time = TimeDigits(text.substr(gap + 1));
    if (time.empty()) return {};
  } else if (text.size() > 8 && IsDigits(text.substr(0, 8))) {
    date = text.substr(0, 8);
    time = text.substr(8);
  } else {
    date = DateDigits(text);
  }
  const bool isWhole = IsDate(date) && (time.empty() || (date.size() == 8 && IsTime(time)));
  return isWhole ? date + time + offset : std::string();
}

}  // namespace tessaret::tool
