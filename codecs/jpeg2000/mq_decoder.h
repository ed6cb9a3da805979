// The MQ decoder of code blocks (ISO/IEC 15444-1, C.3), with an interval of 64 bits so that bytes come in six at a time.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace tessaret::codecs {

/// By the number of a state, of which the lowest bit is the more likely symbol.
inline constexpr std::size_t kMqStates = 94;
struct MqTable {
  std::array<std::uint64_t, kMqStates>
      ranges;  // of the less likely symbol: Qe, at the interval's place
  /// From the lowest byte on the states that follow where the interval stays large, where it becomes small, and, twice, where the less
  /// likely symbol came.
  std::array<std::uint32_t, kMqStates> next;
};

/// A context is the number of its state.
using MqContext = std::uint8_t;

/// Where the interval's 16 bits begin.
inline constexpr std::uint32_t kMqInterval = 48;

/// Two for each row of table C.2: with 0 as the likelier symbol, and with 1.
extern const MqTable kMqTable;

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
    const std::uint64_t range = kMqTable.ranges[context];
    interval_ -= range;
    if (distance_ <= interval_) [[likely]] {
      if (static_cast<std::int64_t>(interval_) < 0) [[likely]]
        return context & 1;
      return Exchange(context, interval_ < range);
    }
    distance_ -= interval_;
    const bool isLess = interval_ >= range;
    interval_ = range;
    return Exchange(context, isLess);
  }

  /// The same without a branch but for more bytes: better where neither symbol is likely.
  [[gnu::always_inline]] std::uint32_t DecodeEven(MqContext& context) {
    std::uint32_t state = context;
    const std::uint32_t symbol = DecodeState(state);
    context = static_cast<MqContext>(state);
    return symbol;
  }

  /// The same for who keeps the context's state elsewhere. Above the lowest byte there is something else then.
  [[gnu::always_inline]] std::uint32_t DecodeState(std::uint32_t& state) {
    const std::uint64_t range = kMqTable.ranges[state];
    const std::uint32_t next = kMqTable.next[state];
    const std::uint64_t rest = interval_ - range;
    const auto isLower = static_cast<std::uint32_t>(distance_ > rest);
    const std::uint64_t mask = std::uint64_t{0} - isLower;
    const std::uint32_t isLess = isLower ^ static_cast<std::uint32_t>(rest < range);
    const auto isSmall = static_cast<std::uint32_t>(~rest >> 63);
    const std::uint32_t symbol = (state & 1) ^ isLess;
    state = next >> (isLess * 16 + isSmall * 8);
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

  [[gnu::always_inline]] std::uint32_t Exchange(MqContext& context, bool isLess) {
    const std::uint32_t symbol = (context & 1U) ^ std::uint32_t{isLess};
    context = static_cast<MqContext>(kMqTable.next[context] >> (isLess ? 16 : 8));
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
