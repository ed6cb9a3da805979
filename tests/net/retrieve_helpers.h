// What tests of the retrieval have in common: a provider, a request, what it answers, and a destination.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/service_helpers.h"
#include "net/standard_retrieve.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {

/// A retrieval of the files that it is given, which writes down what it is asked and told.
template <class Retrieve>
class MovingIn : public Retrieve {
 public:
  bool FindDestination(std::string_view destination, PeerAddress& address) override {
    asked += "find[" + std::string(destination) + "]";
    if (throws == "find") throw std::runtime_error("no");
    address = {"127.0.0.1", port};
    return !port.empty();
  }
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    asked += "search";
    return true;
  }
  bool PrepareMove(std::string_view destination, DICOMDataObject& identifier,
                   std::vector<std::string>& instances, std::uint16_t& count) override {
    asked += "prepare[" + std::string(destination) + "," + NameIn(identifier) + "]";
    if (throws == "prepare") throw std::runtime_error("no");
    instances = files;
    count = static_cast<std::uint16_t>(files.size());
    return !isUnknown;
  }
  bool OnMoveResponse(DICOMCommandObject* command, DICOMDataObject* data) override {
    told += (command == nullptr ? "query" : std::to_string(*CommandNumber(*command, 0x0900))) +
            "=" + NameIn(*data) + ";";
    return ++calls != cancelAt;
  }
  std::vector<std::string> files;
  std::string port;
  std::string throws;
  bool isUnknown = false;
  std::string asked;
  std::string told;
  int calls = 0;
  int cancelAt = 0;
};

using Moving = MovingIn<StudyRootRetrieve>;

inline Bytes MoveRequest(std::string_view destination, std::string_view sopClass = kMove,
                         std::uint16_t message = 9) {
  Command command;
  command.Uid(0x0002, sopClass).Number(0x0100, 0x0021).Number(0x0110, message);
  if (!destination.empty()) command.Text(0x0600, destination);
  command.Number(0x0700, 0).Number(0x0800, 0x0102);
  return Joined({Data(7, kWholeCommand, command), Data(7, kLastPart, NameBytes("Q*"))});
}

inline Bytes MoveAnswer(std::uint16_t status, std::vector<std::uint16_t> counters = {0, 0, 0, 0},
                        std::string_view comment = {}) {
  Command command;
  command.Uid(0x0002, kMove)
      .Number(0x0100, 0x8021)
      .Number(0x0110, 9)
      .Number(0x0120, 9)
      .Number(0x0700, 0)
      .Number(0x0800, 0x0101)
      .Number(0x0900, status);
  if (!comment.empty()) {
    std::string padded(comment);
    if (padded.size() % 2 != 0) padded.push_back('\0');
    command.Text(0x0902, padded);
  }
  for (std::uint16_t i = 0; i < 4; ++i)
    command.Number(static_cast<std::uint16_t>(0x1020 + i), counters[i]);
  return Data(7, kWholeCommand, command);
}

/// What our provider answers to one request.
inline Bytes AnswersOf(Moving& move, const Bytes& request, bool expected = true,
                       int timeoutSecs = 300) {
  Association association(kContexts);
  association.pdu.Link.TimeoutSecs = timeoutSecs;
  association.pdu.AAssociateAC.CalledApTitle = MakeApTitle("US");
  association.peer.Send(request);
  DICOMCommandObject command;
  EXPECT_NE(association.pdu.Read(command), 0);
  EXPECT_EQ(move.Read(&association.pdu, &command), expected);
  return association.peer.Received();
}

/// A destination that takes an association for CT, and answers stores with these statuses; then closes. Writes down the types of the
/// PDUs that it received, and its request.
class Destination {
 public:
  explicit Destination(std::vector<std::uint16_t> statuses, std::string_view syntax = kImplicit)
      : server_([this, statuses = std::move(statuses), syntax](Peer& peer) {
          request = peer.ReceivePdu();
          // One proposal, whose identifier stands behind the application context: 74 + 4 + 21 + 4.
          peer.Send(Associate(2, "DEST", "US",
                              Joined({ApplicationItem(), AcceptItem(request.at(103), 0, syntax),
                                      PeersUserItem()})));
          for (const std::uint16_t status : statuses) {
            const Bytes command = peer.ReceivePdu();
            received += TypesOf(command);
            if (command.at(0) == 5) break;  // no more stores
            last = peer.ReceivePdu();
            received += TypesOf(last);
            peer.Send(Data(request.at(103), kWholeCommand,
                           Command()
                               .Uid(0x0002, kCt)
                               .Number(0x0100, 0x8001)
                               .Number(0x0800, 0x0101)
                               .Number(0x0900, status)));
          }
          if (received.find('5') == std::string::npos) received += TypesOf(peer.ReceivePdu());
          peer.Send(ReleaseAnswer());
        }) {}
  [[nodiscard]] const std::string& Port() const { return server_.Port(); }
  std::string Wait() { return server_.Wait(); }
  Bytes request;
  Bytes last;
  std::string received;

 private:
  ScriptedServer server_;
};

/// Moves the instance in a file of these bytes, and expects that it arrives as this data set.
inline void ExpectMoved(const Bytes& file, const Bytes& dataSet) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), file);
  Moving move;
  move.files = {folder.File("1.1")};
  Destination destination({0});
  move.port = destination.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {0, 1, 0, 0}), MoveAnswer(0, {0, 1, 0, 0})}));
  EXPECT_EQ(destination.Wait(), "");
  EXPECT_EQ(destination.last, Data(destination.request.at(103), kLastPart, dataSet));
}

/// A file of this class with a name in it.
inline Bytes FileOfCt(std::string_view instance) {
  return FileOf(Encoding::kExplicitLittle, DataSetBuilder(Encoding::kExplicitLittle)
                                               .Element(0x0008, 0x0016, "UI", Evened(kCt))
                                               .Element(0x0008, 0x0018, "UI", Evened(instance))
                                               .Element(0x0010, 0x0010, "PN", "AA"));
}

}  // namespace tessaret::test
