#include "store_server.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "core/module_dictionaries.h"
#include "net/command_elements.h"
#include "net/storage.h"
#include "net/verification.h"

namespace tessaret::bench {
namespace {

class Acceptor final : public PDU_Service {
 public:
  bool AcceptTransferSyntax(const UID& syntax) override {
    return syntax.View() == "1.2.840.10008.1.2" || syntax.View() == "1.2.840.10008.1.2.1";
  }
};

class Keeper final : public UnknownStorage {
 public:
  explicit Keeper(const std::filesystem::path& folder) : folder_(folder) {}

  std::uint32_t StoreObject(DICOMDataObject* object) override {
    if (folder_.empty()) return 0;
    static std::atomic<std::uint64_t> count = 0;
    const std::filesystem::path path = folder_ / ("R" + std::to_string(++count));
    DataSetCoder coder(&ModuleDictionary());
    return coder.SaveFile(path.c_str(), 3, *object) ? 0 : 0xA700;
  }

 private:
  const std::filesystem::path& folder_;
};

void Serve(PDU_Service& pdu, const std::filesystem::path& folder) {
  Keeper keeper(folder);
  Verification verification;
  for (;;) {
    DICOMCommandObject command;
    if (pdu.Read(command) == 0) break;
    DICOMDataObject object;
    const bool isServed = CStoreRQ::Test(command) ? keeper.Read(&pdu, &command, &object)
                                                  : verification.Read(&pdu, &command);
    if (!isServed) break;
  }
  pdu.Link.Close();
}

/// Threads that take turns at one listening socket. Whoever accepts a peer serves it too, which spares it the way to another thread,
/// and lets one that waits, or a new one, accept the next.
class Turns {
 public:
  explicit Turns(const std::filesystem::path& folder) : folder_(folder) {}

  /// Until the socket listens no more.
  void Work() {
    for (;;) {
      Acceptor pdu;
      pdu.AttachDictionary(&ModuleDictionary(), false);
      const int listening = pdu.AcceptNext(TakeListener());
      if (listening == 0) return;
      GiveListener(listening);
      Serve(pdu, folder_);
    }
  }

  void GiveListener(int listening) {
    const std::lock_guard held(lock_);
    listening_ = listening;
    if (waiting_ != 0) {
      isGiven_.notify_one();
    } else {
      std::thread([this] { Work(); }).detach();
    }
  }

 private:
  int TakeListener() {
    std::unique_lock held(lock_);
    ++waiting_;
    isGiven_.wait(held, [this] { return listening_ != 0; });
    --waiting_;
    return std::exchange(listening_, 0);
  }

  const std::filesystem::path& folder_;
  std::mutex lock_;
  std::condition_variable isGiven_;
  std::size_t waiting_ = 0;
  int listening_ = 0;  // 0: a thread has it
};

}  // namespace

void RunStoreServer(const std::string& port, const std::filesystem::path& folder) {
  Socket listener;
  if (listener.Listen(port) == 0) return;
  Turns turns(folder);
  turns.GiveListener(listener.GiveListener());
  turns.Work();
}

}  // namespace tessaret::bench
