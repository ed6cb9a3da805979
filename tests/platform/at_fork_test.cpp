#include "platform/at_fork.h"

#include <string>

#include <gtest/gtest.h>

#include "support/child_process.h"

namespace tessaret {
namespace {

std::string order;

void BeforeFirst() noexcept { order += 'a'; }
void AfterFirst() noexcept { order += 'b'; }
void BeforeSecond() noexcept { order += 'c'; }
void AfterSecond() noexcept { order += 'd'; }

/// Forks with two pairs to be called; 0 where parent and child call both in their order.
int ForkBetweenCalls() {
  order.reserve(100);
  if (!CallAtFork(&BeforeFirst, &AfterFirst) || !CallAtFork(&BeforeSecond, &AfterSecond)) return 1;
  const int answer = test::RunInChild([] { return order == "cabd" ? 0 : 2; });
  if (answer != 0) return answer;
  return order == "cabd" ? 0 : 3;
}

TEST(AtFork, BothSidesAreCalledTheLatestAskedForOutermost) {
  // What is asked for stays for the process.
  EXPECT_EQ(test::RunInChild(&ForkBetweenCalls), 0);
}

}  // namespace
}  // namespace tessaret
