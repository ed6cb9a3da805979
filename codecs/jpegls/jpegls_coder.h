// JPEG-LS (ISO/IEC 14495-1). CharLS encodes; damaged streams can make it end the process, so decoding is done here.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

/// What an encoder may lose. Decoding is the same, for files come with either kind of stream under either name.
enum class JpegLsKind { kLossless, kNearLossless };

class JpegLsCoder final : public FrameCoder {
 public:
  explicit JpegLsCoder(JpegLsKind kind) : kind_(kind) {}

  DecodedFrame Decode(Bytes stream, const FrameFormat& format, MutableBytes frame) const override;
  void RequireEncodable(const FrameFormat& format) const override;
  [[nodiscard]] EncodedFrame Encode(Bytes frame, const FrameFormat& format,
                                    const EncoderSettings& settings) const override;
  [[nodiscard]] const char* LossyMethod() const override;

 private:
  JpegLsKind kind_;
};

}  // namespace tessaret::codecs
