// What streams allocate, free and do without memory.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/file_buffer.h"
#include "core/memory_buffer.h"
#include "scripted_buffer.h"
#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::AllocationFailure;
using test::AllocationWatch;
using test::Bytes;
using test::Pattern;
using test::ScriptedBuffer;
using test::ShapesOf;

/// A stream whose bytes never end, made without memory.
class Endless : public Buffer {
 public:
  std::int64_t ReadBinary(void* data, std::uint32_t count) override {
    std::fill_n(static_cast<std::uint8_t*>(data), count, std::uint8_t{7});
    return count;
  }
};

TEST(StreamMemory, ChunksAreFreedWithTheirStreamButNotExternalBytes) {
  std::uint8_t bytes[] = {1, 2, 3};
  const AllocationWatch watch;
  {
    Endless buffer;
    buffer.Fill(5000);
    const Bytes written(100000);
    buffer.Write(written.data(), 100000);
    auto chunk = std::make_unique<BufferSpace>();
    chunk->Data = bytes;
    chunk->Size = 3;
    buffer.Incoming.Add(chunk.release());
    chunk = std::make_unique<BufferSpace>();
    chunk->Data = bytes;
    chunk->Size = chunk->Index = 3;
    buffer.Outgoing.Add(chunk.release());
  }
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(StreamMemory, WhatWasReadAndFlushedIsFreedAtOnce) {
  Endless buffer;
  ScriptedBuffer out;
  Bytes bytes(50000);
  const AllocationWatch watch;
  buffer.Read(bytes.data(), 50000);
  // 50000 = 48 * 1024 + 848: the last chunk is not used up.
  EXPECT_EQ(watch.Outstanding(), 3);
  buffer.Read(bytes.data(), 1024 - 848);
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(StreamMemory, AReadHoldsNoMoreThanItReturns) {
  Endless buffer;
  Bytes bytes(50000);
  const AllocationWatch watch;
  buffer.Read(bytes.data(), 50000);
  EXPECT_LE(watch.LargestRequest(), 1024u);
}

TEST(StreamMemory, AReadWithoutMemoryThrowsAndCountsWhatWaits) {
  for (std::uint64_t nth = 1; nth < 20; ++nth) {
    Endless buffer;
    Bytes bytes(5000);
    {
      const AllocationFailure failure(nth);
      try {
        buffer.Read(bytes.data(), 5000);
      } catch (const std::bad_alloc&) {
      }
    }
    std::uint32_t waiting = 0;
    for (const auto& [size, index] : ShapesOf(buffer.Incoming)) waiting += size - index;
    ASSERT_EQ(static_cast<std::uint32_t>(buffer.InSize), waiting);
    ASSERT_EQ(buffer.Read(bytes.data(), 5000), 1);
    ASSERT_EQ(bytes, Bytes(5000, 7));
  }
}

TEST(StreamMemory, AWriteWithoutMemoryThrowsAndCountsWhatWaits) {
  const Bytes bytes = Pattern(100);
  for (std::uint64_t nth = 1;; ++nth) {
    ScriptedBuffer buffer;
    buffer.SetBreakSize(10);
    bool threw = false;
    {
      const AllocationFailure failure(nth);
      try {
        buffer.Write(bytes.data(), 100);
      } catch (const std::bad_alloc&) {
        threw = true;
      }
      ASSERT_EQ(threw, failure.Happened());
    }
    const auto waiting = static_cast<std::uint32_t>(buffer.OutSize);
    ASSERT_EQ(test::OutgoingOf(buffer), Pattern(waiting));
    // What was queued can still be sent, and more be written behind it.
    buffer.Write(bytes.data() + waiting, 100 - waiting);
    ASSERT_TRUE(buffer.Flush());
    ASSERT_EQ(buffer.AllSent(), bytes);
    if (!threw) break;
  }
}

TEST(StreamMemory, AMemoryBufferReadsInPlace) {
  Bytes block = Pattern(1 << 20);
  Bytes target(1 << 20);
  const AllocationWatch watch;
  MemoryBuffer buffer(block.data(), 1 << 20, false);
  EXPECT_EQ(buffer.Read(target.data(), 1 << 20), 1);
  EXPECT_EQ(target, block);
  // The chunk and its node in the list.
  EXPECT_EQ(watch.Count(), 2u);
  EXPECT_LE(watch.LargestRequest(), 64u);
}

TEST(StreamMemory, AMemoryBufferFreesTheBlockThatItOwnsOnce) {
  const AllocationWatch watch;
  { const MemoryBuffer buffer(new std::uint8_t[100](), 100, true); }
  EXPECT_EQ(watch.Outstanding(), 0);
  {
    MemoryBuffer buffer(new std::uint8_t[100](), 100, true);
    EXPECT_EQ(buffer.Read(nullptr, 100), 1);
  }
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(StreamMemory, AMemoryBufferThatCannotBeMadeLeavesTheBlockToTheCaller) {
  const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[100]());
  for (const std::uint64_t nth : {1u, 2u}) {
    const AllocationWatch watch;
    {
      const AllocationFailure failure(nth);
      EXPECT_THROW(MemoryBuffer(block.get(), 100, true), std::bad_alloc);
    }
    EXPECT_EQ(watch.Outstanding(), 0);
  }
}

int OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<int>(std::distance(begin(all), end(all)));
}

TEST(StreamMemory, AFileBufferWithoutMemoryFailsAndKeepsNoDescriptor) {
  const test::TempFolder folder;
  const std::string path = folder.File("file");
  test::WriteBytes(path, Pattern(20000));
  const int before = OpenDescriptors();
  for (std::uint64_t nth = 1; nth < 40; ++nth) {
    Bytes bytes(20000);
    {
      FileBuffer buffer;
      const AllocationFailure failure(nth);
      try {
        if (buffer.OpenForRead(path.c_str()) && buffer.Read(bytes.data(), 20000) <= 0) {
          ASSERT_TRUE(buffer.HasError());
        }
      } catch (const std::bad_alloc&) {
      }
    }
    ASSERT_EQ(OpenDescriptors(), before) << nth;
  }
}

}  // namespace
}  // namespace tessaret
