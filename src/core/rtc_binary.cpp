#include "core/rtc_binary.h"

#include <algorithm>
#include <optional>

#include "base/bounded_reader.h"
#include "base/byte_order.h"
#include "base/text.h"

namespace tessaret {
namespace {

constexpr std::uint64_t kHeaderSize = 20;
constexpr std::uint64_t kReservedSize = 4;  // line feed, NUL and two bytes that nobody defined
constexpr std::uint64_t kKeySize = 4;
constexpr std::uint64_t kElementSize = 12;

struct Header {
  std::uint32_t count = 0;
  bool hasTexts = false;
};

std::optional<Header> ReadHeader(BoundedReader& reader) {
  if (!reader.Need(kHeaderSize)) return std::nullopt;
  const std::string_view mark(reinterpret_cast<const char*>(reader.Here()), kRtcBinaryMark.size());
  if (mark != kRtcBinaryMark || !reader.Skip(mark.size()) || !reader.Skip(kReservedSize)) {
    return std::nullopt;
  }
  const std::uint32_t count = reader.Little32().value_or(0);
  const bool hasTexts = reader.Little32().value_or(0) != 0;
  if (static_cast<std::int32_t>(count) < 0) return std::nullopt;
  return Header{count, hasTexts};
}

/// The next `count` records of `size` bytes, or as many bytes as are left.
BoundedReader TakeRecords(BoundedReader& reader, std::uint64_t count, std::uint64_t size) {
  // Both factors fit in 32 bits, the product in 64.
  return reader.Sub(std::min(count * size, reader.Left())).value_or(BoundedReader());
}

/// The next entry from the two arrays; nothing when they disagree on its tag.
std::optional<RtcDraft::Entry> ReadEntry(BoundedReader& keys, BoundedReader& elements) {
  const TagKey key = keys.Little32().value_or(0);
  const std::uint16_t group = elements.Little16().value_or(0);
  const std::uint16_t element = elements.Little16().value_or(0);
  const auto typeCode = static_cast<VrCode>(elements.Little32().value_or(0));
  // What was a pointer once.
  const bool stepped = elements.Skip(4);
  if (!stepped || key != MakeTagKey(group, element)) return std::nullopt;
  return RtcDraft::Entry{key, typeCode, RtcDraft::kNoText};
}

/// Reads as many whole entries as both arrays hold; false when the arrays contradict each other or their order.
bool ReadEntries(BoundedReader keys, BoundedReader elements, RtcDraft& draft) {
  const std::uint64_t count = std::min(keys.Left() / kKeySize, elements.Left() / kElementSize);
  draft.entries.reserve(draft.entries.size() + count);
  TagKey previous = 0;
  for (std::uint64_t at = 0; at < count; ++at) {
    const std::optional<RtcDraft::Entry> entry = ReadEntry(keys, elements);
    if (!entry || entry->key < previous) return false;
    previous = entry->key;
    draft.entries.push_back(*entry);
  }
  return true;
}

RtcBinaryResult ReadTexts(BoundedReader& reader, RtcDraft& draft, std::string& error) {
  draft.texts.reserve(draft.texts.size() + reader.Left());
  for (RtcDraft::Entry& entry : draft.entries) {
    const std::optional<std::string_view> text = reader.NulText();
    if (!text) {
      error = "the file ends within the descriptions";
      return RtcBinaryResult::kCut;
    }
    if (text->size() > kLongestToken) {
      error = Format("a description is longer than %zu characters", kLongestToken);
      return RtcBinaryResult::kDamaged;
    }
    entry.textAt = draft.KeepText(*text);
  }
  return RtcBinaryResult::kWhole;
}

/// Writes numbers and texts one after the other into bytes that are all 0.
class Writer {
 public:
  explicit Writer(std::uint8_t* at) : at_(at) {}
  void Little16(std::uint16_t value) {
    StoreLittle16(at_, value);
    at_ += sizeof value;
  }
  void Little32(std::uint32_t value) {
    StoreLittle32(at_, value);
    at_ += sizeof value;
  }
  void Text(std::string_view text) { at_ = std::copy(text.begin(), text.end(), at_); }
  void Zeros(std::size_t count) { at_ += count; }

 private:
  std::uint8_t* at_;
};

std::string_view TextOf(const _RTCElement& element) {
  return element.Description == nullptr ? std::string_view() : element.Description;
}

}  // namespace

RtcBinaryResult ReadRtcBinary(const void* bytes, std::size_t size, bool keepDescriptions,
                              RtcDraft& draft, bool& hasTexts, std::string& error) {
  BoundedReader reader(bytes, size);
  const std::optional<Header> header = ReadHeader(reader);
  if (!header) {
    error = "the header of the binary form is not sound";
    return RtcBinaryResult::kDamaged;
  }
  hasTexts = header->hasTexts;
  const BoundedReader keys = TakeRecords(reader, header->count, kKeySize);
  const BoundedReader elements = TakeRecords(reader, header->count, kElementSize);
  if (!ReadEntries(keys, elements, draft)) {
    error = "keys and elements of the binary form do not agree";
    return RtcBinaryResult::kDamaged;
  }
  if (draft.entries.size() < header->count) {
    error = Format("the file ends after %zu of %u entries", draft.entries.size(), header->count);
    return RtcBinaryResult::kCut;
  }
  if (!keepDescriptions || !hasTexts) return RtcBinaryResult::kWhole;
  return ReadTexts(reader, draft, error);
}

std::vector<std::uint8_t> WriteRtcBinary(const RtcTable& table, bool withDescriptions) {
  std::size_t size = kHeaderSize + table.Count * (kKeySize + kElementSize);
  for (std::uint32_t at = 0; withDescriptions && at < table.Count; ++at) {
    size += TextOf(table.Elements[at]).size() + 1;
  }
  std::vector<std::uint8_t> bytes(size);
  Writer writer(bytes.data());
  writer.Text(kRtcBinaryMark);
  writer.Text("\n");
  writer.Zeros(kReservedSize - 1);
  writer.Little32(table.Count);
  writer.Little32(withDescriptions ? 1 : 0);
  for (std::uint32_t at = 0; at < table.Count; ++at) writer.Little32(table.Keys[at]);
  for (std::uint32_t at = 0; at < table.Count; ++at) {
    writer.Little16(table.Elements[at].Group);
    writer.Little16(table.Elements[at].Element);
    writer.Little32(table.Elements[at].TypeCode);
    writer.Zeros(4);
  }
  for (std::uint32_t at = 0; withDescriptions && at < table.Count; ++at) {
    writer.Text(TextOf(table.Elements[at]));
    writer.Zeros(1);
  }
  return bytes;
}

}  // namespace tessaret
