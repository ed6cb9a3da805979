// What the program of each peer defines.
#pragma once

#include <span>

#include "jobs.h"

namespace tessaret::bench {

std::span<const Job> PeerJobs();

}  // namespace tessaret::bench
