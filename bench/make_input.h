// The input of all jobs, made by the library itself, under the names that the jobs look for.
#pragma once

#include <filesystem>

namespace tessaret::bench {

enum class InputSize {
  kFull,   // 720 MB, the compressed series included
  kShort,  // under 1 MB, to see that everything runs
};

/// Makes the input in `folder`, which is created, unless it is there whole and in this size. What is there otherwise under
/// the names of input is replaced. Throws std::exception. Requires: the dictionaries are started.
void MakeInput(const std::filesystem::path& folder, InputSize size);

}  // namespace tessaret::bench
