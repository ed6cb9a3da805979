// The enumerations of the interface, for those who have no compiler to know them by.
#pragma once

#include <span>

#include "tessaret/tessaret.h"

namespace tessaret {

/// All of them, by their names. In src/facade/tables.
std::span<const tessaret_enumeration> AllEnumerations();

}  // namespace tessaret
