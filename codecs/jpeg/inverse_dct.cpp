#include "jpeg/inverse_dct.h"

#include <algorithm>

namespace tessaret::codecs {
namespace {

// Any 16 bits times any 16 bits may come: of 64 bits none is ever lost.
using Number = std::int64_t;

constexpr int kConstantBits = 13;
constexpr int kPassBits = 1;
constexpr Number kMiddle = 2048;
constexpr Number kMost = 4095;

/// Square roots of 2 times cosines of multiples of pi/16, their sums and differences, times 2^13.
constexpr Number k0_298631336 = 2446;
constexpr Number k0_390180644 = 3196;
constexpr Number k0_541196100 = 4433;
constexpr Number k0_765366865 = 6270;
constexpr Number k0_899976223 = 7373;
constexpr Number k1_175875602 = 9633;
constexpr Number k1_501321110 = 12299;
constexpr Number k1_847759065 = 15137;
constexpr Number k1_961570560 = 16069;
constexpr Number k2_053119869 = 16819;
constexpr Number k2_562915447 = 20995;
constexpr Number k3_072711026 = 25172;

template <int kBits>
Number Round(Number number) {
  return (number + (Number{1} << (kBits - 1))) >> kBits;
}

using Eight = std::array<Number, 8>;

/// Eight values, times the square root of 8 and 2^13.
Eight Transform(const Eight& in) {
  const Number even = (in[2] + in[6]) * k0_541196100;
  const Number even2 = even - in[6] * k1_847759065;
  const Number even3 = even + in[2] * k0_765366865;
  const Number sum = (in[0] + in[4]) << kConstantBits;
  const Number difference = (in[0] - in[4]) << kConstantBits;
  const Eight a = {sum + even3, difference + even2, difference - even2, sum - even3};

  const Number common = (in[7] + in[3] + in[5] + in[1]) * k1_175875602;
  const Number z1 = (in[7] + in[1]) * -k0_899976223;
  const Number z2 = (in[5] + in[3]) * -k2_562915447;
  const Number z3 = (in[7] + in[3]) * -k1_961570560 + common;
  const Number z4 = (in[5] + in[1]) * -k0_390180644 + common;
  const Eight b = {in[1] * k1_501321110 + z1 + z4, in[3] * k3_072711026 + z2 + z3,
                   in[5] * k2_053119869 + z2 + z4, in[7] * k0_298631336 + z1 + z3};
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2], a[3] + b[3],
          a[3] - b[3], a[2] - b[2], a[1] - b[1], a[0] - b[0]};
}

std::uint16_t Sample(Number value) {
  return static_cast<std::uint16_t>(std::clamp(value + kMiddle, Number{0}, kMost));
}

}  // namespace

void InverseDct12(const DctBlock& block, std::uint16_t* to, std::size_t stride) {
  std::array<Number, kBlockSize> between;
  for (std::size_t x = 0; x < 8; ++x) {
    Eight column;
    std::int32_t others = 0;
    for (std::size_t y = 0; y < 8; ++y) {
      column[y] = block[8 * y + x];
      if (y != 0) others |= block[8 * y + x];
    }
    if (others == 0) {
      for (std::size_t y = 0; y < 8; ++y) between[8 * y + x] = column[0] * (1 << kPassBits);
      continue;
    }
    const Eight sums = Transform(column);
    for (std::size_t y = 0; y < 8; ++y) {
      between[8 * y + x] = Round<kConstantBits - kPassBits>(sums[y]);
    }
  }
  for (std::size_t y = 0; y < 8; ++y) {
    Eight row;
    for (std::size_t x = 0; x < 8; ++x) row[x] = between[8 * y + x];
    const Eight sums = Transform(row);
    for (std::size_t x = 0; x < 8; ++x) {
      to[y * stride + x] = Sample(Round<kConstantBits + kPassBits + 3>(sums[x]));
    }
  }
}

void InverseFlatDct12(std::int32_t first, std::uint16_t* to, std::size_t stride) {
  const std::uint16_t sample = Sample(Round<3>(first));
  for (std::size_t y = 0; y < 8; ++y) std::fill_n(to + y * stride, 8, sample);
}

}  // namespace tessaret::codecs
