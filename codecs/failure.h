// How parts of this library give up a frame: by an exception that says why. It never leaves the library.
#pragma once

#include <stdexcept>

namespace tessaret::codecs {

/// The cause alone, as "the code stream ends early". The syntax and the frame are named where it is caught.
class CodecFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws a CodecFailure with words made as by printf.
[[noreturn, gnu::format(printf, 1, 2)]] void Fail(const char* format, ...);

}  // namespace tessaret::codecs
