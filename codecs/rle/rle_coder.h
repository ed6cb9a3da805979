// RLE lossless (DICOM PS3.5, G): each byte of the samples in a segment of its own, packed by runs.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

class RleCoder final : public FrameCoder {
 public:
  DecodedFrame Decode(Bytes stream, const FrameFormat& format, MutableBytes frame) const override;
  void RequireEncodable(const FrameFormat& format) const override;
  [[nodiscard]] EncodedFrame Encode(Bytes frame, const FrameFormat& format,
                                    const EncoderSettings& settings) const override;
};

}  // namespace tessaret::codecs
