#include "net/uid.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

TEST(Uid, IsEmptyWhenNew) {
  const UID uid;
  EXPECT_TRUE(uid.IsEmpty());
  EXPECT_EQ(uid.Size, 0u);
  EXPECT_EQ(uid.Text.size(), 65u);
}

TEST(Uid, KeepsSixtyFourBytesAndNoMore) {
  EXPECT_EQ(UID(std::string(64, '7')).View(), std::string(64, '7'));
  const UID cut(std::string(65, '7'));
  EXPECT_EQ(cut.View(), std::string(64, '7'));
  EXPECT_EQ(cut.Size, 64u);
}

TEST(Uid, HoldsNulsBehindAShorterText) {
  UID uid(std::string(64, '7'));
  uid.Set("1.2");
  EXPECT_EQ(uid.Size, 3u);
  EXPECT_EQ(std::count(uid.Text.begin() + 3, uid.Text.end(), '\0'), 62);
}

TEST(Uid, EqualsOneThatIsPaddedWithNul) {
  EXPECT_EQ(UID("1.2"), UID(std::string("1.2\0", 4)));
  EXPECT_FALSE(UID("1.2") == UID("1.2.3"));
  EXPECT_FALSE(UID("1.2") == UID(""));
}

}  // namespace
}  // namespace tessaret
