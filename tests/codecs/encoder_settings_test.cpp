#include "encoder_settings.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace tessaret::codecs {
namespace {

/// One environment variable for as long as this lives.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) { ::setenv(name, value, 1); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;
  ~Variable() { ::unsetenv(name_); }

 private:
  const char* name_;
};

TEST(EncoderSettings, WithoutVariablesTheDefaultsHold) {
  const EncoderSettings settings = SettingsOfEnvironment();
  EXPECT_EQ(settings.jpegQuality, 90u);
  EXPECT_EQ(settings.jpegLsNear, 2u);
  EXPECT_EQ(settings.jpeg2000Ratio, 10u);
}

TEST(EncoderSettings, VariablesSetThem) {
  const Variable quality("TESSARET_JPEG_QUALITY", "75");
  const Variable near("TESSARET_JPEGLS_NEAR", "0");
  const Variable ratio("TESSARET_JPEG2000_RATIO", "1000");
  const EncoderSettings settings = SettingsOfEnvironment();
  EXPECT_EQ(settings.jpegQuality, 75u);
  EXPECT_EQ(settings.jpegLsNear, 0u);
  EXPECT_EQ(settings.jpeg2000Ratio, 1000u);
}

TEST(EncoderSettings, WhatIsNoNumberOrOutsideOfTheRangeIsNotTaken) {
  for (const char* value : {"", "0", "101", "-1", "7x", " 7", "75.5", "99999999999999999999"}) {
    const Variable quality("TESSARET_JPEG_QUALITY", value);
    EXPECT_EQ(SettingsOfEnvironment().jpegQuality, 90u) << value;
  }
}

}  // namespace
}  // namespace tessaret::codecs
