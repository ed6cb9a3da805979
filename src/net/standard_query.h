// The query service (DICOM PS3.4, annex C.4.1), in both roles.
#pragma once

#include <memory>
#include <vector>

#include "net/c_cancel.h"
#include "net/c_find.h"
#include "net/sop_classes.h"

namespace tessaret {

class StandardQuery : public CFindRQ, public CFindRSP, public CFindCancelRQ {
 public:
  /// The SOP class of the query.
  virtual bool GetQueryUID(UID& uid) = 0;
  /// Provider: what matches `query`, which is empty where the request announces none. False, or an exception, answers with a failure.
  virtual bool SearchDatabase(DICOMDataObject& query,
                              std::vector<std::unique_ptr<DICOMDataObject>>& response) = 0;
  /// Requester: called first with the query and without a command, then with each match, and with the end. False for a match cancels, and
  /// ends the exchange at once. No other request can be made on the association before it has ended.
  virtual bool OnResponse(DICOMCommandObject* command, DICOMDataObject* data) = 0;

  /// Asks, and hands the responses on up to the last. True when that was success or a cancel. False, with words, while another request is
  /// in progress, and for all else.
  bool Write(PDU_Service* pdu, DICOMDataObject* query);
  /// Answers a request that has been read, with a response for each match and one for the end; looks for a cancel between them. False
  /// for another kind or SOP class, when the identifier does not come, when a response could not be sent, and when the peer has ended the
  /// association: the caller is to close it then.
  bool Read(PDU_Service* pdu, DICOMCommandObject* command);
};

/// A class for each SOP class of queries.
template <const char* sopClass>
class QueryOf : public StandardQuery {
 public:
  bool GetUID(UID& uid) override {
    uid = UID(sopClass);
    return true;
  }
  bool GetQueryUID(UID& uid) override { return GetUID(uid); }
};

using PatientRootQuery = QueryOf<sop_class::kPatientRootQuery>;
using StudyRootQuery = QueryOf<sop_class::kStudyRootQuery>;
using PatientStudyOnlyQuery = QueryOf<sop_class::kPatientStudyOnlyQuery>;

}  // namespace tessaret
