/// Writes and reads directories of media. Class "Tessaret.DCMDicomDir".
#pragma once

#include "tessaret/dicomdir_level.hpp"
#include "tessaret/dispatch.hpp"
#include "tessaret/idcm_object.hpp"

namespace tessaret {

/// Puts files one by one into a file set, then writes its DICOMDIR; or reads a DICOMDIR that exists and tells its records by events.
/// Reading leaves nothing behind. A failure of AddIOD, AddPrivate and WriteCDR has "DCMDicomDir::" and the member's name with ": " in
/// front of its words; one that nobody foresaw is "Unknown error" behind that.
class IDCMDicomDir : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02003};
  static constexpr const char* kName = "IDCMDicomDir";

  /// Copies the file `IOD` into the file set, with directories for its patient, study and series where they are new. `ForceExplicitLE`
  /// true (exactly -1) has it stored as Explicit VR Little Endian, decompressed where need be. `pFileID` gets its place below
  /// RootPath, its parts parted by "\". An instance that is there already is not copied again, and its place is given.
  /// Fails with "CCDRObject::AddIOD: error loading [" and the path, "cannot write to [", "Destination is not empty", "Error Creating
  /// [", "Failed to init compression codecs", "Error decoding object".
  virtual Status AddIOD(const String& IOD, VariantBool ForceExplicitLE, Result<String> pFileID) = 0;

  /// Puts a file of any kind beside the one that was added last, at `level` of the tree, with a private record that names `UID`. By a
  /// hard link where the file system has such, otherwise by a copy. `pFileID` gets its place. Fails with "CCDRObject::AddPrivate: No
  /// current record" before any AddIOD, and with "CCDRObject::CopyFile: Error copying files to DICOMDIR struct".
  virtual Status AddPrivate(_EnumDICOMDIRLevel level, const String& UID, const String& File,
                            Result<String> pFileID) = 0;

  /// Begins a new file set. Files that were written stay.
  virtual Status Reset() = 0;

  /// The identifier of the file set.
  virtual Status get_FileSetID(Result<String> pVal) = 0;

  /// Sets it, unchecked.
  virtual Status put_FileSetID(const String& newVal) = 0;

  /// The UID of the storage medium; empty where each WriteCDR is to make one.
  virtual Status get_StorageUID(Result<String> pVal) = 0;

  /// Sets it, unchecked.
  virtual Status put_StorageUID(const String& newVal) = 0;

  /// The title that the files are written under, up to its first blank; "KORVANDE" at first.
  virtual Status get_AETitle(Result<String> pVal) = 0;

  /// Sets it; what goes beyond 16 characters is cut.
  virtual Status put_AETitle(const String& newVal) = 0;

  /// The directory that the file set is written to.
  virtual Status get_RootPath(Result<String> pVal) = 0;

  /// Sets it.
  virtual Status put_RootPath(const String& newVal) = 0;

  /// Writes the directory file "DICOMDIR" into RootPath. `FileName` is looked for there only: it fails with the name and " already
  /// present" where that exists. What was added stays, and the file may be written again.
  virtual Status WriteCDR(const String& FileName) = 0;

  /// The directory below RootPath that holds all files of the set; empty for none.
  virtual Status get_DicomFileRoot(Result<String> pVal) = 0;

  /// Sets it.
  virtual Status put_DicomFileRoot(const String& newVal) = 0;

  /// Reads the DICOMDIR `fname` and tells its records by events before it returns, each with those below it; OnEnd comes last, also
  /// after a failure. Fails with "Error loading DICOMDIr[" and the path, and with "Uncaught error in ReadDICOMDIR".
  virtual Status ReadDICOMDIR(const String& fname) = 0;
};

/// Events of that class. They come on the thread that called ReadDICOMDIR, while it runs. `rec` is a new object with a copy of the
/// record, and the sink's to keep.
class _IDCMDicomDirEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F03003};
  static constexpr const char* kName = "_IDCMDicomDirEvents";

  /// A study of the patient told last.
  virtual Status OnStudy(const String& PatienID, const String& StudyUID, IDCMObject* rec) = 0;

  /// A series of the study told last.
  virtual Status OnSeries(const String& StudyUID, const String& SeriesInstanceUID,
                          const String& Modality, IDCMObject* rec) = 0;

  /// Any other record. `type` is its type, "PRIVATE" for private ones; `File` the place of its file as it stands in the record, its
  /// parts parted by "\".
  virtual Status OnSOPInstance(const String& StudyUID, const String& SeriesInstanceUID,
                               const String& SOPInstanceUID, const String& type, const String& File,
                               IDCMObject* rec) = 0;

  /// A patient.
  virtual Status OnPatient(const String& Name, const String& PatientID, IDCMObject* rec) = 0;

  /// All has been told.
  virtual Status OnEnd() = 0;
};

}  // namespace tessaret
