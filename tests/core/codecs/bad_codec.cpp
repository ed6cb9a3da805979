// A codec library of syntaxes that each do something that a codec should not: which, the last part of the UID says.
#include <atomic>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "tessaret/codec.h"

namespace {

using tessaret::CodecBool;
using tessaret::CodecFrame;
using tessaret::CodecProps;
using tessaret::DcmCodec;
using tessaret::DICOMObject;
using tessaret::ImageInfo;
using tessaret::VR;

constexpr std::uint8_t kBytes[] = {1, 2, 3, 4};
constexpr std::uint16_t kLO = 0x4C4F;

std::uint32_t Append(VR* pixels, std::uint32_t claimed) {
  return tessaret_codec_add_fragment(pixels, kBytes, 4) != 0 ? claimed : 0;
}

/// Behaves well in what a test does not want bad.
class PlainCodec : public DcmCodec {
 public:
  virtual ~PlainCodec() = default;
  CodecBool CanCompress(DICOMObject*, const char*, const ImageInfo*, void*) override { return 1; }
  std::uint32_t CompressFrame(DICOMObject*, const char*, VR* pixels, const ImageInfo*,
                              const std::uint8_t*, void*) override {
    return Append(pixels, 12);
  }
  CodecBool DecompressFrame(DICOMObject*, const char*, VR*, const ImageInfo* info,
                            std::uint8_t* frame, void*) override {
    std::memset(frame, 7, info->FrameSize);
    return 1;
  }

 protected:
  static std::uint32_t IndexOf(const VR* pixels) {
    CodecFrame frame{};
    return tessaret_codec_frame(pixels, &frame) != 0 ? frame.Index : 99;
  }
};

/// Changes elements with each frame, some there and some new, and fails on the third.
class FailsOnTheThird : public PlainCodec {
  std::uint32_t CompressFrame(DICOMObject* object, const char*, VR* pixels, const ImageInfo*,
                              const std::uint8_t*, void*) override {
    return Change(object, pixels) ? Append(pixels, 12) : 0;
  }
  CodecBool DecompressFrame(DICOMObject* object, const char*, VR* pixels, const ImageInfo*,
                            std::uint8_t*, void*) override {
    return Change(object, pixels) ? 1 : 0;
  }
  bool Change(DICOMObject* object, const VR* pixels) {
    const std::string value = "changed at frame " + std::to_string(IndexOf(pixels));
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(value.data());
    const auto length = static_cast<std::uint32_t>(value.size());
    constexpr std::uint16_t kElements[] = {0x0002, 0x0004, 0x2110};
    for (const std::uint16_t element : kElements) {
      if (tessaret_codec_set(object, 0x0028, element, kLO, bytes, length) == 0) return false;
    }
    std::strcpy(ErrorText, "the third frame");
    return IndexOf(pixels) < 2;
  }
};

/// Of the second frame; both together have made more than that.
class ClaimsTooMuch : public PlainCodec {
  std::uint32_t CompressFrame(DICOMObject*, const char*, VR* pixels, const ImageInfo*,
                              const std::uint8_t*, void*) override {
    return Append(pixels, IndexOf(pixels) == 0 ? 12 : 13);
  }
};

class MakesNoFragment : public PlainCodec {
  std::uint32_t CompressFrame(DICOMObject*, const char*, VR*, const ImageInfo*, const std::uint8_t*,
                              void*) override {
    return 1;
  }
};

template <class Thrown>
class Throws : public PlainCodec {
 public:
  explicit Throws(Thrown thrown) : thrown_(thrown) {}

 private:
  CodecBool CanCompress(DICOMObject*, const char*, const ImageInfo*, void*) override {
    throw thrown_;
  }
  std::uint32_t CompressFrame(DICOMObject*, const char*, VR*, const ImageInfo*, const std::uint8_t*,
                              void*) override {
    throw thrown_;
  }
  CodecBool DecompressFrame(DICOMObject*, const char*, VR*, const ImageInfo*, std::uint8_t*,
                            void*) override {
    throw thrown_;
  }
  Thrown thrown_;
};

/// Fails without words, or at first with words that never end.
class Fails : public PlainCodec {
 public:
  explicit Fails(char filling) : filling_(filling) {}

 private:
  CodecBool CanCompress(DICOMObject*, const char*, const ImageInfo*, void*) override {
    return Fill();
  }
  CodecBool DecompressFrame(DICOMObject*, const char*, VR*, const ImageInfo*, std::uint8_t*,
                            void*) override {
    return Fill();
  }
  std::uint32_t CompressFrame(DICOMObject*, const char*, VR*, const ImageInfo*, const std::uint8_t*,
                              void*) override {
    return Fill();
  }
  CodecBool Fill() {
    if (filling_ != 0) std::memset(ErrorText, std::exchange(filling_, '\0'), sizeof(ErrorText));
    return 0;
  }
  char filling_;
};

class WritesNothing : public PlainCodec {
  CodecBool DecompressFrame(DICOMObject*, const char*, VR*, const ImageInfo*, std::uint8_t*,
                            void*) override {
    return 1;
  }
};

/// Tries everything on elements that are not a codec's to change, and fails where one of it works.
class Meddles : public PlainCodec {
  CodecBool DecompressFrame(DICOMObject* object, const char*, VR* pixels, const ImageInfo* info,
                            std::uint8_t*, void*) override {
    const bool changed = tessaret_codec_set(object, 0x0002, 0x0010, 0, kBytes, 4) != 0 ||
                         tessaret_codec_set(object, 0x7FE0, 0x0010, 0, kBytes, 4) != 0 ||
                         tessaret_codec_set(object, 0x0028, 0x0000, 0, kBytes, 4) != 0 ||
                         tessaret_codec_set(object, 0xFFFE, 0xE000, 0, kBytes, 4) != 0 ||
                         tessaret_codec_set(object, 0x0028, 0x0004, 0, nullptr, 4) != 0 ||
                         tessaret_codec_set(object, 0x0028, 0x0004, 0, kBytes, 0xFFFFFFFF) != 0 ||
                         tessaret::tessaret_codec_set(nullptr, 0x0028, 0x0004, 0, kBytes, 4) != 0 ||
                         tessaret_codec_add_fragment(pixels, kBytes, 4) != 0 ||
                         tessaret_codec_frame(pixels, nullptr) != 0;
    const_cast<ImageInfo*>(info)->FrameSize = 1 << 20;
    const_cast<ImageInfo*>(info)->Frames = 1 << 20;
    return changed ? 0 : 1;
  }
};

/// Makes a table of frames of its own, which is good: other codecs leave none.
class MakesATable : public PlainCodec {
  std::uint32_t CompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                              const ImageInfo* info, const std::uint8_t* frame,
                              void* progress) override {
    if (tessaret_codec_set(object, 0x7FE0, 0x0001, 0x4F56, kBytes, 4) == 0) return 0;
    return PlainCodec::CompressFrame(object, syntax, pixels, info, frame, progress);
  }
};

/// Counts how many threads are in it at once; the highest number goes out by the progress.
/// ErrorText starts with a text, of which the first character has to stay.
class CountsThreads : public PlainCodec {
 public:
  explicit CountsThreads(const char* text) : first_(*text) { std::strcpy(ErrorText, text); }

 private:
  CodecBool DecompressFrame(DICOMObject*, const char*, VR* pixels, const ImageInfo*, std::uint8_t*,
                            void* progress) override {
    auto* highest = static_cast<std::atomic<int>*>(progress);
    if (IndexOf(pixels) == 0) {
      const int now = ++inside_;
      int seen = highest->load();
      while (now > seen && !highest->compare_exchange_weak(seen, now)) {
      }
    } else if (IndexOf(pixels) == 9) {
      --inside_;
    }
    return ErrorText[0] == first_ ? 1 : 0;
  }
  std::atomic<int> inside_ = 0;
  char first_;
};

/// What C could hand out: tables that lack one function.
struct IncompleteRecord {
  const void* const* table;
  std::uintptr_t reserved;
  char errorText[TESSARET_CODEC_ERROR_SIZE];
};
const void* const kTables[][3] = {
    {kBytes, kBytes, nullptr}, {nullptr, kBytes, kBytes}, {kBytes, nullptr, kBytes}};
IncompleteRecord incomplete[] = {
    {kTables[0], 0, ""}, {nullptr, 0, ""}, {kTables[1], 0, ""}, {kTables[2], 0, ""}};
int incompleteGivenBack = 0;

DcmCodec* Incomplete(std::size_t which) { return reinterpret_cast<DcmCodec*>(&incomplete[which]); }

struct Row {
  const char* uid;
  std::uint32_t flags;
};
constexpr Row kRows[] = {
    {"1.2.999.3.0", 0},  {"1.2.999.3.1", 0},  {"1.2.999.3.2", 0},
    {"1.2.999.3.3", 0},  {"1.2.999.3.4", 0},  {"1.2.999.3.5", 0},
    {"1.2.999.3.6", 0},  {"1.2.999.3.7", 0},  {"1.2.999.3.8", 0},
    {"1.2.999.3.9", 0},  {"1.2.999.3.10", 0}, {"1.2.999.3.11", 0},
    {"1.2.999.3.12", 1}, {"1.2.999.3.13", 0}, {"1.2.999.3.14", 2},
    {"1.2.999.3.15", 0}, {"1.2.999.3.16", 2}, {"", 0},
    {"1.2.999.3.18", 0},
};

}  // namespace

std::uint32_t tessaret::DcmGetCodecCount() { return 0xFFFFFFFF; }

CodecBool tessaret::DcmGetCodecProps(std::uint32_t index, CodecProps* props) {
  if (index == std::size(kRows)) {
    // A UID without its NUL.
    std::memset(props->UID, '9', sizeof(props->UID));
    return 2;
  }
  if (index > std::size(kRows)) return 0;
  std::strcpy(props->UID, kRows[index].uid);
  props->Flags = kRows[index].flags;
  return 1;
}

DcmCodec* tessaret::DcmGetCodec(std::uint32_t index) {
  switch (index) {
    case 0:
      return new FailsOnTheThird;
    case 1:
      return new ClaimsTooMuch;
    case 2:
      return new MakesNoFragment;
    case 3:
      return new Throws<std::runtime_error>(std::runtime_error("thrown words"));
    case 4:
      return new Throws<int>(4);
    case 5:
      return nullptr;
    case 6:
      throw std::bad_alloc();
    case 7:
      return Incomplete(0);
    case 8:
      return Incomplete(1);
    case 101:
      return Incomplete(2);
    case 102:
      return Incomplete(3);
    case 9:
      return new Fails('\0');
    case 10:
    case 16:
      return new Fails('w');
    case 11:
      return new WritesNothing;
    case 13:
      return new CountsThreads("");
    case 14:
      return new CountsThreads("nobody's but the codec's");
    case 15:
      return new Meddles;
    case 18:
      return new MakesATable;
    default:
      return nullptr;
  }
}

void tessaret::DcmFreeCodec(DcmCodec* codec) {
  const void* record = codec;
  for (const IncompleteRecord& each : incomplete) {
    if (record != &each) continue;
    ++incompleteGivenBack;
    throw std::bad_alloc();
  }
  delete static_cast<PlainCodec*>(codec);
}

extern "C" TESSARET_CODEC_EXPORT int CountIncompleteOnesGivenBack() { return incompleteGivenBack; }
