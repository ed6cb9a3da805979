// Dates as days and as years, months and days.
#include "tessaret/calendar.hpp"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

double Days(const Calendar& at) {
  const auto date = ToDate(at);
  EXPECT_TRUE(date.has_value());
  return date ? date->days : std::nan("");
}

TEST(Calendar, CountsDaysFromTheThirtiethOfDecember1899) {
  EXPECT_EQ(Days({1899, 12, 30}), 0);
  EXPECT_EQ(Days({1899, 12, 31}), 1);
  EXPECT_EQ(Days({1900, 1, 1}), 2);
  EXPECT_EQ(Days({1899, 12, 29}), -1);
  // 1970-01-01 lies 25,569 days on: 70 years of 365 days, 17 leap days of 1904 to 1968, and the 2 days to 1900-01-01.
  EXPECT_EQ(Days({1970, 1, 1}), 70 * 365 + 17 + 2);
  // 31 further years with 8 leap days, January, and two days of February.
  EXPECT_EQ(Days({2001, 2, 3}), 25569 + 31 * 365 + 8 + 31 + 2);
}

TEST(Calendar, EveryDayOfTheCalendarComesBack) {
  Calendar at{calendar::kFirstYear, 1, 1};
  for (std::int32_t day = calendar::kFirstDay; day <= calendar::kLastDay; ++day) {
    ASSERT_EQ(calendar::DateOf(day), at);
    ASSERT_EQ(calendar::DayNumber(at.year, at.month, at.day), day);
    if (++at.day <= calendar::DaysIn(at.year, at.month)) continue;
    at.day = 1;
    if (++at.month <= 12) continue;
    at.month = 1;
    ++at.year;
  }
  EXPECT_EQ(at, (Calendar{calendar::kLastYear + 1, 1, 1}));
}

TEST(Calendar, ATimeOfDayIsAFractionThatCountsForwardsBefore1899Too) {
  EXPECT_EQ(Days({2001, 2, 3, 6}), 36925.25);
  EXPECT_EQ(Days({1899, 12, 29, 6}), -1.25);
  EXPECT_EQ(ToCalendar({-1.25}), (Calendar{1899, 12, 29, 6}));
  EXPECT_EQ(ToCalendar({-0.25}), (Calendar{1899, 12, 30, 6}));
  EXPECT_EQ(ToCalendar({0.75}), (Calendar{1899, 12, 30, 18}));
}

TEST(Calendar, EveryMillisecondOfADayComesBackAtBothEndsOfTheCalendar) {
  for (const int year : {calendar::kFirstYear, 1899, 2001, calendar::kLastYear}) {
    for (int at = 0; at < 86'400'000; at += 9'973) {
      const Calendar calendar{year,      12, 31, at / 3'600'000, at / 60'000 % 60, at / 1'000 % 60,
                              at % 1'000};
      ASSERT_EQ(ToCalendar({Days(calendar)}), calendar);
    }
  }
}

TEST(Calendar, AFractionIsRoundedToTheNearestMillisecondIntoTheNextDayToo) {
  EXPECT_EQ(ToCalendar({1 + 0.4 / 86'400'000}), (Calendar{1899, 12, 31}));
  EXPECT_EQ(ToCalendar({1 + 0.6 / 86'400'000}), (Calendar{1899, 12, 31, 0, 0, 0, 1}));
  EXPECT_EQ(ToCalendar({2 - 0.4 / 86'400'000}), (Calendar{1900, 1, 1}));
}

TEST(Calendar, KnowsNoDayThatDoesNotExist) {
  for (const Calendar& at :
       {Calendar{2001, 2, 29}, Calendar{1900, 2, 29}, Calendar{2001, 4, 31}, Calendar{2001, 0, 1},
        Calendar{2001, 13, 1}, Calendar{2001, 1, 0}, Calendar{2001, 1, 32}, Calendar{99, 12, 31},
        Calendar{10000, 1, 1}, Calendar{2001, 1, 1, 24}, Calendar{2001, 1, 1, -1},
        Calendar{2001, 1, 1, 0, 60}, Calendar{2001, 1, 1, 0, -1}, Calendar{2001, 1, 1, 0, 0, 60},
        Calendar{2001, 1, 1, 0, 0, -1}, Calendar{2001, 1, 1, 0, 0, 0, 1000},
        Calendar{2001, 1, 1, 0, 0, 0, -1}}) {
    EXPECT_EQ(ToDate(at), std::nullopt);
  }
  EXPECT_TRUE(ToDate({2000, 2, 29}).has_value());
  EXPECT_TRUE(ToDate({1904, 2, 29}).has_value());
}

TEST(Calendar, EndsWithTheYears100And9999) {
  EXPECT_EQ(ToCalendar({-657434.0}), (Calendar{100, 1, 1}));
  EXPECT_EQ(ToCalendar({-657434.5}), (Calendar{100, 1, 1, 12}));
  EXPECT_EQ(ToCalendar({-657435.0}), std::nullopt);
  EXPECT_EQ(ToCalendar({2958465.5}), (Calendar{9999, 12, 31, 12}));
  EXPECT_EQ(ToCalendar({2958466.0}), std::nullopt);
  EXPECT_EQ(ToCalendar({2958466.0 - 0.4 / 86'400'000}), std::nullopt);
  EXPECT_EQ(ToCalendar({std::nan("")}), std::nullopt);
  EXPECT_EQ(ToCalendar({std::numeric_limits<double>::infinity()}), std::nullopt);
  EXPECT_EQ(ToCalendar({-std::numeric_limits<double>::infinity()}), std::nullopt);
}

}  // namespace
}  // namespace tessaret
