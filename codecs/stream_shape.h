// How code streams begin and where they end, without decoding them.
#pragma once

#include <cstddef>

#include "frame_format.h"
#include "syntax_table.h"

namespace tessaret::codecs {

/// Whether the bytes begin as a code stream of this kind does.
bool BeginsLike(StreamKind kind, Bytes bytes);

/// The length of the code stream at the begin of the bytes; 0 where there is none, where it does not end within them, or where streams
/// of its kind do not tell.
std::size_t LengthOfStream(StreamKind kind, Bytes bytes);

}  // namespace tessaret::codecs
