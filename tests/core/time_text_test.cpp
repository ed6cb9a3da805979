#include "core/time_text.h"

#include <gtest/gtest.h>

namespace tessaret {
namespace {

constexpr Calendar kMoment{2001, 2, 3, 14, 5, 6, 250};

std::optional<Date> Day(int year, int month, int day) {
  return ToDate({.year = year, .month = month, .day = day});
}

TEST(TimeText, ReadsADay) {
  EXPECT_EQ(DateIn("20010203"), Day(2001, 2, 3));
  EXPECT_EQ(DateIn("20010203-20010204"), Day(2001, 2, 3));
  EXPECT_EQ(DateIn("20010203140506"), Day(2001, 2, 3));
  EXPECT_EQ(DateIn("20000229"), Day(2000, 2, 29));
  EXPECT_EQ(DateIn(" 2001 2 3"), Day(2001, 2, 3));
  EXPECT_EQ(DateIn("01000101"), Day(100, 1, 1));
  EXPECT_EQ(DateIn("99991231"), Day(9999, 12, 31));
}

TEST(TimeText, ADayThatDoesNotExistIsNone) {
  for (const char* text : {"", " ", "2001", "200102", "2001-2-3", "20010229", "20011301",
                           "20010100", "00990101", "today", "-0010203"}) {
    EXPECT_EQ(DateIn(text), std::nullopt) << text;
  }
}

TEST(TimeText, ReadsADayWithATime) {
  EXPECT_EQ(DateTimeIn("20010203140506.250"), ToDate(kMoment));
  EXPECT_EQ(DateTimeIn("20010203140506.250000+0100"), ToDate(kMoment));
  EXPECT_EQ(DateTimeIn("20010203140506.5"), ToDate({2001, 2, 3, 14, 5, 6, 5}));
  EXPECT_EQ(DateTimeIn("20010203140506"), ToDate({2001, 2, 3, 14, 5, 6, 0}));
  EXPECT_EQ(DateTimeIn("20010203140506+0100"), ToDate({2001, 2, 3, 14, 5, 6, 0}));
  // Milliseconds stand behind a point only.
  EXPECT_EQ(DateTimeIn("20010203140506250"), ToDate({2001, 2, 3, 14, 5, 6, 0}));
  EXPECT_EQ(DateTimeIn("2001 2 3 14 5 6.250"), ToDate(kMoment));
  EXPECT_EQ(DateTimeIn("2001020314"), ToDate({2001, 2, 3, 14, 0, 0, 0}));
  EXPECT_EQ(DateTimeIn("20010203"), Day(2001, 2, 3));
  EXPECT_EQ(DateTimeIn("200102"), Day(2001, 2, 1));
  EXPECT_EQ(DateTimeIn("2001"), Day(2001, 1, 1));
  EXPECT_EQ(DateTimeIn("2001+0100"), Day(2001, 1, 1));
  EXPECT_EQ(DateTimeIn("200102-0500"), Day(2001, 2, 1));
  EXPECT_EQ(DateTimeIn("2001 +0100"), Day(2001, 1, 1));
  EXPECT_EQ(DateTimeIn("2001-2003"), Day(2001, 1, 1));
  EXPECT_EQ(DateTimeIn("2001-"), Day(2001, 1, 1));
}

TEST(TimeText, ADayWithATimeInAnotherFormIsNone) {
  // Its year alone would pass for its first moment, which is another day.
  for (const char* text :
       {"2001-02-03", "2001.02.03", "2001/02/03", "2001-02-03 14:05:06", "20010203 14:05:06",
        "20010203T140506", "2001-2", "2001+010", "2001-+003", "2001.", "200102.03", "20010203.5",
        "2001020314.5", "2001x"}) {
    EXPECT_EQ(DateTimeIn(text), std::nullopt) << text;
  }
}

TEST(TimeText, ATimeThatDoesNotExistIsNone) {
  for (const char* text :
       {"", "x", "20010203240000", "20010203006000", "20010203000060", "20011301", "0001"}) {
    EXPECT_EQ(DateTimeIn(text), std::nullopt) << text;
  }
}

TEST(TimeText, ReadsATimeForPeople) {
  EXPECT_EQ(TimeForPeople("0930"), "09:30:00");
  EXPECT_EQ(TimeForPeople("140506"), "14:05:06");
  EXPECT_EQ(TimeForPeople("140506.999999"), "14:05:06");
  EXPECT_EQ(TimeForPeople("09"), "09:00:00");
  EXPECT_EQ(TimeForPeople("9"), "09:00:00");
  EXPECT_EQ(TimeForPeople("09305"), "09:30:05");
  EXPECT_EQ(TimeForPeople("14:05:06.25"), "14:05:06");
  EXPECT_EQ(TimeForPeople("14:05"), "14:05:00");
  EXPECT_EQ(TimeForPeople("14::06"), "14:00:00");
  EXPECT_EQ(TimeForPeople("0930-1000"), "09:30:00");
  EXPECT_EQ(TimeForPeople("997799"), "99:77:99");
  for (const char* text : {"", " ", "noon", "-1"}) EXPECT_EQ(TimeForPeople(text), std::nullopt);
}

TEST(TimeText, Writes) {
  EXPECT_EQ(DicomDate(kMoment), "20010203");
  EXPECT_EQ(DicomDate({.year = 100, .month = 1, .day = 1}), "01000101");
  EXPECT_EQ(DicomDateTime(kMoment), "20010203140506.250000");
  EXPECT_EQ(DicomDateTime({2001, 2, 3, 4, 5, 6, 7}), "20010203040506.007000");
  EXPECT_EQ(DicomTime(kMoment), "140506.250");
  EXPECT_EQ(DicomTime({2001, 2, 3, 4, 5, 6, 7}), "040506.7");
}

TEST(TimeText, TakesATimeOfFourNumbers) {
  EXPECT_EQ(DicomTimeOf("14:05:06.250"), "140506.250");
  EXPECT_EQ(DicomTimeOf("9:3:0.0"), "090300.0");
  EXPECT_EQ(DicomTimeOf("9:3:0.007"), "090300.7");
  EXPECT_EQ(DicomTimeOf(" 9: 3:+0. 5 o'clock"), "090300.5");
  EXPECT_EQ(DicomTimeOf("99:99:99.1234567"), "999999.1234567");
  EXPECT_EQ(DicomTimeOf("-5:0:0.0"), "-050000.0");
}

TEST(TimeText, RefusesATimeOfFewerNumbers) {
  for (const char* text :
       {"", "14", "14:05", "14:05:06", "14:05:06.", "140506.250", "14 :05:06.0", "14:05:06,250",
        "14:05:06.99999999999", "a:b:c.d", "+-5:0:0.0", "+:5:6.0", "14:+:6.0"}) {
    EXPECT_EQ(DicomTimeOf(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace tessaret
