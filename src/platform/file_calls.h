// Every call by which the library touches the file system. Each is the system's own, repeated when a signal broke it,
// with a failure told as the error number; and each can be made to fail by a test.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tessaret {

enum class FileCall {
  kOpen,
  kClose,
  kRead,
  kWrite,
  kSeek,
  kStat,
  kSync,
  kRename,
  kLink,
  kRemove,
  kMode,  // owner and access list too
  kLock,
};

/// Consulted before every call. Returns 0 to let it through, or the error number with which the call is to fail. For
/// kRead and kWrite it may lower `count`, so that less is done than was asked for.
using FileCallHook = int (*)(FileCall call, std::size_t& count);

/// Installs `hook`, or none with null. For tests; not to be changed while another thread works with files.
void SetFileCallHook(FileCallHook hook);

/// From here on, or no longer, calls that may take long or bring something to its place fail with ECANCELED: opening, reading, writing,
/// syncing, renaming, linking. Closing and tidying up go on. For signal handlers and any thread; a call that waits is not broken by it.
/// Calls of sockets that may wait fail likewise, and the look-up of a name ends.
void CancelFileCalls(bool cancel) noexcept;
bool AreFileCallsCancelled() noexcept;

/// What a call answered: `value` when `error` is 0, otherwise the system's error number.
struct FileResult {
  std::int64_t value = 0;
  int error = 0;
  [[nodiscard]] bool Ok() const { return error == 0; }
};

/// Opens `path`; value is the descriptor, closed on exec. The caller closes it.
FileResult OpenFile(const char* path, int flags, mode_t mode = 0);
/// A further descriptor of what `descriptor` stands for, closed on exec. The caller closes it; both share one place.
FileResult DuplicateDescriptor(int descriptor);
/// Closes the descriptor, which is gone afterwards whatever the answer.
FileResult CloseFile(int descriptor);
/// Reads up to `count` bytes; value is how many came, 0 at the end.
FileResult ReadSome(int descriptor, void* data, std::size_t count);
/// Writes up to `count` bytes; value is how many went. EPIPE and EFBIG come without the signals that the system sends with
/// them, unless the caller holds those back itself.
FileResult WriteSome(int descriptor, const void* data, std::size_t count);
/// Writes all of `count` bytes.
FileResult WriteAll(int descriptor, const void* data, std::size_t count);
/// Moves to `offset` from the start.
FileResult SeekFile(int descriptor, std::uint64_t offset);
/// Where the descriptor is now, counted from the start; ESPIPE for pipes and sockets.
FileResult TellFile(int descriptor);
FileResult StatDescriptor(int descriptor, struct stat& status);
FileResult StatPath(const char* path, struct stat& status);
/// Brings the bytes to the medium. A file system without that notion counts as success.
FileResult SyncFile(int descriptor);
FileResult RenameFile(const char* from, const char* to);
/// Gives the file `from` the further name `to`; EEXIST when that is taken.
FileResult LinkFile(const char* from, const char* to);
FileResult RemoveFile(const char* path);
FileResult SetFileMode(int descriptor, mode_t mode);
/// Gives the open file to `user` and `group`; the largest number of either leaves it as it is.
FileResult SetFileOwner(int descriptor, uid_t user, gid_t group);
/// Gives the open file `to` the access list that `from` has beside its mode, or none where that has none.
FileResult CopyAccessList(const char* from, int to);
/// Takes the exclusive lock of the open file without waiting; EWOULDBLOCK when somebody else holds it.
FileResult LockFile(int descriptor);

/// True when `path` has a NUL in it, so that the system would take it for the path that ends there.
bool HasNul(const std::string& path);

/// The system's words for an error number.
std::string SystemErrorText(int error);
/// The same without memory, as long as `room` is there, which may be too short for all of them.
const char* SystemErrorText(int error, std::span<char> room);

}  // namespace tessaret
