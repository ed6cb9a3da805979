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

bool WindowInput::ReadBytesBeyond(std::uint8_t* to, std::uint32_t count) {
  if (stream_ == nullptr || count > LeftInView()) return false;
  GiveWindow();
  const std::uint64_t got = stream_->Read(to, count);
  windowOffset_ += got;
  TakeWindow();
  return got == count;
}

}  // namespace tessaret
