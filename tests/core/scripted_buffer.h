// A stream whose low-level answers are written down before, and which notes what it was asked.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "core/buffer.h"
#include "support/bytes.h"

namespace tessaret::test {

/// Size and Index of a chunk.
using ChunkShape = std::pair<std::uint32_t, std::uint32_t>;

inline std::vector<ChunkShape> ShapesOf(const Array<BufferSpace*>& chunks) {
  std::vector<ChunkShape> shapes;
  for (const auto* node = chunks.First; node != nullptr; node = node->next) {
    shapes.emplace_back(node->value->Size, node->value->Index);
  }
  return shapes;
}

/// What waits to be flushed.
inline Bytes OutgoingOf(const Buffer& buffer) {
  Bytes bytes;
  for (const auto* node = buffer.Outgoing.First; node != nullptr; node = node->next) {
    const BufferSpace& chunk = *node->value;
    bytes.insert(bytes.end(), chunk.Data, chunk.Data + chunk.Index);
  }
  return bytes;
}

class ScriptedBuffer : public Buffer {
 public:
  ScriptedBuffer() = default;
  /// Comes with `bytes` to read, as many at once as are asked for.
  explicit ScriptedBuffer(Bytes bytes) { Comes(std::move(bytes)); }

  /// The next bytes; a request gets at most the rest of one such portion.
  ScriptedBuffer& Comes(Bytes bytes) {
    answers.push_back(std::move(bytes));
    return *this;
  }
  /// The next request is answered with 0: nothing yet.
  ScriptedBuffer& NothingYet() { return Comes({}); }

  std::int64_t ReadBinary(void* data, std::uint32_t count) override {
    asked.push_back(count);
    breakSizes.push_back(BreakSize);
    if (answers.empty()) return -1;
    Bytes& next = answers.front();
    const std::size_t given = std::min<std::size_t>(count, next.size());
    std::copy_n(next.begin(), given, static_cast<std::uint8_t*>(data));
    next.erase(next.begin(), next.begin() + static_cast<std::ptrdiff_t>(given));
    if (next.empty()) answers.pop_front();
    return static_cast<std::int64_t>(given);
  }
  int SendBinary(const void* data, std::uint32_t count) override {
    if (refuseSend == sent.size() + 1) return 0;
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    sent.emplace_back(bytes, bytes + count);
    return 1;
  }
  bool IsEnd() override { return endsWithAnswers && answers.empty(); }

  Bytes AllSent() const {
    Bytes all;
    for (const Bytes& part : sent) all.insert(all.end(), part.begin(), part.end());
    return all;
  }

  std::deque<Bytes> answers;
  bool endsWithAnswers = false;
  std::vector<std::uint32_t> asked;
  std::vector<std::int32_t> breakSizes;  // as they stood at each request
  std::vector<Bytes> sent;
  std::size_t refuseSend = 0;  // the number, from 1, of the send that fails; 0: none
};

}  // namespace tessaret::test
