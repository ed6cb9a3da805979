#include "opened_object.h"

#include <sys/stat.h>

#include "interrupt.h"
#include "platform/file_calls.h"

namespace tessaret::tool {

SourceFile ReadSource(const std::string& path, const SourceOptions& options, Host& host) {
  SourceFile source = LoadSource(path, options, host);
  StopIfInterrupted();
  const std::string subject = SubjectOf(path);
  host.messages.Detail(subject, DescribeEncoding(source, host));
  for (const std::string& warning : source.warnings) host.messages.Warn(subject, warning);
  if (!source.IsWhole()) host.messages.Error(subject, source.failure);
  return source;
}

bool IsSameFile(const std::string& path, const std::string& other) {
  struct stat status {};
  struct stat otherStatus {};
  return StatPath(path.c_str(), status).Ok() && StatPath(other.c_str(), otherStatus).Ok() &&
         status.st_dev == otherStatus.st_dev && status.st_ino == otherStatus.st_ino;
}

}  // namespace tessaret::tool
