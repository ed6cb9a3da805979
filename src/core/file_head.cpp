#include "core/file_head.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/text.h"
#include "core/element_reader.h"
#include "core/memory_buffer.h"

namespace tessaret {
namespace {

constexpr std::uint16_t kMetaGroup = 0x0002;
constexpr std::uint16_t kSyntaxElement = 0x0010;

/// The length of the element at `bytes` behind its tag; nothing when the bytes end.
std::optional<std::uint32_t> ReadLength(BoundedReader& bytes, bool isExplicit) {
  if (!isExplicit) return bytes.Little32();
  const auto first = bytes.U8();
  const auto second = bytes.U8();
  const auto half = bytes.Little16();
  if (!first || !second || !half) return std::nullopt;
  const auto type = static_cast<VrCode>(*first << 8 | *second);
  return HasLongForm(type) ? bytes.Little32() : std::optional<std::uint32_t>(*half);
}

/// Brings more into the window, where the reader finds it in its turn. False when nothing more comes or goes in.
bool LookFurther(FileStream& stream) {
  const std::size_t before = stream.WindowSize();
  stream.Refill(std::min(2 * before, FileStream::kLargestWindow));
  return stream.WindowSize() > before;
}

FileHead HeadOf(Buffer& buffer, std::int32_t code) {
  if (auto* memory = dynamic_cast<MemoryBuffer*>(&buffer); memory != nullptr) {
    const std::uint8_t* block = memory->LendBlock();
    return block == nullptr ? FileHead() : ReadFileHead({block, memory->Available()}, code);
  }
  const auto* file = dynamic_cast<FileBuffer*>(&buffer);
  FileStream* stream = file == nullptr ? nullptr : file->Stream.get();
  FileHead head;
  if (stream == nullptr) return head;
  // A pipe gives what its writer wrote so far, and a meta header may be longer than what is read at once.
  do {
    head = ReadFileHead({stream->Window(), stream->WindowSize()}, code);
  } while (head.isCut && LookFurther(*stream));
  return head;
}

}  // namespace

FileHead ReadFileHead(BoundedReader bytes, std::int32_t code) {
  FileHead head;
  std::uint64_t leftBehindLength = 0;
  for (;;) {
    const std::uint64_t left = bytes.Left();
    const auto group = bytes.Little16();
    const auto element = bytes.Little16();
    head.isCut = !group || !element;
    if (head.isCut) return head;
    if (!head.firstTag) head.firstTag = MakeTagKey(*group, *element);
    if (IsBigEndian(code)) {
      // Meta headers are little endian: this is a data set.
      head.firstTag = MakeTagKey(__builtin_bswap16(*group), __builtin_bswap16(*element));
      return head;
    }
    if (*group != kMetaGroup) {
      if (head.claimed) head.counted = leftBehindLength - left;
      return head;
    }
    const auto length = ReadLength(bytes, !IsImplicit(code));
    auto value = length ? bytes.Sub(*length) : std::nullopt;
    head.isCut = !value;
    if (head.isCut) return head;
    if (*element == 0 && value->Left() == sizeof(std::uint32_t)) {
      head.claimed = value->Little32();
      leftBehindLength = bytes.Left();
    }
    if (*element != kSyntaxElement || value->Left() == 0) continue;
    const std::string_view text(reinterpret_cast<const char*>(value->Here()), value->Left());
    head.syntax = Trimmed(text.substr(0, text.find('\0')));
  }
}

bool HeadNotingCoder::File_ParseRawVRIntoDCM(Buffer& buffer, DICOMObject& object,
                                             std::int32_t firstCode, bool loadPixels) {
  const bool isFirst = !std::exchange(isNoted_, true);
  if (isFirst) {
    Start = buffer.Position;
    Head = HeadOf(buffer, firstCode);
  }
  const bool answer = DataSetCoder::File_ParseRawVRIntoDCM(buffer, object, firstCode, loadPixels);
  if (isFirst) FirstCode = LastCode();
  End = buffer.Position;
  return answer;
}

}  // namespace tessaret
