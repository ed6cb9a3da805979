#include "core/linked_buffer.h"

#include <vector>

#include <gtest/gtest.h>

#include "core/explicit_length_buffer.h"
#include "core/memory_buffer.h"
#include "scripted_buffer.h"
#include "support/bytes.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::Pattern;
using test::ScriptedBuffer;

using Sent = std::vector<Bytes>;

TEST(LinkedBuffer, WithoutALinkNeitherReadsNorSends) {
  LinkedBuffer buffer;
  EXPECT_EQ(buffer.Link, nullptr);
  std::uint8_t byte = 0;
  EXPECT_EQ(buffer.ReadBinary(&byte, 1), -1);
  EXPECT_EQ(buffer.SendBinary(&byte, 1), 0);
  EXPECT_EQ(buffer.Read(&byte, 1), 0);
  buffer.Write8(1);
  EXPECT_FALSE(buffer.Flush());
  EXPECT_EQ(buffer.OutSize, 1);
  EXPECT_FALSE(buffer.IsEnd());
  EXPECT_EQ(buffer.Total(), -1);
}

TEST(LinkedBuffer, ReadsThroughTheLinkAndAnswersTheCount) {
  ScriptedBuffer link(Pattern(100));
  LinkedBuffer buffer(&link);
  Bytes target(40);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 40), 40);
  EXPECT_EQ(target, Pattern(40));
  EXPECT_EQ(link.Position, 40u);
  EXPECT_EQ(buffer.Position, 0u);
}

TEST(LinkedBuffer, ReadsNothingWhereTheLinkHasLess) {
  ScriptedBuffer link(Pattern(10));
  LinkedBuffer buffer(&link);
  Bytes target(11, 0xEE);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 11), -1);
  EXPECT_EQ(target, Bytes(11, 0xEE));
  // What the link gathered for it waits there.
  EXPECT_EQ(link.InSize, 10);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 10), 10);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 0), -1);
}

TEST(LinkedBuffer, PullsInPortionsOfItsBreakSize) {
  ScriptedBuffer link(Pattern(100));
  LinkedBuffer buffer(&link);
  buffer.SetBreakSize(30);
  Bytes target(90);
  EXPECT_EQ(buffer.Read(target.data(), 90), 1);
  EXPECT_EQ(target, Pattern(90));
  EXPECT_EQ(buffer.Position, 90u);
  EXPECT_EQ(buffer.Available(), 0u);
  // The last portion cannot be had whole, so none of it is taken from the link.
  EXPECT_EQ(buffer.Read(target.data(), 10), 0);
  EXPECT_EQ(link.Position, 90u);
  buffer.SetBreakSize(10);
  EXPECT_EQ(buffer.Read(target.data(), 10), 1);
}

TEST(LinkedBuffer, FillTakesExactlyWhatIsMissingFromTheLink) {
  ScriptedBuffer link(Pattern(5000));
  LinkedBuffer buffer(&link);
  EXPECT_TRUE(buffer.Fill(3000));
  EXPECT_EQ(buffer.Available(), 3000u);
  EXPECT_EQ(link.Position, 3000u);
  Bytes target(3000);
  EXPECT_EQ(buffer.Read(target.data(), 3000), 1);
  EXPECT_EQ(target, Pattern(3000));
}

TEST(LinkedBuffer, OverAViewTakesNoMoreThanTheViewGives) {
  Bytes block = Pattern(100);
  MemoryBuffer memory(block.data(), 100, false);
  ExplicitLengthBuffer view(memory, 10);
  LinkedBuffer buffer(&view);
  Bytes target(40, 0xEE);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 40), 10);
  EXPECT_EQ(Bytes(target.begin(), target.begin() + 10), Pattern(10));
  EXPECT_EQ(target[10], 0xEE);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 40), -1);
  EXPECT_EQ(memory.Position, 10u);
}

TEST(LinkedBuffer, ReadOverAViewEndsWithTheView) {
  Bytes block = Pattern(100);
  MemoryBuffer memory(block.data(), 100, false);
  ExplicitLengthBuffer view(memory, 10);
  LinkedBuffer buffer(&view);
  Bytes target(10);
  EXPECT_EQ(buffer.Read(target.data(), 10), 1);
  EXPECT_EQ(target, Pattern(10));
  EXPECT_EQ(buffer.Read(target.data(), 1), 0);
  EXPECT_EQ(buffer.InSize, 0);
}

TEST(LinkedBuffer, SendsIntoTheLinksChunksAndFlushesThem) {
  ScriptedBuffer link;
  LinkedBuffer buffer(&link);
  link.Write8(0xAA);
  const Bytes bytes = Pattern(10);
  EXPECT_NE(buffer.SendBinary(bytes.data(), 10), 0);
  EXPECT_EQ(link.sent, (Sent{test::Joined({{0xAA}, bytes})}));
  EXPECT_EQ(link.OutSize, 0);
}

TEST(LinkedBuffer, FlushGoesThroughTheLinkChunkByChunk) {
  ScriptedBuffer link;
  LinkedBuffer buffer(&link);
  buffer.SetBreakSize(10);
  const Bytes bytes = Pattern(25);
  buffer.Write(bytes.data(), 25);
  EXPECT_TRUE(buffer.Flush());
  EXPECT_EQ(link.sent, (Sent{Pattern(10), Pattern(10, 11), Pattern(5, 21)}));
  EXPECT_EQ(buffer.OutSize, 0);
}

TEST(LinkedBuffer, ASendThatTheLinkCannotFlushFails) {
  ScriptedBuffer link;
  link.refuseSend = 1;
  LinkedBuffer buffer(&link);
  const Bytes bytes = Pattern(10);
  EXPECT_EQ(buffer.SendBinary(bytes.data(), 10), 0);
  EXPECT_EQ(test::OutgoingOf(link), bytes);
}

TEST(LinkedBuffer, AFlushThatTheLinkCannotFinishKeepsItsChunkAlthoughTheLinkHoldsItToo) {
  ScriptedBuffer link;
  link.refuseSend = 1;
  LinkedBuffer buffer(&link);
  const Bytes bytes = Pattern(10);
  buffer.Write(bytes.data(), 10);
  EXPECT_FALSE(buffer.Flush());
  EXPECT_EQ(buffer.OutSize, 10);
  EXPECT_EQ(test::OutgoingOf(buffer), bytes);
  EXPECT_EQ(link.OutSize, 10);
  EXPECT_EQ(test::OutgoingOf(link), bytes);
}

TEST(LinkedBuffer, LeavesTheLinkToItsOwner) {
  ScriptedBuffer link(Pattern(4));
  { const LinkedBuffer buffer(&link); }
  std::uint8_t byte = 0;
  EXPECT_TRUE(link.Read8(&byte));
}

}  // namespace
}  // namespace tessaret
