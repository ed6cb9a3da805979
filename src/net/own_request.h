// What this side proposes, while a peer's request stands in the place where both are read.
#pragma once

#include "net/associate_pdus.h"

namespace tessaret {

class OwnRequest {
 public:
  /// A peer's is about to be read into `request`, which is empty then. What this side has there is kept here.
  void PutAside(AAssociateRQ& request) noexcept;
  /// The peer's has been read, and goes into `request`.
  void ShowPeers(AAssociateRQ peers, AAssociateRQ& request);
  /// `request` is what this side proposes again. Titles, application context and each of the lists are its own where they still are
  /// what the peer sent; what the caller has put there since stays.
  void TakeBack(AAssociateRQ& request) noexcept;
  /// Where this side's request is: `request`, or here.
  AAssociateRQ& In(AAssociateRQ& request) { return isAside_ ? own_ : request; }

 private:
  bool isAside_ = false;
  AAssociateRQ own_;
  AAssociateRQ peers_;
};

}  // namespace tessaret
