#include "jpeg/optimal_table.h"

#include <algorithm>
#include <cstddef>

namespace tessaret::codecs {
namespace {

constexpr std::size_t kValues = 256;
constexpr std::size_t kNone = kValues + 1;

using Lengths = std::array<std::size_t, kValues + 1>;  // by value, 0 for those that never come

/// Trees of values that grow together until there is one.
class Trees {
 public:
  /// Behind those that come there is a value that never does. The code of ones alone is its.
  explicit Trees(std::span<const std::uint64_t> frequencies) : reserved_(frequencies.size()) {
    std::copy(frequencies.begin(), frequencies.end(), weights_.begin());
    weights_[reserved_] = 1;
    next_.fill(kNone);
  }

  Lengths Grow() {
    for (;;) {
      const std::size_t least = TakeOut(kNone);
      const std::size_t other = TakeOut(least);
      if (other == kNone) return lengths_;
      weights_[least] += weights_[other];
      weights_[other] = 0;
      Join(least, other);
    }
  }

 private:
  /// The lightest tree but for one; of equal ones the last, so that the reserved value gets the longest code.
  [[nodiscard]] std::size_t TakeOut(std::size_t but) const {
    std::size_t least = kNone;
    for (std::size_t tree = 0; tree <= reserved_; ++tree) {
      if (weights_[tree] == 0 || tree == but) continue;
      if (least == kNone || weights_[tree] <= weights_[least]) least = tree;
    }
    return least;
  }

  void Join(std::size_t tree, std::size_t other) {
    std::size_t last = tree;
    for (std::size_t value = tree; value != kNone; value = next_[value]) {
      ++lengths_[value];
      last = value;
    }
    next_[last] = other;
    for (std::size_t value = other; value != kNone; value = next_[value]) ++lengths_[value];
  }

  std::size_t reserved_;
  std::array<std::uint64_t, kValues + 1> weights_{};  // by first value; 0: there is no such tree
  std::array<std::size_t, kValues + 1> next_{};       // of the same tree
  Lengths lengths_{};
};

using Counts = std::array<std::size_t, kValues + 2>;  // by length

/// Shortens codes that are too long, in pairs, and makes others longer for that.
void Limit(Counts& counts) {
  for (std::size_t length = counts.size() - 1; length > HuffmanSpec::kLongest; --length) {
    while (counts[length] != 0) {
      std::size_t shorter = length - 2;
      while (counts[shorter] == 0) --shorter;
      counts[length] -= 2;
      counts[length - 1] += 1;
      counts[shorter + 1] += 2;
      counts[shorter] -= 1;
    }
  }
}

void DropReserved(Counts& counts) {
  std::size_t longest = HuffmanSpec::kLongest;
  while (counts[longest] == 0) --longest;
  --counts[longest];
}

}  // namespace

HuffmanSpec OptimalTable(std::span<const std::uint64_t> frequencies) {
  const Lengths lengths = Trees(frequencies).Grow();
  Counts counts{};
  for (const std::size_t length : lengths) ++counts[length];
  counts[0] = 0;
  Limit(counts);
  DropReserved(counts);
  HuffmanSpec listed;
  for (std::size_t length = 1; length <= HuffmanSpec::kLongest; ++length) {
    listed.counts[length - 1] = static_cast<std::uint8_t>(counts[length]);
  }
  const std::size_t longest = *std::max_element(lengths.begin(), lengths.end());
  for (std::size_t length = 1; length <= longest; ++length) {
    for (std::size_t value = 0; value < frequencies.size(); ++value) {
      if (lengths[value] == length) listed.values[listed.size++] = static_cast<std::uint8_t>(value);
    }
  }
  return listed;
}

std::array<HuffmanCode, 256> CodesOf(const HuffmanSpec& listed) {
  std::array<HuffmanCode, 256> codes{};
  std::uint32_t code = 0;
  std::size_t place = 0;
  for (std::size_t length = 1; length <= HuffmanSpec::kLongest; ++length, code *= 2) {
    for (unsigned left = listed.counts[length - 1]; left != 0; --left, ++code, ++place) {
      codes[listed.values[place]] = {static_cast<std::uint16_t>(code),
                                     static_cast<std::uint8_t>(length)};
    }
  }
  return codes;
}

void AppendTable(const HuffmanSpec& listed, unsigned tableClass, unsigned id,
                 std::vector<std::uint8_t>& stream) {
  const std::size_t length = 2 + 1 + listed.counts.size() + listed.size;
  for (const std::size_t byte : {std::size_t{0xFF}, std::size_t{0xC4}, length >> 8, length & 0xFF,
                                 std::size_t{tableClass} << 4 | id}) {
    stream.push_back(static_cast<std::uint8_t>(byte));
  }
  stream.insert(stream.end(), listed.counts.begin(), listed.counts.end());
  stream.insert(stream.end(), listed.values.begin(),
                listed.values.begin() + static_cast<std::ptrdiff_t>(listed.size));
}

}  // namespace tessaret::codecs
