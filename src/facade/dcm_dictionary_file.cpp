// Files of the data dictionary, and all UIDs.
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "base/checked.h"
#include "base/text.h"
#include "core/module_dictionaries.h"
#include "core/rtc_binary.h"
#include "core/rtc_text.h"
#include "facade/class_ids.h"
#include "facade/dcm_dictionary.h"
#include "facade/guard.h"
#include "platform/file_calls.h"
#include "platform/whole_file.h"

namespace tessaret {
namespace {

template <class Work>
Status Answer(Work work) {
  return Guarded<IDcmDictionaryFile>(class_id::kDcmDictionary, work);
}

Status FailWith(const std::string& words) {
  return Report(class_id::kDcmDictionary, words.c_str(), IDcmDictionaryFile::kId);
}

/// The words of an error number; none where memory ran out, which the edge has words for.
std::string WordsOf(int error) {
  if (error == ENOMEM) throw std::bad_alloc();
  return SystemErrorText(error);
}

/// The dictionary in the bytes of a file; null, with the reason in `why`, where they are none.
std::unique_ptr<RTC> DictionaryIn(std::span<const std::uint8_t> file, std::string& why) {
  auto loaded = std::make_unique<RTC>();
  if (loaded->AttachBytes(file.data(), file.size())) return loaded;
  // The file may be as it should.
  if (loaded->LastErrorText() == kRtcNoMemory) throw std::bad_alloc();
  why = loaded->LastErrorText();
  return nullptr;
}

/// The bytes of a file of that form. Empty, with words in `error`, where the form cannot hold an entry.
std::vector<std::uint8_t> FileOf(const RTC& dictionary, bool isBinary, std::string& error) {
  static const RtcTable none(0);
  const RtcTable& table = dictionary.Table ? *dictionary.Table : none;
  if (isBinary) return WriteRtcBinary(table, dictionary.KeepDescriptions != 0);
  const std::string text = WriteRtcText(table, error);
  return {text.begin(), text.end()};
}

}  // namespace

Status CDcmDictionary::LoadFile(const String& FileName) {
  return Answer([&] {
    const std::string path = FileName.Utf8();
    std::vector<std::uint8_t> bytes;
    std::string why;
    std::unique_ptr<RTC> loaded;
    const int error = ReadWholeFile(path, kLargestDictionaryFile, bytes);
    if (error == 0) loaded = DictionaryIn(bytes, why);
    if (error != 0) why = WordsOf(error);
    if (loaded == nullptr) return FailWith("Error reading [" + path + "]: " + why);
    own_ = std::move(loaded);
    return kOk;
  });
}

Status CDcmDictionary::LoadBytes(const Variant& Bytes) {
  const VariantArray* const array = Bytes.AsArray();
  if (array == nullptr || array->Type() != VariantType::kByte || array->Bounds().size() != 1)
    return kTypeMismatch;
  return Answer([&] {
    std::string why;
    std::unique_ptr<RTC> loaded = DictionaryIn(array->Bytes(), why);
    if (loaded == nullptr) return FailWith("Error reading dictionary: " + why);
    own_ = std::move(loaded);
    return kOk;
  });
}

Status CDcmDictionary::Unload() {
  own_.reset();
  return kOk;
}

Status CDcmDictionary::get_ElementsCount(std::int32_t* pVal) {
  if (pVal == nullptr) return kPointer;
  const auto& table = Elements().Table;
  *pVal = table ? SaturatingCast<std::int32_t>(table->Count) : 0;
  return kOk;
}

Status CDcmDictionary::GetElementAt(std::int32_t Idx, std::int32_t* Group, std::int32_t* Element,
                                    String* TypeCode, String* description, VariantBool* Found) {
  if (Group == nullptr || Element == nullptr || TypeCode == nullptr || description == nullptr ||
      Found == nullptr)
    return kPointer;
  return Answer([&] {
    const auto& table = Elements().Table;
    const bool isThere = Idx >= 0 && table && static_cast<std::uint32_t>(Idx) < table->Count;
    if (!isThere) {
      *Found = false;
      return kOk;
    }
    const _RTCElement& entry = table->Elements[static_cast<std::uint32_t>(Idx)];
    const char letters[] = {FirstLetter(entry.TypeCode), SecondLetter(entry.TypeCode)};
    String name = String::FromNarrow(entry.Description == nullptr ? "" : entry.Description);
    // All of it or, without memory, nothing.
    *TypeCode = String::FromNarrow({letters, 2});
    *description = std::move(name);
    *Group = entry.Group;
    *Element = entry.Element;
    *Found = true;
    return kOk;
  });
}

Status CDcmDictionary::get_UIDsCount(std::int32_t* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = SaturatingCast<std::int32_t>(ModuleUidDictionary().Entries.size());
  return kOk;
}

Status CDcmDictionary::GetUIDAt(std::int32_t Idx, String* UID, VariantBool* Found) {
  if (UID == nullptr || Found == nullptr) return kPointer;
  return Answer([&] {
    const auto& entries = ModuleUidDictionary().Entries;
    const bool isThere = Idx >= 0 && static_cast<std::size_t>(Idx) < entries.size();
    if (isThere) *UID = String::FromNarrow(std::next(entries.begin(), Idx)->second.UID);
    *Found = isThere;
    return kOk;
  });
}

Status CDcmDictionary::GetBytes(VariantBool Binary, Variant* Bytes) {
  if (Bytes == nullptr) return kPointer;
  return Answer([&] {
    std::string error;
    const std::vector<std::uint8_t> bytes = FileOf(Elements(), Binary.IsTrue(), error);
    if (!error.empty()) return FailWith(error);
    *Bytes = VariantArray::OfBytes(bytes);
    return kOk;
  });
}

Status CDcmDictionary::SaveFile(const String& FileName, VariantBool Binary,
                                VariantBool KeepsFiles) {
  return Answer([&] {
    std::string why;
    const std::vector<std::uint8_t> bytes = FileOf(Elements(), Binary.IsTrue(), why);
    if (!why.empty()) return FailWith(why);
    // A larger one could not be loaded.
    const int error =
        bytes.size() > kLargestDictionaryFile
            ? EFBIG
            : WriteWholeFile(FileName.Utf8(), bytes.data(), bytes.size(),
                             KeepsFiles.IsTrue() ? Existing::kKeep : Existing::kReplace);
    return error == 0 ? kOk : FailWith(WordsOf(error));
  });
}

}  // namespace tessaret
