// A walk through an object of the public interface, as a host would go.
#pragma once

#include <cstdint>
#include <string>

#include "tessaret/tessaret.hpp"

namespace tessaret::test {

/// What a walk met.
struct Walked {
  std::uint64_t elements = 0;  // at all depths
  std::uint64_t values = 0;    // all numbers of all elements
  std::string text;  // a line an element: tag, type, length, number of values, digest of the bytes
  std::string
      complaint;  // the first contradiction between two members, and where; empty where there is none
};

/// Meets every element of `object` and of all items below it, in their order, and asks each member about it: the description, the
/// raw bytes, the raw text and every value. Values are compared with what is made of the raw bytes here, by rules of DICOM PS3.5, 6.2,
/// wherever these leave one answer only. Group 2 of the top level is left out of `text`.
Walked WalkThrough(const Ref<IDCMObject>& object);

}  // namespace tessaret::test
