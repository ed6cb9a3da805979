#include "samples.h"

#include <gtest/gtest.h>

#include "codecs/frame_maker.h"

namespace tessaret::codecs {
namespace {

using Octets = std::vector<std::uint8_t>;
using test::MakeFormat;

TEST(Samples, SignsAreRepeatedInTheBitsAbove) {
  // 12 bits: 0x0FFF is -1, 0x0800 is -2048, 0x07FF stays; what stands above is not looked at.
  Octets frame = {0xFF, 0x0F, 0x00, 0x08, 0xFF, 0x07, 0x00, 0x70};
  ExtendSigns(frame, MakeFormat(4, 1, 1, 16, 12, true), 12);
  EXPECT_EQ(frame, Octets({0xFF, 0xFF, 0x00, 0xF8, 0xFF, 0x07, 0x00, 0x00}));
  Octets bytes = {0x40, 0x3F, 0x7F};
  ExtendSigns(bytes, MakeFormat(3, 1, 1, 8, 7, true), 7);
  EXPECT_EQ(bytes, Octets({0xC0, 0x3F, 0xFF}));
}

TEST(Samples, UnsignedAndFullSamplesKeepTheirBits) {
  const Octets before = {0xFF, 0x0F, 0x00, 0x08};
  Octets frame = before;
  ExtendSigns(frame, MakeFormat(2, 1, 1, 16, 12), 12);
  EXPECT_EQ(frame, before);
  ExtendSigns(frame, MakeFormat(2, 1, 1, 16, 12, true), 16);
  EXPECT_EQ(frame, before);
  ExtendSigns(frame, MakeFormat(2, 1, 1, 16, 12, true), 0);
  EXPECT_EQ(frame, before);
}

TEST(Samples, ValuesBeyondBitsStoredAreSeen) {
  EXPECT_FALSE(NeedsMoreThanStored(Octets{0xFF, 0x0F}, MakeFormat(1, 1, 1, 16, 12)));
  EXPECT_TRUE(NeedsMoreThanStored(Octets{0x00, 0x10}, MakeFormat(1, 1, 1, 16, 12)));
  EXPECT_FALSE(NeedsMoreThanStored(Octets{0x00, 0xF8}, MakeFormat(1, 1, 1, 16, 12, true)));
  EXPECT_TRUE(NeedsMoreThanStored(Octets{0xFF, 0xF7}, MakeFormat(1, 1, 1, 16, 12, true)));
  EXPECT_TRUE(NeedsMoreThanStored(Octets{0x00, 0x08}, MakeFormat(1, 1, 1, 16, 12, true)));
  EXPECT_FALSE(NeedsMoreThanStored(Octets{0xFF, 0xFF, 0xFF, 0xFF}, MakeFormat(1, 1, 1, 32, 32)));
  EXPECT_FALSE(NeedsMoreThanStored(Octets{0, 0, 0, 0x80}, MakeFormat(1, 1, 1, 32, 32, true)));
}

TEST(Samples, EncodersKeepAllBitsThatSomethingStandsIn) {
  FrameFormat format = MakeFormat(1, 1, 1, 16, 12);
  EXPECT_EQ(BitsToKeep(Octets{0xFF, 0x0F}, format), 12u);
  EXPECT_EQ(BitsToKeep(Octets{0xFF, 0x1F}, format), 16u);
  EXPECT_EQ(BitsToKeep(Octets{0xFF, 0x0F}, MakeFormat(1, 1, 1, 16, 12, true)), 16u);
  EXPECT_EQ(BitsToKeep(Octets{0xFF, 0xFF}, MakeFormat(1, 1, 1, 16, 12, true)), 16u) << "-1";
  format.highBit = 15;
  EXPECT_EQ(BitsToKeep(Octets{0xF0, 0x0F}, format), 16u);
}

TEST(Samples, PlanesBecomePixels) {
  Octets pixels(12);
  PlanesToPixels(Octets{1, 2, 3, 4, 11, 12, 13, 14, 21, 22, 23, 24}, MakeFormat(2, 2, 3, 8, 8),
                 pixels);
  EXPECT_EQ(pixels, Octets({1, 11, 21, 2, 12, 22, 3, 13, 23, 4, 14, 24}));
  PlanesToPixels(Octets{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}, MakeFormat(2, 1, 3, 16, 16),
                 pixels);
  EXPECT_EQ(pixels, Octets({1, 2, 5, 6, 9, 10, 3, 4, 7, 8, 11, 12}));
}

}  // namespace
}  // namespace tessaret::codecs
