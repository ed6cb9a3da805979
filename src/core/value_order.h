// The order of bytes within values. Readers leave the numbers of a big endian stream in the order of the stream, so whoever
// wants to compute with them, show them or encode them in the other order turns them round here.
#pragma once

#include <cstdint>

#include "core/dicom_object.h"
#include "core/type_code.h"

namespace tessaret {

class RTC;

/// Bytes in one number of a value of type `type`: 2, 4 or 8 (DICOM PS3.5, 7.3). 1 for types whose bytes have no order (text,
/// OB) or an unknown one: the standard has UN in little endian whatever surrounds it.
std::uint32_t NumberWidth(VrCode type);

/// Reverses the bytes of each number of the value of `vr`, where it stands. Bytes at the end that make no whole number
/// stay. An element without a value stays as it is.
void SwapNumbers(VR& vr);

/// Does so for every element of `object` with all that is nested in it, at any depth on a flat stack; group 0002, which is
/// little endian in every file, is left alone. Twice is as if never. The values are changed in place, also those that
/// a shallow clone shares. Throws std::bad_alloc with some elements turned and some not.
void SwapNumbers(DICOMObject& object);

/// Calls native pixel data of more than 8 bits OW where it is called OB: no order of bytes turns that round. For an object in little
/// endian, as codecs leave it, that is to become big endian.
void CallWidePixelsWords(DICOMObject& object);

/// Readies an object whose numbers are little endian for being written in explicit big endian: numbers are turned round by the type
/// under which a writer with this dictionary, which may be null, puts them out, also where the object itself does not know it. Native
/// pixel data that is neither OB nor OW is called one of them, by Bits Allocated. Throws std::bad_alloc as SwapNumbers does.
void TurnForBigEndian(DICOMObject& object, const RTC* dictionary);

}  // namespace tessaret
