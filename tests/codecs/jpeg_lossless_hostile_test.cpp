// Lossless JPEG that is damaged, or made to harm: each stream gives words or some pixels, soon, and nothing else.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>

#include <gtest/gtest.h>

#include "codecs/lossless_images.h"
#include "jpeg/jpeg_markers.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"

namespace tessaret::codecs {
namespace {

using tessaret::test::Repetitions;

/// A stream of 8 x 4 samples of 8 bits, all 128, in parts that a test changes.
struct Parts {
  Stream table = SegmentOf(0xC4, Joined({{0x00}, test::FlatTable().Content()}));
  Stream restart{};
  Stream header = SegmentOf(0xC3, {8, 0, 4, 0, 8, 1, 1, 0x11, 0});
  Stream scan = SegmentOf(0xDA, {1, 1, 0x00, 1, 0, 0});
  Stream data = Packed(std::string(32 * 5, '0'));
  Stream end = {0xFF, 0xD9};

  [[nodiscard]] Stream Whole() const {
    return Joined({{0xFF, 0xD8}, table, restart, header, scan, data, end});
  }
};

FrameFormat PartsFormat() { return test::MakeFormat(8, 4, 1, 8, 8); }

std::string RefusalWith(const std::function<void(Parts&)>& change) {
  Parts parts;
  change(parts);
  return Refusal(parts.Whole(), PartsFormat());
}

TEST(JpegLosslessDamage, IsToldInWords) {
  EXPECT_EQ(RefusalWith([](Parts&) {}), "");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.end.clear(); }),
            "the code stream ends within its entropy-coded data");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.data.pop_back(); }),
            "the entropy-coded data end before the image does");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.data.push_back(0); }),
            "there are more entropy-coded data than the image needs");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.data[3] = 0xF0; }),
            "the entropy-coded data hold bits that are no code");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.table.clear(); }), "there is no Huffman table 0");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.header.clear(); }),
            "the code stream has no frame header");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.scan.clear(), parts.data.clear(); }),
            "the code stream ends before its component 1");
  EXPECT_EQ(RefusalWith([](Parts& parts) {
              parts.header = Joined({parts.header, parts.header});
            }),
            "the code stream has two frame headers");
  EXPECT_EQ(RefusalWith([](Parts& parts) {
              parts.restart = {0xFF, 0x01, 0, 2};
            }),
            "marker 01 stands where none belongs");
  EXPECT_EQ(RefusalWith([](Parts& parts) {
              parts.restart = {0xFF, 0xE1, 0, 1};
            }),
            "the segment of marker E1 has a length of 1");
  EXPECT_EQ(RefusalWith([](Parts& parts) {
              parts.restart = {0xFF, 0xE1, 0, 0};
            }),
            "the segment of marker E1 has a length of 0");
}

TEST(JpegLosslessDamage, IsToldOfHeaders) {
  const auto header = [](const Stream& content) {
    return RefusalWith([&](Parts& parts) { parts.header = SegmentOf(0xC3, content); });
  };
  EXPECT_EQ(header({1, 0, 4, 0, 8, 1, 1, 0x11, 0}), "the code stream has samples of 1 bits");
  EXPECT_EQ(header({0, 0, 4, 0, 8, 1, 1, 0x11, 0}), "the code stream has samples of 0 bits");
  EXPECT_EQ(header({17, 0, 4, 0, 8, 1, 1, 0x11, 0}),
            "the code stream has samples of 17 bits, the data set allocates 8");
  EXPECT_EQ(header({12, 0, 4, 0, 8, 1, 1, 0x11, 0}),
            "the code stream has samples of 12 bits, the data set allocates 8");
  EXPECT_EQ(header({8, 0, 5, 0, 8, 1, 1, 0x11, 0}),
            "the code stream has 8 x 5 pixels, the data set 8 x 4");
  EXPECT_EQ(header({8, 0, 0, 0, 8, 1, 1, 0x11, 0}),
            "the code stream does not tell its rows in the frame header");
  EXPECT_EQ(header({8, 0, 4, 0, 8, 1, 1, 0x10, 0}), "component 1 has sampling factors of 1 x 0");
  EXPECT_EQ(header({8, 0, 4, 0, 8, 3, 1, 0x11, 0, 2, 0x11, 0, 3, 0x11, 0}),
            "the code stream has 3 components, the data set 1 samples per pixel");
  Parts parts;
  parts.header = SegmentOf(0xC3, {17, 0, 4, 0, 8, 1, 1, 0x11, 0});
  EXPECT_EQ(Refusal(parts.Whole(), test::MakeFormat(8, 4, 1, 32, 32)),
            "the code stream has samples of 17 bits");
  parts.header = SegmentOf(0xC3, {8, 0, 4, 0, 8, 3, 1, 0x21, 0, 2, 0x11, 0, 3, 0x11, 0});
  EXPECT_EQ(Refusal(parts.Whole(), test::MakeFormat(8, 4, 3, 8, 8)),
            "component 1 has sampling factors of 2 x 1");
}

TEST(JpegLosslessDamage, IsToldOfScans) {
  const auto scan = [](const Stream& content) {
    return RefusalWith([&](Parts& parts) { parts.scan = SegmentOf(0xDA, content); });
  };
  EXPECT_EQ(scan({1, 1, 0, 0, 0, 0}), "there is no predictor 0");
  EXPECT_EQ(scan({1, 1, 0, 8, 0, 0}), "there is no predictor 8");
  EXPECT_EQ(scan({1, 1, 0, 1, 0, 8}), "samples of 8 bits cannot be coded without 8");
  EXPECT_EQ(scan({1, 1, 0, 1, 0, 15}), "samples of 8 bits cannot be coded without 15");
  EXPECT_EQ(scan({1, 2, 0, 1, 0, 0}), "a scan names component 2, which the frame does not have");
  EXPECT_EQ(scan({1, 1, 0x40, 1, 0, 0}), "a scan names Huffman tables 4 and 0");
  EXPECT_EQ(scan({1, 1, 0x10, 1, 0, 0}), "there is no Huffman table 1");
  EXPECT_EQ(scan({0, 1, 0, 0}), "a scan has 0 of 1 components");
}

TEST(JpegLosslessDamage, IsToldOfTables) {
  const auto table = [](const Stream& content) {
    return RefusalWith([&](Parts& parts) { parts.table = SegmentOf(0xC4, content); });
  };
  Stream counts(16);
  counts[0] = 1;
  EXPECT_EQ(table(Joined({{0x00}, counts, {17}})), "a difference has 17 bits");
  EXPECT_EQ(table(Joined({{0x04}, counts, {0}})), "a Huffman table has class 0 and id 4");
  EXPECT_EQ(table(Joined({{0x10}, counts, {0}})), "there is no Huffman table 0");
  counts[0] = 3;
  EXPECT_EQ(table(Joined({{0x00}, counts, {0, 1, 2}})),
            "a Huffman table has more codes than there can be");
  EXPECT_EQ(table(Joined({{0x00}, Stream(16)})),
            "the entropy-coded data hold bits that are no code");
}

TEST(JpegLosslessDamage, IsToldOfRestartMarkers) {
  const PlainImage image = NoisyImage(5, 6, 1, 8, 256);
  PlainOptions options;
  options.rowsPerInterval = 2;
  const Stream whole = EncodePlainly(image, options);
  const auto refusal = [&](std::uint8_t from, std::uint8_t to) {
    Stream stream = whole;
    for (std::size_t at = 0; at + 1 < stream.size(); ++at) {
      if (stream[at] == 0xFF && stream[at + 1] == from) stream[at + 1] = to;
    }
    return Refusal(stream, FormatOf(image));
  };
  EXPECT_EQ(refusal(0xD0, 0xD0), "");
  EXPECT_EQ(refusal(0xD0, 0xD1), "restart marker 1 is lost");
  EXPECT_EQ(refusal(0xD1, 0xD2), "restart marker 2 is lost");
  EXPECT_EQ(refusal(0xD1, 0xD9), "there are 2 restart intervals where 3 belong");
  EXPECT_EQ(RefusalWith([](Parts& parts) {
              parts.restart = SegmentOf(0xDD, {0, 12});
            }),
            "restart markers every 12 pixels do not go with rows of 8");
  EXPECT_EQ(RefusalWith([](Parts& parts) {
              parts.restart = SegmentOf(0xDD, {0, 16});
            }),
            "there are 1 restart intervals where 2 belong");
  EXPECT_EQ(RefusalWith([](Parts& parts) { parts.restart = SegmentOf(0xDD, {0, 32}); }), "");
  EXPECT_EQ(RefusalWith([](Parts& parts) {
              parts.data = Joined({parts.data, {0xFF, 0xD0}, parts.data});
            }),
            "there is a restart marker too many");
}

TEST(JpegLosslessDamage, IsToldOfOtherProcesses) {
  for (unsigned marker = 0xC1; marker <= 0xCF; ++marker) {
    if (!IsFrameHeader(static_cast<Marker>(marker)) || marker == 0xC3) continue;
    Parts parts;
    parts.header[1] = static_cast<std::uint8_t>(marker);
    parts.header[4] = 12;
    char words[80];
    std::snprintf(words, sizeof words,
                  "the code stream is JPEG of marker %02X, not lossless with Huffman codes",
                  marker);
    EXPECT_EQ(Refusal(parts.Whole(), test::MakeFormat(8, 4, 1, 16, 12)), words);
  }
  constexpr std::uint8_t kUnknown[] = {0xCC, 0xC8, 0xDC, 0xDE, 0xDF, 0xF0, 0xFD};
  for (const std::uint8_t marker : kUnknown) {
    char words[80];
    std::snprintf(words, sizeof words,
                  "the code stream has marker %02X, of which lossless JPEG knows nothing", marker);
    EXPECT_EQ(RefusalWith([&](Parts& parts) { parts.restart = SegmentOf(marker, {0, 1}); }), words);
  }
}

Stream Repeated(const Stream& part, std::size_t count) {
  Stream all;
  for (; count > 0; --count) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// As RefusalWith. Checks that it comes soon.
std::string SoonRefusalWith(const std::function<void(Parts&)>& change) {
  Parts parts;
  change(parts);
  const Stream whole = parts.Whole();
  const auto begin = std::chrono::steady_clock::now();
  const std::string words = Refusal(whole, PartsFormat());
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
  return words;
}

TEST(JpegLosslessDamage, TakesNoTimeWhateverThereIsMuchOf) {
  EXPECT_EQ(SoonRefusalWith([](Parts& parts) {
              const Stream scan = Joined({parts.scan, parts.data});
              parts.data = Joined({parts.data, Repeated(scan, Repetitions(10000u))});
            }),
            "component 1 comes twice");
  EXPECT_EQ(SoonRefusalWith(
                [](Parts& parts) { parts.table = Repeated(parts.table, Repetitions(100000u)); }),
            "");
  EXPECT_EQ(
      SoonRefusalWith([](Parts& parts) { parts.restart = Stream(Repetitions(10000000u), 0xFF); }),
      "");
  EXPECT_EQ(SoonRefusalWith([](Parts& parts) {
              parts.data = Joined({parts.data, Stream(Repetitions(10000000u), 0)});
            }),
            "there are more entropy-coded data than the image needs");
  EXPECT_EQ(SoonRefusalWith([](Parts& parts) {
              parts.data = Joined({parts.data, Repeated({0xFF, 0}, Repetitions(5000000u))});
            }),
            "");
  EXPECT_EQ(SoonRefusalWith([](Parts& parts) {
              parts.data = Joined({parts.data, Repeated({0xFF, 0xD0}, Repetitions(1000000u))});
            }),
            "there is a restart marker too many");
}

TEST(JpegLosslessDamage, IsToldOfFramesThatNoSuchStreamCanHold) {
  Parts parts;
  parts.header = SegmentOf(0xC3, {8, 16, 0, 16, 0, 1, 1, 0x11, 0});
  // 2 + 38 + 13 + 10 + 20 + 2
  EXPECT_EQ(Refusal(parts.Whole(), test::MakeFormat(4096, 4096, 1, 8, 8)),
            "85 bytes cannot hold 16777216 samples");
}

/// Checks that a stream gives words or pixels, with nothing written behind the frame.
void CheckSafe(const Stream& stream, const FrameFormat& format) {
  Stream frame(format.Size() + 16, 0xA5);
  try {
    JpegLosslessCoder().Decode(stream, format, MutableBytes(frame).first(format.Size()));
  } catch (const CodecFailure& failure) {
    EXPECT_STRNE(failure.what(), "");
  }
  EXPECT_EQ(std::count(frame.end() - 16, frame.end(), 0xA5), 16);
}

std::vector<std::pair<PlainImage, PlainOptions>> SmallImages() {
  PlainOptions restart;
  restart.rowsPerInterval = 1;
  restart.predictor = 4;
  PlainOptions apart;
  apart.isInterleaved = false;
  apart.tables = {test::SteepTable(2), test::FlatTable()};
  apart.predictor = 7;
  apart.pointTransform = 1;
  return {{NoisyImage(6, 5, 1, 8, 4), {}},
          {NoisyImage(9, 4, 1, 16, 65536), {}},
          {NoisyImage(5, 3, 1, 12, 30), restart},
          {NoisyImage(4, 3, 3, 8, 100), apart}};
}

TEST(JpegLosslessDamage, NoBeginningOfAStreamPassesForTheWhole) {
  for (const auto& [image, options] : SmallImages()) {
    const Stream whole = EncodePlainly(image, options);
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const Stream part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_NE(Refusal(part, FormatOf(image)), "") << size << " of " << whole.size();
    }
  }
}

TEST(JpegLosslessDamage, NoChangeOfAByteDoesHarm) {
  for (const auto& [image, options] : SmallImages()) {
    const Stream whole = EncodePlainly(image, options);
    for (std::size_t at = 0; at < whole.size(); ++at) {
      Stream changed = whole;
      // Every byte is changed under a sanitizer too, to every seventh value, other ones for each.
      const auto first = static_cast<unsigned>(at % tessaret::test::StepBy(7u));
      for (unsigned value = first; value < 256; value += tessaret::test::StepBy(7u)) {
        changed[at] = static_cast<std::uint8_t>(value);
        CheckSafe(changed, FormatOf(image));
      }
    }
  }
}

TEST(JpegLosslessDamage, NoLossOfBytesDoesHarm) {
  for (const auto& [image, options] : SmallImages()) {
    const Stream whole = EncodePlainly(image, options);
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (std::size_t count = 1; count < 4 && at + count <= whole.size(); ++count) {
        Stream cut = whole;
        const auto from = cut.begin() + static_cast<std::ptrdiff_t>(at);
        cut.erase(from, from + static_cast<std::ptrdiff_t>(count));
        CheckSafe(cut, FormatOf(image));
      }
    }
  }
}

TEST(JpegLosslessMemory, WhenItRunsOutThereIsAnErrorAndNothingLeaks) {
  const PlainImage image = NoisyImage(40, 30, 3, 8, 50);
  PlainOptions options;
  options.rowsPerInterval = 3;
  options.tables = {test::SteepTable(2), test::FlatTable()};
  const FrameFormat format = FormatOf(image);
  const Stream frame = FrameOf(image);
  const Stream stream = EncodePlainly(image, options);
  const JpegLosslessCoder coder;
  Stream back(format.Size());
  const tessaret::test::AllocationWatch watch;
  const auto decodes = tessaret::test::FailEveryAllocation([&] {
    try {
      coder.Decode(stream, format, back);
    } catch (const std::bad_alloc&) {
    }
  });
  EXPECT_GE(decodes, 4u);
  EXPECT_EQ(back, frame);
  const auto encodes = tessaret::test::FailEveryAllocation([&] {
    try {
      EXPECT_FALSE(coder.Encode(frame, format, {}).isLossy);
    } catch (const std::bad_alloc&) {
    }
  });
  EXPECT_GE(encodes, 3u);
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(JpegLosslessMemory, IsLittleMoreThanStreamAndRows) {
  const PlainImage image = NoisyImage(500, 200, 1, 16, 65536);
  const Stream stream = EncodePlainly(image, {});
  Stream back(FormatOf(image).Size());
  const tessaret::test::AllocationWatch watch;
  JpegLosslessCoder().Decode(stream, FormatOf(image), back);
  EXPECT_LE(watch.LargestRequest(), stream.size());
  EXPECT_LE(watch.Count(), 20u);
}

}  // namespace
}  // namespace tessaret::codecs
