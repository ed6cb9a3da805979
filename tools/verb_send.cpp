// tessaret send: sends DICOM files to another node.
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "base/text.h"
#include "class_object.h"
#include "file_walk.h"
#include "interrupt.h"
#include "json_writer.h"
#include "network_words.h"
#include "peer_options.h"
#include "platform/file_calls.h"
#include "shared_options.h"
#include "source_file.h"
#include "tag.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

struct SendOptions {
  PeerOptions peer;
  std::vector<std::string> words;
  bool recurse = false;
};

constexpr std::int32_t kFirstWarning = 0xB000;
constexpr std::int32_t kLastWarning = 0xBFFF;
constexpr std::size_t kMostUidBytes = 64;

struct Totals {
  std::uint64_t sent = 0;
  std::uint64_t warned = 0;
  std::uint64_t refused = 0;
  std::uint64_t failed = 0;
  bool peerFailed = false;  // some of these, for which the file is not to blame
};

/// A file's line on standard output.
struct FileLine {
  const std::string& path;
  std::int32_t status = -1;
  const std::string& error;
  const std::string& comment;

  void Write(Output& output) const {
    JsonWriter json(output);
    json.BeginObject().Member("file", path).Member("ok", error.empty());
    if (status >= 0) json.Member("status", static_cast<std::uint64_t>(status));
    if (!comment.empty()) json.Member("comment", comment);
    if (!error.empty()) json.Member("error", error);
    json.EndObject().EndLine();
  }
};

/// Hears of every file while they are sent.
class Sending final : public _IDcmCStoreEvents {
 public:
  Sending(IDcmCStore& store, Host& host, std::uint64_t count, Totals& totals)
      : store_(store), host_(host), count_(count), totals_(totals) {}

  // It lives on the stack, longer than its connection.
  Status QueryInterface(const InterfaceId& id, void** object) override {
    if (object == nullptr) return kPointer;
    const bool isOurs = id == IObject::kId || id == _IDcmCStoreEvents::kId;
    *object = isOurs ? static_cast<_IDcmCStoreEvents*>(this) : nullptr;
    return isOurs ? kOk : kNoInterface;
  }
  std::uint32_t AddRef() override { return 1; }
  std::uint32_t Release() override { return 1; }

  Status SopSent(const String& FileName, std::int16_t) override {
    const Ref<IDcmStoreResponse> response = Ref<IDcmCStore>(&store_).As<IDcmStoreResponse>();
    const std::int32_t status = AnswerOf(*response, &IDcmStoreResponse::get_ResponseStatus);
    const std::string comment = AnswerOf(*response, &IDcmStoreResponse::get_ResponseComment).Utf8();
    const bool isWarning = status >= kFirstWarning && status <= kLastWarning;
    const std::string words = Format("status %04X", static_cast<unsigned>(status)) +
                              (comment.empty() ? std::string() : ": " + comment);
    if (status == 0) {
      ++totals_.sent;
      host_.messages.Note(FileName.Utf8(), "sent");
    } else if (isWarning) {
      ++totals_.warned;
      host_.messages.Warn(FileName.Utf8(), "stored with " + words);
    } else {
      ++totals_.refused;
      host_.messages.Error(FileName.Utf8(), "refused with " + words);
    }
    Tell(FileName.Utf8(), status, status == 0 || isWarning ? "" : "refused", comment);
    return kOk;
  }
  Status SopError(const String& FileName, std::int16_t, const String& Message) override {
    const std::string path = FileName.Utf8();
    // Messages name the file themselves.
    const std::string start = "Error sending [" + path + "]: ";
    std::string why = Message.Utf8();
    if (why.starts_with(start)) why.erase(0, start.size());
    const Ref<IDcmStoreResponse> response = Ref<IDcmCStore>(&store_).As<IDcmStoreResponse>();
    const bool isOfPeer =
        !AnswerOf(*response, &IDcmStoreResponse::get_AssociationError).Utf8().empty();
    ++totals_.failed;
    totals_.peerFailed = totals_.peerFailed || isOfPeer;
    host_.messages.Error(path, why);
    Tell(path, -1, why, "");
    return kOk;
  }
  Status Finished(std::int16_t, std::int16_t) override { return kOk; }

 private:
  void Tell(const std::string& path, std::int32_t status, const std::string& error,
            const std::string& comment) {
    ++done_;
    host_.messages.ShowProgress(done_, count_, "files");
    if (IsInterrupted()) store_.Cancel();
    if (host_.options.json) FileLine{path, status, error, comment}.Write(host_.output);
  }

  IDcmCStore& store_;
  Host& host_;
  std::uint64_t count_;
  Totals& totals_;
  std::uint64_t done_ = 0;
};

class Send {
 public:
  Send(const SendOptions& options, Host& host) : options_(options), host_(host) {}

  ExitCode Run() {
    std::vector<std::string> paths = options_.words;
    const Peer peer = TakePeer(paths, options_.peer);
    host_.Dictionary();
    Require(Create("Tessaret.DcmCStore", store_));
    const std::uint64_t count = AddFiles(paths);
    if (count == 0) {
      if (isComplete_ && totals_.failed == 0) host_.messages.Error("send", "no files to send");
      Report("");
      return ExitCode::kInputFailed;
    }
    Sending sink(*store_, host_, count, totals_);
    std::uint32_t cookie = 0;
    const Ref<IEventSource> events = store_.As<IEventSource>();
    Require(events->Advise(&sink, &cookie));
    const Status status =
        store_->SendFiles(String(peer.host), String(peer.port), String(options_.peer.calling),
                          String(peer.title), options_.peer.timeout);
    events->Unadvise(cookie);
    host_.messages.HideProgress();
    if (status == kOutOfMemory) throw std::bad_alloc();
    std::string why;
    if (Failed(status)) {
      why = WhyNoAssociation(*store_.As<IDcmStoreResponse>());
      host_.messages.Error(peer.title + "@" + peer.host + ":" + peer.port, why);
    }
    Report(why);
    StopIfInterrupted();
    if (Failed(status)) return ExitCode::kNoAssociation;
    if (totals_.refused != 0 || totals_.peerFailed) return ExitCode::kPeerFailed;
    return totals_.failed == 0 && isComplete_ ? ExitCode::kDone : ExitCode::kInputFailed;
  }

 private:
  /// Puts every file into the queue whose SOP class can be read, and tells of the others. How many they are.
  std::uint64_t AddFiles(const std::vector<std::string>& paths) {
    std::uint64_t count = 0;
    const WalkDepth depth = options_.recurse ? WalkDepth::kAll : WalkDepth::kTop;
    for (const std::string& path : paths) {
      // One by one: a directory that is named is sent also where another one that is named holds it.
      const FileList list = FindFiles({path}, host_.messages, depth);
      isComplete_ = isComplete_ && list.complete;
      for (const std::string& file : list.files) {
        StopIfInterrupted();
        if (AddFile(file)) ++count;
      }
    }
    return count;
  }

  bool AddFile(const std::string& file) {
    std::string sopClass;
    const std::string why =
        IsSomethingElse(file) ? "is no regular file" : WhyNotToSend(file, sopClass);
    if (!why.empty()) {
      ++totals_.failed;
      host_.messages.Error(file, why);
      if (host_.options.json) FileLine{file, -1, why, ""}.Write(host_.output);
      return false;
    }
    Require(store_->AddFile(String(file), String(sopClass)));
    return true;
  }

  /// A pipe would be empty when it is read again to be sent, and be waited for.
  static bool IsSomethingElse(const std::string& file) {
    struct stat status {};
    return StatPath(file.c_str(), status).Ok() && !S_ISREG(status.st_mode);
  }

  std::string WhyNotToSend(const std::string& file, std::string& sopClass) {
    SourceOptions how;
    how.loadPixels = false;
    const SourceFile source = LoadSource(file, how, host_);
    // What is not read whole or rightly would arrive as if it were.
    if (!source.object || !source.failure.empty()) return source.failure;
    const Ref<IDcmFile> object = FileOf(*source.object);
    sopClass = UidIn(*object, 0x0016);
    return WhyNotToAsk(sopClass, UidIn(*object, 0x0018));
  }

  /// Nodes end the association for a request without these, and the files behind it were lost.
  static std::string WhyNotToAsk(const std::string& sopClass, const std::string& instance) {
    if (sopClass.empty()) return "says no SOP class";
    if (instance.empty()) return "says no SOP instance";
    const bool isLong = std::max(sopClass.size(), instance.size()) > kMostUidBytes;
    return isLong ? "has a UID of more than 64 characters" : "";
  }

  static std::string UidIn(IDcmFile& file, std::uint16_t element) {
    std::string text = TextOf(file, MakeTagKey(0x0008, element));
    while (!text.empty() && (text.back() == '\0' || text.back() == ' ')) text.pop_back();
    return text;
  }

  /// With why there was no association, or nothing.
  void Report(const std::string& why) {
    if (host_.options.json) {
      JsonWriter json(host_.output);
      json.BeginObject().Member("sent", totals_.sent).Member("warnings", totals_.warned);
      json.Member("refused", totals_.refused).Member("failed", totals_.failed);
      if (!why.empty()) json.Member("error", why);
      json.EndObject().EndLine();
    } else if (why.empty() && !host_.options.loudness.quiet) {
      const std::uint64_t stored = totals_.sent + totals_.warned;
      host_.output.Line(Format("%llu files sent, %llu with warnings, %llu refused, %llu failed",
                               static_cast<unsigned long long>(stored),
                               static_cast<unsigned long long>(totals_.warned),
                               static_cast<unsigned long long>(totals_.refused),
                               static_cast<unsigned long long>(totals_.failed)));
    }
  }

  const SendOptions& options_;
  Host& host_;
  Ref<IDcmCStore> store_;
  Totals totals_;
  bool isComplete_ = true;
};

}  // namespace

VerbSetUp SetUpSend() {
  auto options = std::make_shared<SendOptions>();
  OptionRows rows = {
      {.positional = "HOST",
       .value = "HOST PORT FILE|DIR...",
       .target = &options->words,
       .description = "The node, a host and a port or TITLE@HOST:PORT, and the DICOM files; of "
                      "directories the files in them",
       .required = true},
      {.names = {"--recurse"},
       .target = &options->recurse,
       .description = "Go through the directories in directories, too"},
  };
  for (OptionRow& row : PeerRows(options->peer)) rows.push_back(std::move(row));
  return {
      .options = std::move(rows),
      .run = [options](Host& host) { return Send(*options, host).Run(); },
      .check =
          [options] {
            std::vector<std::string> words = options->words;
            TakePeer(words, options->peer);
            if (words.empty()) throw UsageError("FILE", "nothing is named to be sent");
            for (const std::string& word : words) {
              if (word == kStandardInput) {
                throw UsageError(word, "is for reading; files are sent, ./- for one of that name");
              }
            }
          },
  };
}

}  // namespace tessaret::tool
