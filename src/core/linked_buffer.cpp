#include "core/linked_buffer.h"

namespace tessaret {

std::int64_t LinkedBuffer::ReadBinary(void* data, std::uint32_t count) {
  return Link != nullptr && Link->Read(data, count) > 0 ? std::int64_t{count} : -1;
}

int LinkedBuffer::SendBinary(const void* data, std::uint32_t count) {
  return Link != nullptr && Link->Write(data, count) && Link->Flush() ? 1 : 0;
}

}  // namespace tessaret
