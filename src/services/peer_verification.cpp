#include "services/peer_verification.h"

#include "net/verification.h"
#include "services/connect_failure.h"
#include "tessaret/string.hpp"

namespace tessaret {

VerificationOutcome VerifyPeer(const StoreTarget& target) {
  PDU_Service pdu;
  VerificationOutcome outcome;
  Verification verification;
  UID uid;
  verification.GetUID(uid);
  pdu.AddAbstractSyntax(uid);
  if (target.timeoutSecs != 0) pdu.Link.TimeoutSecs = target.timeoutSecs;
  pdu.SetCallingTitle(String(target.localTitle).Narrow());
  pdu.SetCalledTitle(String(target.remoteTitle).Narrow());
  if (pdu.Connect(target.host, target.port) == 0) {
    outcome.failure = ConnectFailureWords(pdu.AAssociateRJ, target.host, target.remoteTitle);
    outcome.linkWords = LastWordsOf(pdu);
    return outcome;
  }
  outcome.isAnswered = verification.Write(&pdu);
  if (!outcome.isAnswered) outcome.linkWords = LastWordsOf(pdu);
  pdu.Close();
  return outcome;
}

}  // namespace tessaret
