#include "frame_finder.h"

#include <algorithm>
#include <cstddef>

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

/// All fragments, in one go: the list that they are in costs one step each from the first to the last, and more in any other order.
std::vector<Bytes> FragmentsOf(const VR* pixels) {
  const std::uint32_t count = tessaret_codec_item_count(pixels);
  std::vector<Bytes> fragments;
  fragments.reserve(count);
  for (std::uint32_t at = 0; at < count; ++at) fragments.push_back(FragmentOf(pixels, at));
  return fragments;
}

/// The fragments at which the offset table says that frames begin; empty where it is not about these fragments.
std::vector<std::uint32_t> FirstsByTable(const std::vector<Bytes>& fragments,
                                         const CodecFrame& place) {
  if (place.OffsetTableLength / 4 != place.Frames) return {};
  std::vector<std::uint32_t> firsts;
  std::uint64_t offset = 0;
  for (std::uint32_t at = 0; at < fragments.size() && firsts.size() < place.Frames; ++at) {
    if (LoadLittle32(place.OffsetTable + 4 * firsts.size()) == offset) firsts.push_back(at);
    offset += kItemHeader + fragments[at].size();
  }
  return firsts.size() == place.Frames ? firsts : std::vector<std::uint32_t>();
}

/// The fragments that begin like code streams; empty where these are not as many as frames.
std::vector<std::uint32_t> FirstsByShape(const std::vector<Bytes>& fragments, std::uint32_t frames,
                                         StreamKind kind) {
  std::vector<std::uint32_t> firsts;
  for (std::uint32_t at = 0; at < fragments.size(); ++at) {
    if (!BeginsLike(kind, fragments[at])) continue;
    if (firsts.size() == frames) return {};
    firsts.push_back(at);
  }
  return firsts.size() == frames ? firsts : std::vector<std::uint32_t>();
}

}  // namespace

FrameFinder::FrameFinder(const VR* pixels, const CodecFrame& place, StreamKind kind)
    : pixels_(pixels), frames_(place.Frames), fragments_(FragmentsOf(pixels)) {
  if (fragments_.size() == frames_) return;
  if (frames_ == 1) {
    FindInAllFragments(kind);
  } else if (fragments_.size() == 1) {
    FindInOneFragment(kind);
  } else if (fragments_.size() > frames_) {
    FindByFragments(place, kind);
  } else {
    Fail("%zu fragments are too few for %u frames", fragments_.size(), frames_);
  }
}

/// More than one stream would be lost behind the first, which is all that a decoder looks at.
void FrameFinder::FindInAllFragments(StreamKind kind) {
  const auto begins = [&](Bytes fragment) { return BeginsLike(kind, fragment); };
  const auto streams = std::ranges::count_if(fragments_, begins);
  if (streams > 1) {
    Fail("%zu code streams are more than one frame", static_cast<std::size_t>(streams));
  }
  firstFragments_ = {0};
}

void FrameFinder::FindInOneFragment(StreamKind kind) {
  Bytes rest = fragments_[0];
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
  if (BeginsLike(kind, rest))
    Fail("one fragment has more code streams than the %u frames", frames_);
}

void FrameFinder::FindByFragments(const CodecFrame& place, StreamKind kind) {
  firstFragments_ = FirstsByTable(fragments_, place);
  const auto begins = [&](std::uint32_t at) { return BeginsLike(kind, fragments_[at]); };
  if (BeginAtFirst() && std::ranges::all_of(firstFragments_, begins)) return;
  firstFragments_ = FirstsByShape(fragments_, frames_, kind);
  if (!BeginAtFirst()) {
    Fail("%zu fragments cannot be told apart as %u frames", fragments_.size(), frames_);
  }
}

/// What lies in front of the first frame would be left out.
bool FrameFinder::BeginAtFirst() const {
  if (firstFragments_.empty()) return false;
  const auto end = fragments_.begin() + static_cast<std::ptrdiff_t>(firstFragments_[0]);
  return std::all_of(fragments_.begin(), end, [](Bytes fragment) { return fragment.empty(); });
}

Bytes FrameFinder::Frame(std::uint32_t index, std::vector<std::uint8_t>& joined) const {
  if (!parts_.empty()) return parts_[index];
  if (firstFragments_.empty()) return fragments_[index];
  const std::size_t begin = firstFragments_[index];
  const std::size_t end = index + 1 < frames_ ? firstFragments_[index + 1] : fragments_.size();
  std::size_t size = 0;
  for (std::size_t at = begin; at < end; ++at) size += fragments_[at].size();
  joined.clear();
  joined.reserve(size);
  for (std::size_t at = begin; at < end; ++at) {
    joined.insert(joined.end(), fragments_[at].begin(), fragments_[at].end());
  }
  return joined;
}

}  // namespace tessaret::codecs
