/// A colour lookup that an application writes and the library draws through.
#pragma once

#include <cstdint>

#include "tessaret/object.hpp"

namespace tessaret {

/// Turns values into colours. An object with this interface can be given wherever a `Lut` is asked for; as those ask for any object
/// that can be called by name, it has IDispatch as well. Both lookups are called for every pixel of a picture.
class ILut : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F04001};

  /// Never called by the library; what it answers is the application's affair.
  virtual Status Reserved() = 0;

  /// The colour of `value` in the range from `low` to `high`, both included, in the low 24 bits of `*colour`. In three bytes of an
  /// image its lowest byte comes first. Values may lie outside the range.
  virtual Status LookUpInteger(std::int32_t value, std::int32_t low, std::int32_t high,
                               std::int32_t* colour) = 0;

  /// The same for a value with a fraction: red in the lowest byte, then green, then blue.
  virtual Status LookUpFloat(float value, float low, float high, std::int32_t* colour) = 0;
};

}  // namespace tessaret
