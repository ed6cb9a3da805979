// Work that goes on on another core while this thread does something else.
#pragma once

#include <exception>
#include <functional>
#include <thread>

namespace tessaret::codecs {

/// Runs a task once, in a thread of its own, or where there can be none in Finish(). That thread takes no signals: they are the host's.
class SideTask {
 public:
  /// What the task refers to lives until Finish() or the end of this.
  explicit SideTask(std::function<void()> task);
  SideTask(const SideTask&) = delete;
  SideTask& operator=(const SideTask&) = delete;
  /// Waits for the task, and forgets what it threw.
  ~SideTask();

  /// Waits for the task and throws what it threw.
  void Finish();

 private:
  void Run() noexcept;

  std::function<void()> task_;
  std::exception_ptr thrown_;
  std::thread thread_;
};

}  // namespace tessaret::codecs
