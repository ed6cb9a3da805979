#include "core/vr_group_pqueue.h"

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "base/pqueue.h"
#include "object_maker.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::NewVR;
using test::ValueOf;

TEST(VRGroupPQueue, StartsEmptyForItsGroup) {
  VRGroupPQueue queue(0x0010);
  EXPECT_EQ(queue.Group, 0x0010);
  EXPECT_EQ(queue.Size, 0u);
  EXPECT_EQ(queue.ListLength, 0u);
  EXPECT_EQ(queue.GroupLengthVR, nullptr);
  EXPECT_EQ(queue.Pop(), nullptr);
  EXPECT_EQ(VRGroupPQueue().Group, 0);
}

TEST(VRGroupPQueue, PopsTheElementsInTheOrderOfTheirTags) {
  std::vector<std::uint16_t> elements = {0x0000, 0x0010, 0x0020, 0x7FFF, 0x8000, 0xFFFF};
  std::mt19937 random(1);
  for (int round = 0; round < 100; ++round) {
    std::shuffle(elements.begin(), elements.end(), random);
    std::vector<VR> storage(elements.size());
    VRGroupPQueue queue(0x0010);
    for (std::size_t at = 0; at < elements.size(); ++at) {
      storage[at].Group = 0x0010;
      storage[at].Element = elements[at];
      ASSERT_TRUE(queue.Push(&storage[at]));
    }
    std::vector<std::uint16_t> popped;
    while (const VR* vr = queue.Pop()) popped.push_back(vr->Element);
    ASSERT_TRUE(std::is_sorted(popped.begin(), popped.end()));
    ASSERT_EQ(popped.size(), elements.size());
  }
}

TEST(VRGroupPQueue, PushRefusesNothingAndElementsOfAnotherGroup) {
  VRGroupPQueue queue(0x0010);
  VR other(0x0011, 0x0010, 4, nullptr);
  EXPECT_FALSE(queue.Push(&other));
  EXPECT_FALSE(queue.Push(nullptr));
  EXPECT_EQ(queue.Size, 0u);
  EXPECT_EQ(queue.ListLength, 0u);
  EXPECT_EQ(queue.Pop(), nullptr);
}

TEST(VRGroupPQueue, SizeCountsHeadsEvenValuesAndNothingThatWasPopped) {
  VRGroupPQueue queue(0x0010);
  VR odd(0x0010, 0x0010, 5, nullptr);
  VR even(0x0010, 0x0020, 6, nullptr);
  VR empty(0x0010, 0x0030, 0, nullptr);
  queue.Push(&odd);
  EXPECT_EQ(queue.Size, 5u + 8u + 1u);
  queue.Push(&even);
  EXPECT_EQ(queue.Size, 14u + 6u + 8u);
  queue.Push(&empty);
  EXPECT_EQ(queue.Size, 28u + 8u);
  EXPECT_EQ(queue.Pop(), &odd);
  EXPECT_EQ(queue.Size, 22u);
  EXPECT_EQ(queue.Pop(), &even);
  EXPECT_EQ(queue.Size, 8u);
  EXPECT_EQ(queue.Pop(), &empty);
  EXPECT_EQ(queue.Size, 0u);
}

TEST(VRGroupPQueue, SizeGoesRoundAtItsWidth) {
  VRGroupPQueue queue(0x0010);
  VR longest(0x0010, 0x0010, 0xFFFFFFFF, nullptr);
  EXPECT_TRUE(queue.Push(&longest));
  // 2^32 - 1 + 8 + 1.
  EXPECT_EQ(queue.Size, 8u);
  EXPECT_EQ(queue.Pop(), &longest);
  EXPECT_EQ(queue.Size, 0u);
}

TEST(VRGroupPQueue, MakeGroupLengthGivesTheSizeAsAnElement) {
  VRGroupPQueue queue(0x0008);
  VR element(0x0008, 0x0016, 0x01020304 - 8, nullptr);
  queue.Push(&element);
  EXPECT_TRUE(queue.MakeGroupLength());
  const VR& made = *queue.GroupLengthVR;
  EXPECT_EQ(made.Group, 0x0008);
  EXPECT_EQ(made.Element, 0x0000);
  EXPECT_EQ(made.TypeCode, type_code::UL);
  EXPECT_EQ(made.Length, 4u);
  EXPECT_EQ(made.OwnsData, 1u);
  EXPECT_EQ(ValueOf(made), (Bytes{4, 3, 2, 1}));
  // It is not one of the elements that it counts.
  EXPECT_EQ(queue.ListLength, 1u);
  EXPECT_EQ(queue.Size, 0x01020304u);
}

TEST(VRGroupPQueue, MakeGroupLengthAgainCountsAnew) {
  VRGroupPQueue queue(0x0008);
  VR element(0x0008, 0x0016, 2, nullptr);
  EXPECT_TRUE(queue.MakeGroupLength());
  EXPECT_EQ(ValueOf(*queue.GroupLengthVR), (Bytes{0, 0, 0, 0}));
  queue.Push(&element);
  EXPECT_EQ(ValueOf(*queue.GroupLengthVR), (Bytes{0, 0, 0, 0}));
  EXPECT_TRUE(queue.MakeGroupLength());
  EXPECT_EQ(ValueOf(*queue.GroupLengthVR), (Bytes{10, 0, 0, 0}));
}

TEST(VRGroupPQueue, LeavesTheElementsToTheCaller) {
  const std::unique_ptr<VR> vr(NewVR(MakeTagKey(0x0010, 0x0010), "text"));
  { VRGroupPQueue(0x0010).Push(vr.get()); }
  EXPECT_EQ(test::TextOf(*vr), "text");
}

TEST(VRGroupPQueue, QueuesAreOrderedByTheirGroups) {
  VRGroupPQueue high(0x8000);
  VRGroupPQueue low(0x0002);
  VRGroupPQueue middle(0x0010);
  VR many(0x0002, 0x0010, 100, nullptr);
  low.Push(&many);
  EXPECT_TRUE(low < middle);
  EXPECT_FALSE(middle < low);
  EXPECT_FALSE(low < low);
  PQueueOfPtr<VRGroupPQueue*> queues;
  for (VRGroupPQueue* queue : {&high, &low, &middle}) queues.Push(queue);
  VRGroupPQueue* first = nullptr;
  for (VRGroupPQueue* expected : {&low, &middle, &high}) {
    ASSERT_TRUE(queues.Pop(first));
    EXPECT_EQ(first, expected);
  }
}

}  // namespace
}  // namespace tessaret
