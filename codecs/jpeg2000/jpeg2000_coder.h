// JPEG 2000 (ISO/IEC 15444-1). OpenJPEG encodes, and decodes the high-throughput form (15444-15); damaged streams and failed allocations
// can make it end the process, so all others are decoded here.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

/// What encoders do. Decoding is the same, for files come with any kind of stream under any name.
enum class Jpeg2000Kind { kLossless, kLossy, kHighThroughput };

class Jpeg2000Coder final : public FrameCoder {
 public:
  explicit Jpeg2000Coder(Jpeg2000Kind kind) : kind_(kind) {}

  DecodedFrame Decode(Bytes stream, const FrameFormat& format, MutableBytes frame) const override;
  void RequireEncodable(const FrameFormat& format) const override;
  [[nodiscard]] EncodedFrame Encode(Bytes frame, const FrameFormat& format,
                                    const EncoderSettings& settings) const override;
  [[nodiscard]] std::string EncodedPhotometric(const FrameFormat& format,
                                               bool isLossy) const override;
  [[nodiscard]] const char* LossyMethod() const override;

 private:
  Jpeg2000Kind kind_;
};

}  // namespace tessaret::codecs
