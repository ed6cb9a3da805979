#include "net/own_request.h"

#include <algorithm>
#include <utility>

namespace tessaret {
namespace {

bool IsSame(const UID& a, const UID& b) { return a == b; }

bool IsSame(const ApTitle& a, const ApTitle& b) { return a == b; }

bool IsSame(const SCPSCURoleSelect& a, const SCPSCURoleSelect& b) {
  return a.UID == b.UID && a.SCURole == b.SCURole && a.SCPRole == b.SCPRole;
}

bool IsSame(const ExtendedNegotiation& a, const ExtendedNegotiation& b) {
  return a.UID == b.UID && a.ApplicationInfo == b.ApplicationInfo;
}

bool IsSame(const PresentationContext& a, const PresentationContext& b) {
  return a.PresentationContextID == b.PresentationContextID &&
         a.AbstractSyntax == b.AbstractSyntax &&
         std::equal(a.TransferSyntaxes.begin(), a.TransferSyntaxes.end(),
                    b.TransferSyntaxes.begin(), b.TransferSyntaxes.end());
}

template <class Item>
bool IsSame(const std::vector<Item>& a, const std::vector<Item>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const Item& one, const Item& other) { return IsSame(one, other); });
}

// What a peer has put into reserved bytes does not go back on the wire.

void ClearReserved(ApTitle&) {}

void ClearReserved(TextItem& item) { item.Reserved1 = 0; }

void ClearReserved(SCPSCURoleSelect& item) { item.Reserved1 = 0; }

void ClearReserved(ExtendedNegotiation& item) { item.Reserved1 = 0; }

void ClearReserved(PresentationContext& context) {
  context.Reserved1 = context.Reserved2 = context.Reserved3 = context.Reserved4 = 0;
  ClearReserved(context.AbstractSyntax);
  context.TransferSyntaxes.ClearReserved();
}

template <class Item>
void ClearReserved(std::vector<Item>& list) {
  for (Item& item : list) ClearReserved(item);
}

template <class Field>
void KeepChange(Field& now, const Field& peers, Field& own) {
  if (IsSame(now, peers)) return;
  own = std::move(now);
  ClearReserved(own);
}

}  // namespace

void OwnRequest::PutAside(AAssociateRQ& request) noexcept {
  TakeBack(request);
  isAside_ = true;
  own_ = std::move(request);
  request = AAssociateRQ();
}

std::shared_ptr<const AAssociateRQ> OwnRequest::ShowPeers(AAssociateRQ peers,
                                                          AAssociateRQ& request) {
  AAssociateRQ copy = peers;
  peers_ = std::make_shared<const AAssociateRQ>(std::move(peers));
  request = std::move(copy);
  return peers_;
}

void OwnRequest::TakeBack(AAssociateRQ& request) noexcept {
  if (!std::exchange(isAside_, false)) return;
  const AAssociateRQ nothing;
  const AAssociateRQ& peers = Peers(nothing);
  KeepChange(request.CalledApTitle, peers.CalledApTitle, own_.CalledApTitle);
  KeepChange(request.CallingApTitle, peers.CallingApTitle, own_.CallingApTitle);
  KeepChange(request.ApplicationContext, peers.ApplicationContext, own_.ApplicationContext);
  KeepChange(request.PresentationContexts, peers.PresentationContexts, own_.PresentationContexts);
  UserInformation& user = request.UserInformation;
  KeepChange(user.RoleSelects, peers.UserInformation.RoleSelects, own_.UserInformation.RoleSelects);
  KeepChange(user.ExtendedNegotiations, peers.UserInformation.ExtendedNegotiations,
             own_.UserInformation.ExtendedNegotiations);
  request = std::exchange(own_, AAssociateRQ());
  peers_.reset();
}

}  // namespace tessaret
