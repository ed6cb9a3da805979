// Puts made-up elements into a data set. The data dictionary of the module gives their types.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "core/dicom_object.h"

namespace tessaret::bench {

inline constexpr std::string_view kCtImageStorage = "1.2.840.10008.5.1.4.1.1.2";
inline constexpr std::string_view kRtStructureSetStorage = "1.2.840.10008.5.1.4.1.1.481.3";
inline constexpr std::string_view kMultiFrameWordScStorage = "1.2.840.10008.5.1.4.1.1.7.3";

enum class Syntax { kImplicit, kExplicit };  // both little endian

class ObjectBuilder {
 public:
  /// Fills `object`, which stays the caller's.
  explicit ObjectBuilder(DICOMObject& object) : object_(object) {}

  void Text(TagKey tag, std::string_view text);
  /// An element that is in no dictionary.
  void PrivateText(TagKey tag, VrCode type, std::string_view text);
  void U16(TagKey tag, std::uint16_t value);
  void F32(TagKey tag, float value);
  void F64(TagKey tag, double value);
  /// Pixel data of 16 bits, which is not copied and must outlive the object.
  void Pixels(std::span<const std::uint16_t> pixels);
  /// A new item, the object's, at the end of the sequence `tag`.
  DICOMObject& Item(TagKey tag);

 private:
  void Add(TagKey tag, VrCode type, const void* bytes, std::size_t size);

  DICOMObject& object_;
};

/// Writes a file and throws std::exception when that fails. The object is used up.
void SaveObject(DICOMObject& object, Syntax syntax, const std::filesystem::path& path);

}  // namespace tessaret::bench
