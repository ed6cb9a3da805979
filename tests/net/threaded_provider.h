// A provider of echoes and stores: one thread takes associations, and each is served by a thread of its own.
#pragma once

#include <sys/socket.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>
#include <utility>

#include "net/scripted_peer.h"
#include "net/storage.h"
#include "net/verification.h"

namespace tessaret::test {

class ThreadedProvider {
 public:
  /// `onStore` is called with each object, by the thread of its association.
  explicit ThreadedProvider(std::function<void(const DICOMDataObject&)> onStore = {})
      : onStore_(std::move(onStore)), port_(listener_.Port()), acceptor_([this] { Accept(); }) {}
  ThreadedProvider(const ThreadedProvider&) = delete;
  ThreadedProvider& operator=(const ThreadedProvider&) = delete;
  ~ThreadedProvider() {
    Stop();
    static_cast<void>(listener_.Give());  // closed with the last acceptor
  }

  /// Takes no peers any more, ends the associations that stand, and waits for their threads.
  void Stop() {
    if (!acceptor_.joinable()) return;
    ::shutdown(listener_.Descriptor(), SHUT_RDWR);
    {
      std::unique_lock held(lock_);
      // The last peer may be taken behind the first time still.
      while (accepting_ != nullptr) {
        accepting_->Link.Close();
        changed_.wait_for(held, std::chrono::milliseconds(1));
      }
    }
    acceptor_.join();
    {
      const std::lock_guard held(lock_);
      for (const Serving& serving : serving_) serving.pdu->Link.Close();
    }
    AwaitServers();
  }

  [[nodiscard]] const std::string& Port() const { return port_; }
  /// Objects, and the sum of the bytes of their pixels.
  [[nodiscard]] int Stored() const { return stored_; }
  [[nodiscard]] std::uint64_t StoredSum() const { return storedSum_; }

  /// Waits until all peers that connected before this are gone and their threads have ended.
  void AwaitIdle() {
    // Peers are taken in their order, so that all others have been taken when this one is.
    PDU_Service last;
    last.AddAbstractSyntax(UID(kEcho));
    if (last.Connect("127.0.0.1", port_) == 0) throw std::runtime_error(Words(last));
    last.Close();
    AwaitServers();
  }

 private:
  class Store : public UnknownStorage {
   public:
    explicit Store(ThreadedProvider& provider) : provider_(provider) {}
    std::uint32_t StoreObject(DICOMDataObject* object) override {
      const VR* pixels = object->GetVR(0x7FE0, 0x0010);
      if (pixels == nullptr || pixels->Data == nullptr) return 0xC000;
      if (provider_.onStore_) provider_.onStore_(*object);
      const auto* bytes = static_cast<const std::uint8_t*>(pixels->Data);
      provider_.storedSum_ += std::accumulate(bytes, bytes + pixels->Length, std::uint64_t{0});
      ++provider_.stored_;
      return 0;
    }

   private:
    ThreadedProvider& provider_;
  };

  struct Serving {
    std::unique_ptr<PDU_Service> pdu;
    std::thread thread;
  };

  void Accept() {
    int handle = listener_.Descriptor();
    while (handle != 0) {
      auto pdu = std::make_unique<PDU_Service>();
      SetAccepting(pdu.get());
      handle = pdu->AcceptNext(handle);
      SetAccepting(nullptr);
      JoinEnded();
      if (handle != 0) Start(std::move(pdu));
    }
  }

  void SetAccepting(PDU_Service* pdu) {
    const std::lock_guard held(lock_);
    accepting_ = pdu;
    changed_.notify_all();
  }

  void Start(std::unique_ptr<PDU_Service> pdu) {
    const std::lock_guard held(lock_);
    const auto place = serving_.emplace(serving_.end());
    place->pdu = std::move(pdu);
    place->thread = std::thread([this, place] {
      Serve(*place->pdu);
      const std::lock_guard ended(lock_);
      place->pdu.reset();
      ended_.splice(ended_.end(), serving_, place);
      changed_.notify_all();
    });
  }

  void Serve(PDU_Service& pdu) {
    for (;;) {
      DICOMCommandObject command;
      DICOMDataObject object;
      if (pdu.Read(command) == 0) break;
      if (Verification().Read(&pdu, &command)) continue;
      if (!Store(*this).Read(&pdu, &command, &object)) break;
    }
    pdu.Link.Close();
  }

  void AwaitServers() {
    {
      std::unique_lock held(lock_);
      changed_.wait(held, [this] { return serving_.empty(); });
    }
    JoinEnded();
  }

  void JoinEnded() {
    std::list<Serving> ended;
    {
      const std::lock_guard held(lock_);
      ended.swap(ended_);
    }
    for (Serving& serving : ended) serving.thread.join();
  }

  std::function<void(const DICOMDataObject&)> onStore_;
  Listener listener_{256};
  std::string port_;
  std::atomic<int> stored_ = 0;
  std::atomic<std::uint64_t> storedSum_ = 0;
  std::mutex lock_;
  std::condition_variable changed_;
  PDU_Service* accepting_ = nullptr;
  std::list<Serving> serving_;
  std::list<Serving> ended_;
  std::thread acceptor_;
};

}  // namespace tessaret::test
