// Loading from files, descriptors and blocks of bytes.
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <new>
#include <span>
#include <string>
#include <utility>

#include "core/comp_engine.h"
#include "core/module_dictionaries.h"
#include "core/value_order.h"
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"
#include "platform/file_calls.h"

namespace tessaret {

using namespace dcm_object;

namespace {

constexpr std::int32_t kLoadOptions = LOAD_PIXELS | LOAD_STRICT | LOAD_SKIPS_PIXELS;
constexpr std::int32_t kPixelOptions = LOAD_PIXELS | LOAD_SKIPS_PIXELS;

/// Pixel data up to this size is no burden even in pieces, and tells more than its beginning does.
constexpr std::uint32_t kLongestKeptValue = 4096;

constexpr _EnumDataEncoding kEncodings[] = {ENCODING_NONE, ENCODING_IMPLICIT_LITTLE,
                                            ENCODING_EXPLICIT_LITTLE, ENCODING_EXPLICIT_BIG};

/// Whether `given` is what can be loaded: nothing, or bytes that a stream can count.
bool AreBytes(const Variant& given) {
  const VariantArray* const array = given.AsArray();
  if (array == nullptr) return given.IsEmpty();
  return array->Type() == VariantType::kByte && array->Bounds().size() == 1 &&
         array->Count() <= std::numeric_limits<std::int32_t>::max();
}

bool AreLoadArguments(std::int32_t options, _EnumDataEncoding encoding) {
  const bool exist = (options & ~kLoadOptions) == 0 && (options & kPixelOptions) != kPixelOptions &&
                     std::ranges::find(kEncodings, encoding) != std::end(kEncodings);
  // A bare data set has no mark to insist on.
  return exist && (encoding == ENCODING_NONE || (options & LOAD_STRICT) == 0);
}

/// What a descriptor of the host stands for.
class DescriptorBuffer final : public FileBuffer {
 public:
  explicit DescriptorBuffer(int descriptor) : descriptor_(descriptor) {}

  bool OpenForRead(const char*) override {
    int error = 0;
    auto stream = FileStream::FromDescriptor(descriptor_, error);
    return TakeForRead(std::move(stream), error);
  }

 protected:
  [[nodiscard]] bool ReadsPlainly() const override { return true; }

 private:
  int descriptor_;
};

void NoteReading(const HeadNotingCoder& coder, ReadingNotes& notes) {
  notes.code = coder.LastCode();
  notes.hasMark = coder.Start != 0;
  notes.bytesRead = coder.End;
  notes.head = coder.Head;
  notes.stop = coder.LastStop();
  notes.lackedMemory = coder.LackedMemory();
  notes.oddities.assign(coder.Oddities().begin(), coder.Oddities().end());
}

}  // namespace

template <class Read>
std::string CDCMObject::LoadNoting(std::int32_t options, Read read) {
  notes_ = std::make_unique<ReadingNotes>();
  HeadNotingCoder coder(&ModuleDictionary());
  if ((options & LOAD_SKIPS_PIXELS) != 0) coder.LongestPixelValue = kLongestKeptValue;
  std::unique_ptr<DICOMObject> loaded =
      read(coder, (options & kPixelOptions) != 0, (options & LOAD_STRICT) != 0);
  NoteReading(coder, *notes_);
  if (!loaded) return coder.ErrorText();
  if (IsBigEndian(coder.FirstCode)) SwapNumbers(*loaded);
  Replace(std::move(loaded));
  return {};
}

std::string CDCMObject::LoadThrough(FileBuffer& buffer, const std::string& path,
                                    std::int32_t options, std::int32_t code) {
  return LoadNoting(options, [&](DataSetCoder& coder, bool loadPixels, bool strict) {
    auto loaded = code == ENCODING_NONE
                      ? coder.LoadFile(path.c_str(), loadPixels, strict, &buffer)
                      : coder.LoadBareFile(path.c_str(), code, loadPixels, &buffer);
    if (buffer.HasError()) notes_->systemError = buffer.ErrorText();
    return loaded;
  });
}

Status CDCMObject::AnswerOfLoad(const std::string& why) const {
  if (why.empty()) return kOk;
  if (notes_->lackedMemory) throw std::bad_alloc();
  return FailOfFile(why.c_str());
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
  notes_.reset();
  if (!IsPath(path)) return FailWith(SystemErrorText(EINVAL).c_str());
  FileBuffer buffer;
  const std::string why = LoadThrough(buffer, path, loadPixels ? LOAD_PIXELS : 0, ENCODING_NONE);
  if (!why.empty()) return FailWith(why.c_str());
  if (!loadPixels) return kOk;
  DcmCompEngine engine;
  return MakeNative(engine) ? kOk : FailWith("Unsupported Encapsulated Transfer Syntax");
}

bool CDCMObject::MakeNative(DcmCompEngine& engine) {
  DICOMObject* const object = Object.Get();
  const VR* const pixels = object->GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
  const bool isNamed =
      object->GetVR(GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag)) != nullptr;
  const bool hasFragments = pixels != nullptr && pixels->Items != nullptr;
  // A transfer syntax that is the last element of the meta header holds for the file but does not stay in the object. Fragments are
  // in that syntax all the same.
  if (isNamed || !hasFragments || notes_ == nullptr || notes_->head.syntax.empty()) {
    return engine.Decompress(object, nullptr, nullptr);
  }
  return engine.Decompress(object, notes_->head.syntax.c_str(), nullptr);
}

Status CDCMObject::LoadFile(const String& FileName, std::int32_t Options,
                            _EnumDataEncoding Encoding) {
  if (!AreLoadArguments(Options, Encoding)) return kInvalidArgument;
  return AnswerOfFile([&] {
    LetGo();
    notes_.reset();
    const std::string path = FileName.Utf8();
    if (!IsPath(path)) return FailOfFile(SystemErrorText(EINVAL).c_str());
    FileBuffer buffer;
    return AnswerOfLoad(LoadThrough(buffer, path, Options, Encoding));
  });
}

Status CDCMObject::LoadDescriptor(std::int32_t Descriptor, std::int32_t Options,
                                  _EnumDataEncoding Encoding) {
  if (!AreLoadArguments(Options, Encoding)) return kInvalidArgument;
  return AnswerOfFile([&] {
    LetGo();
    notes_.reset();
    DescriptorBuffer buffer(Descriptor);
    return AnswerOfLoad(LoadThrough(buffer, {}, Options, Encoding));
  });
}

Status CDCMObject::LoadBytes(const Variant& Bytes, std::int32_t Options,
                             _EnumDataEncoding Encoding) {
  if (!AreBytes(Bytes)) return kTypeMismatch;
  if (!AreLoadArguments(Options, Encoding)) return kInvalidArgument;
  return AnswerOfFile([&] {
    LetGo();
    notes_.reset();
    const VariantArray* const array = Bytes.AsArray();
    const std::span<const std::uint8_t> bytes =
        array == nullptr ? std::span<const std::uint8_t>() : array->Bytes();
    return AnswerOfLoad(LoadNoting(Options, [&](DataSetCoder& coder, bool loadPixels, bool strict) {
      return coder.LoadBlock(bytes.data(), bytes.size(), loadPixels, strict, Encoding);
    }));
  });
}

}  // namespace tessaret
