#include "codec_frames.h"
#include "jpeg2000/jpeg2000_coder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tessaret::codecs::Jpeg2000Coder coder(tessaret::codecs::Jpeg2000Kind::kLossless);
  return tessaret::fuzz::DecodeOne(coder, data, size);
}
