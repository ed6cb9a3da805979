#include "jpeg/jpeg_process.h"

#include "base/bounded_reader.h"
#include "base/byte_order.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint8_t kSofLs = 0xF7;  // ITU-T T.87, C.1.1

JpegProcess ProcessOfFrame(std::uint8_t marker) {
  switch (marker) {
    case 0xC0:
    case 0xC1:
    case 0xC2:
      return JpegProcess::kDct;
    case 0xC3:
      return JpegProcess::kLossless;
    case kSofLs:
      return JpegProcess::kJpegLs;
    default:
      return JpegProcess::kUnknown;
  }
}

/// Whether segments of this kind may stand before the frame header: tables, restart intervals, application data, comments.
bool MayComeBefore(std::uint8_t marker) {
  const bool isTable = marker == 0xC4 || marker == 0xDB || marker == 0xDD || marker == 0xCC;
  const bool isOfLs = marker == 0xF8;
  return isTable || isOfLs || (marker >= 0xE0 && marker <= 0xEF) || marker == 0xFE;
}

}  // namespace

JpegProcess ProcessOf(Bytes stream) {
  BoundedReader reader(stream.data(), stream.size());
  if (!reader.Skip(2)) return JpegProcess::kUnknown;
  while (reader.U8() == 0xFF) {
    std::uint8_t marker = 0xFF;
    while (marker == 0xFF) marker = reader.U8().value_or(0);
    if (!MayComeBefore(marker)) return ProcessOfFrame(marker);
    std::uint8_t length[2];
    if (!reader.Copy(length, 2)) break;
    const std::uint16_t size = LoadBig16(length);
    if (size < 2 || !reader.Skip(size - 2U)) break;
  }
  return JpegProcess::kUnknown;
}

}  // namespace tessaret::codecs
