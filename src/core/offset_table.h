// Where the frames of compressed pixel data begin (DICOM PS3.5, A.4), while they are being made.
#pragma once

#include <cstdint>

#include "core/vr.h"

namespace tessaret {

/// Fills the value of a table that holds a number of 32 bits for each frame, or that is empty.
class OffsetTable {
 public:
  /// `table` must outlive this; its Data holds `frames` numbers, or is null.
  OffsetTable(VR& table, std::uint32_t frames) : table_(table), frames_(frames) {}

  /// The next frame begins here. False when that is beyond what a table can say, or the table is full.
  bool Begin();
  /// The frame that began last takes this many bytes.
  void Add(std::uint32_t size) { offset_ += size; }

  /// Writes a line for each frame: its number, and its offset in both notations. Where that cannot be written, the rest is lost.
  void Print(int descriptor) const;

 private:
  [[nodiscard]] std::uint8_t* Slot(std::uint32_t frame) const {
    return table_.Data + std::size_t{frame} * sizeof(std::uint32_t);
  }

  VR& table_;
  std::uint32_t frames_;
  std::uint32_t begun_ = 0;
  std::uint64_t offset_ = 0;
};

/// The bytes of a table for so many frames: none for a single one, for its fragments need no table. Beyond 32 bits it is
/// more than an element can hold.
constexpr std::uint64_t OffsetTableSize(std::uint32_t frames) {
  return frames < 2 ? 0 : std::uint64_t{frames} * sizeof(std::uint32_t);
}

}  // namespace tessaret
