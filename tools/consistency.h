// Checks of a data set that need no more than a look: what reads well may still contradict itself.
#pragma once

#include <string>
#include <vector>

#include "source_file.h"

namespace tessaret::tool {

/// What is odd in the elements of `source` whatever they mean, a sentence each: their order and their letters.
std::vector<std::string> FindOddElements(const SourceFile& source);

/// What is odd in `source`, a sentence each, the elements included. Requires: its object is there, loaded with pixels or past them.
std::vector<std::string> FindOddities(const SourceFile& source, Host& host);

}  // namespace tessaret::tool
