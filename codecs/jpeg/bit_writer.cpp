#include "jpeg/bit_writer.h"

#include <algorithm>

namespace tessaret::codecs {

void AppendStuffed(Bytes bytes, std::vector<std::uint8_t>& stream) {
  constexpr std::uint8_t kMark = 0xFF;
  const auto marks = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), kMark));
  const std::size_t before = stream.size();
  stream.resize(before + bytes.size() + marks);
  std::uint8_t* to = stream.data() + before;
  while (!bytes.empty()) {
    const auto* const mark =
        static_cast<const std::uint8_t*>(std::memchr(bytes.data(), kMark, bytes.size()));
    const std::size_t count =
        mark == nullptr ? bytes.size() : static_cast<std::size_t>(mark - bytes.data()) + 1;
    std::memcpy(to, bytes.data(), count);
    to += count;
    if (mark != nullptr) *to++ = 0;
    bytes = bytes.subspan(count);
  }
}

}  // namespace tessaret::codecs
