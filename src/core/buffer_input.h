// The plain way for an ElementReader to take its bytes: through the operations of any Buffer, with a view of the stream for
// every nested element of defined length. This is the reference for the reader over a window.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "core/data_set_coder.h"
#include "core/explicit_length_buffer.h"

namespace tessaret {

enum class ElementForm { kImplicit, kExplicit };

class BufferInput {
 public:
  BufferInput(DataSetCoder& coder, Buffer& buffer)
      : coder_(coder), buffer_(buffer), view_(dynamic_cast<ExplicitLengthBuffer*>(&buffer)) {}

  /// A view that claims more than the one around it has left ends with that one.
  bool Available() {
    return view_ != nullptr ? view_->LeftInViews() != 0 : buffer_.Available() != 0;
  }
  [[nodiscard]] std::uint32_t Position() const { return buffer_.Position; }
  [[nodiscard]] bool IsBigEndian() const { return buffer_.InEndian == kBigEndian; }
  void SetBigEndian(bool big) { buffer_.SetInEndian(big ? kBigEndian : kLittleEndian); }
  /// Whether values are turned round after reading.
  [[nodiscard]] bool SwapsValues() const { return buffer_.OutEndian != kLittleEndian; }

  bool Read16(std::uint16_t& value) { return buffer_.Read16(&value); }
  bool Read32(std::uint32_t& value) { return buffer_.Read32(&value); }
  bool Read8(std::uint8_t& value) { return buffer_.Read8(&value); }

  [[nodiscard]] static const std::uint8_t* Ahead(std::size_t) { return nullptr; }
  [[nodiscard]] static std::size_t AtHand() { return 0; }
  static void StepOver(std::size_t) {}
  [[nodiscard]] static bool ReadInPlace(VR&) { return false; }

  bool ReadBytes(std::uint8_t* to, std::uint32_t count) {
    // In portions, since the stream gathers what is asked for at once in chunks beside its destination.
    while (count > 0) {
      const std::uint32_t portion = std::min(count, kPortion);
      const std::int64_t answer = buffer_.Read(to, portion);
      if (answer <= 0 || (view_ != nullptr && answer != portion)) return false;
      to += portion;
      count -= portion;
    }
    return true;
  }

  /// Goes `count` bytes on, which are read and dropped: a stream has no other way.
  bool SkipBytes(std::uint32_t count) {
    const std::uint32_t room = std::min(count, kDropped);
    const std::unique_ptr<std::uint8_t[]> dropped(new std::uint8_t[room]);
    for (std::uint32_t portion = 0; count > 0; count -= portion) {
      portion = std::min(count, room);
      if (!ReadBytes(dropped.get(), portion)) return false;
    }
    return true;
  }

  /// What is left of the view that this is, and of those around it; the largest number outside any.
  [[nodiscard]] std::uint32_t LeftInView() const {
    return view_ == nullptr ? kUndefinedLength : view_->LeftInViews();
  }
  /// What the stream itself vouches for: the length of a view is only what its element claims.
  std::uint64_t SuppliesAtMost() {
    return view_ == nullptr ? buffer_.SuppliesAtMost() : view_->Beneath().SuppliesAtMost();
  }
  std::int64_t Total() { return buffer_.Total(); }

  /// Parses what follows into `object`: all up to a delimiter, or the next `length` bytes when that is defined.
  template <class Reader>
  bool ReadNested(Reader&, DICOMObject& object, ElementForm form, std::int32_t depth,
                  std::uint32_t length) {
    if (length == kUndefinedLength) return Dispatch(buffer_, object, form, depth);
    // Not on the stack, which holds a call for every level.
    const auto view = std::make_unique<ExplicitLengthBuffer>(buffer_, length);
    return Dispatch(*view, object, form, depth);
  }

  template <class Reader>
  bool ReadFragments(Reader&, DICOMObject& object) {
    return coder_.ReadEncapsulated(buffer_, object);
  }

 private:
  static constexpr std::uint32_t kPortion = 1u << 20;
  static constexpr std::uint32_t kDropped = 1u << 16;

  bool Dispatch(Buffer& buffer, DICOMObject& object, ElementForm form, std::int32_t depth) {
    return form == ElementForm::kImplicit
               ? coder_.Implicit_ParseRawVRIntoDCM(buffer, object, depth)
               : coder_.Explicit_ParseRawVRIntoDCM(buffer, object, depth);
  }

  DataSetCoder& coder_;
  Buffer& buffer_;
  ExplicitLengthBuffer* view_;
};

}  // namespace tessaret
