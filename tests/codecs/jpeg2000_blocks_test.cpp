// Code blocks: the MQ decoder, contexts, raw bits, and whole blocks against the plain form of all that.
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "codecs/plain_blocks.h"
#include "jpeg2000/block_contexts.h"
#include "jpeg2000/block_decoder.h"
#include "jpeg2000/mq_decoder.h"
#include "jpeg2000/raw_bits.h"

namespace tessaret::codecs {
namespace {

using test::PlainDecision;
using test::PlainMq;
using testing::ElementsAre;
using testing::HasSubstr;
using Octets = std::vector<std::uint8_t>;

/// Numbers below a bound, the same in every run.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : random_(seed) {}
  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }

 private:
  std::mt19937 random_;
};

/// With what decoders may look at around it.
Octets Padded(Bytes segment) {
  Octets padded(kMqBefore, 0);
  padded.insert(padded.end(), segment.begin(), segment.end());
  padded.insert(padded.end(), kMqBehind, 0xFF);
  return padded;
}

/// The sequence by which ITU-T T.88, H.2 shows the coder, and what it becomes.
constexpr std::uint8_t kSequence[] = {
    0x00, 0x02, 0x00, 0x51, 0x00, 0x00, 0x00, 0xC0, 0x03, 0x52, 0x87, 0x2A, 0xAA, 0xAA, 0xAA, 0xAA,
    0x82, 0xC0, 0x20, 0x00, 0xFC, 0xD7, 0x9E, 0xF6, 0xBF, 0x7F, 0xED, 0x90, 0x4F, 0x46, 0xA3, 0xBF};
constexpr std::uint8_t kCoded[] = {0x84, 0xC7, 0x3B, 0xFC, 0xE1, 0xA1, 0x43, 0x04, 0x02, 0x20,
                                   0x00, 0x00, 0x41, 0x0D, 0xBB, 0x86, 0xF4, 0x31, 0x7F, 0xFF,
                                   0x88, 0xFF, 0x37, 0x47, 0x1A, 0xDB, 0x6A, 0xDF, 0xFF, 0xAC};

TEST(MqDecoder, DecodesTheSequenceByWhichTheCoderIsShown) {
  const Octets padded = Padded(kCoded);
  for (const bool isEven : {false, true}) {
    MqDecoder mq(&padded[kMqBefore]);
    MqContext context = MqStateOf(0);
    Octets decoded;
    for (std::size_t byte = 0; byte < std::size(kSequence); ++byte) {
      std::uint32_t bits = 0;
      for (int bit = 0; bit < 8; ++bit) {
        bits = bits << 1 | (isEven ? mq.DecodeEven(context) : mq.Decode(context));
      }
      decoded.push_back(static_cast<std::uint8_t>(bits));
    }
    EXPECT_THAT(decoded, testing::ElementsAreArray(kSequence));
  }
}

TEST(MqDecoder, DecodesWhatThePlainEncoderMakesOfAllStates) {
  Dice random(7);
  for (int round = 0; round < 200; ++round) {
    // Three contexts, each with its own share of ones.
    std::vector<PlainMq::Context> plain(3);
    for (PlainMq::Context& context : plain) context.row = random.Below(47);
    const std::uint32_t shares[] = {random.Below(1000), random.Below(1000), random.Below(100)};
    std::vector<PlainDecision> decisions;
    for (int count = 0; count < 3000; ++count) {
      const std::uint32_t context = random.Below(3);
      decisions.push_back({context, random.Below(1000) < shares[context] ? 1U : 0U});
    }
    const Octets padded = Padded(test::EncodePlainly(decisions, plain));
    MqDecoder mq(&padded[kMqBefore]);
    std::vector<MqContext> contexts;
    for (const PlainMq::Context& context : plain) contexts.push_back(MqStateOf(context.row));
    for (std::size_t at = 0; at < decisions.size(); ++at) {
      MqContext& context = contexts[decisions[at].context];
      const std::uint32_t symbol =
          random.Below(2) == 0 ? mq.Decode(context) : mq.DecodeEven(context);
      ASSERT_EQ(symbol, decisions[at].symbol) << round << ", decision " << at;
    }
  }
}

TEST(MqDecoder, BehindItsEndAllBitsAreOnes) {
  // Without a byte and with ones that may be a marker's, which are never read.
  const Octets none = Padded({});
  const Octets ones = Padded(Octets(20, 0xFF));
  MqDecoder first(&none[kMqBefore]);
  MqDecoder second(&ones[kMqBefore]);
  MqContext one = MqStateOf(0);
  MqContext other = MqStateOf(0);
  PlainMq plain(Bytes{});
  PlainMq::Context context;
  for (int count = 0; count < 5000; ++count) {
    const std::uint32_t symbol = plain.Decode(context);
    ASSERT_EQ(first.Decode(one), symbol);
    ASSERT_EQ(second.DecodeEven(other), symbol);
  }
}

TEST(RawBits, AByteOfOnesIsFollowedByABitThatIsNone) {
  // 1010'0000, 1111'1111, (0)100'0001, and ones at the end.
  const Octets padded = Padded(Octets{0xA0, 0xFF, 0x41});
  RawBits bits(&padded[kMqBefore]);
  std::string text;
  for (int count = 0; count < 26; ++count) text.push_back(bits.Decode() != 0 ? '1' : '0');
  EXPECT_EQ(text,
            "10100000"
            "11111111"
            "1000001"
            "111");
}

TEST(BlockContexts, AreThoseOfTheTables) {
  // Bits: above left 1, above 2, above right 4, left 8, right 32, below left 64, below 128, below right 256.
  const auto of = [](Band band, std::size_t bits) {
    return int{SignificanceContextsOf(band)[bits]};
  };
  EXPECT_EQ(of(Band::kLowLow, 0), 0);
  EXPECT_EQ(of(Band::kLowLow, 16), 0) << "the coefficient itself";
  EXPECT_EQ(of(Band::kLowHigh, 8 + 32), 8);
  EXPECT_EQ(of(Band::kHighLow, 8 + 32), 4);
  EXPECT_EQ(of(Band::kHighLow, 2 + 128), 8);
  EXPECT_EQ(of(Band::kLowLow, 8 + 2), 7);
  EXPECT_EQ(of(Band::kLowLow, 8 + 1), 6);
  EXPECT_EQ(of(Band::kLowLow, 8), 5);
  EXPECT_EQ(of(Band::kHighHigh, 8), 1);
  EXPECT_EQ(of(Band::kHighHigh, 1 + 4 + 64), 8);
  EXPECT_EQ(of(Band::kHighHigh, 1 + 4), 6);
  EXPECT_EQ(of(Band::kHighHigh, 1 + 8 + 32), 5);
  // Pairs of bits: above 3, left 12, right 48, below 192, of which the lower one is for a negative coefficient.
  EXPECT_EQ(kSignContexts[0], 9);
  EXPECT_EQ(kSignContexts[0b00'00'00'10], 10);
  EXPECT_EQ(kSignContexts[0b00'00'00'11], 10 | kSignIsTurned);
  EXPECT_EQ(kSignContexts[0b10'10'10'10], 13);
  EXPECT_EQ(kSignContexts[0b11'11'11'11], 13 | kSignIsTurned);
  EXPECT_EQ(kSignContexts[0b00'10'11'00], 9) << "one of each sign";
  EXPECT_EQ(kSignContexts[0b00'00'10'11], 11);
}

TEST(EndOfPasses, DividesThemByStyle) {
  EXPECT_GE(EndOfPasses(0, 0), 109U);
  EXPECT_EQ(EndOfPasses(7, kTerminateAll), 8U);
  EXPECT_EQ(EndOfPasses(0, kBypass), 10U);
  EXPECT_EQ(EndOfPasses(9, kBypass), 10U);
  EXPECT_EQ(EndOfPasses(10, kBypass), 12U);
  EXPECT_EQ(EndOfPasses(11, kBypass), 12U);
  EXPECT_EQ(EndOfPasses(12, kBypass), 13U);
  EXPECT_EQ(EndOfPasses(13, kBypass | kTerminateAll), 14U);
}

/// Bytes that an encoder may have made: none behind FF is 0x80 or more.
Octets RandomSegment(Dice& random, std::size_t size) {
  Octets bytes(size);
  std::uint8_t before = 0;
  for (std::uint8_t& byte : bytes) {
    byte = static_cast<std::uint8_t>(random.Below(5) == 0 ? 0xFF : random.Below(256));
    if (before == 0xFF) byte &= 0x7F;
    before = byte;
  }
  return bytes;
}

std::vector<std::int64_t> Values(const BlockDecoder& decoder, const BlockShape& shape) {
  std::vector<std::int64_t> values;
  for (std::uint32_t y = 0; y < shape.height; ++y) {
    for (std::uint32_t x = 0; x < shape.width; ++x) {
      const std::size_t place = (std::size_t{y / 4} * shape.width + x) * 4 + y % 4;
      const std::uint32_t bits = decoder.Coefficients()[place];
      const std::int64_t size = bits & 0x7FFFFFFF;
      values.push_back(bits >> 31 != 0 ? -size : size);
    }
  }
  return values;
}

TEST(BlockDecoder, MakesOfAnyBytesWhatThePlainFormDoes) {
  Dice random(11);
  const auto decoder = std::make_unique<BlockDecoder>();
  constexpr std::uint32_t kSizes[][2] = {{1, 1},    {4, 4},   {64, 64}, {1024, 4},
                                         {4, 1024}, {5, 7},   {33, 3},  {1, 64},
                                         {64, 1},   {32, 32}, {2, 9},   {1000, 2}};
  for (int round = 0; round < 600; ++round) {
    BlockShape shape;
    const auto& size = kSizes[random.Below(std::size(kSizes))];
    shape.width = size[0];
    shape.height = size[1];
    shape.planes = 1 + random.Below(round % 10 == 0 ? kMostPlanes : 9);
    // Of all styles but symbols that have to be right.
    shape.style = random.Below(32);
    shape.band = static_cast<Band>(random.Below(4));
    std::vector<Octets> segments;
    std::vector<std::uint32_t> passes;
    const std::uint32_t all = 1 + random.Below(3 * shape.planes - 2);
    for (std::uint32_t pass = 0; pass < all;) {
      const std::uint32_t most = std::min(all, EndOfPasses(pass, shape.style)) - pass;
      passes.push_back(1 + random.Below(most));
      pass += passes.back();
      segments.push_back(RandomSegment(random, random.Below(3) == 0 ? 0 : random.Below(400)));
    }
    std::vector<BlockPart> parts;
    for (std::size_t at = 0; at < segments.size(); ++at) {
      // No part may end with FF where another one goes on with more than 0x7F.
      if (!segments[at].empty()) segments[at].back() &= 0x7F;
      parts.push_back({segments[at], passes[at]});
    }
    decoder->Decode(shape, parts);
    ASSERT_EQ(Values(*decoder, shape), test::DecodePlainly(shape, parts))
        << shape.width << " x " << shape.height << ", style " << shape.style << ", " << all
        << " passes of " << shape.planes << " planes";
  }
}

TEST(BlockDecoder, PassesBeyondThePlanesTellNothing) {
  Dice random(3);
  const Octets bytes = RandomSegment(random, 300);
  const BlockShape shape{.width = 16, .height = 16, .planes = 2, .style = 0, .band = Band::kLowLow};
  const auto decoder = std::make_unique<BlockDecoder>();
  decoder->Decode(shape, std::vector<BlockPart>{{bytes, 4}});
  const std::vector<std::int64_t> values = Values(*decoder, shape);
  decoder->Decode(shape, std::vector<BlockPart>{{bytes, 40}});
  EXPECT_EQ(Values(*decoder, shape), values);
  BlockShape none = shape;
  none.planes = 0;
  decoder->Decode(none, std::vector<BlockPart>{{bytes, 1}});
  EXPECT_EQ(Values(*decoder, shape), std::vector<std::int64_t>(256, 0));
}

TEST(BlockDecoder, AWrongSegmentSymbolIsDamage) {
  // A block of one coefficient, 0: one decision in its context, and the symbol's four bits, 1010.
  const auto coded = [](std::uint32_t last) {
    return test::EncodePlainly({{0, 0}, {1, 1}, {1, 0}, {1, 1}, {1, last}}, {{4, 0}, {46, 0}});
  };
  const BlockShape shape{
      .width = 1, .height = 1, .planes = 1, .style = kSegmentSymbols, .band = Band::kLowLow};
  const auto words = [&](const BlockShape& of, Bytes bytes) {
    const auto decoder = std::make_unique<BlockDecoder>();
    return test::WordsOf([&] { decoder->Decode(of, std::vector<BlockPart>{{bytes, 1}}); });
  };
  EXPECT_EQ(words(shape, coded(0)), "");
  EXPECT_THAT(words(shape, coded(1)), HasSubstr("a segment symbol of the code stream is B"));
  // Where planes were left out the last pass may have been cut.
  BlockShape cut = shape;
  cut.planes = 2;
  EXPECT_EQ(words(cut, coded(1)), "");
}

}  // namespace
}  // namespace tessaret::codecs
