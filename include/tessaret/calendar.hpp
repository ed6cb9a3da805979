/// Dates as year, month, day and time of day (proleptic Gregorian calendar).
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>

#include "tessaret/variant_array.hpp"

namespace tessaret {

struct Calendar {
  int year = 1899;  // 100 to 9999
  int month = 12;   // 1 to 12
  int day = 30;     // 1 to 31
  int hour = 0;     // 0 to 23
  int minute = 0;   // 0 to 59
  int second = 0;   // 0 to 59
  int millisecond = 0;
  friend bool operator==(const Calendar&, const Calendar&) = default;
};

namespace calendar {

inline constexpr int kFirstYear = 100;
inline constexpr int kLastYear = 9999;
inline constexpr double kMillisecondsADay = 86'400'000;

constexpr bool IsLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// 0 for a month that is none.
constexpr int DaysIn(int year, int month) {
  constexpr int kDays[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month < 1 || month > 12) return 0;
  return kDays[month] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

/// Days from 1899-12-30. Counted in years that begin with March, so that the leap day comes last.
constexpr std::int32_t DayNumber(int year, int month, int day) {
  const int marchYear = month > 2 ? year : year - 1;
  const int marchMonth = month > 2 ? month - 3 : month + 9;
  const int dayOfYear = (153 * marchMonth + 2) / 5 + day - 1;
  return 365 * marchYear + marchYear / 4 - marchYear / 100 + marchYear / 400 + dayOfYear - 693'899;
}

inline constexpr std::int32_t kFirstDay = DayNumber(kFirstYear, 1, 1);
inline constexpr std::int32_t kLastDay = DayNumber(kLastYear, 12, 31);
static_assert(DayNumber(1899, 12, 30) == 0 && kFirstDay == -657'434 && kLastDay == 2'958'465);

/// The date of a day number from kFirstDay to kLastDay, at midnight.
constexpr Calendar DateOf(std::int32_t dayNumber) {
  // 400 years have 146,097 days, always.
  const std::int32_t sinceYear0 = dayNumber + 693'899;
  const std::int32_t era = sinceYear0 / 146'097;
  const std::int32_t dayOfEra = sinceYear0 % 146'097;
  const std::int32_t yearOfEra =
      (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const std::int32_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int marchMonth = (5 * dayOfYear + 2) / 153;
  Calendar date;
  date.month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
  date.year = yearOfEra + era * 400 + (date.month <= 2 ? 1 : 0);
  date.day = dayOfYear - (153 * marchMonth + 2) / 5 + 1;
  return date;
}

}  // namespace calendar

/// Nothing for a date that does not exist, such as 30 February or 24:00, or lies outside the years 100 to 9999.
[[nodiscard]] inline std::optional<Date> ToDate(const Calendar& at) {
  const bool isDay = at.year >= calendar::kFirstYear && at.year <= calendar::kLastYear &&
                     at.day >= 1 && at.day <= calendar::DaysIn(at.year, at.month);
  const bool isTime = at.hour >= 0 && at.hour <= 23 && at.minute >= 0 && at.minute <= 59 &&
                      at.second >= 0 && at.second <= 59 && at.millisecond >= 0 &&
                      at.millisecond <= 999;
  if (!isDay || !isTime) return std::nullopt;
  const double day = calendar::DayNumber(at.year, at.month, at.day);
  const int milliseconds = ((at.hour * 60 + at.minute) * 60 + at.second) * 1000 + at.millisecond;
  const double fraction = milliseconds / calendar::kMillisecondsADay;
  return Date{day < 0 ? day - fraction : day + fraction};
}

/// To the nearest millisecond. Nothing outside the years 100 to 9999 and for what is no number.
[[nodiscard]] inline std::optional<Calendar> ToCalendar(Date date) {
  if (!(date.days > calendar::kFirstDay - 1.0 && date.days < calendar::kLastDay + 1.0))
    return std::nullopt;
  const double whole = std::trunc(date.days);
  double milliseconds = std::round(std::fabs(date.days - whole) * calendar::kMillisecondsADay);
  auto dayNumber = static_cast<std::int32_t>(whole);
  if (milliseconds >= calendar::kMillisecondsADay) {
    ++dayNumber;
    milliseconds = 0;
  }
  if (dayNumber > calendar::kLastDay) return std::nullopt;
  Calendar at = calendar::DateOf(dayNumber);
  const int rest = static_cast<int>(milliseconds);
  at.hour = rest / 3'600'000;
  at.minute = rest / 60'000 % 60;
  at.second = rest / 1'000 % 60;
  at.millisecond = rest % 1'000;
  return at;
}

}  // namespace tessaret
