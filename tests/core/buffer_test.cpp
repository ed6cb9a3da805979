#include "core/buffer.h"

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "scripted_buffer.h"
#include "support/bytes.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::ChunkShape;
using test::OutgoingOf;
using test::Pattern;
using test::ScriptedBuffer;
using test::ShapesOf;

using Shapes = std::vector<ChunkShape>;
using Sizes = std::vector<std::uint32_t>;
using Sent = std::vector<Bytes>;

constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

/// The next `count` bytes, or none where the read fails.
Bytes ReadSome(Buffer& buffer, std::uint32_t count) {
  Bytes bytes(count, 0xEE);
  return buffer.Read(bytes.data(), count) > 0 ? bytes : Bytes{};
}

bool WriteBytesTo(Buffer& buffer, const Bytes& bytes) {
  return buffer.Write(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

TEST(BufferSpace, EmptyHoldsNothingAndOwnsNothing) {
  const BufferSpace chunk;
  EXPECT_EQ(chunk.Size, 0u);
  EXPECT_EQ(chunk.Index, 0u);
  EXPECT_EQ(chunk.External, 1u);
  EXPECT_EQ(chunk.Data, nullptr);
}

TEST(BufferSpace, SizedHasBytesOfItsOwn) {
  const BufferSpace chunk(300);
  EXPECT_EQ(chunk.Size, 300u);
  EXPECT_EQ(chunk.Index, 0u);
  EXPECT_EQ(chunk.External, 0u);
  ASSERT_NE(chunk.Data, nullptr);
  std::memset(chunk.Data, 1, 300);
}

TEST(BufferSpace, SizedWithZeroHasNoBytes) {
  const BufferSpace chunk(0);
  EXPECT_EQ(chunk.External, 0u);
  EXPECT_EQ(chunk.Data, nullptr);
}

TEST(BufferSpace, ExternalBytesOutliveIt) {
  std::uint8_t bytes[] = {1, 2};
  {
    BufferSpace chunk;
    chunk.Size = 2;
    chunk.Data = bytes;
  }
  EXPECT_EQ(bytes[1], 2);
}

TEST(Buffer, StartsEmptyAndLittleEndian) {
  const Buffer buffer;
  EXPECT_EQ(buffer.BreakSize, 32600);
  EXPECT_EQ(buffer.InEndian, 1);
  EXPECT_EQ(buffer.OutEndian, 1);
  EXPECT_EQ(buffer.InSize, 0);
  EXPECT_EQ(buffer.OutSize, 0);
  EXPECT_EQ(buffer.Position, 0u);
  EXPECT_EQ(buffer.Incoming.ListLength, 0u);
  EXPECT_EQ(buffer.Outgoing.ListLength, 0u);
  static_assert(std::is_same_v<decltype(Buffer::BreakSize), std::int32_t>);
  static_assert(std::is_same_v<decltype(Buffer::InSize), std::int32_t>);
  static_assert(std::is_same_v<decltype(Buffer::OutSize), std::int32_t>);
  static_assert(std::is_same_v<decltype(Buffer::Position), std::uint32_t>);
  static_assert(std::has_virtual_destructor_v<Buffer>);
}

TEST(Buffer, OnItsOwnHasNoTransport) {
  Buffer buffer;
  std::uint8_t byte = 0;
  EXPECT_EQ(buffer.ReadBinary(&byte, 1), -1);
  EXPECT_EQ(buffer.SendBinary(&byte, 1), 0);
  EXPECT_FALSE(buffer.IsEnd());
  EXPECT_EQ(buffer.Total(), -1);
  EXPECT_EQ(buffer.Available(), 0u);
  EXPECT_EQ(buffer.SuppliesAtMost(), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(buffer.Read(&byte, 1), 0);
}

TEST(Buffer, SettersSetAndAnswerTrue) {
  Buffer buffer;
  EXPECT_TRUE(buffer.SetBreakSize(77));
  EXPECT_TRUE(buffer.SetInEndian(2));
  EXPECT_TRUE(buffer.SetOutEndian(2));
  EXPECT_EQ(buffer.BreakSize, 77);
  EXPECT_EQ(buffer.InEndian, 2);
  EXPECT_EQ(buffer.OutEndian, 2);
}

TEST(Buffer, ReadPullsNoMoreThanBreakSizeAnd1024BytesAtOnce) {
  const struct {
    std::int32_t breakSize;
    std::uint32_t asked;
  } kRows[] = {{1, 1},
               {10, 10},
               {1023, 1023},
               {1024, 1024},
               {1025, 1024},
               {32600, 1024},
               {kLargest, 1024},
               // No read can be for nothing or less.
               {0, 1024},
               {-1, 1024},
               {std::numeric_limits<std::int32_t>::min(), 1024}};
  for (const auto& row : kRows) {
    ScriptedBuffer buffer(Pattern(2000));
    buffer.SetBreakSize(row.breakSize);
    EXPECT_EQ(ReadSome(buffer, 1), Pattern(1));
    EXPECT_EQ(buffer.asked, Sizes{row.asked}) << row.breakSize;
    EXPECT_EQ(buffer.BreakSize, row.breakSize);
  }
}

TEST(Buffer, EveryPullIsAChunkOfExactlyWhatCame) {
  ScriptedBuffer buffer;
  buffer.Comes(Pattern(3)).Comes(Pattern(1024, 4)).Comes(Pattern(5, 1028));
  EXPECT_EQ(ReadSome(buffer, 1), Pattern(1));
  EXPECT_EQ(ShapesOf(buffer.Incoming), (Shapes{{3, 1}}));
  EXPECT_EQ(buffer.InSize, 2);
  EXPECT_EQ(ReadSome(buffer, 3), Pattern(3, 2));
  EXPECT_EQ(ShapesOf(buffer.Incoming), (Shapes{{1024, 1}}));
  EXPECT_EQ(buffer.InSize, 1023);
  EXPECT_EQ(ReadSome(buffer, 1026), Pattern(1026, 5));
  EXPECT_EQ(ShapesOf(buffer.Incoming), (Shapes{{5, 3}}));
  EXPECT_EQ(buffer.Incoming.First->value->External, 0u);
  EXPECT_EQ(buffer.InSize, 2);
  EXPECT_EQ(buffer.Position, 1030u);
  EXPECT_EQ(buffer.Available(), 2u);
}

TEST(Buffer, ReadGathersAllChunksBeforeItTakesFromAny) {
  ScriptedBuffer buffer;
  buffer.Comes(Pattern(10)).Comes(Pattern(10, 11));
  EXPECT_EQ(ReadSome(buffer, 21), Bytes{});
  EXPECT_EQ(buffer.InSize, 20);
  EXPECT_EQ(buffer.Position, 0u);
  EXPECT_EQ(ShapesOf(buffer.Incoming), (Shapes{{10, 0}, {10, 0}}));
}

TEST(Buffer, ReadAsksAgainWhileNothingHasCome) {
  ScriptedBuffer buffer;
  buffer.NothingYet().NothingYet().Comes(Pattern(4)).NothingYet().Comes(Pattern(4, 5));
  EXPECT_EQ(ReadSome(buffer, 8), Pattern(8));
  EXPECT_EQ(buffer.asked.size(), 5u);
  EXPECT_EQ(buffer.Incoming.ListLength, 0u);
}

TEST(Buffer, AFailedReadLeavesWhatCameForASmallerOne) {
  ScriptedBuffer buffer(Pattern(7));
  Bytes target(8, 0xEE);
  EXPECT_EQ(buffer.Read(target.data(), 8), 0);
  EXPECT_EQ(target, Bytes(8, 0xEE));
  EXPECT_EQ(buffer.InSize, 7);
  EXPECT_EQ(buffer.Position, 0u);
  EXPECT_EQ(ReadSome(buffer, 7), Pattern(7));
  EXPECT_EQ(buffer.Position, 7u);
  EXPECT_EQ(ReadSome(buffer, 1), Bytes{});
  EXPECT_EQ(buffer.Position, 7u);
}

TEST(Buffer, ReadOfNothingAnswersZeroAndAsksForNothing) {
  ScriptedBuffer buffer(Pattern(4));
  EXPECT_EQ(buffer.Read(nullptr, 0), 0);
  EXPECT_EQ(ReadSome(buffer, 2), Pattern(2));
  EXPECT_EQ(buffer.Read(nullptr, 0), 0);
  EXPECT_EQ(buffer.asked.size(), 1u);
  EXPECT_EQ(buffer.Position, 2u);
  EXPECT_EQ(buffer.InSize, 2);
  EXPECT_EQ(ShapesOf(buffer.Incoming), (Shapes{{4, 2}}));
}

TEST(Buffer, AReadThatEndsExactlyAtAChunksEndFreesIt) {
  ScriptedBuffer buffer;
  buffer.Comes(Pattern(4)).Comes(Pattern(4, 5));
  EXPECT_EQ(ReadSome(buffer, 4), Pattern(4));
  EXPECT_EQ(buffer.Incoming.ListLength, 0u);
  EXPECT_EQ(buffer.InSize, 0);
  EXPECT_EQ(ReadSome(buffer, 2), Pattern(2, 5));
  EXPECT_EQ(ReadSome(buffer, 2), Pattern(2, 7));
  EXPECT_EQ(buffer.Incoming.ListLength, 0u);
}

TEST(Buffer, ASuccessfulReadAnswersOneWhateverTheCount) {
  ScriptedBuffer buffer(Pattern(5000));
  Bytes target(5000);
  EXPECT_EQ(buffer.Read(target.data(), 1), 1);
  EXPECT_EQ(buffer.Read(target.data(), 4000), 1);
}

TEST(Buffer, ATransportThatClaimsMoreThanWasAskedForIsNotBelieved) {
  class Boaster : public Buffer {
   public:
    std::int64_t ReadBinary(void* data, std::uint32_t count) override {
      std::memset(data, 7, count);
      return std::numeric_limits<std::int64_t>::max();
    }
  };
  Boaster buffer;
  EXPECT_EQ(ReadSome(buffer, 1), Bytes{7});
  EXPECT_EQ(buffer.InSize, 1023);
}

TEST(Buffer, AnyNegativeAnswerOfTheTransportIsTheEnd) {
  class Failing : public Buffer {
   public:
    std::int64_t ReadBinary(void*, std::uint32_t) override { return -5; }
  };
  Failing buffer;
  EXPECT_EQ(ReadSome(buffer, 1), Bytes{});
  EXPECT_FALSE(buffer.Fill(1));
}

TEST(Buffer, ARequestThatCouldNotWaitAtOnceFailsBeforeAnythingIsPulled) {
  ScriptedBuffer buffer(Pattern(10));
  EXPECT_EQ(buffer.Read(nullptr, 0x80000000u), 0);
  EXPECT_EQ(buffer.Read(nullptr, 0xFFFFFFFFu), 0);
  EXPECT_FALSE(buffer.Fill(0x80000000u));
  EXPECT_FALSE(buffer.Fill(0xFFFFFFFFu));
  EXPECT_TRUE(buffer.asked.empty());
  EXPECT_EQ(buffer.BreakSize, 32600);
  EXPECT_EQ(ReadSome(buffer, 10), Pattern(10));
}

TEST(Buffer, FillStopsWhereInSizeCouldNotCountOn) {
  ScriptedBuffer buffer(Pattern(10));
  buffer.InSize = kLargest - 9;
  EXPECT_FALSE(buffer.Fill(10));
  EXPECT_TRUE(buffer.asked.empty());
  EXPECT_TRUE(buffer.Fill(9));
  EXPECT_EQ(buffer.InSize, kLargest);
  EXPECT_EQ(buffer.asked, Sizes{9});
}

TEST(Buffer, NumbersAreReadInTheOrderOfInEndian) {
  for (const std::int32_t endian : {1, 2}) {
    ScriptedBuffer buffer(Bytes{0x9A, 0x12, 0xF4, 0x81, 0x02, 0x03, 0xF4});
    buffer.SetInEndian(endian);
    // OutEndian is another direction's.
    buffer.SetOutEndian(3 - endian);
    std::uint8_t byte = 0;
    std::uint16_t word = 0;
    std::uint32_t number = 0;
    EXPECT_TRUE(buffer.Read8(&byte));
    EXPECT_TRUE(buffer.Read16(&word));
    EXPECT_TRUE(buffer.Read32(&number));
    EXPECT_EQ(byte, 0x9A);
    EXPECT_EQ(word, endian == 1 ? 0xF412 : 0x12F4);
    EXPECT_EQ(number, endian == 1 ? 0xF4030281u : 0x810203F4u);
    EXPECT_EQ(buffer.Position, 7u);
  }
}

TEST(Buffer, ANumberThatIsCutTakesTheBytesThatAreThereAndLeavesTheVariable) {
  for (std::uint32_t there = 0; there < 4; ++there) {
    ScriptedBuffer buffer(Pattern(there));
    if (there == 0) buffer.answers.clear();
    std::uint32_t number = 0xABCD;
    EXPECT_FALSE(buffer.Read32(&number));
    EXPECT_EQ(number, 0xABCDu);
    EXPECT_EQ(buffer.Position, there);
  }
  ScriptedBuffer buffer(Pattern(1));
  std::uint16_t word = 0xABCD;
  EXPECT_FALSE(buffer.Read16(&word));
  EXPECT_EQ(word, 0xABCD);
  EXPECT_EQ(buffer.Position, 1u);
  std::uint8_t byte = 0xAB;
  EXPECT_FALSE(buffer.Read8(&byte));
  EXPECT_EQ(byte, 0xAB);
}

TEST(Buffer, PositionGoesRoundAtItsWidth) {
  ScriptedBuffer buffer(Pattern(8));
  buffer.Position = 0xFFFFFFFC;
  ReadSome(buffer, 8);
  EXPECT_EQ(buffer.Position, 4u);
}

TEST(Buffer, TakeIncomingStepsOverChunksWithOrWithoutATarget) {
  ScriptedBuffer buffer;
  buffer.Comes(Pattern(4)).Comes(Pattern(4, 5)).Comes(Pattern(4, 9));
  ASSERT_TRUE(buffer.Fill(12));
  buffer.TakeIncoming(nullptr, 5);
  EXPECT_EQ(buffer.Position, 5u);
  EXPECT_EQ(buffer.InSize, 7);
  Bytes target(4);
  buffer.TakeIncoming(target.data(), 4);
  EXPECT_EQ(target, Pattern(4, 6));
  EXPECT_EQ(ShapesOf(buffer.Incoming), (Shapes{{4, 1}}));
  buffer.TakeIncoming(nullptr, 0);
  EXPECT_EQ(buffer.Position, 9u);
}

TEST(Buffer, RandomReadsGiveTheStreamHoweverItIsCut) {
  std::mt19937 random(4);
  for (int round = 0; round < 200; ++round) {
    const std::size_t total = random() % 20000;
    const Bytes all = Pattern(total);
    ScriptedBuffer buffer;
    for (std::size_t at = 0; at < total;) {
      const std::size_t portion = std::min<std::size_t>(total - at, random() % 3000);
      buffer.Comes(Bytes(all.begin() + static_cast<std::ptrdiff_t>(at),
                         all.begin() + static_cast<std::ptrdiff_t>(at + portion)));
      at += portion;
    }
    std::uint32_t position = 0;
    for (;;) {
      const auto count = static_cast<std::uint32_t>(random() % 2500 + 1);
      if (random() % 10 == 0) buffer.SetBreakSize(static_cast<std::int32_t>(random() % 2000));
      Bytes target(count);
      const bool read = buffer.Read(target.data(), count) > 0;
      ASSERT_EQ(read, position + count <= total);
      if (!read) break;
      ASSERT_EQ(target, Pattern(count, position + 1));
      position += count;
      ASSERT_EQ(buffer.Position, position);
    }
    ASSERT_EQ(static_cast<std::size_t>(buffer.InSize), total - position);
  }
}

TEST(Buffer, FillMakesAtLeastSoManyFurtherBytesWait) {
  ScriptedBuffer buffer(Pattern(5000));
  EXPECT_TRUE(buffer.Fill(10));
  EXPECT_EQ(buffer.InSize, 10);
  EXPECT_TRUE(buffer.Fill(2500));
  EXPECT_EQ(buffer.InSize, 2510);
  EXPECT_EQ(buffer.asked, (Sizes{10, 1024, 1024, 452}));
  EXPECT_EQ(buffer.breakSizes, (std::vector<std::int32_t>{10, 2500, 1476, 452}));
  EXPECT_EQ(buffer.BreakSize, 32600);
  EXPECT_EQ(buffer.Position, 0u);
  EXPECT_EQ(ReadSome(buffer, 2510), Pattern(2510));
  EXPECT_EQ(buffer.asked.size(), 4u);
}

TEST(Buffer, FillAsksForWhatIsMissingUntilItIsThere) {
  ScriptedBuffer buffer;
  buffer.Comes(Pattern(3)).NothingYet().Comes(Pattern(4, 4)).Comes(Pattern(30, 8));
  EXPECT_TRUE(buffer.Fill(20));
  EXPECT_EQ(buffer.asked, (Sizes{20, 17, 17, 13}));
  EXPECT_EQ(buffer.InSize, 20);
  EXPECT_EQ(ShapesOf(buffer.Incoming), (Shapes{{3, 0}, {4, 0}, {13, 0}}));
}

TEST(Buffer, FillThatMeetsAFailureLeavesWhatCameAndTheBreakSizeAsItStands) {
  ScriptedBuffer buffer(Pattern(30));
  EXPECT_FALSE(buffer.Fill(100));
  EXPECT_EQ(buffer.InSize, 30);
  EXPECT_EQ(buffer.BreakSize, 70);
  EXPECT_EQ(ReadSome(buffer, 30), Pattern(30));
}

TEST(Buffer, FillThatMeetsTheEndIsContentWithWhatCame) {
  ScriptedBuffer buffer(Pattern(30));
  buffer.endsWithAnswers = true;
  EXPECT_TRUE(buffer.Fill(100));
  EXPECT_EQ(buffer.InSize, 30);
  EXPECT_EQ(buffer.asked, Sizes{100});
  EXPECT_EQ(buffer.BreakSize, 32600);
}

TEST(Buffer, FillAtTheEndAddsNothingAndAnswersTrue) {
  ScriptedBuffer buffer;
  buffer.endsWithAnswers = true;
  buffer.SetBreakSize(5);
  EXPECT_TRUE(buffer.Fill(100));
  EXPECT_TRUE(buffer.asked.empty());
  EXPECT_EQ(buffer.InSize, 0);
  EXPECT_EQ(buffer.Incoming.ListLength, 0u);
  EXPECT_EQ(buffer.BreakSize, 32600);
}

TEST(Buffer, FillWithNothingPutsTheBreakSizeBackAndAsksForNothing) {
  ScriptedBuffer buffer(Pattern(30));
  buffer.SetBreakSize(5);
  EXPECT_TRUE(buffer.Fill(0));
  EXPECT_TRUE(buffer.asked.empty());
  EXPECT_EQ(buffer.BreakSize, 32600);
}

TEST(Buffer, TheFirstWriteOpensAChunkOfBreakSizeEvenForNoBytes) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  EXPECT_TRUE(buffer.Write(nullptr, 0));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 0}}));
  EXPECT_TRUE(buffer.Write(nullptr, 0));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 0}}));
  EXPECT_EQ(buffer.OutSize, 0);
}

TEST(Buffer, AWriteWithRoomToSpareStaysInTheChunk) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  EXPECT_TRUE(WriteBytesTo(buffer, Pattern(9)));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 9}}));
  EXPECT_EQ(buffer.OutSize, 9);
}

TEST(Buffer, AWriteThatFillsTheChunkExactlyOpensTheNext) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  WriteBytesTo(buffer, Pattern(4));
  buffer.SetBreakSize(20);
  WriteBytesTo(buffer, Pattern(6, 5));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 10}, {20, 0}}));
  EXPECT_EQ(buffer.OutSize, 10);
  EXPECT_EQ(OutgoingOf(buffer), Pattern(10));
}

TEST(Buffer, AWriteThatOverflowsGoesOnInAsManyChunksAsItTakes) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  EXPECT_TRUE(WriteBytesTo(buffer, Pattern(35)));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 10}, {10, 10}, {10, 10}, {10, 5}}));
  EXPECT_EQ(buffer.OutSize, 35);
  EXPECT_EQ(OutgoingOf(buffer), Pattern(35));
}

TEST(Buffer, AChunkWithoutAnyRoomIsFollowedByOneOf32600Bytes) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  WriteBytesTo(buffer, Pattern(4));
  // As when somebody else filled it.
  buffer.Outgoing.Last->value->Index = 10;
  EXPECT_TRUE(buffer.Write(nullptr, 0));
  EXPECT_EQ(buffer.Outgoing.ListLength, 1u);
  WriteBytesTo(buffer, Pattern(1));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 10}, {32600, 1}}));
}

TEST(Buffer, ABreakSizeThatIsNoSizeGivesTheUsualChunk) {
  for (const std::int32_t breakSize : {0, -7}) {
    ScriptedBuffer buffer;
    buffer.SetBreakSize(breakSize);
    WriteBytesTo(buffer, Pattern(3));
    EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{32600, 3}}));
  }
}

/// The list of outgoing chunks as written down step by step, one call at a time.
class ChunkModel {
 public:
  void Write(std::uint32_t count, std::uint32_t breakSize) {
    if (shapes.empty()) shapes.emplace_back(breakSize, 0);
    while (count > 0) {
      auto& [size, filled] = shapes.back();
      const std::uint32_t room = size - filled;
      if (room > count) {
        filled += count;
        return;
      }
      if (room > 0) {
        filled += room;
        count -= room;
        shapes.emplace_back(breakSize, 0);
      } else {
        shapes.emplace_back(32600, 0);
      }
    }
  }
  Shapes shapes;
};

TEST(Buffer, RandomWritesLieInTheChunksThatTheStepsGive) {
  std::mt19937 random(6);
  for (int round = 0; round < 60; ++round) {
    ScriptedBuffer buffer;
    ChunkModel model;
    Bytes all;
    std::uint32_t breakSize = 32600;
    for (int step = 0; step < 300; ++step) {
      if (random() % 8 == 0) {
        breakSize = random() % 2 == 0 ? 32600 : static_cast<std::uint32_t>(random() % 50 + 1);
        buffer.SetBreakSize(static_cast<std::int32_t>(breakSize));
      }
      switch (random() % 6) {
        case 0:
          buffer.Write8(0x11);
          all.push_back(0x11);
          model.Write(1, breakSize);
          break;
        case 1:
          buffer.Write16(0x2221);
          for (const std::uint8_t byte : Bytes{0x21, 0x22}) all.push_back(byte);
          for (int byte = 0; byte < 2; ++byte) model.Write(1, breakSize);
          break;
        case 2:
          buffer.Write32(0x34333231);
          for (const std::uint8_t byte : Bytes{0x31, 0x32, 0x33, 0x34}) all.push_back(byte);
          for (int byte = 0; byte < 4; ++byte) model.Write(1, breakSize);
          break;
        default: {
          const std::size_t most = breakSize == 32600 && random() % 10 == 0 ? 70000 : 60;
          const Bytes bytes = Pattern(random() % most, static_cast<std::uint32_t>(step));
          WriteBytesTo(buffer, bytes);
          all.insert(all.end(), bytes.begin(), bytes.end());
          model.Write(static_cast<std::uint32_t>(bytes.size()), breakSize);
        }
      }
      ASSERT_EQ(ShapesOf(buffer.Outgoing), model.shapes);
      ASSERT_EQ(static_cast<std::size_t>(buffer.OutSize), all.size());
    }
    ASSERT_EQ(OutgoingOf(buffer), all);
    ASSERT_TRUE(buffer.Flush());
    ASSERT_EQ(buffer.AllSent(), all);
  }
}

TEST(Buffer, NumbersAreWrittenInTheOrderOfOutEndian) {
  for (const std::int32_t endian : {1, 2}) {
    ScriptedBuffer buffer;
    buffer.SetOutEndian(endian);
    buffer.SetInEndian(3 - endian);
    EXPECT_TRUE(buffer.Write8(0x9A));
    EXPECT_TRUE(buffer.Write16(0xF412));
    EXPECT_TRUE(buffer.Write32(0x810203F4));
    EXPECT_EQ(OutgoingOf(buffer), endian == 1 ? (Bytes{0x9A, 0x12, 0xF4, 0xF4, 0x03, 0x02, 0x81})
                                              : (Bytes{0x9A, 0xF4, 0x12, 0x81, 0x02, 0x03, 0xF4}));
  }
}

TEST(Buffer, SwappedWritesTurnWholeNumbersIntoOutEndian) {
  const Bytes bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  ScriptedBuffer little;
  EXPECT_TRUE(little.WriteSwapped16(bytes.data(), 8));
  EXPECT_TRUE(little.WriteSwapped32(bytes.data(), 8));
  EXPECT_EQ(OutgoingOf(little), test::Joined({bytes, bytes}));
  ScriptedBuffer big;
  big.SetOutEndian(2);
  EXPECT_TRUE(big.WriteSwapped16(bytes.data(), 8));
  EXPECT_TRUE(big.WriteSwapped32(bytes.data(), 8));
  EXPECT_EQ(OutgoingOf(big), (Bytes{2, 1, 4, 3, 6, 5, 8, 7, 4, 3, 2, 1, 8, 7, 6, 5}));
}

TEST(Buffer, SwappedWritesPassARestThatIsNoWholeNumberOnAsItIs) {
  const Bytes bytes = {1, 2, 3, 4, 5, 6, 7};
  ScriptedBuffer words;
  words.SetOutEndian(2);
  words.WriteSwapped16(bytes.data(), 7);
  EXPECT_EQ(OutgoingOf(words), (Bytes{2, 1, 4, 3, 6, 5, 7}));
  ScriptedBuffer numbers;
  numbers.SetOutEndian(2);
  numbers.WriteSwapped32(bytes.data(), 7);
  EXPECT_EQ(OutgoingOf(numbers), (Bytes{4, 3, 2, 1, 5, 6, 7}));
  EXPECT_TRUE(numbers.WriteSwapped16(nullptr, 0));
  EXPECT_EQ(numbers.OutSize, 7);
}

TEST(Buffer, FlushSendsAndFreesTheChunksInOrder) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  WriteBytesTo(buffer, Pattern(25));
  EXPECT_TRUE(buffer.Flush());
  EXPECT_EQ(buffer.sent, (Sent{Pattern(10), Pattern(10, 11), Pattern(5, 21)}));
  EXPECT_EQ(buffer.Outgoing.ListLength, 0u);
  EXPECT_EQ(buffer.OutSize, 0);
}

TEST(Buffer, FlushFreesAnEmptyChunkWithoutSendingIt) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  WriteBytesTo(buffer, Pattern(10));
  ASSERT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 10}, {10, 0}}));
  EXPECT_TRUE(buffer.Flush());
  EXPECT_EQ(buffer.sent, Sent{Pattern(10)});
  EXPECT_EQ(buffer.Outgoing.ListLength, 0u);
}

TEST(Buffer, FlushOfNothingSucceeds) {
  ScriptedBuffer buffer;
  EXPECT_TRUE(buffer.Flush());
  EXPECT_TRUE(buffer.sent.empty());
  buffer.OutSize = 5;
  EXPECT_TRUE(buffer.Flush());
  EXPECT_EQ(buffer.OutSize, 0);
}

TEST(Buffer, FlushStopsAtTheFirstChunkThatCannotBeSentAndKeepsIt) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  buffer.refuseSend = 2;
  WriteBytesTo(buffer, Pattern(25));
  EXPECT_FALSE(buffer.Flush());
  EXPECT_EQ(buffer.sent, Sent{Pattern(10)});
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{10, 10}, {10, 5}}));
  EXPECT_EQ(buffer.OutSize, 15);
  buffer.refuseSend = 0;
  EXPECT_TRUE(buffer.Flush());
  EXPECT_EQ(buffer.AllSent(), Pattern(25));
}

TEST(Buffer, WriteAfterAFlushOpensANewFirstChunk) {
  ScriptedBuffer buffer;
  buffer.SetBreakSize(10);
  WriteBytesTo(buffer, Pattern(4));
  buffer.Flush();
  buffer.SetBreakSize(12);
  WriteBytesTo(buffer, Pattern(4));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{12, 4}}));
}

TEST(Buffer, TheDestructorNeverFlushes) {
  class Telltale : public Buffer {
   public:
    explicit Telltale(int& sends) : sends_(sends) {}
    int SendBinary(const void*, std::uint32_t) override {
      ++sends_;
      return 1;
    }

   private:
    int& sends_;
  };
  int sends = 0;
  { Telltale(sends).Write8(1); }
  EXPECT_EQ(sends, 0);
}

TEST(Buffer, WriteLongQueuesWhereTheStreamIsNoFile) {
  ScriptedBuffer buffer;
  const Bytes bytes = Pattern(100000);
  buffer.Write8(0xAA);
  EXPECT_TRUE(buffer.WriteLong(bytes.data(), 100000));
  EXPECT_TRUE(buffer.sent.empty());
  EXPECT_EQ(OutgoingOf(buffer), test::Joined({{0xAA}, bytes}));
  EXPECT_EQ(buffer.OutSize, 100001);
}

TEST(Buffer, MuchMayWaitWhereTheStreamIsNoFile) {
  ScriptedBuffer buffer;
  const Bytes bytes = Pattern(3 << 20);
  WriteBytesTo(buffer, bytes);
  EXPECT_TRUE(buffer.FlushIfMuchWaits());
  EXPECT_TRUE(buffer.sent.empty());
}

TEST(Buffer, AWriteThatOutSizeCouldNotCountIsRefusedInsteadOfCut) {
  ScriptedBuffer buffer;
  WriteBytesTo(buffer, Pattern(10));
  // As after writing so much that what is left of the chunk, and one more chunk, can just be counted.
  constexpr std::int32_t kWritten = kLargest - 2 * 32600 + 10;
  buffer.OutSize = kWritten;
  EXPECT_TRUE(WriteBytesTo(buffer, Pattern(32600 - 11)));
  EXPECT_TRUE(WriteBytesTo(buffer, Pattern(1)));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{32600, 32600}, {32600, 0}}));
  EXPECT_TRUE(WriteBytesTo(buffer, Pattern(32599)));
  EXPECT_EQ(buffer.OutSize, kLargest - 1);
  EXPECT_THROW(WriteBytesTo(buffer, Pattern(1)), std::bad_alloc);
  EXPECT_THROW(WriteBytesTo(buffer, Pattern(100)), std::bad_alloc);
  EXPECT_EQ(buffer.OutSize, kLargest - 1);
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{32600, 32600}, {32600, 32599}}));

  ScriptedBuffer oneMore;
  WriteBytesTo(oneMore, Pattern(10));
  oneMore.OutSize = kWritten + 1;
  EXPECT_TRUE(WriteBytesTo(oneMore, Pattern(32600 - 11)));
  EXPECT_THROW(WriteBytesTo(oneMore, Pattern(1)), std::bad_alloc);
  EXPECT_EQ(ShapesOf(oneMore.Outgoing), (Shapes{{32600, 32599}}));
}

TEST(Buffer, AChunkThatOutSizeCouldNotCountIsNotOpened) {
  ScriptedBuffer buffer(Pattern(10));
  // A Fill that failed leaves the break size at what was missing, which may be what a peer made up.
  EXPECT_FALSE(buffer.Fill(kLargest));
  EXPECT_EQ(buffer.BreakSize, kLargest - 10);
  EXPECT_THROW(WriteBytesTo(buffer, Pattern(11)), std::bad_alloc);
  EXPECT_EQ(buffer.Outgoing.ListLength, 0u);
  buffer.SetBreakSize(32600);
  EXPECT_TRUE(WriteBytesTo(buffer, Pattern(11)));
  EXPECT_EQ(ShapesOf(buffer.Outgoing), (Shapes{{32600, 11}}));
}

TEST(Buffer, OneWriteOfMoreThanOutSizeCanCountIsRefusedUntouched) {
  ScriptedBuffer buffer;
  std::uint8_t byte = 0;
  EXPECT_THROW(buffer.Write(&byte, 0xFFFFFFFF), std::bad_alloc);
  EXPECT_THROW(buffer.Write(&byte, 0x7FFFFFFF), std::bad_alloc);
  EXPECT_EQ(buffer.OutSize, 0);
  EXPECT_EQ(buffer.Outgoing.ListLength, 0u);
}

}  // namespace
}  // namespace tessaret
