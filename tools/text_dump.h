// The library's own form of an object as text, made safe to show.
#pragma once

#include "host.h"
#include "source_file.h"

namespace tessaret::tool {

/// Writes the object of `source`, which is there, line by line. Throws Interrupted, OutputError and CallError.
void DumpText(const SourceFile& source, Host& host);

}  // namespace tessaret::tool
