#include "side_task.h"

#include <pthread.h>

#include <csignal>
#include <system_error>
#include <utility>

namespace tessaret::codecs {
namespace {

/// While it lives no signal is handled in this thread, nor in those that it starts.
class NoSignals {
 public:
  NoSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  NoSignals(const NoSignals&) = delete;
  NoSignals& operator=(const NoSignals&) = delete;
  ~NoSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

/// A host that cancels this thread has to wait: the task uses what the caller has on its stack.
void Join(std::thread& thread) {
  int before = 0;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
  thread.join();
  pthread_setcancelstate(before, nullptr);
}

}  // namespace

SideTask::SideTask(std::function<void()> task) : task_(std::move(task)) {
  if (std::thread::hardware_concurrency() < 2) return;
  try {
    const NoSignals blocked;
    thread_ = std::thread([this] { Run(); });
  } catch (const std::system_error&) {
    // No thread is to be had; the task is done when its outcome is asked for.
  }
}

SideTask::~SideTask() {
  if (thread_.joinable()) Join(thread_);
}

void SideTask::Run() noexcept {
  try {
    task_();
  } catch (...) {
    thrown_ = std::current_exception();
  }
}

void SideTask::Finish() {
  if (thread_.joinable()) {
    Join(thread_);
  } else if (task_) {
    Run();
  }
  task_ = nullptr;
  if (thrown_) std::rethrow_exception(std::exchange(thrown_, nullptr));
}

}  // namespace tessaret::codecs
