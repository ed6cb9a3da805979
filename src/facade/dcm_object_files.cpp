// Files, and the transfer syntax of pixel data.
#include <cerrno>
#include <string>
#include <utility>

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

bool SaveTurned(DataSetCoder& coder, const char* path, const DICOMObject& object) {
  const std::unique_ptr<DICOMObject> turned(object.Clone(true));
  if (!turned) throw std::bad_alloc();
  TurnForBigEndian(*turned, coder.Dictionary);
  return coder.SaveFile(path, 3, *turned);
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

/// A path with a NUL in it would be cut there, and name another file.
bool IsPath(const std::string& path) { return path.find('\0') == std::string::npos; }

Status FailWithoutPath() { return FailWith(SystemErrorText(EINVAL).c_str()); }

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
    if (!IsPath(path)) return FailWithoutPath();
    DataSetCoder coder(&ModuleDictionary());
    const bool saved = IsForBigEndian(*object) ? SaveTurned(coder, path.c_str(), *object)
                                               : coder.SaveKeeping(path.c_str(), 3, *object);
    return saved ? kOk : FailWith(WhyNotSaved(coder).c_str());
  });
}

Status CDCMObject::Load(const String& FileName, VariantBool LoadPixels) {
  LetGo();
  try {
    return LoadFrom(FileName.Utf8(), LoadPixels.IsTrue());
  } catch (const abi::__forced_unwind&) {
    throw;
  } catch (...) {
    return FailWith("Not a DICOM FILE");
  }
}

Status CDCMObject::LoadFrom(const std::string& path, bool loadPixels) {
  if (!IsPath(path)) return FailWithoutPath();
  DataSetCoder coder(&ModuleDictionary());
  std::unique_ptr<DICOMObject> loaded = coder.LoadFile(path.c_str(), loadPixels, false);
  if (!loaded) return FailWith(coder.ErrorText());
  if (IsBigEndian(coder.LastCode())) SwapNumbers(*loaded);
  Replace(std::move(loaded));
  if (!loadPixels) return kOk;
  DcmCompEngine engine;
  return engine.Decompress(Object.Get(), nullptr, nullptr)
             ? kOk
             : FailWith("Unsupported Encapsulated Transfer Syntax");
}

Status CDCMObject::Translate(const String& trSyntax, VariantBool* Done) {
  if (Done == nullptr) return kPointer;
  return Answer([&] {
    DICOMObject* const object = Object.Get();
    if (object == nullptr) return FailWith(kNothingToPutInto);
    DcmCompEngine engine;
    if (!engine.Decompress(object, nullptr, nullptr)) return FailWith(engine.ErrorText.c_str());
    if (trSyntax.IsNull()) return kOk;
    // A name as it stands in a file may be padded with a NUL, behind which nothing counts.
    const std::string syntax = trSyntax.Narrow().c_str();
    *Done = engine.CanCompress(object, syntax.c_str(), nullptr);
    if (!Done->IsTrue()) return kOk;
    *Done = CompressTo(syntax, *object, engine);
    return Done->IsTrue() ? kOk : FailWith(engine.ErrorText.c_str());
  });
}

}  // namespace tessaret
