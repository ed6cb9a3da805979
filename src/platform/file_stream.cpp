#include "platform/file_stream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

namespace tessaret {
namespace {

// A header fits into the first window, so that reading headers only does not pay for pixels; a small file fits whole.
constexpr std::size_t kFirstWindow = 8 * 1024;
constexpr std::size_t kSmallFile = 32 * 1024;
constexpr std::size_t kLaterWindow = 64 * 1024;

}  // namespace

std::unique_ptr<FileStream> FileStream::OpenForRead(const char* path, int& error) {
  const FileResult opened = OpenFile(path, O_RDONLY);
  error = opened.error;
  if (!opened.Ok()) return nullptr;
  std::unique_ptr<FileStream> stream(new FileStream(static_cast<int>(opened.value)));
  struct stat status {};
  // A size of 0 says nothing: the system's own pseudo files state it too.
  if (StatDescriptor(stream->descriptor_, status).Ok() && S_ISREG(status.st_mode)) {
    stream->size_ = static_cast<std::uint64_t>(status.st_size);
  }
  return stream;
}

std::unique_ptr<FileStream> FileStream::OpenForWrite(const char* path, int& error) {
  const FileResult opened = OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  error = opened.error;
  if (!opened.Ok()) return nullptr;
  return std::unique_ptr<FileStream>(new FileStream(static_cast<int>(opened.value)));
}

FileStream::~FileStream() { Close(); }

std::size_t FileStream::UsualWindow() const {
  if (capacity_ != 0) return size_ > 0 && size_ <= offset_ ? capacity_ : kLaterWindow;
  return size_ > 0 && size_ <= kSmallFile ? static_cast<std::size_t>(size_) + 1 : kFirstWindow;
}

bool FileStream::Grow(std::size_t capacity) {
  if (capacity <= capacity_) return true;
  std::unique_ptr<std::uint8_t[]> larger(new (std::nothrow) std::uint8_t[capacity]);
  if (!larger) {
    Fail(ENOMEM);
    return false;
  }
  if (end_ > begin_) std::memcpy(larger.get(), Window(), WindowSize());
  end_ -= begin_;
  begin_ = 0;
  window_ = std::move(larger);
  capacity_ = capacity;
  return true;
}

std::size_t FileStream::ReadDirect(void* data, std::size_t count) {
  const FileResult got = ReadSome(descriptor_, data, count);
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
  if (error_ != 0) return false;
  if (atEnd_) return false;
  if (!Grow(std::min(std::max(count, UsualWindow()), kLargestWindow))) return false;
  if (begin_ > 0) {
    std::memmove(window_.get(), Window(), WindowSize());
    end_ -= begin_;
    begin_ = 0;
  }
  while (WindowSize() < count) {
    const std::size_t got = ReadDirect(window_.get() + end_, capacity_ - end_);
    if (got == 0) return false;
    end_ += got;
  }
  return true;
}

std::uint64_t FileStream::Read(void* data, std::uint64_t count) {
  auto* to = static_cast<std::uint8_t*>(data);
  const std::uint64_t inHand = std::min<std::uint64_t>(count, WindowSize());
  if (inHand > 0) std::memcpy(to, Window(), inHand);
  Consume(inHand);
  std::uint64_t done = inHand;
  while (done < count && error_ == 0 && !atEnd_) {
    // A small rest comes through the window, which then serves the reads behind it too.
    if (count - done < kFirstWindow) {
      Refill(count - done);
      const std::uint64_t rest = std::min<std::uint64_t>(count - done, WindowSize());
      if (rest > 0) std::memcpy(to + done, Window(), rest);
      Consume(rest);
      return done + rest;
    }
    const std::size_t got = ReadDirect(to + done, count - done);
    if (got == 0) break;
    done += got;
  }
  return done;
}

std::uint64_t FileStream::Skip(std::uint64_t count) {
  std::uint64_t done = std::min<std::uint64_t>(count, WindowSize());
  Consume(done);
  while (done < count && Refill(1)) {
    const std::uint64_t step = std::min<std::uint64_t>(count - done, WindowSize());
    Consume(step);
    done += step;
  }
  return done;
}

bool FileStream::Seek(std::uint64_t offset) {
  const std::uint64_t windowStart = offset_ - end_;
  if (offset >= windowStart && offset <= offset_) {
    begin_ = static_cast<std::size_t>(offset - windowStart);
    // The end mark stands for having read past the last byte, which is no longer so.
    if (begin_ < end_) atEnd_ = false;
    return true;
  }
  const FileResult moved = SeekFile(descriptor_, offset);
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

std::uint64_t FileStream::LeftAtMost() const {
  if (size_ == 0) return std::numeric_limits<std::uint64_t>::max();
  const std::uint64_t beyondWindow = size_ > offset_ ? size_ - offset_ : 0;
  return beyondWindow + WindowSize();
}

}  // namespace tessaret
