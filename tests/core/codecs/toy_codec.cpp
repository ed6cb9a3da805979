// A codec library of one syntax that loses nothing: runs of equal bytes as a count and the byte, which is turned round by a key.
// It says what it does to whoever hands in a std::string as the progress.
#include <cstdint>
#include <string>
#include <vector>

#include "tessaret/codec.h"

namespace {

using tessaret::CodecBool;
using tessaret::CodecFrame;
using tessaret::CodecProps;
using tessaret::DICOMObject;
using tessaret::ImageInfo;
using tessaret::VR;

constexpr std::uint8_t kKey = 0x5A;
constexpr std::uint16_t kCS = 0x4353;

void Say(void* progress, const std::string& words) {
  if (progress != nullptr) *static_cast<std::string*>(progress) += words;
}

std::vector<std::uint8_t> Pack(const std::uint8_t* bytes, std::uint32_t count) {
  std::vector<std::uint8_t> packed;
  for (std::uint32_t at = 0; at < count;) {
    std::uint8_t run = 1;
    while (run < 255 && at + run < count && bytes[at + run] == bytes[at]) ++run;
    packed.push_back(run);
    packed.push_back(static_cast<std::uint8_t>(bytes[at] ^ kKey));
    at += run;
  }
  return packed;
}

bool Unpack(const std::uint8_t* packed, std::uint32_t length, std::uint8_t* to,
            std::uint32_t count) {
  std::uint32_t made = 0;
  for (std::uint32_t at = 0; at + 1 < length; at += 2) {
    for (std::uint8_t run = packed[at]; run > 0; --run) {
      if (made == count) return false;
      to[made++] = static_cast<std::uint8_t>(packed[at + 1] ^ kKey);
    }
  }
  return made == count;
}

class ToyCodec final : public tessaret::DcmCodec {
 public:
  CodecBool CanCompress(DICOMObject* object, const char* syntax, const ImageInfo* info,
                        void* progress) override {
    Say(progress, std::string("ask ") + syntax + "\n");
    // An answer changes nothing, even if it tries.
    const std::uint8_t no[] = {'0', '1'};
    if (tessaret_codec_set(object, 0x0028, 0x2110, kCS, no, 2) != 0) return 0;
    return info->FrameSize % 2 == 0 ? 1 : 0;
  }

  std::uint32_t CompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                              const ImageInfo* info, const std::uint8_t* frame,
                              void* progress) override {
    CodecFrame place{};
    if (tessaret_codec_frame(pixels, &place) == 0 || place.OffsetTable != nullptr) return 0;
    Say(progress, "compress " + std::to_string(place.Index) + "/" + std::to_string(place.Frames) +
                      " " + syntax + "\n");
    const std::uint8_t lossless[] = {'0', '0'};
    if (tessaret_codec_set(object, 0x0028, 0x2110, kCS, lossless, 2) == 0) return 0;
    const std::vector<std::uint8_t> packed = Pack(frame, info->FrameSize);
    const auto size = static_cast<std::uint32_t>(packed.size());
    if (tessaret_codec_add_fragment(pixels, packed.data(), size) == 0) return 0;
    return 8 + size;
  }

  CodecBool DecompressFrame(DICOMObject* object, const char* syntax, VR* pixels,
                            const ImageInfo* info, std::uint8_t* frame, void* progress) override {
    CodecFrame place{};
    if (tessaret_codec_frame(pixels, &place) == 0) return 0;
    Say(progress, "decompress " + std::to_string(place.Index) + "/" + std::to_string(place.Frames) +
                      " table " + std::to_string(place.OffsetTableLength) + " of " +
                      std::to_string(tessaret_codec_item_count(pixels)) + " " + syntax + "\n");
    std::uint32_t length = 0;
    const std::uint8_t* packed = tessaret_codec_fragment(pixels, place.Index, &length);
    if (packed == nullptr || !Unpack(packed, length, frame, info->FrameSize)) {
      tessaret::tessaret_codec_fail("toy: the frame does not unpack");
      return 0;
    }
    const std::uint8_t colour[] = {'T', 'O', 'Y'};
    return tessaret_codec_set(object, 0x0028, 0x0004, kCS, colour, 3);
  }
};

int objects = 0;

}  // namespace

std::uint32_t tessaret::DcmGetCodecCount() { return 0; }  // the number is not used

CodecBool tessaret::DcmGetCodecProps(std::uint32_t index, CodecProps* props) {
  if (index != 0) return 0;
  *props = {"1.2.999.1", 0x01020304, 0};
  return 1;
}

/// One object at a time, so that a second one that is asked for without need shows.
tessaret::DcmCodec* tessaret::DcmGetCodec(std::uint32_t index) {
  return index == 0 && objects++ == 0 ? new ToyCodec : nullptr;
}

void tessaret::DcmFreeCodec(DcmCodec* codec) {
  --objects;
  delete static_cast<ToyCodec*>(codec);
}
