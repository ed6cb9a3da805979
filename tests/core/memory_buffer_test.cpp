#include "core/memory_buffer.h"

#include <sys/mman.h>

#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "scripted_buffer.h"
#include "support/bytes.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::Pattern;

using Shapes = std::vector<test::ChunkShape>;

TEST(MemoryBuffer, HoldsTheWholeBlockAsOneExternalChunk) {
  Bytes block = Pattern(5000);
  MemoryBuffer buffer(block.data(), 5000, false, 2);
  EXPECT_EQ(buffer.Source, block.data());
  EXPECT_EQ(buffer.SourceSize, 5000u);
  EXPECT_EQ(buffer.SourceIndex, 5000u);
  EXPECT_EQ(buffer.OwnsSource, 0u);
  EXPECT_EQ(buffer.InEndian, 2);
  EXPECT_EQ(buffer.OutEndian, 1);
  EXPECT_EQ(buffer.Link, nullptr);
  EXPECT_EQ(buffer.InSize, 5000);
  EXPECT_EQ(buffer.Available(), 5000u);
  EXPECT_EQ(buffer.Total(), -1);
  EXPECT_FALSE(buffer.IsEnd());
  ASSERT_EQ(test::ShapesOf(buffer.Incoming), (Shapes{{5000, 0}}));
  // In place, with no copy.
  EXPECT_EQ(buffer.Incoming.First->value->Data, block.data());
  EXPECT_EQ(buffer.Incoming.First->value->External, 1u);
}

TEST(MemoryBuffer, IsLittleEndianUnlessToldOtherwise) {
  Bytes block = {1, 2};
  EXPECT_EQ(MemoryBuffer(block.data(), 2, false).InEndian, 1);
}

TEST(MemoryBuffer, IsReadToItsEndAndNoFurther) {
  Bytes block = Pattern(5000);
  MemoryBuffer buffer(block.data(), 5000, false);
  Bytes target(4000);
  EXPECT_EQ(buffer.Read(target.data(), 4000), 1);
  EXPECT_EQ(target, Pattern(4000));
  EXPECT_EQ(buffer.Position, 4000u);
  EXPECT_EQ(buffer.Available(), 1000u);
  EXPECT_EQ(buffer.Read(target.data(), 1001), 0);
  EXPECT_EQ(buffer.Position, 4000u);
  EXPECT_EQ(buffer.Read(target.data(), 1000), 1);
  EXPECT_EQ(Bytes(target.begin(), target.begin() + 1000), Pattern(1000, 4001));
  EXPECT_EQ(buffer.Available(), 0u);
  EXPECT_EQ(buffer.Read(target.data(), 1), 0);
  EXPECT_EQ(buffer.Position, 5000u);
}

TEST(MemoryBuffer, ReadsNumbersInItsByteOrder) {
  Bytes block = {0x12, 0x34, 0x12, 0x34, 0x56, 0x78};
  MemoryBuffer buffer(block.data(), 6, false, 2);
  std::uint16_t word = 0;
  std::uint32_t number = 0;
  EXPECT_TRUE(buffer.Read16(&word));
  EXPECT_TRUE(buffer.Read32(&number));
  EXPECT_EQ(word, 0x1234);
  EXPECT_EQ(number, 0x12345678u);
}

TEST(MemoryBuffer, HasNothingLeftForALowLevelRead) {
  Bytes block = Pattern(10);
  MemoryBuffer buffer(block.data(), 10, false);
  std::uint8_t byte = 0xEE;
  EXPECT_EQ(buffer.ReadBinary(&byte, 1), -1);
  EXPECT_EQ(byte, 0xEE);
  EXPECT_FALSE(buffer.Fill(1));
  EXPECT_EQ(buffer.Available(), 10u);
}

TEST(MemoryBuffer, ALowLevelReadCopiesFromSourceIndexOn) {
  Bytes block = Pattern(10);
  MemoryBuffer buffer(block.data(), 10, false);
  buffer.SourceIndex = 3;
  Bytes target(5);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 5), 5);
  EXPECT_EQ(target, Pattern(5, 4));
  EXPECT_EQ(buffer.SourceIndex, 8u);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 5), 2);
  EXPECT_EQ(Bytes(target.begin(), target.begin() + 2), Pattern(2, 9));
  EXPECT_EQ(buffer.ReadBinary(target.data(), 5), -1);
  buffer.SourceIndex = 1000;
  EXPECT_EQ(buffer.ReadBinary(target.data(), 5), -1);
}

TEST(MemoryBuffer, SendDoesNothing) {
  Bytes block = Pattern(10);
  MemoryBuffer buffer(block.data(), 10, false);
  const std::uint8_t byte = 0xEE;
  EXPECT_EQ(buffer.SendBinary(&byte, 1), 0);
  buffer.Write8(0xEE);
  EXPECT_FALSE(buffer.Flush());
  EXPECT_EQ(block, Pattern(10));
}

TEST(MemoryBuffer, FreesABlockOfItsOwn) {
  const Bytes bytes = Pattern(10);
  auto* block = new std::uint8_t[10];
  std::copy(bytes.begin(), bytes.end(), block);
  MemoryBuffer buffer(block, 10, true);
  EXPECT_EQ(buffer.OwnsSource, 1u);
  Bytes target(10);
  EXPECT_EQ(buffer.Read(target.data(), 10), 1);
  EXPECT_EQ(target, bytes);
}

TEST(MemoryBuffer, LeavesABorrowedBlockToItsOwner) {
  Bytes block = Pattern(10);
  { const MemoryBuffer buffer(block.data(), 10, false); }
  EXPECT_EQ(block, Pattern(10));
}

TEST(MemoryBuffer, OfNothingIsEmpty) {
  MemoryBuffer none(nullptr, 100, true);
  EXPECT_EQ(none.SourceSize, 0u);
  EXPECT_EQ(none.Available(), 0u);
  std::uint8_t byte = 0;
  EXPECT_EQ(none.Read(&byte, 1), 0);
  EXPECT_EQ(none.ReadBinary(&byte, 1), -1);
  EXPECT_EQ(none.LendBlock(), nullptr);

  MemoryBuffer empty(&byte, 0, false);
  EXPECT_EQ(empty.Available(), 0u);
  EXPECT_EQ(empty.Read(&byte, 1), 0);
}

TEST(MemoryBuffer, SuppliesAtMostWhatIsLeftOfIt) {
  Bytes block = Pattern(10);
  MemoryBuffer buffer(block.data(), 10, false);
  EXPECT_EQ(buffer.SuppliesAtMost(), 10u);
  std::uint8_t byte = 0;
  buffer.Read8(&byte);
  EXPECT_EQ(buffer.SuppliesAtMost(), 9u);
  buffer.SourceIndex = 4;
  EXPECT_EQ(buffer.SuppliesAtMost(), 15u);
  buffer.SourceIndex = 1000;
  EXPECT_EQ(buffer.SuppliesAtMost(), 9u);
}

TEST(MemoryBuffer, LendsWhatWaitsWhileItLiesInPlace) {
  Bytes block = Pattern(10);
  MemoryBuffer buffer(block.data(), 10, false);
  EXPECT_EQ(buffer.LendBlock(), block.data());
  std::uint8_t byte = 0;
  buffer.Read8(&byte);
  EXPECT_EQ(buffer.LendBlock(), block.data() + 1);
  buffer.SourceIndex = 5;
  EXPECT_EQ(buffer.LendBlock(), nullptr);
  EXPECT_TRUE(buffer.Fill(5));
  EXPECT_EQ(buffer.LendBlock(), nullptr);
  Bytes target(14);
  EXPECT_EQ(buffer.Read(target.data(), 14), 1);
  EXPECT_EQ(target, test::Joined({Pattern(9, 2), Pattern(5, 6)}));
  EXPECT_EQ(buffer.LendBlock(), nullptr);
}

TEST(MemoryBuffer, ADescendantMayReadInItsOwnWayAndLendsNothing) {
  class Own : public MemoryBuffer {
   public:
    using MemoryBuffer::MemoryBuffer;
  };
  Bytes block = Pattern(10);
  EXPECT_EQ(Own(block.data(), 10, false).LendBlock(), nullptr);
}

/// Address space without memory: pages of zeros that only come into being when they are touched.
class SparseBlock {
 public:
  explicit SparseBlock(std::size_t size) : size_(size) {
    void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (pages != MAP_FAILED) data = static_cast<std::uint8_t*>(pages);
  }
  SparseBlock(const SparseBlock&) = delete;
  SparseBlock& operator=(const SparseBlock&) = delete;
  ~SparseBlock() {
    if (data != nullptr) munmap(data, size_);
  }
  std::uint8_t* data = nullptr;

 private:
  std::size_t size_;
};

TEST(MemoryBuffer, ABlockLongerThanInSizeCanCountIsReadToItsEnd) {
  constexpr std::uint32_t kRest = 3000;
  constexpr std::uint32_t kSize = 0x7FFFFFFF + kRest;
  const SparseBlock block(kSize);
  ASSERT_NE(block.data, nullptr);
  const Bytes marks = Pattern(kRest + 100);
  std::copy(marks.begin(), marks.end(), block.data + kSize - marks.size());

  MemoryBuffer buffer(block.data, kSize, false);
  EXPECT_EQ(buffer.Available(), 0x7FFFFFFFu);
  EXPECT_EQ(buffer.SuppliesAtMost(), kSize);
  std::uint8_t byte = 0xEE;
  EXPECT_TRUE(buffer.Read8(&byte));
  EXPECT_EQ(byte, 0);
  // One more must be pulled for this one, and no more than one fits beside what waits.
  EXPECT_EQ(buffer.Read(nullptr, 0x7FFFFFFF), 1);
  EXPECT_EQ(buffer.Position, 0x80000000u);
  Bytes target(kRest - 1);
  EXPECT_EQ(buffer.Read(target.data(), kRest - 1), 1);
  EXPECT_EQ(target, Pattern(kRest - 1, 102));
  EXPECT_EQ(buffer.Read(target.data(), 1), 0);
}

}  // namespace
}  // namespace tessaret
