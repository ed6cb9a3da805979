#include "codec_frames.h"
#include "jpegls/jpegls_coder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const tessaret::codecs::JpegLsCoder coder(tessaret::codecs::JpegLsKind::kLossless);
  return tessaret::fuzz::DecodeOne(coder, data, size);
}
