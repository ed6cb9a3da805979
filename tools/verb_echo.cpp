// tessaret echo: asks another node whether it is there.
#include <chrono>
#include <memory>

#include "base/text.h"
#include "class_object.h"
#include "interrupt.h"
#include "json_writer.h"
#include "network_words.h"
#include "peer_options.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

struct EchoOptions {
  PeerOptions peer;
  std::vector<std::string> words;
};

ExitCode Echo(const EchoOptions& options, Host& host) {
  std::vector<std::string> words = options.words;
  const Peer peer = TakePeer(words, options.peer);
  host.Dictionary();
  Ref<IDcmCStore> store;
  Require(Create("Tessaret.DcmCStore", store));
  const std::string subject = peer.title + "@" + peer.host + ":" + peer.port;
  const auto begin = std::chrono::steady_clock::now();
  VariantBool answered;
  const Status status = store.As<IDcmVerification>()->Verify(
      String(peer.host), String(peer.port), String(options.peer.calling), String(peer.title),
      options.peer.timeout, &answered);
  StopIfInterrupted();
  if (status == kOutOfMemory) throw std::bad_alloc();
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  ExitCode code = ExitCode::kDone;
  std::string why;
  if (Failed(status)) {
    why = WhyNoAssociation(*store.As<IDcmStoreResponse>());
    code = ExitCode::kNoAssociation;
  } else if (!answered.IsTrue()) {
    why =
        WithNetworkWords("made an association, but gave no answer", *store.As<IDcmStoreResponse>());
    code = ExitCode::kPeerFailed;
  }
  if (host.options.json) {
    JsonWriter json(host.output);
    json.BeginObject().Member("title", peer.title).Member("host", peer.host);
    json.Member("port", peer.port).Member("ok", code == ExitCode::kDone);
    if (!why.empty()) json.Member("error", why);
    json.Key("seconds").Raw(FormatFixed(seconds)).EndObject().EndLine();
  } else if (code == ExitCode::kDone && !host.options.loudness.quiet) {
    host.output.Line(subject + " is there");
  }
  if (!why.empty()) host.messages.Error(subject, why);
  return code;
}

}  // namespace

VerbSetUp SetUpEcho() {
  auto options = std::make_shared<EchoOptions>();
  OptionRows rows = {{.positional = "HOST",
                      .value = "HOST PORT",
                      .target = &options->words,
                      .description = "The node: a host and a port, or TITLE@HOST:PORT",
                      .required = true}};
  for (OptionRow& row : PeerRows(options->peer)) rows.push_back(std::move(row));
  return {
      .options = std::move(rows),
      .run = [options](Host& host) { return Echo(*options, host); },
      .check =
          [options] {
            std::vector<std::string> words = options->words;
            TakePeer(words, options->peer);
            if (!words.empty()) throw UsageError(words[0], "is one word too many");
          },
  };
}

}  // namespace tessaret::tool
