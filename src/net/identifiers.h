// The one counter from which presentation contexts and messages take their identifiers, whatever association they belong to. Any
// thread.
#pragma once

#include <cstdint>

namespace tessaret {

/// The next odd number; the counter then stands one above it.
std::uint32_t TakeOddIdentifier();
/// The counter as it stands, which then stands one above it.
std::uint32_t TakeIdentifier();

/// For tests: where the counter stands, and to put it somewhere.
std::uint32_t IdentifierCounter();
void SetIdentifierCounter(std::uint32_t value);

}  // namespace tessaret
