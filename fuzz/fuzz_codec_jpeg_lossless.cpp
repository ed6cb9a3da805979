#include <algorithm>

#include "codec_frames.h"
#include "jpeg/jpeg_lossless_coder.h"

namespace {

using tessaret::codecs::FrameFormat;
using tessaret::codecs::JpegLosslessCoder;

/// What is beyond the input is all zeros, of which a few do.
constexpr std::uint64_t kLargestEncoded = 1 << 14;

/// Takes the input for pixels too: they come back as they were.
void EncodeOne(const JpegLosslessCoder& coder, const std::uint8_t* data, std::size_t size) {
  FrameFormat format;
  if (!tessaret::fuzz::FormatFrom(data, size, format)) return;
  if (format.bitsAllocated != 8 && format.bitsAllocated != 16) return;
  if (format.Size() > kLargestEncoded) return;
  std::vector<std::uint8_t> frame(format.Size());
  const std::size_t count = std::min(frame.size(), size - tessaret::fuzz::kFormatBytes);
  std::copy_n(data + tessaret::fuzz::kFormatBytes, count, frame.begin());
  std::vector<std::uint8_t> back(frame.size());
  try {
    coder.Decode(coder.Encode(frame, format, {}).stream, format, back);
  } catch (const std::bad_alloc&) {
    return;
  }
  if (back != frame) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const JpegLosslessCoder coder;
  EncodeOne(coder, data, size);
  return tessaret::fuzz::DecodeOne(coder, data, size);
}
