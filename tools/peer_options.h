// Whom to talk to over the network, and as whom: what the verbs that do so take from the command line.
#pragma once

#include <string>
#include <vector>

#include "option_table.h"

namespace tessaret::tool {

struct PeerOptions {
  std::string calling = "TESSARET";
  std::string called = "ANY-SCP";
  int timeout = 0;  // seconds; 0: as the library has it
};

struct Peer {
  std::string title;
  std::string host;
  std::string port;
};

/// "--aet", "--aec" and "--timeout".
OptionRows PeerRows(PeerOptions& options);

/// Takes the peer from the front of `words`: "HOST PORT", or "TITLE@HOST:PORT" as one word. Throws UsageError where it is not there.
Peer TakePeer(std::vector<std::string>& words, const PeerOptions& options);

}  // namespace tessaret::tool
