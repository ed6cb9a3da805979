#include "jpeg2000/block_decoder.h"

#include <algorithm>
#include <bit>

#include "failure.h"
#include "jpeg2000/raw_bits.h"

namespace tessaret::codecs {
namespace {

// A word of flags tells of a column of four rows, and of what is around it. Bits 0 to 17: which coefficients are significant, three bits
// for each row from the one above to the one below, of which the middle one is the column's own. From bit 32 on three bits for each of
// these rows as well: whether the column's coefficient is negative, was visited in this plane, was refined before.
//
// The first row's bits shifted by its own place, 0, 3, 6 or 9, are another row's.
using Flags = std::uint64_t;

constexpr Flags kAround = (Flags{1} << 18) - 1;
constexpr std::uint32_t kEachRow = 0x249;  // the places of rows
constexpr std::uint32_t kLastRow = 9;

constexpr std::uint32_t kOwn = 4;  // whether it is significant
constexpr std::uint32_t kNegativeAbove = 32;
constexpr std::uint32_t kNegative = 35;
constexpr std::uint32_t kVisited = 36;
constexpr std::uint32_t kRefined = 37;
constexpr std::uint32_t kNegativeBelow = 38;

constexpr Flags kAllVisited = Flags{kEachRow} << kVisited;

constexpr Flags At(std::uint32_t bit) { return Flags{1} << bit; }

std::uint32_t LowestBit(std::uint32_t bits) {
  return static_cast<std::uint32_t>(std::countr_zero(bits));
}

/// Of four rows: 0 to 3 for their places.
constexpr std::uint32_t RowAt(std::uint32_t place) { return place * 11 >> 5; }

constexpr std::uint32_t kPassesBeforeBypass = 10;

enum PassKind { kSignificance, kRefinement, kCleanup };

/// The first pass is a cleanup, the only one of the highest plane.
PassKind KindOf(std::uint32_t pass) { return static_cast<PassKind>((pass + 2) % 3); }

bool IsRaw(std::uint32_t pass, std::uint32_t style) {
  return (style & kBypass) != 0 && pass >= kPassesBeforeBypass && KindOf(pass) != kCleanup;
}

/// In raw bits a sign is one, and every decision is.
struct RawSource {
  static constexpr bool kIsRaw = true;
  RawBits bits;
};

struct MqSource {
  static constexpr bool kIsRaw = false;
  MqDecoder mq;
};

/// Rows of a column around which something is significant, while they are not.
std::uint32_t Candidates(Flags flags) {
  const auto around = static_cast<std::uint32_t>(flags & kAround);
  const std::uint32_t rows = around | around >> 1 | around >> 2;
  return (rows | rows >> 3 | rows >> 6) & ~(around >> kOwn) & kEachRow;
}

std::uint32_t SignNeighbours(const Flags* at, Flags flags, std::uint32_t row) {
  constexpr std::uint32_t kBeside = 0xAA;  // above, left, right, below
  return static_cast<std::uint32_t>(
      (flags >> row & kBeside) | (flags >> (kNegativeAbove + row) & 1) |
      (at[-1] >> (kNegative + row) & 1) << 2 | (at[1] >> (kNegative + row) & 1) << 4 |
      (flags >> (kNegativeBelow + row) & 1) << 6);
}

template <class Source>
[[gnu::always_inline]] inline std::uint32_t DecodeSign(Source& source, MqContext* contexts,
                                                       const Flags* at, Flags flags,
                                                       std::uint32_t row) {
  if constexpr (Source::kIsRaw) {
    return source.bits.Decode();
  } else {
    const std::uint32_t context = kSignContexts[SignNeighbours(at, flags, row)];
    return source.mq.DecodeEven(contexts[context & ~std::uint32_t{kSignIsTurned}]) ^ context >> 7;
  }
}

/// Makes a row's coefficient significant for all around it. `flags` are those at `at`, which are kept elsewhere.
template <bool kIsCausal>
[[gnu::always_inline]] inline void Spread(Flags* at, Flags& flags, std::size_t stride,
                                          std::uint32_t row, std::uint32_t sign) {
  const Flags negative{sign};
  flags |= At(kOwn + row) | negative << (kNegative + row);
  at[-1] |= At(kOwn + 1 + row);
  at[1] |= At(kOwn - 1 + row);
  const Flags isFirst = row == 0 && !kIsCausal ? 1 : 0;
  Flags* above = at - stride;
  above[-1] |= isFirst << 17;
  above[0] |= isFirst << 16 | (negative & isFirst) << (kNegativeBelow + kLastRow);
  above[1] |= isFirst << 15;
  const Flags isLast = row == kLastRow ? 1 : 0;
  Flags* below = at + stride;
  below[-1] |= isLast << 2;
  below[0] |= isLast << 1 | (negative & isLast) << kNegativeAbove;
  below[1] |= isLast;
}

/// Contexts of refinements, by whether the coefficient was refined before and by whether anything beside it is significant.
constexpr std::uint8_t kRefinements[] = {kFirstRefinement, kFirstRefinement + 1, kRefinedBefore,
                                         kRefinedBefore};

/// The value of a coefficient whose first bit is in this plane.
constexpr std::uint32_t FirstValue(std::uint32_t plane, std::uint32_t sign) {
  return std::uint32_t{3} << plane | sign << 31;
}

}  // namespace

std::uint32_t EndOfPasses(std::uint32_t pass, std::uint32_t style) {
  constexpr std::uint32_t kNever = 1000;
  if ((style & kTerminateAll) != 0) return pass + 1;
  if ((style & kBypass) == 0) return kNever;
  if (pass < kPassesBeforeBypass) return kPassesBeforeBypass;
  return KindOf(pass) == kSignificance ? pass + 2 : pass + 1;
}

/// What a pass goes over: strips of four rows, of which the last may have fewer.
template <class Each>
[[gnu::always_inline]] static inline void ForStrips(Flags* flags, std::uint32_t* coefficients,
                                                    const BlockShape& shape, std::size_t stride,
                                                    Each each) {
  for (std::uint32_t y = 0; y < shape.height; y += 4) {
    const std::uint32_t rows = std::min(shape.height - y, 4U);
    flags += stride;
    each(flags, coefficients, kEachRow & ((1U << 3 * rows) - 1));
    coefficients += 4 * std::size_t{shape.width};
  }
}

template <bool kIsCausal, class Source>
void BlockDecoder::DecodeSignificance(Source& source, std::uint32_t plane) {
  Source local = source;
  MqContext* const contexts = contexts_.data();
  const SignificanceContexts& significance = *significance_;
  const std::size_t stride = stride_;
  const std::uint32_t width = shape_.width;
  ForStrips(flags_.data() + 1, coefficients_.data(), shape_, stride,
            [&](Flags* at, std::uint32_t* coefficients, std::uint32_t rows) {
              for (const Flags* const end = at + width; at != end; ++at, coefficients += 4) {
                Flags flags = *at;
                if ((flags & kAround) == 0) continue;
                std::uint32_t left = Candidates(flags) & rows;
                if (left == 0) continue;
                do {
                  const std::uint32_t row = LowestBit(left);
                  left &= left - 1;
                  flags |= At(kVisited + row);
                  std::uint32_t decision;
                  if constexpr (Source::kIsRaw) {
                    decision = local.bits.Decode();
                  } else {
                    decision = local.mq.DecodeEven(contexts[significance[flags >> row & 0x1FF]]);
                  }
                  if (decision == 0) continue;
                  const std::uint32_t sign = DecodeSign(local, contexts, at, flags, row);
                  coefficients[RowAt(row)] = FirstValue(plane, sign);
                  Spread<kIsCausal>(at, flags, stride, row, sign);
                  left |= (8U << row) & rows & ~static_cast<std::uint32_t>(flags >> kOwn);
                } while (left != 0);
                *at = flags;
              }
            });
  source = local;
}

template <class Source>
void BlockDecoder::DecodeRefinement(Source& source, std::uint32_t plane) {
  Source local = source;
  MqContext* const contexts = contexts_.data();
  const std::uint32_t width = shape_.width;
  ForStrips(
      flags_.data() + 1, coefficients_.data(), shape_, stride_,
      [&](Flags* at, std::uint32_t* coefficients, std::uint32_t) {
        for (const Flags* const end = at + width; at != end; ++at, coefficients += 4) {
          Flags flags = *at;
          auto left = static_cast<std::uint32_t>(flags >> kOwn & ~(flags >> kVisited)) & kEachRow;
          if (left == 0) continue;
          do {
            const std::uint32_t row = LowestBit(left);
            left &= left - 1;
            std::uint32_t bit;
            if constexpr (Source::kIsRaw) {
              bit = local.bits.Decode();
            } else {
              constexpr std::uint32_t kBeside = 0x1EF;
              const std::uint32_t isBeside = (flags >> row & kBeside) != 0 ? 1 : 0;
              const auto wasRefined = static_cast<std::uint32_t>(flags >> (kRefined + row) & 1);
              const std::uint32_t context = kRefinements[wasRefined << 1 | isBeside];
              bit = local.mq.DecodeEven(contexts[context]);
            }
            flags |= At(kRefined + row);
            // The half that stood for this bit goes, another one comes.
            coefficients[RowAt(row)] += (2 * bit - 1) << plane;
          } while (left != 0);
          *at = flags;
        }
      });
  source = local;
}

template <bool kIsCausal>
void BlockDecoder::DecodeCleanup(MqDecoder& mq, std::uint32_t plane) {
  MqSource local{mq};
  MqContext* const contexts = contexts_.data();
  const SignificanceContexts& significance = *significance_;
  const std::size_t stride = stride_;
  const std::uint32_t width = shape_.width;
  ForStrips(flags_.data() + 1, coefficients_.data(), shape_, stride,
            [&](Flags* at, std::uint32_t* coefficients, std::uint32_t rows) {
              for (const Flags* const end = at + width; at != end; ++at, coefficients += 4) {
                Flags flags = *at;
                std::uint32_t left =
                    rows & ~static_cast<std::uint32_t>(flags >> kOwn | flags >> kVisited);
                if ((flags & (kAround | kAllVisited)) == 0 && rows == kEachRow) {
                  if (local.mq.Decode(contexts[kRunLength]) == 0) continue;
                  std::uint32_t run = local.mq.DecodeEven(contexts[kUniform]) << 1;
                  run |= local.mq.DecodeEven(contexts[kUniform]);
                  const std::uint32_t row = 3 * run;
                  const std::uint32_t sign = DecodeSign(local, contexts, at, flags, row);
                  coefficients[run] = FirstValue(plane, sign);
                  Spread<kIsCausal>(at, flags, stride, row, sign);
                  left &= ~std::uint32_t{1} << row;
                }
                for (; left != 0; left &= left - 1) {
                  const std::uint32_t row = LowestBit(left);
                  if (local.mq.DecodeEven(contexts[significance[flags >> row & 0x1FF]]) == 0)
                    continue;
                  const std::uint32_t sign = DecodeSign(local, contexts, at, flags, row);
                  coefficients[RowAt(row)] = FirstValue(plane, sign);
                  Spread<kIsCausal>(at, flags, stride, row, sign);
                }
                *at = flags & ~kAllVisited;
              }
            });
  mq = local.mq;
}

void BlockDecoder::CheckSegmentSymbol(MqDecoder& mq, std::uint32_t pass) {
  std::uint32_t symbol = 0;
  for (int bit = 0; bit < 4; ++bit) symbol = symbol << 1 | mq.Decode(contexts_[kUniform]);
  // What was cut to some rate may end a little early in its last pass.
  const bool isCut = pass + 1 == passes_ && pass + 3 < 3 * shape_.planes;
  if (symbol != 0xA && !isCut) Fail("a segment symbol of the code stream is %X", symbol);
}

void BlockDecoder::ResetContexts() {
  contexts_.fill(MqStateOf(0));
  contexts_[kFirstSignificance] = MqStateOf(4);
  contexts_[kRunLength] = MqStateOf(3);
  contexts_[kUniform] = MqStateOf(46);
}

template <bool kIsCausal>
void BlockDecoder::DecodeMqPasses(std::uint32_t pass, std::uint32_t end) {
  MqSource source{MqDecoder(segment_.data() + kMqBefore)};
  for (; pass < end; ++pass) {
    const std::uint32_t plane = shape_.planes - 1 - (pass + 2) / 3;
    switch (KindOf(pass)) {
      case kSignificance:
        DecodeSignificance<kIsCausal>(source, plane);
        break;
      case kRefinement:
        DecodeRefinement(source, plane);
        break;
      case kCleanup:
        DecodeCleanup<kIsCausal>(source.mq, plane);
        if ((shape_.style & kSegmentSymbols) != 0) CheckSegmentSymbol(source.mq, pass);
        break;
    }
    if ((shape_.style & kResetContexts) != 0) ResetContexts();
  }
}

template <bool kIsCausal>
void BlockDecoder::DecodeRawPasses(std::uint32_t pass, std::uint32_t end) {
  RawSource source{RawBits(segment_.data() + kMqBefore)};
  for (; pass < end; ++pass) {
    const std::uint32_t plane = shape_.planes - 1 - (pass + 2) / 3;
    if (KindOf(pass) == kSignificance) {
      DecodeSignificance<kIsCausal>(source, plane);
    } else {
      DecodeRefinement(source, plane);
    }
    if ((shape_.style & kResetContexts) != 0) ResetContexts();
  }
}

void BlockDecoder::Begin(const BlockShape& shape) {
  shape_ = shape;
  stride_ = std::size_t{shape.width} + 2;
  const std::size_t strips = (std::size_t{shape.height} + 3) / 4;
  std::fill_n(flags_.begin(), stride_ * (strips + 2), 0);
  std::fill_n(coefficients_.begin(), 4 * strips * shape.width, 0);
  significance_ = &SignificanceContextsOf(shape.band);
  ResetContexts();
}

void BlockDecoder::Decode(const BlockShape& shape, std::span<const BlockPart> parts) {
  Begin(shape);
  passes_ = 0;
  for (const BlockPart& part : parts) passes_ += part.passes;
  const std::uint32_t all = shape.planes == 0 ? 0 : 3 * shape.planes - 2;
  std::uint32_t pass = 0;
  while (!parts.empty() && pass < all) {
    const std::uint32_t most = EndOfPasses(pass, shape.style);
    std::uint32_t end = pass;
    segment_.assign(kMqBefore, 0);
    while (!parts.empty() && end < most) {
      segment_.insert(segment_.end(), parts[0].bytes.begin(), parts[0].bytes.end());
      end += parts[0].passes;
      parts = parts.subspan(1);
    }
    segment_.resize(segment_.size() + kMqBehind, 0xFF);
    const std::uint32_t wanted = std::min(end, all);
    const bool isCausal = (shape.style & kVerticallyCausal) != 0;
    if (IsRaw(pass, shape.style)) {
      isCausal ? DecodeRawPasses<true>(pass, wanted) : DecodeRawPasses<false>(pass, wanted);
    } else {
      isCausal ? DecodeMqPasses<true>(pass, wanted) : DecodeMqPasses<false>(pass, wanted);
    }
    pass = end;
  }
}

}  // namespace tessaret::codecs
