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
  const FrameCoder* coder;  // null for native syntaxes
};

std::span<const Syntax> Syntaxes();

/// Null for a UID that is not in the table.
const Syntax* FindSyntax(const char* uid);

}  // namespace tessaret::codecs
