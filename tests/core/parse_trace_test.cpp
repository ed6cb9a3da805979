#include "core/parse_trace.h"

#include <gtest/gtest.h>

namespace tessaret {
namespace {

namespace trace = parse_trace;

TEST(ParseTrace, StartsEachParseWithItsWords) {
  EXPECT_EQ(trace::kImplicitLittleIn,
            "-----------------------------\nParsing incoming Implicit Little Endian\n");
  EXPECT_EQ(trace::kImplicitLittleOut,
            "-----------------------------\nParsing outgoing Implicit Little Endian\n");
  EXPECT_EQ(trace::kExplicitLittleIn, "Parsing incoming Explicit Little Endian\n");
  EXPECT_EQ(trace::kExplicitLittleOut,
            "-----------------------------\nParsing outgoing Explicit Little Endian\n");
  EXPECT_EQ(trace::kExplicitBigIn,
            "-----------------------------\nParsing incoming Explicit Big Endian\n");
  EXPECT_EQ(trace::kExplicitBigOut,
            "-----------------------------\nParsing outgoing Explicit Big Endian\n");
}

TEST(ParseTrace, NamesStructuralTagsOfTheImplicitReader) {
  EXPECT_EQ(trace::StructuralTag(0xFFFE, 0xE0DD, 0), "[FFFE,E0DD][     0]");
  EXPECT_EQ(trace::StructuralTag(0xFFFE, 0xE000, 0xFFFFFFFF), "[FFFE,E000][    -1]");
  EXPECT_EQ(trace::StructuralTag(0xFFFE, 0x0001, 1234567), "[FFFE,0001][1234567]");
  EXPECT_EQ(trace::kImplicitDelimiter, "Implicit terminator\n");
  EXPECT_EQ(trace::kImplicitItemOfUndefinedLength, "Implicit length of sequence\n");
  EXPECT_EQ(trace::kImplicitItemOfDefinedLength, "explicit length, sequence item begin\n");
  EXPECT_EQ(trace::kUnknownStructuralTag, "UNKNOWN ERROR IN Implicit_ParseRawVRIntoDCM\n");
}

TEST(ParseTrace, NamesItemsOfTheExplicitReader) {
  EXPECT_EQ(trace::ExplicitItemOfUndefinedLength(0xE000),
            "[FFFE][E000][FFFFFFFFF] Start Implicit length sequence\n");
  EXPECT_EQ(trace::ExplicitItemOfDefinedLength(0xE000, 76),
            "[FFFE][E000][76] Start Explicit length sequence\n");
  EXPECT_EQ(trace::ExplicitItemOfDefinedLength(0x000A, 0x80000000),
            "[FFFE][000A][-2147483648] Start Explicit length sequence\n");
  EXPECT_EQ(trace::kExplicitParseFailed, "ERRORE Parsing raw explicit data\n");
}

TEST(ParseTrace, NamesWhatTheImplicitWriterWrites) {
  EXPECT_EQ(trace::ImplicitSequence(0x0008, 0x1140, 3),
            "[0008,1140][ffffffff] Implicit length sequence of #3 items\n");
  EXPECT_EQ(trace::ImplicitPixelData(0x7FE0, 0x0010, 42),
            "[7FE0,0010][000042]Encapsulated pixel data\n");
  EXPECT_EQ(trace::StartItem(0xFFFE, 0xE000, 0xFFFFFFFF, 1),
            "[FFFE,E000][FFFFFFFF]Start Item Sequence #1\n");
  EXPECT_EQ(trace::EndItem(0xFFFE, 0xE00D, 0, 12), "[FFFE,E00D][00000000]End Item Sequence #12\n");
  EXPECT_EQ(trace::SequenceTerminator(0xFFFE, 0xE0DD, 0),
            "[FFFE,E0DD][00000000]Sequence Terminator\n");
}

TEST(ParseTrace, NamesASequenceOfTheExplicitWriter) {
  EXPECT_EQ(trace::ExplicitSequence(0x0008, 0x1140, 0xFFFFFFFF),
            "[0008][1140][FFFFFFFF][SQ]Start undefined length sequence\n");
}

}  // namespace
}  // namespace tessaret
