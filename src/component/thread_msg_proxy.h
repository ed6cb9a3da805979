// Brings messages of worker threads to the thread that an object belongs to, where its events are fired.
#pragma once

#include <atomic>
#include <memory>

#include "component/thread_msg.h"
#include "component/thread_queue.h"
#include "tessaret/object.hpp"

namespace tessaret {

/// One for each object whose work goes on in other threads. The thread that creates it is the one that handles; it has to pump
/// (PumpEvents) for that.
/// A class that derives from it closes it first of all in its destructor: messages may be on their way until then.
class CThreadMsgProxy {
 public:
  CThreadMsgProxy() = default;
  CThreadMsgProxy(const CThreadMsgProxy&) = delete;
  CThreadMsgProxy& operator=(const CThreadMsgProxy&) = delete;
  virtual ~CThreadMsgProxy();

  /// Has the calling thread handle what is posted from now on. `owner`, which may be null, is not held, but for as long as a message is
  /// being handled. Asked again it changes the owner only. False where there is no descriptor left, and once it is closed.
  [[nodiscard]] bool Create(IObject* owner);
  [[nodiscard]] IObject* Owner() const { return owner_; }

  /// Takes `message` over, which is null then, and lets the caller go on. Any thread. Before Create and once it is closed, or when the
  /// thread that handles has ended, nothing happens and the message is left with the caller.
  virtual void Post(std::unique_ptr<CThreadMsg>& message);
  /// The same, but the caller goes on only when the message begins to be handled, or dies unhandled because the proxy is closed. On the
  /// thread that handles it is handled within the call, behind what waits for this proxy.
  virtual void Send(std::unique_ptr<CThreadMsg>& message);

  /// Called for one message after the other, in the order in which they came. The message dies when this returns. What is thrown here
  /// goes no further.
  virtual void Handle(CThreadMsg& message) = 0;

  /// For good. What waits dies without having been handled. From another thread it waits for the end of a Handle that goes on; from
  /// within Handle it does not.
  void Close() noexcept;
  [[nodiscard]] bool IsClosing() const noexcept { return closing_.load(); }

  /// What waits dies without having been handled.
  void Drain() noexcept;

 private:
  IObject* owner_ = nullptr;
  std::shared_ptr<ThreadQueue> queue_;  // set once
  std::atomic<bool> closing_ = false;
};

}  // namespace tessaret
