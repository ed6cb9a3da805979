// Lossless JPEG, of any predictor (DICOM PS3.5, 8.2.1). Frames are encoded by predictor 1, which both of its syntaxes allow.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

class JpegLosslessCoder final : public FrameCoder {
 public:
  DecodedFrame Decode(Bytes stream, const FrameFormat& format, MutableBytes frame) const override;
  void RequireEncodable(const FrameFormat& format) const override;
  [[nodiscard]] EncodedFrame Encode(Bytes frame, const FrameFormat& format,
                                    const EncoderSettings& settings) const override;
};

}  // namespace tessaret::codecs
