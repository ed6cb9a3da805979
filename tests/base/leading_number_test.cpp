#include "base/leading_number.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

TEST(LeadingLong, ReadsAsFarAsItCan) {
  EXPECT_EQ(LeadingLong("42"), 42);
  EXPECT_EQ(LeadingLong("  -7 "), -7);
  EXPECT_EQ(LeadingLong("\t+12abc"), 12);
  EXPECT_EQ(LeadingLong("3.9"), 3);
  EXPECT_EQ(LeadingLong("0007"), 7);
}

TEST(LeadingLong, GivesZeroWhereThereIsNoNumber) {
  for (const char* text : {"", "  ", "abc", "-", "+", "--1", "+-1", "- 1", ".5"}) {
    EXPECT_EQ(LeadingLong(text), 0) << text;
  }
}

TEST(LeadingLong, StaysWithin32Bits) {
  EXPECT_EQ(LeadingLong("2147483647"), 2147483647);
  EXPECT_EQ(LeadingLong("2147483648"), 2147483647);
  EXPECT_EQ(LeadingLong("-2147483648"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(LeadingLong("-2147483649"), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(LeadingLong(std::string(1000, '9')), 2147483647);
  EXPECT_EQ(LeadingLong("-" + std::string(1000, '9')), std::numeric_limits<std::int32_t>::min());
}

TEST(LeadingDouble, ReadsAsFarAsItCan) {
  EXPECT_EQ(LeadingDouble("1.5"), 1.5);
  EXPECT_EQ(LeadingDouble("  -12.5e3mm"), -12500.0);
  EXPECT_EQ(LeadingDouble("+.25"), 0.25);
  EXPECT_EQ(LeadingDouble("7."), 7.0);
  EXPECT_EQ(LeadingDouble("1E2"), 100.0);
  EXPECT_EQ(LeadingDouble("1e"), 1.0);
  EXPECT_EQ(LeadingDouble("1,5"), 1.0);
  EXPECT_EQ(LeadingDouble("0x10"), 0.0);
}

TEST(LeadingDouble, GivesZeroWhereThereIsNoNumber) {
  for (const char* text :
       {"", " ", ".", "-", "+-1", "-+1", "--1", "e5", "nan", "inf", "-inf", ","}) {
    const double value = LeadingDouble(text);
    EXPECT_EQ(value, 0.0) << text;
    EXPECT_FALSE(std::signbit(value)) << text;
  }
}

TEST(LeadingDouble, ANumberTooLargeIsInfiniteAndOneTooSmallIsZero) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(LeadingDouble("1e999999"), infinity);
  EXPECT_EQ(LeadingDouble("-1e999999"), -infinity);
  EXPECT_EQ(LeadingDouble("1e+99999999999999999999"), infinity);
  EXPECT_EQ(LeadingDouble(std::string(1000, '9')), infinity);
  EXPECT_EQ(LeadingDouble("0.001e400"), infinity);
  EXPECT_EQ(LeadingDouble("1e-999999"), 0.0);
  EXPECT_EQ(LeadingDouble("-1e-99999999999999999999"), 0.0);
  EXPECT_EQ(LeadingDouble("0." + std::string(1000, '0') + "1"), 0.0);
  EXPECT_EQ(LeadingDouble("1000e-400"), 0.0);
  EXPECT_EQ(LeadingDouble("0e999999"), 0.0);
  // A zero has no sign, so that it is shown without one.
  for (const char* text : {"-0", "-0.0", "-1e-999999"})
    EXPECT_FALSE(std::signbit(LeadingDouble(text))) << text;
}

}  // namespace
}  // namespace tessaret
