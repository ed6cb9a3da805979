#include "core/codec_call.h"

#include <cxxabi.h>

#include <cstddef>
#include <cstring>
#include <exception>

// What is called is a method there and a function here; both take the same arguments in the same places.
#ifdef __clang__
#define TESSARET_CALLS_METHODS [[clang::no_sanitize("function")]]
#else
#define TESSARET_CALLS_METHODS
#endif

namespace tessaret {
namespace {

/// A codec object as both languages lay it out.
struct CodecTable {
  CodecBool (*canCompress)(DcmCodec*, DICOMObject*, const char*, const ImageInfo*, void*);
  std::uint32_t (*compressFrame)(DcmCodec*, DICOMObject*, const char*, VR*, const ImageInfo*,
                                 const std::uint8_t*, void*);
  CodecBool (*decompressFrame)(DcmCodec*, DICOMObject*, const char*, VR*, const ImageInfo*,
                               std::uint8_t*, void*);
};

struct CodecRecord {
  const CodecTable* table;
  std::uintptr_t reserved;
  char errorText[TESSARET_CODEC_ERROR_SIZE];
};
static_assert(sizeof(CodecRecord) == sizeof(DcmCodec));

const CodecTable* TableOf(const DcmCodec& codec) noexcept {
  const CodecTable* table = nullptr;
  std::memcpy(static_cast<void*>(&table), reinterpret_cast<const void*>(&codec), sizeof(void*));
  return table;
}

char* ErrorTextOf(DcmCodec& codec) noexcept {
  return reinterpret_cast<char*>(&codec) + offsetof(CodecRecord, errorText);
}

// The codec gets a copy of the sizes by which the engine goes.
TESSARET_CALLS_METHODS CodecBool InvokeCanCompress(CodecTarget& target, CodecConversion& conversion,
                                                   ImageInfo info) {
  return TableOf(target.codec)
      ->canCompress(&target.codec, &conversion.Object(), target.syntax, &info, target.progress);
}

TESSARET_CALLS_METHODS std::uint32_t InvokeCompressFrame(CodecTarget& target,
                                                         CodecConversion& conversion,
                                                         ImageInfo info,
                                                         const std::uint8_t* frame) {
  return TableOf(target.codec)
      ->compressFrame(&target.codec, &conversion.Object(), target.syntax, conversion.Pixels(),
                      &info, frame, target.progress);
}

TESSARET_CALLS_METHODS CodecBool InvokeDecompressFrame(CodecTarget& target,
                                                       CodecConversion& conversion, ImageInfo info,
                                                       std::uint8_t* frame) {
  return TableOf(target.codec)
      ->decompressFrame(&target.codec, &conversion.Object(), target.syntax, conversion.Pixels(),
                        &info, frame, target.progress);
}

/// What `call` answers, or 0 when it throws.
template <class Call>
auto Shielded(CodecConversion& conversion, Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (const std::exception& error) {
    conversion.Fail(error.what());
  } catch (...) {
    conversion.Fail("The codec ended with an exception");
  }
  return 0;
}

}  // namespace

bool HasAllOperations(const DcmCodec& codec) noexcept {
  const CodecTable* table = TableOf(codec);
  return table != nullptr && table->canCompress != nullptr && table->compressFrame != nullptr &&
         table->decompressFrame != nullptr;
}

bool AskCanCompress(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info) {
  return Shielded(conversion, [&] { return InvokeCanCompress(target, conversion, info); }) != 0;
}

std::uint32_t CompressFrame(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info,
                            const std::uint8_t* frame) {
  return Shielded(conversion, [&] { return InvokeCompressFrame(target, conversion, info, frame); });
}

bool DecompressFrame(CodecTarget& target, CodecConversion& conversion, const ImageInfo& info,
                     std::uint8_t* frame) {
  return Shielded(conversion,
                  [&] { return InvokeDecompressFrame(target, conversion, info, frame); }) != 0;
}

void ClearErrorText(CodecTarget& target) noexcept {
  if (!target.isConcurrent) *ErrorTextOf(target.codec) = '\0';
}

std::string WordsOfFailure(const CodecTarget& target, const CodecConversion& conversion,
                           const std::string& otherwise) {
  if (!conversion.Words().empty()) return conversion.Words();
  const char* text = ErrorTextOf(target.codec);
  const std::size_t length = target.isConcurrent ? 0 : ::strnlen(text, TESSARET_CODEC_ERROR_SIZE);
  return length > 0 ? std::string(text, length) : otherwise;
}

}  // namespace tessaret
