#include "codec_frames.h"
#include "rle/rle_coder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tessaret::codecs::RleCoder coder;
  return tessaret::fuzz::DecodeOne(coder, data, size);
}
