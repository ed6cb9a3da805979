#include "unmade_file.h"

#include "source_file.h"

namespace tessaret::tool {

ExitCode UnmadeFile::ByInput(const std::string& why) const {
  host_.messages.Error(SubjectOf(input_), why);
  return NotWritten();
}

ExitCode UnmadeFile::NotWritten() const {
  host_.messages.Note(output_, "not written");
  return ExitCode::kInputFailed;
}

ExitCode UnmadeFile::ByOutput(const std::string& why) const {
  host_.messages.Error(output_, why);
  return ExitCode::kOutputFailed;
}

}  // namespace tessaret::tool
