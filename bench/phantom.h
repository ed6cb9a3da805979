// A body of smooth organs with noise in air, as unsigned 12-bit numbers: what a CT volume looks like to a codec or a
// resampler, made of arithmetic alone.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tessaret::bench {

struct VolumeSize {
  std::uint16_t columns;
  std::uint16_t rows;
  std::uint32_t slices;

  [[nodiscard]] std::size_t SlicePixels() const { return std::size_t{columns} * rows; }
};

/// All slices one behind the other.
std::vector<std::uint16_t> MakePhantom(const VolumeSize& size);

/// The pixels of one slice of a volume.
inline std::span<const std::uint16_t> SliceOf(const std::vector<std::uint16_t>& volume,
                                              const VolumeSize& size, std::uint32_t slice) {
  return std::span(volume).subspan(size.SlicePixels() * slice, size.SlicePixels());
}

}  // namespace tessaret::bench
