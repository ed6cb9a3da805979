#include "rle/pack_bits.h"

#include <algorithm>
#include <cstring>

namespace tessaret::codecs {
namespace {

/// Codes below this are followed by one more literal byte than they say; those above stand for runs.
constexpr std::uint8_t kNothing = 128;

constexpr std::size_t kBlock = 16;

/// Runs that are worth leaving a stretch of literals for: a run of two costs as much as it saves.
constexpr std::size_t kShortestRun = 3;

/// Copies in whole blocks, which costs less than to count; both sides have room for that.
void CopyBlocks(std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
  for (std::size_t at = 0; at < count; at += kBlock) std::memcpy(to + at, from + at, kBlock);
}

void FillBlocks(std::uint8_t* to, std::uint8_t value, std::size_t count) {
  std::uint8_t block[kBlock];
  std::memset(block, value, kBlock);
  for (std::size_t at = 0; at < count; at += kBlock) std::memcpy(to + at, block, kBlock);
}

std::size_t RunLength(Bytes bytes, std::size_t at) {
  const std::size_t most = std::min(bytes.size() - at, PackBitsReader::kLongestRun);
  std::size_t length = 1;
  while (length < most && bytes[at + length] == bytes[at]) ++length;
  return length;
}

/// The first place from `at` on where a run worth a code of its own begins, or the end.
std::size_t NextRun(Bytes bytes, std::size_t at) {
  for (; at + kShortestRun <= bytes.size(); ++at) {
    if (bytes[at] == bytes[at + 1] && bytes[at] == bytes[at + 2]) return at;
  }
  return bytes.size();
}

void AppendLiterals(Bytes bytes, std::vector<std::uint8_t>& packed) {
  while (!bytes.empty()) {
    const std::size_t count = std::min(bytes.size(), PackBitsReader::kLongestRun);
    packed.push_back(static_cast<std::uint8_t>(count - 1));
    packed.insert(packed.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    bytes = bytes.subspan(count);
  }
}

}  // namespace

std::size_t PackBitsReader::Read(std::uint8_t* to, std::size_t count) {
  std::size_t made = 0;
  while (made < count && at_ != end_) {
    const std::uint8_t code = *at_++;
    const auto left = static_cast<std::size_t>(end_ - at_);
    if (code < kNothing) {
      const std::size_t length = std::size_t{code} + 1;
      if (length > left) {
        at_ = end_;
        return made;
      }
      if (left >= kLongestRun) {
        CopyBlocks(to + made, at_, length);
      } else {
        std::memcpy(to + made, at_, length);
      }
      at_ += length;
      made += length;
    } else if (code > kNothing) {
      if (left == 0) return made;
      const std::size_t length = 257 - std::size_t{code};
      FillBlocks(to + made, *at_++, length);
      made += length;
    }
  }
  return made;
}

void PackBits(Bytes bytes, std::vector<std::uint8_t>& packed) {
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t run = NextRun(bytes, at);
    AppendLiterals(bytes.subspan(at, run - at), packed);
    at = run;
    if (at == bytes.size()) return;
    const std::size_t length = RunLength(bytes, at);
    packed.push_back(static_cast<std::uint8_t>(257 - length));
    packed.push_back(bytes[at]);
    at += length;
  }
}

}  // namespace tessaret::codecs
