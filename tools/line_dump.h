// The listing that people paste into reports: an element a line, two blanks a level.
//
//   (0010,0010) PN [Doe^John]                               # 8, 1 Patient's Name
#pragma once

#include "host.h"
#include "source_file.h"

namespace tessaret::tool {

struct LineDumpOptions {
  bool wholeValues = false;  // do not cut long ones
};

/// Lists the object of `source`, which is there, on the host's output.
void DumpLines(const SourceFile& source, const LineDumpOptions& options, Host& host);

}  // namespace tessaret::tool
