// Messages with a number, and a proxy that notes which it handled.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "component/thread_msg_proxy.h"

namespace tessaret::test {

/// How many exist.
inline std::atomic<int> messagesAlive = 0;

class Message final : public CThreadMsg {
 public:
  explicit Message(int wanted) : number(wanted) { ++messagesAlive; }
  ~Message() override { --messagesAlive; }

  const int number;
};

class NotingProxy final : public CThreadMsgProxy {
 public:
  ~NotingProxy() override { Close(); }

  void Handle(CThreadMsg& message) override {
    const int number = static_cast<Message&>(message).number;
    heard.push_back(number);
    thread = std::this_thread::get_id();
    // A copy: what is done may end this.
    if (const auto action = then) action(number);
  }

  std::vector<int> heard;
  std::thread::id thread;
  std::function<void(int number)> then;
};

/// Whether the proxy took it.
inline bool Post(CThreadMsgProxy& proxy, int number) {
  std::unique_ptr<CThreadMsg> message = std::make_unique<Message>(number);
  proxy.Post(message);
  return message == nullptr;
}
inline bool Send(CThreadMsgProxy& proxy, int number) {
  std::unique_ptr<CThreadMsg> message = std::make_unique<Message>(number);
  proxy.Send(message);
  return message == nullptr;
}

}  // namespace tessaret::test
