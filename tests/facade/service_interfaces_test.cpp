// What the classes of the network and of media have: every member and event in its slot.
#include <gtest/gtest.h>

#include "facade/interface_listing.h"
#include "tessaret/idcm_cstore.hpp"
#include "tessaret/idcm_dicom_dir.hpp"
#include "tessaret/idcm_query_retrieve.hpp"
#include "tessaret/ixdi_consumer.hpp"
#include "tessaret/ixdi_domain.hpp"

namespace tessaret {
namespace {

using test::Lines;
using test::Listing;

TEST(IDcmCStore, HasItsMembersInOrder) {
  EXPECT_EQ(
      Listing<IDcmCStore>(),
      (Lines{"IDcmCStore:",
             "SendFiles(host text, port text, LocalAE text, RemoteAE text, TimeoutSecs long)",
             "AddFile(FilePath text, SOPClassUID text)", "Cancel()", "get NumFiles() -> pVal short",
             "get SentFiles() -> pVal short", "get FileName(Idx short) -> pVal text"}));
}

TEST(IDcmCStore, HasItsEventsInOrder) {
  EXPECT_EQ(Listing<_IDcmCStoreEvents>(),
            (Lines{"_IDcmCStoreEvents:", "SopSent(FileName text, Idx short)",
                   "SopError(FileName text, Idx short, Message text)",
                   "Finished(TotSent short, TotErrors short)"}));
}

TEST(IDcmQueryRetrieve, HasItsMembersInOrder) {
  EXPECT_EQ(
      Listing<IDcmQueryRetrieve>(),
      (Lines{"IDcmQueryRetrieve:",
             "QueryStudy(PatientName text, PatientID text, From text, To text, StudyID text, "
             "AccessionNumber text, Modalities text, ?rawVr object IDCMObject)",
             "QuerySeries(UID text, ?rawVr object IDCMObject)",
             "MoveStudy(StudyInstanceUID text, DestAE text)",
             "MoveSeries(StudyInstanceUID text, SeriesInstanceUID text, DestAE text)",
             "MoveSOP(StudyInstanceUID text, SeriesInstanceUID text, SOPInstanceUID text, "
             "DestAE text)",
             "MovePatient(PatientID text, DestAE text)",
             "StopQuerying()",
             "get IsWorking() -> pVal bool",
             "Connect(CallingAE text, CalledAE text, host text, port text)",
             "Close()",
             "get Connected() -> pVal bool",
             "Verify() -> pVal bool",
             "WaitCompletition()",
             "GetStudyInfo(StudyInstanceUID text, ?rawVr object IDCMObject)",
             "GetSeriesInfo(StudyInstanceUID text, SeriesInstanceUID text, "
             "?rawVr object IDCMObject)",
             "QuerySOP(StudyInstanceUID text, SeriesInstanceUID text, ?rawVr object IDCMObject)",
             "get UseCGET() -> pVal bool",
             "put UseCGET(newVal bool)",
             "AddSOP(SOPClassUID text)",
             "AddTransferSyntax(TrSyntaxUID text)"}));
}

TEST(IDcmQueryRetrieve, HasItsEventsInOrder) {
  EXPECT_EQ(Listing<_IDcmQueryRetrieveEvents>(),
            (Lines{"_IDcmQueryRetrieveEvents:", "OnQueryResult(result object IDCMObject)",
                   "OnRetrieve(TotInstances short, SentInstances short, NumErrors short)",
                   "OnQueryEnd()", "OnError(Msg text, Errcode long, DCO object IDCMObject)",
                   "OnRetrieveEnd(Status long, NumSuccesful long, NumWarnings long, "
                   "NumFailed long)",
                   "OnRetrieveDDO(DDO object IDCMObject)"}));
}

TEST(IXDIConsumer, HasItsMembersInOrder) {
  EXPECT_EQ(Listing<IXDIConsumer>(),
            (Lines{"IXDIConsumer:",
                   "Connect(XDIDom object IXDIDomain, AETitle text, method long _EnumServerType)",
                   "Retrieve(StudyInstanceUID text, SeriesInstanceUID text, SOPInstanceUID text, "
                   "frame long)",
                   "Disconnect()", "Listen(port text)"}));
}

TEST(IXDIConsumer, HasItsEventsInOrder) {
  EXPECT_EQ(Listing<_IXDIConsumerEvents>(),
            (Lines{"_IXDIConsumerEvents:", "OnKOS(DDO object IDCMObject, XDIDom object IXDIDomain)",
                   "OnObject(DDO object IDCMObject)", "OnError(Msg text)"}));
}

TEST(IXDIDomain, HasItsMembersInOrder) {
  EXPECT_EQ(
      Listing<IXDIDomain>(),
      (Lines{"IXDIDomain:", "get NumPeers() -> pVal long", "get AETitle(Idx long) -> pVal text",
             "get WadoURL(Idx long) -> pVal text", "get DicomHost(Idx long) -> pVal text",
             "get DicomPort(Idx long) -> pVal text", "get PeerIdx(AETitle text) -> pVal long"}));
}

TEST(IDCMDicomDir, HasItsMembersInOrder) {
  EXPECT_EQ(Listing<IDCMDicomDir>(),
            (Lines{"IDCMDicomDir:", "AddIOD(IOD text, ForceExplicitLE bool) -> pFileID text",
                   "AddPrivate(level long _EnumDICOMDIRLevel, UID text, File text) -> pFileID text",
                   "Reset()", "get FileSetID() -> pVal text", "put FileSetID(newVal text)",
                   "get StorageUID() -> pVal text", "put StorageUID(newVal text)",
                   "get AETitle() -> pVal text", "put AETitle(newVal text)",
                   "get RootPath() -> pVal text", "put RootPath(newVal text)",
                   "WriteCDR(FileName text)", "get DicomFileRoot() -> pVal text",
                   "put DicomFileRoot(newVal text)", "ReadDICOMDIR(fname text)"}));
}

TEST(IDCMDicomDir, HasItsEventsInOrder) {
  EXPECT_EQ(
      Listing<_IDCMDicomDirEvents>(),
      (Lines{"_IDCMDicomDirEvents:", "OnStudy(PatienID text, StudyUID text, rec object IDCMObject)",
             "OnSeries(StudyUID text, SeriesInstanceUID text, Modality text, rec object "
             "IDCMObject)",
             "OnSOPInstance(StudyUID text, SeriesInstanceUID text, SOPInstanceUID text, "
             "type text, File text, rec object IDCMObject)",
             "OnPatient(Name text, PatientID text, rec object IDCMObject)", "OnEnd()"}));
}

}  // namespace
}  // namespace tessaret
