// What this side proposes, while a peer's request stands in the place where both are read.
#pragma once

#include <memory>

#include "net/associate_pdus.h"

namespace tessaret {

class OwnRequest {
 public:
  /// A peer's is about to be read into `request`, which is empty then. What this side has there is kept here.
  void PutAside(AAssociateRQ& request) noexcept;
  /// The peer's has been read, and goes into `request`. It is handed out as well: what is put into `request` meanwhile does not
  /// change it.
  std::shared_ptr<const AAssociateRQ> ShowPeers(AAssociateRQ peers, AAssociateRQ& request);
  /// `request` is what this side proposes again. Titles, application context and each of the lists are its own where they still are
  /// what the peer sent; what the caller has put there since stays.
  void TakeBack(AAssociateRQ& request) noexcept;
  /// Sets a field of this side's request, which is in `request` or here. What the peer sent stays there to be read, but not what the
  /// caller has put there since.
  template <class Field>
  void Set(AAssociateRQ& request, Field AssociatePdu::*field, const Field& value) {
    if (!isAside_ || !(request.*field == Peers(AAssociateRQ()).*field)) request.*field = value;
    own_.*field = value;
  }

 private:
  /// `nothing` where none has been read.
  [[nodiscard]] const AAssociateRQ& Peers(const AAssociateRQ& nothing) const {
    return peers_ == nullptr ? nothing : *peers_;
  }

  bool isAside_ = false;
  AAssociateRQ own_;
  std::shared_ptr<const AAssociateRQ> peers_;
};

}  // namespace tessaret
