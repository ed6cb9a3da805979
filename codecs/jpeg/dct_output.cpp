#include "jpeg/dct_output.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "base/byte_order.h"

namespace tessaret::codecs {
namespace {

constexpr std::int32_t kMiddle = 2048;
constexpr std::int32_t kMost = 4095;

/// Factors of chrominance, times 2^16.
constexpr std::int32_t kRedOfCr = 91881;     // 1.402
constexpr std::int32_t kGreenOfCb = -22554;  // -0.344136
constexpr std::int32_t kGreenOfCr = -46802;  // -0.714136
constexpr std::int32_t kBlueOfCb = 116130;   // 1.772

using Pixel = std::array<std::int32_t, kMostComponents>;

std::int32_t Mix(std::int32_t luminance, std::int32_t sum) {
  return std::clamp(luminance + ((sum + 0x8000) >> 16), 0, kMost);
}

Pixel RgbOf(const Pixel& ycc) {
  const std::int32_t cb = ycc[1] - kMiddle;
  const std::int32_t cr = ycc[2] - kMiddle;
  return {Mix(ycc[0], kRedOfCr * cr), Mix(ycc[0], kGreenOfCb * cb + kGreenOfCr * cr),
          Mix(ycc[0], kBlueOfCb * cb)};
}

void StoreSample(std::uint8_t* to, std::size_t width, std::int32_t sample) {
  StoreLittle16(to, static_cast<std::uint16_t>(sample));
  if (width == 4) StoreLittle16(to + 2, 0);
}

}  // namespace

void WriteDctRows(std::span<RowMaker> rows, bool isYcc, const FrameFormat& format,
                  MutableBytes frame) {
  const std::size_t width = format.BytesPerSample();
  std::uint8_t* to = frame.data();
  std::array<const std::uint16_t*, kMostComponents> from{};
  for (std::uint32_t y = 0; y < format.rows; ++y) {
    for (std::size_t at = 0; at < rows.size(); ++at) from[at] = rows[at].Row(y);
    if (rows.size() == 1 && width == 2) {
      std::memcpy(to, from[0], format.RowSize());
      to += format.RowSize();
      continue;
    }
    for (std::uint32_t x = 0; x < format.columns; ++x) {
      Pixel pixel{};
      for (std::size_t at = 0; at < rows.size(); ++at) pixel[at] = from[at][x];
      if (isYcc) pixel = RgbOf(pixel);
      for (std::size_t at = 0; at < rows.size(); ++at, to += width) {
        StoreSample(to, width, pixel[at]);
      }
    }
  }
}

}  // namespace tessaret::codecs
