// The transfer syntaxes that this library serves, in the order in which it lists them.
#pragma once

#include <cstdint>
#include <span>

#include "frame_coder.h"

namespace tessaret::codecs {

/// How the code streams of a syntax begin and end, by which frames are told apart.
enum class StreamKind { kNone, kRle, kJpeg, kJpeg2000 };

struct Syntax {
  const char* uid;
  StreamKind kind;          // kNone: native, the pixels are in no stream
  const FrameCoder* coder;  // encodes, and decodes as DecoderOf tells; null for native syntaxes
};

std::span<const Syntax> Syntaxes();

/// What decodes this code stream: the syntax's own coder but for streams of another JPEG process, which files have under the names of
/// all of them.
const FrameCoder& DecoderOf(const Syntax& syntax, Bytes stream);

}  // namespace tessaret::codecs
