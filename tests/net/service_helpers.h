// What tests of the services have in common: an association for all of them, requests, and responses.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "net/scripted_peer.h"

namespace tessaret::test {

inline const std::vector<Agreed> kContexts = {
    {1, kEcho, kImplicit}, {3, kCt, kImplicit}, {5, kFind, kImplicit}, {7, kMove, kImplicit}};

inline std::string NameIn(const DICOMObject& object) {
  const VR* vr = object.GetVR(0x0010, 0x0010);
  return vr == nullptr ? "" : std::string(reinterpret_cast<const char*>(vr->Data), vr->Length);
}

inline Bytes NameBytes(std::string_view name) { return Elements().Text(0x0010, 0x0010, name); }

/// Reads the command that has come, as a provider does.
inline void ReadCommand(Association& association, DICOMCommandObject& command) {
  ASSERT_NE(association.pdu.Read(command), 0) << Words(association.pdu);
}

inline Bytes EchoResponse(std::uint16_t status, std::uint16_t field = 0x8030) {
  return Data(1, kWholeCommand,
              Command()
                  .Uid(0x0002, kEcho)
                  .Number(0x0100, field)
                  .Number(0x0120, 1)
                  .Number(0x0800, 0x0101)
                  .Number(0x0900, status));
}

inline Bytes CancelRequest(std::uint16_t message, std::uint8_t context = 5) {
  return Data(context, kWholeCommand,
              Command().Number(0x0100, 0x0FFF).Number(0x0120, message).Number(0x0800, 0x0101));
}

inline Bytes FindRequest(std::string_view sopClass = kFind, std::uint16_t field = 0x0020,
                         std::uint16_t message = 9) {
  return Joined({Data(5, kWholeCommand,
                      Command()
                          .Uid(0x0002, sopClass)
                          .Number(0x0100, field)
                          .Number(0x0110, message)
                          .Number(0x0700, 2)
                          .Number(0x0800, 0x0102)),
                 Data(5, kLastPart, NameBytes("Q*"))});
}

/// The number that a command, one PDU as it was received, has in this element.
inline std::uint16_t NumberIn(const Bytes& command, std::uint16_t element) {
  // Head of the PDU and of the PDV; then tag and length of each element.
  for (std::size_t at = 12; at + 8 <= command.size();) {
    const std::size_t length = command[at + 4] + command[at + 5] * 256U;
    if (command[at + 2] + command[at + 3] * 256U == element) {
      return static_cast<std::uint16_t>(command.at(at + 8) + command.at(at + 9) * 256U);
    }
    at += 8 + length;
  }
  throw std::runtime_error("no such element");
}

template <class Service>
std::string UidOfService() {
  class Named : public Service {};
  Named service;
  UID uid;
  EXPECT_TRUE(service.GetUID(uid));
  return std::string(uid.View());
}

}  // namespace tessaret::test
