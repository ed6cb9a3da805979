#include "codec_frames.h"
#include "jpeg/jpeg_baseline_coder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tessaret::codecs::JpegBaselineCoder coder;
  return tessaret::fuzz::DecodeOne(coder, data, size);
}
