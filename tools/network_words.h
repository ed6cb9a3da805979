// Failures of associations in one line for a person.
#pragma once

#include <string>

#include <tessaret/tessaret.hpp>

namespace tessaret::tool {

/// The words, and in brackets what the network said besides.
std::string WithNetworkWords(const std::string& words, IDcmStoreResponse& store);
/// Why the last call made no association: what the library reported, in one line, and what the network said besides.
std::string WhyNoAssociation(IDcmStoreResponse& store);

}  // namespace tessaret::tool
