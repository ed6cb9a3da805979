#include "memory_room.h"

#include <new>

namespace tessaret::codecs {

void RequireMemory(std::uint64_t bytes) { ::operator delete(::operator new(bytes)); }

}  // namespace tessaret::codecs
