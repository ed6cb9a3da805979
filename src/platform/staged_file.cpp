#include "platform/staged_file.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>
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

// What the system puts behind the name in a link to a file without one.
constexpr std::string_view kNamelessMark = " (deleted)";

bool IsStillNamed(const std::string& name, const struct stat& file) {
  struct stat named {};
  return StatPath(name.c_str(), named).Ok() && named.st_dev == file.st_dev &&
         named.st_ino == file.st_ino;
}

/// What `path` names behind all symbolic links; where nothing is there yet, the place that the last link leads to.
std::string ResolveLinks(std::string path) {
  if (HasNul(path)) return path;
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

/// Whether what is at `path` can only be written where it is: no regular file, or one that has lost its name or never had
/// one. The link to such a file in /dev/fd reads as a name that belongs to nothing, or to another file.
bool MustBeWrittenInPlace(const std::string& path) {
  struct stat there {};
  if (HasNul(path) || ::stat(path.c_str(), &there) != 0) return false;
  if (!S_ISREG(there.st_mode)) return !S_ISDIR(there.st_mode);
  const std::string resolved = ResolveLinks(path);
  return resolved != path && resolved.ends_with(kNamelessMark) && !IsStillNamed(resolved, there);
}

std::string StagingName(const std::string& path, int slot) {
  const std::size_t slash = path.rfind('/');
  const std::size_t nameAt = slash == std::string::npos ? 0 : slash + 1;
  // The longest name that most file systems take, less what is put around it.
  constexpr std::size_t kMostOfName = NAME_MAX - 20;
  return path.substr(0, nameAt) + "." + path.substr(nameAt, kMostOfName) +
         Format(".tessaret-%d", slot);
}

/// Removes a staging file whose writer is gone: nobody holds its lock. The lock came late if another writer has removed or
/// committed that file meanwhile; what bears the name now is then somebody else's.
/// Taken away is what the caller or `owner`, whom the place belongs to, left.
void RemoveIfAbandoned(const std::string& name, uid_t owner) {
  const FileResult opened = OpenFile(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (!opened.Ok()) return;
  const int descriptor = static_cast<int>(opened.value);
  struct stat status {};
  const bool ours = StatDescriptor(descriptor, status).Ok() && S_ISREG(status.st_mode) &&
                    (status.st_uid == ::geteuid() || status.st_uid == owner);
  if (ours && LockFile(descriptor).Ok() && IsStillNamed(name, status)) RemoveFile(name.c_str());
  CloseFile(descriptor);
}

constexpr auto kSameUser = static_cast<uid_t>(-1);
constexpr auto kSameGroup = static_cast<gid_t>(-1);

/// Gives an open file the group of `old`. False where that is not allowed.
bool KeepGroup(int descriptor, const struct stat& old) {
  struct stat now {};
  if (!StatDescriptor(descriptor, now).Ok()) return false;
  return now.st_gid == old.st_gid || SetFileOwner(descriptor, kSameUser, old.st_gid).Ok();
}

/// The rights that are left when the file has another group: those that both the old group and all others had.
mode_t WithoutGroup(mode_t mode) {
  const mode_t both = (mode >> 3) & mode & 07;
  return (mode & 0700) | both << 3 | both;
}

}  // namespace

StagedFile::StagedFile(std::string path, Existing existing)
    : existing_(existing), direct_(MustBeWrittenInPlace(path)) {
  path_ = direct_ ? std::move(path) : ResolveLinks(std::move(path));
}

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
  const uid_t owner = there.Ok() ? status.st_uid : ::geteuid();
  if (there.Ok() && S_ISREG(status.st_mode) && existing_ == Existing::kKeep) {
    // A writer that was killed once its file had its name may have left the other name behind.
    for (int slot = 0; !direct_ && slot < kMostWritersOfOnePlace; ++slot) {
      RemoveIfAbandoned(StagingName(path_, slot), owner);
    }
    return Fail(EEXIST);
  }
  if (direct_ || (there.Ok() && !S_ISREG(status.st_mode))) {
    stagingPath_ = path_;
    return true;
  }
  // Replacing a file asks for rights to its directory only; a file that is write-protected is not to be replaced.
  if (there.Ok() && ::access(path_.c_str(), W_OK) != 0) return Fail(errno);
  // Never open to more readers than the file to be replaced, not even on the way.
  const mode_t mode = there.Ok() ? 0600 : 0666;
  for (int slot = 0; slot < kMostWritersOfOnePlace; ++slot) {
    stagingPath_ = StagingName(path_, slot);
    if (TryStagingPath(mode)) return error_ == 0;
    RemoveIfAbandoned(stagingPath_, owner);
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

int StagedFile::TakeRightsOf(const struct stat& old) {
  // To run as its owner or group is no right that new bytes may have.
  const mode_t mode = old.st_mode & 0777;
  const bool kept = KeepGroup(lock_, old) && CopyAccessList(path_.c_str(), lock_).Ok();
  const FileResult set = SetFileMode(lock_, kept ? mode : WithoutGroup(mode));
  // Last, since nothing more can be set on a file that is another's. Where only its owner may give a file away it stays ours.
  if (set.Ok() && old.st_uid != ::geteuid()) SetFileOwner(lock_, old.st_uid, kSameGroup);
  return set.error;
}

int StagedFile::MoveToPlace() {
  if (existing_ == Existing::kKeep) {
    // A link is made only where nothing is, however short the moment since that was looked at. A second name that cannot be
    // removed does no harm, and the next writer takes it away.
    const int error = LinkFile(stagingPath_.c_str(), path_.c_str()).error;
    if (error == 0) {
      RemoveFile(stagingPath_.c_str());
      return 0;
    }
    // Some file systems have no links.
    if (error != EPERM && error != EOPNOTSUPP && error != ENOSYS) return error;
    struct stat status {};
    const FileResult there = StatPath(path_.c_str(), status);
    if (there.error != ENOENT) return there.Ok() ? EEXIST : there.error;
  }
  return RenameFile(stagingPath_.c_str(), path_.c_str()).error;
}

bool StagedFile::Commit() {
  if (error_ == 0 && stagingPath_.empty()) return Fail(EBADF);
  if (lock_ < 0) return error_ == 0;
  struct stat status {};
  const FileResult there = StatPath(path_.c_str(), status);
  if (!there.Ok() && there.error != ENOENT) return Fail(there.error);
  if (there.Ok()) {
    if (const int error = TakeRightsOf(status); error != 0) return Fail(error);
  }
  const FileResult synced = SyncFile(lock_);
  if (!synced.Ok()) return Fail(synced.error);
  if (const int error = MoveToPlace(); error != 0) return Fail(error);
  CloseFile(lock_);
  lock_ = -1;
  return true;
}

}  // namespace tessaret
