#include "opened_object.h"

#include <sys/stat.h>

#include "file_walk.h"
#include "interrupt.h"
#include "platform/file_calls.h"

namespace tessaret::tool {

SourceFile ReadSource(const std::string& path, const SourceOptions& options, Host& host) {
  SourceFile source = LoadSource(path, options, host);
  TellOf(source, path, host);
  return source;
}

void TellOf(const SourceFile& source, const std::string& path, Host& host) {
  StopIfInterrupted();
  const std::string subject = SubjectOf(path);
  host.messages.Detail(subject, DescribeEncoding(source, host));
  for (const std::string& warning : source.warnings) host.messages.Warn(subject, warning);
  if (!source.IsWhole()) host.messages.Error(subject, source.failure);
}

bool IsReadableAgain(const std::string& path) {
  struct stat status {};
  return path != kStandardInput && StatPath(path.c_str(), status).Ok() && S_ISREG(status.st_mode);
}

bool IsSameFile(const std::string& path, const std::string& other) {
  struct stat status {};
  struct stat otherStatus {};
  return StatPath(path.c_str(), status).Ok() && StatPath(other.c_str(), otherStatus).Ok() &&
         status.st_dev == otherStatus.st_dev && status.st_ino == otherStatus.st_ino;
}

}  // namespace tessaret::tool
