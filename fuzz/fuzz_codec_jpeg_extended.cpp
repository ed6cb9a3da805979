#include "codec_frames.h"
#include "jpeg/jpeg_extended_coder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tessaret::codecs::JpegExtendedCoder coder;
  return tessaret::fuzz::DecodeOne(coder, data, size);
}
