// What this process holds at the moment, for tests that hold it to giving everything back.
#pragma once

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace tessaret::test {

inline std::ptrdiff_t EntriesOf(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder),
                       std::filesystem::directory_iterator());
}

/// How many descriptors this process has open.
inline int OpenDescriptors() {
  return static_cast<int>(EntriesOf("/proc/self/fd")) - 1;  // looking takes one
}

inline int RunningThreads() { return static_cast<int>(EntriesOf("/proc/self/task")); }

/// Whether that many threads run before long: one that has been joined is listed for a moment still.
inline bool AwaitRunningThreads(int count) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (RunningThreads() != count) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

/// Bytes of all blocks that were taken from malloc, by any thread, and not given back.
inline std::ptrdiff_t HeapInUse() {
  const struct mallinfo2 heap = ::mallinfo2();
  return static_cast<std::ptrdiff_t>(heap.uordblks + heap.hblkhd);
}

/// Bytes of this process in memory.
inline std::ptrdiff_t ResidentMemory() {
  std::ptrdiff_t all = 0;
  std::ptrdiff_t resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * ::sysconf(_SC_PAGESIZE);
}

}  // namespace tessaret::test
