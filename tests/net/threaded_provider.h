// A provider of echoes and stores: one thread takes associations, and each is served by a thread of its own.
#pragma once

#include <sys/socket.h>

#include <atomic>
#include <condition_variable>
#include <list>
#include <memory>
#include <mutex>
#include <numeric>
#include <string>
#include <thread>

#include "net/scripted_peer.h"
#include "net/storage.h"
#include "net/verification.h"

namespace tessaret::test {

class ThreadedProvider {
 public:
  ThreadedProvider() : port_(listener_.Port()), acceptor_([this] { Accept(); }) {}
  ThreadedProvider(const ThreadedProvider&) = delete;
  ThreadedProvider& operator=(const ThreadedProvider&) = delete;
  ~ThreadedProvider() {
    ::shutdown(listener_.Descriptor(), SHUT_RDWR);
    acceptor_.join();
    AwaitServers();
    static_cast<void>(listener_.Give());  // closed with the last acceptor
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
      const auto* bytes = static_cast<const std::uint8_t*>(pixels->Data);
      provider_.storedSum_ += std::accumulate(bytes, bytes + pixels->Length, std::uint64_t{0});
      ++provider_.stored_;
      return 0;
    }

   private:
    ThreadedProvider& provider_;
  };

  void Accept() {
    for (int handle = listener_.Descriptor(); handle != 0;) {
      auto pdu = std::make_unique<PDU_Service>();
      handle = pdu->AcceptNext(handle);
      JoinEnded();
      if (handle != 0) Start(std::move(pdu));
    }
  }

  void Start(std::unique_ptr<PDU_Service> pdu) {
    const std::lock_guard held(lock_);
    const auto place = serving_.emplace(serving_.end());
    *place = std::thread([this, place, pdu = std::move(pdu)]() mutable {
      Serve(*pdu);
      pdu.reset();
      const std::lock_guard ended(lock_);
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
    std::list<std::thread> ended;
    {
      const std::lock_guard held(lock_);
      ended.swap(ended_);
    }
    for (std::thread& thread : ended) thread.join();
  }

  Listener listener_{256};
  std::string port_;
  std::atomic<int> stored_ = 0;
  std::atomic<std::uint64_t> storedSum_ = 0;
  std::mutex lock_;
  std::condition_variable changed_;
  std::list<std::thread> serving_;
  std::list<std::thread> ended_;
  std::thread acceptor_;
};

}  // namespace tessaret::test
