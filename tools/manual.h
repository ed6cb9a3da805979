// Man pages, made from the same tables of options that --help reads.
#pragma once

#include <string>
#include <vector>

#include "command_line.h"

namespace tessaret::tool {

/// A page of the manual, section 1.
struct ManPage {
  std::string name;  // of the file, "tessaret-dump.1"
  std::string text;  // in the man macros
};

/// The page of the tool and one for each verb that is shown to people.
std::vector<ManPage> ManPages(const CommandLine& line);

}  // namespace tessaret::tool
