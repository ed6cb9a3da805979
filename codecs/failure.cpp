#include "failure.h"

#include <cstdarg>
#include <cstdio>

namespace tessaret::codecs {

void Fail(const char* format, ...) {
  // Longer words are cut: they are for people, and the host keeps no more.
  char words[400];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(words, sizeof words, format, arguments);
  va_end(arguments);
  throw CodecFailure(words);
}

}  // namespace tessaret::codecs
