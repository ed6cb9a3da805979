// JPEG extended (DICOM PS3.5, 8.2.1): eight or twelve bits, with losses.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

class JpegExtendedCoder final : public FrameCoder {
 public:
  DecodedFrame Decode(Bytes stream, const FrameFormat& format, MutableBytes frame) const override;
  void RequireEncodable(const FrameFormat& format) const override;
  [[nodiscard]] EncodedFrame Encode(Bytes frame, const FrameFormat& format,
                                    const EncoderSettings& settings) const override;
  [[nodiscard]] std::string EncodedPhotometric(const FrameFormat& format,
                                               bool isLossy) const override;
  [[nodiscard]] const char* LossyMethod() const override;
};

}  // namespace tessaret::codecs
