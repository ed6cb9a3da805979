/// Kinds of servers.
#pragma once

#include <cstdint>

namespace tessaret {

/// What kind of server a receiver connects to. No kinds are named yet; any number may be passed.
enum _EnumServerType : std::int32_t {};

}  // namespace tessaret
