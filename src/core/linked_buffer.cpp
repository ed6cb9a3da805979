#include "core/linked_buffer.h"

#include "core/explicit_length_buffer.h"

namespace tessaret {

std::int64_t LinkedBuffer::ReadBinary(void* data, std::uint32_t count) {
  const std::int64_t answer = Link == nullptr ? -1 : Link->Read(data, count);
  if (answer <= 0) return -1;
  // A view answers with how many bytes it had left, any other stream with success.
  return dynamic_cast<ExplicitLengthBuffer*>(Link) != nullptr ? answer : std::int64_t{count};
}

int LinkedBuffer::SendBinary(const void* data, std::uint32_t count) {
  return Link != nullptr && Link->Write(data, count) && Link->Flush() ? 1 : 0;
}

}  // namespace tessaret
