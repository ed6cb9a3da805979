// Raw files of the programs of OpenJPEG, and how they are told what is in them.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs::test {

/// As the programs of OpenJPEG have raw files: by plane.
inline std::vector<std::uint8_t> ByPlane(Bytes frame, const FrameFormat& format) {
  std::vector<std::uint8_t> planes(frame.size());
  const std::size_t width = format.BytesPerSample();
  const auto pixels = static_cast<std::size_t>(format.Pixels());
  for (std::size_t at = 0; at < format.Samples(); ++at) {
    const std::size_t place = at % format.samples * pixels + at / format.samples;
    std::copy_n(&frame[at * width], width, &planes[place * width]);
  }
  return planes;
}

/// The option by which opj_compress learns what is in a raw file.
inline std::string RawOption(const FrameFormat& format) {
  return " -F " + std::to_string(format.columns) + "," + std::to_string(format.rows) + "," +
         std::to_string(format.samples) + "," + std::to_string(format.bitsStored) + "," +
         (format.isSigned ? "s" : "u");
}

}  // namespace tessaret::codecs::test
