#include "platform/file_stream.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

#include "platform/thread_keep.h"

namespace tessaret {
namespace {

// Most headers fit into the first read, so that reading headers only does not pay for pixels: one page of memory costs the
// system the least.
constexpr std::size_t kFirstRead = std::size_t{4} * 1024;
// Each further one is so many times as large as what was read before, up to the window: longer headers do not pay for much
// more either.
constexpr std::size_t kGrowth = 4;
// From here on bytes go straight to where they are wanted instead of through the window.
constexpr std::size_t kDirectRead = std::size_t{8} * 1024;

/// The window that the last stream of this thread left behind. Loading many small files would otherwise spend its time on
/// getting and giving back this one block.
struct IdleWindow {};
std::unique_ptr<std::uint8_t[]>* Idle() {
  return ThreadKept<std::unique_ptr<std::uint8_t[]>, IdleWindow>();
}

/// Waits until a descriptor that does not block has bytes, or a signal comes.
void WaitForBytes(int descriptor) {
  struct pollfd waited = {descriptor, POLLIN, 0};
  ::poll(&waited, 1, -1);
}

}  // namespace

std::unique_ptr<FileStream> FileStream::Adopt(const FileResult& opened, int& error) {
  error = opened.error;
  if (!opened.Ok()) return nullptr;
  const int descriptor = static_cast<int>(opened.value);
  std::unique_ptr<FileStream> stream(new (std::nothrow) FileStream(descriptor));
  if (!stream) {
    CloseFile(descriptor);
    error = ENOMEM;
  }
  return stream;
}

std::unique_ptr<FileStream> FileStream::OpenForRead(const char* path, int& error) {
  return Adopt(OpenFile(path, O_RDONLY), error);
}

std::unique_ptr<FileStream> FileStream::FromDescriptor(int descriptor, int& error) {
  auto stream = Adopt(DuplicateDescriptor(descriptor), error);
  if (!stream) return nullptr;
  const FileResult place = TellFile(descriptor);
  if (place.Ok()) {
    stream->start_ = static_cast<std::uint64_t>(place.value);
  } else if (place.error != ESPIPE) {
    error = place.error;
    return nullptr;
  }
  return stream;
}

std::unique_ptr<FileStream> FileStream::OpenForWrite(const char* path, int& error) {
  return Adopt(OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC, 0666), error);
}

FileStream::~FileStream() {
  Close();
  if (!window_) return;
  if (auto* idle = Idle(); idle != nullptr) *idle = std::move(window_);
}

bool FileStream::TakeWindow() {
  if (window_) return true;
  if (auto* idle = Idle(); idle != nullptr) window_ = std::move(*idle);
  if (!window_) window_.reset(new (std::nothrow) std::uint8_t[kLargestWindow]);
  if (!window_) Fail(ENOMEM);
  return window_ != nullptr;
}

std::size_t FileStream::NextRead() const {
  if (offset_ == 0 && end_ == 0) return kFirstRead;
  const std::size_t before =
      static_cast<std::size_t>(std::min<std::uint64_t>(offset_, kLargestWindow));
  return std::min(std::max(kFirstRead, kGrowth * before), kLargestWindow - end_);
}

std::size_t FileStream::ReadDirect(void* data, std::size_t count) {
  FileResult got = ReadSome(descriptor_, data, count);
  while (got.error == EAGAIN) {
    // Whoever opened a descriptor that was handed over may have meant it not to wait; a stream does.
    WaitForBytes(descriptor_);
    got = ReadSome(descriptor_, data, count);
  }
  if (!got.Ok()) {
    Fail(got.error);
    return 0;
  }
  const auto read = static_cast<std::size_t>(got.value);
  offset_ += read;
  // A regular file that gives less than was asked for, up to its size, has no more: that saves asking again.
  if (read == 0 || (size_ > 0 && read < count && offset_ >= size_)) atEnd_ = true;
  return read;
}

bool FileStream::Refill(std::size_t count) {
  if (WindowSize() >= count) return true;
  if (!MayReadOn() || atEnd_ || !TakeWindow()) return false;
  // What was taken of the first bytes stays in reach however small the pieces in which they come.
  if (begin_ > 0 && (offset_ >= kFirstRead || begin_ + count > kLargestWindow)) {
    std::memmove(window_.get(), Window(), WindowSize());
    end_ -= begin_;
    begin_ = 0;
  }
  while (WindowSize() < count && !atEnd_) {
    const std::size_t got = ReadDirect(window_.get() + end_, NextRead());
    if (got == 0) return false;
    end_ += got;
  }
  return WindowSize() >= count;
}

std::uint64_t FileStream::Read(void* data, std::uint64_t count) {
  auto* to = static_cast<std::uint8_t*>(data);
  const std::uint64_t inHand = std::min<std::uint64_t>(count, WindowSize());
  if (inHand > 0) std::memcpy(to, Window(), inHand);
  Consume(inHand);
  std::uint64_t done = inHand;
  while (done < count && error_ == 0 && !atEnd_) {
    // A small rest comes through the window, which then serves the reads behind it too.
    if (count - done < kDirectRead) {
      Refill(count - done);
      const std::uint64_t rest = std::min<std::uint64_t>(count - done, WindowSize());
      if (rest > 0) std::memcpy(to + done, Window(), rest);
      Consume(rest);
      return done + rest;
    }
    if (!MayReadOn()) break;
    // What comes directly passes the window by, which then no longer lies just before the place reached.
    begin_ = end_ = 0;
    const std::size_t got = ReadDirect(to + done, count - done);
    if (got == 0) break;
    done += got;
  }
  return done;
}

std::uint64_t FileStream::Skip(std::uint64_t count) {
  std::uint64_t done = std::min<std::uint64_t>(count, WindowSize());
  Consume(done);
  // What is but little leads to bytes that are wanted next, and are read with it.
  if (count - done > kLargestWindow && GoAhead(count - done - 1)) done = count - 1;
  while (done < count && Refill(1)) {
    const std::uint64_t step = std::min<std::uint64_t>(count - done, WindowSize());
    Consume(step);
    done += step;
  }
  return done;
}

bool FileStream::GoAhead(std::uint64_t count) {
  if (!MayReadOn() || LeftAtMost() == std::numeric_limits<std::uint64_t>::max() ||
      LeftAtMost() <= count || !SeekFile(descriptor_, start_ + offset_ + count).Ok())
    return false;
  begin_ = end_ = 0;
  offset_ += count;
  return true;
}

bool FileStream::Seek(std::uint64_t offset) {
  // The way to a mark near the start leads through the first window, which is wanted anyway.
  if (offset_ == 0 && end_ == 0 && offset < kFirstRead) Refill(offset);
  const std::uint64_t windowStart = offset_ - end_;
  if (offset >= windowStart && offset <= offset_) {
    begin_ = static_cast<std::size_t>(offset - windowStart);
    return true;
  }
  if (offset > std::numeric_limits<std::uint64_t>::max() - start_) return false;
  const FileResult moved = SeekFile(descriptor_, start_ + offset);
  if (!moved.Ok()) return false;
  begin_ = end_ = 0;
  offset_ = offset;
  atEnd_ = false;
  return true;
}

bool FileStream::Write(const void* data, std::uint64_t count) {
  if (error_ != 0) return false;
  const FileResult written = WriteAll(descriptor_, data, count);
  if (!written.Ok()) Fail(written.error);
  return written.Ok();
}

bool FileStream::Sync() {
  if (error_ != 0) return false;
  const FileResult synced = SyncFile(descriptor_);
  if (!synced.Ok()) Fail(synced.error);
  return synced.Ok();
}

bool FileStream::Close() {
  if (descriptor_ < 0) return error_ == 0;
  const FileResult closed = CloseFile(descriptor_);
  descriptor_ = -1;
  if (!closed.Ok()) Fail(closed.error);
  return error_ == 0;
}

void FileStream::AskSize() {
  if (sizeAsked_) return;
  sizeAsked_ = true;
  struct stat status {};
  if (!StatDescriptor(descriptor_, status).Ok()) return;
  // A size of 0 says nothing: the system's own pseudo files state it too.
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (S_ISREG(status.st_mode) && size > start_) size_ = size - start_;
  isDevice_ = S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
}

bool FileStream::MayReadOn() {
  if (offset_ > 0) {
    AskSize();
    // Devices may never end, and hold no files of ours.
    if (isDevice_) Fail(ENODEV);
  }
  return error_ == 0;
}

std::uint64_t FileStream::LeftAtMost() {
  AskSize();
  if (size_ == 0) return std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t beyondWindow = size_ > offset_ ? size_ - offset_ : 0;
  return beyondWindow + WindowSize();
}

}  // namespace tessaret
