#include "jpeg/bit_reader.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>

#include "failure.h"
#include "jpeg/jpeg_markers.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint8_t kMark = 0xFF;

bool IsRestart(std::uint8_t code) {
  return code >= static_cast<std::uint8_t>(Marker::kRst0) &&
         code <= static_cast<std::uint8_t>(Marker::kRst7);
}

/// Bytes up to the next kMark, or to the end.
std::size_t PlainLength(Bytes bytes) {
  if (bytes.empty()) return 0;
  const void* mark = std::memchr(bytes.data(), kMark, bytes.size());
  if (mark == nullptr) return bytes.size();
  return static_cast<std::size_t>(static_cast<const std::uint8_t*>(mark) - bytes.data());
}

}  // namespace

void BitReader::FillAtEnd() {
  while (ready_.count < kFilled) {
    if (ready_.at != end_) {
      ready_.held |= std::uint64_t{*ready_.at++} << (kFilled - ready_.count);
    } else {
      made_ += 8;
    }
    ready_.count += 8;
  }
}

void BitReader::RequireUsedUp() const {
  if (IsOverrun()) Fail("the entropy-coded data end early");
  const auto ready = static_cast<unsigned>(ready_.count - made_);
  const auto unread = static_cast<std::uint64_t>(end_ - ready_.at);
  if (ready + 8 * unread < 8) return;
  const std::uint64_t ones = ready == 0 ? 0 : ~std::uint64_t{0} << (64 - ready);
  if ((ready_.held & ones) != ones ||
      !std::all_of(ready_.at, end_, [](std::uint8_t byte) { return byte == 0xFF; })) {
    Fail("there are more entropy-coded data than the image needs");
  }
}

EntropyData::EntropyData(Bytes rest, std::uint64_t intervals)
    : bytes_(std::make_unique_for_overwrite<std::uint8_t[]>(rest.size())) {
  const std::uint8_t* const begin = rest.data();
  std::uint8_t* to = bytes_.get();
  const auto end = [&] { ends_.push_back(static_cast<std::size_t>(to - bytes_.get())); };
  for (;;) {
    const std::size_t plain = PlainLength(rest);
    if (plain != 0) std::memcpy(to, rest.data(), plain);
    to += plain;
    rest = rest.subspan(plain);
    std::size_t at = 1;
    while (at < rest.size() && rest[at] == kMark) ++at;
    if (at >= rest.size()) Fail("the code stream ends within its entropy-coded data");
    const std::uint8_t code = rest[at];
    if (code == 0) {
      if (at != 1) Fail("there are fill bytes amid entropy-coded data");
      *to++ = kMark;
    } else if (IsRestart(code)) {
      if (ends_.size() + 1 >= intervals) Fail("there is a restart marker too many");
      if ((code & 7u) != ends_.size() % 8) Fail("restart marker %zu is lost", ends_.size() + 1);
      end();
    } else {
      break;
    }
    rest = rest.subspan(at + 1);
  }
  end();
  if (ends_.size() != intervals) {
    Fail("there are %zu restart intervals where %" PRIu64 " belong", ends_.size(), intervals);
  }
  length_ = static_cast<std::size_t>(rest.data() - begin);
}

}  // namespace tessaret::codecs
