// Which context each decision about a coefficient has, by what is known of its neighbours (ISO/IEC 15444-1, D.3).
#pragma once

#include <array>
#include <cstdint>

namespace tessaret::codecs {

/// The bands of a resolution; the lowest resolution has but one, the others the other three.
enum class Band : std::uint8_t { kLowLow, kHighLow, kLowHigh, kHighHigh };

/// The numbers of table D.7.
enum BlockContext : std::uint8_t {
  kFirstSignificance = 0,
  kFirstSign = 9,
  kFirstRefinement = 14,
  kRefinedBefore = 16,
  kRunLength = 17,
  kUniform = 18,
  kBlockContexts = 19,
};

/// By nine bits, three for each row from above to below, of which each tells whether the left, the middle, or the right coefficient is
/// significant. The middle one of all does not count.
using SignificanceContexts = std::array<std::uint8_t, 512>;
const SignificanceContexts& SignificanceContextsOf(Band band);

/// By pairs of bits, from the lowest on: above, left, right, below. The upper bit of each tells whether that coefficient is significant,
/// the lower one whether it is negative. The upper bit of what is here tells that the decision is for a sign turned over.
inline constexpr std::uint8_t kSignIsTurned = 0x80;
extern const std::array<std::uint8_t, 256> kSignContexts;

}  // namespace tessaret::codecs
