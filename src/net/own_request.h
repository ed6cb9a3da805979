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
  /// Sets a field of this side's request, which is in `request` or here. What the peer sent stays there to be read, but not what the
  /// caller has put there since.
  template <class Field>
  void Set(AAssociateRQ& request, Field AssociatePdu::*field, const Field& value) {
    if (!isAside_ || !(request.*field == peers_.*field)) request.*field = value;
    own_.*field = value;
  }

 private:
  bool isAside_ = false;
  AAssociateRQ own_;
  AAssociateRQ peers_;
};

}  // namespace tessaret
