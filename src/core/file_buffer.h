// A file as a stream.
#pragma once

#include <memory>
#include <string>

#include "core/linked_buffer.h"
#include "platform/file_stream.h"

namespace tessaret {

class FileBuffer : public LinkedBuffer {
 public:
  FileBuffer() = default;
  /// Closes an open stream. What waits in Outgoing is lost.
  ~FileBuffer() override;

  /// The number of bytes read, -1 at the end and when nothing was read.
  std::int64_t ReadBinary(void* data, std::uint32_t count) override;
  /// Writes all bytes. Always 1: an error stays with the stream, see HasError.
  int SendBinary(const void* data, std::uint32_t count) override;
  /// True at the end of the file or after an error, and when nothing is open.
  bool IsEnd() override;
  /// Tries one Fill when nothing waits and the end has not been met; then InSize.
  std::uint32_t Available() override;
  std::uint64_t SuppliesAtMost() override;

  /// Opens for reading, in a way that lets others use the file too. False, with ErrorText set, when that failed or
  /// `path` is null. What was open is closed and what waited to be read is dropped; what waits to be written stays.
  virtual bool OpenForRead(const char* path);
  /// Creates or empties the file and opens it for writing. False as above.
  virtual bool OpenForWrite(const char* path);
  /// Closes if open; Stream is null afterwards. True.
  virtual bool Close();
  /// Moves to `offset` from the start of the file; bytes that wait to be read are dropped, Position stays, and bytes
  /// that wait to be written go to the new place. False, and nothing is dropped, when the stream cannot go there.
  virtual bool Seek(std::uint64_t offset);
  /// True after a failed open, read, write or close, also when the stream is closed since, and after bytes were sent where
  /// nothing is open.
  virtual bool HasError();
  /// The operating system's words for the last file error; empty when there was none.
  virtual std::string ErrorText();
  /// The number of that error; 0 when there was none.
  [[nodiscard]] int ErrorNumber() const;

  /// The stream for a reader that takes its bytes from the window in place; null when bytes wait in chunks, when
  /// nothing is open for reading, or when a descendant may read in its own way, see ReadsPlainly.
  FileStream* LendStream();

  std::unique_ptr<FileStream> Stream;  // null when closed

 protected:
  /// Takes what a descendant opened for reading, or null with the system's error number, as OpenForRead takes a file.
  bool TakeForRead(std::unique_ptr<FileStream> stream, int error);
  /// True when bytes are read as this class does. A descendant that only opens in its own way may say so, and is then read as
  /// fast as a file.
  [[nodiscard]] virtual bool ReadsPlainly() const;

 private:
  void Adopt(std::unique_ptr<FileStream> stream, int error);
  [[nodiscard]] bool IsForWriting() const { return directWriteSize_ != kNeverDirect; }

  int error_ = 0;  // the last file error outside Stream
};

}  // namespace tessaret
