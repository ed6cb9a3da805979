// Runs work on a thread whose stack is small, so that recursion over what is nested crashes a test at once.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>

namespace tessaret::test {

inline constexpr std::size_t kSmallStack = 256 * 1024;

/// Runs `work` on a new thread with a stack of `bytes` and waits for it; what it throws comes out here.
inline void RunOnStack(std::size_t bytes, std::function<void()> work) {
  struct Call {
    std::function<void()> work;
    std::exception_ptr thrown;
    static void* Run(void* self) {
      auto& call = *static_cast<Call*>(self);
      try {
        call.work();
      } catch (...) {
        call.thrown = std::current_exception();
      }
      return nullptr;
    }
  };
  Call call{std::move(work), nullptr};
  pthread_attr_t attributes;
  pthread_t thread{};
  pthread_attr_init(&attributes);
  const bool sized = pthread_attr_setstacksize(&attributes, bytes) == 0;
  const bool started = sized && pthread_create(&thread, &attributes, &Call::Run, &call) == 0;
  pthread_attr_destroy(&attributes);
  if (!started) throw std::runtime_error("cannot start a thread with this stack");
  pthread_join(thread, nullptr);
  if (call.thrown) std::rethrow_exception(call.thrown);
}

}  // namespace tessaret::test
