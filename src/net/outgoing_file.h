// Files on their way to a peer, whatever form they lie in.
#pragma once

#include <memory>
#include <string>

#include "core/dicom_object.h"
#include "net/pdu_service.h"

namespace tessaret {

/// A file with its pixels.
struct OutgoingFile {
  std::unique_ptr<DICOMDataObject> object;
  std::string lack;  // why the object is not the whole file, or there is none; empty where it is
};

/// Loads a file with its pixels. Numbers are little endian, whatever the file's order, and (0002,0010) says what fragments are in, also
/// where the file's own does not stay. No object, with words in the association's LastError, for what is no DICOM file.
OutgoingFile LoadForSending(PDU_Service& pdu, const std::string& path);
/// The same with the words in the answer.
OutgoingFile LoadForSending(const RTC* dictionary, const std::string& path);

/// Whether pixel data is fragments, its own or that of items at any depth: they mean something in their own transfer syntax only.
/// Throws std::bad_alloc.
bool HasFragments(const DICOMObject& object);

}  // namespace tessaret
