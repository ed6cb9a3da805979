// What the last load of an object noted, for IDcmFile to tell.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/data_set_coder.h"
#include "core/file_head.h"

namespace tessaret {

struct ReadingNotes {
  std::int32_t code = 0;  // see core/transfer_syntax.h; 0 where nothing was read
  bool hasMark = false;
  std::uint32_t bytesRead = 0;  // modulo 4 GiB
  FileHead head;
  ParseStop stop;
  std::vector<ParseOddity> oddities;
  std::string systemError;
  bool lackedMemory = false;
};

}  // namespace tessaret
