// Saving, and the transfer syntax of pixel data.
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "core/comp_engine.h"
#include "core/data_set_coder.h"
#include "core/element_reader.h"
#include "core/module_dictionaries.h"
#include "core/value_order.h"
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"
#include "platform/file_calls.h"

namespace tessaret {

using namespace dcm_object;

namespace {

constexpr const char* kExplicitUid = "1.2.840.10008.1.2.1";
constexpr const char* kBigEndianUid = "1.2.840.10008.1.2.2";

/// What (0002,0010) names; empty where it is not there.
std::string SyntaxIn(const DICOMObject& object) {
  const VR* const syntax = object.GetVR(GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag));
  if (syntax == nullptr || syntax->Data == nullptr) return {};
  return TransferSyntaxText(*syntax);
}

/// What will be written in big endian order.
bool IsForBigEndian(const DICOMObject& object) {
  const auto code = FindTransferSyntax(SyntaxIn(object));
  return code && IsBigEndian(*code);
}

/// A copy with the numbers in the other order.
std::unique_ptr<DICOMObject> Turned(const DICOMObject& object, const RTC* dictionary) {
  std::unique_ptr<DICOMObject> turned(object.Clone(true));
  if (!turned) throw std::bad_alloc();
  TurnForBigEndian(*turned, dictionary);
  return turned;
}

bool SaveTo(const char* path, std::int32_t mode, DataSetCoder& coder, const DICOMObject& object) {
  if (mode != SAVE_COMPLETE || !IsForBigEndian(object))
    return coder.SaveKeeping(path, mode, object);
  return coder.SaveFile(path, mode, *Turned(object, coder.Dictionary));
}

constexpr std::int32_t kSaveOptions = SAVE_KEEPS_FILES | SAVE_KEEPS_TYPES;

bool AreSaveArguments(_EnumSaveForm form, std::int32_t options) {
  return form >= SAVE_BARE && form <= SAVE_COMPLETE && (options & ~kSaveOptions) == 0;
}

/// Without a dictionary no types are looked up.
const RTC* DictionaryFor(std::int32_t options) {
  return (options & SAVE_KEEPS_TYPES) != 0 ? nullptr : &ModuleDictionary();
}

/// Has the engine compress `object`. The numbers are little endian here, whatever the name says; the engine goes by the name.
bool CompressTo(const std::string& syntax, DICOMObject& object, DcmCompEngine& engine) {
  if (!IsForBigEndian(object)) {
    const bool isDone = engine.Compress(&object, syntax.c_str(), nullptr);
    if (IsForBigEndian(object)) CallWidePixelsWords(object);
    return isDone;
  }
  const bool isDone = engine.Compress(&object, kExplicitUid, nullptr) &&
                      engine.Compress(&object, syntax.c_str(), nullptr);
  // Where nothing was compressed, because it failed or there are no bytes, the object says of itself what it said before.
  if (syntax != kExplicitUid && SyntaxIn(object) == kExplicitUid) {
    std::string words = std::move(engine.ErrorText);
    engine.Compress(&object, kBigEndianUid, nullptr);
    engine.ErrorText = std::move(words);
  }
  return isDone;
}

/// Why the last save failed; a place that cannot be opened has no words of the coder.
std::string WhyNotSaved(const DataSetCoder& coder) {
  if (coder.ErrorText() != nullptr) return coder.ErrorText();
  if (coder.LastOpenError() != 0) return SystemErrorText(coder.LastOpenError());
  return "The object cannot be encoded";
}

}  // namespace

Status CDCMObject::Save(const String& FileName) {
  return Answer([&] {
    const DICOMObject* const object = Object.Get();
    if (object == nullptr) return FailWith(kNothingToGetFrom);
    const std::string path = FileName.Utf8();
    if (!IsPath(path)) return FailWith(SystemErrorText(EINVAL).c_str());
    DataSetCoder coder(&ModuleDictionary());
    const bool saved = SaveTo(path.c_str(), SAVE_COMPLETE, coder, *object);
    return saved ? kOk : FailWith(WhyNotSaved(coder).c_str());
  });
}

Status CDCMObject::SaveFile(const String& FileName, _EnumSaveForm Form, std::int32_t Options) {
  if (Form == _EnumSaveForm{}) Form = SAVE_COMPLETE;
  if (!AreSaveArguments(Form, Options)) return kInvalidArgument;
  return AnswerOfFile([&] {
    const DICOMObject* const object = Object.Get();
    if (object == nullptr) return FailOfFile(kNothingToGetFrom);
    const std::string path = FileName.Utf8();
    if (!IsPath(path)) return FailOfFile(SystemErrorText(EINVAL).c_str());
    DataSetCoder coder(DictionaryFor(Options));
    coder.ReplacesFiles = (Options & SAVE_KEEPS_FILES) == 0;
    return SaveTo(path.c_str(), Form, coder, *object) ? kOk
                                                      : FailOfFile(WhyNotSaved(coder).c_str());
  });
}

Status CDCMObject::SaveBytes(_EnumSaveForm Form, std::int32_t Options, Variant* Bytes) {
  if (Bytes == nullptr) return kPointer;
  if (Form == _EnumSaveForm{}) Form = SAVE_COMPLETE;
  if (!AreSaveArguments(Form, Options)) return kInvalidArgument;
  return AnswerOfFile([&] {
    const DICOMObject* const object = Object.Get();
    if (object == nullptr) return FailOfFile(kNothingToGetFrom);
    DataSetCoder coder(DictionaryFor(Options));
    std::unique_ptr<DICOMObject> turned;
    if (Form == SAVE_COMPLETE && IsForBigEndian(*object))
      turned = Turned(*object, coder.Dictionary);
    std::vector<std::uint8_t> bytes;
    if (!coder.SaveToMemory(Form, turned ? *turned : *object, bytes))
      return FailOfFile(WhyNotSaved(coder).c_str());
    *Bytes = VariantArray::OfBytes(bytes);
    return kOk;
  });
}

Status CDCMObject::Translate(const String& trSyntax, VariantBool* Done) {
  if (Done == nullptr) return kPointer;
  return Answer([&] {
    DICOMObject* const object = Object.Get();
    if (object == nullptr) return FailWith(kNothingToPutInto);
    refusal_.reset();
    DcmCompEngine engine;
    if (!MakeNative(engine)) return FailWith(engine.ErrorText.c_str());
    if (trSyntax.IsNull()) return kOk;
    // A name as it stands in a file may be padded with a NUL, behind which nothing counts.
    const std::string syntax = trSyntax.Narrow().c_str();
    *Done = engine.CanCompress(object, syntax.c_str(), nullptr);
    if (!Done->IsTrue()) {
      refusal_ = std::make_unique<std::string>(std::move(engine.ErrorText));
      return kOk;
    }
    *Done = CompressTo(syntax, *object, engine);
    return Done->IsTrue() ? kOk : FailWith(engine.ErrorText.c_str());
  });
}

Status CDCMObject::get_Refusal(String* pVal) {
  if (pVal == nullptr) return kPointer;
  return AnswerOfFile([&] {
    *pVal = String::FromNarrow(refusal_ == nullptr ? "" : *refusal_);
    return kOk;
  });
}

}  // namespace tessaret
