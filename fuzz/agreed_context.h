// A presentation context as if it had been negotiated.
#pragma once

#include <string_view>

#include "net/pdu_service.h"

namespace tessaret::fuzz {

inline void Agree(PDU_Service& pdu, std::uint8_t contextID, std::string_view abstractSyntax,
                  std::string_view transferSyntax) {
  PresentationContextAccept context;
  context.PresentationContextID = contextID;
  context.Result = 0;
  context.AbstractSyntax.Set(abstractSyntax);
  context.TransferSyntax.Set(transferSyntax);
  pdu.AcceptedContexts.push_back(context);
  pdu.AAssociateAC.PresentationContexts.push_back(context);
}

}  // namespace tessaret::fuzz
