#include "jpeg/jpeg_baseline_coder.h"

#include "jpeg/dct8_encoder.h"
#include "jpeg/dct_decoder.h"

namespace tessaret::codecs {

DecodedFrame JpegBaselineCoder::Decode(Bytes stream, const FrameFormat& format,
                                       MutableBytes frame) const {
  return DecodeDct(stream, format, frame);
}

void JpegBaselineCoder::RequireEncodable(const FrameFormat& format) const { RequireDct8(format); }

EncodedFrame JpegBaselineCoder::Encode(Bytes frame, const FrameFormat& format,
                                       const EncoderSettings& settings) const {
  return {EncodeDct8(frame, format, settings.jpegQuality), true};
}

std::string JpegBaselineCoder::EncodedPhotometric(const FrameFormat& format,
                                                  bool /*isLossy*/) const {
  return format.samples == 3 ? "YBR_FULL_422" : format.photometric;
}

const char* JpegBaselineCoder::LossyMethod() const { return "ISO_10918_1"; }

}  // namespace tessaret::codecs
