/// Sections through a volume.
#pragma once

#include <cstdint>

namespace tessaret {

/// Which section of a volume a control shows. The first letter of an orthogonal section is the volume's axis that runs along the rows
/// of its image, the second the one that runs down its columns.
enum _EnumObliqueViewMode : std::int32_t {
  OBLIQUE_ORTHO_XY = 0,
  OBLIQUE_ORTHO_YZ = 1,
  OBLIQUE_ORTHO_XZ = 2,
  OBLIQUE_ORTHO_ZX = 3,
  OBLIQUE_ORTHO_ZY = 4,
  OBLIQUE_ORTHO_YX = 5,
  /// The axial plane of the patient, whatever the axes of the volume.
  OBLIQUE_ORTHO_AXIAL = 6,
  /// The sagittal plane of the patient.
  OBLIQUE_ORTHO_SAGGITAL = 7,
  /// The coronal plane of the patient.
  OBLIQUE_ORTHO_CORONAL = 8,
  /// Any other plane, as it was set by points.
  OBLIQUE_FREE = 9,
};

}  // namespace tessaret
