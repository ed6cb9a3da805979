// What the library noted of the bytes that it read.
#pragma once

#include <cstdint>
#include <vector>

#include <tessaret/tessaret.hpp>

#include "tag.h"

namespace tessaret::tool {

/// How deep sequences may nest, in levels of sequence and item: the readers refuse what is deeper.
inline constexpr int kMaxNesting = 256;

/// Why a reading ended, and where.
struct ReadingEnd {
  _EnumReadingEnd why = READ_TO_THE_END;
  std::uint64_t offset = 0;
  TagKey tag = 0;
};

struct ReadingOddity {
  _EnumReadingOddity kind = ODDITY_NONE;
  std::uint64_t offset = 0;
  TagKey tag = 0;
};

/// What the reading of a data set left behind, beside the object.
struct Reading {
  bool isExplicit = false;
  ReadingEnd end;
  std::vector<ReadingOddity> oddities;
};

/// What the last load of `file` left behind, but for isExplicit. Throws CallError and std::bad_alloc.
Reading ReadingOf(IDcmFile& file);

}  // namespace tessaret::tool
