// Work done in a process of its own: to be killed on the way, to run beside another one, or to have fewer rights.
#pragma once

#include <sys/types.h>

#include <functional>

namespace tessaret::test {

class ChildProcess {
 public:
  /// Starts a copy of this process that runs `work` and ends with its result. Only the calling thread lives on in it.
  explicit ChildProcess(const std::function<int()>& work);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  /// Kills it if nobody waited for it.
  ~ChildProcess();

  [[nodiscard]] pid_t Id() const { return id_; }
  /// Waits for the end: the result of `work`, or the number of the signal that killed it, negative. An exception thrown by
  /// `work` gives kThrown.
  int Wait();

  static constexpr int kThrown = 99;

 private:
  pid_t id_;
  bool waited_ = false;
};

/// Runs `work` in a child and waits for it.
inline int RunInChild(const std::function<int()>& work) { return ChildProcess(work).Wait(); }

/// Gives up the rights of the superuser for good, if this process has them, by becoming the user `nobody`. For children. False
/// when that fails.
bool BecomeNobody();

}  // namespace tessaret::test
