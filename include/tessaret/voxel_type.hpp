/// Kinds of voxels.
#pragma once

#include <cstdint>

namespace tessaret {

/// What one voxel of a volume is.
enum _EnumVoxelType : std::int32_t {
  /// Signed 16 bits.
  SHORT_VOXEL = 0,
  /// Unsigned 16 bits.
  USHORT_VOXEL = 1,
  /// Unsigned 8 bits.
  UCHAR_VOXEL = 2,
  /// Floating point of 32 bits.
  FLOAT_VOXEL = 3,
  /// Signed 32 bits.
  LONG_VOXEL = 4,
  /// Unsigned 32 bits.
  ULONG_VOXEL = 5,
};

}  // namespace tessaret
