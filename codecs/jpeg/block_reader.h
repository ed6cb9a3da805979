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
    return ReadInto(reader, [&](std::size_t at, std::int32_t value) {
      block[kZigzag[at]] = value * quantisation_[at];
    });
  }

  /// As Read, for those who do not want the block.
  void Pass(BitReader& reader) {
    ReadInto(reader, [](std::size_t, std::int32_t) {});
  }

 private:
  /// Bits in registers, of which there are enough for any block.
  struct FastBits {
    ReadyBits ready;
    void Fill() { ready.Fill(); }
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
  /// Each coefficient fills up the bits that are ready, which takes 7 bytes at most and looks at 8.
  static constexpr std::ptrdiff_t kMostBytes = 7 * kBlockSize + 8;

  template <class Take>
  bool ReadInto(BitReader& reader, Take take) {
    const ReadyBits ready = reader.Ready();
    if (!reader.HasBytes(ready, kMostBytes)) return ReadWith(reader, take);
    FastBits bits{ready};
    const bool hasOthers = ReadWith(bits, take);
    reader.PutBack(bits.ready);
    return hasOthers;
  }

  template <class Bits, class Take>
  bool ReadWith(Bits& bits, Take take) {
    bits.Fill();
    before_ += dc_.Read(bits);
    if (before_ != static_cast<std::int16_t>(before_)) Fail("a coefficient is out of its range");
    take(0, before_);
    std::size_t at = 1;
    do {
      bits.Fill();
      const AcCodes::Code code = ac_.Read(bits);
      at += code.run;
      if (at >= kBlockSize) {
        if (code.run != AcCodes::kEndRun) Fail("a block has too many coefficients");
        break;
      }
      take(at, code.value);
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
