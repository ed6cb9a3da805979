// A small file of ours (dictionary, configuration) in memory at once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/staged_file.h"

namespace tessaret {

/// Reads all bytes of `path`, a regular file or a pipe, into `bytes`. 0 on success, otherwise the system's error number:
/// EFBIG for more than `most` bytes, EINVAL for a path with a NUL in it; `bytes` is then empty. Memory grows with what
/// arrives, not with what is announced.
int ReadWholeFile(const std::string& path, std::uint64_t most, std::vector<std::uint8_t>& bytes);

/// Puts `bytes` at `path`, whole or not at all: see StagedFile. 0 on success, otherwise the system's error number.
int WriteWholeFile(const std::string& path, const void* bytes, std::uint64_t size,
                   Existing existing = Existing::kReplace);

}  // namespace tessaret
