// What typed values do without memory: a put changes nothing, a get says so.
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/binary_vr.h"
#include "core/string_vr.h"
#include "core/variant_vr.h"
#include "support/allocation_failure.h"
#include "value_maker.h"

namespace tessaret {
namespace {

using test::FailEveryAllocation;
using test::Held;
using test::Owned;

struct Put {
  VrCode type;
  Variant value;
  std::int32_t index;
};

TEST(TypedValueMemory, APutWithoutMemoryChangesNothing) {
  const std::string text(100, 't');
  const Put puts[] = {{type_code::LO, Variant(text), 0},
                      {type_code::LO, Variant(text), 9},
                      {type_code::UT, Variant(text), 0},
                      {type_code::DS, Variant(1.5), 3},
                      {type_code::IS, Variant(15), 3},
                      {type_code::US, Variant(1), 100},
                      {type_code::FD, Variant(1.5), 100},
                      {type_code::DA, Variant("20010203"), 40},
                      {type_code::DT, Variant("20010203"), 40},
                      {type_code::TM, Variant("1:2:3.4"), 40},
                      {type_code::OB, Variant(VariantArray(VariantType::kByte, 99u)), 0}};
  const std::string old = "old\\" + std::string(60, 'o');
  for (const Put& put : puts) {
    auto vr = Owned(put.type, old);
    bool done = false;
    const auto failures = FailEveryAllocation(
        [&] {
          try {
            done = CVariantVR(vr.get()).VariantToVR(put.value, put.index);
          } catch (const std::bad_alloc&) {
            done = false;
          }
        },
        [&] { ASSERT_EQ(Held(*vr) == old, !done) << put.type; });
    EXPECT_TRUE(done) << put.type;
    EXPECT_GT(failures, 0u) << put.type;
  }
}

TEST(TypedValueMemory, BytesThatMemoryCannotHoldAreEmpty) {
  const auto vr = Owned(type_code::OB, std::string(100, 'o'));
  const auto failures = FailEveryAllocation([&] {
    const Variant value = CVariantVR(vr.get()).VRToVariant(0);
    ASSERT_TRUE(value.IsEmpty() || value.AsArray()->Count() == 100);
  });
  EXPECT_GT(failures, 0u);
}

TEST(TypedValueMemory, TextThatMemoryCannotHoldThrows) {
  const auto vr = Owned(type_code::LO, std::string(100, 'o'));
  bool threw = false;
  FailEveryAllocation(
      [&] {
        try {
          threw = false;
          static_cast<void>(CVariantVR(vr.get()).VRToVariant(0));
        } catch (const std::bad_alloc&) {
          threw = true;
        }
      },
      [&] { ASSERT_EQ(Held(*vr), std::string(100, 'o')); });
  EXPECT_FALSE(threw);
}

TEST(TypedValueMemory, ReadingANumberTakesNone) {
  const auto us = Owned(type_code::US, "abcd");
  const auto ds = Owned(type_code::DS, "1.5\\2.5");
  const test::AllocationWatch watch;
  static_cast<void>(CVariantVR(us.get()).VRToVariant(1));
  static_cast<void>(CVariantVR(ds.get()).VRToVariant(1));
  EXPECT_EQ(watch.Count(), 0u);
}

TEST(TypedValueMemory, AnImpossibleIndexTakesNone) {
  const auto lo = Owned(type_code::LO, "");
  const auto us = Owned(type_code::US, "ab");
  const test::AllocationWatch watch;
  EXPECT_FALSE(CVariantVR(lo.get()).VariantToVR(Variant(1), 2147483647));
  EXPECT_FALSE(CVariantVR(us.get()).VariantToVR(Variant(1), 2147483647));
  EXPECT_LT(watch.LargestRequest(), 1000u);
}

TEST(TypedValueMemory, NothingIsLeftBehind) {
  const test::AllocationWatch watch;
  {
    const auto vr = Owned(type_code::LO, std::string(100, 'o'));
    for (int round = 0; round < 100; ++round) {
      ASSERT_TRUE(CVariantVR(vr.get()).VariantToVR(Variant(std::string(50, 'n')), round % 3));
      ASSERT_TRUE(CVariantVR(vr.get()).VariantToVR(Variant(), 0));
    }
  }
  // The pool keeps a block for the next element.
  EXPECT_LE(watch.Outstanding(), 2);
}

}  // namespace
}  // namespace tessaret
