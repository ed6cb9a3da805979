#include "platform/whole_file.h"

#include <cerrno>

#include "platform/file_stream.h"
#include "platform/hold_cancellation.h"

namespace tessaret {

int ReadWholeFile(const std::string& path, std::uint64_t most, std::vector<std::uint8_t>& bytes) {
  // Whoever reads a small file of ours may turn any exception into words of his own.
  const HoldCancellation hold;
  bytes.clear();
  if (HasNul(path)) return EINVAL;
  int error = 0;
  const auto stream = FileStream::OpenForRead(path.c_str(), error);
  if (!stream) return error;
  while (stream->Refill(1)) {
    if (stream->WindowSize() > most - bytes.size()) {
      bytes.clear();
      return EFBIG;
    }
    bytes.insert(bytes.end(), stream->Window(), stream->Window() + stream->WindowSize());
    stream->Consume(stream->WindowSize());
  }
  if (stream->Error() != 0) bytes.clear();
  return stream->Error();
}

int WriteWholeFile(const std::string& path, const void* bytes, std::uint64_t size,
                   Existing existing) {
  StagedFile staged(path, existing);
  if (!staged.Begin()) return staged.Error();
  int error = 0;
  const auto stream = FileStream::OpenForWrite(staged.StagingPath().c_str(), error);
  if (!stream) return error;
  if (!stream->Write(bytes, size) || !stream->Close()) return stream->Error();
  return staged.Commit() ? 0 : staged.Error();
}

}  // namespace tessaret
