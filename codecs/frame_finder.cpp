#include "frame_finder.h"

#include <algorithm>

#include "base/byte_order.h"
#include "failure.h"
#include "stream_shape.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint64_t kItemHeader = 8;

Bytes FragmentOf(const VR* pixels, std::uint32_t index) {
  std::uint32_t length = 0;
  const std::uint8_t* bytes = tessaret_codec_fragment(pixels, index, &length);
  return {bytes, bytes == nullptr ? 0 : length};
}

/// The fragments at which the offset table says that frames begin; empty where it is not about these fragments.
std::vector<std::uint32_t> FirstsByTable(const VR* pixels, std::uint32_t fragments,
                                         const CodecFrame& place) {
  if (place.OffsetTableLength / 4 != place.Frames) return {};
  std::vector<std::uint32_t> firsts;
  std::uint64_t offset = 0;
  for (std::uint32_t at = 0; at < fragments && firsts.size() < place.Frames; ++at) {
    if (LoadLittle32(place.OffsetTable + 4 * firsts.size()) == offset) firsts.push_back(at);
    offset += kItemHeader + FragmentOf(pixels, at).size();
  }
  return firsts.size() == place.Frames ? firsts : std::vector<std::uint32_t>();
}

/// The fragments that begin like code streams; empty where these are not as many as frames.
std::vector<std::uint32_t> FirstsByShape(const VR* pixels, std::uint32_t fragments,
                                         std::uint32_t frames, StreamKind kind) {
  std::vector<std::uint32_t> firsts;
  for (std::uint32_t at = 0; at < fragments; ++at) {
    if (!BeginsLike(kind, FragmentOf(pixels, at))) continue;
    if (firsts.size() == frames) return {};
    firsts.push_back(at);
  }
  return firsts.size() == frames ? firsts : std::vector<std::uint32_t>();
}

}  // namespace

FrameFinder::FrameFinder(const VR* pixels, const CodecFrame& place, StreamKind kind)
    : pixels_(pixels), frames_(place.Frames), fragments_(tessaret_codec_item_count(pixels)) {
  if (fragments_ == frames_) return;
  if (frames_ == 1) {
    firstFragments_ = {0};
  } else if (fragments_ == 1) {
    FindInOneFragment(kind);
  } else if (fragments_ > frames_) {
    FindByFragments(place, kind);
  } else {
    Fail("%u fragments are too few for %u frames", fragments_, frames_);
  }
}

void FrameFinder::FindInOneFragment(StreamKind kind) {
  Bytes rest = Fragment(0);
  while (parts_.size() < frames_) {
    const std::size_t length = LengthOfStream(kind, rest);
    if (length == 0) {
      Fail("one fragment has %zu code streams, not the %u of the frames", parts_.size(), frames_);
    }
    parts_.push_back(rest.first(length));
    rest = rest.subspan(length);
    const auto next = std::find_if(rest.begin(), rest.end(), [](std::uint8_t b) { return b != 0; });
    rest = rest.subspan(static_cast<std::size_t>(next - rest.begin()));
  }
}

void FrameFinder::FindByFragments(const CodecFrame& place, StreamKind kind) {
  firstFragments_ = FirstsByTable(pixels_, fragments_, place);
  const auto begins = [&](std::uint32_t at) { return BeginsLike(kind, Fragment(at)); };
  if (!firstFragments_.empty() && std::ranges::all_of(firstFragments_, begins)) return;
  firstFragments_ = FirstsByShape(pixels_, fragments_, frames_, kind);
  if (firstFragments_.empty()) {
    Fail("%u fragments cannot be told apart as %u frames", fragments_, frames_);
  }
}

Bytes FrameFinder::Fragment(std::uint32_t index) const { return FragmentOf(pixels_, index); }

Bytes FrameFinder::Frame(std::uint32_t index, std::vector<std::uint8_t>& joined) const {
  if (!parts_.empty()) return parts_[index];
  if (firstFragments_.empty()) return Fragment(index);
  const std::uint32_t end = index + 1 < frames_ ? firstFragments_[index + 1] : fragments_;
  joined.clear();
  std::size_t size = 0;
  for (std::uint32_t at = firstFragments_[index]; at < end; ++at) size += Fragment(at).size();
  joined.reserve(size);
  for (std::uint32_t at = firstFragments_[index]; at < end; ++at) {
    const Bytes fragment = Fragment(at);
    joined.insert(joined.end(), fragment.begin(), fragment.end());
  }
  return joined;
}

}  // namespace tessaret::codecs
