// An open file as a stream with a window of bytes in hand. Readers look at the window in place and take from it; a large
// read goes past it, straight to where the bytes are wanted. Files, pipes and devices; one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/file_calls.h"

namespace tessaret {

class FileStream {
 public:
  /// The open file, or null with the system's error number in `error`. A directory opens and fails at its first read.
  /// Opening a named pipe waits for its other end, as everywhere.
  /// A device gives its first bytes only; reading on fails, because it may never end.
  static std::unique_ptr<FileStream> OpenForRead(const char* path, int& error);
  /// A stream of its own over what `descriptor` stands for, which stays with the caller and moves along where the system lets
  /// both share their place. Its start is the place at which the descriptor is now. Errors as above.
  static std::unique_ptr<FileStream> FromDescriptor(int descriptor, int& error);
  /// Creates or empties `path`.
  static std::unique_ptr<FileStream> OpenForWrite(const char* path, int& error);

  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;
  ~FileStream();

  /// The bytes in hand, from the one to be read next.
  [[nodiscard]] const std::uint8_t* Window() const { return window_.get() + begin_; }
  [[nodiscard]] std::size_t WindowSize() const { return end_ - begin_; }
  /// Steps over `count` bytes in hand. Requires: count <= WindowSize().
  void Consume(std::size_t count) { begin_ += count; }
  /// Brings at least `count` bytes into the window unless the end or an error comes first; true when they are there. The
  /// window may move. Requires: count <= kLargestWindow.
  bool Refill(std::size_t count);

  /// Reads `count` bytes, first from the window, then directly. The number read; less only at the end or on an error.
  std::uint64_t Read(void* data, std::uint64_t count);
  /// Moves over `count` bytes without handing them out. The number skipped; less only at the end or on an error. Of many bytes
  /// in a regular file only the last one is read, which tells whether the file still has them.
  std::uint64_t Skip(std::uint64_t count);
  /// Moves to `offset` from the start. A stream that cannot seek can still go anywhere within the window, and so back to its
  /// start while the first window lasts.
  bool Seek(std::uint64_t offset);

  /// Writes all, or sets the error.
  bool Write(const void* data, std::uint64_t count);
  bool Sync();
  /// Closes the descriptor; an error at this late moment is kept like any other. Done by the destructor otherwise.
  bool Close();

  /// True once a read has met the end: nothing comes behind the window.
  [[nodiscard]] bool AtEnd() const { return atEnd_; }
  /// The first error number met, or 0.
  [[nodiscard]] int Error() const { return error_; }
  /// How many bytes a regular file can still supply, by its size when this was first asked; for other streams the largest
  /// number.
  std::uint64_t LeftAtMost();
  [[nodiscard]] int Descriptor() const { return descriptor_; }

  static constexpr std::size_t kLargestWindow = std::size_t{64} * 1024;

 private:
  explicit FileStream(int descriptor) : descriptor_(descriptor) {}
  /// The stream of a file just opened. Closes the file when there is no memory for one.
  static std::unique_ptr<FileStream> Adopt(const FileResult& opened, int& error);

  void Fail(int error) {
    if (error_ == 0) error_ = error;
  }
  void AskSize();
  /// Moves `count` bytes beyond the window, which is empty, without reading them. False, with nothing changed, where that
  /// would not lead into a regular file.
  bool GoAhead(std::uint64_t count);
  /// False, with the error set, behind the first bytes of a device and after any error.
  bool MayReadOn();
  bool TakeWindow();
  /// How much to ask for when the window is filled up.
  [[nodiscard]] std::size_t NextRead() const;
  /// One system read; the number of bytes, 0 at the end or on an error.
  std::size_t ReadDirect(void* data, std::size_t count);

  int descriptor_;
  int error_ = 0;
  bool atEnd_ = false;
  bool sizeAsked_ = false;
  bool isDevice_ = false;     // known once the size was asked
  std::uint64_t size_ = 0;    // of a regular file from the start on; 0 where that is not known
  std::uint64_t start_ = 0;   // where in the file the stream starts
  std::uint64_t offset_ = 0;  // of the byte behind the window, from that start
  std::unique_ptr<std::uint8_t[]> window_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace tessaret
