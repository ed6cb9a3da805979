#include "core/window_input.h"

namespace tessaret {

bool WindowInput::AvailableBeyond() {
  // A view is at its end by its own count, whether or not the stream has more.
  if (view_.end != kNoEnd) return Offset() < view_.end;
  return NeedBeyond(1);
}

bool WindowInput::NeedBeyond(std::size_t count) {
  if (view_.hardEnd != kNoEnd && LeftInView() < count) return false;
  if (stream_ == nullptr) return false;
  GiveWindow();
  const bool there = stream_->Refill(count);
  TakeWindow();
  return there;
}

bool WindowInput::ReadBytesBeyond(std::uint8_t* to, std::uint32_t count) {
  if (stream_ == nullptr || count > LeftInView()) return false;
  GiveWindow();
  const std::uint64_t got = stream_->Read(to, count);
  windowOffset_ += got;
  TakeWindow();
  return got == count;
}

}  // namespace tessaret
