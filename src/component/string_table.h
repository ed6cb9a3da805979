// The texts of the interface by number, as failures and titles use them.
#pragma once

#include <cstdint>
#include <string_view>

namespace tessaret {

/// The text of entry `id`; empty where there is none. Ends with a NUL behind its last character.
std::string_view StringOf(std::int32_t id);

}  // namespace tessaret
