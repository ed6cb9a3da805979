#include "store_server.h"

#include <atomic>
#include <memory>
#include <thread>

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

}  // namespace

void RunStoreServer(const std::string& port, const std::filesystem::path& folder) {
  int listening = 0;
  for (;;) {
    auto pdu = std::make_unique<Acceptor>();
    pdu->AttachDictionary(&ModuleDictionary(), false);
    listening = listening == 0 ? pdu->AcceptNext(port) : pdu->AcceptNext(listening);
    if (listening == 0) return;
    std::thread([pdu = std::move(pdu), &folder] { Serve(*pdu, folder); }).detach();
  }
}

}  // namespace tessaret::bench
