// The file of a verb that works on one object: read, told of, and put behind the public interface.
#pragma once

#include <string>

#include <tessaret/tessaret.hpp>

#include "host.h"
#include "source_file.h"

namespace tessaret::tool {

/// Loads `path` and tells what is odd about it; the failure, if any, is told too. Throws DictionaryError, Interrupted.
SourceFile ReadSource(const std::string& path, const SourceOptions& options, Host& host);

/// Tells what is odd about `source`, which was loaded from `path`, and its failure. Throws Interrupted.
void TellOf(const SourceFile& source, const std::string& path, Host& host);

/// Whether `path` may be opened once more and begins anew then: pipes do not.
bool IsReadableAgain(const std::string& path);

/// Whether both are one and the same file.
bool IsSameFile(const std::string& path, const std::string& other);

}  // namespace tessaret::tool
