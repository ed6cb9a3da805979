#include "standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace tessaret::tool {
namespace {

struct StandardStream {
  int descriptor;
  int uselessMode;  // the direction in which nobody uses it
};

constexpr StandardStream kStreams[] = {
    {STDIN_FILENO, O_WRONLY}, {STDOUT_FILENO, O_RDONLY}, {STDERR_FILENO, O_RDONLY}};

bool IsSet(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

}  // namespace

void FillClosedStandardStreams() {
  for (const StandardStream& stream : kStreams) {
    if (::fcntl(stream.descriptor, F_GETFD) != -1 || errno != EBADF) continue;
    // The lowest free number is given out, which is this one: those below it are in use by now.
    if (::open("/dev/null", stream.uselessMode) != stream.descriptor) return;
  }
}

bool IsLivelyTerminal(int descriptor) {
  const char* terminal = std::getenv("TERM");
  if (terminal == nullptr || std::string_view(terminal) == "dumb" || IsSet("NO_COLOR"))
    return false;
  return ::isatty(descriptor) == 1;
}

}  // namespace tessaret::tool
