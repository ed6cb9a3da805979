#include "component/thread_queue.h"

#include <cxxabi.h>

#include <utility>

#include "component/thread_msg_proxy.h"
#include "platform/hold_cancellation.h"
#include "platform/thread_keep.h"

namespace tessaret {

struct ThreadQueue::Kept {
  std::shared_ptr<ThreadQueue> queue;

  ~Kept() {
    if (queue != nullptr) queue->EndThread();
  }
};

/// One message while it is handled.
class ThreadQueue::Delivery {
 public:
  Delivery(ThreadQueue& queue, const CThreadMsgProxy* only) : queue_(queue) {
    if (!queue_.IsOfThisProcess()) return;
    const std::lock_guard lock(queue_.mutex_);
    message_ = queue_.TakeFirst(only);
    if (message_ == nullptr) return;
    began_ = true;
    proxy_ = message_->proxy_;
    outer_ = std::exchange(queue_.innermost_, this);
  }
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;
  ~Delivery() {
    if (!began_ || !queue_.IsOfThisProcess()) return;
    const std::lock_guard lock(queue_.mutex_);
    queue_.innermost_ = outer_;
    queue_.changed_.notify_all();
  }

  /// False where nothing waited.
  [[nodiscard]] bool HasBegun() const { return began_; }
  [[nodiscard]] bool IsFor(const CThreadMsgProxy& proxy) const { return proxy_ == &proxy; }
  [[nodiscard]] Delivery* Outer() const { return outer_; }

  /// The proxy ends while it handles; another one may come to lie in its place.
  void Forget(const CThreadMsgProxy& proxy) {
    if (IsFor(proxy)) proxy_ = nullptr;
  }

  void Handle() {
    // Whoever hears of it may let go of the owner, and with it of the proxy.
    const Ref<IObject> alive(proxy_->Owner());
    const std::unique_ptr<CThreadMsg> message = std::move(message_);
    try {
      proxy_->Handle(*message);
    } catch (const abi::__forced_unwind&) {
      throw;  // the thread is being cancelled
    } catch (...) {
      // The next message is not to suffer from what befell this one.
    }
  }

 private:
  ThreadQueue& queue_;
  std::unique_ptr<CThreadMsg> message_;
  CThreadMsgProxy* proxy_ = nullptr;
  Delivery* outer_ = nullptr;
  bool began_ = false;
};

/// A sender who handles himself what waits before his message. Where his thread is cancelled in that, the message waits on without him.
class ThreadQueue::SenderHere {
 public:
  SenderHere(ThreadQueue& queue, const std::atomic<bool>& taken) : queue_(queue), taken_(taken) {}
  SenderHere(const SenderHere&) = delete;
  SenderHere& operator=(const SenderHere&) = delete;
  ~SenderHere() {
    if (taken_ || !queue_.IsOfThisProcess()) return;
    const std::lock_guard lock(queue_.mutex_);
    for (CThreadMsg* at = queue_.first_.get(); at != nullptr; at = at->next_.get()) {
      if (at->taken_ == &taken_) at->taken_ = nullptr;
    }
  }

 private:
  ThreadQueue& queue_;
  const std::atomic<bool>& taken_;
};

std::shared_ptr<ThreadQueue> ThreadQueue::OfThisThread() {
  Kept* kept = ThreadKept<Kept, OfThread>();
  if (kept == nullptr) return nullptr;
  if (kept->queue != nullptr && kept->queue->IsOfThisProcess()) return kept->queue;
  // In a child of fork the parent's is left as it is: threads that are not here may have locked it.
  const auto free = [](ThreadQueue* queue) {
    if (queue->IsOfThisProcess()) delete queue;
  };
  std::shared_ptr<ThreadQueue> made(new ThreadQueue, free);
  if (!made->pipe_.Open()) return nullptr;
  kept->queue = made;
  return made;
}

ThreadQueue::ThreadQueue() : thread_(std::this_thread::get_id()) {}

ThreadQueue::~ThreadQueue() { Free(std::move(first_)); }

void ThreadQueue::EndThread() noexcept {
  if (!IsOfThisProcess()) return;
  std::unique_ptr<CThreadMsg> gone;
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    gone = TakeAll(nullptr);
  }
  Free(std::move(gone));
}

bool ThreadQueue::IsOfThisThread() const noexcept {
  return !ended_ && thread_ == std::this_thread::get_id();
}

bool ThreadQueue::IsHandling(const CThreadMsgProxy& proxy) const noexcept {
  for (const Delivery* at = innermost_; at != nullptr; at = at->Outer()) {
    if (at->IsFor(proxy)) return true;
  }
  return false;
}

void ThreadQueue::Post(CThreadMsgProxy& proxy, std::unique_ptr<CThreadMsg>& message) noexcept {
  if (!IsOfThisProcess()) return;
  const std::lock_guard lock(mutex_);
  Append(proxy, message, nullptr);
}

void ThreadQueue::Send(CThreadMsgProxy& proxy, std::unique_ptr<CThreadMsg>& message) {
  if (!IsOfThisProcess()) return;
  std::atomic<bool> taken = false;
  std::unique_lock lock(mutex_);
  if (!Append(proxy, message, &taken)) return;
  if (!IsOfThisThread()) {
    // The queue knows where this thread waits.
    const HoldCancellation held;
    changed_.wait(lock, [&] { return taken.load(); });
    return;
  }
  lock.unlock();
  const SenderHere sender(*this, taken);
  while (!taken && HandleNext(&proxy)) {
  }
}

void ThreadQueue::Close(CThreadMsgProxy& proxy) noexcept {
  if (!IsOfThisProcess()) return;
  std::unique_ptr<CThreadMsg> gone;
  {
    const HoldCancellation held;
    std::unique_lock lock(mutex_);
    gone = TakeAll(&proxy);
    if (IsOfThisThread()) {
      for (Delivery* at = innermost_; at != nullptr; at = at->Outer()) at->Forget(proxy);
    } else {
      changed_.wait(lock, [&] { return !IsHandling(proxy); });
    }
  }
  Free(std::move(gone));
}

void ThreadQueue::Drain(const CThreadMsgProxy& proxy) noexcept {
  if (!IsOfThisProcess()) return;
  std::unique_ptr<CThreadMsg> gone;
  {
    const std::lock_guard lock(mutex_);
    gone = TakeAll(&proxy);
  }
  Free(std::move(gone));
}

std::int32_t ThreadQueue::Pump(int timeoutMs) {
  std::int32_t handled = 0;
  for (std::size_t left = WaitForSome(DeadlineIn(timeoutMs)); left != 0; --left) {
    if (!HandleNext(nullptr)) break;
    ++handled;
  }
  return handled;
}

std::size_t ThreadQueue::WaitForSome(const Deadline& deadline) {
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      if (count_ != 0) return count_;
    }
    if (!pipe_.Wait(deadline)) return 0;
  }
}

bool ThreadQueue::HandleNext(const CThreadMsgProxy* only) {
  Delivery delivery(*this, only);
  if (!delivery.HasBegun()) return false;
  delivery.Handle();
  return true;
}

/// One by one: a long chain would go as deep as it is long.
void ThreadQueue::Free(std::unique_ptr<CThreadMsg> messages) noexcept {
  while (messages != nullptr) messages = std::exchange(messages->next_, nullptr);
}

bool ThreadQueue::Append(CThreadMsgProxy& proxy, std::unique_ptr<CThreadMsg>& message,
                         std::atomic<bool>* taken) noexcept {
  if (message == nullptr || ended_ || proxy.IsClosing()) return false;
  message->proxy_ = &proxy;
  message->taken_ = taken;
  std::unique_ptr<CThreadMsg>& link = last_ == nullptr ? first_ : last_->next_;
  link = std::move(message);
  last_ = link.get();
  if (count_++ == 0) pipe_.Wake();
  return true;
}

/// Takes what `link` holds out of the chain; whoever waits for that goes on. The end of the chain is the caller's to mend.
std::unique_ptr<CThreadMsg> ThreadQueue::Unlink(std::unique_ptr<CThreadMsg>& link) noexcept {
  std::unique_ptr<CThreadMsg> message = std::move(link);
  link = std::move(message->next_);
  if (message->taken_ != nullptr) {
    message->taken_->store(true);
    changed_.notify_all();
  }
  if (--count_ == 0) pipe_.Clear();
  return message;
}

std::unique_ptr<CThreadMsg> ThreadQueue::TakeFirst(const CThreadMsgProxy* only) noexcept {
  CThreadMsg* before = nullptr;
  std::unique_ptr<CThreadMsg>* link = &first_;
  while (*link != nullptr && only != nullptr && (*link)->proxy_ != only) {
    before = link->get();
    link = &before->next_;
  }
  if (*link == nullptr) return nullptr;
  std::unique_ptr<CThreadMsg> message = Unlink(*link);
  if (*link == nullptr) last_ = before;
  return message;
}

/// As a chain.
std::unique_ptr<CThreadMsg> ThreadQueue::TakeAll(const CThreadMsgProxy* only) noexcept {
  std::unique_ptr<CThreadMsg> taken;
  std::unique_ptr<CThreadMsg>* end = &taken;
  CThreadMsg* before = nullptr;
  for (std::unique_ptr<CThreadMsg>* link = &first_; *link != nullptr;) {
    if (only != nullptr && (*link)->proxy_ != only) {
      before = link->get();
      link = &before->next_;
      continue;
    }
    *end = Unlink(*link);
    end = &(*end)->next_;
  }
  last_ = before;
  return taken;
}

}  // namespace tessaret
