// The common ground of encoders and decoders that the JPEG library (libjpeg) does the work for.
#pragma once

#include <csetjmp>
#include <cstddef>
#include <cstdio>

// Behind those above, which it needs.
// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

namespace tessaret::codecs {

/// What the library calls when something is wrong. It must not come back from a fatal error, and no exception may pass through
/// its C functions: so it jumps, out of steps that own nothing, into RunStep.
struct JpegErrors {
  jpeg_error_mgr manager{};
  std::jmp_buf jump{};
  bool isOutOfMemory = false;
  char words[JMSG_LENGTH_MAX] = {};
};

/// Makes `library`, not yet created, tell `errors`. Warnings of damaged data are errors, others are nothing; nothing is printed.
void UseErrors(jpeg_common_struct& library, JpegErrors& errors);

/// Ends the present step with the library's words for `code`, or with these. For functions that the library calls.
[[noreturn]] void EndStep(j_common_ptr library, int code);
[[noreturn]] void EndStep(j_common_ptr library, const char* words);

/// Throws what the last step ended with: std::bad_alloc or CodecFailure.
[[noreturn]] void ThrowErrors(const JpegErrors& errors);

/// Runs a step of `session`, which has the `errors` of its library. Jumps out of it must not pass objects with destructors: what
/// is owned belongs into the session.
template <class Session>
void RunStep(Session& session, void (*step)(Session&)) {
  if (setjmp(session.errors.jump) != 0) ThrowErrors(session.errors);
  step(session);
}

}  // namespace tessaret::codecs
