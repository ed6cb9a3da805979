#include "jpeg/jpeg_progressive_coder.h"

#include "failure.h"
#include "jpeg/dct_decoder.h"

namespace tessaret::codecs {
namespace {

[[noreturn]] void FailRetired() { Fail("the transfer syntax is retired and only decoded"); }

}  // namespace

DecodedFrame JpegProgressiveCoder::Decode(Bytes stream, const FrameFormat& format,
                                          MutableBytes frame) const {
  return DecodeDct(stream, format, frame);
}

void JpegProgressiveCoder::RequireEncodable(const FrameFormat& /*format*/) const { FailRetired(); }

EncodedFrame JpegProgressiveCoder::Encode(Bytes /*frame*/, const FrameFormat& /*format*/,
                                          const EncoderSettings& /*settings*/) const {
  FailRetired();
}

const char* JpegProgressiveCoder::LossyMethod() const { return "ISO_10918_1"; }

}  // namespace tessaret::codecs
