// What a verb says that makes one file of another, where it does not.
#pragma once

#include <string>

#include "exit_code.h"
#include "host.h"

namespace tessaret::tool {

/// The paths and the host stay the caller's. Each function gives the code with which the verb ends.
class UnmadeFile {
 public:
  UnmadeFile(Host& host, const std::string& input, const std::string& output)
      : host_(host), input_(input), output_(output) {}

  /// Says why the input is at fault, and that the output is not written.
  ExitCode ByInput(const std::string& why) const;
  /// Says that the output is not written, where the cause was told before.
  ExitCode NotWritten() const;
  /// Says why the output cannot be written.
  ExitCode ByOutput(const std::string& why) const;

 private:
  Host& host_;
  const std::string& input_;
  const std::string& output_;
};

}  // namespace tessaret::tool
