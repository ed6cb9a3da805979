// The folder of real files and what independent programs say about each of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tessaret::test {

/// One line of manifest.tsv. Columns that tests do not use are left out.
struct ManifestRow {
  std::string path;            // as the manifest has it: below the parent of the corpus folder
  std::string sha256;          // of the file
  std::string transferSyntax;  // empty where the file does not say
  // 0, and an empty text, for a file without an image.
  std::uint64_t rows = 0;
  std::uint64_t columns = 0;
  std::uint64_t frames = 0;
  std::uint64_t samples = 0;
  std::uint64_t bitsAllocated = 0;
  std::string photometric;
  // Of the top level, group 2 included; nothing where no program could read the file.
  std::optional<std::uint64_t> elements;
  // Of the native pixel data in little endian, without what fills the value up; may be empty.
  std::string pixelSha256;
};

/// All lines, in their order; empty where the folder is absent. Read once.
const std::vector<ManifestRow>& Manifest();

/// The place of a file of the manifest.
std::string PathOf(const ManifestRow& row);

/// How many bytes of pixel data the image has; what is longer is filled up. Two chroma samples serve two pixels in
/// YBR_FULL_422.
std::uint64_t ImageBytes(const ManifestRow& row);

/// Files below the corpus folder that the manifest does not list, such as licences and tables.
std::vector<std::string> OtherFiles();

}  // namespace tessaret::test
