// A stream over another stream.
#pragma once

#include "core/buffer.h"

namespace tessaret {

class LinkedBuffer : public Buffer {
 public:
  LinkedBuffer() = default;
  explicit LinkedBuffer(Buffer* link) : Link(link) {}

  /// Forwards to Link's Read: `count` on success, or what was left where Link is a view; -1 on failure and without a
  /// Link.
  std::int64_t ReadBinary(void* data, std::uint32_t count) override;
  /// Writes the bytes into Link's outgoing chunks and flushes them; 0 on failure and without a Link.
  int SendBinary(const void* data, std::uint32_t count) override;

  Buffer* Link = nullptr;  // not owned
};

}  // namespace tessaret
