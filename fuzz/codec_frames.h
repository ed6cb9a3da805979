// What the targets of the codecs share: an input begins with eight bytes that make up a frame's format; the rest is a code stream.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <vector>

#include "base/byte_order.h"
#include "failure.h"
#include "frame_coder.h"

namespace tessaret::fuzz {

inline constexpr std::size_t kFormatBytes = 8;

/// rows, columns (two bytes each, little endian), samples, bits allocated, bits stored, flags (1: signed). Nothing where these would be
/// refused before a coder is asked, or take more memory than a target has.
inline bool FormatFrom(const std::uint8_t* data, std::size_t size, codecs::FrameFormat& format) {
  if (size < kFormatBytes) return false;
  format.rows = LoadLittle16(data);
  format.columns = LoadLittle16(data + 2);
  format.samples = 1 + data[4] % 4;
  static constexpr std::uint32_t kAllocated[] = {8, 16, 32, 1};
  format.bitsAllocated = kAllocated[data[5] % 4];
  format.bitsStored = 1 + data[6] % format.bitsAllocated;
  format.highBit = format.bitsStored - 1;
  format.isSigned = (data[7] & 1) != 0;
  format.photometric = format.samples == 1  ? "MONOCHROME2"
                       : (data[7] & 2) != 0 ? "YBR_FULL"
                                            : "RGB";
  constexpr std::uint64_t kLargest = std::uint64_t{1} << 22;
  return format.rows != 0 && format.columns != 0 && format.Size() <= kLargest;
}

/// Decodes into a block of exactly the frame's size, so that the sanitizers see each byte beside it.
inline int DecodeOne(const codecs::FrameCoder& coder, const std::uint8_t* data, std::size_t size) {
  codecs::FrameFormat format;
  if (!FormatFrom(data, size, format)) return 0;
  std::vector<std::uint8_t> frame(format.Size());
  try {
    const codecs::DecodedFrame decoded =
        coder.Decode({data + kFormatBytes, size - kFormatBytes}, format, frame);
    if (decoded.precision == 0 || decoded.precision > 32) std::abort();
  } catch (const codecs::CodecFailure& failure) {
    if (failure.what()[0] == '\0') std::abort();
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 0;
}

}  // namespace tessaret::fuzz
