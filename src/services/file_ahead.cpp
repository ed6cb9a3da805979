#include "services/file_ahead.h"

#include <chrono>
#include <utility>

#include "core/trace.h"
#include "net/contained.h"
#include "platform/file_calls.h"

namespace tessaret {
namespace {

// There is one object more in memory at a time.
constexpr off_t kMostBytes = off_t{16} << 20;
// A file system may tell two changes within this time by one time stamp.
constexpr std::chrono::seconds kStampsApart{2};

std::chrono::nanoseconds Since1970(const timespec& time) {
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

bool IsSettled(const struct stat& status) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return Since1970(status.st_ctim) + kStampsApart <= now;
}

bool IsSameTime(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

bool IsUnchanged(const struct stat& before, const struct stat& now) {
  return before.st_dev == now.st_dev && before.st_ino == now.st_ino &&
         before.st_size == now.st_size && IsSameTime(before.st_mtim, now.st_mtim) &&
         IsSameTime(before.st_ctim, now.st_ctim);
}

}  // namespace

void FileAhead::Load(const RTC* dictionary, const std::string& path) {
  object_.reset();
  if (DumpFlags != 0) return;
  // Its turn will tell what is wrong with one that throws.
  object_ = Contained(std::unique_ptr<DICOMDataObject>(), [&] {
    const bool isUsual = StatPath(path.c_str(), status_).Ok() && S_ISREG(status_.st_mode) &&
                         status_.st_size <= kMostBytes && IsSettled(status_);
    if (!isUsual) return std::unique_ptr<DICOMDataObject>();
    OutgoingFile file = LoadForSending(dictionary, path);
    return file.lack.empty() ? std::move(file.object) : nullptr;
  });
}

std::unique_ptr<DICOMDataObject> FileAhead::Take(const std::string& path) {
  struct stat now {};
  const bool isIt =
      object_ != nullptr && StatPath(path.c_str(), now).Ok() && IsUnchanged(status_, now);
  if (!isIt) object_.reset();
  return std::move(object_);
}

}  // namespace tessaret
