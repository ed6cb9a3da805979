#include "platform/staged_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "base/text.h"
#include "platform/file_calls.h"

namespace tessaret {
namespace {

// Writers of one place at one moment each take a name of their own.
constexpr int kMostWritersOfOnePlace = 64;

// As many links in a row as the system itself follows.
constexpr int kMostLinks = 40;

/// What `path` names behind all symbolic links; where nothing is there yet, the place that the last link leads to. What is
/// no regular file is written where it is, and the link to a pipe in /dev/fd names nothing that could be opened.
std::string ResolveLinks(std::string path) {
  if (HasNul(path)) return path;
  struct stat there {};
  if (::stat(path.c_str(), &there) == 0 && !S_ISREG(there.st_mode)) return path;
  for (int link = 0; link < kMostLinks; ++link) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                               &std::free);
    if (resolved) return resolved.get();
    std::error_code noLink;
    const std::filesystem::path target = std::filesystem::read_symlink(path, noLink);
    if (noLink) break;
    path = (std::filesystem::path(path).parent_path() / target).string();
  }
  return path;
}

std::string StagingName(const std::string& path, int slot) {
  const std::size_t slash = path.rfind('/');
  const std::size_t nameAt = slash == std::string::npos ? 0 : slash + 1;
  // The longest name that most file systems take, less what is put around it.
  constexpr std::size_t kMostOfName = NAME_MAX - 20;
  return path.substr(0, nameAt) + "." + path.substr(nameAt, kMostOfName) +
         Format(".tessaret-%d", slot);
}

bool IsStillNamed(const std::string& name, const struct stat& file) {
  struct stat named {};
  return StatPath(name.c_str(), named).Ok() && named.st_dev == file.st_dev &&
         named.st_ino == file.st_ino;
}

/// Removes a staging file whose writer is gone: nobody holds its lock. The lock came late if another writer has removed or
/// committed that file meanwhile; what bears the name now is then somebody else's.
void RemoveIfAbandoned(const std::string& name) {
  const FileResult opened = OpenFile(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!opened.Ok()) return;
  const int descriptor = static_cast<int>(opened.value);
  struct stat status {};
  const bool ours = StatDescriptor(descriptor, status).Ok() && S_ISREG(status.st_mode) &&
                    status.st_uid == ::geteuid();
  if (ours && LockFile(descriptor).Ok() && IsStillNamed(name, status)) RemoveFile(name.c_str());
  CloseFile(descriptor);
}

}  // namespace

StagedFile::StagedFile(std::string path) : path_(ResolveLinks(std::move(path))) {}

StagedFile::~StagedFile() { Discard(); }

bool StagedFile::Fail(int error) {
  error_ = error;
  Discard();
  return false;
}

void StagedFile::Discard() {
  if (lock_ < 0) return;
  RemoveFile(stagingPath_.c_str());
  CloseFile(lock_);
  lock_ = -1;
}

bool StagedFile::Begin() {
  Discard();
  error_ = 0;
  if (path_.empty()) return Fail(ENOENT);
  if (HasNul(path_)) return Fail(EINVAL);
  struct stat status {};
  const FileResult there = StatPath(path_.c_str(), status);
  if (!there.Ok() && there.error != ENOENT) return Fail(there.error);
  if (there.Ok() && S_ISDIR(status.st_mode)) return Fail(EISDIR);
  if (there.Ok() && !S_ISREG(status.st_mode)) {
    stagingPath_ = path_;
    return true;
  }
  // Replacing a file asks for rights to its directory only; a file that is write-protected is not to be replaced.
  if (there.Ok() && ::access(path_.c_str(), W_OK) != 0) return Fail(errno);
  // Never open to more readers than the file to be replaced, not even on the way.
  const mode_t mode = there.Ok() ? (status.st_mode & 0666) | 0600 : 0666;
  for (int slot = 0; slot < kMostWritersOfOnePlace; ++slot) {
    stagingPath_ = StagingName(path_, slot);
    if (TryStagingPath(mode)) return error_ == 0;
    RemoveIfAbandoned(stagingPath_);
    if (TryStagingPath(mode)) return error_ == 0;
  }
  return Fail(EBUSY);
}

bool StagedFile::TryStagingPath(mode_t mode) {
  const FileResult opened =
      OpenFile(stagingPath_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
  if (opened.error == EEXIST) return false;
  if (!opened.Ok()) {
    error_ = opened.error;
    return true;
  }
  const int descriptor = static_cast<int>(opened.value);
  const FileResult locked = LockFile(descriptor);
  struct stat status {};
  // Between the creation and the lock another writer may have taken the file for an abandoned one and removed it.
  const bool ours = locked.error != EWOULDBLOCK && StatDescriptor(descriptor, status).Ok() &&
                    status.st_nlink == 1;
  if (!ours) {
    CloseFile(descriptor);
    return false;
  }
  lock_ = descriptor;
  return true;
}

bool StagedFile::Commit() {
  if (error_ == 0 && stagingPath_.empty()) return Fail(EBADF);
  if (lock_ < 0) return error_ == 0;
  struct stat status {};
  const FileResult there = StatPath(path_.c_str(), status);
  if (!there.Ok() && there.error != ENOENT) return Fail(there.error);
  if (there.Ok()) {
    const FileResult mode = SetFileMode(lock_, status.st_mode & 07777);
    if (!mode.Ok()) return Fail(mode.error);
  }
  const FileResult synced = SyncFile(lock_);
  if (!synced.Ok()) return Fail(synced.error);
  const FileResult moved = RenameFile(stagingPath_.c_str(), path_.c_str());
  if (!moved.Ok()) return Fail(moved.error);
  CloseFile(lock_);
  lock_ = -1;
  return true;
}

}  // namespace tessaret
