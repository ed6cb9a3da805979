// Writing a file whole or not at all. The bytes go to a file of another name in the same directory; Commit brings them to
// the medium and moves that file to its place in one step. Until then, and after any failure, what was at the place is
// untouched. A process that is killed leaves at most the file of the other name, which the next writer of the same place
// takes away.
#pragma once

#include <sys/stat.h>

#include <string>

namespace tessaret {

/// What becomes of a regular file that is at the place already.
enum class Existing { kReplace, kKeep };

class StagedFile {
 public:
  /// Prepares to write `path`; a symbolic link is followed, so that what it names is replaced and the link stays. What
  /// cannot be replaced is written directly: a path that is there and is no regular file (a device, a pipe), and a file
  /// without a name, which only a link in /dev/fd leads to. A path with a NUL in it names nothing, rather than what its
  /// first part names. With `existing` kKeep a file that is at the place, or comes there before the commit, stays, and the
  /// error is EEXIST.
  explicit StagedFile(std::string path, Existing existing = Existing::kReplace);
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;
  /// Takes the staged bytes away unless they were committed.
  ~StagedFile();

  /// Creates the staging file, empty. False with Error() set. Begun again, what was staged before is taken away.
  bool Begin();

  /// Where the bytes are to be written: open it for writing, write, close.
  [[nodiscard]] const std::string& StagingPath() const { return stagingPath_; }

  /// Syncs the staged bytes and moves them to their place, with the owner, where it may be given away, and the permissions
  /// and the access list of the file that was there, less the rights to run as its owner or group; a group that cannot be
  /// kept has no more rights than all others. False, with
  /// Error() set and the place untouched; EBADF where nothing was begun.
  bool Commit();

  /// The system's error number of the failed step, or 0.
  [[nodiscard]] int Error() const { return error_; }

 private:
  bool Fail(int error);
  /// Tries to create the file named by stagingPath_. True: created and locked, or failed for good with error_ set.
  bool TryStagingPath(mode_t mode);
  void Discard();
  /// Gives the staged file the rights of the file to be replaced. The system's error number, or 0.
  int TakeRightsOf(const struct stat& old);
  /// Gives the staged file its name. The system's error number, or 0.
  int MoveToPlace();

  std::string path_;  // with links resolved
  Existing existing_;
  bool direct_ = false;      // the place cannot be replaced
  std::string stagingPath_;  // equal to path_ when written directly
  int lock_ = -1;  // descriptor of the staging file, whose lock says that its writer lives
  int error_ = 0;
};

}  // namespace tessaret
