// SHA-256 (FIPS 180-4), to hold large values against digests that other programs made.
#pragma once

#include <cstddef>
#include <string>

namespace tessaret::test {

/// The digest of `size` bytes as 64 lower-case hexadecimal digits. `data` may be null when `size` is 0.
std::string Sha256(const void* data, std::size_t size);

}  // namespace tessaret::test
