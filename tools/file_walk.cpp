#include "file_walk.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <set>
#include <utility>

#include "interrupt.h"
#include "platform/file_calls.h"

namespace tessaret::tool {
namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

/// The names in a directory in ascending order, without the two that every one has. 0, or the system's error number.
int ReadNames(const std::string& path, std::vector<std::string>& names) {
  const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(path.c_str()));
  if (!directory) return errno;
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(directory.get());
    if (entry == nullptr) break;
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  const int error = errno;
  std::sort(names.begin(), names.end());
  return error;
}

class Walk {
 public:
  Walk(FileList& list, Messages& messages, WalkDepth depth)
      : list_(list), messages_(messages), depth_(depth) {}

  void Add(const std::string& argument) {
    struct stat status {};
    const bool isDirectory = argument != kStandardInput &&
                             StatPath(argument.c_str(), status).Ok() && S_ISDIR(status.st_mode);
    if (!isDirectory) {
      list_.files.push_back(argument);
      return;
    }
    list_.fromDirectory = true;
    Enter(argument, status);
    while (!levels_.empty()) Step();
  }

 private:
  /// A directory that is being walked; its names are taken from the back.
  struct Level {
    std::string path;
    std::vector<std::string> names;
  };

  void Enter(const std::string& path, const struct stat& status) {
    if (!seen_.emplace(status.st_dev, status.st_ino).second) return;
    Level level{path, {}};
    if (const int error = ReadNames(path, level.names); error != 0) {
      messages_.Error(path, SystemErrorText(error));
      list_.complete = false;
    }
    std::reverse(level.names.begin(), level.names.end());
    levels_.push_back(std::move(level));
  }

  void Step() {
    StopIfInterrupted();
    Level& level = levels_.back();
    if (level.names.empty()) {
      levels_.pop_back();
      return;
    }
    std::string path = level.path;
    if (!path.ends_with('/')) path += '/';
    path += level.names.back();
    level.names.pop_back();
    Visit(path);
  }

  void Visit(const std::string& path) {
    struct stat status {};
    const FileResult found = StatPath(path.c_str(), status);
    if (found.Ok() && S_ISDIR(status.st_mode)) {
      if (depth_ == WalkDepth::kAll) Enter(path, status);
    } else if (!found.Ok() || S_ISREG(status.st_mode)) {
      // A link to nothing is kept too: its reader says what is wrong with it.
      list_.files.push_back(path);
    } else {
      messages_.Note(path, "left out, it is no regular file");
    }
  }

  FileList& list_;
  Messages& messages_;
  WalkDepth depth_;
  std::vector<Level> levels_;
  std::set<std::pair<dev_t, ino_t>> seen_;
};

}  // namespace

FileList FindFiles(const std::vector<std::string>& arguments, Messages& messages, WalkDepth depth) {
  FileList list;
  Walk walk(list, messages, depth);
  for (const std::string& argument : arguments) walk.Add(argument);
  return list;
}

}  // namespace tessaret::tool
