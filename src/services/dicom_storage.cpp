#include "services/dicom_storage.h"

#include <string_view>

#include "base/text.h"
#include "net/command_elements.h"
#include "net/sop_classes.h"

namespace tessaret {
namespace {

struct ModalityRow {
  std::string_view modality;
  const char* uid;
};

constexpr ModalityRow kModalities[] = {
    {"CR", sop_class::kComputedRadiography},
    {"CT", sop_class::kCT},
    {"MR", sop_class::kMR},
    {"NM", sop_class::kRetiredNuclearMedicine},
    {"US", sop_class::kRetiredUltrasound},
    {"SC", sop_class::kSecondaryCapture},
};

const char* SopClassOf(std::string_view modality) {
  for (const ModalityRow& row : kModalities) {
    if (IsSameIgnoringCase(modality.substr(0, row.modality.size()), row.modality)) return row.uid;
  }
  return "";
}

}  // namespace

DicomStorage::DicomStorage(const DICOMObject& object) {
  if (object.GetVR(0x0008, 0x0016) != nullptr) {
    UID = UidOf(object, 0x0008, 0x0016).value_or(tessaret::UID());
    return;
  }
  UID.Set(SopClassOf(ValueOf(object.GetVR(0x0008, 0x0060))));
}

bool DicomStorage::GetUID(tessaret::UID& uid) {
  uid = UID;
  return true;
}

}  // namespace tessaret
