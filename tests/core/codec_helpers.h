// The codec libraries of the tests, registries of them, and small images to convert.
#pragma once

#include <dlfcn.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/codec_registry.h"
#include "core/dicom_object.h"
#include "core/object_maker.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret::test {

inline constexpr const char* kToy = "1.2.999.1";
inline constexpr const char* kCToy = "1.2.999.2";

inline constexpr TagKey kPhotometricTag = MakeTagKey(0x0028, 0x0004);

/// The UID of one of the codecs that go wrong.
inline std::string BadUid(int which) { return "1.2.999.3." + std::to_string(which); }

inline std::string CodecFolder() {
  return (std::filesystem::path(kBinaryDir) / "lib/test_codecs/").string();
}

/// True while the library of this file name is in the process.
inline bool IsInProcess(const std::string& name) {
  void* handle = ::dlopen((CodecFolder() + name).c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) ::dlclose(handle);
  return handle != nullptr;
}

/// A registry whose libraries are those of the tests: the first stands for "DcmCodec.dll", the others are named in the list.
class TestCodecs {
  const TempFolder folder_;

 public:
  explicit TestCodecs(const std::string& first, const std::string& list = {})
      : registry(Places(first, list)) {}

  /// How often a library of each name was asked for.
  std::map<std::string, int> asked;
  CodecRegistry registry;

 private:
  CodecPlaces Places(const std::string& first, const std::string& list) {
    WriteText(folder_.File(kCodecListFile), list);
    return {folder_.File(kCodecListFile), [this, first](const std::string& name) {
              ++asked[name];
              const bool isFirst = name == kFirstCodecLibrary;
              return LoadCodecLibrary({CodecFolder()}, isFirst ? first : name);
            }};
  }
};

inline VR* NewShort(std::uint16_t element, std::uint16_t value) {
  const Bytes bytes = {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
  return NewVR(MakeTagKey(0x0028, element), bytes, type_code::US);
}

inline VR* NewText(TagKey key, std::string_view text, VrCode type) {
  return NewVR(key, BytesOf(text), type);
}

/// Gray frames of 4 x 2 pixels of 8 bits.
inline constexpr std::uint32_t kFrameSize = 8;

inline Bytes NativePixels(std::uint32_t frames) {
  Bytes bytes = Pattern(std::size_t{frames} * kFrameSize);
  bytes[0] = bytes[1] = bytes[2];  // a run
  return bytes;
}

/// An explicit little endian object of so many frames with native pixels.
inline std::unique_ptr<DICOMObject> NewImage(std::uint32_t frames,
                                             std::string_view syntax = "1.2.840.10008.1.2.1") {
  std::unique_ptr<DICOMObject> object(NewObject({
      NewVR(MakeTagKey(0x0002, 0x0000), Bytes{1, 0, 0, 0}, type_code::UL),
      NewText(kTransferSyntaxTag, syntax, type_code::UI),
      NewVR(MakeTagKey(0x0008, 0x0000), Bytes{2, 0, 0, 0}, type_code::UL),
      NewText(MakeTagKey(0x0010, 0x0010), "Doe^J ", type_code::PN),
      NewShort(0x0002, 1),
      NewText(MakeTagKey(0x0028, 0x0004), "MONOCHROME2 ", type_code::CS),
      NewShort(0x0010, 2),
      NewShort(0x0011, 4),
      NewShort(0x0100, 8),
      NewShort(0x0101, 8),
      NewVR(kPixelDataTag, NativePixels(frames), type_code::OW),
  }));
  if (frames != 1) {
    object->Push(NewText(MakeTagKey(0x0028, 0x0008), std::to_string(frames), type_code::IS));
  }
  return object;
}

/// The same in a made-up form of `syntax`: an offset table, and so many fragments.
inline std::unique_ptr<DICOMObject> NewCompressed(std::uint32_t frames, std::string_view syntax,
                                                  std::uint32_t fragments) {
  std::unique_ptr<DICOMObject> object = NewImage(frames, syntax);
  VR* pixels = NewVR(kPixelDataTag, Bytes{}, type_code::OB);
  pixels->Length = kUndefinedLength;
  const TagKey item = MakeTagKey(kStructuralGroup, kItemElement);
  pixels->AddItem(NewObject({NewVR(item, Bytes{0, 0, 0, 0})}));
  for (std::uint32_t at = 0; at < fragments; ++at) {
    pixels->AddItem(NewObject({NewVR(item, Bytes{static_cast<std::uint8_t>(at), 1})}));
  }
  object->Push(pixels);
  return object;
}

inline VR& PixelsOf(DICOMObject& object) { return *object.GetVR(0x7FE0, 0x0010); }

/// The text of an element; "-" when it is missing.
inline std::string TextAt(const DICOMObject& object, TagKey key) {
  const VR* vr = object.GetVR(GroupOf(key), ElementOf(key));
  return vr == nullptr ? "-" : TextOf(*vr);
}
inline std::string SyntaxOf(const DICOMObject& object) {
  return TextAt(object, kTransferSyntaxTag);
}

/// The bytes of each item of the pixel data.
inline std::vector<Bytes> ItemsOf(DICOMObject& object) {
  std::vector<Bytes> items;
  VR& pixels = PixelsOf(object);
  for (std::uint32_t at = 0; at < pixels.ItemCount(); ++at) {
    items.push_back(ValueOf(*pixels.GetItem(at)->GetVR(kStructuralGroup, kItemElement)));
  }
  return items;
}

}  // namespace tessaret::test
