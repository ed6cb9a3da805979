/// Asks another node what it has and fetches it. Class "Tessaret.DcmQueryRetrieve".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/idcm_object.hpp"

namespace tessaret {

/// One association to a node, over which queries and retrievals run on a thread of their own. Each call that starts one returns at
/// once; results come as events on the thread that made this object, which has to call PumpEvents (tessaret/pump.hpp) for them.
/// A query ends with OnQueryEnd, a retrieval with OnRetrieveEnd, and only then the next query may be started; that may be done in the
/// event itself.
///
/// Texts of queries may have the wildcards of DICOM; blanks around them are dropped, and an empty text asks for any value. An object
/// `rawVr` may bring further keys: its elements are moved into the query, where they win over those that it would have had, and the
/// object is empty afterwards. It fails with "IDcmObjectManager interface not found" where the object lacks that interface.
class IDcmQueryRetrieve : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02009};
  static constexpr const char* kName = "IDcmQueryRetrieve";

  /// Asks for studies. `From` and `To` bound the study date, as YYYYMMDD: both the same is that one day, one of them empty leaves that
  /// side open, both empty asks for any. `Modalities` is Modalities in Study. Fails with "Cannot query while processing" until the
  /// end of an operation before has been told, and with "Must connect first".
  virtual Status QueryStudy(const String& PatientName, const String& PatientID, const String& From,
                            const String& To, const String& StudyID, const String& AccessionNumber,
                            const String& Modalities, Optional<IDCMObject*> rawVr) = 0;

  /// Asks for the series of the study whose instance UID is `UID`. Fails as QueryStudy does.
  virtual Status QuerySeries(const String& UID, Optional<IDCMObject*> rawVr) = 0;

  /// Fetches a study. `DestAE` is the title of the node that it is sent to; the objects then do not come through here. Where it is empty,
  /// and where UseCGET is set, they come over this very association as OnRetrieveDDO if the node can do so; if it cannot, an empty
  /// title stands for our own. A retrieval that is asked for while one runs waits for its turn, and goes where the last one asked
  /// for goes. Fails with "Must connect first" and "Cannot execute retrieve while processing query".
  virtual Status MoveStudy(const String& StudyInstanceUID, const String& DestAE) = 0;

  /// Fetches a series, as MoveStudy does a study.
  virtual Status MoveSeries(const String& StudyInstanceUID, const String& SeriesInstanceUID,
                            const String& DestAE) = 0;

  /// Fetches one instance, as MoveStudy does a study.
  virtual Status MoveSOP(const String& StudyInstanceUID, const String& SeriesInstanceUID,
                         const String& SOPInstanceUID, const String& DestAE) = 0;

  /// Fetches all of a patient, as MoveStudy does a study.
  virtual Status MovePatient(const String& PatientID, const String& DestAE) = 0;

  /// Ends a running operation and with it the association; waits until the operation has ended. To go on, Connect again. Does
  /// nothing where none runs.
  virtual Status StopQuerying() = 0;

  /// Whether an operation is running.
  virtual Status get_IsWorking(Result<VariantBool> pVal) = 0;

  /// Opens the association, from the title `CallingAE` to the title `CalledAE` at `host` (a name or an address) and `port` (a number or a
  /// service as text). Fails with "Connection to  %s: %s permanently refused" or "Connection to  %s: %s temporarily refused" with
  /// host and title, then in a second line "Non active link", "Unupported Application Context", "Unknown local AETitle" or "Unknown
  /// remote AETitle".
  virtual Status Connect(const String& CallingAE, const String& CalledAE, const String& host,
                         const String& port) = 0;

  /// Ends the association. A running operation is told to stop, and waited for.
  virtual Status Close() = 0;

  /// Whether there is an association.
  virtual Status get_Connected(Result<VariantBool> pVal) = 0;

  /// Asks the node for a sign of life, and waits for it on the calling thread. Fails with "Cannot verify while processing" and "Must
  /// connect first".
  virtual Status Verify(Result<VariantBool> pVal) = 0;

  /// Waits until the running operation has ended; returns at once where none runs. Its events still have to be pumped.
  virtual Status WaitCompletition() = 0;

  /// Asks for one study with all that QueryStudy gives. Fails as QueryStudy does.
  virtual Status GetStudyInfo(const String& StudyInstanceUID, Optional<IDCMObject*> rawVr) = 0;

  /// Asks for one series of a study, with its SOP class. Fails as QueryStudy does.
  virtual Status GetSeriesInfo(const String& StudyInstanceUID, const String& SeriesInstanceUID,
                               Optional<IDCMObject*> rawVr) = 0;

  /// Asks for the instances of a series. Fails as QueryStudy does.
  virtual Status QuerySOP(const String& StudyInstanceUID, const String& SeriesInstanceUID,
                          Optional<IDCMObject*> rawVr) = 0;

  /// Whether objects are to be fetched over this association rather than sent to a node.
  virtual Status get_UseCGET(Result<VariantBool> pVal) = 0;

  /// Sets it: for retrievals from now on, and for what the next Connect proposes.
  virtual Status put_UseCGET(VariantBool newVal) = 0;

  /// Adds a storage class that may be received over the association, from the next Connect on.
  virtual Status AddSOP(const String& SOPClassUID) = 0;

  /// Adds a transfer syntax to those that are proposed, from the next Connect on. Implicit VR Little Endian always is.
  virtual Status AddTransferSyntax(const String& TrSyntaxUID) = 0;
};

/// Events of that class. They come on the thread that made the object, while it pumps.
class _IDcmQueryRetrieveEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F03009};
  static constexpr const char* kName = "_IDcmQueryRetrieveEvents";

  /// One match of a query. The object is new, and the sink's to keep.
  virtual Status OnQueryResult(IDCMObject* result) = 0;

  /// A retrieval goes on: how many instances there are still to come and the one under way, how many are done, how many failed.
  virtual Status OnRetrieve(std::int16_t TotInstances, std::int16_t SentInstances,
                            std::int16_t NumErrors) = 0;

  /// A query has ended, be it with its last match, after an error, or because it was stopped.
  virtual Status OnQueryEnd() = 0;

  /// Something failed. `Errcode` is the status that the node answered, or 0; `DCO` its answer, or null.
  virtual Status OnError(const String& Msg, std::int32_t Errcode, IDCMObject* DCO) = 0;

  /// A retrieval has ended, with the node's last status and counts. `NumWarnings` is the node's number of failed instances, and
  /// `NumFailed` that of instances with warnings.
  virtual Status OnRetrieveEnd(std::int32_t Status, std::int32_t NumSuccesful,
                               std::int32_t NumWarnings, std::int32_t NumFailed) = 0;

  /// An object came over the association. It is the sink's to keep.
  virtual Status OnRetrieveDDO(IDCMObject* DDO) = 0;
};

}  // namespace tessaret
