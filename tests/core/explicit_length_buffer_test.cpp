#include "core/explicit_length_buffer.h"

#include <limits>

#include <gtest/gtest.h>

#include "core/memory_buffer.h"
#include "scripted_buffer.h"
#include "support/bytes.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::Pattern;
using test::ScriptedBuffer;

TEST(ExplicitLengthBuffer, GoesOnInTheByteOrderAndPositionOfItsParent) {
  ScriptedBuffer parent;
  parent.SetInEndian(2);
  parent.SetOutEndian(2);
  parent.Position = 500;
  ExplicitLengthBuffer view(parent, 20);
  EXPECT_EQ(view.InEndian, 2);
  EXPECT_EQ(view.OutEndian, 1);
  EXPECT_EQ(view.Position, 500u);
  EXPECT_EQ(view.Parent, &parent);
  EXPECT_EQ(view.Remaining, 20u);
  EXPECT_EQ(view.Total(), -1);
  EXPECT_FALSE(view.IsEnd());
}

TEST(ExplicitLengthBuffer, ReadsFromItsParentAndCountsBoth) {
  ScriptedBuffer parent(Pattern(100));
  ExplicitLengthBuffer view(parent, 20);
  Bytes target(8);
  EXPECT_EQ(view.Read(target.data(), 8), 8);
  EXPECT_EQ(target, Pattern(8));
  EXPECT_EQ(view.Remaining, 12u);
  EXPECT_EQ(view.Available(), 12u);
  EXPECT_EQ(view.Position, 8u);
  EXPECT_EQ(parent.Position, 8u);
}

TEST(ExplicitLengthBuffer, AReadPastItsEndYieldsWhatIsLeft) {
  ScriptedBuffer parent(Pattern(100));
  ExplicitLengthBuffer view(parent, 20);
  Bytes target(30, 0xEE);
  EXPECT_EQ(view.Read(target.data(), 30), 20);
  EXPECT_EQ(Bytes(target.begin(), target.begin() + 20), Pattern(20));
  EXPECT_EQ(target[20], 0xEE);
  EXPECT_EQ(view.Remaining, 0u);
  EXPECT_EQ(view.Read(target.data(), 1), 0);
  EXPECT_EQ(parent.Position, 20u);
}

TEST(ExplicitLengthBuffer, AtItsEndHasNothingAvailable) {
  ScriptedBuffer parent(Pattern(10));
  ExplicitLengthBuffer view(parent, 0);
  EXPECT_EQ(view.Available(), 0u);
  std::uint8_t byte = 0xEE;
  EXPECT_EQ(view.Read(&byte, 1), 0);
  EXPECT_FALSE(view.Read8(&byte));
  EXPECT_EQ(byte, 0xEE);
  EXPECT_EQ(view.Position, 0u);
  EXPECT_TRUE(parent.asked.empty());
}

TEST(ExplicitLengthBuffer, ReadOfNothingChangesNothing) {
  ScriptedBuffer parent(Pattern(10));
  ExplicitLengthBuffer view(parent, 5);
  EXPECT_EQ(view.Read(nullptr, 0), 0);
  EXPECT_EQ(view.Remaining, 5u);
  EXPECT_EQ(view.Position, 0u);
}

TEST(ExplicitLengthBuffer, FailsWhereItsParentEndsFirst) {
  ScriptedBuffer parent(Pattern(5));
  parent.Position = 100;
  ExplicitLengthBuffer view(parent, 20);
  Bytes target(8);
  EXPECT_EQ(view.Read(target.data(), 8), -1);
  EXPECT_EQ(view.Position, 100u);
  EXPECT_EQ(view.Remaining, 12u);
  // A nested parse ends even though its length was never true: every try takes from what remains.
  EXPECT_EQ(view.Read(target.data(), 12), -1);
  EXPECT_EQ(view.Available(), 0u);
}

TEST(ExplicitLengthBuffer, NumbersComeInTheByteOrderOfTheView) {
  ScriptedBuffer parent(Bytes{0x12, 0x34, 0x12, 0x34, 0x56, 0x78, 0x9A});
  parent.SetInEndian(2);
  ExplicitLengthBuffer view(parent, 7);
  parent.SetInEndian(1);
  std::uint16_t word = 0;
  std::uint32_t number = 0;
  std::uint8_t byte = 0;
  EXPECT_TRUE(view.Read16(&word));
  EXPECT_TRUE(view.Read32(&number));
  EXPECT_TRUE(view.Read8(&byte));
  EXPECT_EQ(word, 0x1234);
  EXPECT_EQ(number, 0x12345678u);
  EXPECT_EQ(byte, 0x9A);
}

TEST(ExplicitLengthBuffer, ANumberThatCrossesItsEndFails) {
  ScriptedBuffer parent(Pattern(10));
  ExplicitLengthBuffer view(parent, 3);
  std::uint32_t number = 0xABCD;
  EXPECT_FALSE(view.Read32(&number));
  EXPECT_EQ(number, 0xABCDu);
  EXPECT_EQ(view.Position, 3u);
  EXPECT_EQ(parent.Position, 3u);
}

TEST(ExplicitLengthBuffer, AViewOfAViewEndsWithTheSmallerOfBoth) {
  ScriptedBuffer parent(Pattern(100));
  ExplicitLengthBuffer outer(parent, 10);
  ExplicitLengthBuffer inner(outer, 50);
  EXPECT_EQ(inner.LeftInViews(), 10u);
  Bytes target(20, 0xEE);
  EXPECT_EQ(inner.Read(target.data(), 4), 4);
  EXPECT_EQ(outer.Remaining, 6u);
  EXPECT_EQ(inner.Remaining, 46u);
  EXPECT_EQ(inner.LeftInViews(), 6u);
  EXPECT_EQ(outer.Position, 4u);
  EXPECT_EQ(inner.Position, 4u);
  // The outer one yields what it has left, and that is what the inner one yields.
  EXPECT_EQ(inner.Read(target.data(), 20), 6);
  EXPECT_EQ(Bytes(target.begin(), target.begin() + 6), Pattern(6, 5));
  EXPECT_EQ(target[6], 0xEE);
  EXPECT_EQ(inner.Position, 10u);
  EXPECT_EQ(inner.Read(target.data(), 1), 0);
  EXPECT_FALSE(inner.Read8(target.data()));
  EXPECT_EQ(inner.LeftInViews(), 0u);
}

TEST(ExplicitLengthBuffer, AViewWithinAViewLeavesTheRestToTheOuter) {
  ScriptedBuffer parent(Pattern(100));
  ExplicitLengthBuffer outer(parent, 30);
  {
    ExplicitLengthBuffer inner(outer, 10);
    EXPECT_EQ(inner.LeftInViews(), 10u);
    Bytes target(10);
    EXPECT_EQ(inner.Read(target.data(), 10), 10);
  }
  EXPECT_EQ(outer.Remaining, 20u);
  EXPECT_EQ(outer.Position, 10u);
  std::uint8_t byte = 0;
  EXPECT_TRUE(outer.Read8(&byte));
  EXPECT_EQ(Bytes{byte}, Pattern(1, 11));
}

TEST(ExplicitLengthBuffer, BeneathAllViewsLiesTheirStream) {
  ScriptedBuffer parent;
  ExplicitLengthBuffer outer(parent, 30);
  ExplicitLengthBuffer middle(outer, 20);
  const ExplicitLengthBuffer inner(middle, 10);
  EXPECT_EQ(&outer.Beneath(), &parent);
  EXPECT_EQ(&inner.Beneath(), &parent);
}

TEST(ExplicitLengthBuffer, AFailureGoesThroughAllViews) {
  ScriptedBuffer parent(Pattern(5));
  ExplicitLengthBuffer outer(parent, 30);
  ExplicitLengthBuffer inner(outer, 20);
  Bytes target(10);
  EXPECT_EQ(inner.Read(target.data(), 10), -1);
  EXPECT_EQ(inner.Position, 0u);
}

TEST(ExplicitLengthBuffer, SuppliesAtMostWhatItAndItsParentHave) {
  Bytes block = Pattern(50);
  MemoryBuffer memory(block.data(), 50, false);
  ExplicitLengthBuffer within(memory, 20);
  EXPECT_EQ(within.SuppliesAtMost(), 20u);
  ExplicitLengthBuffer beyond(memory, 0xFFFFFFFF);
  EXPECT_EQ(beyond.SuppliesAtMost(), 50u);
  ScriptedBuffer endless;
  ExplicitLengthBuffer unknown(endless, 0xFFFFFFFE);
  EXPECT_EQ(unknown.SuppliesAtMost(), 0xFFFFFFFEu);
}

TEST(ExplicitLengthBuffer, FillTakesNothingFromTheParentThatReadWouldNotFind) {
  ScriptedBuffer parent(Pattern(50));
  ExplicitLengthBuffer view(parent, 20);
  EXPECT_FALSE(view.Fill(10));
  EXPECT_EQ(view.InSize, 0);
  Bytes target(20);
  EXPECT_EQ(view.Read(target.data(), 20), 20);
  EXPECT_EQ(target, Pattern(20));
}

TEST(ExplicitLengthBuffer, WritesGoToItsParent) {
  ScriptedBuffer parent;
  ExplicitLengthBuffer view(parent, 20);
  view.Write16(0x0201);
  EXPECT_TRUE(view.Flush());
  EXPECT_EQ(parent.AllSent(), (Bytes{1, 2}));
}

}  // namespace
}  // namespace tessaret
