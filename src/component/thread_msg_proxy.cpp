#include "component/thread_msg_proxy.h"

namespace tessaret {

CThreadMsgProxy::~CThreadMsgProxy() { Close(); }

bool CThreadMsgProxy::Create(IObject* owner) {
  if (IsClosing()) return false;
  owner_ = owner;
  if (queue_ == nullptr) queue_ = ThreadQueue::OfThisThread();
  return queue_ != nullptr;
}

void CThreadMsgProxy::Post(std::unique_ptr<CThreadMsg>& message) {
  if (IsClosing() || queue_ == nullptr) return;
  queue_->Post(*this, message);
}

void CThreadMsgProxy::Send(std::unique_ptr<CThreadMsg>& message) {
  if (IsClosing() || queue_ == nullptr) return;
  // It may be handled here and now, and end this proxy.
  const std::shared_ptr<ThreadQueue> queue = queue_;
  queue->Send(*this, message);
}

void CThreadMsgProxy::Close() noexcept {
  closing_ = true;
  if (queue_ != nullptr) queue_->Close(*this);
}

void CThreadMsgProxy::Drain() noexcept {
  if (queue_ != nullptr) queue_->Drain(*this);
}

}  // namespace tessaret
