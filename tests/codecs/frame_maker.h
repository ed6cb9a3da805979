// Formats and frames for the tests of coders.
#pragma once

#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "failure.h"
#include "frame_coder.h"
#include "support/build_kind.h"

namespace tessaret::codecs::test {

/// Gray or RGB, by the number of samples; what is stored is in the lowest bits.
inline FrameFormat MakeFormat(std::uint32_t columns, std::uint32_t rows, std::uint32_t samples,
                              std::uint32_t allocated, std::uint32_t stored,
                              bool isSigned = false) {
  FrameFormat format;
  format.columns = columns;
  format.rows = rows;
  format.samples = samples;
  format.bitsAllocated = allocated;
  format.bitsStored = stored;
  format.highBit = stored - 1;
  format.isSigned = isSigned;
  format.photometric = samples == 1 ? "MONOCHROME2" : "RGB";
  return format;
}

/// What a self-made frame shows. All values are within Bits Stored, signed ones with their sign extended.
enum class Pattern { kZero, kMaximum, kMinimum, kNoise, kGradient, kSteps };

inline constexpr Pattern kPatterns[] = {Pattern::kZero,  Pattern::kMaximum,  Pattern::kMinimum,
                                        Pattern::kNoise, Pattern::kGradient, Pattern::kSteps};

/// All patterns; under a sanitizer two of them, others for other formats, as each may start other programs.
inline std::vector<Pattern> PatternsFor(const FrameFormat& format) {
  constexpr std::size_t kStep = tessaret::test::StepBy(std::size_t{3});
  std::vector<Pattern> some;
  for (std::size_t at = (format.columns + format.rows + format.bitsStored) % kStep;
       at < std::size(kPatterns); at += kStep) {
    some.push_back(kPatterns[at]);
  }
  return some;
}

inline std::vector<std::uint8_t> MakeFrame(const FrameFormat& format, Pattern pattern,
                                           std::uint32_t seed = 1) {
  const std::int64_t count = std::int64_t{1} << format.bitsStored;
  const std::int64_t least = format.isSigned ? -count / 2 : 0;
  const std::int64_t most = least + count - 1;
  std::mt19937 random(seed);
  std::vector<std::uint8_t> frame(format.Size());
  const std::uint32_t width = format.BytesPerSample();
  std::size_t at = 0;
  for (std::uint32_t y = 0; y < format.rows; ++y) {
    for (std::uint32_t x = 0; x < format.columns; ++x) {
      for (std::uint32_t sample = 0; sample < format.samples; ++sample, at += width) {
        std::int64_t value = 0;
        switch (pattern) {
          case Pattern::kZero:
            break;
          case Pattern::kMaximum:
            value = most;
            break;
          case Pattern::kMinimum:
            value = least;
            break;
          case Pattern::kNoise:
            value = least + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(count));
            break;
          case Pattern::kGradient:
            value = least + (std::int64_t{x} * 3 + std::int64_t{y} * 5 + sample * 7) % count;
            break;
          case Pattern::kSteps:
            value = ((x / 5 + y / 3 + sample) % 2 == 0) ? least : most;
            break;
        }
        std::memcpy(&frame[at], &value, width);
      }
    }
  }
  return frame;
}

/// The words with which a call fails; empty where it does not.
template <class Call>
std::string WordsOf(Call call) {
  try {
    call();
  } catch (const CodecFailure& failure) {
    return failure.what();
  }
  return {};
}

}  // namespace tessaret::codecs::test
