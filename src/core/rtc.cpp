#include "core/rtc.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "core/rtc_binary.h"
#include "core/rtc_text.h"
#include "platform/file_calls.h"
#include "platform/whole_file.h"

namespace tessaret {
namespace {

// Short enough to be kept without an allocation.
constexpr const char* kTooLarge = "too many bytes";
constexpr const char* kNoEntry = "there is no entry; the first line of a text is never one";

/// Sorts by tag. Entries of one tag stay in the order of the file, so that the first of them is the one that counts.
void SortByTag(std::vector<RtcDraft::Entry>& entries) {
  const auto before = [](const RtcDraft::Entry& a, const RtcDraft::Entry& b) {
    return a.key < b.key;
  };
  // The usual file is in order already.
  if (std::is_sorted(entries.begin(), entries.end(), before)) return;
  std::stable_sort(entries.begin(), entries.end(), before);
}

/// The table of sorted entries; their descriptions point into `texts`.
std::unique_ptr<RtcTable> MakeTable(const std::vector<RtcDraft::Entry>& entries,
                                    const std::vector<char>& texts) {
  auto table = std::make_unique<RtcTable>(static_cast<std::uint32_t>(entries.size()));
  for (const RtcDraft::Entry& entry : entries) {
    const bool hasText = entry.textAt != RtcDraft::kNoText;
    table->Add(entry.key, {GroupOf(entry.key), ElementOf(entry.key), entry.typeCode,
                           hasText ? &texts[entry.textAt] : nullptr});
  }
  return table;
}

TagIndex IndexOf(const RtcTable& table) {
  std::vector<VrCode> types(table.Count);
  for (std::uint32_t at = 0; at < table.Count; ++at) types[at] = table.Elements[at].TypeCode;
  TagIndex index;
  index.Build(table.Keys.get(), types.data(), table.Count);
  return index;
}

}  // namespace

RTC::~RTC() = default;
DcmDictionary::~DcmDictionary() = default;

bool RTC::AttachRTC(const char* path) {
  std::vector<std::uint8_t> bytes;
  return ReadFile(path, bytes) && AttachBytes(bytes.data(), bytes.size());
}

bool RTC::AttachBytes(const void* bytes, std::size_t size) {
  if (size > kLargestDictionaryFile) return Refuse(kTooLarge);
  const std::string_view text(static_cast<const char*>(bytes), size);
  return text.starts_with(kRtcBinaryMark) ? LoadBinaryBytes(bytes, size) : LoadText(bytes, size);
}

bool RTC::LoadBinary(const char* path) {
  std::vector<std::uint8_t> bytes;
  return ReadFile(path, bytes) && LoadBinaryBytes(bytes.data(), bytes.size());
}

bool RTC::SaveBinary(const char* path) const {
  if (path == nullptr || !Table) return false;
  try {
    const std::vector<std::uint8_t> bytes = WriteRtcBinary(*Table, KeepDescriptions != 0);
    if (bytes.size() > kLargestDictionaryFile) return false;
    return WriteWholeFile(path, bytes.data(), bytes.size()) == 0;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

bool RTC::DetachRTC() {
  Table.reset();
  index_ = TagIndex();
  texts_ = std::vector<char>();
  return true;
}

bool RTC::ReadFile(const char* path, std::vector<std::uint8_t>& bytes) {
  try {
    if (path == nullptr) return Refuse("there is no path");
    const int error = ReadWholeFile(path, kLargestDictionaryFile, bytes);
    if (error == ENOMEM) return Refuse(kRtcNoMemory);
    return error == 0 || Refuse(SystemErrorText(error));
  } catch (const std::bad_alloc&) {
    return Refuse(kRtcNoMemory);
  }
}

bool RTC::LoadText(const void* bytes, std::size_t size) {
  try {
    RtcDraft draft;
    std::string error;
    const std::string_view text(static_cast<const char*>(bytes), size);
    if (!ParseRtcText(text, KeepDescriptions != 0, draft, error)) return Refuse(std::move(error));
    return Install(std::move(draft));
  } catch (const std::bad_alloc&) {
    return Refuse(kRtcNoMemory);
  }
}

bool RTC::LoadBinaryBytes(const void* bytes, std::size_t size) {
  try {
    RtcDraft draft;
    bool hasTexts = false;
    std::string error;
    const RtcBinaryResult result =
        ReadRtcBinary(bytes, size, KeepDescriptions != 0, draft, hasTexts, error);
    if (result == RtcBinaryResult::kWhole) {
      if (!Install(std::move(draft))) return false;
      if (!hasTexts) KeepDescriptions = 0;
      return true;
    }
    const bool holdsSome = result == RtcBinaryResult::kCut && !draft.entries.empty();
    if (holdsSome) Install(std::move(draft));
    return Refuse(std::move(error));
  } catch (const std::bad_alloc&) {
    return Refuse(kRtcNoMemory);
  }
}

bool RTC::Install(RtcDraft&& draft) {
  if (draft.entries.empty()) {
    DetachRTC();
    return Refuse(kNoEntry);
  }
  // All that needs memory comes first: without it the dictionary stays as it was.
  SortByTag(draft.entries);
  std::unique_ptr<RtcTable> table = MakeTable(draft.entries, draft.texts);
  TagIndex index = IndexOf(*table);
  DetachRTC();
  Table = std::move(table);
  index_ = std::move(index);
  texts_ = std::move(draft.texts);
  lastErrorText_.clear();
  return true;
}

bool RTC::Refuse(std::string why) {
  lastErrorText_ = std::move(why);
  return false;
}

const _RTCElement* RTC::Find(TagKey key) const {
  if (!Table) return nullptr;
  const std::int64_t at =
      index_.IsBuilt() ? index_.Find(key) : SearchKeys(Table->Keys.get(), Table->Count, key);
  return at < 0 ? nullptr : &Table->Elements[static_cast<std::size_t>(at)];
}

const TagIndex* RTC::PlainTypes() const {
  const std::type_info& type = typeid(*this);
  const bool plain = type == typeid(RTC) || type == typeid(DcmDictionary);
  return plain && index_.IsBuilt() ? &index_ : nullptr;
}

VrCode RTC::RunTimeClass(std::uint16_t group, std::uint16_t element, char* description) const {
  const TagKey key = MakeTagKey(group, element);
  if (description == nullptr && index_.IsBuilt()) return index_.TypeOf(key);
  if (description != nullptr) *description = '\0';
  const _RTCElement* entry = Find(key);
  if (entry == nullptr) return type_code::kNone;
  if (description != nullptr && entry->Description != nullptr) {
    std::memcpy(description, entry->Description, std::strlen(entry->Description) + 1);
  }
  return entry->TypeCode;
}

bool RTC::RunTimeClass(VR* vr) const {
  if (vr == nullptr) return false;
  if (vr->TypeCode != type_code::kNone && vr->TypeCode != type_code::UN) return true;
  const VrCode found = RunTimeClass(vr->Group, vr->Element, nullptr);
  const VrCode otherwise = vr->Items != nullptr ? type_code::SQ : type_code::UN;
  vr->TypeCode = found != type_code::kNone ? found : otherwise;
  return found != type_code::kNone;
}

// The elements are typed where they stand: taking them all out and in again would come to the same, but could lose some
// when memory runs out on the way.
bool RTC::RunTimeClass(DICOMObject* object) const {
  if (object == nullptr) return false;
  bool allKnown = true;
  std::vector<DICOMObject*> pending{object};
  while (!pending.empty()) {
    DICOMObject* current = pending.back();
    pending.pop_back();
    current->Iterating = 0;
    current->Elements.ForEach([&](VR& vr) {
      allKnown = RunTimeClass(&vr) && allKnown;
      current->LastPushedVR = &vr;
      if (vr.Items == nullptr) return;
      for (const ItemArray::Node* node = vr.Items->First; node != nullptr; node = node->next) {
        if (node->value != nullptr) pending.push_back(node->value);
      }
    });
  }
  return allKnown;
}

}  // namespace tessaret
