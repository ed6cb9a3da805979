// Elements of command sets, and of what goes with them, by value. Numbers that are missing and of another length than theirs count as
// absent, and so does every value of an element that has items.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "core/dicom_object.h"
#include "net/uid.h"

namespace tessaret {

/// An element of type UI, padded with NUL to an even length, in place of one that is there. Throws std::bad_alloc.
void PutUid(DICOMObject& object, std::uint16_t group, std::uint16_t element, std::string_view uid);
/// Of type US.
void PutNumber16(DICOMObject& object, std::uint16_t group, std::uint16_t element,
                 std::uint16_t value);
/// Of type UL.
void PutNumber32(DICOMObject& object, std::uint16_t group, std::uint16_t element,
                 std::uint32_t value);
/// Of any type, with the bytes as they are.
void PutBytes(DICOMObject& object, std::uint16_t group, std::uint16_t element, VrCode type,
              std::string_view bytes);

/// The bytes of its value as they are, owned by it. None of nothing, without a value, and of an element that has come to hold items,
/// with which they are not written either.
std::string_view ValueOf(const VR* vr);
/// Nothing where the element is not there, has no value, or one that is not two bytes long.
std::optional<std::uint16_t> Number16(const DICOMObject& object, std::uint16_t group,
                                      std::uint16_t element);
/// Less its last byte where that is neither a point nor a digit. Nothing where the element is not there, has no value but blanks or NULs,
/// or one that is longer than 64 bytes.
std::optional<UID> UidOf(const DICOMObject& object, std::uint16_t group, std::uint16_t element);

/// What all elements of group 0000 but the first take, in implicit little endian, up to the first of another group.
std::uint32_t CommandGroupLength(const DICOMObject& command);

}  // namespace tessaret
