// Data sets as bytes of a stream, put together element by element. The rules of DICOM PS3.5, 7 stand here a second time,
// without any of the library's code, so that readers and writers are held to something of its own.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace tessaret::test {

/// The three encodings, by the library's numbers.
enum class Encoding : std::int32_t {
  kImplicitLittle = 100,
  kExplicitLittle = 101,
  kExplicitBig = 102
};
inline constexpr Encoding kAllEncodings[] = {Encoding::kImplicitLittle, Encoding::kExplicitLittle,
                                             Encoding::kExplicitBig};

const char* NameOf(Encoding encoding);
/// The UID that names the encoding in a meta header.
std::string_view SyntaxUidOf(Encoding encoding);

inline constexpr std::uint32_t kNoLength = 0xFFFFFFFF;

/// Whether a sequence and its items state their lengths or end with delimiters.
enum class Lengths { kDefined, kUndefined };

class DataSetBuilder {
 public:
  explicit DataSetBuilder(Encoding encoding) : encoding_(encoding) {}

  // Numbers in the byte order of the encoding.
  DataSetBuilder& U8(std::uint8_t value);
  DataSetBuilder& U16(std::uint16_t value);
  DataSetBuilder& U32(std::uint32_t value);
  DataSetBuilder& Tag(std::uint16_t group, std::uint16_t element) {
    return U16(group).U16(element);
  }
  DataSetBuilder& Raw(const Bytes& bytes);

  /// Tag, letters and length of an element. The letters, two of any kind, are left out in the implicit encoding; OB, OW,
  /// UN, UT and SQ have the long length field.
  DataSetBuilder& Head(std::uint16_t group, std::uint16_t element, std::string_view letters,
                       std::uint32_t length);
  /// A whole element, with the length that its value has. An odd length is not padded.
  DataSetBuilder& Element(std::uint16_t group, std::uint16_t element, std::string_view letters,
                          const Bytes& value);
  DataSetBuilder& Element(std::uint16_t group, std::uint16_t element, std::string_view letters,
                          std::string_view text);
  /// A US element.
  DataSetBuilder& Number(std::uint16_t group, std::uint16_t element, std::uint16_t value);

  DataSetBuilder& Item(std::uint32_t length = kNoLength) { return Tag(0xFFFE, 0xE000).U32(length); }
  DataSetBuilder& EndItem() { return Tag(0xFFFE, 0xE00D).U32(0); }
  DataSetBuilder& EndSequence() { return Tag(0xFFFE, 0xE0DD).U32(0); }
  /// A whole SQ element around the bytes of its items.
  DataSetBuilder& Sequence(std::uint16_t group, std::uint16_t element, Lengths sequence,
                           Lengths items, const std::vector<Bytes>& contents);
  /// Encapsulated pixel data: each of `fragments`, the offset table first, and the delimiter.
  DataSetBuilder& Fragments(const std::vector<Bytes>& fragments);

  [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
  operator const Bytes&() const { return bytes_; }
  [[nodiscard]] const Bytes& Done() const { return bytes_; }

 private:
  Encoding encoding_;
  Bytes bytes_;
};

/// 128 bytes of zero and "DICM".
Bytes Preamble();

/// Group 0002 as most files have it, in explicit little endian: length, version, the transfer syntax, implementation class
/// UID, with the group length as the standard counts it.
Bytes MetaGroup(std::string_view syntaxUid);
/// The same around other elements; `elements` stand behind the group length.
Bytes MetaGroupOf(const Bytes& elements, std::uint32_t groupLength);

/// A whole file: preamble, meta group for the encoding, data set.
Bytes FileOf(Encoding encoding, const Bytes& dataSet);

/// `value` with a NUL where that makes its length even.
Bytes Evened(std::string_view value);

/// A data set made by chance, the same for the same seed: elements of every kind, some empty, some of odd length, sequences
/// of both kinds of length down to `depth` levels and at times pixel data, native or in fragments. Its bytes are well
/// formed.
Bytes RandomDataSet(Encoding encoding, std::uint32_t seed, int depth = 3);

/// The lines of a dictionary that knows the tags of RandomDataSet.
std::string_view RandomDataSetDictionary();

}  // namespace tessaret::test
