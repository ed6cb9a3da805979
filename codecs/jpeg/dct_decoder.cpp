#include "jpeg/dct_decoder.h"

#include "failure.h"
#include "jpeg/dct12_decoder.h"
#include "jpeg/dct8_decoder.h"
#include "jpeg/jpeg_markers.h"

namespace tessaret::codecs {
namespace {

std::uint32_t PrecisionOf(Bytes stream) {
  MarkerReader reader(stream);
  for (;;) {
    const Segment segment = reader.Next();
    if (IsFrameHeader(segment.marker)) return ReadFrameHeader(segment).precision;
    if (segment.marker == Marker::kEoi || segment.marker == Marker::kSos) {
      Fail("the code stream has no frame header");
    }
  }
}

}  // namespace

DecodedFrame DecodeDct(Bytes stream, const FrameFormat& format, MutableBytes frame) {
  return PrecisionOf(stream) == 8 ? DecodeDct8(stream, format, frame)
                                  : DecodeDct12(stream, format, frame);
}

}  // namespace tessaret::codecs
