// Whole images for the codec library as the engine meets it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "codecs/frame_maker.h"
#include "core/codec_registry.h"
#include "core/comp_engine.h"
#include "core/object_maker.h"
#include "support/test_paths.h"

namespace tessaret::codecs::test {

inline constexpr const char* kImplicit = "1.2.840.10008.1.2";
inline constexpr const char* kExplicit = "1.2.840.10008.1.2.1";
inline constexpr const char* kRle = "1.2.840.10008.1.2.5";
inline constexpr const char* kJpegBaseline = "1.2.840.10008.1.2.4.50";
inline constexpr const char* kJpegExtended = "1.2.840.10008.1.2.4.51";
inline constexpr const char* kJpegLossless = "1.2.840.10008.1.2.4.57";
inline constexpr const char* kJpegFirstOrder = "1.2.840.10008.1.2.4.70";
inline constexpr const char* kJpegLs = "1.2.840.10008.1.2.4.80";
inline constexpr const char* kJpegLsNear = "1.2.840.10008.1.2.4.81";
inline constexpr const char* kJpeg2000 = "1.2.840.10008.1.2.4.90";
inline constexpr const char* kJpeg2000Lossy = "1.2.840.10008.1.2.4.91";

/// The codec library of this build, and nothing else.
inline CodecRegistry& Registry() {
  static CodecRegistry registry({"", [](const std::string& name) {
                                   return LoadCodecLibrary(
                                       {std::string(::tessaret::test::kBinaryDir) + "/lib/"}, name);
                                 }});
  return registry;
}

using Octets = std::vector<std::uint8_t>;

inline VR* NewNumber(std::uint16_t element, std::uint32_t value) {
  return ::tessaret::test::NewVR(
      MakeTagKey(0x0028, element),
      {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)}, type_code::US);
}

inline VR* NewText(TagKey key, std::string text, VrCode type) {
  if (text.size() % 2 != 0) text += type == type_code::UI ? '\0' : ' ';
  return ::tessaret::test::NewVR(key, ::tessaret::test::BytesOf(text), type);
}

/// A native image of these frames.
inline std::unique_ptr<DICOMObject> NewImage(const FrameFormat& format,
                                             const std::vector<Octets>& frames) {
  Octets pixels;
  for (const Octets& frame : frames) pixels.insert(pixels.end(), frame.begin(), frame.end());
  if (pixels.size() % 2 != 0) pixels.push_back(0);
  std::unique_ptr<DICOMObject> object(::tessaret::test::NewObject({
      NewText(kTransferSyntaxTag, kExplicit, type_code::UI),
      NewText(MakeTagKey(0x0008, 0x0008), "ORIGINAL\\PRIMARY\\AXIAL", type_code::CS),
      NewNumber(0x0002, format.samples),
      NewText(MakeTagKey(0x0028, 0x0004), format.photometric, type_code::CS),
      NewText(MakeTagKey(0x0028, 0x0008), std::to_string(frames.size()), type_code::IS),
      NewNumber(0x0010, format.rows),
      NewNumber(0x0011, format.columns),
      NewNumber(0x0100, format.bitsAllocated),
      NewNumber(0x0101, format.bitsStored),
      NewNumber(0x0102, format.highBit),
      NewNumber(0x0103, format.isSigned ? 1 : 0),
      ::tessaret::test::NewVR(kPixelDataTag, pixels, type_code::OW),
  }));
  if (format.samples > 1) object->Push(NewNumber(0x0006, format.isPlanar ? 1 : 0));
  return object;
}

/// One frame of each pattern.
inline std::vector<Octets> FramesOf(const FrameFormat& format) {
  std::vector<Octets> frames;
  for (const Pattern pattern : kPatterns) frames.push_back(MakeFrame(format, pattern));
  return frames;
}

/// An image in this syntax, one fragment each, with an empty offset table.
inline std::unique_ptr<DICOMObject> NewCoded(const FrameFormat& format, const char* syntax,
                                             std::uint32_t frames,
                                             const std::vector<Octets>& fragments) {
  auto object = NewImage(format, {});
  object->Push(NewText(kTransferSyntaxTag, syntax, type_code::UI));
  object->Push(NewText(MakeTagKey(0x0028, 0x0008), std::to_string(frames), type_code::IS));
  VR* pixels = ::tessaret::test::NewVR(kPixelDataTag);
  pixels->Length = kUndefinedLength;
  constexpr TagKey kItem = MakeTagKey(0xFFFE, 0xE000);
  pixels->AddItem(::tessaret::test::NewObject({::tessaret::test::NewVR(kItem)}));
  for (const Octets& fragment : fragments) {
    pixels->AddItem(::tessaret::test::NewObject({::tessaret::test::NewVR(kItem, fragment)}));
  }
  object->Push(pixels);
  return object;
}

/// A text value without its padding; "-" where there is none.
inline std::string TextAt(const DICOMObject& object, std::uint16_t group, std::uint16_t element) {
  const VR* vr = object.GetVR(group, element);
  if (vr == nullptr) return "-";
  std::string text = ::tessaret::test::TextOf(*vr);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.pop_back();
  return text;
}

inline std::string SyntaxOf(const DICOMObject& object) { return TextAt(object, 0x0002, 0x0010); }

/// The bytes of a native image, as many as these frames have.
inline Octets NativeOf(const DICOMObject& object, std::size_t size) {
  Octets bytes = ::tessaret::test::ValueOf(*object.GetVR(0x7FE0, 0x0010));
  bytes.resize(std::min(bytes.size(), size));
  return bytes;
}

inline Octets Together(const std::vector<Octets>& frames) {
  Octets all;
  for (const Octets& frame : frames) all.insert(all.end(), frame.begin(), frame.end());
  return all;
}

}  // namespace tessaret::codecs::test
