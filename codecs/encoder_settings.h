// What a person may set of encoders that lose something.
#pragma once

#include <cstdint>

namespace tessaret::codecs {

struct EncoderSettings {
  std::uint32_t jpegQuality =
      90;                        // 1 to 100, as in the JPEG library's scale of quantisation tables
  std::uint32_t jpegLsNear = 2;  // by how much a sample may differ, 0 to 255; 0 loses nothing
  std::uint32_t jpeg2000Ratio = 10;  // native bytes to coded ones, 1 to 1000; 1 loses nothing
};

/// From the environment: TESSARET_JPEG_QUALITY, TESSARET_JPEGLS_NEAR and TESSARET_JPEG2000_RATIO. What is not there, no decimal
/// number or outside of its range leaves the default.
EncoderSettings SettingsOfEnvironment();

}  // namespace tessaret::codecs
