// Names of hosts and services to numbers. A look-up can take longer than anybody wants to wait, and the system has no way to end one:
// it runs on a thread of its own, which is left behind where the caller gives up.
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/wake_pipe.h"

namespace tessaret {

/// The first IPv4 address of the host with this name. Nothing where the system does not know it, when the deadline passes, or soon
/// after calls are cancelled by CancelFileCalls or `isGivenUp`, which is asked about every 20 milliseconds on the calling thread,
/// answers true.
std::optional<in_addr> FindHost(const std::string& name, const Deadline& deadline,
                                const std::function<bool()>& isGivenUp);

/// The address that `text` writes with points, in any of the forms of inet_addr; 255.255.255.255 for any other text.
in_addr DottedAddress(const std::string& text);

/// The port of the service with this name, of whatever protocol is listed first, as a host number; nothing where there is none.
std::optional<std::uint16_t> FindServicePort(const std::string& name);

/// Replaces the system's look-up of hosts in tests; null is the system's. It is called on threads of its own.
using HostLookup = std::optional<in_addr> (*)(const std::string& name);
void SetHostLookup(HostLookup lookup);

}  // namespace tessaret
