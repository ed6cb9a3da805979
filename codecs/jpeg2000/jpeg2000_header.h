// The headers of a JPEG 2000 code stream (ISO/IEC 15444-1, A), read whole before anything is decoded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "frame_format.h"
#include "jpeg2000/coding_parameters.h"
#include "jpeg2000/tile_grid.h"

namespace tessaret::codecs {

/// The header segments of a part of a tile, with their markers, and its packets.
struct TilePart {
  std::uint32_t tile = 0;
  Bytes headers;
  Bytes data;
};

struct Jpeg2000Header {
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::uint32_t components = 0;
  std::uint32_t precision = 0;  // of all components
  bool isSigned = false;        // of all components
  bool isTransformed = false;   // the first three components are a transform of red, green and blue
  bool isReversible = true;     // no wavelet transform of the stream loses anything
  bool isExtended =
      false;  // has what only other parts of the standard tell, as blocks of high throughput
  GridDirection across;
  GridDirection down;
  CodingParameters parameters;      // of the main header
  std::vector<TilePart> tileParts;  // by their tiles, each of which has one at least
  std::uint64_t codeBlocks = 0;     // about how many at most, be they empty
  Bytes codeStream;                 // from its start to the end of its last tile part
};

/// Throws CodecFailure where `stream` is neither a code stream nor a file with one, or is not whole: cut, without some tile, with
/// numbers outside of their ranges, or with more tiles, packets or code blocks than its bytes can hold.
Jpeg2000Header ReadJpeg2000Header(Bytes stream);

/// What the parts' own header segments make of those of the main header; the parts are all of one tile.
CodingParameters ParametersOfTile(const Jpeg2000Header& header, std::span<const TilePart> parts);

/// On the grid.
GridArea AreaOfTile(const Jpeg2000Header& header, std::uint32_t tile);

}  // namespace tessaret::codecs
