#include <cxxabi.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "core/data_set_coder.h"
#include "core/element_writer.h"
#include "core/memory_buffer.h"
#include "core/meta_header.h"
#include "core/parse_trace.h"
#include "core/trace.h"
#include "platform/staged_file.h"

namespace tessaret {
namespace {

// DICOM PS3.10, 7.1.
constexpr std::uint32_t kPreambleSize = 128;
constexpr std::uint32_t kMarkEnd = 132;
constexpr std::array<char, 4> kMark = {'D', 'I', 'C', 'M'};
constexpr std::uint32_t kProbeSize = 6;
constexpr std::uint32_t kFill = 1024;
// What a stream over memory can count.
constexpr std::uint64_t kLargestBlock = std::numeric_limits<std::int32_t>::max();
// Room for the top level of most images from the start.
constexpr std::size_t kUsualElements = 128;

constexpr const char* kNoMark = "Error checking DICOM MetaHeader";
constexpr const char* kNoObject = "Error creating DICOM OBJECT";
constexpr const char* kParseError = "Error parsing DICOM Object";

/// The form in which the first element stands: in the explicit one its sixth byte is a letter, in the implicit one
/// nearly always a small part of a length.
std::int32_t GuessCode(const std::uint8_t* bytes, std::size_t size) {
  if (size < kProbeSize) return kImplicitLittle;
  return static_cast<std::int8_t>(bytes[kProbeSize - 1]) > 10 ? kExplicitLittle : kImplicitLittle;
}

bool IsMark(const std::uint8_t* bytes) {
  return std::memcmp(bytes, kMark.data(), kMark.size()) == 0;
}

/// Reads up to `count` bytes past the chunks, which are to stay empty.
std::uint32_t Probe(FileBuffer& buffer, std::uint8_t* to, std::uint32_t count) {
  std::uint32_t have = 0;
  while (have < count) {
    const std::int64_t got = buffer.ReadBinary(to + have, count - have);
    if (got < 0) break;
    have += static_cast<std::uint32_t>(got);
  }
  return have;
}

/// Makes bytes wait, or the stream meet its end. A file that lends its window needs no chunks.
bool FillAhead(FileBuffer& buffer) {
  FileStream* stream = buffer.LendStream();
  return stream != nullptr ? stream->Refill(1) : buffer.Fill(kFill);
}

bool SaveError(DataSetCoder& coder, int error) {
  coder.SetError(SystemErrorText(error).c_str());
  return false;
}

bool SendStart(Buffer& buffer) {
  std::array<std::uint8_t, kMarkEnd> start{};
  std::copy(kMark.begin(), kMark.end(), start.begin() + kPreambleSize);
  return buffer.SendBinary(start.data(), kMarkEnd) != 0;
}

/// Keeps what is sent.
class CollectingBuffer final : public Buffer {
 public:
  explicit CollectingBuffer(std::vector<std::uint8_t>& bytes) : bytes_(bytes) {
    directWriteSize_ = static_cast<std::uint32_t>(kDefaultBreakSize);
  }
  int SendBinary(const void* data, std::uint32_t count) override {
    const auto* const from = static_cast<const std::uint8_t*>(data);
    bytes_.insert(bytes_.end(), from, from + count);
    return 1;
  }

 private:
  std::vector<std::uint8_t>& bytes_;
};

/// Leaves `buffer` as the next load or save through it needs it: nothing of a failed save waiting, and nothing turned round any
/// more as in a big endian file.
void EndSave(FileBuffer& buffer, bool saved) {
  buffer.SetOutEndian(kLittleEndian);
  if (saved) return;
  for (auto* node = buffer.Outgoing.First; node != nullptr; node = node->next) delete node->value;
  buffer.Outgoing.Clear();
  buffer.OutSize = 0;
}

bool Encode(DataSetCoder& coder, std::int32_t mode, DICOMObject& object, FileBuffer& buffer) {
  if (mode == 1) return coder.ImplicitLittleOut(object, buffer);
  if (!SendStart(buffer) || !coder.AddMetaHeader(object, mode)) return false;
  return mode == 2 ? coder.ImplicitLittleOut(object, buffer)
                   : coder.File_ParseDCMIntoRawVR(object, buffer, kExplicitLittle);
}

bool EncodeKeeping(DataSetCoder& coder, std::int32_t mode, const DICOMObject& given,
                   Buffer& buffer) {
  // A clone has its elements where their tags belong now. It shares their bytes, and so is to be kept as well.
  std::unique_ptr<DICOMObject> ordered;
  if (!given.Elements.IsInOrder()) {
    ordered.reset(given.Clone(false));
    if (!ordered) throw std::bad_alloc();
  }
  const DICOMObject& source = ordered ? *ordered : given;
  // The writer takes what it may empty; told to keep it, it changes nothing.
  auto& object = const_cast<DICOMObject&>(source);
  ElementWriter writer(coder, buffer, ElementWriter::After::kKeep);
  if (mode != 1 && !SendStart(buffer)) return false;
  if (mode != 3) {
    if (IsDumping(kDumpParse)) AppendToDump(parse_trace::kImplicitLittleOut);
    buffer.SetOutEndian(kLittleEndian);
    return writer.WriteLevel(object, ElementForm::kImplicit, 0);
  }
  DICOMObject meta;
  VrCode pixelType = type_code::kNone;
  BuildMetaHeaderBeside(object, mode, coder.CallingAETitle, meta, pixelType);
  return writer.WriteFileWithMeta(object, meta, pixelType, kExplicitLittle);
}

}  // namespace

void DataSetCoder::StartLoad() noexcept {
  SetError(nullptr);
  stop_ = {};
  oddities_.Clear();
  lastCode_ = 0;
  lackedMemory_ = false;
}

std::unique_ptr<DICOMDataObject> DataSetCoder::GiveUpLoad(bool lacksMemory,
                                                          const char* words) noexcept {
  lackedMemory_ = lacksMemory;
  SetError(words);
  return nullptr;
}

template <class Load>
std::unique_ptr<DICOMDataObject> DataSetCoder::Loaded(Load load) {
  try {
    return load();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (const std::bad_alloc&) {
    return GiveUpLoad(true, kParseError);
  } catch (...) {
    return GiveUpLoad(false, kParseError);
  }
}

std::unique_ptr<DICOMDataObject> DataSetCoder::LoadFile(const char* path, bool loadPixels,
                                                        bool strict, FileBuffer* fileBuffer) {
  StartLoad();
  FileBuffer local;
  return Loaded([&] {
    return LoadFrom(fileBuffer != nullptr ? *fileBuffer : local, path, loadPixels, strict);
  });
}

std::unique_ptr<DICOMDataObject> DataSetCoder::LoadFrom(FileBuffer& buffer, const char* path,
                                                        bool loadPixels, bool strict) {
  if (!buffer.OpenForRead(path)) {
    SetError(buffer.ErrorText().c_str());
    return nullptr;
  }
  std::array<std::uint8_t, kProbeSize> bytes{};
  std::uint32_t start = kMarkEnd;
  if (!buffer.Seek(kPreambleSize) || Probe(buffer, bytes.data(), 4) != 4 || !IsMark(bytes.data())) {
    if (strict) {
      SetError(kNoMark);
      return nullptr;
    }
    start = 0;
    buffer.Seek(start);
  }
  buffer.Position = start;
  const std::int32_t code = GuessCode(bytes.data(), Probe(buffer, bytes.data(), kProbeSize));
  if (!buffer.Seek(start)) {
    // What was probed is gone, and the rest would be read from the middle of an element.
    SetError(buffer.HasError() ? buffer.ErrorText().c_str() : kParseError);
    return nullptr;
  }

  std::unique_ptr<DICOMDataObject> object(new (std::nothrow) DICOMDataObject);
  if (!object) return GiveUpLoad(true, kNoObject);
  FileMode = true;
  object->Elements.Reserve(kUsualElements);
  if (!ReadAll(buffer, *object, code, loadPixels)) return nullptr;
  return object;
}

bool DataSetCoder::ReadAll(FileBuffer& buffer, DICOMObject& object, std::int32_t code,
                           bool loadPixels) {
  for (;;) {
    const std::uint32_t before = buffer.Position;
    if (FillAhead(buffer) && buffer.HasError()) break;
    if (!File_ParseRawVRIntoDCM(buffer, object, code, loadPixels)) break;
    // At the end of the file bytes may still wait, behind a stray delimiter.
    if (buffer.IsEnd() && buffer.InSize == 0 && !buffer.HasError()) break;
    if (ErrorText() != nullptr) break;
    // A parse that read nothing will read nothing the next time either.
    if (buffer.Position == before) break;
  }
  if (buffer.HasError()) SetError(buffer.ErrorText().c_str());
  return ErrorText() == nullptr;
}

std::unique_ptr<DICOMDataObject> DataSetCoder::LoadBareFile(const char* path, std::int32_t code,
                                                            bool loadPixels,
                                                            FileBuffer* fileBuffer) {
  StartLoad();
  FileBuffer local;
  return Loaded([&] {
    return LoadBareFrom(fileBuffer != nullptr ? *fileBuffer : local, path, code, loadPixels);
  });
}

std::unique_ptr<DICOMDataObject> DataSetCoder::LoadBareFrom(FileBuffer& buffer, const char* path,
                                                            std::int32_t code, bool loadPixels) {
  if (!buffer.OpenForRead(path)) {
    SetError(buffer.ErrorText().c_str());
    return nullptr;
  }
  buffer.Position = 0;
  FileMode = false;
  auto object = std::make_unique<DICOMDataObject>();
  if (!ReadAll(buffer, *object, code, loadPixels)) return nullptr;
  return object;
}

std::unique_ptr<DICOMDataObject> DataSetCoder::LoadBlock(const void* bytes, std::uint64_t size,
                                                         bool loadPixels, bool strict,
                                                         std::int32_t code) {
  StartLoad();
  if (size > kLargestBlock || (bytes == nullptr && size != 0)) {
    SetError(kParseError);
    return nullptr;
  }
  // The stream only reads; its block is not const because it may own it elsewhere.
  auto* block = static_cast<std::uint8_t*>(const_cast<void*>(bytes));
  const bool hasMark = code == 0 && size >= kMarkEnd && IsMark(block + kPreambleSize);
  if (strict && code == 0 && !hasMark) {
    SetError(kNoMark);
    return nullptr;
  }
  return Loaded([&]() -> std::unique_ptr<DICOMDataObject> {
    const std::uint32_t start = hasMark ? kMarkEnd : 0;
    const auto length = static_cast<std::uint32_t>(size) - start;
    FileMode = code == 0;
    if (code == 0) code = GuessCode(block + start, length);
    auto object = std::make_unique<DICOMDataObject>();
    MemoryBuffer buffer(block == nullptr ? nullptr : block + start, length, false);
    buffer.Position = start;
    std::uint32_t before = 0;
    do {
      before = buffer.Position;
      if (!File_ParseRawVRIntoDCM(buffer, *object, code, loadPixels)) break;
    } while (buffer.InSize != 0 && buffer.Position != before && ErrorText() == nullptr);
    return ErrorText() == nullptr ? std::move(object) : nullptr;
  });
}

std::unique_ptr<DICOMDataObject> DataSetCoder::LoadMemory(const void* bytes, std::uint64_t size,
                                                          bool loadPixels, bool strict) {
  StartLoad();
  if (size > kLargestBlock || (bytes == nullptr && size != 0)) {
    SetError(kParseError);
    return nullptr;
  }
  // The stream only reads; its block is not const because it may own it elsewhere.
  auto* block = static_cast<std::uint8_t*>(const_cast<void*>(bytes));
  std::uint32_t start = kMarkEnd;
  if (size < kMarkEnd || !IsMark(block + kPreambleSize)) {
    if (strict) {
      SetError(kNoMark);
      return nullptr;
    }
    start = 0;
  }
  try {
    auto object = std::make_unique<DICOMDataObject>();
    FileMode = true;
    const auto length = static_cast<std::uint32_t>(size);
    const std::int32_t code = GuessCode(block + start, length - start);
    MemoryBuffer buffer(block + start, length - start, false);
    buffer.Position = start;
    if (File_ParseRawVRIntoDCM(buffer, *object, code, loadPixels)) return object;
  } catch (const abi::__forced_unwind&) {
    throw;
  } catch (const std::bad_alloc&) {
    lackedMemory_ = true;
  } catch (...) {
  }
  if (ErrorText() == nullptr) SetError(kParseError);
  return nullptr;
}

template <class Encode>
bool DataSetCoder::SaveWhole(const char* path, std::int32_t mode, FileBuffer* fileBuffer,
                             Encode encode) {
  SetError(nullptr);
  systemError_ = 0;
  if (mode < 1 || mode > 3 || path == nullptr) return false;
  FileBuffer local;
  FileBuffer& buffer = fileBuffer != nullptr ? *fileBuffer : local;
  bool saved = false;
  try {
    saved = SaveStaged(path, buffer, encode);
  } catch (const abi::__forced_unwind&) {
    buffer.Close();
    EndSave(buffer, false);
    throw;
  } catch (...) {
    buffer.Close();
    SetError("Not enough memory to save the object");
  }
  EndSave(buffer, saved);
  return saved;
}

template <class Encode>
bool DataSetCoder::SaveStaged(const char* path, FileBuffer& buffer, Encode encode) {
  StagedFile staged(path, ReplacesFiles ? Existing::kReplace : Existing::kKeep);
  // A place that cannot be opened gets no words of its own, only the number.
  if (!staged.Begin()) {
    systemError_ = staged.Error();
    return false;
  }
  if (!buffer.OpenForWrite(staged.StagingPath().c_str())) {
    systemError_ = buffer.ErrorNumber();
    return false;
  }
  buffer.SetOutEndian(kLittleEndian);
  const bool encoded = encode(buffer) && buffer.Flush();
  buffer.Close();
  if (buffer.HasError()) {
    SetError(buffer.ErrorText().c_str());
    return false;
  }
  return encoded && (staged.Commit() || SaveError(*this, staged.Error()));
}

bool DataSetCoder::SaveFile(const char* path, std::int32_t mode, DICOMObject& object,
                            FileBuffer* fileBuffer) {
  return SaveWhole(path, mode, fileBuffer,
                   [&](FileBuffer& buffer) { return Encode(*this, mode, object, buffer); });
}

bool DataSetCoder::SaveKeeping(const char* path, std::int32_t mode, const DICOMObject& object) {
  return SaveWhole(path, mode, nullptr,
                   [&](FileBuffer& buffer) { return EncodeKeeping(*this, mode, object, buffer); });
}

bool DataSetCoder::SaveToMemory(std::int32_t mode, const DICOMObject& object,
                                std::vector<std::uint8_t>& bytes) {
  SetError(nullptr);
  systemError_ = 0;
  if (mode < 1 || mode > 3) return false;
  CollectingBuffer buffer(bytes);
  return EncodeKeeping(*this, mode, object, buffer) && buffer.Flush();
}

}  // namespace tessaret
