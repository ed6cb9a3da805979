// One coder that serves several threads at once.
#pragma once

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "frame_coder.h"

namespace tessaret::codecs::test {

/// Each thread has to get the same stream of a frame and the same frame of that stream, time after time. What is decoded may go by
/// another format than what is encoded.
inline void CheckThreads(const FrameCoder& coder, const std::vector<std::uint8_t>& frame,
                         const FrameFormat& native, const FrameFormat& coded) {
  constexpr int kTurns = 20;
  const std::vector<std::uint8_t> stream = coder.Encode(frame, native, {}).stream;
  std::vector<std::uint8_t> expected(coded.Size());
  coder.Decode(stream, coded, expected);
  std::vector<int> alike(4);
  std::vector<std::thread> threads;
  for (int& count : alike) {
    threads.emplace_back([&] {
      std::vector<std::uint8_t> back(coded.Size());
      for (int turn = 0; turn < kTurns; ++turn) {
        coder.Decode(stream, coded, back);
        if (back == expected && coder.Encode(frame, native, {}).stream == stream) ++count;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(alike, std::vector<int>(4, kTurns));
}

}  // namespace tessaret::codecs::test
