// What stands at the head of a file, looked at beside the readers: they go by it, but do not keep all of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/bounded_reader.h"
#include "core/data_set_coder.h"
#include "core/tag.h"

namespace tessaret {

struct FileHead {
  std::optional<TagKey> firstTag;
  std::string syntax;  // transfer syntax UID of the meta header; empty without one
  std::optional<std::uint32_t> claimed;  // bytes of meta header behind (0002,0000) as it says
  std::optional<std::uint64_t> counted;  // as they are, when the end of the group was seen
  bool isCut = false;                    // the bytes ended before the group did
};

/// Looks through the meta header in `bytes`, whose first element has the form of `code`. Throws std::bad_alloc.
FileHead ReadFileHead(BoundedReader bytes, std::int32_t code);

/// A coder that looks at the head of what it is about to read. Bytes that arrive bit by bit are waited for as the
/// reader waits for them.
class HeadNotingCoder final : public DataSetCoder {
 public:
  using DataSetCoder::DataSetCoder;

  bool File_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object, std::int32_t firstCode,
                              bool loadPixels) override;

  FileHead Head;
  // How the data set was read up to its end, or a delimiter outside all sequences, behind which the form of the meta header
  // counts again.
  std::int32_t FirstCode = 0;
  std::uint32_t Start = 0;  // where the first element stands
  std::uint32_t End = 0;    // how far the reader came, modulo 4 GiB

 private:
  bool isNoted_ = false;
};

}  // namespace tessaret
