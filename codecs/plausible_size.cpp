#include "plausible_size.h"

#include <cinttypes>

#include "failure.h"

namespace tessaret::codecs {
namespace {

/// Frames up to this are taken from any stream: an empty picture may well be a few bytes.
constexpr std::uint64_t kAlwaysPlausible = std::uint64_t{64} << 20;

constexpr std::uint64_t kBestRatio = 4096;

}  // namespace

void RequirePlausibleSize(std::uint64_t stream, const FrameFormat& format) {
  const std::uint64_t size = format.Size();
  if (size > kAlwaysPlausible && size / kBestRatio > stream) {
    Fail("%" PRIu64 " bytes cannot hold a frame of %" PRIu64, stream, size);
  }
}

}  // namespace tessaret::codecs
