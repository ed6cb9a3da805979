#include "jpeg/jpeg_extended_coder.h"

#include "failure.h"
#include "jpeg/dct12_decoder.h"
#include "jpeg/dct12_encoder.h"
#include "jpeg/dct8_decoder.h"
#include "jpeg/dct8_encoder.h"
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

DecodedFrame JpegExtendedCoder::Decode(Bytes stream, const FrameFormat& format,
                                       MutableBytes frame) const {
  return PrecisionOf(stream) == 8 ? DecodeDct8(stream, format, frame)
                                  : DecodeDct12(stream, format, frame);
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

std::string JpegExtendedCoder::EncodedPhotometric(const FrameFormat& format) const {
  return format.samples == 3 ? "YBR_FULL_422" : format.photometric;
}

const char* JpegExtendedCoder::LossyMethod() const { return "ISO_10918_1"; }

}  // namespace tessaret::codecs
