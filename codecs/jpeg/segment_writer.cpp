#include "jpeg/segment_writer.h"

namespace tessaret::codecs {

void AppendNumber(std::uint32_t number, std::vector<std::uint8_t>& stream) {
  stream.push_back(static_cast<std::uint8_t>(number >> 8));
  stream.push_back(static_cast<std::uint8_t>(number));
}

void AppendMarker(Marker marker, std::vector<std::uint8_t>& stream) {
  AppendNumber(0xFF00u | static_cast<unsigned>(marker), stream);
}

}  // namespace tessaret::codecs
