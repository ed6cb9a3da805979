// The view of a nested element of defined length: at most so many bytes of another stream.
#pragma once

#include "core/linked_buffer.h"

namespace tessaret {

class ExplicitLengthBuffer : public LinkedBuffer {
 public:
  /// Views the next `length` bytes of `parent`, which is not owned, and goes on in its byte order and position.
  ExplicitLengthBuffer(Buffer& parent, std::uint32_t length);

  /// Reads the smaller of `count` and Remaining: a read past the end of the view yields what is left. The number of
  /// bytes read, or -1 when the parent cannot supply them.
  std::int64_t Read(void* data, std::uint32_t count) override;
  /// -1: a view keeps no chunks, and what came into one would be out of Read's reach.
  std::int64_t ReadBinary(void* data, std::uint32_t count) override;
  std::uint32_t Available() override { return Remaining; }
  std::uint64_t SuppliesAtMost() override;

  /// What this view and all views around it have left: the most that a read here can yield.
  [[nodiscard]] std::uint32_t LeftInViews() const;
  /// The stream below this view and all views around it.
  [[nodiscard]] Buffer& Beneath() const;

  Buffer* Parent;
  std::uint32_t Remaining;  // bytes of the view that are still unread

 private:
  ExplicitLengthBuffer* outer_;  // Parent, when it is a view itself
};

}  // namespace tessaret
