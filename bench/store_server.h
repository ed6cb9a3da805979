// A storage server for the measuring programs of either side: answers C-STORE and C-ECHO until it is ended.
#pragma once

#include <filesystem>
#include <string>

namespace tessaret::bench {

/// Takes any number of peers at once on `port`. What it receives goes into `folder`, a file for each object, or nowhere with an empty
/// one. Returns when nobody can be taken any more.
void RunStoreServer(const std::string& port, const std::filesystem::path& folder);

}  // namespace tessaret::bench
