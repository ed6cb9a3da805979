#include "net/identifiers.h"

#include <atomic>

namespace tessaret {
namespace {

// Unsigned, so that it begins anew where it ends.
std::atomic<std::uint32_t> counter = 1;

}  // namespace

std::uint32_t TakeOddIdentifier() {
  std::uint32_t stands = counter.load();
  while (!counter.compare_exchange_weak(stands, (stands | 1) + 1)) {
  }
  return stands | 1;
}

std::uint32_t TakeIdentifier() { return counter++; }

std::uint32_t IdentifierCounter() { return counter; }

void SetIdentifierCounter(std::uint32_t value) { counter = value; }

}  // namespace tessaret
