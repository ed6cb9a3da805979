#include "base/byte_order.h"

namespace tessaret {

void SwapBytes16(void* data, std::size_t length) {
  auto* bytes = static_cast<std::uint8_t*>(data);
  for (std::size_t at = 0; at + 2 <= length; at += 2) {
    StoreLittle16(bytes + at, LoadBig16(bytes + at));
  }
}

void SwapBytes32(void* data, std::size_t length) {
  auto* bytes = static_cast<std::uint8_t*>(data);
  for (std::size_t at = 0; at + 4 <= length; at += 4) {
    StoreLittle32(bytes + at, LoadBig32(bytes + at));
  }
}

}  // namespace tessaret
