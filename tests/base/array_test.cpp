#include "base/array.h"

#include <cstdint>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"

namespace tessaret {
namespace {

Array<int>& Fill(Array<int>& list, int count) {
  for (int value = 0; value < count; ++value) list.Add(value);
  return list;
}

/// The values forwards, after a check that the links backwards say the same.
template <class T>
std::vector<T> Values(const Array<T>& list) {
  std::vector<T> forwards;
  for (const auto* node = list.First; node != nullptr; node = node->next) {
    forwards.push_back(node->value);
  }
  std::vector<T> backwards;
  for (const auto* node = list.Last; node != nullptr; node = node->previous) {
    backwards.insert(backwards.begin(), node->value);
  }
  EXPECT_EQ(forwards, backwards);
  EXPECT_EQ(forwards.size(), list.ListLength);
  return forwards;
}

TEST(Array, StartsEmptyWithItsFieldsAtTheirFirstValues) {
  const Array<int> list;
  EXPECT_EQ(list.First, nullptr);
  EXPECT_EQ(list.Last, nullptr);
  EXPECT_EQ(list.LastAccess, nullptr);
  EXPECT_EQ(list.LastAccessNumber, 0u);
  EXPECT_EQ(list.ListLength, 0u);
  EXPECT_EQ(list.ClearType, 1u);
}

TEST(Array, AddAppendsAtTheTail) {
  Array<int> list;
  list.Add(3);
  list.Add(1);
  list.Add(2);
  EXPECT_EQ(Values(list), (std::vector{3, 1, 2}));
  EXPECT_EQ(list.First->value, 3);
  EXPECT_EQ(list.Last->value, 2);
}

TEST(Array, GetFindsEveryIndexInAnyOrder) {
  Array<int> list;
  Fill(list, 100);
  std::mt19937 random(7);
  for (int round = 0; round < 1000; ++round) {
    const auto index = static_cast<std::uint32_t>(random() % 100);
    ASSERT_EQ(list.Get(index)->value, static_cast<int>(index));
    ASSERT_EQ(list.LastAccessNumber, index);
    ASSERT_EQ(list.LastAccess->value, static_cast<int>(index));
  }
}

TEST(Array, GetAtOrBeyondTheLengthGivesNoNodeAndKeepsTheLastAccess) {
  Array<int> list;
  EXPECT_EQ(list.Get(0), nullptr);
  Fill(list, 3);
  EXPECT_EQ(list.Get(1)->value, 1);
  EXPECT_EQ(list.Get(3), nullptr);
  EXPECT_EQ(list.Get(0xFFFFFFFF), nullptr);
  EXPECT_EQ(list.LastAccessNumber, 1u);
  EXPECT_EQ(list.Get(2)->value, 2);
}

TEST(Array, GetOfTheNextIndexStepsFromTheLastAccess) {
  Array<int> list;
  Fill(list, 10);
  ASSERT_EQ(list.Get(4)->value, 4);
  // A remembered node at another place proves that the step starts there and not at an end.
  list.LastAccess = list.First;
  EXPECT_EQ(list.Get(5)->value, 1);
}

TEST(Array, GetOfAnyOtherIndexWalksFromTheNearerEnd) {
  // Each end is made to show to the middle of five nodes, so that the value found tells where the walk began.
  Array<int> list;
  Fill(list, 5);
  auto* const first = list.First;
  auto* const last = list.Last;
  auto* const middle = first->next->next;
  const auto walkedTo = [&](std::uint32_t index, Array<int>::Node* from, Array<int>::Node* to) {
    list.LastAccess = nullptr;
    list.First = from;
    list.Last = to;
    const int value = list.Get(index)->value;
    list.First = first;
    list.Last = last;
    return value;
  };
  // Half of five is two: 0 and 1 are reached from the start, one step a place.
  EXPECT_EQ(walkedTo(0, middle, last), 2);
  EXPECT_EQ(walkedTo(1, middle, last), 3);
  EXPECT_EQ(walkedTo(1, first, middle), 1);
  // 2, 3 and 4 from the end: four less the index in steps back.
  EXPECT_EQ(walkedTo(4, first, middle), 2);
  EXPECT_EQ(walkedTo(3, first, middle), 1);
  EXPECT_EQ(walkedTo(2, first, middle), 0);
  EXPECT_EQ(walkedTo(2, middle, last), 2);
}

TEST(Array, AForwardScanOfALongListIsLinear) {
  // A walk from an end for each index would be 5 * 10^9 steps.
  Array<int> list;
  Fill(list, 200000);
  std::int64_t sum = 0;
  for (std::uint32_t index = 0; index < list.ListLength; ++index) sum += list.Get(index)->value;
  EXPECT_EQ(sum, 199999ll * 200000 / 2);
}

TEST(Array, RemoveAtUnlinksAtBothEndsAndInTheMiddle) {
  Array<int> list;
  Fill(list, 5);
  EXPECT_TRUE(list.RemoveAt(2));
  EXPECT_EQ(Values(list), (std::vector{0, 1, 3, 4}));
  EXPECT_TRUE(list.RemoveAt(0));
  EXPECT_EQ(Values(list), (std::vector{1, 3, 4}));
  EXPECT_TRUE(list.RemoveAt(2));
  EXPECT_EQ(Values(list), (std::vector{1, 3}));
  EXPECT_FALSE(list.RemoveAt(2));
  EXPECT_TRUE(list.RemoveAt(0));
  EXPECT_TRUE(list.RemoveAt(0));
  EXPECT_EQ(Values(list), std::vector<int>{});
  EXPECT_FALSE(list.RemoveAt(0));
  list.Add(9);
  EXPECT_EQ(Values(list), std::vector{9});
}

TEST(Array, RemoveAtForgetsTheLastAccess) {
  Array<int> list;
  Fill(list, 4);
  ASSERT_EQ(list.Get(2)->value, 2);
  list.RemoveAt(0);
  EXPECT_EQ(list.LastAccess, nullptr);
  EXPECT_EQ(list.LastAccessNumber, 0u);
  EXPECT_EQ(list.Get(1)->value, 2);
}

TEST(Array, RemoveAtLeavesWhatAStoredPointerPointsTo) {
  int pointee = 5;
  Array<int*> list;
  list.Add(&pointee);
  list.RemoveAt(0);
  EXPECT_EQ(pointee, 5);
}

TEST(Array, NodesDestroyTheValuesThatTheyHold) {
  const auto value = std::make_shared<int>(1);
  {
    Array<std::shared_ptr<int>> list;
    list.Add(value);
    list.Add(value);
    EXPECT_EQ(value.use_count(), 3);
    list.RemoveAt(0);
    EXPECT_EQ(value.use_count(), 2);
  }
  EXPECT_EQ(value.use_count(), 1);
}

TEST(Array, ClearFreesAllNodesAndTheListCanBeUsedAgain) {
  Array<int> list;
  Fill(list, 3);
  list.Get(1);
  list.Clear();
  EXPECT_EQ(Values(list), std::vector<int>{});
  EXPECT_EQ(list.LastAccess, nullptr);
  Fill(list, 2);
  EXPECT_EQ(Values(list), (std::vector{0, 1}));
}

TEST(Array, SpliceMovesAllNodesInOrderAndEmptiesTheOther) {
  Array<int> left;
  Array<int> right;
  Fill(left, 2);
  Fill(right, 3);
  right.Get(1);
  left.Splice(right);
  EXPECT_EQ(Values(left), (std::vector{0, 1, 0, 1, 2}));
  EXPECT_EQ(Values(right), std::vector<int>{});
  EXPECT_EQ(right.LastAccess, nullptr);
  right.Add(8);
  EXPECT_EQ(Values(right), std::vector{8});
  EXPECT_EQ(left.Get(4)->value, 2);
}

TEST(Array, SpliceFrontMovesAllNodesInOrderBeforeTheFirst) {
  Array<int> left;
  Array<int> right;
  Fill(left, 2);
  Fill(right, 3);
  left.Get(1);
  right.Get(1);
  left.SpliceFront(right);
  EXPECT_EQ(Values(left), (std::vector{0, 1, 2, 0, 1}));
  EXPECT_EQ(Values(right), std::vector<int>{});
  EXPECT_EQ(right.LastAccess, nullptr);
  // Every index means another node now.
  EXPECT_EQ(left.LastAccess, nullptr);
  EXPECT_EQ(left.Get(2)->value, 2);
  left.SpliceFront(left);
  left.SpliceFront(right);
  EXPECT_EQ(Values(left), (std::vector{0, 1, 2, 0, 1}));
  right.SpliceFront(left);
  EXPECT_EQ(Values(right), (std::vector{0, 1, 2, 0, 1}));
  EXPECT_EQ(Values(left), std::vector<int>{});
}

TEST(Array, SpliceOfAnEmptyListOrOfItselfChangesNothing) {
  Array<int> list;
  Array<int> empty;
  Fill(list, 2);
  list.Splice(empty);
  list.Splice(list);
  EXPECT_EQ(Values(list), (std::vector{0, 1}));
  empty.Splice(list);
  EXPECT_EQ(Values(empty), (std::vector{0, 1}));
}

TEST(Array, SpliceNeedsNoMemory) {
  Array<int> left;
  Array<int> right;
  Fill(left, 2);
  Fill(right, 1000);
  const test::AllocationWatch watch;
  left.Splice(right);
  EXPECT_EQ(watch.Count(), 0u);
}

TEST(Array, AddWithoutMemoryThrowsAndLeavesTheListAsItWas) {
  Array<int> list;
  Fill(list, 2);
  {
    const test::AllocationFailure failure(1);
    EXPECT_THROW(list.Add(2), std::bad_alloc);
  }
  EXPECT_EQ(Values(list), (std::vector{0, 1}));
  list.Add(2);
  EXPECT_EQ(Values(list), (std::vector{0, 1, 2}));
}

TEST(Array, HoldsAndFreesOneNodeAnEntry) {
  const test::AllocationWatch watch;
  {
    Array<int> list;
    Fill(list, 10);
    EXPECT_EQ(watch.Outstanding(), 10);
    list.RemoveAt(3);
    EXPECT_EQ(watch.Outstanding(), 9);
  }
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(Array, RandomChangesLeaveWhatAVectorHolds) {
  Array<int> list;
  std::vector<int> model;
  std::mt19937 random(11);
  for (int round = 0; round < 20000; ++round) {
    const auto index = static_cast<std::uint32_t>(random() % 40);
    switch (random() % 4) {
      case 0:
      case 1:
        list.Add(round);
        model.push_back(round);
        break;
      case 2:
        ASSERT_EQ(list.RemoveAt(index), index < model.size());
        if (index < model.size()) model.erase(model.begin() + index);
        break;
      default:
        const auto* node = list.Get(index);
        ASSERT_EQ(node != nullptr, index < model.size());
        if (node != nullptr) {
          ASSERT_EQ(node->value, model[index]);
        }
    }
    if (model.size() > 60) {
      list.Clear();
      model.clear();
    }
  }
  EXPECT_EQ(Values(list), model);
}

}  // namespace
}  // namespace tessaret
