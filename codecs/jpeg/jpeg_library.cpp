#include "jpeg/jpeg_library.h"

#include <cstdio>
#include <new>

#include "failure.h"

namespace tessaret::codecs {
namespace {

JpegErrors& ErrorsOf(j_common_ptr library) {
  return *static_cast<JpegErrors*>(library->client_data);
}

[[noreturn]] void End(j_common_ptr library) {
  JpegErrors& errors = ErrorsOf(library);
  errors.isOutOfMemory = library->err->msg_code == JERR_OUT_OF_MEMORY;
  library->err->format_message(library, errors.words);
  std::longjmp(errors.jump, 1);
}

/// Whether the pixels are not touched by what a warning is about.
bool IsHarmless(int code) {
  switch (code) {
    case JWRN_ADOBE_XFORM:
    case JWRN_BOGUS_ICC:
    case JWRN_JFIF_MAJOR:
    case JWRN_NOT_SEQUENTIAL:  // the scan's range of coefficients, which sequential scans do not use
      return true;
    default:
      return false;
  }
}

void OnMessage(j_common_ptr library, int level) {
  if (level < 0 && !IsHarmless(library->err->msg_code)) End(library);
}

void PrintNothing(j_common_ptr /*library*/) {}

}  // namespace

void UseErrors(jpeg_common_struct& library, JpegErrors& errors) {
  library.err = jpeg_std_error(&errors.manager);
  library.client_data = &errors;
  errors.manager.error_exit = End;
  errors.manager.emit_message = OnMessage;
  errors.manager.output_message = PrintNothing;
}

void EndStep(j_common_ptr library, int code) {
  library->err->msg_code = code;
  End(library);
}

void EndStep(j_common_ptr library, const char* words) {
  JpegErrors& errors = ErrorsOf(library);
  errors.isOutOfMemory = false;
  std::snprintf(errors.words, sizeof errors.words, "%s", words);
  std::longjmp(errors.jump, 1);
}

void ThrowErrors(const JpegErrors& errors) {
  if (errors.isOutOfMemory) throw std::bad_alloc();
  Fail("%s", errors.words);
}

}  // namespace tessaret::codecs
