#include "core/offset_table.h"

#include <array>
#include <cstdio>
#include <limits>

#include "base/byte_order.h"
#include "platform/file_calls.h"

namespace tessaret {

bool OffsetTable::Begin() {
  if (table_.Data == nullptr) return true;
  if (offset_ > std::numeric_limits<std::uint32_t>::max() || begun_ == frames_) return false;
  StoreLittle32(Slot(begun_++), static_cast<std::uint32_t>(offset_));
  return true;
}

void OffsetTable::Print(int descriptor) const {
  constexpr std::size_t kLongestLine = 64;
  std::array<char, 4096> text;
  std::size_t size = 0;
  for (std::uint32_t frame = 0; frame < begun_; ++frame) {
    const std::uint32_t offset = LoadLittle32(Slot(frame));
    size += static_cast<std::size_t>(std::snprintf(text.data() + size, kLongestLine,
                                                   "%d -> %d %X\n", static_cast<int>(frame),
                                                   static_cast<int>(offset), offset));
    const bool isLast = frame + 1 == begun_;
    if (!isLast && text.size() - size >= kLongestLine) continue;
    // Not by the C library: where nobody reads what is written, a signal would end the host.
    if (!WriteAll(descriptor, text.data(), size).Ok()) return;
    size = 0;
  }
}

}  // namespace tessaret
