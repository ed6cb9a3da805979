// The quick way for an ElementReader to take its bytes: in place, from the window of a file or from a block of memory.
// Nested elements of defined length are two offsets instead of streams of their own, and a large value is read from the
// file straight into its allocation. Everything visible is the same as with a BufferInput over the same bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

#include "base/byte_order.h"
#include "core/buffer_input.h"
#include "core/file_buffer.h"
#include "core/memory_buffer.h"

namespace tessaret {

class WindowInput {
 public:
  /// Takes the bytes of an open file. The window's stream and the buffer's Position stand behind what was read once this
  /// is destroyed.
  WindowInput(FileBuffer& buffer, FileStream& stream) : buffer_(buffer), stream_(&stream) {
    bias_ = buffer.Position;
    TakeWindow();
  }

  /// Takes what waits in a block of memory, likewise.
  WindowInput(MemoryBuffer& buffer, const std::uint8_t* block)
      : buffer_(buffer), base_(block), at_(block) {
    bias_ = buffer.Position;
    windowEnd_ = block + buffer.Available();
    Narrow();
  }

  WindowInput(const WindowInput&) = delete;
  WindowInput& operator=(const WindowInput&) = delete;

  ~WindowInput() {
    if (stream_ != nullptr) {
      GiveWindow();
      buffer_.Position = Position();
    } else {
      buffer_.TakeIncoming(nullptr, static_cast<std::uint32_t>(Offset()));
    }
  }

  bool Available() { return at_ < stop_ || AvailableBeyond(); }
  [[nodiscard]] std::uint32_t Position() const {
    return static_cast<std::uint32_t>(bias_ + Offset());
  }
  [[nodiscard]] bool IsBigEndian() const { return big_; }
  void SetBigEndian(bool big) {
    big_ = big;
    buffer_.SetInEndian(big ? kBigEndian : kLittleEndian);
  }
  [[nodiscard]] bool SwapsValues() const { return swapsValues_; }

  /// The bytes to be read next where `room` of them lie in memory, whether or not they all belong to the view, and numbers
  /// are little endian; null otherwise.
  [[nodiscard]] const std::uint8_t* Ahead(std::size_t room) const {
    return !big_ && static_cast<std::size_t>(windowEnd_ - at_) >= room ? at_ : nullptr;
  }
  /// How many bytes of the view can be taken without going to the stream.
  [[nodiscard]] std::size_t AtHand() const { return static_cast<std::size_t>(stop_ - at_); }
  /// Requires: count <= AtHand().
  void StepOver(std::size_t count) { at_ += count; }

  bool Read8(std::uint8_t& value) {
    if (!Need(1)) return false;
    value = *at_++;
    return true;
  }
  bool Read16(std::uint16_t& value) {
    if (!Need(2)) return false;
    value = big_ ? LoadBig16(at_) : LoadLittle16(at_);
    at_ += 2;
    return true;
  }
  bool Read32(std::uint32_t& value) {
    if (!Need(4)) return false;
    value = big_ ? LoadBig32(at_) : LoadLittle32(at_);
    at_ += 4;
    return true;
  }

  /// Gives `vr` its value when that can be read without going to the stream. A copy of fixed length, where the window has
  /// the bytes for it, costs a fraction of one whose length is not known before.
  bool ReadInPlace(VR& vr) {
    if (!HoldsInPlace(vr.Length)) return false;
    vr.AllocateValue();
    const bool fixed =
        vr.Data == vr.Small && static_cast<std::size_t>(windowEnd_ - at_) >= sizeof(vr.Small);
    if (fixed) {
      std::memcpy(vr.Small, at_, sizeof(vr.Small));
    } else {
      std::memcpy(vr.Data, at_, vr.Length);
    }
    at_ += vr.Length;
    return true;
  }

  bool ReadBytes(std::uint8_t* to, std::uint32_t count) {
    if (HoldsInPlace(count)) {
      std::memcpy(to, at_, count);
      at_ += count;
      return true;
    }
    return ReadBytesBeyond(to, count);
  }

  /// Goes `count` bytes on without looking at them.
  bool SkipBytes(std::uint32_t count) {
    if (!HoldsInPlace(count)) return SkipBytesBeyond(count);
    at_ += count;
    return true;
  }

  [[nodiscard]] std::uint32_t LeftInView() const {
    if (viewEnd_ == kNoEnd) return kUndefinedLength;
    const std::uint64_t offset = Offset();
    return static_cast<std::uint32_t>(viewEnd_ > offset ? viewEnd_ - offset : 0);
  }
  std::uint64_t SuppliesAtMost() {
    const auto inWindow = static_cast<std::uint64_t>(windowEnd_ - at_);
    if (stream_ == nullptr) return inWindow;
    const std::uint64_t left = stream_->LeftAtMost();
    return left == kNoEnd ? kNoEnd : left - stream_->WindowSize() + inWindow;
  }
  std::int64_t Total() { return -1; }

  template <class Reader>
  bool ReadNested(Reader& reader, DICOMObject& object, ElementForm form, std::int32_t depth,
                  std::uint32_t length) {
    if (length == kUndefinedLength) return reader.ReadLevel(object, form, depth);
    const std::uint64_t outerEnd = viewEnd_;
    const bool outerSwaps = swapsValues_;
    viewEnd_ = std::min(Offset() + length, outerEnd);
    swapsValues_ = false;
    Narrow();
    const bool read = reader.ReadLevel(object, form, depth);
    viewEnd_ = outerEnd;
    swapsValues_ = outerSwaps;
    Narrow();
    return read;
  }

  template <class Reader>
  bool ReadFragments(Reader& reader, DICOMObject& object) {
    return reader.ReadFragments(object);
  }

 private:
  /// True when `count` bytes can be read without going to the stream.
  [[nodiscard]] bool HoldsInPlace(std::uint32_t count) const {
    return count <= static_cast<std::size_t>(stop_ - at_);
  }

  static constexpr std::uint64_t kNoEnd = std::numeric_limits<std::uint64_t>::max();

  [[nodiscard]] std::uint64_t Offset() const {
    return windowOffset_ + static_cast<std::uint64_t>(at_ - base_);
  }

  bool Need(std::size_t count) {
    return static_cast<std::size_t>(stop_ - at_) >= count || NeedBeyond(count);
  }

  /// Sets the end of what may be read in place, by the window and the view.
  void Narrow() {
    const std::uint64_t offset = Offset();
    const std::uint64_t inView = viewEnd_ > offset ? viewEnd_ - offset : 0;
    stop_ = at_ + std::min<std::uint64_t>(inView, static_cast<std::uint64_t>(windowEnd_ - at_));
  }

  void TakeWindow() {
    base_ = at_ = stream_->Window();
    windowEnd_ = base_ + stream_->WindowSize();
    Narrow();
  }

  void GiveWindow() {
    windowOffset_ = Offset();
    stream_->Consume(static_cast<std::size_t>(at_ - base_));
    base_ = at_;
  }

  [[gnu::cold]] bool AvailableBeyond();
  [[gnu::cold]] bool NeedBeyond(std::size_t count);
  [[gnu::cold]] bool ReadBytesBeyond(std::uint8_t* to, std::uint32_t count);
  [[gnu::cold]] bool SkipBytesBeyond(std::uint32_t count);
  /// Has the stream go on by what `move(stream)` says, which is to be `count`.
  template <class Move>
  bool MoveBeyond(std::uint32_t count, Move move);

  Buffer& buffer_;
  FileStream* stream_ = nullptr;        // null for a block of memory
  const std::uint8_t* base_ = nullptr;  // the byte at windowOffset_
  const std::uint8_t* at_ = nullptr;    // the byte to be read next
  const std::uint8_t* stop_ = nullptr;  // end of what may be read in place
  const std::uint8_t* windowEnd_ = nullptr;
  std::uint64_t windowOffset_ = 0;  // counted from where this began
  std::uint64_t bias_ = 0;          // the buffer's Position where this began
  std::uint64_t viewEnd_ =
      kNoEnd;  // where the innermost view ends, or one around it that ends first
  bool big_ = buffer_.InEndian == kBigEndian;
  bool swapsValues_ = buffer_.OutEndian != kLittleEndian;
};

}  // namespace tessaret
