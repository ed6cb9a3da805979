// Small DICOM files to be sent, as bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {

inline constexpr const char* kImplicit = "1.2.840.10008.1.2";
inline constexpr const char* kExplicit = "1.2.840.10008.1.2.1";
inline constexpr const char* kBig = "1.2.840.10008.1.2.2";
inline constexpr const char* kCTStorage = "1.2.840.10008.5.1.4.1.1.2";
inline constexpr const char* kMRStorage = "1.2.840.10008.5.1.4.1.1.4";

/// The words of four pixels of 16 bits.
inline constexpr std::uint16_t kWords[] = {0x0102, 0x0304, 0x8001, 0x00FF};

/// The same as bytes of little endian words.
inline Bytes LittleWords() { return {0x02, 0x01, 0x04, 0x03, 0x01, 0x80, 0xFF, 0x00}; }

inline DataSetBuilder ImageHead(Encoding encoding, std::string_view sopClass,
                                std::string_view instance, std::uint16_t columns,
                                std::uint16_t bits) {
  DataSetBuilder head(encoding);
  if (!sopClass.empty()) head.Element(0x0008, 0x0016, "UI", Evened(sopClass));
  head.Element(0x0008, 0x0018, "UI", Evened(instance));
  head.Element(0x0010, 0x0010, "PN", "Doe^Jane");
  head.Number(0x0028, 0x0002, 1).Element(0x0028, 0x0004, "CS", "MONOCHROME2 ");
  head.Number(0x0028, 0x0010, 2).Number(0x0028, 0x0011, columns);
  head.Number(0x0028, 0x0100, bits).Number(0x0028, 0x0101, bits);
  head.Number(0x0028, 0x0102, static_cast<std::uint16_t>(bits - 1));
  head.Number(0x0028, 0x0103, 0);
  return head;
}

/// The same with an icon in front of the pixels, which is one fragment.
inline DataSetBuilder ImageHeadWithIcon(Encoding encoding, std::uint16_t columns,
                                        std::uint16_t bits, const Bytes& fragment) {
  DataSetBuilder icon(encoding);
  icon.Number(0x0028, 0x0010, 2).Number(0x0028, 0x0011, 4).Fragments({{}, fragment});
  DataSetBuilder head = ImageHead(encoding, kCTStorage, "1.2.3.6", columns, bits);
  head.Sequence(0x0088, 0x0200, Lengths::kUndefined, Lengths::kUndefined, {icon});
  return head;
}

/// A native image of two rows of two pixels.
inline Bytes ImageFile(std::string_view instance = "1.2.3.4",
                       std::string_view sopClass = kCTStorage,
                       Encoding encoding = Encoding::kExplicitLittle) {
  DataSetBuilder words(encoding);
  for (const std::uint16_t word : kWords) words.U16(word);
  return FileOf(
      encoding,
      ImageHead(encoding, sopClass, instance, 2, 16).Element(0x7FE0, 0x0010, "OW", words.Done()));
}

/// The paths of `count` images that are called by their numbers from 0, which end their instances, too.
inline std::vector<std::string> WriteNumberedImages(const TempFolder& folder, std::size_t count,
                                                    const std::string& root = "1.2.3") {
  std::vector<std::string> paths;
  for (std::size_t each = 0; each < count; ++each) {
    const std::string name = std::to_string(each);
    WriteBytes(folder.File(name), ImageFile(root + "." + name));
    paths.push_back(folder.File(name));
  }
  return paths;
}

/// An image of two rows of four bytes in one fragment of `syntax`.
inline Bytes CompressedFile(std::string_view syntax, const Bytes& fragment,
                            std::string_view instance = "1.2.3.5",
                            std::string_view sopClass = kCTStorage) {
  DataSetBuilder data = ImageHead(Encoding::kExplicitLittle, sopClass, instance, 4, 8);
  data.Fragments({Bytes(), fragment});
  return Joined({Preamble(), MetaGroup(syntax), data.Done()});
}

/// The same with an icon in one fragment more.
inline Bytes CompressedFileWithIcon(std::string_view syntax, const Bytes& fragment,
                                    const Bytes& iconFragment) {
  DataSetBuilder data = ImageHeadWithIcon(Encoding::kExplicitLittle, 4, 8, iconFragment);
  data.Fragments({Bytes(), fragment});
  return Joined({Preamble(), MetaGroup(syntax), data.Done()});
}

/// The native image with an icon in one fragment, for which its syntax has no name.
inline Bytes NativeFileWithIcon(Encoding encoding, const Bytes& iconFragment) {
  DataSetBuilder words(encoding);
  for (const std::uint16_t word : kWords) words.U16(word);
  return FileOf(
      encoding,
      ImageHeadWithIcon(encoding, 2, 16, iconFragment).Element(0x7FE0, 0x0010, "OW", words.Done()));
}

}  // namespace tessaret::test
