#include "core/offset_table.h"

#include <limits>

#include "base/byte_order.h"

namespace tessaret {

bool OffsetTable::Begin() {
  if (table_.Data == nullptr) return true;
  if (offset_ > std::numeric_limits<std::uint32_t>::max() || begun_ == frames_) return false;
  StoreLittle32(Slot(begun_++), static_cast<std::uint32_t>(offset_));
  return true;
}

void OffsetTable::Print(std::FILE* to) const {
  for (std::uint32_t frame = 0; frame < begun_; ++frame) {
    const std::uint32_t offset = LoadLittle32(Slot(frame));
    std::fprintf(to, "%d -> %d %X\n", static_cast<int>(frame), static_cast<int>(offset), offset);
  }
}

}  // namespace tessaret
