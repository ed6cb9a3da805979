#include "jpegls/jpegls_scan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "failure.h"
#include "jpegls/jpegls_bits.h"

namespace tessaret::codecs {
namespace {

using Sample = std::uint16_t;

constexpr std::size_t kMostComponents = JpegLsHeader::kMostComponents;

/// How many bits tell the rest of a run, by the state of runs (A.7.1.1).
constexpr std::uint8_t kRunBits[] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,  2,  3,  3,  3,  3,
                                     4, 4, 5, 5, 6, 6, 7, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr std::uint32_t kLastRunState = sizeof kRunBits - 1;

/// The counters have the names of A.2.1 and A.7.2.
struct Context {
  std::int32_t a = 0;  // sum of the sizes of errors
  std::int32_t b = 0;  // sum of errors
  std::int32_t c = 0;  // correction of predictions
  std::int32_t n = 1;  // how many errors
};

struct RunContext {
  std::int32_t a = 0;
  std::int32_t n = 1;
  std::int32_t negative = 0;  // how many errors were
};

/// The samples around the next one: left, above, above left.
struct Neighbours {
  std::int32_t ra;
  std::int32_t rb;
  std::int32_t rc;
};

std::int32_t Prediction(const Neighbours& near) {
  return std::clamp(near.ra + near.rb - near.rc, std::min(near.ra, near.rb),
                    std::max(near.ra, near.rb));
}

/// The least k for which n shifted by k is not below a.
std::uint32_t GolombParameter(std::int32_t a, std::int32_t n) {
  const auto sum = static_cast<std::uint32_t>(a);
  const auto count = static_cast<std::uint32_t>(n);
  const int widths = std::countl_zero(count) - std::countl_zero(sum);
  if (widths < 0) return 0;
  const auto k = static_cast<std::uint32_t>(widths);
  return (count << k) < sum ? k + 1 : k;
}

/// `sign` is 0 or -1.
std::int32_t WithSign(std::int32_t value, std::int32_t sign) { return (value ^ sign) - sign; }

/// Decodes rows. Rows have a pixel more at both ends, the left of which the caller has set.
template <bool kIsNear>
class RowDecoder {
 public:
  RowDecoder(Bytes data, const JpegLsParameters& parameters);

  /// `state` is that of the runs of this component.
  void DecodeRow(const Sample* above, Sample* row, std::size_t width, std::uint32_t& state);

  /// The same for pixels of some components each.
  void DecodePixels(const Sample* above, Sample* row, std::size_t width, std::size_t components,
                    std::uint32_t& state);

  void RequireEnd() { bits_.RequireEnd(); }

 private:
  [[nodiscard]] std::int32_t Quantised(std::int32_t gradient) const {
    const std::int32_t most = parameters_.thresholds[2];
    const std::int32_t place = std::clamp(gradient, -most, most) + most;
    return quantised_[static_cast<std::size_t>(place)];
  }
  /// 0 where the surroundings are flat, so that a run begins; negative where all signs are to be turned.
  [[nodiscard]] std::int32_t ContextOf(const Neighbours& near, std::int32_t rd) const {
    return 81 * Quantised(rd - near.rb) + 9 * Quantised(near.rb - near.rc) +
           Quantised(near.rc - near.ra);
  }
  std::int32_t MappedError(std::uint32_t k, std::uint32_t limit);
  std::int32_t RegularSample(std::int32_t context, const Neighbours& near);
  std::size_t RunLength(std::size_t most, std::uint32_t& state);
  std::int32_t RunError(std::size_t type, std::uint32_t state);
  Sample SampleBehindRun(std::int32_t ra, std::int32_t rb, bool isOfPixel, std::uint32_t state);
  [[nodiscard]] std::int32_t Reconstructed(std::int32_t prediction, std::int32_t error) const;

  JpegLsBits bits_;
  const JpegLsParameters parameters_;
  const std::int32_t nearness_;  // known to be 0 where nothing is lost
  const std::int32_t step_;      // between two errors
  const std::int32_t range_;     // how many errors there are
  std::uint32_t errorBits_;      // of a number of those
  std::uint32_t limit_;          // the most bits of a code
  std::vector<std::int8_t> quantised_;
  std::array<Context, 365> contexts_{};
  std::array<RunContext, 2> runContexts_{};
};

template <bool kIsNear>
RowDecoder<kIsNear>::RowDecoder(Bytes data, const JpegLsParameters& parameters)
    : bits_(data),
      parameters_(parameters),
      nearness_(kIsNear ? parameters.nearness : 0),
      step_(2 * nearness_ + 1),
      range_((parameters.maximum + 2 * nearness_) / step_ + 1) {
  errorBits_ = static_cast<std::uint32_t>(std::bit_width(static_cast<unsigned>(range_ - 1)));
  const auto sampleBits = std::max(
      2U, static_cast<std::uint32_t>(std::bit_width(static_cast<unsigned>(parameters.maximum))));
  limit_ = 2 * (sampleBits + std::max(8U, sampleBits));
  const auto& thresholds = parameters.thresholds;
  for (std::int32_t gradient = -thresholds[2]; gradient <= thresholds[2]; ++gradient) {
    const std::int32_t size = std::abs(gradient);
    std::int32_t level = size > nearness_ ? 1 : 0;
    for (const std::int32_t threshold : thresholds) level += size >= threshold ? 1 : 0;
    quantised_.push_back(static_cast<std::int8_t>(gradient < 0 ? -level : level));
  }
  const std::int32_t a = std::max(2, (range_ + 32) / 64);
  for (Context& context : contexts_) context.a = a;
  for (RunContext& context : runContexts_) context.a = a;
}

template <bool kIsNear>
std::int32_t RowDecoder<kIsNear>::MappedError(std::uint32_t k, std::uint32_t limit) {
  const std::uint32_t zeros = bits_.ReadZeros();
  const std::uint32_t escape = limit - errorBits_ - 1;
  const std::uint32_t mapped =
      zeros < escape ? (zeros << k) + bits_.Read(k) : bits_.Read(errorBits_) + 1;
  // No encoder has errors that are out of range; besides, counters stay within theirs by this.
  if (zeros > escape || mapped > static_cast<std::uint32_t>(range_)) {
    Fail("a code of the code stream is out of range");
  }
  return static_cast<std::int32_t>(mapped);
}

template <bool kIsNear>
std::int32_t RowDecoder<kIsNear>::Reconstructed(std::int32_t prediction, std::int32_t error) const {
  std::int32_t sample = prediction + error * step_;
  if (sample < -nearness_) {
    sample += range_ * step_;
  } else if (sample > parameters_.maximum + nearness_) {
    sample -= range_ * step_;
  }
  return std::clamp(sample, 0, parameters_.maximum);
}

template <bool kIsNear>
std::int32_t RowDecoder<kIsNear>::RegularSample(std::int32_t context, const Neighbours& near) {
  const std::int32_t sign = context >> 31;
  Context& counters = contexts_[static_cast<std::size_t>(WithSign(context, sign))];
  const std::int32_t prediction =
      std::clamp(Prediction(near) + WithSign(counters.c, sign), 0, parameters_.maximum);
  const std::uint32_t k = GolombParameter(counters.a, counters.n);
  const std::int32_t mapped = MappedError(k, limit_);
  std::int32_t error = (mapped >> 1) ^ -(mapped & 1);
  if (!kIsNear && k == 0 && 2 * counters.b <= -counters.n) error = ~error;

  counters.a += std::abs(error);
  counters.b += error * step_;
  if (counters.n == parameters_.reset) {
    counters.a >>= 1;
    counters.b >>= 1;
    counters.n >>= 1;
  }
  ++counters.n;
  if (counters.b <= -counters.n) {
    counters.b = std::max(counters.b + counters.n, 1 - counters.n);
    if (counters.c > -128) --counters.c;
  } else if (counters.b > 0) {
    counters.b = std::min(counters.b - counters.n, 0);
    if (counters.c < 127) ++counters.c;
  }
  return Reconstructed(prediction, WithSign(error, sign));
}

/// A run that does not go to the row's end has a sample of another kind behind it, and `state` stays until that is read.
template <bool kIsNear>
std::size_t RowDecoder<kIsNear>::RunLength(std::size_t most, std::uint32_t& state) {
  std::size_t length = 0;
  while (bits_.ReadBit()) {
    const std::size_t whole = std::size_t{1} << kRunBits[state];
    if (whole <= most - length && state < kLastRunState) ++state;
    length = std::min(length + whole, most);
    if (length == most) return most;
  }
  length += bits_.Read(kRunBits[state]);
  if (length >= most) Fail("a run of the code stream goes beyond its row");
  return length;
}

/// ISO/IEC 14495-1, A.7.2
template <bool kIsNear>
std::int32_t RowDecoder<kIsNear>::RunError(std::size_t type, std::uint32_t state) {
  RunContext& counters = runContexts_[type];
  const auto offset = static_cast<std::int32_t>(type);
  const std::uint32_t k =
      GolombParameter(counters.a + (type == 1 ? counters.n >> 1 : 0), counters.n);
  const std::int32_t mapped = MappedError(k, limit_ - kRunBits[state] - 1);
  const std::int32_t twice = mapped + offset;
  const bool isOdd = (twice & 1) != 0;
  std::int32_t error = (twice + 1) / 2;
  if ((k != 0 || 2 * counters.negative >= counters.n) == isOdd) error = -error;

  if (error < 0) ++counters.negative;
  counters.a += (mapped + 1 - offset) >> 1;
  if (counters.n == parameters_.reset) {
    counters.a >>= 1;
    counters.n >>= 1;
    counters.negative >>= 1;
  }
  ++counters.n;
  return error;
}

template <bool kIsNear>
Sample RowDecoder<kIsNear>::SampleBehindRun(std::int32_t ra, std::int32_t rb, bool isOfPixel,
                                            std::uint32_t state) {
  if (!isOfPixel && std::abs(ra - rb) <= nearness_) {
    return static_cast<Sample>(Reconstructed(ra, RunError(1, state)));
  }
  const std::int32_t error = RunError(0, state);
  return static_cast<Sample>(Reconstructed(rb, ra > rb ? -error : error));
}

template <bool kIsNear>
void RowDecoder<kIsNear>::DecodeRow(const Sample* above, Sample* row, std::size_t width,
                                    std::uint32_t& state) {
  Neighbours near{row[-1], above[0], above[-1]};
  for (std::size_t x = 0; x < width;) {
    const std::int32_t rd = above[x + 1];
    const std::int32_t context = ContextOf(near, rd);
    if (context != 0) {
      near = {RegularSample(context, near), rd, near.rb};
      row[x++] = static_cast<Sample>(near.ra);
      continue;
    }
    const std::size_t length = RunLength(width - x, state);
    std::fill_n(row + x, length, static_cast<Sample>(near.ra));
    x += length;
    if (x == width) return;
    row[x] = SampleBehindRun(near.ra, above[x], false, state);
    if (state > 0) --state;
    near = {row[x], above[x + 1], above[x]};
    ++x;
  }
}

template <bool kIsNear>
void RowDecoder<kIsNear>::DecodePixels(const Sample* above, Sample* row, std::size_t width,
                                       std::size_t components, std::uint32_t& state) {
  // Indices of samples; the pixel to the left is `components` behind.
  for (std::size_t x = 0; x < width;) {
    const std::size_t first = x * components;
    std::array<Neighbours, kMostComponents> near;
    std::array<std::int32_t, kMostComponents> contexts;
    bool isFlat = true;
    for (std::size_t at = 0; at < components; ++at) {
      const Sample* over = above + first + at;
      near[at] = {*(row + first + at - components), over[0], *(over - components)};
      contexts[at] = ContextOf(near[at], over[components]);
      isFlat = isFlat && contexts[at] == 0;
    }
    if (!isFlat) {
      for (std::size_t at = 0; at < components; ++at) {
        row[first + at] = static_cast<Sample>(RegularSample(contexts[at], near[at]));
      }
      ++x;
      continue;
    }
    const std::size_t length = RunLength(width - x, state);
    for (std::size_t at = first; at < first + length * components; ++at) {
      row[at] = *(row + at - components);
    }
    x += length;
    if (x == width) return;
    for (std::size_t at = x * components; at < (x + 1) * components; ++at) {
      row[at] = SampleBehindRun(*(row + at - components), above[at], true, state);
    }
    if (state > 0) --state;
    ++x;
  }
}

/// Two rows of some interleaved components, with a pixel more at both ends; what is above the first row is 0.
class Rows {
 public:
  Rows(std::size_t width, std::size_t components)
      : width_(width), components_(components), samples_(2 * (width + 2) * components) {}

  [[nodiscard]] const Sample* Above() const { return samples_.data() + place_ + components_; }
  [[nodiscard]] Sample* Row() { return samples_.data() + Other() + components_; }

  /// Sets what is left of the row to be decoded.
  void Begin() { std::copy_n(Above(), components_, Row() - components_); }

  /// The row that was decoded is above the next.
  void End() {
    Sample* end = Row() + width_ * components_;
    std::copy_n(end - components_, components_, end);
    place_ = Other();
  }

 private:
  [[nodiscard]] std::size_t Other() const { return place_ == 0 ? samples_.size() / 2 : 0; }

  std::size_t width_;
  std::size_t components_;
  std::vector<Sample> samples_;
  std::size_t place_ = 0;
};

/// Places samples with `step` from one to the next in the container.
template <class Container>
void Place(const Sample* samples, std::size_t count, std::size_t step, std::uint8_t* to) {
  if (step == 1) {
    for (std::size_t at = 0; at < count; ++at) {
      const auto sample = static_cast<Container>(samples[at]);
      std::memcpy(to + at * sizeof sample, &sample, sizeof sample);
    }
    return;
  }
  for (std::size_t at = 0; at < count; ++at) {
    const auto sample = static_cast<Container>(samples[at]);
    std::memcpy(to + at * step * sizeof sample, &sample, sizeof sample);
  }
}

void Place(const Sample* samples, std::size_t count, std::size_t step, const FrameFormat& format,
           std::uint8_t* to) {
  if (format.BytesPerSample() == 1) {
    Place<std::uint8_t>(samples, count, step, to);
  } else {
    Place<std::uint16_t>(samples, count, step, to);
  }
}

template <bool kIsNear>
void Decode(const JpegLsScan& scan, const FrameFormat& format, std::uint32_t first,
            MutableBytes frame) {
  RowDecoder<kIsNear> decoder(scan.data, scan.parameters);
  const bool arePixels = scan.interleave == JpegLsInterleave::kPixels;
  const std::size_t together = arePixels ? scan.components : 1;
  std::vector<Rows> rows(arePixels ? 1 : scan.components, Rows(format.columns, together));
  std::array<std::uint32_t, kMostComponents> states{};
  const auto rowSize = static_cast<std::size_t>(format.RowSize());
  for (std::size_t y = 0; y < format.rows; ++y) {
    for (std::size_t at = 0; at < rows.size(); ++at) {
      rows[at].Begin();
      if (arePixels) {
        decoder.DecodePixels(rows[at].Above(), rows[at].Row(), format.columns, together,
                             states[at]);
      } else {
        decoder.DecodeRow(rows[at].Above(), rows[at].Row(), format.columns, states[at]);
      }
      Place(rows[at].Row(), format.columns * together, arePixels ? 1 : format.samples, format,
            frame.data() + y * rowSize + (first + at) * format.BytesPerSample());
      rows[at].End();
    }
  }
  decoder.RequireEnd();
}

}  // namespace

void DecodeJpegLsScan(const JpegLsScan& scan, const FrameFormat& format, std::uint32_t first,
                      MutableBytes frame) {
  if (scan.parameters.nearness == 0) {
    Decode<false>(scan, format, first, frame);
  } else {
    Decode<true>(scan, format, first, frame);
  }
}

}  // namespace tessaret::codecs
