#include "core/comp_engine.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

#include "base/text.h"
#include "core/image_info.h"
#include "core/offset_table.h"
#include "platform/large_pages.h"

namespace tessaret {
namespace {

constexpr std::string_view kImplicitUid = "1.2.840.10008.1.2";
constexpr std::string_view kExplicitUid = "1.2.840.10008.1.2.1";
constexpr std::string_view kBigEndianUid = "1.2.840.10008.1.2.2";

/// What tells where compressed frames lie and how long they are, beside the offset table (DICOM PS3.3, C.7.6.3.1): of no others than
/// those that it came with.
constexpr TagKey kFrameTableTags[] = {MakeTagKey(0x7FE0, 0x0001), MakeTagKey(0x7FE0, 0x0002),
                                      MakeTagKey(0x7FE0, 0x0003)};

/// What is looked at of (0002,0010).
constexpr std::size_t kLongestUid = 64;

/// Pixel data up to this size is cleared before a codec fills it, so that none shows what was in memory before. Larger blocks
/// come fresh from the system; to clear them would take the memory for a frame that its input may never fill.
constexpr std::uint64_t kMostCleared = std::uint64_t{64} << 20;

/// Fits the short form of a string, so that it is there when memory is not.
constexpr const char* kNoMemory = "No more memory";
constexpr const char* kSteppedOver = "The pixel data was stepped over when it was read";

VR* TransferSyntaxOf(const DICOMObject& object) {
  return object.GetVR(GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag));
}

VR* PixelDataOf(const DICOMObject& object) {
  return object.GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
}

/// The UID in (0002,0010); empty when there is none.
std::string UidIn(const DICOMObject& object) {
  const VR* vr = TransferSyntaxOf(object);
  if (vr == nullptr || vr->Data == nullptr) return {};
  std::string_view text(reinterpret_cast<const char*>(vr->Data),
                        std::min<std::size_t>(vr->Length, kLongestUid));
  return std::string(Trimmed(text.substr(0, text.find('\0'))));
}

std::unique_ptr<VR> NewPixelData(std::uint32_t length, bool allocate) {
  return std::make_unique<VR>(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag), length, allocate);
}

enum class Length { kAsItIs, kEven };

/// A copy of the text as an array of the caller's; `length` of it.
std::unique_ptr<std::uint8_t[]> NewText(std::string_view text, Length how, std::uint32_t& length) {
  length = static_cast<std::uint32_t>(text.size());
  if (how == Length::kEven) length += length & 1;
  auto bytes = std::make_unique<std::uint8_t[]>(length);
  std::memcpy(bytes.get(), text.data(), text.size());
  return bytes;
}

std::unique_ptr<VR> NewTransferSyntax(std::string_view uid, Length how) {
  std::uint32_t length = 0;
  std::unique_ptr<std::uint8_t[]> bytes = NewText(uid, how, length);
  auto vr = std::make_unique<VR>(GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag), length,
                                 bytes.get());
  static_cast<void>(bytes.release());
  vr->TypeCode = type_code::UI;
  return vr;
}

/// Throws std::bad_alloc with the element still here.
void PushInto(DICOMObject& object, std::unique_ptr<VR> element) {
  if (!object.Push(element.get())) throw std::bad_alloc();
  static_cast<void>(element.release());
}

/// What the codec did not make for the new pixel data.
void DropFrameTables(DICOMObject& object, const CodecConversion& conversion) noexcept {
  for (const TagKey key : kFrameTableTags) {
    if (!conversion.IsChanged(key)) delete object.Remove(GroupOf(key), ElementOf(key));
  }
}

/// Drops element 0000 of every group; what is pushed next goes into the last element.
void DropGroupLengths(DICOMObject& object) noexcept {
  VR* last = nullptr;
  for (VR* vr = object.GetFirstVR(); vr != nullptr;) {
    VR* next = object.GetNextVR(vr);
    if (vr->Element == 0) {
      delete object.Remove(vr->Group, vr->Element);
    } else {
      last = vr;
    }
    vr = next;
  }
  object.LastPushedVR = last;
}

/// Takes the new elements in, and what the codec changed; without a syntax the object names none afterwards. Throws std::bad_alloc with
/// nothing changed.
void Rebuild(CodecConversion& conversion, std::unique_ptr<VR> syntax, std::unique_ptr<VR> pixels) {
  DICOMObject& object = conversion.Object();
  if (syntax == nullptr) {
    delete object.Remove(GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag));
  } else {
    PushInto(object, std::move(syntax));
  }
  PushInto(object, std::move(pixels));  // takes the place of what is there, which needs no memory
  DropFrameTables(object, conversion);
  DropGroupLengths(object);
  conversion.KeepChanges();
}

/// No pixels change for a native syntax: only what the object says of itself.
void NameNativeSyntax(DICOMObject& object, std::string_view uid) {
  VR* present = TransferSyntaxOf(object);
  if (present == nullptr) {
    PushInto(object, NewTransferSyntax(uid, Length::kEven));
  } else if (uid == kImplicitUid) {
    delete object.Remove(GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag));
  } else if (UidIn(object) != uid) {
    const auto syntax = NewTransferSyntax(uid, Length::kAsItIs);
    if (!present->ReplaceFrom(syntax.get())) throw std::bad_alloc();
  }
}

/// Keeps other threads off the codec while the frames of one data set are converted.
std::unique_lock<CodecLock> LockFor(CodecEntry& entry) {
  return entry.IsConcurrent() ? std::unique_lock<CodecLock>()
                              : std::unique_lock<CodecLock>(*entry.Calls);
}

/// Words when frames of these sizes cannot be converted.
std::string DoubtIn(const ImageInfo& info) {
  if (NativeSize(info) == 0) {
    return Format("%u frames of %u x %u pixels with %u samples of %u bytes hold nothing",
                  info.Frames, info.Columns, info.Rows, info.Samples, info.BytesPerSample);
  }
  // The largest number stands for an unknown length, and an odd one is made even.
  if (NativeSize(info) > kUndefinedLength - 1) {
    return Format("%u frames of %u bytes are more than an element can hold", info.Frames,
                  info.FrameSize);
  }
  return {};
}

/// The same when these native pixels are to be compressed.
std::string DoubtIn(const DICOMObject& object, const ImageInfo& info, const VR& pixels) {
  if (UidIn(object) == kBigEndianUid) return "Pixels in big endian order cannot be compressed";
  if (std::string doubt = DoubtIn(info); !doubt.empty()) return doubt;
  if (NativeSize(info) > pixels.Length) {
    return Format("The pixel data has %u bytes, but %u frames of %u bytes are named", pixels.Length,
                  info.Frames, info.FrameSize);
  }
  if (OffsetTableSize(info.Frames) > kUndefinedLength - 1) {
    return Format("The offset table of %u frames is too large", info.Frames);
  }
  return {};
}

/// The element in the item; null when there is none.
const VR* FragmentIn(const DICOMObject* item) {
  return item == nullptr ? nullptr : item->GetVR(kStructuralGroup, kItemElement);
}

/// Whether bytes of native or compressed pixel data were not read.
bool WereSteppedOver(const VR& pixels) {
  if (pixels.IsSteppedOver) return true;
  const ItemArray::Node* node = pixels.Items == nullptr ? nullptr : pixels.Items->First;
  for (; node != nullptr; node = node->next) {
    const VR* const fragment = FragmentIn(node->value);
    if (fragment != nullptr && fragment->IsSteppedOver) return true;
  }
  return false;
}

/// What the items of `pixels` from `first` on take in a stream.
std::uint64_t SizeOfItems(VR& pixels, std::uint32_t first) {
  constexpr std::uint64_t kItemHeader = 8;
  std::uint64_t size = 0;
  for (std::uint32_t at = first; at < pixels.ItemCount(); ++at) {
    const VR* fragment = FragmentIn(pixels.GetItem(at));
    size += kItemHeader + (fragment == nullptr ? 0 : fragment->Length);
  }
  return size;
}

/// Appends the item that holds the offset table.
VR& AddOffsetTable(VR& pixels, std::uint32_t frames) {
  const auto size = static_cast<std::uint32_t>(OffsetTableSize(frames));
  auto table = std::make_unique<VR>(kStructuralGroup, kItemElement, size, true);
  VR& added = *table;
  auto item = std::make_unique<DICOMDataObject>();
  PushInto(*item, std::move(table));
  if (!pixels.AddItem(item.get())) throw std::bad_alloc();
  static_cast<void>(item.release());
  return added;
}

}  // namespace

DcmCompEngine::~DcmCompEngine() {
  for (CodecEntry* entry : acquired_) registry_.Release(*entry);
}

bool DcmCompEngine::Decompress(DICOMObject* object, const char* syntax, void* progress) {
  return Attempt(object, [&] { return TryDecompress(*object, syntax, progress); });
}

bool DcmCompEngine::CanCompress(DICOMObject* object, const char* syntax, void* progress) {
  return Attempt(object, [&] { return TryCanCompress(*object, syntax, progress); });
}

bool DcmCompEngine::Compress(DICOMObject* object, const char* syntax, void* progress) {
  return Attempt(object, [&] { return TryCompress(*object, syntax, progress); });
}

template <class Operation>
bool DcmCompEngine::Attempt(DICOMObject* object, Operation operation) {
  ErrorText.clear();
  try {
    return object != nullptr ? operation() : Fail("No object");
  } catch (const std::bad_alloc&) {
    return Fail(kNoMemory);
  }
}

bool DcmCompEngine::TryDecompress(DICOMObject& object, const char* syntax, void* progress) {
  const std::string uid = syntax != nullptr ? std::string(syntax) : UidIn(object);
  if (syntax == nullptr && uid.empty()) return true;
  CodecEntry* entry = FindEntry(uid);
  if (entry == nullptr) return false;
  if (entry->IsNative()) return true;
  if (!Acquire(*entry)) return false;
  VR* pixels = PixelDataOf(object);
  if (pixels == nullptr) return Fail("There is no pixel data");
  const CodecTarget target{*entry->Codec, uid.c_str(), progress, entry->IsConcurrent()};
  return DecompressPixels(object, target, *entry, *pixels);
}

bool DcmCompEngine::DecompressPixels(DICOMObject& object, CodecTarget target, CodecEntry& entry,
                                     VR& pixels) {
  ImageInfo info;
  if (!ReadInfo(object, info)) return false;
  if (pixels.Items == nullptr) return true;
  if (WereSteppedOver(pixels)) return Fail(kSteppedOver);
  if (std::string doubt = DoubtIn(info); !doubt.empty()) return Fail(std::move(doubt));
  if (pixels.ItemCount() < (pixels.LacksTable ? 1 : 2)) {
    return Fail("The pixel data has no fragments");
  }
  auto native = NewPixelData(static_cast<std::uint32_t>(NativeSize(info)), true);
  native->TypeCode = type_code::OB;
  auto syntax = NewTransferSyntax(kExplicitUid, Length::kAsItIs);

  const std::unique_lock<CodecLock> lock = LockFor(entry);
  const std::unique_ptr<DICOMObject> offsets(pixels.LacksTable ? nullptr : pixels.PopFirstItem());
  pixels.LacksTable = true;
  CodecConversion conversion(CodecConversion::Kind::kDecompressing, object, &pixels, info.Frames);
  conversion.SetOffsetTable(FragmentIn(offsets.get()));
  if (!DecompressFrames(target, conversion, info, *native)) return false;
  Rebuild(conversion, std::move(syntax), std::move(native));
  return true;
}

bool DcmCompEngine::DecompressFrames(CodecTarget& target, CodecConversion& conversion,
                                     const ImageInfo& info, VR& native) {
  const bool clear = NativeSize(info) <= kMostCleared;
  if (!clear) PreferLargePages(native.Data, native.Length);
  ClearErrorText(target);
  for (std::uint32_t frame = 0; frame < info.Frames; ++frame) {
    std::uint8_t* block = native.Data + std::size_t{frame} * info.FrameSize;
    if (clear) std::memset(block, 0, info.FrameSize);
    conversion.SetFrame(frame);
    if (!DecompressFrame(target, conversion, info, block)) {
      return FailAtFrame(target, conversion, frame);
    }
  }
  return true;
}

bool DcmCompEngine::TryCanCompress(DICOMObject& object, const char* syntax, void* progress) {
  if (syntax == nullptr) return Fail("No transfer syntax is named");
  CodecEntry* entry = FindEntry(syntax);
  if (entry == nullptr) return false;
  if (entry->IsBuiltIn()) return true;
  ImageInfo info;
  if (!Acquire(*entry) || !ReadInfo(object, info)) return false;
  CodecTarget target{*entry->Codec, syntax, progress, entry->IsConcurrent()};
  const std::unique_lock<CodecLock> lock = LockFor(*entry);
  CodecConversion conversion(CodecConversion::Kind::kAsking, object, nullptr, info.Frames);
  ClearErrorText(target);
  if (AskCanCompress(target, conversion, info)) return true;
  return Fail(WordsOfFailure(target, conversion,
                             Format("The object cannot be held in transfer syntax [%s]", syntax)));
}

bool DcmCompEngine::TryCompress(DICOMObject& object, const char* syntax, void* progress) {
  if (syntax == nullptr) return Fail("No transfer syntax is named");
  CodecEntry* entry = FindEntry(syntax);
  if (entry == nullptr) return false;
  if (!entry->IsBuiltIn() && !Acquire(*entry)) return false;
  if (entry->IsNative()) {
    NameNativeSyntax(object, syntax);
    return true;
  }
  VR* pixels = PixelDataOf(object);
  const CodecTarget target{*entry->Codec, syntax, progress, entry->IsConcurrent()};
  if (pixels == nullptr) return Fail("There is no pixel data");
  return CompressPixels(object, target, *entry, *pixels);
}

bool DcmCompEngine::CompressPixels(DICOMObject& object, CodecTarget target, CodecEntry& entry,
                                   VR& pixels) {
  ImageInfo info;
  if (!ReadInfo(object, info)) return false;
  if (WereSteppedOver(pixels)) return Fail(kSteppedOver);
  if (pixels.Data == nullptr) return true;
  if (std::string doubt = DoubtIn(object, info, pixels); !doubt.empty()) {
    return Fail(std::move(doubt));
  }
  auto compressed = NewPixelData(0, false);
  compressed->Length = kUndefinedLength;
  compressed->TypeCode = type_code::SQ;
  std::unique_ptr<VR> syntax;
  if (target.syntax != kImplicitUid) syntax = NewTransferSyntax(target.syntax, Length::kEven);

  const std::unique_lock<CodecLock> lock = LockFor(entry);
  CodecConversion conversion(CodecConversion::Kind::kCompressing, object, compressed.get(),
                             info.Frames);
  if (!CompressFrames(target, conversion, info, pixels)) return false;
  Rebuild(conversion, std::move(syntax), std::move(compressed));
  return true;
}

bool DcmCompEngine::CompressFrames(CodecTarget& target, CodecConversion& conversion,
                                   const ImageInfo& info, const VR& native) {
  VR& pixels = *conversion.Pixels();
  OffsetTable offsets(AddOffsetTable(pixels, info.Frames), info.Frames);
  ClearErrorText(target);
  for (std::uint32_t frame = 0; frame < info.Frames; ++frame) {
    if (!offsets.Begin()) {
      return Fail(Format("Frame %u begins beyond what the offset table can say", frame));
    }
    const std::uint32_t before = pixels.ItemCount();
    conversion.SetFrame(frame);
    const std::uint32_t size =
        CompressFrame(target, conversion, info, native.Data + std::size_t{frame} * info.FrameSize);
    if (size == 0) return FailAtFrame(target, conversion, frame);
    if (size > SizeOfItems(pixels, before)) {
      return Fail(Format("The codec says that frame %u takes %u bytes, more than it has made",
                         frame, size));
    }
    offsets.Add(size);
  }
  offsets.Print(STDERR_FILENO);
  return true;
}

CodecEntry* DcmCompEngine::FindEntry(const std::string& uid) {
  CodecEntry* entry = registry_.Find(uid);
  if (entry == nullptr) Fail("Unknown transfer syntax [" + uid + "]");
  return entry;
}

bool DcmCompEngine::Acquire(CodecEntry& entry) {
  if (std::find(acquired_.begin(), acquired_.end(), &entry) != acquired_.end()) {
    return IsThere(entry);
  }
  acquired_.reserve(acquired_.size() + 1);
  if (!registry_.Acquire(entry)) {
    return Fail("No codec for transfer syntax [" + UidOf(entry.Props) + "]");
  }
  acquired_.push_back(&entry);
  return IsThere(entry);
}

bool DcmCompEngine::IsThere(const CodecEntry& entry) {
  if (entry.IsConcurrent() || !entry.Calls->IsLost()) return true;
  return Fail("The codec for transfer syntax [" + UidOf(entry.Props) +
              "] was at work when this process was forked");
}

bool DcmCompEngine::ReadInfo(const DICOMObject& object, ImageInfo& info) {
  std::string words = ReadImageInfo(object, info);
  return words.empty() || Fail(std::move(words));
}

bool DcmCompEngine::FailAtFrame(const CodecTarget& target, const CodecConversion& conversion,
                                std::uint32_t frame) {
  return Fail(WordsOfFailure(
      target, conversion,
      Format("The codec for transfer syntax [%s] failed at frame %u", target.syntax, frame)));
}

bool DcmCompEngine::Fail(std::string words) {
  ErrorText = std::move(words);
  return false;
}

}  // namespace tessaret
