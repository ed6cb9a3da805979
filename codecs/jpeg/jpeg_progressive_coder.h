// JPEG in several scans (DICOM PS3.5, A.4.1): retired, and therefore only decoded.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

class JpegProgressiveCoder final : public FrameCoder {
 public:
  DecodedFrame Decode(Bytes stream, const FrameFormat& format, MutableBytes frame) const override;
  void RequireEncodable(const FrameFormat& format) const override;
  [[nodiscard]] EncodedFrame Encode(Bytes frame, const FrameFormat& format,
                                    const EncoderSettings& settings) const override;
  [[nodiscard]] const char* LossyMethod() const override;
};

}  // namespace tessaret::codecs
