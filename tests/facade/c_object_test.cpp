// The complete classes as a host in C meets them.
#include <cstdlib>

#include <gtest/gtest.h>

#include "facade/c_object_host.h"
#include "support/temp_folder.h"
#include "tessaret/library.hpp"

namespace tessaret::test {
namespace {

TEST(CHost, CallsEveryMemberOfADataSet) {
  const TempFolder folder;
  EXPECT_EQ(WalkObject(folder.Path().c_str()), 0) << tessaret_last_error_text();
  EXPECT_TRUE(CanUnload());
}

TEST(CHost, CallsEveryMemberOfTheWayToTheCore) {
  EXPECT_EQ(WalkManager(), 0) << tessaret_last_error_text();
  EXPECT_TRUE(CanUnload());
}

TEST(CHost, CallsEveryMemberOfTheDictionary) {
  EXPECT_EQ(WalkDictionary(), 0) << tessaret_last_error_text();
  EXPECT_TRUE(CanUnload());
}

TEST(CHost, CallsEveryMemberOfTheOptions) {
  const TempFolder folder;
  ::setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
  EXPECT_EQ(WalkOptions(), 0) << tessaret_last_error_text();
  ::unsetenv("XDG_CONFIG_HOME");
  EXPECT_TRUE(CanUnload());
}

}  // namespace
}  // namespace tessaret::test
