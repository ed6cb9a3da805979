// What the readers and writers trace: every element by its line, every boundary of a sequence by its words.
#include <filesystem>

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/dump.h"
#include "core/element_maker.h"
#include "core/trace.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

const std::string kRule = "-----------------------------\n";

class CoderTrace : public ::testing::Test {
 protected:
  void SetUp() override {
    SetDumpFile(Path().c_str());
    SetDumpFlag(kDumpParse, true);
  }
  void TearDown() override {
    SetDumpFlag(kDumpParse, false);
    SetDumpFile(nullptr);
  }

  /// What was traced since the last call.
  std::string Traced() {
    if (!std::filesystem::exists(Path())) return {};
    std::string text = ReadText(Path());
    std::filesystem::remove(Path());
    return text;
  }
  std::string Path() const { return folder_.File("trace.log"); }

  TempFolder folder_;
  const std::unique_ptr<DcmDictionary> dictionary_ = DictionaryOf(
      "(0008,1140) VR=\"SQ\" Keyword=\"Refs\"\n(0010,0010) VR=\"PN\" Keyword=\"Name\"\n");
};

// The lines of one element, which says so twice: who reads without a dictionary shows no words for it.
const std::string kNameRead = "(0000)[0010,0010][     2][PN]:'' |A |\n";

TEST_F(CoderTrace, EachParseStartsWithItsWordsAndTracesItsElements) {
  const Bytes implicit = DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "PN", "A ");
  Parse(kImplicit, implicit, dictionary_.get());
  EXPECT_EQ(
      Traced(),
      kRule +
          "Parsing incoming Implicit Little Endian\n(0000)[0010,0010][     2][PN]:'Name' |A |\n");
  Parse(kExplicit, DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "PN", "A "));
  EXPECT_EQ(Traced(), "Parsing incoming Explicit Little Endian\n" + kNameRead);
  Parse(kBig, DataSetBuilder(kBig).Element(0x0010, 0x0010, "PN", "A "));
  EXPECT_EQ(Traced(), kRule + "Parsing incoming Explicit Big Endian\n" + kNameRead);
}

TEST_F(CoderTrace, EachWritingStartsWithItsWordsAndTracesItsElements) {
  const std::pair<Encoding, std::string> starts[] = {
      {kImplicit, kRule + "Parsing outgoing Implicit Little Endian\n"},
      {kExplicit, kRule + "Parsing outgoing Explicit Little Endian\n"},
      {kBig, kRule + "Parsing outgoing Explicit Big Endian\n"},
  };
  for (const auto& [encoding, words] : starts) {
    DICOMObject object;
    object.Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
    Encode(encoding, object);
    EXPECT_EQ(Traced(), words + kNameRead);
  }
}

TEST_F(CoderTrace, NothingIsTracedWithoutTheParseBit) {
  SetDumpFlag(kDumpParse, false);
  SetDumpFlag(kDumpSocket | kDumpData | kDumpPdu, true);
  Parse(kExplicit, DataSetBuilder(kExplicit).Sequence(0x0008, 0x1140, Lengths::kUndefined,
                                                      Lengths::kDefined, {{}}));
  DICOMObject object;
  object.Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  Encode(kImplicit, object);
  SetDumpFlag(kDumpSocket | kDumpData | kDumpPdu, false);
  EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(CoderTrace, TheImplicitReaderTracesBoundaries) {
  // Positions: sequence 0, item tag 8, element 16 (10 bytes), item end 26, second item 34, its end needs none, end 42.
  const Bytes bytes = DataSetBuilder(kImplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item()
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .EndItem()
                          .Item(0)
                          .EndSequence();
  Parse(kImplicit, bytes, dictionary_.get());
  EXPECT_EQ(Traced(), kRule +
                          "Parsing incoming Implicit Little Endian\n"
                          "(0000)[0008,1140][     0][SQ]:'Refs' |(EMPTY)|\n"
                          "[FFFE,E000][    -1]Implicit length of sequence\n"
                          "(0010)[0010,0010][     2][PN]:'Name' |A |\n"
                          "[FFFE,E00D][     0]Implicit terminator\n"
                          "[FFFE,E000][     0]explicit length, sequence item begin\n"
                          "[FFFE,E0DD][     0]Implicit terminator\n");
  Parse(kImplicit, DataSetBuilder(kImplicit).Tag(0xFFFE, 0x0001).U32(6));
  EXPECT_EQ(Traced(), kRule +
                          "Parsing incoming Implicit Little Endian\n"
                          "[FFFE,0001][     6]UNKNOWN ERROR IN Implicit_ParseRawVRIntoDCM\n");
}

TEST_F(CoderTrace, TheExplicitReaderTracesBoundaries) {
  for (const Encoding encoding : {kExplicit, kBig}) {
    const Bytes item = DataSetBuilder(encoding).Element(0x0010, 0x0010, "PN", "A ");
    const Bytes bytes = DataSetBuilder(encoding)
                            .Head(0x0008, 0x1140, "SQ", 44)
                            .Item()
                            .Raw(item)
                            .EndItem()
                            .Item(10)
                            .Raw(item)
                            .Tag(0xFFFE, 0x0001)
                            .U32(6);
    EXPECT_FALSE(Parse(encoding, bytes).result);
    const std::string start = encoding == kBig ? kRule + "Parsing incoming Explicit Big Endian\n"
                                               : "Parsing incoming Explicit Little Endian\n";
    EXPECT_EQ(Traced(), start +
                            "(0000)[0008,1140][    44][SQ]:'' |(EMPTY)|\n"
                            "[FFFE][E000][FFFFFFFFF] Start Implicit length sequence\n"
                            "(0014)[0010,0010][     2][PN]:'' |A |\n"
                            "[FFFE][E000][10] Start Explicit length sequence\n"
                            "(002E)[0010,0010][     2][PN]:'' |A |\n"
                            "ERRORE Parsing raw explicit data\n");
  }
}

/// Sequence (0008,1140) with an item that holds a name, and an empty one.
std::unique_ptr<DICOMObject> WithSequence() {
  auto item = std::make_unique<DICOMObject>();
  item->Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  auto object = std::make_unique<DICOMObject>();
  object->Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
  object->Push(item.release());
  object->Push(new DICOMObject);
  return object;
}

TEST_F(CoderTrace, TheImplicitWriterTracesBoundaries) {
  Encode(kImplicit, *WithSequence(), dictionary_.get());
  EXPECT_EQ(Traced(), kRule +
                          "Parsing outgoing Implicit Little Endian\n"
                          "[0008,1140][ffffffff] Implicit length sequence of #2 items\n"
                          "[FFFE,E000][FFFFFFFF]Start Item Sequence #1\n"
                          "(0000)[0010,0010][     2][PN]:'Name' |A |\n"
                          "[FFFE,E00D][00000000]End Item Sequence #1\n"
                          "[FFFE,E000][FFFFFFFF]Start Item Sequence #2\n"
                          "[FFFE,E00D][00000000]End Item Sequence #2\n"
                          "[FFFE,E0DD][00000000]Sequence Terminator\n");
}

TEST_F(CoderTrace, TheExplicitWriterTracesTheStartOfASequence) {
  Encode(kExplicit, *WithSequence(), dictionary_.get());
  EXPECT_EQ(Traced(), kRule +
                          "Parsing outgoing Explicit Little Endian\n"
                          "[0008][1140][FFFFFFFF][SQ]Start undefined length sequence\n"
                          "(0000)[0010,0010][     2][PN]:'Name' |A |\n");
}

// Encapsulated pixel data: an element, and a line for each fragment.

std::unique_ptr<DICOMObject> WithFragment() {
  auto object = std::make_unique<DICOMObject>();
  object->Push(NewElement(0x7FE0, 0x0010, type_code::OB, ""));
  auto* fragment = new DICOMObject;
  fragment->Push(NewElement(0xFFFE, 0xE000, type_code::kNone, Bytes{1, 'A'}));
  object->Push(fragment);
  return object;
}

const std::string kFragmentWritten = "(0000)[FFFE,E000][     2][UN]:'' 01 41 |.A|\n";

TEST_F(CoderTrace, TheImplicitWriterHasWordsForEncapsulatedPixelData) {
  Encode(kImplicit, *WithFragment());
  EXPECT_EQ(Traced(), kRule +
                          "Parsing outgoing Implicit Little Endian\n"
                          "[7FE0,0010][000000]Encapsulated pixel data\n" +
                          kFragmentWritten);
}

TEST_F(CoderTrace, TheExplicitWriterTracesEncapsulatedPixelDataAsAnElement) {
  const std::string element = "(0000)[7FE0,0010][     0][OB]:'' |(EMPTY)|\n";
  Encode(kExplicit, *WithFragment());
  EXPECT_EQ(Traced(),
            kRule + "Parsing outgoing Explicit Little Endian\n" + element + kFragmentWritten);
  Encode(kBig, *WithFragment());
  EXPECT_EQ(Traced(),
            kRule + "Parsing outgoing Explicit Big Endian\n" + element + kFragmentWritten);
}

TEST_F(CoderTrace, TheReadersTraceEncapsulatedPixelDataAndItsFragments) {
  // The head takes 12 bytes in the explicit form and 8 in the implicit one.
  Parse(kExplicit, DataSetBuilder(kExplicit).Fragments({{1, 'A'}}));
  EXPECT_EQ(Traced(),
            "Parsing incoming Explicit Little Endian\n"
            "(0000)[7FE0,0010][     0][OB]:'' |(EMPTY)|\n"
            "(000C)[FFFE,E000][     2][UN]:'' 01 41 |.A|\n");
  Parse(kImplicit, DataSetBuilder(kImplicit).Fragments({{1, 'A'}}));
  EXPECT_EQ(Traced(), kRule +
                          "Parsing incoming Implicit Little Endian\n"
                          "(0000)[7FE0,0010][     0][UN]:'' |(EMPTY)|\n"
                          "(0008)[FFFE,E000][     2][UN]:'' 01 41 |.A|\n");
}

TEST_F(CoderTrace, EveryElementHasOneLineInEachDirectionWhateverItHolds) {
  // A sequence with an item, a value, and pixel data in one fragment: four elements and a fragment, whose tags stand in
  // brackets in the lines of their own and nowhere else.
  for (const Encoding encoding : kAllEncodings) {
    const Bytes item = DataSetBuilder(encoding).Element(0x0010, 0x0010, "PN", "A ");
    const Bytes bytes =
        DataSetBuilder(encoding)
            .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {item})
            .Element(0x0010, 0x0020, "LO", "B ")
            .Fragments({{1, 2}});
    const Parsed parsed = Parse(encoding, bytes, dictionary_.get());
    const std::string read = Traced();
    Encode(encoding, *parsed.object, dictionary_.get());
    const std::string written = Traced();
    for (const std::string& text : {read, written}) {
      for (const char* tag : {"0008,1140", "0010,0010", "0010,0020", "7FE0,0010"}) {
        const std::string group(tag, 4);
        const std::string element(tag + 5, 4);
        int lines = 0;
        for (const std::string& shown :
             {"[" + group + "," + element + "]", "[" + group + "][" + element + "]"}) {
          for (std::size_t at = text.find(shown); at != std::string::npos;
               at = text.find(shown, at + 1))
            ++lines;
        }
        EXPECT_EQ(lines, 1) << tag << " in\n" << text;
      }
      EXPECT_NE(text.find("[FFFE,E000][     2]["), std::string::npos) << text;
    }
  }
}

TEST_F(CoderTrace, TheFileReaderAndWriterTraceTheirElements) {
  const Bytes meta = MetaGroup(SyntaxUidOf(kImplicit));
  const Bytes data = DataSetBuilder(kImplicit)
                         .Element(0x0010, 0x0010, "PN", "A ")
                         .Element(0x7FE0, 0x0010, "OW", Pattern(4));
  ParseFile(Joined({meta, data}), {.loadPixels = false});
  // Meta group: 12 bytes, 14, 26 and 14 ("1.2.3" and a NUL).
  EXPECT_EQ(Traced(),
            "(0000)[0002,0000][     4][UL]:'' |54,0x36|\n"
            "(000C)[0002,0001][     2][OB]:'' 00 01 |..|\n"
            "(001A)[0002,0010][    18][UI]:'' |1.2.840.10008.1.2|\n"
            "(0034)[0002,0012][     6][UI]:'' |1.2.3|\n"
            "(0042)[0010,0010][     2][UN]:'' 41 20 |A |\n"
            "(004C)[7FE0,0010][     4][UN]:'' |(EMPTY)|\n");
}

TEST_F(CoderTrace, ASyntaxThatDoesNotStayInTheObjectIsTracedToo) {
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
  // 4 for the first and 26 for the syntax, which ends the group.
  EXPECT_EQ(TagsOf(*ParseFile(MetaGroupOf(elements, 30)).object), "(0002,0000)");
  EXPECT_EQ(Traced(),
            "(0000)[0002,0000][     4][UL]:'' |30,0x1E|\n"
            "(000C)[0002,0010][    18][UI]:'' |1.2.840.10008.1.2|\n");
}

TEST_F(CoderTrace, SavingAFileTracesItsElementsWhetherTheObjectIsKeptOrNot) {
  const std::string name = "(0000)[0010,0010][     2][PN]:'' |A |\n";
  const std::string outgoing = kRule + "Parsing outgoing Implicit Little Endian\n";
  const std::string path = folder_.File("saved.dcm");
  for (const int mode : {1, 2, 3}) {
    DICOMObject object;
    object.Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
    DataSetCoder coder;
    EXPECT_TRUE(coder.SaveKeeping(path.c_str(), mode, object));
    const std::string kept = Traced();
    EXPECT_TRUE(coder.SaveFile(path.c_str(), mode, object));
    EXPECT_EQ(Traced(), kept);
    if (mode != 3) {
      EXPECT_EQ(kept, outgoing + name);
      continue;
    }
    // The meta header comes before the data set; no words start a file.
    const std::string version = "(0000)[0002,0001][     2][OB]:'' 00 01 |..|\n";
    const std::size_t at = kept.find(version);
    EXPECT_EQ(kept.find("(0000)[0002,0000]["), 0u);
    EXPECT_NE(at, std::string::npos);
    EXPECT_EQ(kept.substr(kept.size() - name.size()), name);
    EXPECT_EQ(kept.find("Parsing"), std::string::npos);
  }
}

TEST_F(CoderTrace, PixelDataIsTracedAsTheTypeThatIsWrittenWhetherTheObjectIsKeptOrNot) {
  DICOMObject object;
  object.Push(NewElement(0x0002, 0x0010, type_code::UI, Evened(SyntaxUidOf(kExplicit))));
  object.Push(NewElement(0x0028, 0x0100, type_code::US, Bytes{16, 0}));
  // Its icon keeps its own type.
  object.Push(NewElement(0x0088, 0x0200, type_code::SQ, ""));
  auto icon = std::make_unique<DICOMObject>();
  icon->Push(NewElement(0x7FE0, 0x0010, type_code::OB, Bytes{1, 'A'}));
  object.Push(icon.release());
  object.Push(NewElement(0x7FE0, 0x0010, type_code::OB, Bytes{2, 'B'}));
  At(object, 0x7FE0, 0x0010).StreamPosition = 0x1234;
  const std::string expected =
      "[0088][0200][FFFFFFFF][SQ]Start undefined length sequence\n"
      "(0000)[7FE0,0010][     2][OB]:'' 01 41 |.A|\n"
      "(1234)[7FE0,0010][     2][OW]:'' 02 42 |.B|\n";
  const std::string path = folder_.File("saved.dcm");
  EXPECT_TRUE(DataSetCoder().SaveKeeping(path.c_str(), 3, object));
  const std::string kept = Traced();
  EXPECT_EQ(kept.substr(kept.size() - expected.size()), expected);
  EXPECT_EQ(At(object, 0x7FE0, 0x0010).TypeCode, type_code::OB);
  EXPECT_TRUE(DataSetCoder().SaveFile(path.c_str(), 3, object));
  EXPECT_EQ(Traced(), kept);
}

TEST_F(CoderTrace, AUidThatIsPutRightIsTracedAsFromWhereItWasRead) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x0018, type_code::UI, "1.2 "));
  object.GetFirstVR()->StreamPosition = 0x1234;
  const std::string path = folder_.File("saved.dcm");
  const std::string traced = kRule +
                             "Parsing outgoing Implicit Little Endian\n"
                             "(1234)[0008,0018][     4][UI]:'' |1.2|\n";
  EXPECT_TRUE(DataSetCoder().SaveKeeping(path.c_str(), 1, object));
  EXPECT_EQ(Traced(), traced);
  EXPECT_TRUE(DataSetCoder().SaveFile(path.c_str(), 1, object));
  EXPECT_EQ(Traced(), traced);
}

TEST_F(CoderTrace, WhatIsTracedIsReadTheSame) {
  const Bytes bytes = FileOf(kExplicit, RandomDataSet(kExplicit, 3));
  const Parsed traced = ParseFile(Bytes(bytes.begin() + 132, bytes.end()));
  SetDumpFlag(kDumpParse, false);
  const Parsed plain = ParseFile(Bytes(bytes.begin() + 132, bytes.end()));
  EXPECT_TRUE(traced.result);
  EXPECT_EQ(Difference(*traced.object, *plain.object), "");
  EXPECT_NE(Traced(), "");
}

}  // namespace
}  // namespace tessaret::test
