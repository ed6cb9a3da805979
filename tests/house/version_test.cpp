#include "tessaret/version.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::string WithDots(int major, int minor, int patch) {
  return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

TEST(Version, TheLibrarySaysTheNumbersOfItsHeader) {
  EXPECT_EQ(tessaret_version(),
            WithDots(TESSARET_VERSION_MAJOR, TESSARET_VERSION_MINOR, TESSARET_VERSION_PATCH));
}

TEST(Version, TextAndNumberFollowFromTheParts) {
  EXPECT_EQ(TESSARET_VERSION_STRING,
            WithDots(TESSARET_VERSION_MAJOR, TESSARET_VERSION_MINOR, TESSARET_VERSION_PATCH));
  EXPECT_EQ(TESSARET_VERSION_NUMBER,
            TESSARET_VERSION_MAJOR * 10000 + TESSARET_VERSION_MINOR * 100 + TESSARET_VERSION_PATCH);
}

}  // namespace
