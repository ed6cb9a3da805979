// The messages that wait for one thread: any thread puts them in, the thread itself takes them out, in the same order.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "component/thread_msg.h"
#include "platform/wake_pipe.h"

namespace tessaret {

/// A child that fork makes has queues of its own: those of its parent take nothing in and give nothing out there.
class ThreadQueue {
 public:
  /// That of the calling thread, made when it is first asked for. Null where no descriptor is left for it, and while the thread ends.
  /// Throws std::bad_alloc.
  static std::shared_ptr<ThreadQueue> OfThisThread();

  ThreadQueue(const ThreadQueue&) = delete;
  ThreadQueue& operator=(const ThreadQueue&) = delete;
  ~ThreadQueue();

  /// Puts a message in; `message` is null then. It is left with the caller when `proxy` is closed or the thread has ended. Any thread.
  void Post(CThreadMsgProxy& proxy, std::unique_ptr<CThreadMsg>& message) noexcept;
  /// The same, and waits until the thread begins to handle it, or it is clear that it never will. The thread itself handles it, and
  /// what waits for the same proxy before it, at once.
  void Send(CThreadMsgProxy& proxy, std::unique_ptr<CThreadMsg>& message);

  /// Nothing more is taken in for `proxy`, what waits for it dies, and no other thread handles anything for it when this returns.
  /// Any thread; the queue's own may be handling.
  void Close(CThreadMsgProxy& proxy) noexcept;
  /// What waits for `proxy` dies.
  void Drain(const CThreadMsgProxy& proxy) noexcept;

  /// Handles what waits; waits for the first one as long as `timeoutMs` says, below 0 for ever. What comes meanwhile is left for the
  /// next time, so that it ends. How many were handled. The queue's own thread, which may be handling.
  std::int32_t Pump(int timeoutMs);
  /// Readable while something waits.
  [[nodiscard]] int Descriptor() const noexcept { return pipe_.Descriptor(); }

 private:
  class Delivery;
  class SenderHere;
  struct OfThread;
  struct Kept;

  ThreadQueue();
  void EndThread() noexcept;
  static void Free(std::unique_ptr<CThreadMsg> messages) noexcept;

  [[nodiscard]] bool IsOfThisProcess() const noexcept { return pipe_.IsOfThisProcess(); }
  [[nodiscard]] bool IsOfThisThread() const noexcept;
  [[nodiscard]] bool IsHandling(const CThreadMsgProxy& proxy) const noexcept;
  [[nodiscard]] std::size_t WaitForSome(const Deadline& deadline);
  bool HandleNext(const CThreadMsgProxy* only);

  // With the lock held:
  bool Append(CThreadMsgProxy& proxy, std::unique_ptr<CThreadMsg>& message,
              std::atomic<bool>* taken) noexcept;
  std::unique_ptr<CThreadMsg> Unlink(std::unique_ptr<CThreadMsg>& link) noexcept;
  std::unique_ptr<CThreadMsg> TakeFirst(const CThreadMsgProxy* only) noexcept;
  std::unique_ptr<CThreadMsg> TakeAll(const CThreadMsgProxy* only) noexcept;

  const std::thread::id thread_;
  WakePipe pipe_;  // readable while anything waits
  std::mutex mutex_;
  std::condition_variable changed_;  // a message was taken, or has been handled
  std::unique_ptr<CThreadMsg> first_;
  CThreadMsg* last_ = nullptr;
  std::size_t count_ = 0;
  Delivery* innermost_ = nullptr;  // of those that go on, one within the other
  bool ended_ = false;             // the thread is gone
};

}  // namespace tessaret
