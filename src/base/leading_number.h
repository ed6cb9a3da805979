// The number that a text begins with, whatever follows it. Never looks at the process's locale.
#pragma once

#include <cstdint>
#include <string_view>

namespace tessaret {

/// The whole number at the start of `text`, behind white space, with or without a sign; 0 where there is none. A number
/// beyond 32 bits gives the nearest end of the range.
std::int32_t LeadingLong(std::string_view text);

/// The decimal number at the start of `text`, behind white space, as in "-12.5e3"; 0 where there is none. One that is too
/// large gives an infinity of its sign, one too small 0. Words such as "inf" and "nan" are no numbers, nor is "0x10".
double LeadingDouble(std::string_view text);

}  // namespace tessaret
