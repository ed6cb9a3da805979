// Images for the tests of lossless JPEG, as the coder and as the plain one want them.
#pragma once

#include <random>

#include "codecs/frame_maker.h"
#include "codecs/plain_lossless.h"
#include "jpeg/jpeg_lossless_coder.h"

namespace tessaret::codecs::test {

/// Noise of `range` values over a gradient, modulo the precision.
inline PlainImage NoisyImage(std::uint32_t columns, std::uint32_t rows, std::uint32_t components,
                             std::uint32_t precision, std::uint32_t range, std::uint32_t seed = 1) {
  PlainImage image{rows, columns, components, precision, {}};
  std::mt19937 random(seed);
  for (std::uint32_t at = 0; at < rows * columns * components; ++at) {
    const auto noise = static_cast<std::uint32_t>(random() % range);
    const std::uint32_t value = at / components * 3 + at % components * 1000 + noise;
    image.samples.push_back(value & ((1u << precision) - 1));
  }
  return image;
}

inline FrameFormat FormatOf(const PlainImage& image) {
  return MakeFormat(image.columns, image.rows, image.components, image.precision > 8 ? 16 : 8,
                    image.precision);
}

inline tessaret::test::Bytes FrameOf(const PlainImage& image) {
  tessaret::test::Bytes frame;
  for (const std::uint32_t sample : image.samples) {
    frame.push_back(static_cast<std::uint8_t>(sample));
    if (image.precision > 8) frame.push_back(static_cast<std::uint8_t>(sample >> 8));
  }
  return frame;
}

inline tessaret::test::Bytes Decoded(const tessaret::test::Bytes& stream,
                                     const FrameFormat& format) {
  tessaret::test::Bytes frame(format.Size());
  JpegLosslessCoder().Decode(stream, format, frame);
  return frame;
}

/// Why a stream is refused; empty where it is not.
inline std::string Refusal(const tessaret::test::Bytes& stream, const FrameFormat& format) {
  return WordsOf([&] { Decoded(stream, format); });
}

}  // namespace tessaret::codecs::test

// What all tests of lossless JPEG call.
namespace tessaret::codecs {

using tessaret::test::Joined;
using test::Decoded;
using test::EncodePlainly;
using test::FormatOf;
using test::FrameOf;
using test::NoisyImage;
using test::Packed;
using test::PlainImage;
using test::PlainOptions;
using test::Refusal;
using test::SegmentOf;
using Stream = tessaret::test::Bytes;

}  // namespace tessaret::codecs
