#include "core/window_input.h"

namespace tessaret {

bool WindowInput::AvailableBeyond() {
  // A view ends by its count, or with the view around it when its count claims more.
  if (viewEnd_ != kNoEnd) return Offset() < viewEnd_;
  return NeedBeyond(1);
}

bool WindowInput::NeedBeyond(std::size_t count) {
  if (viewEnd_ != kNoEnd && LeftInView() < count) return false;
  if (stream_ == nullptr) return false;
  GiveWindow();
  const bool there = stream_->Refill(count);
  TakeWindow();
  return there;
}

template <class Move>
bool WindowInput::MoveBeyond(std::uint32_t count, Move move) {
  if (stream_ == nullptr || count > LeftInView()) return false;
  GiveWindow();
  const std::uint64_t moved = move(*stream_);
  windowOffset_ += moved;
  TakeWindow();
  return moved == count;
}

bool WindowInput::ReadBytesBeyond(std::uint8_t* to, std::uint32_t count) {
  return MoveBeyond(count, [&](FileStream& stream) { return stream.Read(to, count); });
}

bool WindowInput::SkipBytesBeyond(std::uint32_t count) {
  return MoveBeyond(count, [&](FileStream& stream) { return stream.Skip(count); });
}

}  // namespace tessaret
