// Codec libraries that go wrong before any codec is wanted; which way, TESSARET_BAD_CENSUS says.
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "tessaret/codec.h"

#define TESSARET_NEVER_ENDS 1
#define TESSARET_THROWS 2
#define TESSARET_LISTS_ONLY 3
#define TESSARET_OVERRIDES 4
#define TESSARET_HAS_NO_COUNT 5
#define TESSARET_HAS_NO_FREE 6
#define TESSARET_LISTS_1024 7

#if TESSARET_BAD_CENSUS != 0
#if TESSARET_BAD_CENSUS != TESSARET_HAS_NO_COUNT
std::uint32_t tessaret::DcmGetCodecCount() { return 1; }
#endif

tessaret::CodecBool tessaret::DcmGetCodecProps(std::uint32_t index, CodecProps* props) {
#if TESSARET_BAD_CENSUS == TESSARET_NEVER_ENDS
  std::strcpy(props->UID, "1.2.999.4.1");
  return index < 5'000'000 ? 1 : 0;
#elif TESSARET_BAD_CENSUS == TESSARET_THROWS
  std::strcpy(props->UID, "1.2.999.4.2");
  if (index == 1) throw std::runtime_error("no more");
  return 1;
#elif TESSARET_BAD_CENSUS == TESSARET_LISTS_1024
  // Says of the first one only what its flags are.
  std::snprintf(props->UID, sizeof(props->UID), "1.2.999.4.4.%u", index);
  if (index == 0) props->Flags = TESSARET_CODEC_NATIVE;
  return index < 1024 ? 1 : 0;
#elif TESSARET_BAD_CENSUS != TESSARET_OVERRIDES
  std::strcpy(props->UID, "1.2.999.4.3");
  return index == 0 ? 1 : 0;
#else
  // Explicit little endian as a native syntax of its own, and the toy syntax, which others list too.
  std::strcpy(props->UID, index == 0 ? "1.2.840.10008.1.2.1" : "1.2.999.1");
  props->Reserved = 77;
  props->Flags = index == 0 ? TESSARET_CODEC_NATIVE : 0;
  return index < 2 ? 1 : 0;
#endif
}
#else
extern "C" TESSARET_CODEC_EXPORT int JustALibrary() { return 1; }
#endif

#if TESSARET_BAD_CENSUS == TESSARET_HAS_NO_FREE
#include <cstdlib>

tessaret::DcmCodec* tessaret::DcmGetCodec(std::uint32_t) { std::abort(); }
#endif

#if TESSARET_BAD_CENSUS == TESSARET_OVERRIDES
tessaret::DcmCodec* tessaret::DcmGetCodec(std::uint32_t) { return nullptr; }
void tessaret::DcmFreeCodec(DcmCodec*) {}
#endif
