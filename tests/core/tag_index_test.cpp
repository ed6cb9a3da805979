#include "core/tag_index.h"

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

using Keys = std::vector<TagKey>;

/// The measure of both ways: looks at every key.
std::int64_t FirstOf(const Keys& keys, TagKey key) {
  const auto found = std::find(keys.begin(), keys.end(), key);
  return found == keys.end() ? -1 : found - keys.begin();
}

std::int64_t Search(const Keys& keys, TagKey key) {
  return SearchKeys(keys.data(), static_cast<std::uint32_t>(keys.size()), key);
}

/// A type for each position that no other position below 65535 has.
VrCode TypeAt(std::size_t position) { return static_cast<VrCode>(position + 1); }

bool Build(TagIndex& index, const Keys& keys) {
  std::vector<VrCode> types;
  for (std::size_t at = 0; at < keys.size(); ++at) types.push_back(TypeAt(at));
  return index.Build(keys.data(), types.data(), static_cast<std::uint32_t>(keys.size()));
}

/// `count` sorted keys, some of them equal.
Keys RandomKeys(std::mt19937& random, std::size_t count) {
  Keys keys(count);
  const TagKey most = static_cast<TagKey>(2 * count);
  for (TagKey& key : keys) key = 1 + static_cast<TagKey>(random()) % most;
  std::sort(keys.begin(), keys.end());
  return keys;
}

/// Inverse of the index's multiplier modulo 2^32: multiplying by it makes keys whose homes are chosen.
constexpr std::uint32_t InverseOf(std::uint32_t odd) {
  std::uint32_t inverse = odd;
  for (int round = 0; round < 5; ++round) inverse *= 2 - odd * inverse;
  return inverse;
}
static_assert(InverseOf(0x9E3779B1) * 0x9E3779B1 == 1);

/// Sorted keys that all have the same home in any table of up to 2^16 slots.
Keys CrowdedKeys(std::uint32_t count) {
  Keys keys;
  for (std::uint32_t at = 0; at < count; ++at)
    keys.push_back((0x12340000 + at) * InverseOf(0x9E3779B1));
  std::sort(keys.begin(), keys.end());
  return keys;
}

TEST(SearchKeys, FindsNothingAmongNoKeys) { EXPECT_EQ(Search({}, 5), -1); }

TEST(SearchKeys, AgreesWithLookingAtEveryKeyForEverySizeUpTo100) {
  std::mt19937 random(1);
  for (std::size_t count = 1; count <= 100; ++count) {
    const Keys keys = RandomKeys(random, count);
    for (TagKey key = 0; key <= 2 * count + 2; ++key) {
      ASSERT_EQ(Search(keys, key), FirstOf(keys, key)) << count << " keys, key " << key;
    }
  }
}

TEST(SearchKeys, AnswersMinusOneOutsideTheKeysAndBetweenThem) {
  const Keys keys{10, 20, 30};
  for (const TagKey key : {0u, 9u, 11u, 25u, 31u, 0xFFFFFFFFu})
    EXPECT_EQ(Search(keys, key), -1) << key;
}

TEST(SearchKeys, GivesTheFirstOfEqualKeys) {
  EXPECT_EQ(Search({5, 5, 5, 5, 5}, 5), 0);
  EXPECT_EQ(Search({1, 5, 5, 5, 9}, 5), 1);
}

TEST(TagIndex, IsNotBuiltAtFirst) { EXPECT_FALSE(TagIndex().IsBuilt()); }

TEST(TagIndex, OfNoKeysFindsNothing) {
  TagIndex index;
  EXPECT_TRUE(Build(index, {}));
  EXPECT_TRUE(index.IsBuilt());
  EXPECT_EQ(index.Find(0), -1);
  EXPECT_EQ(index.Find(0xFFFFFFFF), -1);
  EXPECT_EQ(index.TypeOf(0), type_code::kNone);
}

TEST(TagIndex, AgreesWithThePlainSearchForEverySizeUpTo100) {
  std::mt19937 random(2);
  for (std::size_t count = 1; count <= 100; ++count) {
    const Keys keys = RandomKeys(random, count);
    TagIndex index;
    ASSERT_TRUE(Build(index, keys));
    for (TagKey key = 0; key <= 2 * count + 2; ++key) {
      const std::int64_t plain = Search(keys, key);
      ASSERT_EQ(index.Find(key), plain) << count << " keys, key " << key;
      ASSERT_EQ(index.TypeOf(key),
                plain < 0 ? type_code::kNone : TypeAt(static_cast<std::size_t>(plain)));
    }
  }
}

TEST(TagIndex, HoldsTheSmallestAndTheLargestKey) {
  const Keys keys{0, 0xFFFFFFFF};
  TagIndex index;
  ASSERT_TRUE(Build(index, keys));
  EXPECT_EQ(index.Find(0), 0);
  EXPECT_EQ(index.Find(0xFFFFFFFF), 1);
}

TEST(TagIndex, NumbersAsManyKeysAsTwoBytesCanAndRefusesMore) {
  Keys keys(65535);
  for (std::size_t at = 0; at < keys.size(); ++at) keys[at] = static_cast<TagKey>(at * 3);
  TagIndex index;
  ASSERT_TRUE(Build(index, keys));
  EXPECT_EQ(index.Find(3 * 65534), 65534);
  EXPECT_EQ(index.TypeOf(3 * 65534), 0xFFFF);
  EXPECT_EQ(index.Find(3 * 65534 + 1), -1);
  keys.push_back(3 * 65535);
  EXPECT_FALSE(Build(index, keys));
  EXPECT_FALSE(index.IsBuilt());
}

TEST(TagIndex, TakesEqualKeysAsTheFirst) {
  const Keys keys(1000, 0x00100010);
  TagIndex index;
  ASSERT_TRUE(Build(index, keys));
  EXPECT_EQ(index.Find(0x00100010), 0);
  EXPECT_EQ(index.TypeOf(0x00100010), TypeAt(0));
}

TEST(TagIndex, TakesAsManyKeysOfOneHomeAsALookUpMayPass) {
  const Keys keys = CrowdedKeys(64);
  TagIndex index;
  ASSERT_TRUE(Build(index, keys));
  for (std::uint32_t at = 0; at < 64; ++at) EXPECT_EQ(index.Find(keys[at]), at);
}

TEST(TagIndex, IsNotBuiltForMoreKeysOfOneHome) {
  const Keys few{1, 2, 3};
  const Keys keys = CrowdedKeys(65);
  TagIndex index;
  ASSERT_TRUE(Build(index, few));
  EXPECT_FALSE(Build(index, keys));
  EXPECT_FALSE(index.IsBuilt());
}

TEST(TagIndex, RefusesKeysOfOneHomeWithoutGoingThroughAllOfThem) {
  const Keys keys = CrowdedKeys(60000);
  TagIndex index;
  EXPECT_FALSE(Build(index, keys));
}

/// Sorted keys in a table of 8192 slots: `count` whose homes lie side by side from `first` on, and others that stand apart.
Keys KeysSideBySide(std::uint32_t first, std::uint32_t count) {
  constexpr std::uint32_t kSlots = 8192;
  const auto keyWithHome = [](std::uint32_t home) {
    return ((home % kSlots) << 19) * InverseOf(0x9E3779B1);
  };
  Keys keys;
  for (std::uint32_t at = 0; at < count; ++at) keys.push_back(keyWithHome(first + at));
  // A table of so many slots is for more than 2048 keys and at most 4096.
  for (std::uint32_t home = 2000; keys.size() < 2100; home += 3) keys.push_back(keyWithHome(home));
  std::sort(keys.begin(), keys.end());
  return keys;
}

// An unknown key is looked for up to the next free slot, though each known one is found at once.
TEST(TagIndex, IsNotBuiltWhenTooManySlotsSideBySideAreInUse) {
  // At the start of the table, within it and across its end.
  for (const std::uint32_t first : {0u, 1000u, 8100u}) {
    TagIndex index;
    EXPECT_TRUE(Build(index, KeysSideBySide(first, 256))) << first;
    EXPECT_FALSE(Build(index, KeysSideBySide(first, 257))) << first;
    EXPECT_FALSE(index.IsBuilt()) << first;
  }
}

}  // namespace
}  // namespace tessaret
