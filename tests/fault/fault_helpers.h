// What the fault tests of files have in common.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "support/memory_file.h"

namespace tessaret::test {

struct Loaded {
  std::unique_ptr<DICOMDataObject> object;
  std::optional<std::string> error;
  ParseStop stop;
};

struct LoadHow {
  bool loadPixels = true;
  bool strict = false;
  const RTC* dictionary = nullptr;
  FileBuffer* buffer = nullptr;
};

inline Loaded LoadPath(const std::string& path, const LoadHow& how = {}) {
  DataSetCoder coder(how.dictionary);
  Loaded loaded;
  loaded.object = coder.LoadFile(path.c_str(), how.loadPixels, how.strict, how.buffer);
  loaded.error = ErrorOf(coder);
  loaded.stop = coder.LastStop();
  return loaded;
}

inline Loaded LoadFileOf(const Bytes& bytes, const LoadHow& how = {}) {
  const MemoryFile file(bytes);
  return LoadPath(file.Path(), how);
}

inline Loaded LoadBlock(const Bytes& bytes, const LoadHow& how = {}) {
  DataSetCoder coder(how.dictionary);
  Loaded loaded;
  loaded.object = coder.LoadMemory(bytes.data(), bytes.size(), how.loadPixels, how.strict);
  loaded.error = ErrorOf(coder);
  loaded.stop = coder.LastStop();
  return loaded;
}

/// The first `size` bytes.
inline Bytes Cut(const Bytes& bytes, std::size_t size) {
  return Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
}

/// Twenty files in turn in the three encodings, with a bit of everything. All differ, and each is the same every time.
inline constexpr std::uint32_t kSeedFiles = 20;
inline Encoding EncodingOfSeed(std::uint32_t seed) { return kAllEncodings[seed % 3]; }
inline Bytes SeedFile(std::uint32_t seed) {
  const Encoding encoding = EncodingOfSeed(seed);
  return FileOf(encoding, RandomDataSet(encoding, 1000 + seed, 2));
}

/// A patient's name and then what a test adds.
inline Bytes PatientAnd(Encoding encoding, const Bytes& rest) {
  return DataSetBuilder(encoding).Element(0x0010, 0x0010, "PN", "Doe^John").Raw(rest);
}

inline bool HasPatient(const DICOMObject& object) {
  const VR* name = object.GetVR(0x0010, 0x0010);
  return name != nullptr && ValueText(*name) == "Doe^John";
}

}  // namespace tessaret::test
