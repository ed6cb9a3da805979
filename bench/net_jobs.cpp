// Associations: storing series, echoes, opening and releasing. A peer listens on the port that is given; another process of this
// program can be that.
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/module_dictionaries.h"
#include "files.h"
#include "jobs.h"
#include "measure.h"
#include "net/sop_classes.h"
#include "net/verification.h"
#include "services/outgoing_object.h"
#include "services/store_sender.h"

namespace tessaret::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kEchoes = 2000;
constexpr std::size_t kAssociations = 100;

std::string PortOf(const JobContext& context) {
  if (context.port.empty()) throw NotPossible("no port of a peer was given");
  return std::string(context.port);
}

void Connect(PDU_Service& pdu, const char* sopClass, const std::string& port) {
  pdu.AddAbstractSyntax(UID(sopClass));
  pdu.AddTransferSyntax(UID("1.2.840.10008.1.2.1"));
  pdu.SetCallingTitle("BENCH");
  pdu.SetCalledTitle("QR");
  pdu.AttachDictionary(&ModuleDictionary(), false);
  if (pdu.Connect("127.0.0.1", port) == 0) throw std::runtime_error(pdu.GetLastError());
}

std::uint64_t SizeOf(const std::vector<fs::path>& files) {
  std::uint64_t size = 0;
  for (const fs::path& path : files) size += fs::file_size(path);
  return size;
}

/// Ends the job at the first file that is not stored.
class Strict final : public StoreListener {
 public:
  explicit Strict(const StoreSender*& sender) : sender_(sender) {}
  void OnSent(const std::string& path, std::size_t) override {
    if (sender_->Response.status != 0) throw std::runtime_error(path + ": refused");
  }
  void OnError(const std::string&, std::size_t, const std::string& words) override {
    throw std::runtime_error(words);
  }
  void OnFinished(std::size_t, std::size_t) override {}

 private:
  const StoreSender*& sender_;
};

/// By the sender that hosts have.
void StoreFiles(const JobContext& context) {
  const std::vector<fs::path> files = FilesIn(context.Input());
  const std::vector<std::string> paths(files.begin(), files.end());
  const StoreTarget target{
      .host = "127.0.0.1", .port = PortOf(context), .localTitle = "BENCH", .remoteTitle = "QR"};
  Measure({
      .job = context.job.name,
      .bytes = SizeOf(files),
      .items = files.size(),
      .repetition =
          [&] {
            const std::atomic<bool> isCancelled = false;
            const StoreSender* current = nullptr;
            Strict listener(current);
            StoreSender sender(paths, listener);
            current = &sender;
            const Stopwatch watch;
            if (!sender.Send(target, {sop_class::kCT}, isCancelled)) {
              throw std::runtime_error(sender.Failure + " " + sender.LinkWords);
            }
            return watch.Seconds();
          },
  });
}

/// The data sets are in memory before.
void StoreObjects(const JobContext& context) {
  const std::vector<fs::path> files = FilesIn(context.Input());
  const std::string port = PortOf(context);
  PDU_Service loader;
  loader.AttachDictionary(&ModuleDictionary(), false);
  std::vector<std::unique_ptr<DICOMDataObject>> objects;
  for (const fs::path& path : files) {
    objects.push_back(LoadForSending(loader, path.string()).object);
    if (objects.back() == nullptr) throw std::runtime_error(loader.GetLastError());
  }
  Measure({
      .job = context.job.name,
      .bytes = SizeOf(files),
      .items = files.size(),
      .repetition =
          [&] {
            const Stopwatch watch;
            PDU_Service pdu;
            Connect(pdu, sop_class::kCT, port);
            for (const auto& object : objects) {
              DicomStorage storage(*object);
              if (!StoreOver(pdu, storage, *object) || storage.Status != 0) {
                throw std::runtime_error("not stored");
              }
            }
            pdu.Close();
            return watch.Seconds();
          },
  });
}

void Echoes(const JobContext& context) {
  PDU_Service pdu;
  Connect(pdu, sop_class::kVerification, PortOf(context));
  Measure({
      .job = context.job.name,
      .items = kEchoes,
      .repetition =
          [&] {
            const Stopwatch watch;
            Verification verification;
            for (std::size_t at = 0; at < kEchoes; ++at) {
              if (!verification.Write(&pdu)) throw std::runtime_error("no answer");
            }
            return watch.Seconds();
          },
  });
  pdu.Close();
}

void Associations(const JobContext& context) {
  const std::string port = PortOf(context);
  Measure({
      .job = context.job.name,
      .items = kAssociations,
      .repetition =
          [&] {
            const Stopwatch watch;
            for (std::size_t at = 0; at < kAssociations; ++at) {
              PDU_Service pdu;
              Connect(pdu, sop_class::kVerification, port);
              Verification verification;
              if (!verification.Write(&pdu)) throw std::runtime_error("no answer");
              pdu.Close();
            }
            return watch.Seconds();
          },
  });
}

constexpr Job kJobs[] = {
    {"net.store.ct400e.null", &StoreFiles, "CT400E"},
    {"net.store.ct400e.null.mem", &StoreObjects, "CT400E"},
    {"net.store.ct400e.disk", &StoreFiles, "CT400E"},
    {"net.store.ct400e.disk.mem", &StoreObjects, "CT400E"},
    {"net.store.tiny.null", &StoreFiles, "TINY"},
    {"net.store.tiny.null.mem", &StoreObjects, "TINY"},
    {"net.store.tiny.disk", &StoreFiles, "TINY"},
    {"net.store.tiny.disk.mem", &StoreObjects, "TINY"},
    {"net.echo", &Echoes},
    {"net.assoc", &Associations},
};

}  // namespace

std::span<const Job> NetJobs() { return kJobs; }

}  // namespace tessaret::bench
