#include "jpeg/dct12_encoder.h"

#include "failure.h"

namespace tessaret::codecs {

void RequireDct12(const FrameFormat& format) { Fail("%u", format.rows); }

std::vector<std::uint8_t> EncodeDct12(Bytes frame, const FrameFormat& format,
                                      std::uint32_t quality) {
  Fail("%u %zu %u", format.rows, frame.size(), quality);
}

}  // namespace tessaret::codecs
