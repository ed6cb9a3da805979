#include "jpeg/jpeg_lossless_coder.h"

#include "failure.h"
#include "jpeg/dct_decoder.h"
#include "jpeg/jpeg_markers.h"
#include "jpeg/lossless_decoder.h"
#include "jpeg/lossless_encoder.h"

namespace tessaret::codecs {
namespace {

/// Of eight bits: what was lost was lost before somebody gave the file a syntax that is not its own.
bool IsDct8(const FrameHeader& header) {
  return header.marker <= Marker::kSof2 && header.precision == 8;
}

}  // namespace

DecodedFrame JpegLosslessCoder::Decode(Bytes stream, const FrameFormat& format,
                                       MutableBytes frame) const {
  if (IsDct8(FindFrameHeader(stream))) return DecodeDct(stream, format, frame);
  return DecodeLosslessJpeg(stream, format, frame);
}

void JpegLosslessCoder::RequireEncodable(const FrameFormat& format) const {
  if (format.bitsAllocated == 1) Fail("samples of one bit are not encoded");
  if (format.bitsAllocated != 8 && format.bitsAllocated != 16) {
    Fail("lossless JPEG has samples of up to 16 bits, not of %u allocated", format.bitsAllocated);
  }
}

EncodedFrame JpegLosslessCoder::Encode(Bytes frame, const FrameFormat& format,
                                       const EncoderSettings& /*settings*/) const {
  return {EncodeLosslessJpeg(frame, format), false};
}

}  // namespace tessaret::codecs
