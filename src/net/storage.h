// The storage service (DICOM PS3.4, annex B), in both roles.
#pragma once

#include "net/c_store.h"
#include "net/sop_classes.h"

namespace tessaret {

class Exchange;

/// Storage of whatever comes. A descendant that sends says what by GetUID, one that receives overrides StoreObject.
class UnknownStorage : public CStoreRQ, public CStoreRSP {
 public:
  /// None: false.
  bool GetUID(UID& uid) override;
  /// What is to become of an object that was received; the status to answer with, of which 16 bits count. 0. One that throws
  /// answers with 0xC001.
  virtual std::uint32_t StoreObject(DICOMDataObject* dataObject);

  /// Sends an object, which is popped empty, and takes the response. True when there was one, whatever its status, which Status tells.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject);
  /// Takes the response to an object that was sent. As above.
  bool ReadResponse(PDU_Service* pdu);
  /// Receives the object of a request that has been read into `dataObject`, stores it, and answers; or takes a response.
  virtual bool Read(PDU_Service* pdu, DICOMCommandObject* command, DICOMDataObject* dataObject);

 private:
  bool ReadResponse(Exchange& exchange);
};

/// Storage of one SOP class; requests of others are not taken.
class TypedStorage : public UnknownStorage {
 public:
  explicit TypedStorage(const char* uid) : uid_(uid) {}
  bool GetUID(UID& uid) override;
  bool Read(PDU_Service* pdu, DICOMCommandObject* command, DICOMDataObject* dataObject) override;

 private:
  UID uid_;
};

/// A class for each SOP class of storage.
template <const char* uid>
class StorageOf : public TypedStorage {
 public:
  StorageOf() : TypedStorage(uid) {}
};

using ComputedRadiographyStorage = StorageOf<sop_class::kComputedRadiography>;
using CTStorage = StorageOf<sop_class::kCT>;
using RetiredUltrasoundMultiframeStorage = StorageOf<sop_class::kRetiredUltrasoundMultiframe>;
using MRStorage = StorageOf<sop_class::kMR>;
using RetiredNuclearMedicineStorage = StorageOf<sop_class::kRetiredNuclearMedicine>;
using RetiredUltrasoundStorage = StorageOf<sop_class::kRetiredUltrasound>;
using SecondaryCaptureStorage = StorageOf<sop_class::kSecondaryCapture>;
using OverlayStorage = StorageOf<sop_class::kOverlay>;
using CurveStorage = StorageOf<sop_class::kCurve>;
using ModalityLutStorage = StorageOf<sop_class::kModalityLut>;
using VoiLutStorage = StorageOf<sop_class::kVoiLut>;
using GEPrivateStorage = StorageOf<sop_class::kGEPrivate>;
using GESecondPrivateStorage = StorageOf<sop_class::kGESecondPrivate>;

}  // namespace tessaret
