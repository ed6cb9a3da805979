#include "codecs/plain_blocks.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace tessaret::codecs::test {
namespace {

struct Row {
  std::uint32_t qe;
  std::uint32_t nmps;
  std::uint32_t nlps;
  bool isSwitched;
};

/// Table C.2.
constexpr Row kRows[] = {{0x5601, 1, 1, true},    {0x3401, 2, 6, false},   {0x1801, 3, 9, false},
                         {0x0AC1, 4, 12, false},  {0x0521, 5, 29, false},  {0x0221, 38, 33, false},
                         {0x5601, 7, 6, true},    {0x5401, 8, 14, false},  {0x4801, 9, 14, false},
                         {0x3801, 10, 14, false}, {0x3001, 11, 17, false}, {0x2401, 12, 18, false},
                         {0x1C01, 13, 20, false}, {0x1601, 29, 21, false}, {0x5601, 15, 14, true},
                         {0x5401, 16, 14, false}, {0x5101, 17, 15, false}, {0x4801, 18, 16, false},
                         {0x3801, 19, 17, false}, {0x3401, 20, 18, false}, {0x3001, 21, 19, false},
                         {0x2801, 22, 19, false}, {0x2401, 23, 20, false}, {0x2201, 24, 21, false},
                         {0x1C01, 25, 22, false}, {0x1801, 26, 23, false}, {0x1601, 27, 24, false},
                         {0x1401, 28, 25, false}, {0x1201, 29, 26, false}, {0x1101, 30, 27, false},
                         {0x0AC1, 31, 28, false}, {0x09C1, 32, 29, false}, {0x08A1, 33, 30, false},
                         {0x0521, 34, 31, false}, {0x0441, 35, 32, false}, {0x02A1, 36, 33, false},
                         {0x0221, 37, 34, false}, {0x0141, 38, 35, false}, {0x0111, 39, 36, false},
                         {0x0085, 40, 37, false}, {0x0049, 41, 38, false}, {0x0025, 42, 39, false},
                         {0x0015, 43, 40, false}, {0x0009, 44, 41, false}, {0x0005, 45, 42, false},
                         {0x0001, 45, 43, false}, {0x5601, 46, 46, false}};

std::uint32_t BecomesLess(PlainMq::Context& context) {
  const std::uint32_t symbol = 1 - context.likely;
  if (kRows[context.row].isSwitched) context.likely = symbol;
  context.row = kRows[context.row].nlps;
  return symbol;
}

std::uint32_t BecomesMore(PlainMq::Context& context) {
  context.row = kRows[context.row].nmps;
  return context.likely;
}

/// The registers of figure C.3.
class Encoder {
 public:
  void Encode(PlainMq::Context& context, std::uint32_t symbol) {
    const std::uint32_t qe = kRows[context.row].qe;
    a_ -= qe;
    if (symbol == context.likely) {
      if ((a_ & 0x8000) != 0) {
        c_ += qe;
        return;
      }
      if (a_ < qe) {
        a_ = qe;
      } else {
        c_ += qe;
      }
      BecomesMore(context);
    } else {
      if (a_ < qe) {
        c_ += qe;
      } else {
        a_ = qe;
      }
      BecomesLess(context);
    }
    do {
      a_ <<= 1;
      c_ <<= 1;
      if (--ct_ == 0) ByteOut();
    } while ((a_ & 0x8000) == 0);
  }

  std::vector<std::uint8_t> Flush() {
    const std::uint32_t end = c_ + a_;
    c_ |= 0xFFFF;
    if (c_ >= end) c_ -= 0x8000;
    c_ <<= ct_;
    ByteOut();
    c_ <<= ct_;
    ByteOut();
    if (bytes_.back() == 0xFF) bytes_.pop_back();
    return {bytes_.begin() + 1, bytes_.end()};
  }

 private:
  void ByteOut() {
    if (bytes_.back() != 0xFF && c_ >= 0x8000000) {
      ++bytes_.back();
      c_ &= 0x7FFFFFF;
    }
    if (bytes_.back() == 0xFF) {
      bytes_.push_back(static_cast<std::uint8_t>(c_ >> 20));
      c_ &= 0xFFFFF;
      ct_ = 7;
    } else {
      bytes_.push_back(static_cast<std::uint8_t>(c_ >> 19));
      c_ &= 0x7FFFF;
      ct_ = 8;
    }
  }

  std::uint32_t a_ = 0x8000;
  std::uint32_t c_ = 0;
  std::uint32_t ct_ = 12;
  std::vector<std::uint8_t> bytes_ = {0};  // with one before the first
};

/// D.6: the bits of passes without MQ.
class PlainBits {
 public:
  explicit PlainBits(Bytes segment) : segment_(segment) {}
  std::uint32_t Decode() {
    if (left_ == 0) {
      left_ = byte_ == 0xFF ? 7 : 8;
      byte_ = at_ < segment_.size() ? segment_[at_++] : 0xFF;
    }
    return byte_ >> --left_ & 1;
  }

 private:
  Bytes segment_;
  std::size_t at_ = 0;
  std::uint32_t byte_ = 0;
  std::uint32_t left_ = 0;
};

class Block {
 public:
  explicit Block(const BlockShape& shape)
      : shape_(shape), cells_(std::size_t{shape.width} * shape.height) {
    Reset();
  }

  void Segment(Bytes bytes, std::uint32_t pass, std::uint32_t end);
  [[nodiscard]] std::vector<std::int64_t> Values() const;

 private:
  struct Cell {
    std::int64_t twice = 0;  // the size
    bool isNegative = false;
    bool isSignificant = false;
    bool isVisited = false;
    bool isRefined = false;
  };

  void Reset() {
    contexts_.fill({});
    contexts_[0].row = 4;
    contexts_[17].row = 3;
    contexts_[18].row = 46;
  }

  Cell& At(std::uint32_t x, std::uint32_t y) { return cells_[std::size_t{y} * shape_.width + x]; }

  /// A neighbour, as seen from row `y`: of the next four rows nothing is known where blocks are vertically causal.
  const Cell* Near(std::uint32_t x, std::uint32_t y, int dx, int dy) {
    const std::int64_t nx = std::int64_t{x} + dx;
    const std::int64_t ny = std::int64_t{y} + dy;
    if (nx < 0 || ny < 0 || nx >= shape_.width || ny >= shape_.height) return nullptr;
    if ((shape_.style & kVerticallyCausal) != 0 && ny / 4 > y / 4) return nullptr;
    return &At(static_cast<std::uint32_t>(nx), static_cast<std::uint32_t>(ny));
  }
  std::uint32_t Is(std::uint32_t x, std::uint32_t y, int dx, int dy) {
    const Cell* cell = Near(x, y, dx, dy);
    return cell != nullptr && cell->isSignificant ? 1 : 0;
  }
  int SignOf(std::uint32_t x, std::uint32_t y, int dx, int dy) {
    const Cell* cell = Near(x, y, dx, dy);
    return cell == nullptr || !cell->isSignificant ? 0 : cell->isNegative ? -1 : 1;
  }

  std::uint32_t SignificanceContext(std::uint32_t x, std::uint32_t y);
  bool HasNeighbours(std::uint32_t x, std::uint32_t y) {
    std::uint32_t sum = 0;
    for (int dy = -1; dy <= 1; ++dy) {
      for (int dx = -1; dx <= 1; ++dx) sum += dx == 0 && dy == 0 ? 0 : Is(x, y, dx, dy);
    }
    return sum != 0;
  }
  void BecomeSignificant(std::uint32_t x, std::uint32_t y, std::uint32_t plane);
  void Significance(std::uint32_t x, std::uint32_t y, std::uint32_t plane);
  void Refinement(std::uint32_t x, std::uint32_t y, std::uint32_t plane);
  void Cleanup(std::uint32_t x, std::uint32_t y, std::uint32_t plane);

  std::uint32_t Decode(std::uint32_t context) {
    return isRaw_ ? bits_.Decode() : mq_.Decode(contexts_[context]);
  }

  BlockShape shape_;
  std::vector<Cell> cells_;
  std::array<PlainMq::Context, 19> contexts_{};
  PlainMq mq_{Bytes{}};
  PlainBits bits_{Bytes{}};
  bool isRaw_ = false;
};

/// Table D.1.
std::uint32_t Block::SignificanceContext(std::uint32_t x, std::uint32_t y) {
  std::uint32_t h = Is(x, y, -1, 0) + Is(x, y, 1, 0);
  std::uint32_t v = Is(x, y, 0, -1) + Is(x, y, 0, 1);
  const std::uint32_t d = Is(x, y, -1, -1) + Is(x, y, 1, -1) + Is(x, y, -1, 1) + Is(x, y, 1, 1);
  if (shape_.band == Band::kHighHigh) {
    const std::uint32_t both = h + v;
    if (d >= 3) return 8;
    if (d == 2) return both >= 1 ? 7 : 6;
    if (d == 1) return both >= 2 ? 5 : both == 1 ? 4 : 3;
    return both >= 2 ? 2 : both;
  }
  if (shape_.band == Band::kHighLow) std::swap(h, v);
  if (h == 2) return 8;
  if (h == 1) return v >= 1 ? 7 : d >= 1 ? 6 : 5;
  if (v == 2) return 4;
  if (v == 1) return 3;
  return d >= 2 ? 2 : d;
}

/// Tables D.2 and D.3.
void Block::BecomeSignificant(std::uint32_t x, std::uint32_t y, std::uint32_t plane) {
  const int h = std::clamp(SignOf(x, y, -1, 0) + SignOf(x, y, 1, 0), -1, 1);
  const int v = std::clamp(SignOf(x, y, 0, -1) + SignOf(x, y, 0, 1), -1, 1);
  struct Entry {
    int h, v;
    std::uint32_t context, turned;
  };
  static constexpr Entry kEntries[] = {{1, 1, 13, 0},  {1, 0, 12, 0},  {1, -1, 11, 0},
                                       {0, 1, 10, 0},  {0, 0, 9, 0},   {0, -1, 10, 1},
                                       {-1, 1, 11, 1}, {-1, 0, 12, 1}, {-1, -1, 13, 1}};
  Cell& cell = At(x, y);
  for (const Entry& entry : kEntries) {
    if (entry.h != h || entry.v != v) continue;
    cell.isNegative = isRaw_ ? bits_.Decode() != 0 : (Decode(entry.context) ^ entry.turned) != 0;
  }
  cell.isSignificant = true;
  cell.twice = std::int64_t{3} << plane;
}

void Block::Significance(std::uint32_t x, std::uint32_t y, std::uint32_t plane) {
  Cell& cell = At(x, y);
  if (cell.isSignificant || !HasNeighbours(x, y)) return;
  cell.isVisited = true;
  if (Decode(SignificanceContext(x, y)) != 0) BecomeSignificant(x, y, plane);
}

void Block::Refinement(std::uint32_t x, std::uint32_t y, std::uint32_t plane) {
  Cell& cell = At(x, y);
  if (!cell.isSignificant || cell.isVisited) return;
  const std::uint32_t bit = Decode(cell.isRefined ? 16 : HasNeighbours(x, y) ? 15 : 14);
  cell.isRefined = true;
  // Bits above this one stay, this one is put where the half was, and there is a half behind it.
  cell.twice = (cell.twice >> (plane + 2) << (plane + 2)) | std::int64_t{bit} << (plane + 1) |
               std::int64_t{1} << plane;
}

void Block::Cleanup(std::uint32_t x, std::uint32_t y, std::uint32_t plane) {
  std::uint32_t first = 0;
  const std::uint32_t rows = std::min(4U, shape_.height - y);
  bool isRun = rows == 4;
  for (std::uint32_t row = 0; row < rows; ++row) {
    const Cell& cell = At(x, y + row);
    isRun = isRun && !cell.isSignificant && !cell.isVisited && !HasNeighbours(x, y + row);
  }
  if (isRun) {
    if (Decode(17) == 0) return;
    first = Decode(18) << 1;
    first |= Decode(18);
    BecomeSignificant(x, y + first, plane);
    ++first;
  }
  for (std::uint32_t row = first; row < rows; ++row) {
    const Cell& cell = At(x, y + row);
    if (cell.isSignificant || cell.isVisited) continue;
    if (Decode(SignificanceContext(x, y + row)) != 0) BecomeSignificant(x, y + row, plane);
  }
}

void Block::Segment(Bytes bytes, std::uint32_t pass, std::uint32_t end) {
  isRaw_ = (shape_.style & kBypass) != 0 && pass >= 10 && pass % 3 != 0;
  mq_ = PlainMq(bytes);
  bits_ = PlainBits(bytes);
  for (; pass < end; ++pass) {
    const std::uint32_t plane = shape_.planes - 1 - (pass + 2) / 3;
    for (std::uint32_t y = 0; y < shape_.height; y += 4) {
      for (std::uint32_t x = 0; x < shape_.width; ++x) {
        if (pass % 3 == 0) {
          Cleanup(x, y, plane);
          continue;
        }
        for (std::uint32_t row = y; row < std::min(y + 4, shape_.height); ++row) {
          pass % 3 == 1 ? Significance(x, row, plane) : Refinement(x, row, plane);
        }
      }
    }
    if (pass % 3 == 0) {
      for (Cell& cell : cells_) cell.isVisited = false;
    }
    if ((shape_.style & kResetContexts) != 0) Reset();
  }
}

std::vector<std::int64_t> Block::Values() const {
  std::vector<std::int64_t> values;
  values.reserve(cells_.size());
  for (const Cell& cell : cells_) values.push_back(cell.isNegative ? -cell.twice : cell.twice);
  return values;
}

}  // namespace

PlainMq::PlainMq(Bytes segment) : segment_(segment) {
  c_ = ByteAt(0) << 16;
  ByteIn();
  c_ <<= 7;
  ct_ -= 7;
  a_ = 0x8000;
}

std::uint32_t PlainMq::ByteAt(std::size_t at) const {
  return at < segment_.size() ? segment_[at] : 0xFF;
}

void PlainMq::ByteIn() {
  if (ByteAt(at_) != 0xFF) {
    c_ += ByteAt(++at_) << 8;
    ct_ = 8;
  } else if (ByteAt(at_ + 1) > 0x8F) {
    c_ += 0xFF00;
    ct_ = 8;
  } else {
    c_ += ByteAt(++at_) << 9;
    ct_ = 7;
  }
}

void PlainMq::Renormalise() {
  do {
    if (ct_ == 0) ByteIn();
    a_ <<= 1;
    c_ <<= 1;
    --ct_;
  } while ((a_ & 0x8000) == 0);
}

std::uint32_t PlainMq::Decode(Context& context) {
  const std::uint32_t qe = kRows[context.row].qe;
  std::uint32_t symbol;
  a_ -= qe;
  if (c_ >> 16 < qe) {
    symbol = a_ < qe ? BecomesMore(context) : BecomesLess(context);
    a_ = qe;
    Renormalise();
    return symbol;
  }
  c_ -= qe << 16;
  if ((a_ & 0x8000) != 0) return context.likely;
  symbol = a_ < qe ? BecomesLess(context) : BecomesMore(context);
  Renormalise();
  return symbol;
}

std::vector<std::uint8_t> EncodePlainly(const std::vector<PlainDecision>& decisions,
                                        std::vector<PlainMq::Context> contexts) {
  Encoder encoder;
  for (const PlainDecision& decision : decisions) {
    encoder.Encode(contexts[decision.context], decision.symbol);
  }
  return encoder.Flush();
}

std::vector<std::int64_t> DecodePlainly(const BlockShape& shape,
                                        const std::vector<BlockPart>& parts) {
  Block block(shape);
  std::uint32_t pass = 0;
  for (std::size_t at = 0; at < parts.size();) {
    // Passes that are coded together come in any number of parts.
    std::vector<std::uint8_t> segment;
    const std::uint32_t begin = pass;
    const std::uint32_t end = EndOfPasses(pass, shape.style);
    while (at < parts.size() && pass < end) {
      segment.insert(segment.end(), parts[at].bytes.begin(), parts[at].bytes.end());
      pass += parts[at++].passes;
    }
    block.Segment(segment, begin, pass);
  }
  return block.Values();
}

}  // namespace tessaret::codecs::test
