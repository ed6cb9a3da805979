#include "jpeg/jpeg_extended_coder.h"

#include "jpeg/dct12_encoder.h"
#include "jpeg/dct8_encoder.h"
#include "jpeg/dct_decoder.h"

namespace tessaret::codecs {
DecodedFrame JpegExtendedCoder::Decode(Bytes stream, const FrameFormat& format,
                                       MutableBytes frame) const {
  return DecodeDct(stream, format, frame);
}

void JpegExtendedCoder::RequireEncodable(const FrameFormat& format) const {
  return format.bitsAllocated == 8 ? RequireDct8(format) : RequireDct12(format);
}

EncodedFrame JpegExtendedCoder::Encode(Bytes frame, const FrameFormat& format,
                                       const EncoderSettings& settings) const {
  return {format.bitsAllocated == 8 ? EncodeDct8(frame, format, settings.jpegQuality)
                                    : EncodeDct12(frame, format, settings.jpegQuality),
          true};
}

std::string JpegExtendedCoder::EncodedPhotometric(const FrameFormat& format,
                                                  bool /*isLossy*/) const {
  return format.samples == 3 ? "YBR_FULL_422" : format.photometric;
}

const char* JpegExtendedCoder::LossyMethod() const { return "ISO_10918_1"; }

}  // namespace tessaret::codecs
