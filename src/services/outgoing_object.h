// Objects on their way to a peer: loaded, brought into a transfer syntax that the peer took, and sent.
#pragma once

#include <string>

#include "core/dicom_object.h"
#include "net/outgoing_file.h"
#include "net/pdu_service.h"
#include "services/dicom_storage.h"

namespace tessaret {

/// Puts the elements of a clone of `object` into `to`, whose bytes `object` shares, and must keep, unless `deep`. Writing the clone by
/// `dictionary`, which may be null, changes nothing of the object. Throws std::bad_alloc.
void CloneInto(const DICOMObject& object, bool deep, const RTC* dictionary, DICOMDataObject& to);

/// What (0002,0010) names; empty without it.
UID SyntaxOf(const DICOMObject& object);

/// Brings pixel data from the transfer syntax that the object names to the one that the peer took for its SOP class. Empty, or why that
/// cannot be, which begins with "]: ", as it cannot of fragments of items, which nobody decodes. Empty, too, where it has fragments by the
/// name of a native syntax: these stay with that name, so that CanGoAsItIs has the last word.
std::string TranscodeForPeer(const PDU_Service& pdu, DICOMDataObject& object, const UID& sopClass);

/// Whether the object means the same in the transfer syntax that the peer took for its SOP class: fragments do so in their own only, and
/// native pixels in no compressed one, of which a peer may have named one that it was not offered. True where nothing was taken
/// for the class, which writing it has words for.
bool CanGoAsItIs(const PDU_Service& pdu, const DICOMObject& object, const UID& sopClass);

/// Sends the object, which stays as it is, over an association by `storage`, which was made for it and is to take the response. False
/// when it could not be sent.
bool SendOver(PDU_Service& pdu, DicomStorage& storage, const DICOMObject& object);

/// The same, and takes the response. False also when there was none.
bool StoreOver(PDU_Service& pdu, DicomStorage& storage, const DICOMObject& object);

}  // namespace tessaret
