#include "support/data_set_builder.h"

#include <algorithm>
#include <array>
#include <random>

namespace tessaret::test {
namespace {

constexpr std::array<std::string_view, 5> kLongForms = {"OB", "OW", "UN", "UT", "SQ"};

bool IsLongForm(std::string_view letters) {
  return std::find(kLongForms.begin(), kLongForms.end(), letters) != kLongForms.end();
}

struct RandomTag {
  std::uint16_t group;
  std::uint16_t element;
  std::string_view letters;
};

// In the order of tags. Those of type SQ hold items.
constexpr RandomTag kRandomTags[] = {
    {0x0008, 0x0008, "CS"}, {0x0008, 0x0018, "UI"}, {0x0008, 0x0020, "DA"}, {0x0008, 0x1140, "SQ"},
    {0x0009, 0x0010, "LO"}, {0x0009, 0x1001, "UN"}, {0x0010, 0x0010, "PN"}, {0x0018, 0x0050, "DS"},
    {0x0018, 0x9004, "CS"}, {0x0020, 0x0013, "IS"}, {0x0028, 0x0009, "AT"}, {0x0028, 0x0010, "US"},
    {0x0028, 0x0106, "SS"}, {0x0028, 0x1201, "OW"}, {0x0040, 0x0275, "SQ"}, {0x0040, 0xA160, "UT"},
    {0x0048, 0x0107, "OB"}, {0x0070, 0x0022, "FL"}, {0x3004, 0x000C, "FD"}, {0x5200, 0x9229, "SQ"},
    {0x7FE0, 0x0001, "UL"},
};

constexpr std::string_view kDictionary =
    "(0008,0008) VR=\"CS\"\n(0008,0018) VR=\"UI\"\n(0008,0020) VR=\"DA\"\n(0008,1140) VR=\"SQ\"\n"
    "(0010,0010) VR=\"PN\"\n(0018,0050) VR=\"DS\"\n(0018,9004) VR=\"CS\"\n(0020,0013) VR=\"IS\"\n"
    "(0028,0009) VR=\"AT\"\n(0028,0010) VR=\"US\"\n(0028,0106) VR=\"SS\"\n(0028,1201) VR=\"OW\"\n"
    "(0040,0275) VR=\"SQ\"\n(0040,A160) VR=\"UT\"\n(0048,0107) VR=\"OB\"\n(0070,0022) VR=\"FL\"\n"
    "(3004,000C) VR=\"FD\"\n(5200,9229) VR=\"SQ\"\n(7FE0,0001) VR=\"UL\"\n(7FE0,0010) VR=\"OW\"\n";

class RandomBytes {
 public:
  RandomBytes(Encoding encoding, std::uint32_t seed) : encoding_(encoding), engine_(seed) {}

  Bytes DataSet(int depth, bool outermost) {
    DataSetBuilder built(encoding_);
    for (const RandomTag& tag : kRandomTags) {
      if (Chance(3)) continue;
      if (tag.letters == "SQ") {
        if (depth > 0) AddSequence(built, tag, depth);
      } else {
        built.Element(tag.group, tag.element, tag.letters, Value());
      }
    }
    if (outermost && Chance(2)) AddPixels(built);
    return built;
  }

 private:
  std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(engine_() % limit); }
  bool Chance(std::uint32_t oneOf) { return Below(oneOf) == 0; }
  Lengths AnyLengths() { return Chance(2) ? Lengths::kDefined : Lengths::kUndefined; }

  Bytes Value() {
    Bytes value(Chance(4) ? 0 : Below(24));
    for (std::uint8_t& byte : value) byte = static_cast<std::uint8_t>(Below(256));
    return value;
  }

  void AddSequence(DataSetBuilder& built, const RandomTag& tag, int depth) {
    std::vector<Bytes> contents(Below(3));
    for (Bytes& content : contents) content = DataSet(depth - 1, false);
    built.Sequence(tag.group, tag.element, AnyLengths(), AnyLengths(), contents);
  }

  void AddPixels(DataSetBuilder& built) {
    if (Chance(2)) {
      built.Element(0x7FE0, 0x0010, "OW", Value());
    } else {
      built.Fragments({Value(), Value(), Value()});
    }
    built.Element(0xFFFC, 0xFFFC, "OB", Value());
  }

  Encoding encoding_;
  std::mt19937 engine_;
};

}  // namespace

const char* NameOf(Encoding encoding) {
  constexpr std::array<const char*, 3> kNames = {"ImplicitLittle", "ExplicitLittle", "ExplicitBig"};
  return kNames[static_cast<std::size_t>(static_cast<std::int32_t>(encoding) - 100)];
}

std::string_view SyntaxUidOf(Encoding encoding) {
  constexpr std::array<std::string_view, 3> kUids = {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1",
                                                     "1.2.840.10008.1.2.2"};
  return kUids[static_cast<std::size_t>(static_cast<std::int32_t>(encoding) - 100)];
}

DataSetBuilder& DataSetBuilder::U8(std::uint8_t value) {
  bytes_.push_back(value);
  return *this;
}

DataSetBuilder& DataSetBuilder::U16(std::uint16_t value) {
  const auto high = static_cast<std::uint8_t>(value >> 8);
  const auto low = static_cast<std::uint8_t>(value & 0xFF);
  return encoding_ == Encoding::kExplicitBig ? U8(high).U8(low) : U8(low).U8(high);
}

DataSetBuilder& DataSetBuilder::U32(std::uint32_t value) {
  const auto high = static_cast<std::uint16_t>(value >> 16);
  const auto low = static_cast<std::uint16_t>(value & 0xFFFF);
  return encoding_ == Encoding::kExplicitBig ? U16(high).U16(low) : U16(low).U16(high);
}

DataSetBuilder& DataSetBuilder::Raw(const Bytes& bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

DataSetBuilder& DataSetBuilder::Head(std::uint16_t group, std::uint16_t element,
                                     std::string_view letters, std::uint32_t length) {
  Tag(group, element);
  if (encoding_ == Encoding::kImplicitLittle) return U32(length);
  U8(static_cast<std::uint8_t>(letters[0])).U8(static_cast<std::uint8_t>(letters[1]));
  return IsLongForm(letters) ? U16(0).U32(length) : U16(static_cast<std::uint16_t>(length));
}

DataSetBuilder& DataSetBuilder::Element(std::uint16_t group, std::uint16_t element,
                                        std::string_view letters, const Bytes& value) {
  return Head(group, element, letters, static_cast<std::uint32_t>(value.size())).Raw(value);
}

DataSetBuilder& DataSetBuilder::Element(std::uint16_t group, std::uint16_t element,
                                        std::string_view letters, std::string_view text) {
  return Element(group, element, letters, BytesOf(text));
}

DataSetBuilder& DataSetBuilder::Number(std::uint16_t group, std::uint16_t element,
                                       std::uint16_t value) {
  return Head(group, element, "US", 2).U16(value);
}

DataSetBuilder& DataSetBuilder::Sequence(std::uint16_t group, std::uint16_t element,
                                         Lengths sequence, Lengths items,
                                         const std::vector<Bytes>& contents) {
  DataSetBuilder inside(encoding_);
  for (const Bytes& content : contents) {
    inside.Item(items == Lengths::kDefined ? static_cast<std::uint32_t>(content.size())
                                           : kNoLength);
    inside.Raw(content);
    if (items == Lengths::kUndefined) inside.EndItem();
  }
  if (sequence == Lengths::kDefined) return Element(group, element, "SQ", inside.Done());
  return Head(group, element, "SQ", kNoLength).Raw(inside).EndSequence();
}

DataSetBuilder& DataSetBuilder::Fragments(const std::vector<Bytes>& fragments) {
  Head(0x7FE0, 0x0010, "OB", kNoLength);
  for (const Bytes& fragment : fragments)
    Item(static_cast<std::uint32_t>(fragment.size())).Raw(fragment);
  return EndSequence();
}

Bytes Preamble() { return Joined({Bytes(128, 0), BytesOf("DICM")}); }

Bytes MetaGroupOf(const Bytes& elements, std::uint32_t groupLength) {
  return DataSetBuilder(Encoding::kExplicitLittle)
      .Head(0x0002, 0x0000, "UL", 4)
      .U32(groupLength)
      .Raw(elements);
}

Bytes MetaGroup(std::string_view syntaxUid) {
  DataSetBuilder elements(Encoding::kExplicitLittle);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(syntaxUid));
  elements.Element(0x0002, 0x0012, "UI", Evened("1.2.3"));
  return MetaGroupOf(elements, static_cast<std::uint32_t>(elements.Size()));
}

Bytes FileOf(Encoding encoding, const Bytes& dataSet) {
  return Joined({Preamble(), MetaGroup(SyntaxUidOf(encoding)), dataSet});
}

Bytes Evened(std::string_view value) {
  Bytes bytes = BytesOf(value);
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  return bytes;
}

Bytes RandomDataSet(Encoding encoding, std::uint32_t seed, int depth) {
  return RandomBytes(encoding, seed).DataSet(depth, true);
}

std::string_view RandomDataSetDictionary() { return kDictionary; }

}  // namespace tessaret::test
