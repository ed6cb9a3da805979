#include "jpeg/progressive_scans.h"

#include <algorithm>
#include <utility>

#include "failure.h"
#include "jpeg/bit_reader.h"
#include "jpeg/coefficient_codes.h"
#include "jpeg/inverse_dct.h"

namespace tessaret::codecs {
namespace {

constexpr unsigned kMostShift = 13;

[[noreturn]] void FailRun() { Fail("a block has too many coefficients"); }

/// Throws where 16 bits do not hold it.
std::int16_t Shifted(std::int32_t value, unsigned shift) {
  const std::int32_t shifted = value * (std::int32_t{1} << shift);
  if (shifted != static_cast<std::int16_t>(shifted)) Fail("a coefficient is out of its range");
  return static_cast<std::int16_t>(shifted);
}

/// One bit, which need not be ready.
bool TakeBit(BitReader& reader) {
  reader.Fill();
  return reader.Take(1) != 0;
}

/// Blocks of a scan, one after the other.
class DcFirst {
 public:
  explicit DcFirst(unsigned low) : low_(low) {}
  void Add(const HuffmanSpec& dc) { parts_.push_back({DcCodes(dc), 0}); }
  void Restart() {
    for (Part& part : parts_) part.before = 0;
  }
  void Read(BitReader& reader, std::size_t at, std::int16_t* block) {
    Part& part = parts_[at];
    reader.Fill();
    part.before += part.codes.Read(reader);
    block[0] = Shifted(Shifted(part.before, 0), low_);
  }
  void RequireEnded() const {}

 private:
  struct Part {
    DcCodes codes;
    std::int32_t before;
  };
  unsigned low_;
  std::vector<Part> parts_;
};

class DcMore {
 public:
  explicit DcMore(unsigned low) : bit_(1 << low) {}
  void Restart() {}
  void Read(BitReader& reader, std::size_t /*at*/, std::int16_t* block) const {
    if (TakeBit(reader)) block[0] = static_cast<std::int16_t>(block[0] | bit_);
  }
  void RequireEnded() const {}

 private:
  int bit_;
};

/// What scans of a band have in common: runs of blocks in which nothing more comes.
class Band {
 public:
  Band(const HuffmanSpec& ac, const ScanHeader& scan)
      : table_(ac), start_(scan.start), end_(scan.end) {}
  void Restart() { ended_ = 0; }
  void RequireEnded() const {
    if (ended_ != 0) Fail("a run of blocks goes beyond the image");
  }

 protected:
  struct Code {
    unsigned run;
    unsigned size;
  };
  static constexpr unsigned kSixteen = 15;  // a run of it without a value is one of sixteen zeros

  Code ReadCode(BitReader& reader) const {
    reader.Fill();
    const HuffmanTable::Code code = table_.Find(reader.Peek(16));
    if (code.length == 0) FailNoCode();
    reader.Drop(code.length);
    return {code.value / 16u, code.value % 16u};
  }
  void BeginRun(BitReader& reader, unsigned bits) {
    ended_ = 1u << bits;
    if (bits != 0) ended_ += reader.Take(bits);
  }

  HuffmanTable table_;
  std::size_t start_;
  std::size_t end_;
  std::uint32_t ended_ = 0;  // blocks with nothing more, the present one among them
};

class AcFirst : public Band {
 public:
  AcFirst(const HuffmanSpec& ac, const ScanHeader& scan) : Band(ac, scan), low_(scan.low) {}

  void Read(BitReader& reader, std::size_t /*at*/, std::int16_t* block) {
    for (std::size_t at = start_; ended_ == 0 && at <= end_;) {
      const Code code = ReadCode(reader);
      if (code.size != 0) {
        at += code.run;
        if (at > end_) FailRun();
        block[at++] = Shifted(SignedValue(reader.Take(code.size), code.size), low_);
      } else if (code.run == kSixteen) {
        at += 16;
        if (at > end_ + 1) FailRun();
      } else {
        BeginRun(reader, code.run);
      }
    }
    if (ended_ != 0) --ended_;
  }

 private:
  unsigned low_;
};

class AcMore : public Band {
 public:
  AcMore(const HuffmanSpec& ac, const ScanHeader& scan)
      : Band(ac, scan), bit_(static_cast<std::int16_t>(1 << scan.low)) {}

  void Read(BitReader& reader, std::size_t /*at*/, std::int16_t* block) {
    std::size_t at = start_;
    while (ended_ == 0 && at <= end_) {
      const Code code = ReadCode(reader);
      if (code.size == 0 && code.run != kSixteen) {
        BeginRun(reader, code.run);
        break;
      }
      if (code.size > 1) Fail("a coefficient grows by more than a bit");
      const bool isPositive = code.size != 0 && reader.Take(1) != 0;
      at = Pass(reader, block, at, code.run);
      if (at > end_) FailRun();
      if (code.size != 0) block[at] = static_cast<std::int16_t>(isPositive ? bit_ : -bit_);
      ++at;
    }
    if (ended_ == 0) return;
    Pass(reader, block, at, kBlockSize);
    --ended_;
  }

 private:
  /// Steps over `zeros` zeros, to the next one, or behind the band; takes a bit for each coefficient on the way that is none.
  std::size_t Pass(BitReader& reader, std::int16_t* block, std::size_t at,
                   std::size_t zeros) const {
    for (; at <= end_; ++at) {
      if (block[at] == 0) {
        if (zeros-- == 0) return at;
      } else if (TakeBit(reader)) {
        block[at] = static_cast<std::int16_t>(block[at] + (block[at] > 0 ? bit_ : -bit_));
      }
    }
    return at;
  }

  std::int16_t bit_;
};

/// Calls blockAt(index of the component, row, column) for where each block is, and gives the bytes that were read.
template <class Blocks, class BlockAt>
std::size_t ReadAll(Bytes rest, const DctLayout& layout, const ScanHeader& scan,
                    std::uint32_t restartInterval, Blocks blocks, BlockAt blockAt) {
  return ReadBlocks(
      rest, layout, scan, restartInterval, [&] { blocks.Restart(); },
      [&](BitReader& bits, std::size_t at, std::uint32_t row, std::uint32_t column) {
        blocks.Read(bits, at, blockAt(scan.components[at].index, row, column));
      },
      [&] { blocks.RequireEnded(); });
}

}  // namespace

ProgressiveScans::ProgressiveScans(const DctLayout& layout)
    : layout_(layout), components_(layout.count) {
  for (std::size_t at = 0; at < layout.count; ++at) {
    const DctComponent& component = layout.components[at];
    components_[at].coefficients.resize(std::size_t{component.wholeAcross} * component.wholeDown *
                                        kBlockSize);
    components_[at].missing.fill(-1);
  }
}

void ProgressiveScans::RequireNext(const ScanHeader& scan) {
  const bool isDc = scan.start == 0;
  if (isDc ? scan.end != 0 : scan.end < scan.start || scan.end >= kBlockSize || scan.count != 1) {
    Fail("a scan has coefficients %u to %u of %zu components", scan.start, scan.end, scan.count);
  }
  if (scan.low > kMostShift || (scan.high != 0 && scan.high != scan.low + 1)) {
    Fail("a scan goes from bit %u to bit %u", scan.high, scan.low);
  }
  for (std::size_t at = 0; at < scan.count; ++at) {
    Component& component = components_[scan.components[at].index];
    if (!isDc && component.missing[0] < 0) Fail("a scan lacks the one before it");
    for (std::size_t k = scan.start; k <= scan.end; ++k) {
      const int before = scan.high == 0 ? -1 : scan.high;
      if (component.missing[k] != before) Fail("a scan does not go on from those before");
      component.missing[k] = static_cast<std::int8_t>(scan.low);
    }
  }
}

std::size_t ProgressiveScans::Read(Bytes rest, const FrameHeader& frame, const ScanHeader& scan,
                                   const DctTables& tables) {
  RequireNext(scan);
  const auto readAll = [&](auto blocks) {
    return ReadAll(rest, layout_, scan, tables.restartInterval, std::move(blocks),
                   [this](std::size_t index, std::uint32_t row, std::uint32_t column) {
                     const std::size_t across = layout_.components[index].wholeAcross;
                     return components_[index].coefficients.data() +
                            (row * across + column) * kBlockSize;
                   });
  };
  if (scan.start == 0 && scan.high == 0) {
    DcFirst blocks(scan.low);
    for (std::size_t at = 0; at < scan.count; ++at) {
      const ScanComponent& component = scan.components[at];
      blocks.Add(RequireTable(tables.huffman.dc, component.dcTable));
      components_[component.index].quantisation =
          tables.quantisation.Require(frame.components[component.index].quantisation);
    }
    return readAll(std::move(blocks));
  }
  if (scan.start == 0) return readAll(DcMore(scan.low));
  const HuffmanSpec& ac = RequireTable(tables.huffman.ac, scan.components[0].acTable);
  return scan.high == 0 ? readAll(AcFirst(ac, scan)) : readAll(AcMore(ac, scan));
}

void ProgressiveScans::RequireAll() const {
  for (std::size_t index = 0; index < components_.size(); ++index) {
    const auto& missing = components_[index].missing;
    if (std::any_of(missing.begin(), missing.end(), [](int bits) { return bits != 0; })) {
      Fail("scans of component %zu are missing", index + 1);
    }
  }
}

DctPlane ProgressiveScans::Samples(std::size_t index) const {
  const Component& component = components_[index];
  DctPlane plane = MakeDctPlane(layout_.components[index]);
  const std::int16_t* from = component.coefficients.data();
  for (std::uint32_t row = 0; row < plane.component.wholeDown; ++row) {
    for (std::uint32_t column = 0; column < plane.component.wholeAcross; ++column) {
      DctBlock block;
      for (std::size_t at = 0; at < kBlockSize; ++at, ++from) {
        block[kZigzag[at]] = *from * component.quantisation[at];
      }
      InverseDct12(block, plane.Block(row, column), plane.Stride());
    }
  }
  return plane;
}

}  // namespace tessaret::codecs
