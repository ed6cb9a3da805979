#include "jpeg2000/sample_planes.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "failure.h"

namespace tessaret::codecs {
namespace {

/// The values that samples may have before they are moved to begin at 0.
struct Range {
  std::int32_t least;
  std::int32_t most;
  std::int32_t shift;
  std::uint32_t mask;
};

std::uint32_t Wrapped(std::int32_t value) { return static_cast<std::uint32_t>(value); }

/// ISO/IEC 15444-1, G.2
void TransformBack(std::int32_t* __restrict first, std::int32_t* __restrict second,
                   std::int32_t* __restrict third, std::size_t count) {
  for (std::size_t at = 0; at < count; ++at) {
    const std::int32_t y = first[at];
    const std::int32_t u = second[at];
    const std::int32_t v = third[at];
    const std::int32_t quarter = static_cast<std::int32_t>(Wrapped(u) + Wrapped(v)) >> 2;
    const std::uint32_t green = Wrapped(y) - Wrapped(quarter);
    first[at] = static_cast<std::int32_t>(Wrapped(v) + green);
    second[at] = static_cast<std::int32_t>(green);
    third[at] = static_cast<std::int32_t>(Wrapped(u) + green);
  }
}

/// ISO/IEC 15444-1, G.3
void TransformBack(float* __restrict first, float* __restrict second, float* __restrict third,
                   std::size_t count) {
  for (std::size_t at = 0; at < count; ++at) {
    const float y = first[at];
    const float u = second[at];
    const float v = third[at];
    first[at] = y + v * 1.402F;
    second[at] = y - u * 0.34413F - v * 0.71414F;
    third[at] = y + u * 1.772F;
  }
}

std::uint32_t Limited(std::int32_t value, const Range& range) {
  return static_cast<std::uint32_t>(std::clamp(value, range.least, range.most) + range.shift) &
         range.mask;
}

std::uint32_t Limited(float value, const Range& range) {
  // The nearest integer, of two the even one: the last places of a sum that has no others below them.
  constexpr float kNoPlaces = 12582912;  // 1.5 times 2 to the 23rd
  const float limited =
      std::clamp(value, static_cast<float>(range.least), static_cast<float>(range.most));
  const auto rounded = static_cast<std::int32_t>(std::bit_cast<std::uint32_t>(limited + kNoPlaces) -
                                                 std::bit_cast<std::uint32_t>(kNoPlaces));
  return static_cast<std::uint32_t>(rounded + range.shift) & range.mask;
}

/// One row of a plane; `to` has `step` samples from one to the next.
template <class Sample, class Value>
void WriteRow(const Value* from, std::size_t count, const Range& range, std::uint8_t* to,
              std::size_t step) {
  if (step == 1) {
    for (std::size_t at = 0; at < count; ++at) {
      const auto sample = static_cast<Sample>(Limited(from[at], range));
      std::memcpy(to + at * sizeof sample, &sample, sizeof sample);
    }
    return;
  }
  for (std::size_t at = 0; at < count; ++at) {
    const auto sample = static_cast<Sample>(Limited(from[at], range));
    std::memcpy(to + at * step * sizeof sample, &sample, sizeof sample);
  }
}

template <class Sample>
void WriteAll(std::span<const SamplePlane> planes, const GridArea& area, std::uint32_t columns,
              const Range& range, MutableBytes frame) {
  const std::size_t width = area.Width();
  const std::size_t step = planes.size();
  for (std::size_t at = 0; at < step; ++at) {
    const SamplePlane& plane = planes[at];
    for (std::size_t y = 0; y < area.Height(); ++y) {
      const std::size_t pixel = (area.y0 + y) * columns + area.x0;
      std::uint8_t* to = frame.data() + (pixel * step + at) * sizeof(Sample);
      if (plane.isReversible) {
        WriteRow<Sample>(&plane.integers[y * width], width, range, to, step);
      } else {
        WriteRow<Sample>(&plane.reals[y * width], width, range, to, step);
      }
    }
  }
}

}  // namespace

void TransformColoursBack(std::span<SamplePlane> planes) {
  if (planes.size() < 3) return;
  const bool isReversible = planes[0].isReversible;
  if (planes[1].isReversible != isReversible || planes[2].isReversible != isReversible) {
    Fail("a component transform of different wavelets");
  }
  if (isReversible) {
    TransformBack(planes[0].integers.data(), planes[1].integers.data(), planes[2].integers.data(),
                  planes[0].integers.size());
  } else {
    TransformBack(planes[0].reals.data(), planes[1].reals.data(), planes[2].reals.data(),
                  planes[0].reals.size());
  }
}

void WriteSamples(std::span<const SamplePlane> planes, const GridArea& area, std::uint32_t columns,
                  const SampleFormat& format, MutableBytes frame) {
  const std::int32_t half = std::int32_t{1} << (format.precision - 1);
  const Range range{.least = -half,
                    .most = half - 1,
                    .shift = format.isSigned ? 0 : half,
                    .mask = (std::uint32_t{2} << (format.precision - 1)) - 1};
  if (format.bytes == 1) {
    WriteAll<std::uint8_t>(planes, area, columns, range, frame);
  } else {
    WriteAll<std::uint16_t>(planes, area, columns, range, frame);
  }
}

}  // namespace tessaret::codecs
