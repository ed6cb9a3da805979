#include "jpeg/dct_scans.h"

namespace tessaret::codecs {

void DctTables::Read(const Segment& segment) {
  switch (segment.marker) {
    case Marker::kDht:
      return huffman.Read(segment.content);
    case Marker::kDqt:
      return quantisation.Read(segment.content);
    case Marker::kDri:
      restartInterval = ReadRestartInterval(segment);
      return;
    case Marker::kDac:
    case Marker::kDnl:
    case Marker::kJpg:
      Fail("marker %02X is of a kind that is not decoded", static_cast<unsigned>(segment.marker));
    default:
      return;
  }
}

}  // namespace tessaret::codecs
