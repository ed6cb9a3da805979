// Series of single-frame CT files with the headers that scanners write, and one multi-frame file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "object_builder.h"
#include "phantom.h"

namespace tessaret::bench {

struct SeriesPlan {
  VolumeSize size;
  double pixelSpacing;   // mm
  double sliceDistance;  // mm
  std::uint64_t key;     // for the UIDs; another one for each series
  const char* patientId;
};

/// Writes one file a slice into `folder`, which is created. The order of the names is not that of the slices.
void WriteCtSeries(const SeriesPlan& plan, const std::vector<std::uint16_t>& volume, Syntax syntax,
                   const std::filesystem::path& folder);

/// Writes all slices as the frames of one file.
void WriteMultiFrame(const VolumeSize& size, const std::vector<std::uint16_t>& volume,
                     const std::filesystem::path& path);

}  // namespace tessaret::bench
