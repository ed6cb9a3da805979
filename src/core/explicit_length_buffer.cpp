#include "core/explicit_length_buffer.h"

#include <algorithm>

namespace tessaret {

ExplicitLengthBuffer::ExplicitLengthBuffer(Buffer& parent, std::uint32_t length)
    : LinkedBuffer(&parent),
      Parent(&parent),
      Remaining(length),
      outer_(dynamic_cast<ExplicitLengthBuffer*>(&parent)) {
  InEndian = parent.InEndian;
  Position = parent.Position;
}

std::int64_t ExplicitLengthBuffer::Read(void* data, std::uint32_t count) {
  count = std::min(count, Remaining);
  if (count == 0) return 0;
  Remaining -= count;
  const std::int64_t answer = Parent->Read(data, count);
  // An outer view answers with a number of bytes, which may be smaller; any other stream with success or failure.
  const std::int64_t read = outer_ == nullptr && answer > 0 ? count : answer;
  if (read < 0 || (read == 0 && outer_ == nullptr)) return -1;
  Position += static_cast<std::uint32_t>(read);
  return read;
}

std::int64_t ExplicitLengthBuffer::ReadBinary(void*, std::uint32_t) { return -1; }

std::uint32_t ExplicitLengthBuffer::LeftInViews() const {
  std::uint32_t left = Remaining;
  for (const ExplicitLengthBuffer* view = outer_; view != nullptr; view = view->outer_) {
    left = std::min(left, view->Remaining);
  }
  return left;
}

Buffer& ExplicitLengthBuffer::Beneath() const {
  const ExplicitLengthBuffer* outermost = this;
  while (outermost->outer_ != nullptr) outermost = outermost->outer_;
  return *outermost->Parent;
}

std::uint64_t ExplicitLengthBuffer::SuppliesAtMost() {
  return std::min<std::uint64_t>(Remaining, Parent->SuppliesAtMost());
}

}  // namespace tessaret
