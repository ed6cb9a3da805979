// Memory for VR records. A data set holds hundreds of thousands of them, all of one size, made and freed in bulk: a general
// allocator spends more time on each than the parser does.
//
// Every thread takes from a list of its own and frees into it, without a lock; full lists pass to other threads through a
// shared store, so that a thread that makes objects for another one to free does not take new memory for ever. What was once
// taken from the system is kept for later records until the library goes. A thread that ends hands on what it has; what
// destructors make and free after that goes through one place for all threads, with a lock.
//
// The sanitizers see single allocations instead: their builds go past the pool.
#pragma once

#include <cstddef>

namespace tessaret {

/// Room for one VR. Throws std::bad_alloc.
void* TakeVrBlock();
/// Gives back what TakeVrBlock gave, on any thread.
void GiveVrBlock(void* block) noexcept;

/// Gives all memory back to the system, for a library that is unloaded. Nobody may hold a block, and no other thread may come back.
void FreeVrBlocks() noexcept;

}  // namespace tessaret
