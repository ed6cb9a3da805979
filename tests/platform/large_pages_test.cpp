#include "platform/large_pages.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

constexpr std::size_t kMiB = std::size_t{1} << 20;

/// Pages that nothing has touched yet.
class Pages {
 public:
  explicit Pages(std::size_t size) : size_(size) {
    void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages != MAP_FAILED) data = static_cast<std::uint8_t*>(pages);
  }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;
  ~Pages() {
    if (data != nullptr) munmap(data, size_);
  }
  std::uint8_t* data = nullptr;

 private:
  std::size_t size_;
};

/// Whether the system keeps the wish for large pages ("hg") with the page at `address`.
bool IsPreferred(const std::uint8_t* address) {
  const auto wanted = reinterpret_cast<std::uintptr_t>(address);
  std::ifstream maps("/proc/self/smaps");
  bool within = false;
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    if (std::sscanf(line.c_str(), "%zx-%zx ", &begin, &end) == 2) {
      within = begin <= wanted && wanted < end;
    } else if (within && line.rfind("VmFlags:", 0) == 0) {
      return (line + " ").find(" hg ") != std::string::npos;
    }
  }
  return false;
}

/// Asked of other pages: a system without large pages refuses the wish.
bool SystemKnowsLargePages() {
  const Pages pages(4 * kMiB);
  return pages.data != nullptr && ::madvise(pages.data, 4 * kMiB, MADV_HUGEPAGE) == 0;
}

TEST(LargePages, ALargeBlockIsPreferredFromItsFirstWholePageToItsLast) {
  const bool kept = SystemKnowsLargePages();
  const Pages pages(16 * kMiB);
  ASSERT_NE(pages.data, nullptr);
  const auto address = reinterpret_cast<std::uintptr_t>(pages.data);
  // A block that begins one byte behind a border of 2 MiB and ends one byte before another: two whole pages in it.
  std::uint8_t* const border =
      pages.data + ((address + 2 * kMiB - 1) / (2 * kMiB) * 2 * kMiB - address);
  PreferLargePages(border + 1, 8 * kMiB - 2);
  EXPECT_FALSE(IsPreferred(border + 1));
  EXPECT_FALSE(IsPreferred(border + 2 * kMiB - 1));
  EXPECT_EQ(IsPreferred(border + 2 * kMiB), kept);
  EXPECT_EQ(IsPreferred(border + 6 * kMiB - 1), kept);
  EXPECT_FALSE(IsPreferred(border + 6 * kMiB));
}

TEST(LargePages, ASmallBlockIsLeftAlone) {
  const Pages pages(12 * kMiB);
  ASSERT_NE(pages.data, nullptr);
  PreferLargePages(pages.data, 4 * kMiB - 1);
  for (std::size_t at = 0; at < 4 * kMiB; at += kMiB) EXPECT_FALSE(IsPreferred(pages.data + at));
}

TEST(LargePages, TheBytesAndTheErrorNumberStay) {
  const Pages pages(12 * kMiB);
  ASSERT_NE(pages.data, nullptr);
  pages.data[5 * kMiB] = 7;
  errno = EDOM;
  PreferLargePages(pages.data, 12 * kMiB);
  EXPECT_EQ(errno, EDOM);
  EXPECT_EQ(pages.data[5 * kMiB], 7);
  // A place that the system does not know: it refuses, and nothing comes of it.
  PreferLargePages(reinterpret_cast<void*>(std::uintptr_t{1} << 62), 8 * kMiB);
  EXPECT_EQ(errno, EDOM);
  PreferLargePages(nullptr, 0);
}

}  // namespace
}  // namespace tessaret
