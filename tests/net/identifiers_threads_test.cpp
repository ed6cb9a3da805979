#include <array>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "support/all_threads.h"

namespace tessaret {
namespace {

constexpr int kEach = 2000;

TEST(IdentifiersOfManyThreads, AreOddAndNeverTakenTwice) {
  std::array<std::vector<std::uint32_t>, test::kThreads> taken;
  test::OnAllThreads([&](int number) {
    auto& mine = taken[static_cast<std::size_t>(number)];
    for (int turn = 0; turn < kEach; ++turn) {
      mine.push_back(TakeOddIdentifier());
      if (turn % 3 == 0) TakeIdentifier();
    }
  });
  std::set<std::uint32_t> all;
  for (const auto& mine : taken) {
    for (std::size_t at = 0; at < mine.size(); ++at) {
      EXPECT_EQ(mine[at] % 2, 1u);
      if (at != 0) {
        EXPECT_GT(mine[at], mine[at - 1]);
      }
      all.insert(mine[at]);
    }
  }
  EXPECT_EQ(all.size(), std::size_t{kEach} * test::kThreads);
}

}  // namespace
}  // namespace tessaret
