// JPEG-LS by the letter of ISO/IEC 14495-1, bit by bit and without a thought of speed: what the decoder is compared with.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace tessaret::codecs::test {

/// The values of a preset segment; 0 stands for the default.
struct PlainLsPresets {
  int maximum = 0;
  int t1 = 0;
  int t2 = 0;
  int t3 = 0;
  int reset = 0;
};

struct PlainLsScan {
  int first = 0;       // of the components that it has
  int count = 1;       // of those
  int interleave = 0;  // 0 where there is one, 1 by row, 2 by pixel
  int nearness = 0;
  bool hasPresets =
      false;  // a segment before the scan; otherwise the presets have to be those in force
  PlainLsPresets presets{};
};

struct PlainLsImage {
  int columns = 0;
  int rows = 0;
  int components = 1;
  int precision = 8;
  std::vector<int> samples{};  // by pixel
};

/// The whole code stream. The image's samples become those that a decoder has to find: others where a scan loses something.
std::vector<std::uint8_t> EncodeLsPlainly(PlainLsImage& image,
                                          const std::vector<PlainLsScan>& scans);

}  // namespace tessaret::codecs::test
