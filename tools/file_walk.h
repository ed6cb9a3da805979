// From what the user names to the files that are meant.
#pragma once

#include <string>
#include <vector>

#include "messages.h"

namespace tessaret::tool {

/// "-" where a file is read.
inline constexpr const char* kStandardInput = "-";

struct FileList {
  std::vector<std::string> files;
  bool complete = true;        // false: some directory could not be read
  bool fromDirectory = false;  // true: some argument was a directory
};

/// How far below a directory that is named.
enum class WalkDepth { kAll, kTop };

/// The arguments in their order, each directory replaced by the regular files in it, and below it unless `depth` is kTop, those of a
/// directory in the order of their names. What is deeper than asked for is not looked at. Links are followed; a directory that is reached twice counts once, so that loops of links
/// end. What is named but not there stays in the list, for its reader to say so. A directory that cannot be read is
/// told to `messages`. Takes time in proportion to the number of files, but for the sorting. Throws Interrupted.
FileList FindFiles(const std::vector<std::string>& arguments, Messages& messages,
                   WalkDepth depth = WalkDepth::kAll);

}  // namespace tessaret::tool
