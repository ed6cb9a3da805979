// A provider for peers that speak over the network: net_provider PORT [FOLDER] [OPTION...]
//
// Listens on PORT of the loopback interface, a free one for 0, and writes the port as its first line. Objects that are stored go into
// FOLDER, one file each under its instance UID; without a folder they are dropped. Queries look at the files of the folder, and moves
// send them. Each association runs on a thread of its own. Ends on SIGTERM and SIGINT.
//   AE=PORT         a destination of moves on the loopback interface
//   --implicit      takes implicit little endian alone; otherwise every syntax that the library knows
//   --title AE      refuses those who call somebody else
//   --refuse WHAT   refuses everybody, for the "caller", the "application" context, or the "classes"
//   --status N      answers stores with this status, and stores nothing
//   --matches N     answers queries with N responses, whatever is asked
//   --timeout S     seconds of silence before a peer is dropped; 30
//   --everywhere    listens on every address of the machine
#include <arpa/inet.h>
#include <fnmatch.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "core/data_set_coder.h"
#include "core/transfer_syntax.h"
#include "net/command_elements.h"
#include "net/dimse_status.h"
#include "net/pdu_service.h"
#include "net/standard_query.h"
#include "net/standard_retrieve.h"
#include "net/storage.h"
#include "net/verification.h"

namespace {

using namespace tessaret;
namespace fs = std::filesystem;

struct Settings {
  std::string folder;
  std::map<std::string, std::string> destinations;  // port by title
  bool onlyImplicit = false;
  std::string title;
  std::string refused;
  int status = -1;
  int matches = -1;
  int timeout = 30;
  bool isEverywhere = false;
};

std::string Trimmed(std::string_view text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
  return std::string(text);
}

std::string TextOf(const DICOMObject& object, std::uint16_t group, std::uint16_t element) {
  const VR* vr = object.GetVR(group, element);
  if (vr == nullptr || vr->Data == nullptr) return {};
  return Trimmed({reinterpret_cast<const char*>(vr->Data), vr->Length});
}

class Acceptor : public PDU_Service {
 public:
  explicit Acceptor(const Settings& settings) : settings_(settings) {
    Link.TimeoutSecs = settings.timeout;
  }
  bool AcceptTransferSyntax(const UID& syntax) override {
    return settings_.onlyImplicit ? PDU_Service::AcceptTransferSyntax(syntax)
                                  : FindTransferSyntax(syntax.View()).has_value();
  }
  bool AcceptCalledTitle(std::string_view title) override {
    return settings_.title.empty() || Trimmed(title) == settings_.title;
  }
  bool AcceptCallingTitle(std::string_view) override { return settings_.refused != "caller"; }
  bool AcceptApplicationContext(const UID&) override { return settings_.refused != "application"; }
  bool AcceptAbstractSyntax(const UID&) override { return settings_.refused != "classes"; }

 private:
  const Settings& settings_;
};

class Store : public UnknownStorage {
 public:
  explicit Store(const Settings& settings) : settings_(settings) {}
  std::uint32_t StoreObject(DICOMDataObject* object) override {
    if (settings_.status >= 0) return static_cast<std::uint32_t>(settings_.status);
    if (settings_.folder.empty()) return dimse_status::kSuccess;
    const std::string name = TextOf(*object, 0x0008, 0x0018);
    const bool isUid = !name.empty() && name.size() <= 64 && name.front() != '.' &&
                       name.find_first_not_of("0123456789.") == std::string::npos;
    if (!isUid) return 0xC000;
    DataSetCoder coder;
    return coder.SaveKeeping((fs::path(settings_.folder) / name).c_str(), 3, *object) ? 0U
                                                                                      : 0xA700U;
  }

 private:
  const Settings& settings_;
};

constexpr std::uint16_t kLevelElement = 0x0052;  // of group 0008

/// Whether the object has what the keys of a query ask for.
bool Matches(const DICOMObject& object, const DICOMObject& query) {
  for (const VR* key = query.GetFirstVR(); key != nullptr; key = query.GetNextVR(key)) {
    const std::string wanted = TextOf(query, key->Group, key->Element);
    if (key->Group < 8 || wanted.empty()) continue;
    if (key->Group == 0x0008 && (key->Element == kLevelElement || key->Element == 0x0005)) continue;
    const std::string has = TextOf(object, key->Group, key->Element);
    const bool isListed = ("\\" + wanted + "\\").find("\\" + has + "\\") != std::string::npos;
    if (!isListed && ::fnmatch(wanted.c_str(), has.c_str(), FNM_NOESCAPE) != 0) return false;
  }
  return true;
}

/// The files of the folder that match, each as far as it can be read without its pixels.
std::vector<std::pair<std::string, std::unique_ptr<DICOMDataObject>>> FilesFor(
    const Settings& settings, const DICOMObject& query) {
  std::vector<std::pair<std::string, std::unique_ptr<DICOMDataObject>>> found;
  if (settings.folder.empty()) return found;
  std::vector<std::string> paths;
  for (const auto& entry : fs::directory_iterator(settings.folder)) {
    if (entry.is_regular_file()) paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  for (const std::string& path : paths) {
    DataSetCoder coder;
    auto object = coder.LoadFile(path.c_str(), false, true);
    if (object != nullptr && Matches(*object, query)) found.emplace_back(path, std::move(object));
  }
  return found;
}

/// What tells one match of a level from another.
std::uint16_t KeyOf(const std::string& level) {
  if (level == "PATIENT") return 0;
  if (level == "STUDY") return 0x000D;
  return level == "SERIES" ? 0x000E : 0x0018;
}

template <class Query>
class Find : public Query {
 public:
  explicit Find(const Settings& settings) : settings_(settings) {}
  bool SearchDatabase(DICOMDataObject& query,
                      std::vector<std::unique_ptr<DICOMDataObject>>& response) override {
    for (int i = 0; i < settings_.matches; ++i) {
      response.push_back(std::make_unique<DICOMDataObject>());
      PutBytes(*response.back(), 0x0010, 0x0020, type_code::LO, "ID" + std::to_string(i));
    }
    if (settings_.matches >= 0) return true;
    const std::string level = TextOf(query, 0x0008, kLevelElement);
    std::set<std::string> seen;
    for (const auto& [path, object] : FilesFor(settings_, query)) {
      const std::uint16_t key = KeyOf(level);
      const std::string name = key == 0        ? TextOf(*object, 0x0010, 0x0020)
                               : key == 0x0018 ? TextOf(*object, 0x0008, key)
                                               : TextOf(*object, 0x0020, key);
      if (seen.insert(name).second) response.push_back(ResponseFor(query, *object));
    }
    return true;
  }
  bool OnResponse(DICOMCommandObject*, DICOMDataObject*) override { return true; }

 private:
  /// The keys of the query with the object's values.
  static std::unique_ptr<DICOMDataObject> ResponseFor(const DICOMObject& query,
                                                      const DICOMObject& object) {
    auto response = std::make_unique<DICOMDataObject>();
    for (const VR* key = query.GetFirstVR(); key != nullptr; key = query.GetNextVR(key)) {
      if (key->Group < 8) continue;
      const bool isLevel = key->Group == 0x0008 && key->Element == kLevelElement;
      const VR* value = isLevel ? key : object.GetVR(key->Group, key->Element);
      auto copy = std::make_unique<VR>(key->Group, key->Element, 0U, false);
      if (value != nullptr && value->Items == nullptr) copy = std::make_unique<VR>(*value, true);
      response->Push(copy.release());
    }
    return response;
  }

  const Settings& settings_;
};

template <class Retrieve>
class Move : public Retrieve {
 public:
  explicit Move(const Settings& settings) : settings_(settings) {}
  bool FindDestination(std::string_view destination, PeerAddress& address) override {
    const auto found = settings_.destinations.find(Trimmed(destination));
    if (found == settings_.destinations.end()) return false;
    address = {"127.0.0.1", found->second};
    return true;
  }
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    return false;  // nobody asks
  }
  bool PrepareMove(std::string_view, DICOMDataObject& identifier,
                   std::vector<std::string>& instances, std::uint16_t& count) override {
    for (const auto& [path, object] : FilesFor(settings_, identifier)) instances.push_back(path);
    count = static_cast<std::uint16_t>(instances.size());
    return true;
  }
  bool OnMoveResponse(DICOMCommandObject*, DICOMDataObject*) override { return true; }

 private:
  const Settings& settings_;
};

/// Answers one request. False where it was none that can be answered, or could not be.
bool Answer(PDU_Service& pdu, DICOMCommandObject& command, const Settings& settings) {
  if (CEchoRQ::Test(command)) return Verification().Read(&pdu, &command);
  if (CStoreRQ::Test(command)) {
    DICOMDataObject object;
    return Store(settings).Read(&pdu, &command, &object);
  }
  if (CFindRQ::Test(command)) {
    return Find<StudyRootQuery>(settings).Read(&pdu, &command) ||
           Find<PatientRootQuery>(settings).Read(&pdu, &command);
  }
  if (CMoveRQ::Test(command)) {
    return Move<StudyRootRetrieve>(settings).Read(&pdu, &command) ||
           Move<PatientRootRetrieve>(settings).Read(&pdu, &command);
  }
  // One that came too late to cancel anything.
  return CCancelRQ::Test(command);
}

/// The associations that stand.
class Associations {
 public:
  explicit Associations(const Settings& settings) : settings_(settings) {}

  void Serve(std::unique_ptr<Acceptor> pdu) {
    {
      const std::lock_guard held(lock_);
      standing_.insert(pdu.get());
    }
    std::thread([this, pdu = std::move(pdu)]() mutable {
      for (;;) {
        DICOMCommandObject command;
        if (pdu->Read(command) == 0) break;
        if (Answer(*pdu, command, settings_)) continue;
        // Who asked is not left waiting for an answer.
        if (pdu->Link.Connected != 0) pdu->AAbortRQ.Write(*pdu);
        break;
      }
      const std::lock_guard held(lock_);
      standing_.erase(pdu.get());
      // Whether it was released or not, the peer is not asked once more.
      pdu->Link.Close();
      pdu.reset();
      changed_.notify_all();
    }).detach();
  }

  void CloseAll() {
    std::unique_lock held(lock_);
    for (Acceptor* pdu : standing_) pdu->Link.Close();
    changed_.wait(held, [&] { return standing_.empty(); });
  }

 private:
  const Settings& settings_;
  std::mutex lock_;
  std::condition_variable changed_;
  std::set<Acceptor*> standing_;
};

int ListenOn(int port, bool isEverywhere) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int yes = 1;
  ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(isEverywhere ? INADDR_ANY : INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  socklen_t size = sizeof address;
  auto* bare = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener, bare, size) != 0 || ::listen(listener, 256) != 0 ||
      ::getsockname(listener, bare, &size) != 0) {
    std::perror("net_provider");
    std::exit(1);
  }
  std::printf("%d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  return listener;
}

Settings ReadSettings(int argc, char** argv) {
  Settings settings;
  for (int i = 2; i < argc; ++i) {
    const std::string word = argv[i];
    const auto next = [&] { return i + 1 < argc ? argv[++i] : ""; };
    if (word == "--implicit") {
      settings.onlyImplicit = true;
    } else if (word == "--everywhere") {
      settings.isEverywhere = true;
    } else if (word == "--title") {
      settings.title = next();
    } else if (word == "--refuse") {
      settings.refused = next();
    } else if (word == "--status") {
      settings.status = static_cast<int>(std::strtol(next(), nullptr, 0));
    } else if (word == "--matches") {
      settings.matches = std::atoi(next());
    } else if (word == "--timeout") {
      settings.timeout = std::atoi(next());
    } else if (const std::size_t equals = word.find('='); equals != std::string::npos) {
      settings.destinations[word.substr(0, equals)] = word.substr(equals + 1);
    } else {
      settings.folder = word;
    }
  }
  return settings;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: net_provider PORT [FOLDER] [OPTION...]\n");
    return 2;
  }
  const Settings settings = ReadSettings(argc, argv);
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGTERM);
  sigaddset(&ending, SIGINT);
  pthread_sigmask(SIG_BLOCK, &ending, nullptr);
  int listener = ListenOn(std::atoi(argv[1]), settings.isEverywhere);
  std::thread([&ending, listener] {
    int signal = 0;
    sigwait(&ending, &signal);
    ::shutdown(listener, SHUT_RDWR);
  }).detach();

  Associations associations(settings);
  while (listener != 0) {
    auto pdu = std::make_unique<Acceptor>(settings);
    listener = pdu->AcceptNext(listener);
    if (listener != 0) associations.Serve(std::move(pdu));
  }
  associations.CloseAll();
  return 0;
}
