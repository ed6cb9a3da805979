// A data set in the DICOM JSON model (DICOM PS3.18, annex F), whole: what other programs read.
#pragma once

#include <string>

#include "json_writer.h"
#include "source_file.h"

namespace tessaret::tool {

/// Writes the object of `source` as one JSON object. Group lengths and the meta header are no part of the model. A value that was not loaded is the
/// member "BulkDataURI": `uri` with "#" and its path, as in "file:///a.dcm#7FE00010". Compressed pixel data is "InlineBinary" with its
/// fragments as they stand in a file. Throws CallError, Interrupted.
void DumpModel(const SourceFile& source, const std::string& uri, JsonWriter& json);

/// The "file:" URI of a path; empty for standard input.
std::string UriOf(const std::string& path);

}  // namespace tessaret::tool
