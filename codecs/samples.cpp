#include "samples.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace tessaret::codecs {
namespace {

template <class Sample>
Sample Load(const std::uint8_t* at) {
  Sample sample;
  std::memcpy(&sample, at, sizeof sample);
  return sample;
}

template <class Sample>
void Store(std::uint8_t* at, Sample sample) {
  std::memcpy(at, &sample, sizeof sample);
}

/// Calls with a value of the unsigned type that a sample takes in memory.
template <class Function>
auto WithSampleType(const FrameFormat& format, Function function) {
  switch (format.BytesPerSample()) {
    case 1:
      return function(std::uint8_t{});
    case 2:
      return function(std::uint16_t{});
    default:
      return function(std::uint32_t{});
  }
}

template <class Sample>
Sample LowBits(std::uint32_t count) {
  return count >= sizeof(Sample) * 8 ? static_cast<Sample>(~Sample{0})
                                     : static_cast<Sample>((Sample{1} << count) - 1);
}

template <class Sample>
void ExtendSignsOf(MutableBytes frame, std::uint32_t precision) {
  const auto sign = static_cast<Sample>(Sample{1} << (precision - 1));
  const Sample mask = LowBits<Sample>(precision);
  for (std::size_t at = 0; at + sizeof(Sample) <= frame.size(); at += sizeof(Sample)) {
    const auto low = static_cast<Sample>(Load<Sample>(&frame[at]) & mask);
    Store(&frame[at], static_cast<Sample>((low ^ sign) - sign));
  }
}

/// All bits that some sample has set.
template <class Sample>
Sample BitsSet(Bytes frame) {
  Sample set = 0;
  for (std::size_t at = 0; at + sizeof(Sample) <= frame.size(); at += sizeof(Sample)) {
    set = static_cast<Sample>(set | Load<Sample>(&frame[at]));
  }
  return set;
}

/// All bits in which some sample differs from its sign repeated.
template <class Sample>
Sample BitsUnlikeSign(Bytes frame) {
  using Signed = std::make_signed_t<Sample>;
  Sample unlike = 0;
  for (std::size_t at = 0; at + sizeof(Sample) <= frame.size(); at += sizeof(Sample)) {
    const auto sample = Load<Sample>(&frame[at]);
    const auto sign = static_cast<Sample>(static_cast<Signed>(sample) >> (sizeof(Sample) * 8 - 1));
    unlike = static_cast<Sample>(unlike | (sample ^ sign));
  }
  return unlike;
}

template <class Sample>
void Interleave(Bytes planes, const FrameFormat& format, MutableBytes pixels) {
  const auto count = static_cast<std::size_t>(format.Pixels());
  const std::size_t stride = format.samples * sizeof(Sample);
  for (std::size_t plane = 0; plane < format.samples; ++plane) {
    const std::uint8_t* from = planes.data() + plane * count * sizeof(Sample);
    std::uint8_t* to = pixels.data() + plane * sizeof(Sample);
    for (std::size_t at = 0; at < count; ++at) {
      Store(to + at * stride, Load<Sample>(from + at * sizeof(Sample)));
    }
  }
}

}  // namespace

void ExtendSigns(MutableBytes frame, const FrameFormat& format, std::uint32_t precision) {
  if (!format.isSigned || precision == 0 || precision >= format.bitsAllocated) return;
  WithSampleType(format, [&](auto type) { ExtendSignsOf<decltype(type)>(frame, precision); });
}

bool NeedsMoreThanStored(Bytes frame, const FrameFormat& format) {
  return WithSampleType(format, [&](auto type) {
    using Sample = decltype(type);
    if (format.isSigned) {
      return (BitsUnlikeSign<Sample>(frame) & ~LowBits<Sample>(format.bitsStored - 1)) != 0;
    }
    return (BitsSet<Sample>(frame) & ~LowBits<Sample>(format.bitsStored)) != 0;
  });
}

std::uint32_t BitsToKeep(Bytes frame, const FrameFormat& format) {
  const bool isLow = !format.isSigned && format.highBit + 1 == format.bitsStored;
  return isLow && !NeedsMoreThanStored(frame, format) ? format.bitsStored : format.bitsAllocated;
}

void PlanesToPixels(Bytes planes, const FrameFormat& format, MutableBytes pixels) {
  WithSampleType(format, [&](auto type) { Interleave<decltype(type)>(planes, format, pixels); });
}

}  // namespace tessaret::codecs
