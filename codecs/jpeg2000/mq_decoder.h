// The MQ decoder of code blocks (ISO/IEC 15444-1, C.3), with an interval of 64 bits so that bytes come in six at a time.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace tessaret::codecs {

/// The state of a context, which has the more likely symbol in it: the lowest bit of its number.
struct MqState {
  std::uint64_t range = 0;  // of the less likely symbol: Qe, at the interval's place
  /// From the lowest byte on the states that follow where the interval stays large, where it becomes small, and, twice, where the less
  /// likely symbol came.
  std::uint32_t next = 0;
};

/// A context is the number of its state.
using MqContext = std::uint8_t;

/// Where the interval's 16 bits begin.
inline constexpr std::uint32_t kMqInterval = 48;

/// Two for each row of table C.2: with 0 as the likelier symbol, and with 1.
inline constexpr std::size_t kMqStates = 94;
extern const std::array<MqState, kMqStates> kMqTable;

/// The place of a row of table C.2 with 0 as the likelier symbol.
constexpr MqContext MqStateOf(std::size_t row) { return static_cast<MqContext>(2 * row); }

/// Bytes that the decoder may look at before the first of a segment and behind its last: the former are not FF, the latter all are.
inline constexpr std::size_t kMqBefore = 1;
inline constexpr std::size_t kMqBehind = 8;

/// Copied into a function's own variables for a whole pass, so that it stays in registers.
class MqDecoder {
 public:
  MqDecoder() = default;
  explicit MqDecoder(const std::uint8_t* segment) : at_(segment) { FillOften(); }

  /// The next symbol in this context, which it changes.
  [[gnu::always_inline]] std::uint32_t Decode(MqContext& context) {
    const MqState& state = kMqTable[context];
    const std::uint64_t range = state.range;
    interval_ -= range;
    if (distance_ <= interval_) [[likely]] {
      if (static_cast<std::int64_t>(interval_) < 0) [[likely]] return context & 1;
      return Exchange(context, state, interval_ < range);
    }
    distance_ -= interval_;
    const bool isLess = interval_ >= range;
    interval_ = range;
    return Exchange(context, state, isLess);
  }

  /// The same without a branch but for more bytes: better where neither symbol is likely.
  [[gnu::always_inline]] std::uint32_t DecodeEven(MqContext& context) {
    const MqState& state = kMqTable[context];
    const std::uint64_t range = state.range;
    const std::uint64_t rest = interval_ - range;
    const auto isLower = static_cast<std::uint32_t>(distance_ > rest);
    const std::uint64_t mask = std::uint64_t{0} - isLower;
    const std::uint32_t isLess = isLower ^ static_cast<std::uint32_t>(rest < range);
    const auto isSmall = static_cast<std::uint32_t>(~rest >> 63);
    const std::uint32_t symbol = (context & 1) ^ isLess;
    context = static_cast<MqContext>(state.next >> (isLess * 16 + isSmall * 8));
    interval_ = rest ^ ((rest ^ range) & mask);
    distance_ -= rest & mask;
    Widen();
    return symbol;
  }

 private:
  struct Input {
    const std::uint8_t* at;
    std::uint64_t distance;
    std::int32_t ready;
  };

  [[gnu::always_inline]] std::uint32_t Exchange(MqContext& context, const MqState& state,
                                                bool isLess) {
    const std::uint32_t symbol = (context & 1U) ^ std::uint32_t{isLess};
    context = static_cast<MqContext>(state.next >> (isLess ? 16 : 8));
    Widen();
    return symbol;
  }

  [[gnu::always_inline]] void Widen() {
    const int shift = __builtin_clzll(interval_);  // never 0
    interval_ <<= shift;
    distance_ <<= shift;
    ready_ -= shift;
    if (ready_ < 0) [[unlikely]]
      Fill();
  }

  [[gnu::always_inline]] void Fill() {
    constexpr std::uint64_t kEachLow = 0x0001010101010101;  // the byte before and the six that come
    std::uint64_t next;
    std::memcpy(&next, at_ - kMqBefore, sizeof next);
    if (((~next - kEachLow) & next & (kEachLow << 7)) == 0) [[likely]] {
      next = __builtin_bswap64(next) << 8 >> 16;
      distance_ -= next << -ready_;
      ready_ += 48;
      at_ += 6;
      return;
    }
    FillOften();
  }

  [[gnu::always_inline]] void FillOften() {
    const Input input = FillByBytes({at_, distance_, ready_});
    at_ = input.at;
    distance_ = input.distance;
    ready_ = input.ready;
  }

  /// With an FF among them, which is followed by a bit less, or by the end.
  static Input FillByBytes(Input input);

  const std::uint8_t* at_ = nullptr;
  std::uint64_t interval_ = std::uint64_t{0x8000} << kMqInterval;  // A
  std::uint64_t distance_ = interval_;  // from the code to the end of the interval: A - C
  std::int32_t ready_ = -15;            // bits of the code below the interval's
};

}  // namespace tessaret::codecs
