// Whether three components of a JPEG stream are red, green and blue, or luminance and two of chrominance.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tessaret::codecs {

/// What application segments say.
struct ColourMarks {
  bool hasJfif = false;
  std::optional<std::uint32_t> adobeTransform;  // 0: none
};

/// The stream's own word wins; without that Photometric Interpretation decides, and where this says neither, `guess` does.
bool AreYcc(const ColourMarks& marks, const std::string& photometric, bool guess);

}  // namespace tessaret::codecs
