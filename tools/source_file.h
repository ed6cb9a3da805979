// A DICOM file as the verbs want it: loaded as far as it reads, with what is known of its encoding and of its faults.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/data_set_coder.h"
#include "core/dicom_object.h"
#include "core/rtc.h"
#include "doubts.h"

namespace tessaret::tool {

struct SourceOptions {
  bool loadPixels = true;
  bool strict = false;  // refuse a file without the "DICM" mark
};

struct SourceFile {
  /// Its numbers are those of the host. Null when nothing of the file could be read; then `failure` says why.
  std::unique_ptr<DICOMDataObject> object;
  /// Why the file could not be read to its end; empty when it could.
  std::string failure;
  /// Where and in which element, as far as that is known, and what was odd on the way.
  Reading reading;
  /// What is odd, for a person to know, though it reads.
  std::vector<std::string> warnings;

  bool hasMark = false;     // "DICM" behind a preamble
  bool bigEndian = false;   // the data set was encoded so
  std::string syntax;       // transfer syntax UID of the meta header; empty without one
  std::int32_t code = 0;    // how the data set is encoded, see core/transfer_syntax.h
  std::uint64_t bytes = 0;  // size of the file, or what was read of a stream

  [[nodiscard]] bool IsWhole() const { return object != nullptr && failure.empty(); }
};

/// Loads `path`, "-" for standard input. Never throws for what is wrong with the file.
SourceFile LoadSource(const std::string& path, const SourceOptions& options, const RTC& dictionary);

/// What is known of the encoding of `source`, for people who look for a fault.
std::string DescribeEncoding(const SourceFile& source);

/// What messages call `path`.
std::string SubjectOf(const std::string& path);

}  // namespace tessaret::tool
