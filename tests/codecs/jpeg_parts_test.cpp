// What the coders of JPEG share: segments, Huffman tables, bits.
#include <cstdio>
#include <numeric>

#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "codecs/plain_lossless.h"
#include "jpeg/bit_reader.h"
#include "jpeg/bit_writer.h"
#include "jpeg/huffman_table.h"
#include "jpeg/jpeg_markers.h"
#include "jpeg/jpeg_process.h"
#include "jpeg/optimal_table.h"

namespace tessaret::codecs {
namespace {

using tessaret::test::Joined;
using test::Packed;
using test::SegmentOf;
using test::WordsOf;
using Stream = tessaret::test::Bytes;

constexpr std::uint8_t kSof3 = 0xC3;
constexpr std::uint8_t kSos = 0xDA;
const Stream kSoi = {0xFF, 0xD8};

std::string RefusalOfSegments(const Stream& behindSoi) {
  const Stream stream = Joined({kSoi, behindSoi});
  return WordsOf([&] {
    MarkerReader reader(stream);
    while (reader.Next().marker != Marker::kEoi) {
    }
  });
}

TEST(MarkerReader, GivesSegmentsOneByOneAndWhatFollowsThem) {
  const Stream stream =
      Joined({kSoi, {0xFF, 0xFE, 0, 4, 'a', 'b', 0xFF, 0xFF, 0xFF, 0xE0, 0, 2, 7, 8}});
  MarkerReader reader(stream);
  const Segment comment = reader.Next();
  EXPECT_EQ(comment.marker, Marker::kCom);
  ASSERT_EQ(comment.content.Left(), 2u);
  EXPECT_EQ(comment.content.Here()[0], 'a');
  const Segment application = reader.Next();  // behind two fill bytes
  EXPECT_EQ(application.marker, Marker::kApp0);
  EXPECT_EQ(application.content.Left(), 0u);
  EXPECT_EQ(Stream(reader.Rest().begin(), reader.Rest().end()), (Stream{7, 8}));
  reader.Skip(2);
  EXPECT_EQ(WordsOf([&] { reader.Skip(1); }), "the code stream ends early");
}

TEST(MarkerReader, RefusesWhatIsNoSegment) {
  EXPECT_EQ(RefusalOfSegments({0xFF, 0xFE, 0, 2, 0xFF, 0xD9}), "");
  EXPECT_EQ(RefusalOfSegments({}), "the code stream ends early");
  EXPECT_EQ(RefusalOfSegments({0xFF}), "the code stream ends early");
  EXPECT_EQ(RefusalOfSegments({0xFF, 0xFE, 0}), "the code stream ends early");
  EXPECT_EQ(RefusalOfSegments({0xFF, 0xFE, 0, 0}), "the segment of marker FE has a length of 0");
  EXPECT_EQ(RefusalOfSegments({0xFF, 0xFE, 0, 1}), "the segment of marker FE has a length of 1");
  EXPECT_EQ(RefusalOfSegments({0xFF, 0xFE, 0, 3}),
            "the segment of marker FE goes beyond the code stream");
  EXPECT_EQ(RefusalOfSegments({0x00, 0xFE}), "there are bytes between segments of the code stream");
  constexpr std::uint8_t kWithoutLength[] = {0x00, 0x01, 0x4F, 0xBF, 0xD0, 0xD7, 0xD8};
  for (const std::uint8_t code : kWithoutLength) {
    char words[64];
    std::snprintf(words, sizeof words, "marker %02X stands where none belongs", code);
    EXPECT_EQ(RefusalOfSegments({0xFF, code, 0, 2}), words);
  }
}

TEST(MarkerReader, RefusesWhatDoesNotBeginAsJpeg) {
  const auto words = [](const Stream& stream) {
    return WordsOf([&] { const MarkerReader reader(stream); });
  };
  EXPECT_EQ(words({}), "the code stream ends early");
  EXPECT_EQ(words({0xFF}), "the code stream ends early");
  EXPECT_EQ(words({0xFF, 0xD9}), "the code stream does not begin as JPEG does");
  EXPECT_EQ(words({0xFF, 0x4F}), "the code stream does not begin as JPEG does");
}

Segment SegmentWith(Marker marker, const Stream& content) {
  return {marker, BoundedReader(content.data(), content.size())};
}

TEST(FrameHeader, IsReadFieldByField) {
  const Stream content = {12, 1, 2, 3, 4, 3, 10, 0x21, 0, 20, 0x12, 1, 30, 0x44, 3};
  const FrameHeader header = ReadFrameHeader(SegmentWith(Marker::kSof1, content));
  EXPECT_EQ(header.marker, Marker::kSof1);
  EXPECT_EQ(header.precision, 12u);
  EXPECT_EQ(header.rows, 0x0102u);
  EXPECT_EQ(header.columns, 0x0304u);
  ASSERT_EQ(header.count, 3u);
  EXPECT_EQ(header.components[0].id, 10);
  EXPECT_EQ(header.components[0].horizontal, 2);
  EXPECT_EQ(header.components[0].vertical, 1);
  EXPECT_EQ(header.components[1].quantisation, 1);
  EXPECT_EQ(header.components[2].vertical, 4);
}

TEST(FrameHeader, IsRefusedWhereItMakesNoSense) {
  const auto words = [](const Stream& content) {
    return WordsOf([&] { ReadFrameHeader(SegmentWith(Marker::kSof3, content)); });
  };
  EXPECT_EQ(words({8, 0, 1, 0, 1, 1, 1, 0x11}), "the frame header ends early");
  EXPECT_EQ(words({8, 0, 1, 0, 1, 1, 1, 0x11, 0, 0}),
            "the frame header is longer than its 1 components");
  EXPECT_EQ(words({8, 0, 1, 0, 0, 1, 1, 0x11, 0}), "the code stream has no columns");
  EXPECT_EQ(words({8, 0, 0, 0, 1, 1, 1, 0x11, 0}),
            "the code stream does not tell its rows in the frame header");
  EXPECT_EQ(words({8, 0, 1, 0, 1, 0}), "the code stream has 0 components");
  EXPECT_EQ(words({8, 0, 1, 0, 1, 5}), "the code stream has 5 components");
  EXPECT_EQ(words({8, 0, 1, 0, 1, 1, 1, 0x01, 0}), "component 1 has sampling factors of 0 x 1");
  EXPECT_EQ(words({8, 0, 1, 0, 1, 1, 1, 0x15, 0}), "component 1 has sampling factors of 1 x 5");
  EXPECT_EQ(words({8, 0, 1, 0, 1, 1, 1, 0x11, 4}), "component 1 has quantisation table 4");
  EXPECT_EQ(words({8, 0, 1, 0, 1, 2, 7, 0x11, 0, 7, 0x11, 0}), "two components have id 7");
}

TEST(FrameHeader, MustBeThatOfTheDataSet) {
  const Stream content = {12, 0, 20, 0, 30, 1, 1, 0x11, 0};
  const FrameHeader header = ReadFrameHeader(SegmentWith(Marker::kSof3, content));
  const auto words = [&](const FrameFormat& format) {
    return WordsOf([&] { RequireSameShape(header, format); });
  };
  EXPECT_EQ(words(test::MakeFormat(30, 20, 1, 16, 10)), "");
  EXPECT_EQ(words(test::MakeFormat(20, 30, 1, 16, 12)),
            "the code stream has 30 x 20 pixels, the data set 20 x 30");
  EXPECT_EQ(words(test::MakeFormat(30, 20, 3, 16, 12)),
            "the code stream has 1 components, the data set 3 samples per pixel");
  EXPECT_EQ(words(test::MakeFormat(30, 20, 1, 8, 8)),
            "the code stream has samples of 12 bits, the data set allocates 8");
}

TEST(FrameHeader, IsFoundBehindOtherSegments) {
  const Stream header = SegmentOf(kSof3, {8, 0, 1, 0, 1, 1, 1, 0x11, 0});
  const Stream stream = Joined({kSoi, SegmentOf(0xFE, {1, 2}), header});
  EXPECT_EQ(FindFrameHeader(stream).marker, Marker::kSof3);
  const Stream late = Joined({kSoi, SegmentOf(kSos, {1}), header});
  EXPECT_EQ(WordsOf([&] { FindFrameHeader(late); }), "the code stream has no frame header");
}

TEST(Marker, IsAFrameHeaderButForThreeThatLieAmongThem) {
  std::string headers;
  for (unsigned code = 0; code < 256; ++code) {
    if (IsFrameHeader(static_cast<Marker>(code))) headers += std::to_string(code) + ' ';
  }
  EXPECT_EQ(headers, "192 193 194 195 197 198 199 201 202 203 205 206 207 ");
}

FrameHeader ThreeComponents() {
  static const Stream content = {8, 0, 1, 0, 1, 3, 1, 0x11, 0, 2, 0x11, 0, 3, 0x11, 0};
  return ReadFrameHeader(SegmentWith(Marker::kSof3, content));
}

TEST(JpegProcess, IsToldByTheFrameHeaderBehindOtherSegments) {
  const std::pair<std::uint8_t, JpegProcess> kinds[] = {
      {0xC0, JpegProcess::kDct},      {0xC1, JpegProcess::kDct},    {0xC2, JpegProcess::kDct},
      {0xC3, JpegProcess::kLossless}, {0xF7, JpegProcess::kJpegLs}, {0xC9, JpegProcess::kUnknown},
      {0xDA, JpegProcess::kUnknown}};
  for (const auto& [marker, process] : kinds) {
    EXPECT_EQ(ProcessOf(Joined({kSoi, {0xFF, marker}})), process);
    for (const std::uint8_t before : Stream{0xE0, 0xEF, 0xFE, 0xC4, 0xDB, 0xDD, 0xF8}) {
      EXPECT_EQ(ProcessOf(Joined({kSoi, SegmentOf(before, {0xFF, 0xC0}), {0xFF, marker}})), process)
          << unsigned{before};
    }
    EXPECT_EQ(ProcessOf(Joined({kSoi, {0xFF, 0xFF, 0xFF, marker}})), process) << "fill bytes";
  }
  EXPECT_EQ(ProcessOf(Stream{0xFF}), JpegProcess::kUnknown);
  EXPECT_EQ(ProcessOf(Joined({kSoi, {0xFF, 0xE0, 0, 1}, {0xFF, 0xC0}})), JpegProcess::kUnknown);
}

TEST(ScanHeader, IsReadFieldByField) {
  const Stream content = {2, 1, 0x01, 3, 0x32, 5, 63, 0x21};
  const ScanHeader header = ReadScanHeader(SegmentWith(Marker::kSos, content), ThreeComponents());
  ASSERT_EQ(header.count, 2u);
  EXPECT_EQ(header.components[0].index, 0u);
  EXPECT_EQ(header.components[0].dcTable, 0);
  EXPECT_EQ(header.components[0].acTable, 1);
  EXPECT_EQ(header.components[1].index, 2u);
  EXPECT_EQ(header.components[1].dcTable, 3);
  EXPECT_EQ(header.components[1].acTable, 2);
  EXPECT_EQ(header.start, 5);
  EXPECT_EQ(header.end, 63);
  EXPECT_EQ(header.high, 2);
  EXPECT_EQ(header.low, 1);
}

TEST(ScanHeader, IsRefusedWhereItMakesNoSense) {
  const auto words = [](const Stream& content) {
    return WordsOf([&] { ReadScanHeader(SegmentWith(Marker::kSos, content), ThreeComponents()); });
  };
  EXPECT_EQ(words({0, 1, 0, 0}), "a scan has 0 of 3 components");
  EXPECT_EQ(words({4, 1, 0, 2, 0, 3, 0, 4, 0, 1, 0, 0}), "a scan has 4 of 3 components");
  EXPECT_EQ(words({1, 9, 0, 1, 0, 0}), "a scan names component 9, which the frame does not have");
  EXPECT_EQ(words({2, 2, 0, 1, 0, 1, 0, 0}),
            "a scan has its components in another order than the frame");
  EXPECT_EQ(words({2, 2, 0, 2, 0, 1, 0, 0}),
            "a scan has its components in another order than the frame");
  EXPECT_EQ(words({1, 1, 0x40, 1, 0, 0}), "a scan names Huffman tables 4 and 0");
  EXPECT_EQ(words({1, 1, 0x0F, 1, 0, 0}), "a scan names Huffman tables 0 and 15");
  EXPECT_EQ(words({1, 1, 0, 1, 0}), "the scan header ends early");
  EXPECT_EQ(words({1, 1, 0, 1, 0, 0, 0}), "the scan header is longer than its 1 components");
}

TEST(RestartInterval, IsOneNumberOfTwoBytes) {
  const auto read = [](const Stream& content) {
    return ReadRestartInterval(SegmentWith(Marker::kDri, content));
  };
  EXPECT_EQ(read({1, 2}), 0x0102u);
  EXPECT_EQ(WordsOf([&] { read({1}); }), "the restart interval ends early");
  EXPECT_EQ(WordsOf([&] { read({1, 2, 3}); }), "the restart interval has more than two bytes");
}

std::string RefusalOfTables(const Stream& content) {
  return WordsOf([&] { HuffmanSpecs().Read(BoundedReader(content.data(), content.size())); });
}

TEST(HuffmanSpecs, TakeAllTablesOfASegment) {
  test::PlainTable steep = test::SteepTable(3);
  const Stream content = Joined(
      {{0x02}, test::FlatTable().Content(), {0x12}, steep.Content(), {0x02}, steep.Content()});
  HuffmanSpecs known;
  known.Read(BoundedReader(content.data(), content.size()));
  ASSERT_TRUE(known.dc[2] && known.ac[2]);
  EXPECT_EQ(*known.dc[2], *known.ac[2]);  // the later one replaced the first
  EXPECT_EQ(known.dc[2]->size, 17u);
  EXPECT_EQ(known.dc[2]->counts[15], 4);
  EXPECT_EQ(known.dc[2]->values[0], 3);
  EXPECT_FALSE(known.dc[0]);
  EXPECT_EQ(WordsOf([&] { RequireTable(known.dc, 0); }), "there is no Huffman table 0");
  EXPECT_EQ(WordsOf([&] { known.dc[2]->RequireValues(16); }), "");
  EXPECT_EQ(WordsOf([&] { known.dc[2]->RequireValues(15); }),
            "a Huffman table has the value 16, above 15");
}

TEST(HuffmanSpecs, RefuseDamagedTables) {
  Stream counts(16);
  counts[0] = 1;
  EXPECT_EQ(RefusalOfTables(Joined({{0x00}, counts, {5}})), "");
  EXPECT_EQ(RefusalOfTables(Joined({{0x20}, counts, {5}})), "a Huffman table has class 2 and id 0");
  EXPECT_EQ(RefusalOfTables(Joined({{0x04}, counts, {5}})), "a Huffman table has class 0 and id 4");
  EXPECT_EQ(RefusalOfTables(Joined({{0x1F}, counts, {5}})),
            "a Huffman table has class 1 and id 15");
  EXPECT_EQ(RefusalOfTables(Joined({{0x00}, counts})), "a Huffman table ends early");
  EXPECT_EQ(RefusalOfTables({0x00, 1, 0}), "a Huffman table ends early");
  counts[0] = 3;
  EXPECT_EQ(RefusalOfTables(Joined({{0x00}, counts, {1, 2, 3}})),
            "a Huffman table has more codes than there can be");
  counts = Stream(16);
  counts[14] = 200;
  counts[15] = 57;
  EXPECT_EQ(RefusalOfTables(Joined({{0x00}, counts, Stream(257)})),
            "a Huffman table has 257 codes");
}

HuffmanSpec SpecOf(const test::PlainTable& table) {
  const Stream content = Joined({{0x00}, table.Content()});
  HuffmanSpecs known;
  known.Read(BoundedReader(content.data(), content.size()));
  return *known.dc[0];
}

TEST(HuffmanTable, FindsEachCodeWhateverFollowsIt) {
  for (const test::PlainTable& plain : {test::FlatTable(), test::SteepTable(0)}) {
    const HuffmanTable table(SpecOf(plain));
    for (const std::uint8_t value : plain.values) {
      const std::string code = plain.CodeOf(value);
      for (const char fill : {'0', '1'}) {
        const std::string bits = code + std::string(16 - code.size(), fill);
        const auto found = table.Find(static_cast<std::uint32_t>(std::stoul(bits, nullptr, 2)));
        EXPECT_EQ(found.length, code.size());
        EXPECT_EQ(found.value, value);
      }
    }
  }
}

TEST(HuffmanTable, KnowsWhatIsNoCode) {
  // Seventeen codes of five bits end with 10000; four of sixteen bits with 1111111111111 011.
  EXPECT_EQ(HuffmanTable(SpecOf(test::FlatTable())).Find(0b1000100000000000).length, 0);
  const HuffmanTable steep(SpecOf(test::SteepTable(0)));
  EXPECT_EQ(steep.Find(0b1111111111111011).length, 16);
  EXPECT_EQ(steep.Find(0b1111111111111100).length, 0);
  EXPECT_EQ(steep.Find(0xFFFF).length, 0);
  EXPECT_EQ(HuffmanTable(HuffmanSpec()).Find(0).length, 0);
}

TEST(BitReader, GivesBitsInTheirOrderAcrossItsFills) {
  const Stream bytes = tessaret::test::Pattern(100);
  BitReader reader(bytes);
  std::string bits;
  for (unsigned count = 1; bits.size() + count <= 800; count = count % 32 + 1) {
    reader.Fill();
    const std::uint32_t peeked = reader.Peek(count);
    const std::uint32_t taken = reader.Take(count);
    EXPECT_EQ(peeked, taken);
    for (unsigned bit = count; bit-- > 0;) bits.push_back((taken >> bit & 1) != 0 ? '1' : '0');
  }
  std::string expected;
  for (const std::uint8_t byte : bytes) {
    for (unsigned bit = 8; bit-- > 0;) expected.push_back((byte >> bit & 1) != 0 ? '1' : '0');
  }
  EXPECT_EQ(bits, expected.substr(0, bits.size()));
  EXPECT_FALSE(reader.IsOverrun());
}

TEST(BitReader, GivesZerosBehindTheEndAndSaysSo) {
  const Stream bytes = {0xA5, 0xFF};
  BitReader reader(bytes);
  reader.Fill();
  EXPECT_EQ(reader.Take(16), 0xA5FFu);
  EXPECT_FALSE(reader.IsOverrun());
  EXPECT_EQ(reader.Take(1), 0u);
  EXPECT_TRUE(reader.IsOverrun());
  for (int more = 0; more < 100; ++more) {
    reader.Fill();
    EXPECT_EQ(reader.Take(32), 0u);
  }
  EXPECT_TRUE(reader.IsOverrun());
  EXPECT_EQ(WordsOf([&] { reader.RequireUsedUp(); }), "the entropy-coded data end early");
}

std::string RefusalOfRest(const Stream& bytes, std::size_t used) {
  BitReader reader(bytes);
  for (; used > 0; --used) {
    reader.Fill();
    reader.Drop(1);
  }
  return WordsOf([&] { reader.RequireUsedUp(); });
}

TEST(BitReader, WantsAllBytesUsedButForOnesThatFillThemUp) {
  EXPECT_EQ(RefusalOfRest({0x00, 0x00}, 16), "");
  EXPECT_EQ(RefusalOfRest({0x00, 0x00}, 9), "");  // less than a byte, of whatever bits
  EXPECT_EQ(RefusalOfRest({0x00, 0x00}, 8),
            "there are more entropy-coded data than the image needs");
  EXPECT_EQ(RefusalOfRest({0x00, 0xFF}, 8), "");
  EXPECT_EQ(RefusalOfRest(Stream(20, 0xFF), 3), "");
  EXPECT_EQ(RefusalOfRest({}, 0), "");
  Stream ones(20, 0xFF);
  ones.back() = 0xFE;
  EXPECT_EQ(RefusalOfRest(ones, 3), "there are more entropy-coded data than the image needs");
}

TEST(EntropyData, LosesWhatWasStuffedInAndEndsAtTheMarker) {
  const Stream rest = {1, 0xFF, 0, 0xFF, 0, 2, 0xFF, 0xFF, 0xD9, 7};
  const EntropyData data(rest, 1);
  ASSERT_EQ(data.Intervals(), 1u);
  const Bytes bytes = data.Interval(0);
  EXPECT_EQ(Stream(bytes.begin(), bytes.end()), (Stream{1, 0xFF, 0xFF, 2}));
  EXPECT_EQ(data.Length(), 6u);  // fill bytes belong to the marker
}

TEST(EntropyData, IsCutAtRestartMarkersInTheirOrder) {
  Stream rest;
  for (unsigned interval = 0; interval < 10; ++interval) {
    rest.push_back(static_cast<std::uint8_t>(interval));
    rest.push_back(0xFF);
    rest.push_back(static_cast<std::uint8_t>(interval == 9 ? 0xD9 : 0xD0 + interval % 8));
  }
  const EntropyData data(rest, 10);
  ASSERT_EQ(data.Intervals(), 10u);
  EXPECT_EQ(data.Interval(9).size(), 1u);
  EXPECT_EQ(data.Interval(9)[0], 9);
  EXPECT_EQ(WordsOf([&] { EntropyData(rest, 9); }), "there is a restart marker too many");
  EXPECT_EQ(WordsOf([&] { EntropyData(rest, 11); }),
            "there are 10 restart intervals where 11 belong");
  Stream lost = rest;
  lost.erase(lost.begin() + 3, lost.begin() + 6);
  EXPECT_EQ(WordsOf([&] { EntropyData(lost, 10); }), "restart marker 2 is lost");
}

TEST(EntropyData, IsRefusedWhereNoMarkerEndsIt) {
  const std::string words = "the code stream ends within its entropy-coded data";
  for (const Stream& rest : {Stream{}, Stream{1, 2}, Stream{1, 0xFF}, Stream{0xFF, 0xFF}}) {
    EXPECT_EQ(WordsOf([&] { EntropyData(rest, 1); }), words);
  }
  EXPECT_EQ(WordsOf([&] {
              EntropyData(Stream{1, 0xFF, 0xFF, 0, 0xFF, 0xD9}, 1);
            }),
            "there are fill bytes amid entropy-coded data");
}

TEST(BitWriter, PutsBitsInTheirOrderAndFillsUpWithOnes) {
  Stream bytes(9 + BitWriter::kSlack);
  BitWriter writer(bytes.data());
  writer.Put(0b101, 3);
  writer.Put(0, 0);
  writer.Put(0xFFFFFFFF, 32);
  writer.Put(0, 29);
  writer.Put(0b01, 2);
  const std::uint8_t* const end = writer.Finish();
  bytes.resize(static_cast<std::size_t>(end - bytes.data()));
  // 101 and 32 ones are four bytes and 111; 29 zeros end with the eighth byte; 01 and six ones.
  EXPECT_EQ(bytes, (Stream{0xBF, 0xFF, 0xFF, 0xFF, 0xE0, 0, 0, 0, 0x7F}));
  Stream stuffed = {7};
  AppendStuffed(bytes, stuffed);
  EXPECT_EQ(stuffed, (Stream{7, 0xBF, 0xFF, 0, 0xFF, 0, 0xFF, 0, 0xE0, 0, 0, 0, 0x7F}));
}

std::vector<unsigned> LengthsOf(const HuffmanSpec& listed, std::size_t values) {
  std::vector<unsigned> lengths;
  const auto codes = CodesOf(listed);
  for (std::size_t value = 0; value < values; ++value) lengths.push_back(codes[value].length);
  return lengths;
}

TEST(OptimalTable, GivesTheLengthsThatFrequenciesAskFor) {
  // With one more of weight 1: 1 + 1 = 2, 2 + 2 = 4, 4 + 4 = 8, 8 + 8 = 16.
  const std::uint64_t frequencies[] = {8, 4, 2, 1, 0};
  EXPECT_EQ(LengthsOf(OptimalTable(frequencies), 5), (std::vector<unsigned>{1, 2, 3, 4, 0}));
  const std::uint64_t single[] = {0, 0, 5};
  EXPECT_EQ(LengthsOf(OptimalTable(single), 3), (std::vector<unsigned>{0, 0, 1}));
}

/// Checks that no code is the beginning of another one, none is longer than 16 bits, and none has ones alone.
void CheckCodes(const HuffmanSpec& listed, std::size_t values) {
  std::uint32_t taken = 0;  // of 65536
  const auto codes = CodesOf(listed);
  for (std::size_t value = 0; value < values; ++value) {
    const HuffmanCode code = codes[value];
    ASSERT_GE(code.length, 1);
    ASSERT_LE(code.length, 16);
    EXPECT_NE(code.bits, (1u << code.length) - 1);
    taken += 65536u >> code.length;
  }
  EXPECT_LT(taken, 65536u);
  EXPECT_EQ(listed.size, values);
  const HuffmanTable table(listed);
  for (std::size_t value = 0; value < values; ++value) {
    const HuffmanCode code = codes[value];
    EXPECT_EQ(table.Find(std::uint32_t{code.bits} << (16 - code.length)).value, value);
  }
}

TEST(OptimalTable, HasNoCodeOfMoreThanSixteenBits) {
  // Weights that grow as Fibonacci's numbers make the deepest trees.
  std::vector<std::uint64_t> frequencies = {1, 1};
  while (frequencies.size() < 40) {
    frequencies.push_back(frequencies.end()[-1] + frequencies.end()[-2]);
    CheckCodes(OptimalTable(frequencies), frequencies.size());
  }
  CheckCodes(OptimalTable(std::vector<std::uint64_t>(256, 3)), 256);
}

TEST(OptimalTable, IsReadBackFromItsSegment) {
  std::vector<std::uint64_t> frequencies(30);
  std::iota(frequencies.begin(), frequencies.end(), 1);
  const HuffmanSpec listed = OptimalTable(frequencies);
  Stream stream = kSoi;
  AppendTable(listed, 1, 2, stream);
  MarkerReader reader(stream);
  const Segment segment = reader.Next();
  EXPECT_EQ(segment.marker, Marker::kDht);
  HuffmanSpecs known;
  known.Read(segment.content);
  ASSERT_TRUE(known.ac[2]);
  EXPECT_EQ(*known.ac[2], listed);
}

}  // namespace
}  // namespace tessaret::codecs
