#include "peer_options.h"

#include <string>

namespace tessaret::tool {
namespace {

constexpr int kLongestTimeout = 86400;
constexpr std::size_t kLongestTitle = 16;

/// Why a text is no title of an application entity (DICOM PS3.5, 6.2), or nothing.
std::string WhyNoTitle(const std::string& text) {
  if (text.empty() || text.find_first_not_of(' ') == std::string::npos) return "no title is empty";
  if (text.size() > kLongestTitle) return "a title has at most 16 characters";
  for (const char c : text) {
    if (c < ' ' || c > '~' || c == '\\') return "a title has no such characters";
  }
  return {};
}

/// Why a text is no port, or nothing. What begins with no digit is the name of a service.
std::string WhyNoPort(const std::string& text) {
  if (text.empty()) return "is missing";
  if (text[0] < '0' || text[0] > '9') return {};
  const bool isNumber = text.find_first_not_of("0123456789") == std::string::npos;
  const bool isPort = isNumber && text.size() <= 5 && text[0] != '0' && std::stoi(text) <= 65535;
  return isPort ? std::string() : "is no port: one is a number from 1 to 65535, or a service";
}

}  // namespace

OptionRows PeerRows(PeerOptions& options) {
  return {
      {.names = {"--aet"},
       .value = "TITLE",
       .target = &options.calling,
       .description = "What this side calls itself",
       .whyNot = &WhyNoTitle,
       .showsDefault = true},
      {.names = {"--aec"},
       .value = "TITLE",
       .target = &options.called,
       .description = "What the other side is called",
       .whyNot = &WhyNoTitle,
       .showsDefault = true},
      {.names = {"--timeout"},
       .value = "SECONDS",
       .target = &options.timeout,
       .description = "How long to wait for the other side each time; 0 stands for 300",
       .range = OptionRange{0, kLongestTimeout}},
  };
}

Peer TakePeer(std::vector<std::string>& words, const PeerOptions& options) {
  if (words.empty()) throw UsageError("HOST", "whom to talk to is missing");
  Peer peer{.title = options.called, .host = words[0], .port = {}};
  std::size_t taken = 1;
  const std::size_t at = words[0].find('@');
  if (at != std::string::npos) {
    const std::size_t colon = words[0].rfind(':');
    if (colon == std::string::npos || colon < at) {
      throw UsageError(words[0], "is not TITLE@HOST:PORT");
    }
    peer.title = words[0].substr(0, at);
    peer.host = words[0].substr(at + 1, colon - at - 1);
    peer.port = words[0].substr(colon + 1);
    if (const std::string why = WhyNoTitle(peer.title); !why.empty()) {
      throw UsageError(peer.title, why);
    }
  } else if (words.size() > 1) {
    peer.port = words[1];
    taken = 2;
  }
  if (peer.host.empty()) throw UsageError("HOST", "is missing");
  if (const std::string why = WhyNoPort(peer.port); !why.empty()) {
    throw UsageError(peer.port.empty() ? "PORT" : peer.port, why);
  }
  words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(taken));
  return peer;
}

}  // namespace tessaret::tool
