#include "frame_finder.h"

#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "core/object_maker.h"

namespace tessaret::codecs {
namespace {

using ::tessaret::test::Bytes;
using ::tessaret::test::Joined;

constexpr TagKey kItem = MakeTagKey(0xFFFE, 0xE000);

/// The smallest that begins and ends as a JPEG stream does; `id` tells it apart. No byte of it is a frame's.
Bytes Jpeg(std::uint8_t id) { return {0xFF, 0xD8, 0xFF, 0xFE, 0x00, 0x03, id, 0xFF, 0xD9, 0x00}; }

Bytes Rle(std::uint8_t id) {
  Bytes bytes(66);
  bytes[0] = 1;
  bytes[4] = 64;
  bytes[64] = 0;
  bytes[65] = id;
  return bytes;
}

Bytes Table(std::initializer_list<std::uint32_t> offsets) {
  Bytes bytes;
  for (const std::uint32_t offset : offsets) {
    for (int shift = 0; shift < 32; shift += 8) {
      bytes.push_back(static_cast<std::uint8_t>(offset >> shift));
    }
  }
  return bytes;
}

/// Pixel data with these fragments, as codecs meet it: without its offset table, which stands in the place.
class Pixels {
 public:
  Pixels(std::uint32_t frames, std::vector<Bytes> fragments, Bytes table = {})
      : table_(std::move(table)),
        vr_(::tessaret::test::NewVR(kPixelDataTag)),
        place_{0, frames, table_.data(), static_cast<std::uint32_t>(table_.size())} {
    for (const Bytes& fragment : fragments) {
      vr_->AddItem(::tessaret::test::NewObject({::tessaret::test::NewVR(kItem, fragment)}));
    }
  }

  /// The bytes of all frames, or what is wrong.
  [[nodiscard]] std::vector<Bytes> Frames(StreamKind kind) const {
    const FrameFinder finder(vr_.get(), place_, kind);
    std::vector<Bytes> frames;
    std::vector<std::uint8_t> joined;
    for (std::uint32_t at = 0; at < place_.Frames; ++at) {
      const codecs::Bytes frame = finder.Frame(at, joined);
      frames.emplace_back(frame.begin(), frame.end());
    }
    return frames;
  }
  [[nodiscard]] std::string Words(StreamKind kind) const {
    return test::WordsOf([&] { static_cast<void>(Frames(kind)); });
  }

 private:
  Bytes table_;
  std::unique_ptr<VR> vr_;
  CodecFrame place_;
};

/// Cut in two behind so many bytes.
std::vector<Bytes> Cut(const Bytes& bytes, std::ptrdiff_t at) {
  return {Bytes(bytes.begin(), bytes.begin() + at), Bytes(bytes.begin() + at, bytes.end())};
}

TEST(FrameFinder, AsManyFragmentsAsFramesAreOneEachWhateverTheTableSays) {
  const std::vector<Bytes> fragments = {{1, 2}, {3, 4}, {5, 6}};
  EXPECT_EQ(Pixels(3, fragments).Frames(StreamKind::kJpeg), fragments);
  EXPECT_EQ(Pixels(3, fragments, Table({0, 7, 7777})).Frames(StreamKind::kJpeg), fragments);
  EXPECT_EQ(Pixels(1, {{1, 2}}, Table({5})).Frames(StreamKind::kRle), std::vector<Bytes>({{1, 2}}));
}

TEST(FrameFinder, ASingleFrameIsAllFragmentsTogether) {
  EXPECT_EQ(Pixels(1, {{1, 2}, {}, {3, 4}}).Frames(StreamKind::kRle),
            std::vector<Bytes>({{1, 2, 3, 4}}));
}

TEST(FrameFinder, TheOffsetTableTellsWhereFramesBegin) {
  const auto first = Cut(Jpeg(1), 4);
  const std::vector<Bytes> fragments = {first[0], first[1], Jpeg(2)};
  // Items of 4 and 6 bytes with headers of 8 lie before the second frame: 12 + 14 = 26.
  EXPECT_EQ(Pixels(2, fragments, Table({0, 26})).Frames(StreamKind::kJpeg),
            std::vector<Bytes>({Jpeg(1), Jpeg(2)}));
}

TEST(FrameFinder, ATableIsBelievedWhereABeginningStandsWithinAFrameToo) {
  // The second fragment of the first frame begins as a stream does, by chance or as a thumbnail.
  const std::vector<Bytes> fragments = {Jpeg(1), Jpeg(2), Jpeg(3)};
  // Three items of 18 bytes.
  EXPECT_EQ(Pixels(2, fragments, Table({0, 36})).Frames(StreamKind::kJpeg),
            std::vector<Bytes>({Joined({Jpeg(1), Jpeg(2)}), Jpeg(3)}));
  EXPECT_EQ(Pixels(2, fragments).Words(StreamKind::kJpeg),
            "3 fragments cannot be told apart as 2 frames");
}

TEST(FrameFinder, WithoutATableAndWithAWrongOneBeginningsTell) {
  const auto first = Cut(Jpeg(1), 4);
  const auto second = Cut(Jpeg(2), 6);
  const std::vector<Bytes> fragments = {first[0], first[1], second[0], second[1]};
  const std::vector<Bytes> frames = {Jpeg(1), Jpeg(2)};
  EXPECT_EQ(Pixels(2, fragments).Frames(StreamKind::kJpeg), frames);
  // Within a fragment, in front of one that is no beginning, behind the end, descending, too short, too long.
  for (const Bytes& table : {Table({0, 25}), Table({0, 12}), Table({0, 1000}), Table({26, 0}),
                             Table({0}), Table({0, 26, 27}), Bytes{0, 0, 0, 0, 26}}) {
    EXPECT_EQ(Pixels(2, fragments, table).Frames(StreamKind::kJpeg), frames);
  }
}

TEST(FrameFinder, RleFramesAreToldApartByTheirHeaders) {
  const auto first = Cut(Rle(7), 64);
  EXPECT_EQ(Pixels(2, {first[0], first[1], Rle(9)}).Frames(StreamKind::kRle),
            std::vector<Bytes>({Rle(7), Rle(9)}));
}

TEST(FrameFinder, OneFragmentMayHaveAllFramesWhereStreamsTellTheirEnd) {
  EXPECT_EQ(Pixels(2, {Joined({Jpeg(1), Jpeg(2)})}).Frames(StreamKind::kJpeg),
            std::vector<Bytes>({{0xFF, 0xD8, 0xFF, 0xFE, 0, 3, 1, 0xFF, 0xD9},
                                {0xFF, 0xD8, 0xFF, 0xFE, 0, 3, 2, 0xFF, 0xD9}}));
  EXPECT_EQ(Pixels(3, {Joined({Jpeg(1), Jpeg(2)})}).Words(StreamKind::kJpeg),
            "one fragment has 2 code streams, not the 3 of the frames");
  EXPECT_EQ(Pixels(2, {Joined({Rle(1), Rle(2)})}).Words(StreamKind::kRle),
            "one fragment has 0 code streams, not the 2 of the frames");
}

TEST(FrameFinder, StreamsThatNoFrameIsNamedForAreNotLost) {
  EXPECT_EQ(Pixels(1, {Jpeg(1), Jpeg(2), Jpeg(3)}).Words(StreamKind::kJpeg),
            "3 code streams are more than one frame");
  EXPECT_EQ(Pixels(1, {Rle(1), Rle(2)}).Words(StreamKind::kRle),
            "2 code streams are more than one frame");
  EXPECT_EQ(Pixels(2, {Joined({Jpeg(1), Jpeg(2), Jpeg(3)})}).Words(StreamKind::kJpeg),
            "one fragment has more code streams than the 2 frames");
  // Filling is no stream.
  EXPECT_EQ(Pixels(1, {Jpeg(1), {0xFF, 0xD8}}).Words(StreamKind::kJpeg), "");
  EXPECT_EQ(Pixels(2, {Joined({Jpeg(1), Jpeg(2), {7, 7}})}).Words(StreamKind::kJpeg), "");
}

TEST(FrameFinder, NothingInFrontOfTheFirstFrameOrBehindTheLastIsLeftOut) {
  constexpr const char* kWords = "3 fragments cannot be told apart as 2 frames";
  // Items of 18 bytes: the table passes the first stream over.
  EXPECT_EQ(Pixels(2, {Jpeg(1), Jpeg(2), Jpeg(3)}, Table({18, 36})).Words(StreamKind::kJpeg),
            kWords);
  EXPECT_EQ(Pixels(2, {{1, 2}, Jpeg(2), Jpeg(3)}, Table({10, 28})).Words(StreamKind::kJpeg),
            kWords);
  EXPECT_EQ(Pixels(2, {{1, 2}, Jpeg(2), Jpeg(3)}).Words(StreamKind::kJpeg), kWords);
  // Nor behind the last one: a table of three frames is not about two.
  EXPECT_EQ(Pixels(2, {Jpeg(1), Jpeg(2), Jpeg(3)}, Table({0, 18, 36})).Words(StreamKind::kJpeg),
            kWords);
  // An empty fragment has nothing to lose.
  const std::vector<Bytes> frames = {Jpeg(2), Jpeg(3)};
  EXPECT_EQ(Pixels(2, {{}, Jpeg(2), Jpeg(3)}).Frames(StreamKind::kJpeg), frames);
  EXPECT_EQ(Pixels(2, {{}, Jpeg(2), Jpeg(3)}, Table({8, 26})).Frames(StreamKind::kJpeg), frames);
}

TEST(FrameFinder, FramesThatCannotBeToldApartAreRefused) {
  EXPECT_EQ(Pixels(2, {{1}, {2}, {3}}).Words(StreamKind::kJpeg),
            "3 fragments cannot be told apart as 2 frames");
  EXPECT_EQ(Pixels(3, {{1}, {2}}).Words(StreamKind::kJpeg), "2 fragments are too few for 3 frames");
  EXPECT_EQ(Pixels(2, {{1}, {2}, {3}}, Table({0, 9})).Words(StreamKind::kNone),
            "3 fragments cannot be told apart as 2 frames");
}

TEST(FrameFinder, AnEmptyFragmentAtTheEndBelongsToTheLastFrame) {
  EXPECT_EQ(Pixels(2, {Jpeg(1), Jpeg(2), {}}).Frames(StreamKind::kJpeg),
            std::vector<Bytes>({Jpeg(1), Jpeg(2)}));
}

}  // namespace
}  // namespace tessaret::codecs
