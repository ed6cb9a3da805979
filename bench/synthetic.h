// Made-up values that are the same in every run.
#pragma once

#include <cstdint>
#include <string>

#include "core/type_code.h"

namespace tessaret::bench {

/// Numbers that look random; the same for the same seed, on every machine.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : state_(seed) {}
  /// All 64 bits are good (splitmix64).
  std::uint64_t Roll();
  /// 0 to `sides` - 1.
  unsigned Below(unsigned sides) { return static_cast<unsigned>(Roll() % sides); }

 private:
  std::uint64_t state_;
};

/// A UID of its own for each key, with about as many digits as real ones have (DICOM PS3.5, B.2).
std::string MakeUid(std::uint64_t key);

/// True when RandomText makes values of this type.
bool HasRandomText(VrCode type);
/// A valid value of a type that is text, not padded. Requires: HasRandomText(type).
std::string RandomText(VrCode type, Dice& dice);

}  // namespace tessaret::bench
