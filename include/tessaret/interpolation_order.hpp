/// Orders of interpolation.
#pragma once

#include <cstdint>

namespace tessaret {

/// How a value between voxels is found. Hosts share these names; no member takes them yet.
enum _EnumInterpolationOrder : std::int32_t {
  /// The nearest voxel's.
  INTERP_NEAREST = 0,
  /// Linear in three directions.
  INTERP_TRILINEAR = 1,
  /// By a kernel of order 2.
  INTERP_SYNCH_2 = 2,
  /// By a kernel of order 3.
  INTERP_SYNCH_3 = 3,
  /// By a kernel of order 4.
  INTERP_SYNCH_4 = 4,
  /// By a kernel of order 5.
  INTERP_SYNCH_5 = 5,
  /// By a kernel of order 6.
  INTERP_SYNCH_6 = 6,
};

}  // namespace tessaret
