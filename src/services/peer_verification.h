// Asking a peer whether it is there.
#pragma once

#include <string>

#include "services/store_sender.h"

namespace tessaret {

struct VerificationOutcome {
  bool isAnswered = false;
  std::string failure;    // empty when there was an association
  std::string linkWords;  // what the association said when it, or the answer, did not come about
};

VerificationOutcome VerifyPeer(const StoreTarget& target);

}  // namespace tessaret
