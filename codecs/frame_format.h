// What one native frame looks like, as the data set tells it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "tessaret/codec.h"

namespace tessaret::codecs {

using Bytes = std::span<const std::uint8_t>;
using MutableBytes = std::span<std::uint8_t>;

/// No number is 0, but for the high bit. Coders see samples by pixel (Planar Configuration 0), in little endian, one behind the other.
struct FrameFormat {
  std::uint32_t rows = 0;           // at most 65535
  std::uint32_t columns = 0;        // at most 65535
  std::uint32_t samples = 1;        // per pixel
  std::uint32_t bitsAllocated = 8;  // 1, 8, 16 or 32
  std::uint32_t bitsStored = 8;     // at most bitsAllocated
  std::uint32_t highBit = 7;        // as the data set has it; below bitsAllocated for encoders
  bool isSigned = false;            // samples are in two's complement
  bool isPlanar = false;            // as the data set has it; a coder's frame never is
  std::string photometric;          // Photometric Interpretation, without blanks at its ends

  /// Of a sample in memory: 1, 2 or 4. Single bits take a byte each.
  [[nodiscard]] std::uint32_t BytesPerSample() const { return (bitsAllocated + 7) / 8; }
  [[nodiscard]] std::uint64_t Pixels() const { return std::uint64_t{rows} * columns; }
  [[nodiscard]] std::uint64_t Samples() const { return Pixels() * samples; }
  [[nodiscard]] std::uint64_t Size() const { return Samples() * BytesPerSample(); }
  /// Bytes of one row.
  [[nodiscard]] std::uint64_t RowSize() const {
    return std::uint64_t{columns} * samples * BytesPerSample();
  }
};

/// Reads what codecs need. Throws CodecFailure where the numbers do not go together or cannot be held in bytes.
FrameFormat ReadFrameFormat(const DICOMObject* object, const ImageInfo& info);

/// Throws CodecFailure where the bits stored do not end within those allocated. Streams have samples of their own and are decoded
/// all the same: files with a wrong High Bit are common.
void RequireHighBit(const FrameFormat& format);

/// Throws CodecFailure, with the numbers, where `stream` bytes cannot hold that many samples at `samplesPerByte` at best.
/// To be asked before memory is taken or pixels are written.
void RequirePlausible(std::uint64_t stream, std::uint64_t samples, std::uint64_t samplesPerByte);

/// What a code stream says of its own image.
struct StreamShape {
  std::uint32_t columns = 0;
  std::uint32_t rows = 0;
  std::uint32_t components = 0;
  std::uint32_t precision = 0;  // bits of a sample
};

/// Throws CodecFailure, with both numbers, where width, height or number of components are not those of the data set, and where samples
/// do not fit what is allocated for them.
void RequireSameShape(const StreamShape& shape, const FrameFormat& format);

}  // namespace tessaret::codecs
