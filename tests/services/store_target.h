// Whom tests send to: a node of this machine that takes any titles.
#pragma once

#include <cstdint>
#include <string>

#include "services/store_sender.h"

namespace tessaret::test {

inline StoreTarget TargetAt(const std::string& port, std::int32_t timeoutSecs = 20) {
  return {.host = "127.0.0.1",
          .port = port,
          .localTitle = "HERE",
          .remoteTitle = "THERE",
          .timeoutSecs = timeoutSecs};
}

}  // namespace tessaret::test
