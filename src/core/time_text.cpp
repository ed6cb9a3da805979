#include "core/time_text.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "base/text.h"

namespace tessaret {
namespace {

bool StartsWithDigit(std::string_view text) {
  return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

void SkipSpace(std::string_view& text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
}

bool TakeChar(std::string_view& text, char c) {
  if (!text.starts_with(c)) return false;
  text.remove_prefix(1);
  return true;
}

/// Takes a field of up to `most` digits, behind white space, into `field`. False, with `field` as it was, where there is none.
bool TakeField(std::string_view& text, int most, int& field) {
  SkipSpace(text);
  if (!StartsWithDigit(text)) return false;
  field = 0;
  for (; most > 0 && StartsWithDigit(text); --most, text.remove_prefix(1)) {
    field = field * 10 + (text.front() - '0');
  }
  return true;
}

/// Takes a whole number with or without a sign, behind white space. False where there is none of 32 bits.
bool TakeNumber(std::string_view& text, int& number) {
  SkipSpace(text);
  if (TakeChar(text, '+') && !StartsWithDigit(text)) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

/// Whether a date with a time may leave its last fields away before `rest`: at its end, before a zone such as +0100 and before
/// the other end of a range. Anything else there is a field in a form that is not known.
bool MayEndBefore(std::string_view rest) {
  SkipSpace(rest);
  if (rest.empty()) return true;
  if (!TakeChar(rest, '+') && !TakeChar(rest, '-')) return false;
  // A zone has 4 digits, and so has a year.
  return rest.empty() || std::min(rest.find_first_not_of("0123456789"), rest.size()) >= 4;
}

}  // namespace

std::optional<Date> DateIn(std::string_view text) {
  Calendar at;
  if (!TakeField(text, 4, at.year) || !TakeField(text, 2, at.month) || !TakeField(text, 2, at.day))
    return std::nullopt;
  return ToDate(at);
}

std::optional<Date> DateTimeIn(std::string_view text) {
  Calendar at{.month = 1, .day = 1};
  if (!TakeField(text, 4, at.year)) return std::nullopt;
  const bool isWhole = TakeField(text, 2, at.month) && TakeField(text, 2, at.day) &&
                       TakeField(text, 2, at.hour) && TakeField(text, 2, at.minute) &&
                       TakeField(text, 2, at.second);
  if (!isWhole && !MayEndBefore(text)) return std::nullopt;
  if (isWhole && TakeChar(text, '.')) TakeField(text, 3, at.millisecond);
  return ToDate(at);
}

std::optional<std::string> TimeForPeople(std::string_view text) {
  int hour = 0;
  int minute = 0;
  int second = 0;
  if (!TakeField(text, 2, hour)) return std::nullopt;
  // Old times have colons between their fields.
  TakeChar(text, ':');
  if (TakeField(text, 2, minute)) {
    TakeChar(text, ':');
    TakeField(text, 2, second);
  }
  return Format("%2.2d:%2.2d:%2.2d", hour, minute, second);
}

std::string DicomDate(const Calendar& at) {
  return Format("%4.4d%2.2d%2.2d", at.year, at.month, at.day);
}

std::string DicomDateTime(const Calendar& at) {
  return Format("%4.4d%2.2d%2.2d%2.2d%2.2d%2.2d.%3.3d000", at.year, at.month, at.day, at.hour,
                at.minute, at.second, at.millisecond);
}

std::string DicomTime(const Calendar& at) {
  return Format("%2.2d%2.2d%2.2d.%d", at.hour, at.minute, at.second, at.millisecond);
}

std::optional<std::string> DicomTimeOf(std::string_view text) {
  Calendar at;
  if (!TakeNumber(text, at.hour) || !TakeChar(text, ':') || !TakeNumber(text, at.minute) ||
      !TakeChar(text, ':') || !TakeNumber(text, at.second) || !TakeChar(text, '.') ||
      !TakeNumber(text, at.millisecond))
    return std::nullopt;
  return DicomTime(at);
}

}  // namespace tessaret
