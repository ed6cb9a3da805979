#include "jpeg/jpeg_lossless_coder.h"

#include "failure.h"
#include "jpeg/lossless_decoder.h"
#include "jpeg/lossless_encoder.h"

namespace tessaret::codecs {

DecodedFrame JpegLosslessCoder::Decode(Bytes stream, const FrameFormat& format,
                                       MutableBytes frame) const {
  return DecodeLosslessJpeg(stream, format, frame);
}

void JpegLosslessCoder::RequireEncodable(const FrameFormat& format) const {
  if (format.bitsAllocated != 8 && format.bitsAllocated != 16) {
    Fail("lossless JPEG has samples of up to 16 bits, not of %u allocated", format.bitsAllocated);
  }
}

EncodedFrame JpegLosslessCoder::Encode(Bytes frame, const FrameFormat& format,
                                       const EncoderSettings& /*settings*/) const {
  return {EncodeLosslessJpeg(frame, format), false};
}

}  // namespace tessaret::codecs
