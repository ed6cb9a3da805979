// Forks while other threads are at work.
#pragma once

#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "support/child_process.h"

namespace tessaret::test {

/// Forks `turns` times while two threads do `work` all the time, and has each child do it too. The first turn in which a child did not
/// come to an end; -1 where all did.
inline int FirstStuckChild(int turns, const std::function<void()>& work) {
  constexpr unsigned kSecondsOfAChild = 20;
  std::atomic<bool> isOver = false;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 2; ++thread) {
    threads.emplace_back([&] {
      while (!isOver) work();
    });
  }
  int stuck = -1;
  for (int turn = 0; turn < turns && stuck == -1; ++turn) {
    const int answer = RunInChild([&] {
      ::alarm(kSecondsOfAChild);
      work();
      return 0;
    });
    if (answer != 0) stuck = turn;
  }
  isOver = true;
  for (std::thread& thread : threads) thread.join();
  return stuck;
}

}  // namespace tessaret::test
