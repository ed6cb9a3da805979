#include "core/element_map.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "core/vr.h"
#include "support/build_kind.h"

namespace tessaret {
namespace {

using test::Repetitions;

/// A map under test beside a std::map that is told the same. The elements are marks only and belong to nobody.
class Twins {
 public:
  explicit Twins(std::size_t elements) : elements_(elements) {}

  void Insert(TagKey key) {
    VR** place = map.FindOrInsert(key);
    const auto [at, isNew] = model.try_emplace(key, nullptr);
    ASSERT_EQ(*place, at->second);
    ASSERT_EQ(*place == nullptr, isNew);
    *place = at->second = &elements_[next_++ % elements_.size()];
    ASSERT_EQ(map.Size(), model.size());
  }
  void Remove(TagKey key) {
    const auto place = model.find(key);
    ASSERT_EQ(map.Remove(key), place == model.end() ? nullptr : place->second);
    if (place != model.end()) model.erase(place);
    ASSERT_EQ(map.Size(), model.size());
  }
  void PopFirst() {
    ASSERT_EQ(map.PopFirst(), First());
    if (!model.empty()) model.erase(model.begin());
    ASSERT_EQ(map.Size(), model.size());
  }
  void Look(TagKey key) {
    const auto place = model.find(key);
    ASSERT_EQ(map.Find(key), place == model.end() ? nullptr : place->second);
    const auto next = place == model.end() ? place : std::next(place);
    ASSERT_EQ(map.NextAfter(key), next == model.end() ? nullptr : next->second);
    ASSERT_EQ(map.First(), First());
    ASSERT_EQ(map.IsEmpty(), model.empty());
  }
  void Clear() {
    map.Clear();
    model.clear();
  }
  /// Every entry, in order.
  void CheckAll() {
    std::vector<const VR*> visited;
    map.ForEach([&](const VR& vr) { visited.push_back(&vr); });
    std::vector<const VR*> expected;
    for (const auto& entry : model) expected.push_back(entry.second);
    ASSERT_EQ(visited, expected);
    for (const auto& entry : model) Look(entry.first);
  }

  ElementMap map;
  std::map<TagKey, VR*> model;

 private:
  VR* First() const { return model.empty() ? nullptr : model.begin()->second; }

  std::vector<VR> elements_;
  std::size_t next_ = 0;
};

TEST(ElementMap, StartsEmpty) {
  ElementMap map;
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_EQ(map.Size(), 0u);
  EXPECT_EQ(map.First(), nullptr);
  EXPECT_EQ(map.Find(0), nullptr);
  EXPECT_EQ(map.NextAfter(0), nullptr);
  EXPECT_EQ(map.PopFirst(), nullptr);
  EXPECT_EQ(map.Remove(0), nullptr);
  map.ForEach([](const VR&) { FAIL() << "there is nothing to visit"; });
  map.Clear();
}

TEST(ElementMap, HoldsTheLowestAndTheHighestKey) {
  Twins twins(3);
  for (const TagKey key : {0xFFFFFFFFu, 0u, 0x80000000u}) twins.Insert(key);
  twins.CheckAll();
  for (int times = 0; times < 4; ++times) twins.PopFirst();
}

TEST(ElementMap, FindsWhatWasInsertedUnderTheKeyAgain) {
  Twins twins(8);
  for (const TagKey key : {5u, 1u, 9u, 5u, 1u, 9u}) twins.Insert(key);
  EXPECT_EQ(twins.map.Size(), 3u);
  twins.CheckAll();
}

// A late entry may move so many others and no more, or the array becomes a tree: both sides of that border, and a tree
// of which only a tail is left.
TEST(ElementMap, IsTheSameOnBothSidesOfTheTurnFromArrayToTree) {
  for (TagKey count = 508; count <= 517; ++count) {
    for (const TagKey popped : {0u, 1u, 3u}) {
      Twins twins(600);
      for (TagKey key = 0; key < count; ++key) twins.Insert(key * 2 + 10);
      for (TagKey times = 0; times < popped; ++times) twins.PopFirst();
      twins.Insert(1);
      twins.CheckAll();
      twins.Insert(500);
      twins.Insert(501);
      twins.CheckAll();
      twins.Remove(500);
      twins.Remove(499);
      twins.PopFirst();
      twins.CheckAll();
      while (!twins.model.empty()) twins.PopFirst();
      twins.PopFirst();
      twins.Insert(77);
      twins.Insert(7);
      twins.CheckAll();
      twins.Clear();
      twins.Insert(8);
      twins.Insert(9);
      twins.CheckAll();
    }
  }
}

TEST(ElementMap, ReserveChangesNothingThatCanBeSeen) {
  Twins twins(2000);
  twins.map.Reserve(100);
  EXPECT_TRUE(twins.map.IsEmpty());
  for (TagKey key = 0; key < 300; ++key) twins.Insert(key);
  twins.map.Reserve(1);
  twins.map.Reserve(0);
  twins.CheckAll();
  for (TagKey key = 3000; key > 1000; --key) twins.Insert(key);
  twins.map.Reserve(500);
  twins.CheckAll();
  twins.Clear();
  twins.map.Reserve(500);
  EXPECT_TRUE(twins.map.IsEmpty());
  twins.Insert(3);
  twins.CheckAll();
}

TEST(ElementMap, IsEmptyAfterAClearInTheMiddleOfAWalk) {
  Twins twins(20);
  for (TagKey key = 0; key < 10; ++key) twins.Insert(key);
  for (int times = 0; times < 3; ++times) twins.PopFirst();
  twins.Clear();
  twins.Look(5);
  EXPECT_EQ(twins.map.Size(), 0u);
  for (TagKey key = 5; key > 0; --key) twins.Insert(key);
  twins.CheckAll();
}

TEST(ElementMap, IsFilledAndEmptiedInAscendingOrder) {
  Twins twins(5000);
  for (TagKey key = 0; key < 5000; ++key) twins.Insert(key * 7);
  twins.CheckAll();
  for (int times = 0; times < 5001; ++times) twins.PopFirst();
}

TEST(ElementMap, IsFilledAndEmptiedInDescendingOrder) {
  Twins twins(5000);
  for (TagKey key = 5000; key > 0; --key) twins.Insert(key * 7);
  twins.CheckAll();
  for (TagKey key = 5000; key > 0; --key) twins.Remove(key * 7);
  twins.CheckAll();
}

TEST(ElementMap, IsFilledInTwoRunsThatLieWithinEachOther) {
  Twins twins(4000);
  for (TagKey key = 0; key < 4000; key += 2) twins.Insert(key);
  for (TagKey key = 1; key < 4000; key += 2) twins.Insert(key);
  twins.CheckAll();
}

struct Mix {
  std::uint32_t keys;  // how many different ones
  std::uint32_t stride;
  unsigned inserts;  // of 100 operations
  unsigned pops;
  unsigned removals;    // the rest are looks
  std::size_t largest;  // entries, before all is cleared
  int operations;
};

void RunMix(std::uint32_t seed, const Mix& mix) {
  Twins twins(64);
  std::mt19937 random(seed);
  TagKey ascending = 0;
  for (int round = 0; round < Repetitions(mix.operations); ++round) {
    // Every third insertion comes in order, as streams deliver them.
    const auto key = static_cast<TagKey>(random() % mix.keys * mix.stride);
    const auto pick = static_cast<unsigned>(random() % 100);
    if (pick < mix.inserts) {
      ascending = random() % 3 != 0 ? key : ascending + mix.stride;
      twins.Insert(ascending);
    } else if (pick < mix.inserts + mix.pops) {
      twins.PopFirst();
    } else if (pick < mix.inserts + mix.pops + mix.removals) {
      twins.Remove(key);
    } else {
      twins.Look(key);
    }
    ASSERT_FALSE(::testing::Test::HasFatalFailure()) << "seed " << seed << " round " << round;
    if (twins.model.size() > mix.largest) {
      twins.CheckAll();
      twins.Clear();
      ascending = 0;
    }
  }
  twins.CheckAll();
}

TEST(ElementMap, RandomOperationsGiveWhatAnOrderedMapGives) {
  RunMix(1, {8, 1, 40, 15, 15, 100, 500000});
  RunMix(2, {700, 1, 45, 10, 10, 10000, 1000000});
  RunMix(3, {3000, 0x10001, 50, 5, 20, 2500, 1000000});
  RunMix(4, {0xFFFFFFFF, 1, 40, 30, 10, 2000, 1000000});
  RunMix(5, {100000, 3, 60, 0, 10, 50000, 1000000});
  RunMix(6, {100000, 3, 30, 60, 0, 50000, 500000});
}

TEST(ElementMap, AMillionEntriesInDescendingOrderNeedNoQuadraticTime) {
  // Moving every entry for each one that comes before it would be 5 * 10^11 moves.
  constexpr TagKey kCount = Repetitions(1000000u);
  VR vr;
  ElementMap map;
  for (TagKey key = kCount; key > 0; --key) *map.FindOrInsert(key) = &vr;
  EXPECT_EQ(map.Size(), kCount);
}

TEST(ElementMap, AMillionEntriesInRandomOrderNeedNoQuadraticTime) {
  std::vector<TagKey> keys(Repetitions(1000000u));
  std::iota(keys.begin(), keys.end(), 0u);
  std::shuffle(keys.begin(), keys.end(), std::mt19937(5));
  VR vr;
  ElementMap map;
  for (const TagKey key : keys) *map.FindOrInsert(key) = &vr;
  EXPECT_EQ(map.Size(), keys.size());
}

TEST(ElementMap, RemovingEverySecondOfAMillionEntriesNeedsNoQuadraticTime) {
  constexpr TagKey kCount = Repetitions(1000000u);
  VR vr;
  ElementMap map;
  for (TagKey key = 0; key < kCount; ++key) *map.FindOrInsert(key) = &vr;
  for (TagKey key = 1; key < kCount; key += 2) ASSERT_EQ(map.Remove(key), &vr);
  EXPECT_EQ(map.Size(), kCount / 2);
  for (TagKey key = 0; key < kCount; key += 20000) {
    EXPECT_EQ(map.Find(key), &vr);
    EXPECT_EQ(map.Find(key + 1), nullptr);
  }
}

}  // namespace
}  // namespace tessaret
