#include "core/file_buffer.h"

#include <cerrno>
#include <typeinfo>

#include "platform/file_calls.h"

namespace tessaret {
namespace {

constexpr std::uint32_t kProbe = 1024;

}  // namespace

FileBuffer::~FileBuffer() { FileBuffer::Close(); }

std::int64_t FileBuffer::ReadBinary(void* data, std::uint32_t count) {
  // To try it on a file that is written would be an error, which ends the writing.
  if (!Stream || IsForWriting()) return -1;
  const std::uint64_t got = Stream->Read(data, count);
  return got == 0 ? -1 : static_cast<std::int64_t>(got);
}

int FileBuffer::SendBinary(const void* data, std::uint32_t count) {
  if (Stream) {
    Stream->Write(data, count);
  } else {
    error_ = EBADF;
  }
  return 1;
}

bool FileBuffer::IsEnd() {
  return !Stream || Stream->Error() != 0 || (Stream->AtEnd() && Stream->WindowSize() == 0);
}

std::uint32_t FileBuffer::Available() {
  if (InSize == 0 && !IsEnd()) Fill(kProbe);
  return LinkedBuffer::Available();
}

std::uint64_t FileBuffer::SuppliesAtMost() {
  const std::uint64_t waiting = LinkedBuffer::Available();
  if (!Stream) return waiting;
  const std::uint64_t inFile = Stream->LeftAtMost();
  return inFile > std::numeric_limits<std::uint64_t>::max() - waiting ? inFile : inFile + waiting;
}

void FileBuffer::Adopt(std::unique_ptr<FileStream> stream, int error) {
  Close();
  DropIncoming();
  Stream = std::move(stream);
  error_ = error;
}

bool FileBuffer::OpenForRead(const char* path) {
  int error = EINVAL;
  auto stream = path == nullptr ? nullptr : FileStream::OpenForRead(path, error);
  return TakeForRead(std::move(stream), error);
}

bool FileBuffer::TakeForRead(std::unique_ptr<FileStream> stream, int error) {
  Adopt(std::move(stream), error);
  directWriteSize_ = kNeverDirect;
  return Stream != nullptr;
}

bool FileBuffer::OpenForWrite(const char* path) {
  int error = EINVAL;
  auto stream = path == nullptr ? nullptr : FileStream::OpenForWrite(path, error);
  Adopt(std::move(stream), error);
  // Nobody sees in which portions a file was written.
  directWriteSize_ = static_cast<std::uint32_t>(kDefaultBreakSize);
  return Stream != nullptr;
}

bool FileBuffer::Close() {
  if (!Stream) return true;
  Stream->Close();
  error_ = Stream->Error();
  Stream.reset();
  return true;
}

bool FileBuffer::Seek(std::uint64_t offset) {
  if (!Stream) return false;
  // A stream that is written has no window to move in.
  const bool moved =
      IsForWriting() ? SeekFile(Stream->Descriptor(), offset).Ok() : Stream->Seek(offset);
  if (!moved) return false;
  DropIncoming();
  return true;
}

bool FileBuffer::HasError() { return Stream ? Stream->Error() != 0 : error_ != 0; }

std::string FileBuffer::ErrorText() {
  const int error = ErrorNumber();
  return error == 0 ? std::string() : SystemErrorText(error);
}

int FileBuffer::ErrorNumber() const {
  return Stream && Stream->Error() != 0 ? Stream->Error() : error_;
}

bool FileBuffer::ReadsPlainly() const { return typeid(*this) == typeid(FileBuffer); }

FileStream* FileBuffer::LendStream() {
  const bool lends = InSize == 0 && !IsForWriting() && ReadsPlainly();
  return lends ? Stream.get() : nullptr;
}

}  // namespace tessaret
