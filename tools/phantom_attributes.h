// The phantom's images as complete objects: patient, study, series, geometry and pixels.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <tessaret/tessaret.hpp>

#include "phantom_picture.h"

namespace tessaret::tool {

/// A kind of series.
struct PhantomKind {
  const char* name;
  const char* sopClass;
  const char* modality;
  const char* photometric;
  std::uint16_t samples;
  std::uint16_t bitsAllocated;
  std::uint16_t bitsStored;
  bool oneFile;  // all slices are frames of one object
  bool inSpace;  // images have a place in patient space
};

std::span<const PhantomKind> PhantomKinds();
/// Null for an unknown name.
const PhantomKind* FindPhantomKind(std::string_view name);

/// Bytes of the pixel data of one file.
std::uint64_t PixelBytes(const PhantomKind& kind, const PhantomShape& shape);

/// How many files the series has.
int FileCount(const PhantomKind& kind, const PhantomShape& shape);

/// File number `index` of the series, counted from 0, with (0002,0010) set to explicit little endian. The same choices give
/// the same object on every machine: dates are fixed and UIDs follow from the choices. Throws Interrupted and CallError.
Ref<IDCMObject> MakePhantom(const PhantomKind& kind, const PhantomGeometry& geometry, int index);

/// The SOP Instance UID of that file.
std::string PhantomInstance(const PhantomKind& kind, const PhantomGeometry& geometry, int index);

}  // namespace tessaret::tool
