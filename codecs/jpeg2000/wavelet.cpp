#include "jpeg2000/wavelet.h"

#include <algorithm>
#include <type_traits>

namespace tessaret::codecs {
namespace {

/// Columns that go together: as many as a line of the cache has.
constexpr std::size_t kTogether = 16;

// Damaged streams have numbers that overflow.
std::int32_t Sum(std::int32_t one, std::int32_t other) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(one) +
                                   static_cast<std::uint32_t>(other));
}
std::int32_t Difference(std::int32_t one, std::int32_t other) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(one) -
                                   static_cast<std::uint32_t>(other));
}

/// ISO/IEC 15444-1, table F.4
constexpr float kAlpha = -1.586134342F;
constexpr float kBeta = -0.052980118F;
constexpr float kGamma = 0.882911075F;
constexpr float kDelta = 0.443506852F;
constexpr float kScale = 1.230174105F;
/// A thirty-thousandth below 1 / K, as other decoders have it, so that pixels are the same as theirs to the bit.
constexpr float kHighScale = 1.625732422F / 2;

/// Lines of samples with low and high frequencies, of which one is made to be between those of the other kind. `low` and `high` have a
/// line more at each end, which is made equal to the next: signals go on as in a mirror.
template <class Sample>
struct Lines {
  Sample* low;
  Sample* high;
  std::size_t lowCount;
  std::size_t highCount;
  std::size_t width;   // of a line
  std::size_t parity;  // 1 where the first line is a high one

  static void Mirror(Sample* lines, std::size_t count, std::size_t width) {
    std::copy_n(lines, width, lines - width);
    std::copy_n(lines + (count - 1) * width, width, lines + count * width);
  }

  /// Each low line by the high ones before and behind it.
  template <class Step>
  void ChangeLow(Step step) {
    Mirror(high, highCount, width);
    Sample* __restrict to = low;
    const Sample* before = high + parity * width - width;
    const Sample* behind = before + width;
    for (std::size_t at = 0; at < lowCount * width; ++at)
      to[at] = step(to[at], before[at], behind[at]);
  }

  template <class Step>
  void ChangeHigh(Step step) {
    Mirror(low, lowCount, width);
    Sample* __restrict to = high;
    const Sample* before = low - parity * width;
    const Sample* behind = before + width;
    for (std::size_t at = 0; at < highCount * width; ++at)
      to[at] = step(to[at], before[at], behind[at]);
  }
};

void Lift(Lines<std::int32_t> lines) {
  using Number = std::int32_t;
  lines.ChangeLow([](Number low, Number before, Number behind) {
    return Difference(low, Sum(Sum(before, behind), 2) >> 2);
  });
  lines.ChangeHigh([](Number high, Number before, Number behind) {
    return Sum(high, Sum(before, behind) >> 1);
  });
}

void Lift(Lines<float> lines) {
  for (std::size_t at = 0; at < lines.lowCount * lines.width; ++at) lines.low[at] *= kScale;
  for (std::size_t at = 0; at < lines.highCount * lines.width; ++at) lines.high[at] *= kHighScale;
  const auto step = [](float factor) {
    return [factor](float value, float before, float behind) {
      return value - factor * (before + behind);
    };
  };
  lines.ChangeLow(step(kDelta));
  lines.ChangeHigh(step(kGamma));
  lines.ChangeLow(step(kBeta));
  lines.ChangeHigh(step(kAlpha));
}

/// A signal of one sample: a low one is itself, a high one twice that.
std::int32_t Alone(std::int32_t value) { return value / 2; }
float Alone(float value) { return value / 2; }

template <std::size_t kWidth, class Sample>
void CopyLine(const Sample* from, Sample* to, std::size_t width) {
  if (width == kWidth) {
    std::copy_n(from, kWidth, to);
  } else {
    std::copy_n(from, width, to);
  }
}

}  // namespace

template <class Sample>
void InverseWavelet<Sample>::RunRows(Sample* samples, std::size_t stride, const GridArea& lower,
                                     const GridArea& area) {
  const std::size_t width = area.Width();
  const std::size_t lows = lower.Width();
  const std::size_t highs = width - lows;
  const std::size_t parity = area.x0 & 1;
  for (std::size_t y = 0; y < area.Height(); ++y) {
    Sample* row = samples + y * stride;
    if (width == 1) {
      if (parity == 1) row[0] = Alone(row[0]);
      continue;
    }
    Sample* low = &low_[kTogether];
    Sample* high = &high_[kTogether];
    std::copy_n(row, lows, low);
    std::copy_n(row + lows, highs, high);
    Lift({low, high, lows, highs, 1, parity});
    const Sample* first = parity == 0 ? low : high;
    const Sample* second = parity == 0 ? high : low;
    for (std::size_t at = 0; at < width / 2; ++at) {
      row[2 * at] = first[at];
      row[2 * at + 1] = second[at];
    }
    if (width % 2 != 0) row[width - 1] = first[width / 2];
  }
}

template <class Sample>
void InverseWavelet<Sample>::RunColumns(Sample* samples, std::size_t stride, const GridArea& lower,
                                        const GridArea& area) {
  const std::size_t height = area.Height();
  const std::size_t lows = lower.Height();
  const std::size_t highs = height - lows;
  const std::size_t parity = area.y0 & 1;
  if (height == 1) {
    if (parity == 0) return;
    for (std::size_t x = 0; x < area.Width(); ++x) samples[x] = Alone(samples[x]);
    return;
  }
  Sample* low = &low_[kTogether];
  Sample* high = &high_[kTogether];
  for (std::size_t x = 0; x < area.Width(); x += kTogether) {
    const std::size_t width = std::min(kTogether, area.Width() - x);
    Sample* const columns = samples + x;
    for (std::size_t y = 0; y < lows; ++y) {
      CopyLine<kTogether>(columns + y * stride, low + y * kTogether, width);
    }
    for (std::size_t y = 0; y < highs; ++y) {
      CopyLine<kTogether>(columns + (lows + y) * stride, high + y * kTogether, width);
    }
    Lift({low, high, lows, highs, kTogether, parity});
    for (std::size_t y = 0; y < lows; ++y) {
      CopyLine<kTogether>(low + y * kTogether, columns + (2 * y + parity) * stride, width);
    }
    for (std::size_t y = 0; y < highs; ++y) {
      CopyLine<kTogether>(high + y * kTogether, columns + (2 * y + 1 - parity) * stride, width);
    }
  }
}

template <class Sample>
void InverseWavelet<Sample>::Run(std::span<Sample> samples, std::span<const GridArea> resolutions) {
  const GridArea& whole = resolutions.back();
  // Half of the lines of a strip, or of a row, and a line more at each end.
  const std::size_t lines = std::size_t{whole.Height()} / 2 + 3;
  const std::size_t size = std::max(lines * kTogether, whole.Width() / 2 + 3 * kTogether);
  low_.resize(size);
  high_.resize(size);
  const std::size_t stride = whole.Width();
  for (std::size_t at = 1; at < resolutions.size(); ++at) {
    if (resolutions[at].IsEmpty()) continue;
    RunRows(samples.data(), stride, resolutions[at - 1], resolutions[at]);
    RunColumns(samples.data(), stride, resolutions[at - 1], resolutions[at]);
  }
}

template class InverseWavelet<std::int32_t>;
template class InverseWavelet<float>;

}  // namespace tessaret::codecs
