// Eight threads that do the same at the same time.
#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace tessaret::test {

inline constexpr int kThreads = 8;

/// Runs `work(number)` on eight threads that start together, and waits for them.
inline void OnAllThreads(const std::function<void(int)>& work) {
  std::atomic<int> ready = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace tessaret::test
