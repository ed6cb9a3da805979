// What a host is told when no association came about, and when one failed.
#pragma once

#include <string>

#include "net/pdu_service.h"

namespace tessaret {

/// "Connection to  HOST: TITLE permanently refused" and, in a second line, why, by the numbers of the refusal.
std::string ConnectFailureWords(const AAssociateRJ& refusal, const std::string& host,
                                const std::string& remoteTitle);

/// What the association said last, and where its link is lost what that said.
std::string LastWordsOf(const PDU_Service& pdu);

}  // namespace tessaret
