#include "base/pqueue.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"

namespace tessaret {
namespace {

template <class Queue, class T>
std::vector<T> PopAll(Queue& queue, T value) {
  std::vector<T> popped;
  while (queue.Pop(value)) popped.push_back(value);
  return popped;
}

/// Every parent is not above its children at 2i+1 and 2i+2.
bool IsHeap(PQueue<int>& queue) {
  for (std::uint32_t child = 1; child < queue.ListLength; ++child) {
    if (queue.Get(child)->value < queue.Get((child - 1) / 2)->value) return false;
  }
  return true;
}

TEST(PQueue, PopsTheSmallestFirst) {
  PQueue<int> queue;
  for (const int value : {5, 1, 4, 2, 3}) queue.Push(value);
  EXPECT_EQ(PopAll(queue, 0), (std::vector{1, 2, 3, 4, 5}));
}

TEST(PQueue, PopOfAnEmptyOneIsFalseAndLeavesTheValue) {
  PQueue<int> queue;
  int value = 42;
  EXPECT_FALSE(queue.Pop(value));
  EXPECT_EQ(value, 42);
  queue.Push(1);
  EXPECT_TRUE(queue.Pop(value));
  EXPECT_EQ(value, 1);
  EXPECT_FALSE(queue.Pop(value));
  EXPECT_EQ(value, 1);
}

TEST(PQueue, EqualValuesAllComeOut) {
  PQueue<int> queue;
  for (const int value : {2, 1, 2, 1, 2}) queue.Push(value);
  EXPECT_EQ(PopAll(queue, 0), (std::vector{1, 1, 2, 2, 2}));
}

// Positions after pushing 3, 2, 1: [3] -> [2,3] -> [1,3,2].
TEST(PQueue, LiesInItsListAsABinaryHeap) {
  PQueue<int> queue;
  for (const int value : {3, 2, 1}) queue.Push(value);
  EXPECT_EQ(queue.Get(0)->value, 1);
  EXPECT_EQ(queue.Get(1)->value, 3);
  EXPECT_EQ(queue.Get(2)->value, 2);
}

std::vector<int> InPlace(PQueue<int>& queue) {
  std::vector<int> values;
  for (std::uint32_t at = 0; at < queue.ListLength; ++at) values.push_back(queue.Get(at)->value);
  return values;
}

// The last entry comes to the root and goes down to the smaller child: of 2 and 1 to 1, then below 1 to 4.
TEST(PQueue, PopMovesTheLastEntryToTheRootAndSiftsItDownToTheSmallerChild) {
  PQueue<int> queue;
  for (const int value : {0, 2, 1, 6, 7, 4, 5}) queue.Push(value);
  ASSERT_EQ(InPlace(queue), (std::vector{0, 2, 1, 6, 7, 4, 5}));
  int value = -1;
  EXPECT_TRUE(queue.Pop(value));
  EXPECT_EQ(value, 0);
  EXPECT_EQ(InPlace(queue), (std::vector{1, 2, 4, 6, 7, 5}));
  EXPECT_TRUE(queue.Pop(value));
  EXPECT_EQ(InPlace(queue), (std::vector{2, 5, 4, 6, 7}));
}

TEST(PQueue, RandomPushesAndPopsKeepTheHeapAndTheOrder) {
  std::mt19937 random(3);
  PQueue<int> queue;
  std::vector<int> model;
  for (int round = 0; round < 3000; ++round) {
    if (random() % 5 < 3 && model.size() < 50) {
      const int value = static_cast<int>(random() % 30);
      queue.Push(value);
      model.push_back(value);
    } else {
      int value = -1;
      ASSERT_EQ(queue.Pop(value), !model.empty());
      if (model.empty()) continue;
      const auto smallest = std::min_element(model.begin(), model.end());
      ASSERT_EQ(value, *smallest);
      model.erase(smallest);
    }
    ASSERT_TRUE(IsHeap(queue)) << round;
    ASSERT_EQ(queue.ListLength, model.size());
  }
}

TEST(PQueueOfPtr, OrdersByWhatThePointersPointTo) {
  // The addresses ascend while the values fall.
  int values[] = {30, 20, 10};
  PQueueOfPtr<int*> queue;
  for (int& value : values) queue.Push(&value);
  EXPECT_EQ(PopAll(queue, static_cast<int*>(nullptr)),
            (std::vector{&values[2], &values[1], &values[0]}));
}

TEST(PQueue, PushWithoutMemoryThrowsAndLeavesTheQueueAsItWas) {
  PQueue<int> queue;
  queue.Push(2);
  queue.Push(1);
  {
    const test::AllocationFailure failure(1);
    EXPECT_THROW(queue.Push(0), std::bad_alloc);
  }
  EXPECT_EQ(PopAll(queue, 0), (std::vector{1, 2}));
}

}  // namespace
}  // namespace tessaret
