// A DICOM file as the verbs want it: loaded as far as it reads, with what is known of its encoding and of its faults.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <tessaret/tessaret.hpp>

#include "doubts.h"
#include "host.h"
#include "listing.h"

namespace tessaret::tool {

struct SourceOptions {
  bool loadPixels = true;
  /// Instead of loading long pixel data, steps over it: its length is known, and its beginning.
  bool skipPixels = false;
  bool strict = false;  // refuse a file without the "DICM" mark
};

struct SourceFile {
  /// Its numbers are those of the host. Null when nothing of the file could be read; then `failure` says why.
  Ref<IDCMObject> object;
  /// What was in it when it was read.
  Listing listing;
  /// Why the file could not be read to its end; empty when it could.
  std::string failure;
  /// Where and in which element, as far as that is known, and what was odd on the way.
  Reading reading;
  /// What is odd, for a person to know, though it reads.
  std::vector<std::string> warnings;

  bool hasMark = false;  // "DICM" behind a preamble
  std::string syntax;    // transfer syntax UID of the meta header; empty without one
  _EnumDataEncoding encoding = ENCODING_NONE;  // of the data set
  std::uint64_t bytes = 0;                     // size of the file, or what was read of a stream

  [[nodiscard]] bool IsWhole() const { return object && failure.empty(); }
  [[nodiscard]] bool IsImplicit() const { return encoding == ENCODING_IMPLICIT_LITTLE; }
  [[nodiscard]] bool IsBigEndian() const { return encoding == ENCODING_EXPLICIT_BIG; }
};

/// Loads `path`, "-" for standard input. Never throws for what is wrong with the file. Throws DictionaryError and
/// std::bad_alloc.
SourceFile LoadSource(const std::string& path, const SourceOptions& options, Host& host);

/// What is known of the encoding of `source`, for people who look for a fault.
std::string DescribeEncoding(const SourceFile& source, Host& host);

/// What messages call `path`.
std::string SubjectOf(const std::string& path);

}  // namespace tessaret::tool
