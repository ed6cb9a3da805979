// Files that are no DICOM, lie about their lengths, end early, or have their bytes in disorder. A load either gives what can be
// read, with all that came before the fault unharmed, or fails with words; nothing crashes, hangs, or takes memory for bytes
// that are not there.
#include <array>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include "fault_helpers.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr const char* kNoMark = "Error checking DICOM MetaHeader";

// The largest piece of memory that a load may ask for beside the bytes that are there.
constexpr std::size_t kAllowance = 1 << 20;

// F01

std::vector<Bytes> NoDicomAtAll() {
  std::vector<Bytes> files;
  for (std::size_t size = 0; size <= 132; ++size) files.push_back(Pattern(size));
  files.push_back(Bytes(132, 0));
  files.push_back(
      BytesOf("The quick brown fox jumps over the lazy dog. " + std::string(2000, 'x')));
  files.push_back(Joined({BytesOf("PK\x03\x04"), Pattern(5000)}));
  Bytes program(200000);
  std::ifstream self("/proc/self/exe", std::ios::binary);
  self.read(reinterpret_cast<char*>(program.data()), static_cast<std::streamsize>(program.size()));
  EXPECT_TRUE(self.good());
  files.push_back(program);
  return files;
}

TEST(BrokenFiles, WhatIsNoDicomIsRefusedWhereTheMarkIsAskedFor) {
  for (const Bytes& bytes : NoDicomAtAll()) {
    for (const Loaded& loaded :
         {LoadFileOf(bytes, {.strict = true}), LoadBlock(bytes, {.strict = true})}) {
      EXPECT_EQ(loaded.object, nullptr);
      EXPECT_EQ(loaded.error, kNoMark);
    }
  }
}

TEST(BrokenFiles, WhatIsNoDicomIsReadAsFarAsItGoesWhereItIsNot) {
  for (const Bytes& bytes : NoDicomAtAll()) {
    const AllocationWatch watch;
    const Loaded loaded = LoadFileOf(bytes);
    EXPECT_LE(watch.LargestRequest(), bytes.size() + kAllowance);
    EXPECT_TRUE(loaded.object != nullptr || loaded.error.has_value());
    LoadBlock(bytes);
  }
}

// F02

TEST(BrokenFiles, ADataSetAloneIsReadInTheFormOfItsFirstElement) {
  for (const Encoding encoding : {kImplicit, kExplicit}) {
    const Bytes bytes =
        PatientAnd(encoding, DataSetBuilder(encoding).Element(0x0010, 0x0020, "LO", "4711"));
    const Loaded loaded = LoadFileOf(bytes);
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_EQ(loaded.stop.why, Why::kNone);
    EXPECT_EQ(TagsOf(*loaded.object), "(0010,0010) (0010,0020)");
    EXPECT_EQ(LoadFileOf(bytes, {.strict = true}).error, kNoMark);
  }
}

TEST(BrokenFiles, ABigEndianDataSetAloneIsTakenForLittleEndianAndEndsEarly) {
  // Nothing in it says otherwise: its first length reads as 0x0800.
  const Loaded loaded = LoadFileOf(PatientAnd(kBig, {}));
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_EQ(loaded.error, std::nullopt);
  EXPECT_EQ(loaded.stop, (ParseStop{Why::kTruncated, 0, 0x1000, 0x1000}));
  EXPECT_EQ(LoadFileOf(PatientAnd(kBig, {}), {.strict = true}).error, kNoMark);
}

// F03, F04

constexpr std::string_view kAllTypes[] = {"AE", "AS", "AT", "CS", "DA", "DS", "DT", "FD", "FL",
                                          "IS", "LO", "LT", "OB", "OD", "OF", "OL", "OV", "OW",
                                          "PN", "SH", "SL", "SQ", "SS", "ST", "SV", "TM", "UC",
                                          "UI", "UL", "UN", "UR", "US", "UT", "UV"};

struct Claim {
  std::string what;
  Bytes file;
  bool patientFirst = true;  // the patient's name stands before the lie
};

/// Files of some 300 bytes in which something states `length`.
std::vector<Claim> FilesThatClaim(Encoding encoding, std::uint32_t length) {
  std::vector<Claim> claims;
  const auto add = [&](const std::string& what, const Bytes& data) {
    claims.push_back(
        {std::string(NameOf(encoding)) + " " + what, FileOf(encoding, PatientAnd(encoding, data))});
  };
  const Bytes some = Pattern(40);
  for (const std::string_view type : kAllTypes) {
    const Bytes liar = DataSetBuilder(encoding).Head(0x0011, 0x1001, type, length).Raw(some);
    const std::string name(type);
    add(name, liar);
    const auto inside = static_cast<std::uint32_t>(liar.size());
    add(name + " in a defined item",
        DataSetBuilder(encoding).Head(0x0011, 0x1000, "SQ", inside + 8).Item(inside).Raw(liar));
    add(name + " in an undefined item",
        DataSetBuilder(encoding).Head(0x0011, 0x1000, "SQ", kNoLength).Item().Raw(liar));
  }
  add("item",
      DataSetBuilder(encoding).Head(0x0011, 0x1000, "SQ", kNoLength).Item(length).Raw(some));
  add("fragment", DataSetBuilder(encoding)
                      .Head(0x7FE0, 0x0010, "OB", kNoLength)
                      .Item(0)
                      .Item(length)
                      .Raw(some));
  add("not a fragment", DataSetBuilder(encoding)
                            .Head(0x7FE0, 0x0010, "OB", kNoLength)
                            .Tag(0x0011, 0x0001)
                            .U32(length)
                            .Raw(some));
  add("stray tag", DataSetBuilder(encoding).Tag(0xFFFE, 0x0001).U32(length).Raw(some));
  const Bytes meta = DataSetBuilder(kExplicit).Head(0x0002, 0x0102, "OB", length).Raw(some);
  claims.push_back({"meta element", Joined({Preamble(), MetaGroupOf(meta, 200)}), false});
  return claims;
}

class Claims : public ::testing::TestWithParam<std::tuple<Encoding, std::uint32_t>> {
 protected:
  const std::vector<Claim> claims_ =
      FilesThatClaim(std::get<0>(GetParam()), std::get<1>(GetParam()));

  static void ExpectHarmless(const Claim& claim, const Loaded& loaded, std::size_t largest) {
    EXPECT_LE(largest, claim.file.size() + kAllowance) << claim.what;
    ASSERT_NE(loaded.object, nullptr) << claim.what;
    EXPECT_EQ(loaded.error, std::nullopt) << claim.what;
    EXPECT_EQ(HasPatient(*loaded.object), claim.patientFirst) << claim.what;
  }
};

TEST_P(Claims, TakeNoMemoryFromFilesAndBlocks) {
  for (const Claim& claim : claims_) {
    PlainFileBuffer plain;
    DrippingFileBuffer dripping;
    for (FileBuffer* buffer : {static_cast<FileBuffer*>(nullptr), static_cast<FileBuffer*>(&plain),
                               static_cast<FileBuffer*>(&dripping)}) {
      const AllocationWatch watch;
      const Loaded loaded = LoadFileOf(claim.file, {.buffer = buffer});
      ExpectHarmless(claim, loaded, watch.LargestRequest());
    }
    const AllocationWatch watch;
    const Loaded block = LoadBlock(claim.file);
    EXPECT_LE(watch.LargestRequest(), claim.file.size() + kAllowance) << claim.what;
    EXPECT_TRUE(block.object != nullptr || block.error == "Error parsing DICOM Object")
        << claim.what;
  }
}

TEST_P(Claims, TakeNoMemoryFromAPeer) {
  for (const Claim& claim : claims_) {
    DrippingBuffer peer(Bytes(claim.file.begin() + 132, claim.file.end()), 16);
    const AllocationWatch watch;
    const Parsed parsed = ParseFileFrom(peer, {});
    EXPECT_LE(watch.LargestRequest(), claim.file.size() + kAllowance) << claim.what;
    EXPECT_EQ(HasPatient(*parsed.object), claim.patientFirst) << claim.what;
  }
}

TEST_P(Claims, TakeNoMemoryFromAPipe) {
  for (std::size_t at = 0; at < claims_.size(); at += 7) {
    const Claim& claim = claims_[at];
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ASSERT_EQ(::write(ends[1], claim.file.data(), claim.file.size()),
              static_cast<ssize_t>(claim.file.size()));
    ::close(ends[1]);
    const AllocationWatch watch;
    const Loaded loaded = LoadPath("/proc/self/fd/" + std::to_string(ends[0]));
    ExpectHarmless(claim, loaded, watch.LargestRequest());
    ::close(ends[0]);
  }
}

INSTANTIATE_TEST_SUITE_P(BrokenFiles, Claims,
                         ::testing::Combine(::testing::ValuesIn(kAllEncodings),
                                            ::testing::Values(0xFFFFFFF0u, 0x7FFFFFFFu, 0x80000000u,
                                                              0xFFFFFFFEu, 0x00100001u)),
                         [](const auto& tested) {
                           return Format("%s_%8.8X", NameOf(std::get<0>(tested.param)),
                                         std::get<1>(tested.param));
                         });

// F05

TEST(BrokenFiles, APrivateElementOfAbsurdLengthEndsTheDataSet) {
  // Blanks where the length should be. What came before it is there; what comes behind it cannot be told from its value.
  for (const Encoding encoding : kAllEncodings) {
    const Bytes data = PatientAnd(encoding, DataSetBuilder(encoding)
                                                .Element(0x0011, 0x0010, "LO", "PRIVATE")
                                                .Head(0x0011, 0x1001, "UN", 0x20202020)
                                                .Element(0x0020, 0x0010, "SH", "1 "));
    const Loaded loaded = LoadFileOf(FileOf(encoding, data));
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_TRUE(HasPatient(*loaded.object));
    EXPECT_NE(loaded.object->GetVR(0x0011, 0x0010), nullptr);
    EXPECT_EQ(loaded.stop.why, Why::kTruncated);
    EXPECT_EQ(MakeTagKey(loaded.stop.group, loaded.stop.element), MakeTagKey(0x0011, 0x1001));
  }
}

// F06

/// Holds `cut`, read from the first `size` bytes of a file, against the whole of it.
void ExpectWhatCameBefore(const DICOMObject& cut, const DICOMObject& whole, std::size_t size,
                          std::size_t fileSize) {
  for (const VR* vr = whole.GetFirstVR(); vr != nullptr; vr = whole.GetNextVR(vr)) {
    const VR* next = whole.GetNextVR(vr);
    const std::size_t end = next != nullptr ? next->StreamPosition : fileSize;
    const VR* found = cut.GetVR(vr->Group, vr->Element);
    if (end <= size) {
      ASSERT_NE(found, nullptr) << "cut at " << size;
      EXPECT_EQ(Difference(*vr, *found), "") << "cut at " << size;
    } else if (vr->StreamPosition >= size || vr->Data != nullptr) {
      // It is not there at all, or broke off: only items that came whole may be.
      EXPECT_EQ(found, nullptr) << "cut at " << size;
    }
  }
}

/// Where nothing is noted, nothing of what is there may be missing: the cut lies between elements of the outermost level.
void ExpectWholeElements(const DICOMObject& loaded, const DICOMObject& whole) {
  for (const VR* vr = loaded.GetFirstVR(); vr != nullptr; vr = loaded.GetNextVR(vr)) {
    const VR* original = whole.GetVR(vr->Group, vr->Element);
    ASSERT_NE(original, nullptr);
    EXPECT_EQ(Difference(*vr, *original), "");
  }
}

TEST(BrokenFiles, AFileCutAtAnyByteIsWhatCameBefore) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  MemoryFile file;
  for (std::uint32_t seed = 0; seed < Repetitions(kSeedFiles, 3u); ++seed) {
    const Bytes bytes = SeedFile(seed);
    const Loaded whole = LoadBlock(bytes, {.strict = true, .dictionary = dictionary.get()});
    ASSERT_NE(whole.object, nullptr);
    for (std::size_t size = 132; size < bytes.size(); size += StepBy(3u)) {
      const Bytes cut = Cut(bytes, size);
      file.Fill(cut);
      const Loaded loaded = LoadPath(file.Path(), {.strict = true, .dictionary = dictionary.get()});
      ASSERT_NE(loaded.object, nullptr);
      EXPECT_EQ(loaded.error, std::nullopt);
      ExpectWhatCameBefore(*loaded.object, *whole.object, size, bytes.size());
      EXPECT_LE(loaded.stop.position, size);
      const Loaded block = LoadBlock(cut, {.strict = true, .dictionary = dictionary.get()});
      const bool reads = loaded.stop.why == Why::kNone || loaded.stop.why == Why::kMissingEnd;
      EXPECT_EQ(block.object != nullptr, reads);
      if (loaded.stop.why == Why::kNone) ExpectWholeElements(*loaded.object, *whole.object);
      if (block.object) {
        EXPECT_EQ(Difference(*block.object, *loaded.object), "");
      }
    }
  }
}

// F07

/// Bytes of `object` in the encoding, or nothing when it cannot be written.
std::optional<Bytes> Written(const DICOMObject& object, Encoding encoding, const RTC* dictionary) {
  const std::unique_ptr<DICOMObject> clone(object.Clone(true));
  DataSetCoder coder(dictionary);
  CollectingBuffer buffer;
  const bool written = encoding == kImplicit   ? coder.ImplicitLittleOut(*clone, buffer)
                       : encoding == kExplicit ? coder.ExplicitLittleOut(*clone, buffer)
                                               : coder.ExplicitBigOut(*clone, buffer);
  return written ? std::optional(buffer.Written()) : std::nullopt;
}

TEST(BrokenFiles, AFileWithAnyByteChangedIsReadAndWrittenWithoutHarm) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  for (std::uint32_t seed = 0; seed < Repetitions(kSeedFiles, 3u); ++seed) {
    const Encoding encoding = EncodingOfSeed(seed);
    Bytes bytes = SeedFile(seed);
    for (std::size_t at = 128; at < bytes.size(); at += StepBy(3u)) {
      const std::uint8_t was = bytes[at];
      const std::array<int, 4> values = {0x00, 0xFF, was ^ 0x01, was ^ 0x80};
      for (std::size_t change = 0; change < values.size(); ++change) {
        // Under the sanitizers a byte is changed in one way instead of four.
        if (kInstrumented && change != (at + seed) % values.size()) continue;
        const int value = values[change];
        bytes[at] = static_cast<std::uint8_t>(value);
        const AllocationWatch watch;
        const Loaded loaded = LoadBlock(bytes, {.dictionary = dictionary.get()});
        EXPECT_LE(watch.LargestRequest(), bytes.size() + kAllowance);
        if (loaded.object == nullptr) continue;
        // What is written can be read, and is written the same again.
        const auto once = Written(*loaded.object, encoding, dictionary.get());
        if (!once) continue;
        const Parsed again = Parse(encoding, *once, dictionary.get());
        EXPECT_TRUE(again.result) << "seed " << seed << " byte " << at << " is " << value;
        EXPECT_EQ(Written(*again.object, encoding, dictionary.get()), once)
            << "seed " << seed << " byte " << at << " is " << value;
      }
      bytes[at] = was;
    }
  }
}

// F10, F11

TEST(BrokenFiles, StrayAndMissingStructureLeavesWhatStandsBeforeItAlone) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes leaf = DataSetBuilder(encoding).Element(0x0020, 0x0010, "SH", "1 ");
    const auto open = [&] {
      return DataSetBuilder(encoding).Head(0x0008, 0x1140, "SQ", kNoLength).Item().Raw(leaf);
    };
    const std::vector<Bytes> oddities = {
        DataSetBuilder(encoding).Item().Raw(leaf).EndItem(),
        DataSetBuilder(encoding).Item(static_cast<std::uint32_t>(leaf.size())).Raw(leaf),
        DataSetBuilder(encoding).EndItem().Raw(leaf),
        DataSetBuilder(encoding).EndSequence().Raw(leaf),
        DataSetBuilder(encoding).Tag(0xFFFE, 0xFFFF).U32(0),
        DataSetBuilder(encoding).Tag(0xFFFE, 0x0000).U32(kNoLength).Raw(leaf),
        open(),
        open().EndItem(),
        open().EndSequence(),
        open().EndItem().EndItem().EndSequence(),
        open().EndItem().EndSequence().EndSequence(),
        open().Item().EndItem(),
        DataSetBuilder(encoding).Head(0x0008, 0x1140, "SQ", 16).Item(0).EndSequence(),
        DataSetBuilder(encoding).Head(0x0008, 0x1140, "SQ", 16).EndSequence().EndSequence(),
        DataSetBuilder(encoding).Head(0x7FE0, 0x0010, "OB", kNoLength).Item(0),
        DataSetBuilder(encoding).Head(0x7FE0, 0x0010, "OB", kNoLength).EndItem().EndItem(),
        DataSetBuilder(encoding).Head(0x7FE0, 0x0010, "OB", kNoLength).Raw(leaf),
    };
    for (std::size_t at = 0; at < oddities.size(); ++at) {
      for (const bool closed : {false, true}) {
        Bytes data = PatientAnd(encoding, oddities[at]);
        if (closed)
          data =
              Joined({data, DataSetBuilder(encoding).Element(0xFFFC, 0xFFFC, "OB", "x ").Done()});
        const Loaded loaded = LoadFileOf(FileOf(encoding, data));
        ASSERT_NE(loaded.object, nullptr) << NameOf(encoding) << " " << at;
        EXPECT_TRUE(HasPatient(*loaded.object)) << NameOf(encoding) << " " << at;
        LoadBlock(FileOf(encoding, data));
      }
    }
  }
}

TEST(BrokenFiles, LengthsOfSequencesAndItemsThatAreOffByAFewBytesHarmNothingBefore) {
  const auto dictionary = DictionaryOf("(0008,1140) VR=\"SQ\"\n");
  for (const Encoding encoding : kAllEncodings) {
    const Bytes leaf = DataSetBuilder(encoding).Element(0x0020, 0x0010, "SH", "1234");
    const auto inItem = static_cast<std::uint32_t>(leaf.size());
    for (int off = -8; off <= 8; ++off) {
      for (const bool sequence : {true, false}) {
        const std::uint32_t wrong = static_cast<std::uint32_t>(off);
        const Bytes nested = DataSetBuilder(encoding)
                                 .Head(0x0008, 0x1140, "SQ", inItem + 8 + (sequence ? wrong : 0))
                                 .Item(inItem + (sequence ? 0 : wrong))
                                 .Raw(leaf);
        const Bytes data = DataSetBuilder(encoding)
                               .Element(0x0008, 0x0060, "CS", "MR")
                               .Raw(nested)
                               .Element(0x0020, 0x0011, "IS", "1 ");
        const Loaded loaded = LoadFileOf(FileOf(encoding, data), {.dictionary = dictionary.get()});
        ASSERT_NE(loaded.object, nullptr);
        EXPECT_EQ(ValueText(At(*loaded.object, 0x0008, 0x0060)), "MR");
        EXPECT_NE(loaded.object->GetVR(0x0008, 0x1140), nullptr);
        if (off == 0) {
          EXPECT_EQ(ValueText(At(*loaded.object, 0x0020, 0x0011)), "1 ");
        }
      }
    }
  }
}

// F12, F15

TEST(BrokenFiles, AttributesThatFilesAreReadAndSavedByMayBeOfAnyTypeOrEmpty) {
  struct Attribute {
    std::uint16_t group;
    std::uint16_t element;
  };
  constexpr Attribute kUsed[] = {{0x0002, 0x0000}, {0x0002, 0x0010}, {0x0008, 0x0016},
                                 {0x0008, 0x0018}, {0x0028, 0x0100}, {0x7FE0, 0x0010}};
  const TempFolder folder;
  const std::string path = folder.File("saved.dcm");
  for (const Attribute used : kUsed) {
    for (const std::string_view type : {"LO", "OB", "US", "SQ", "UT", "UI"}) {
      for (const Bytes& value : {Bytes(), Bytes{7}, Bytes{8, 0}, Pattern(40)}) {
        DataSetBuilder meta(kExplicit);
        DataSetBuilder data(kExplicit);
        if (used.element != 0x0000) meta.Head(0x0002, 0x0000, "UL", 4).U32(28);
        if (used.group == 0x0002) meta.Element(used.group, used.element, type, value);
        if (used.element != 0x0010 || used.group != 0x0002) {
          meta.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kExplicit)));
        }
        if (used.group != 0x0002) data.Element(used.group, used.element, type, value);
        const Loaded loaded = LoadFileOf(Joined({Preamble(), meta, data}));
        ASSERT_NE(loaded.object, nullptr);
        DataSetCoder coder;
        for (const std::int32_t mode : {1, 2, 3})
          coder.SaveKeeping(path.c_str(), mode, *loaded.object);
      }
    }
  }
}

// F14

TEST(BrokenFiles, ValuesOfOddLengthAreKeptAndWrittenWithAPadByte) {
  for (const Encoding encoding : kAllEncodings) {
    for (const std::string_view type : kAllTypes) {
      if (type == "SQ") continue;
      const Bytes data = DataSetBuilder(encoding).Element(0x0011, 0x1001, type, "odd");
      const Parsed parsed = Parse(encoding, data);
      ASSERT_TRUE(parsed.result);
      EXPECT_EQ(ValueText(At(*parsed.object, 0x0011, 0x1001)), "odd");
      EXPECT_EQ(*Written(*parsed.object, encoding, nullptr),
                DataSetBuilder(encoding)
                    .Element(0x0011, 0x1001, encoding == kImplicit ? "UN" : type,
                             std::string_view("odd\0", 4))
                    .Done())
          << type;
    }
  }
}

// F17

TEST(BrokenFiles, NumbersInTextAreKeptAsTheyStand) {
  for (const std::string& text :
       {std::string(1000, '9'), std::string("1e999999"), std::string("nan "), std::string(","),
        std::string("9223372036854775808 "), std::string("-9223372036854775809")}) {
    for (const std::string_view type : {"DS", "IS"}) {
      const Bytes bytes =
          FileOf(kExplicit, DataSetBuilder(kExplicit).Element(0x0020, 0x0013, type, text));
      EXPECT_EQ(ValueText(At(*LoadFileOf(bytes).object, 0x0020, 0x0013)), text);
    }
  }
}

// F18

TEST(BrokenFiles, AGroupLengthThatIsWrongInEitherDirectionLosesNothingOfAnExplicitFile) {
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kExplicit)));
  elements.Element(0x0002, 0x0012, "UI", "1.");
  const Bytes data =
      PatientAnd(kExplicit, DataSetBuilder(kExplicit).Element(0x0010, 0x0020, "LO", "4711"));
  for (std::uint32_t length = 0; length <= 300; ++length) {
    for (const std::uint32_t stated : {length, 0xFFFFFFFF - length, length << 16 | 0xFFFF}) {
      const Loaded loaded =
          LoadFileOf(Joined({Preamble(), MetaGroupOf(elements, stated), data}), {.strict = true});
      ASSERT_NE(loaded.object, nullptr);
      EXPECT_EQ(loaded.stop.why, Why::kNone) << stated;
      EXPECT_TRUE(HasPatient(*loaded.object)) << stated;
      EXPECT_EQ(ValueText(At(*loaded.object, 0x0010, 0x0020)), "4711") << stated;
    }
  }
  const Loaded without = LoadFileOf(Joined({Preamble(), elements, data}), {.strict = true});
  EXPECT_TRUE(HasPatient(*without.object));
  EXPECT_EQ(ValueText(At(*without.object, 0x0010, 0x0020)), "4711");
}

TEST(BrokenFiles, AGroupLengthThatIsTooLargeLosesNothingOfAnyFile) {
  for (const Encoding encoding : kAllEncodings) {
    DataSetBuilder elements(kExplicit);
    elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(encoding)));
    const auto right = static_cast<std::uint32_t>(elements.Size());
    for (const std::uint32_t stated : {right + 1, right + 2, right + 100, 0x7FFFu, 0xFFFFu}) {
      const Loaded loaded =
          LoadFileOf(Joined({Preamble(), MetaGroupOf(elements, stated), PatientAnd(encoding, {})}));
      EXPECT_TRUE(HasPatient(*loaded.object)) << NameOf(encoding) << " " << stated;
    }
  }
}

// F19

TEST(BrokenFiles, DisorderAndDuplicatesAreReadAndWrittenInOrder) {
  const Bytes data = DataSetBuilder(kExplicit)
                         .Element(0x0020, 0x0010, "SH", "2 ")
                         .Element(0x0010, 0x0010, "PN", "Old^Name")
                         .Element(0x0000, 0x0100, "US", Bytes{1, 0})
                         .Element(0x0002, 0x0013, "SH", "stray ")
                         .Element(0x0010, 0x0010, "PN", "Doe^John")
                         .Element(0x0008, 0x0060, "CS", "MR");
  const Loaded loaded = LoadFileOf(FileOf(kExplicit, data));
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_TRUE(HasPatient(*loaded.object));
  EXPECT_EQ(TagsOf(*loaded.object),
            "(0000,0100) (0002,0000) (0002,0001) (0002,0010) (0002,0012) (0002,0013) (0008,0060) "
            "(0010,0010) (0020,0010)");
  EXPECT_EQ(*Written(*loaded.object, kExplicit, nullptr),
            DataSetBuilder(kExplicit)
                .Element(0x0000, 0x0100, "US", Bytes{1, 0})
                .Element(0x0008, 0x0060, "CS", "MR")
                .Element(0x0010, 0x0010, "PN", "Doe^John")
                .Element(0x0020, 0x0010, "SH", "2 ")
                .Done());
}

// F20

TEST(BrokenFiles, ASyntaxThatDoesNotFitTheDataSetHarmsNothing) {
  const auto dictionary = DictionaryOf(std::string(RandomDataSetDictionary()));
  for (const Encoding declared : kAllEncodings) {
    for (const Encoding actual : kAllEncodings) {
      for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const Bytes bytes =
            Joined({Preamble(), MetaGroup(SyntaxUidOf(declared)), RandomDataSet(actual, seed, 2)});
        const AllocationWatch watch;
        const Loaded loaded = LoadFileOf(bytes, {.dictionary = dictionary.get()});
        EXPECT_LE(watch.LargestRequest(), bytes.size() + kAllowance);
        ASSERT_NE(loaded.object, nullptr);
        EXPECT_NE(loaded.object->GetVR(0x0002, 0x0010), nullptr);
        if (declared == actual) {
          EXPECT_EQ(loaded.stop.why, Why::kNone);
        }
      }
    }
  }
}

// F22

TEST(BrokenFiles, UNOfUndefinedLengthIsReadInTheFormOfTheStream) {
  // What the standard wants to be implicit there does not make sense as explicit: the load ends, with what came before.
  const Bytes inside = DataSetBuilder(kImplicit)
                           .Item()
                           .Element(0x0008, 0x1150, "UI", "1.2.3.")
                           .EndItem()
                           .EndSequence();
  const Bytes data = DataSetBuilder(kExplicit)
                         .Element(0x0010, 0x0010, "PN", "Doe^John")
                         .Head(0x0011, 0x1001, "UN", kNoLength)
                         .Raw(inside)
                         .Element(0x0020, 0x0010, "SH", "1 ");
  const Loaded loaded = LoadFileOf(FileOf(kExplicit, data));
  ASSERT_NE(loaded.object, nullptr);
  EXPECT_TRUE(HasPatient(*loaded.object));
  EXPECT_EQ(loaded.error, std::nullopt);
}

// F23

TEST(BrokenFiles, PrivateBlocksAreKeptWhateverTheirCreators) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes data = DataSetBuilder(encoding)
                           .Element(0x0009, 0x0010, "LO", "FIRST ")
                           .Element(0x0009, 0x0011, "LO", "FIRST ")
                           .Element(0x0009, 0x1001, "UN", Pattern(10))
                           .Element(0x0009, 0x1101, "UN", Pattern(12))
                           .Element(0x0009, 0x2001, "UN", Pattern(14))
                           .Element(0x000B, 0x1001, "UN", Pattern(6))
                           .Element(0x000D, 0x0001, "UN", Pattern(4));
    const auto dictionary = DictionaryOf("(0009,0010) VR=\"LO\"\n(0009,0011) VR=\"LO\"\n");
    const Parsed parsed = Parse(encoding, data, dictionary.get());
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(CountOf(*parsed.object), 7u);
    EXPECT_EQ(*Written(*parsed.object, encoding, dictionary.get()), data);
  }
}

// F25

TEST(BrokenFiles, APreambleThatIsAnotherFormatIsReadOverAndNotWritten) {
  const TempFolder folder;
  const std::string path = folder.File("saved.dcm");
  for (const std::string_view start : {"\x7F"
                                       "ELF\x02\x01\x01",
                                       "MZ\x90", "II*", "MM", "#!/bin/sh\nrm -rf /\n"}) {
    Bytes bytes = FileOf(kExplicit, PatientAnd(kExplicit, {}));
    std::copy(start.begin(), start.end(), bytes.begin());
    const Loaded loaded = LoadFileOf(bytes, {.strict = true});
    ASSERT_NE(loaded.object, nullptr);
    EXPECT_TRUE(HasPatient(*loaded.object));
    ASSERT_TRUE(DataSetCoder().SaveFile(path.c_str(), 3, *loaded.object));
    EXPECT_EQ(Cut(ReadBytes(path), 132), Preamble());
  }
}

// F29

TEST(BrokenFiles, AnUnchangedDataSetIsWrittenByteForByte) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes leaf = DataSetBuilder(encoding)
                           .Element(0x0008, 0x1150, "UI", Evened("1.2.3"))
                           .Number(0x0028, 0x0010, 512);
    const Bytes inner = DataSetBuilder(encoding).Sequence(0x0040, 0x0275, Lengths::kUndefined,
                                                          Lengths::kUndefined, {leaf, {}});
    const Bytes data =
        DataSetBuilder(encoding)
            .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {inner, leaf})
            .Element(0x0009, 0x1001, "UN", Pattern(100))
            .Element(0x0010, 0x0010, "PN", "Doe^John")
            .Element(0x0028, 0x0106, "SS", Bytes{0x80, 0x00})
            .Element(0x0040, 0xA160, "UT", Pattern(70000))
            .Fragments({Pattern(8), Pattern(1000)});
    const Parsed parsed = Parse(encoding, data);
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(*Written(*parsed.object, encoding, nullptr), data);
  }
}

TEST(BrokenFiles, AnEditDeepWithinDefinedLengthsIsWrittenRight) {
  const auto dictionary =
      DictionaryOf("(0008,1140) VR=\"SQ\"\n(0040,0275) VR=\"SQ\"\n(0008,1150) VR=\"UI\"\n");
  const TempFolder folder;
  const std::string path = folder.File("edited.dcm");
  for (const Encoding encoding : kAllEncodings) {
    const Bytes leaf = DataSetBuilder(encoding).Element(0x0008, 0x1150, "UI", Evened("1.2.3"));
    const Bytes inner = DataSetBuilder(encoding).Sequence(0x0040, 0x0275, Lengths::kDefined,
                                                          Lengths::kDefined, {leaf});
    const Bytes data =
        DataSetBuilder(encoding)
            .Sequence(0x0008, 0x1140, Lengths::kDefined, Lengths::kDefined, {inner, leaf})
            .Element(0x0010, 0x0010, "PN", "Doe^John");
    const Loaded loaded = LoadFileOf(FileOf(encoding, data), {.dictionary = dictionary.get()});
    DICOMObject& deep = ItemAt(ItemAt(*loaded.object, 0x0008, 0x1140, 0), 0x0040, 0x0275, 0);
    deep.Push(NewElement(0x0008, 0x1150, type_code::UI, std::string(60, '1')));
    ASSERT_TRUE(DataSetCoder(dictionary.get()).SaveFile(path.c_str(), 3, *loaded.object));
    const Loaded again = LoadPath(path, {.strict = true, .dictionary = dictionary.get()});
    EXPECT_EQ(again.stop.why, Why::kNone);
    EXPECT_TRUE(HasPatient(*again.object));
    const DICOMObject& edited = ItemAt(ItemAt(*again.object, 0x0008, 0x1140, 0), 0x0040, 0x0275, 0);
    EXPECT_EQ(ValueText(At(edited, 0x0008, 0x1150)), std::string(60, '1'));
    EXPECT_EQ(ValueText(At(ItemAt(*again.object, 0x0008, 0x1140, 1), 0x0008, 0x1150)),
              std::string("1.2.3\0", 6));
  }
}

}  // namespace
}  // namespace tessaret::test
