// The retrieval services (DICOM PS3.4, annexes C.4.2 and C.4.3): C-MOVE in both roles.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "net/c_cancel.h"
#include "net/c_get.h"
#include "net/c_move.h"
#include "net/sop_classes.h"

namespace tessaret {

/// Where an application entity listens.
struct PeerAddress {
  std::string host;
  std::string port;
};

class StandardRetrieve : public CMoveRQ, public CMoveRSP, public CMoveCancelRQ {
 public:
  /// The SOP class of the retrieval.
  virtual bool GetMoveUID(UID& uid) = 0;
  // Hooks of the provider; an exception counts as false. Titles come with the blanks that the peer has put behind them, cut to 16
  // bytes.

  /// Where the destination listens. False where nobody knows.
  virtual bool FindDestination(std::string_view destinationAE, PeerAddress& address) = 0;
  /// What matches `identifier`, as for a query. Not called by the exchanges here: for hosts that have one search for both services.
  virtual bool SearchDatabase(DICOMDataObject& identifier,
                              std::vector<std::unique_ptr<DICOMDataObject>>& response) = 0;
  /// The files of what is asked for by `identifier`, which is empty where the request announces none. `count` is not looked at. False
  /// where that cannot be said.
  virtual bool PrepareMove(std::string_view destinationAE, DICOMDataObject& identifier,
                           std::vector<std::string>& instanceList, std::uint16_t& count) = 0;
  /// Requester: called first with the query and without a command, then with each response. False for a pending one cancels, and ends the
  /// exchange at once. No other request can be made on the association before it has ended.
  virtual bool OnMoveResponse(DICOMCommandObject* command, DICOMDataObject* data) = 0;

  /// Asks for the move, and hands the responses on up to the last. True when that was success, if only of some sub-operations, or a
  /// cancel.
  bool Write(PDU_Service* pdu, DICOMDataObject* query, std::string_view destinationAE);
  /// Answers a request that has been read, by an association of its own to the destination; looks for a cancel between instances. False
  /// for another kind or SOP class, when the identifier does not come, when a response could not be sent, and when the peer has ended the
  /// association: the caller is to close it then.
  bool Read(PDU_Service* pdu, DICOMCommandObject* command);

 private:
  struct Move;

  bool Answer(const Move& move, std::uint16_t status, std::string_view comment = {});
  bool SendInstances(Move& move, PDU_Service& link);
};

/// A class for each SOP class of retrievals.
template <const char* sopClass>
class RetrieveOf : public StandardRetrieve {
 public:
  bool GetUID(UID& uid) override {
    uid = UID(sopClass);
    return true;
  }
  bool GetMoveUID(UID& uid) override { return GetUID(uid); }
};

using PatientRootRetrieve = RetrieveOf<sop_class::kPatientRootMove>;
using StudyRootRetrieve = RetrieveOf<sop_class::kStudyRootMove>;
using PatientStudyOnlyRetrieve = RetrieveOf<sop_class::kPatientStudyOnlyMove>;

/// C-GET, whose exchange its descendants conduct: objects come over the same association.
class StandardGet : public CGetRQ, public CGetRSP, public CGetCancelRQ {
 public:
  bool GetUID(UID& uid) override {
    uid = UID(sop_class::kStudyRootGet);
    return true;
  }
};

}  // namespace tessaret
