// The MQ decoder of code blocks (ISO/IEC 15444-1, C.3), with an interval of 64 bits so that bytes come in six at a time.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace tessaret::codecs {

/// A state of a context together with the symbol that is likelier in it. What a decision needs lies side by side.
struct MqContext {
  std::uint64_t range = 0;  // of the less likely symbol: Qe, at the interval's place
  std::uint8_t likely = 0;  // the more likely symbol
  std::uint8_t self = 0;    // this state's place in the table
  std::uint8_t afterMore =
      0;  // the state after the more likely symbol, where the interval became small
  std::uint8_t afterLess = 0;  // and after the less likely one
};

/// Where the interval's 16 bits begin.
inline constexpr std::uint32_t kMqInterval = 48;

/// Two for each row of table C.2: with 0 as the likelier symbol, and with 1.
inline constexpr std::size_t kMqStates = 94;
extern const std::array<MqContext, kMqStates> kMqTable;

/// The place of a row of table C.2 with 0 as the likelier symbol.
constexpr std::size_t MqStateOf(std::size_t row) { return 2 * row; }

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
    const std::uint64_t range = context.range;
    interval_ -= range;
    if (distance_ <= interval_) [[likely]] {
      if (static_cast<std::int64_t>(interval_) < 0) [[likely]]
        return context.likely;
      return Exchange(context, interval_ < range);
    }
    distance_ -= interval_;
    const bool isLess = interval_ >= range;
    interval_ = range;
    return Exchange(context, isLess);
  }

  /// The same without a branch but for more bytes: better where neither symbol is likely.
  [[gnu::always_inline]] std::uint32_t DecodeEven(MqContext& context) {
    const std::uint64_t range = context.range;
    const std::uint64_t rest = interval_ - range;
    const bool isLower = distance_ > rest;
    const std::uint64_t mask = std::uint64_t{0} - std::uint64_t{isLower};
    const bool isLess = isLower != (rest < range);
    interval_ = rest ^ ((rest ^ range) & mask);
    distance_ -= rest & mask;
    const std::uint32_t symbol = context.likely ^ std::uint32_t{isLess};
    const bool isSmall = static_cast<std::int64_t>(interval_) >= 0;
    std::uint32_t next = isSmall ? context.afterMore : context.self;
    next = isLess ? context.afterLess : next;
    context = kMqTable[next];
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
    const std::uint32_t symbol = context.likely ^ std::uint32_t{isLess};
    context = kMqTable[isLess ? context.afterLess : context.afterMore];
    Widen();
    return symbol;
  }

  [[gnu::always_inline]] void Widen() {
    const int shift = std::countl_zero(interval_);
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
