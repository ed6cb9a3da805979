// Calls into codec objects, by the table of functions that both C++ classes and C structures have.
#pragma once

#include <cstdint>
#include <string>

#include "core/codec_conversion.h"
#include "tessaret/codec.h"

namespace tessaret {

/// True when none of the three functions is missing.
bool HasAllOperations(const DcmCodec& codec) noexcept;

/// What every call into one codec object needs.
struct CodecTarget {
  DcmCodec& codec;
  const char* syntax;
  void* progress;
  bool isConcurrent;
};

/// The three operations, for the data set and pixel data of `conversion`. A codec that throws has failed, and the words of its
/// exception are those of the failure; only the end of a thread that is cancelled goes through.
bool AskCanCompress(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info);
std::uint32_t CompressFrame(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info,
                            const std::uint8_t* frame);
bool DecompressFrame(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info,
                     std::uint8_t* frame);

/// Empties the words of earlier failures, where that disturbs no other thread.
void ClearErrorText(CodecTarget& target) noexcept;

/// Why the last call failed: what the codec said by tessaret_codec_fail, its ErrorText, or else `otherwise`.
std::string WordsOfFailure(const CodecTarget& target, const CodecConversion& conversion,
                           const std::string& otherwise);

}  // namespace tessaret
