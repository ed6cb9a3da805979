// The blocks of sequential scans (ITU-T T.81, F.2.2).
#pragma once

#include <cstddef>
#include <cstdint>

#include "failure.h"
#include "jpeg/bit_reader.h"
#include "jpeg/coefficient_codes.h"
#include "jpeg/dct_scans.h"
#include "jpeg/inverse_dct.h"
#include "jpeg/quantisation_tables.h"

namespace tessaret::codecs {

/// Bits in registers, of which there are enough for any block.
struct FastBits {
  /// What the longest code takes with its value.
  static constexpr unsigned kNeeded = 32;

  ReadyBits ready;

  /// Has kNeeded bits ready. Seldom has to do anything for that, which keeps it out of the way from code to code.
  void Fill() {
    if (ready.count < kNeeded) ready.Fill();
  }
  [[nodiscard]] std::uint32_t Peek(unsigned count) const {
    return static_cast<std::uint32_t>(ready.held >> (64 - count));
  }
  void Drop(unsigned count) { ready.Drop(count); }
  std::uint32_t Take(unsigned count) {
    const std::uint32_t bits = Peek(count);
    Drop(count);
    return bits;
  }
};

/// Calls read(bits) with FastBits where there are enough, and with the reader itself otherwise.
template <class ReadBlock>
auto WithFastBits(BitReader& reader, ReadBlock read) {
  // Each coefficient fills up the bits that are ready, which takes 7 bytes at most and looks at 8.
  constexpr std::ptrdiff_t kMostBytes = 7 * kBlockSize + 8;
  if (!reader.HasBytes(reader.Ready(), kMostBytes)) return read(reader);
  FastBits bits{reader.Ready()};
  const auto result = read(bits);
  reader.PutBack(bits.ready);
  return result;
}

/// One component in a scan.
class BlockReader {
 public:
  /// Keeps a reference to the factors.
  BlockReader(const HuffmanSpec& dc, const HuffmanSpec& ac, const Quantisation& quantisation)
      : dc_(dc), ac_(ac), quantisation_(quantisation) {}

  /// Behind restart markers the first coefficient does not go on from the last block's.
  void Restart() { before_ = 0; }

  /// Sets the block, dequantised. Whether it has other coefficients than the first. Throws CodecFailure for damage, but not where bits
  /// are missing.
  bool Read(BitReader& reader, DctBlock& block) {
    block.fill(0);
    return WithFastBits(reader, [&](auto& bits) { return ReadWith(bits, block); });
  }

 private:
  template <class Bits>
  bool ReadWith(Bits& bits, DctBlock& block) {
    bits.Fill();
    before_ += dc_.Read(bits);
    if (before_ != static_cast<std::int16_t>(before_)) Fail("a coefficient is out of its range");
    block[0] = before_ * quantisation_[0];
    std::size_t at = 1;
    do {
      bits.Fill();
      const AcCodes::Code code = ac_.Read(bits);
      at += code.run;
      if (at >= kBlockSize) {
        if (code.run != AcCodes::kEndRun) Fail("a block has too many coefficients");
        break;
      }
      block[kZigzag[at]] = code.value * quantisation_[at];
    } while (++at < kBlockSize);
    return at != 1 + AcCodes::kEndRun;
  }

  DcCodes dc_;
  AcCodes ac_;
  const Quantisation& quantisation_;
  std::int32_t before_ = 0;  // first coefficient of the last block
};

/// For a component of a scan. Throws CodecFailure where it has no tables. Keeps a reference to `tables`.
BlockReader MakeBlockReader(const DctTables& tables, const ScanComponent& component,
                            const FrameHeader& header);

}  // namespace tessaret::codecs
