// Files that a verb is about to write.
#pragma once

#include <cstdint>
#include <string>

#include <tessaret/tessaret.hpp>

namespace tessaret::tool {

/// Why `path` must not be written, or empty: a file that is there is replaced only with `force`, a directory never. Devices
/// and pipes are written to.
std::string WhyNotToWrite(const std::string& path, bool force);

/// Throws UsageError in the name of `option` for "-", which would quietly make a file of that name: it stands for
/// standard input, and a file that is written whole or not at all cannot go to standard output.
void RefuseDash(const std::string& option, const std::string& path);

/// Saves `object` with the types that its elements have; without `force` a file that came to `path`
/// meanwhile stays. Empty, or why it failed.
std::string SaveObject(const std::string& path, _EnumSaveForm form, bool force, IDCMObject& object);

/// Makes the directory `path` with those above it, unless it is there. 0, or the system's error number.
int MakeDirectories(const std::string& path);

}  // namespace tessaret::tool
