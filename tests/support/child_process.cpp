#include "support/child_process.h"

#include <grp.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace tessaret::test {
namespace {

constexpr uid_t kNobody = 65534;

// Runs nothing of what the parent left for its own end.
[[noreturn]] void RunAndEnd(const std::function<int()>& work) {
  int result = ChildProcess::kThrown;
  try {
    result = work();
  } catch (...) {
    // Told by the result.
  }
  ::_exit(result);
}

}  // namespace

ChildProcess::ChildProcess(const std::function<int()>& work) : id_(::fork()) {
  if (id_ < 0) throw std::runtime_error("cannot start a process");
  if (id_ == 0) RunAndEnd(work);
}

ChildProcess::~ChildProcess() {
  if (waited_) return;
  ::kill(id_, SIGKILL);
  Wait();
}

int ChildProcess::Wait() {
  int status = 0;
  while (::waitpid(id_, &status, 0) < 0 && errno == EINTR) {
  }
  waited_ = true;
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

bool BecomeNobody() {
  if (::geteuid() != 0) return true;
  return ::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0;
}

}  // namespace tessaret::test
