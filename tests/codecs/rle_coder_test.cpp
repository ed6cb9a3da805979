#include "rle/rle_coder.h"

#include <gtest/gtest.h>

#include "codecs/frame_maker.h"

namespace tessaret::codecs {
namespace {

TEST(RleCoder, WhatItEncodesItDecodes) {
  const RleCoder coder;
  for (const FrameFormat& format :
       {test::MakeFormat(17, 9, 1, 8, 8), test::MakeFormat(300, 40, 1, 16, 12),
        test::MakeFormat(31, 7, 3, 8, 8), test::MakeFormat(5, 5, 3, 32, 32)}) {
    for (const test::Pattern pattern : test::kPatterns) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
      const EncodedFrame encoded = coder.Encode(frame, format, {});
      std::vector<std::uint8_t> back(frame.size());
      coder.Decode(encoded.stream, format, back);
      EXPECT_EQ(back, frame);
    }
  }
}

}  // namespace
}  // namespace tessaret::codecs
