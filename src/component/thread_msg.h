// What one thread has to say to another.
#pragma once

#include <atomic>
#include <memory>

namespace tessaret {

class CThreadMsgProxy;

/// The base of all messages. Whoever takes one in owns it; it dies when it has been handled, or when nobody can handle it any more.
class CThreadMsg {
 public:
  CThreadMsg() = default;
  CThreadMsg(const CThreadMsg&) = delete;
  CThreadMsg& operator=(const CThreadMsg&) = delete;
  virtual ~CThreadMsg() = default;

 private:
  friend class ThreadQueue;

  // Its place in a queue: it needs no memory to be posted.
  std::unique_ptr<CThreadMsg> next_;
  CThreadMsgProxy* proxy_ = nullptr;
  std::atomic<bool>* taken_ = nullptr;  // of a sender who waits
};

}  // namespace tessaret
