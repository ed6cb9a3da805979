// The text form of the data dictionary: what becomes of each line.
#include "core/rtc_text.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

/// One entry in words, for comparing: "PN Patient's Name", or "PN -" without a description.
std::string Words(const RtcDraft& draft, const RtcDraft::Entry& entry) {
  const std::string letters{FirstLetter(entry.typeCode), SecondLetter(entry.typeCode)};
  const bool hasText = entry.textAt != RtcDraft::kNoText;
  return letters + " " + (hasText ? &draft.texts[entry.textAt] : "-");
}

/// What came out of a text whose first line is a comment, so that its second line is `lines`.
struct Outcome {
  bool good = false;
  std::string error;
  std::multimap<TagKey, std::string> entries;
};

Outcome ParseWhole(std::string_view text, bool keepDescriptions = true) {
  Outcome outcome;
  RtcDraft draft;
  outcome.good = ParseRtcText(text, keepDescriptions, draft, outcome.error);
  for (const auto& entry : draft.entries) outcome.entries.emplace(entry.key, Words(draft, entry));
  return outcome;
}

Outcome Parse(std::string_view lines, bool keepDescriptions = true) {
  return ParseWhole("# test\n" + std::string(lines), keepDescriptions);
}

/// The one entry of `lines`, or what went wrong.
std::string Only(std::string_view lines, TagKey key, bool keepDescriptions = true) {
  const Outcome outcome = Parse(lines, keepDescriptions);
  if (!outcome.good) return "refused: " + outcome.error;
  if (outcome.entries.size() != 1) return std::to_string(outcome.entries.size()) + " entries";
  const auto found = outcome.entries.find(key);
  return found == outcome.entries.end() ? "another tag" : found->second;
}

std::string ErrorOf(std::string_view lines) {
  const Outcome outcome = Parse(lines);
  return outcome.good ? "no error" : outcome.error;
}

std::string Repeated(std::size_t count, char c) { return std::string(count, c); }

constexpr TagKey kName = MakeTagKey(0x0010, 0x0010);
constexpr TagKey kPatientId = MakeTagKey(0x0010, 0x0020);

TEST(RtcTextLines, TheFirstLineIsNeverAnEntry) {
  const Outcome outcome = ParseWhole("{0x0010 0x0010 PN \"Name\"}\n{0x0010 0x0020 LO \"ID\"}\n");
  ASSERT_TRUE(outcome.good);
  EXPECT_EQ(outcome.entries.size(), 1u);
  EXPECT_EQ(outcome.entries.count(kPatientId), 1u);
}

TEST(RtcTextLines, AnEmptyTextHasNoEntryAndIsNotWrong) {
  for (const char* text : {"", "\n", "# only a comment", "# a comment\n\n\n"}) {
    const Outcome outcome = ParseWhole(text);
    EXPECT_TRUE(outcome.good) << text;
    EXPECT_TRUE(outcome.entries.empty()) << text;
  }
}

TEST(RtcTextLines, AllThatStartWithNeitherBraceNorParenthesisAreSkipped) {
  const Outcome outcome = Parse(
      "# {0x0010 0x0010 PN \"comment\"}\n"
      "\n"
      " {0x0010 0x0010 PN \"indented\"}\n"
      "\t(0010,0010) VR=\"PN\"\n"
      "[0x0010 0x0010 PN \"brackets\"]\n"
      "0x0010 0x0010 PN \"bare\"\n");
  EXPECT_TRUE(outcome.good);
  EXPECT_TRUE(outcome.entries.empty());
}

TEST(RtcTextLines, TheLastLineNeedsNoLineEnd) {
  EXPECT_EQ(Only("{0x0010 0x0010 PN \"Name\"}", kName), "PN Name");
  EXPECT_EQ(Only("(0010,0010) VR=\"PN\" Keyword=\"Name\"", kName), "PN Name");
}

TEST(RtcTextLines, MayEndInCarriageReturnAndLineFeed) {
  const Outcome outcome = Parse(
      "{0x0010\r\n,0x0010,PN,\"Na\r\nme\"}\r\n"
      "(0010,0020) VR=\"LO\" Keyword=\"ID\"\r\n");
  ASSERT_TRUE(outcome.good);
  EXPECT_EQ(outcome.entries.find(kName)->second, "PN Name");
  EXPECT_EQ(outcome.entries.find(kPatientId)->second, "LO ID");
}

TEST(RtcTextLines, BothFormsMayStandInOneFile) {
  const Outcome outcome = Parse(
      "{0x0010 0x0010 PN \"Name\"}\n"
      "(0010,0020) VR=\"LO\" Keyword=\"ID\"\n");
  ASSERT_TRUE(outcome.good);
  EXPECT_EQ(outcome.entries.size(), 2u);
}

// Chunks: 1020 characters of a line count as a line.

TEST(RtcTextChunks, BehindTheFirst1020CharactersOfTheFirstLineAnEntryMayFollow) {
  const std::string entry = "{0x0010 0x0010 PN \"Name\"}\n";
  EXPECT_EQ(ParseWhole(Repeated(1020, '#') + entry).entries.size(), 1u);
  EXPECT_EQ(ParseWhole(Repeated(1019, '#') + entry).entries.size(), 0u);
  EXPECT_EQ(ParseWhole(Repeated(1021, '#') + entry).entries.size(), 0u);
}

TEST(RtcTextChunks, AChunkOfASkippedLineThatStartsLikeAnEntryIsOne) {
  const std::string entry = "{0x0010 0x0010 PN \"Name\"}\n";
  EXPECT_EQ(Parse(Repeated(1020, '#') + entry).entries.size(), 1u);
  EXPECT_EQ(Parse(Repeated(2040, '#') + entry).entries.size(), 1u);
  EXPECT_EQ(Parse(Repeated(1019, '#') + entry).entries.size(), 0u);
}

TEST(RtcTextChunks, ALineOfExactlyOneChunkIsFollowedByTheNextLine) {
  const std::string entry = "{0x0010 0x0010 PN \"Name\"}\n";
  EXPECT_EQ(Parse(Repeated(1020, '#') + "\n" + entry).entries.size(), 1u);
  EXPECT_EQ(Parse(Repeated(1019, '#') + "\r\n" + entry).entries.size(), 1u);
  EXPECT_EQ(Parse(Repeated(1020, '#') + "\r\n" + entry).entries.size(), 1u);
}

TEST(RtcTextChunks, AnEntryInBracesGoesOnAcrossThem) {
  const std::string blanks = Repeated(3000, ' ');
  EXPECT_EQ(Only("{0x0010" + blanks + "0x0010" + blanks + "PN" + blanks + "\"Name\"}\n", kName),
            "PN Name");
}

TEST(RtcTextChunks, ATokenGoesOnAcrossThem) {
  // The 1020 characters end in the middle of the element: "{0x0010" are 7, "0x0" the last 3.
  EXPECT_EQ(Only("{0x0010" + Repeated(1010, ' ') + "0x0010 PN \"Name\"}\n", kName), "PN Name");
}

TEST(RtcTextChunks, ALineEndOfTwoCharactersThatOneCutsIsStillALineEnd) {
  const std::string start = "{16 16 PN \"Na";
  const std::string padded = "{16" + Repeated(1020 - start.size(), ' ') + start.substr(4);
  EXPECT_EQ(Only(padded + "\r\nme\"}\n", kName), "PN Name");
  EXPECT_EQ(Only(padded + "\rme\"}\n", kName), "PN Na\rme");
}

TEST(RtcTextChunks, OneThatStartsWithABraceWithinARecordIsPartOfIt) {
  const std::string start = "{16 16 PN \"Na";
  const std::string padded = "{16" + Repeated(1021 - start.size(), ' ') + start.substr(4);
  EXPECT_EQ(Only(padded + "{me}\"}\n", kName), "PN Na{me}");
}

TEST(RtcTextChunks, ALineInParenthesesEndsWithItsFirstOne) {
  const std::string start = "(0010,0010) ";
  const std::string type = "VR=\"PN\"";
  const auto padded = [&](std::size_t size) { return start + Repeated(size - start.size(), '.'); };
  // The type ends with the chunk, and one character behind it.
  EXPECT_EQ(Only(padded(1020 - type.size()) + type + "\n", kName), "PN -");
  EXPECT_EQ(Parse(padded(1020) + type + "\n").entries.size(), 0u);
  EXPECT_TRUE(Parse(padded(1020) + type + "\n").good);
}

TEST(RtcTextChunks, AKeywordBehindTheFirstOneIsNotSeen) {
  const std::string start = "(0010,0010) VR=\"PN\" ";
  EXPECT_EQ(Only(start + Repeated(1020 - start.size(), '.') + "Keyword=\"Name\"\n", kName), "PN -");
}

TEST(RtcTextChunks, AKeywordThatIsCutByOneIsRefused) {
  const std::string start = "(0010,0010) VR=\"PN\" ";
  EXPECT_EQ(ErrorOf(start + Repeated(1010 - start.size(), '.') + "Keyword=\"Name\"\n"),
            "line 2: the keyword has no end");
}

// Entries in braces.

TEST(RtcTextBraces, HoldGroupElementTypeAndDescription) {
  EXPECT_EQ(Only("{0x0010 0x0010 PN \"Patient's Name\"}\n", kName), "PN Patient's Name");
  EXPECT_EQ(Only("{0x0010,0x0010,PN,\"Patient's Name\"},\n", kName), "PN Patient's Name");
}

TEST(RtcTextBraces, SeparateFieldsByAnyRunOfBlanksQuotesAndCommas) {
  EXPECT_EQ(Only("{ ,'\"0x0010\",' '0x0010'\" \"PN\",,, ''\"Name\"}\n", kName), "PN Name");
}

TEST(RtcTextBraces, SeparateFieldsByNothingElse) {
  // Tab, semicolon and colon are part of the group, which then is no number; the element is taken for the type.
  for (const char* joined : {"0x0010\t0x0010", "0x0010;0x0010", "0x0010:0x0010"}) {
    const std::string line = std::string("{") + joined + " 0x0020 PN \"Name\"}\n";
    EXPECT_EQ(Only(line, kDeadTag), "PN Name") << joined;
  }
}

TEST(RtcTextBraces, TakeNumbersInBothBases) {
  EXPECT_EQ(Only("{16 32 LO \"ID\"}\n", kPatientId), "LO ID");
  EXPECT_EQ(Only("{0X10 0x20 LO \"ID\"}\n", kPatientId), "LO ID");
  EXPECT_EQ(Only("{0xfFfE 0xe00D LO \"ID\"}\n", MakeTagKey(0xFFFE, 0xE00D)), "LO ID");
  EXPECT_EQ(Only("{9 0 LO \"ID\"}\n", MakeTagKey(9, 0)), "LO ID");
  EXPECT_EQ(Only("{0x8 0Xa LO \"ID\"}\n", MakeTagKey(8, 10)), "LO ID");
  EXPECT_EQ(Only("{65535 0xFFFE LO \"ID\"}\n", MakeTagKey(0xFFFF, 0xFFFE)), "LO ID");
}

TEST(RtcTextBraces, TakeANumberWithoutXForDecimal) {
  EXPECT_EQ(Only("{0010 0020 LO \"ID\"}\n", MakeTagKey(10, 20)), "LO ID");
}

TEST(RtcTextBraces, LookForTheXInSecondPlaceOnly) {
  EXPECT_EQ(Only("{1x10 9X20 LO \"ID\"}\n", kPatientId), "LO ID");
  EXPECT_EQ(Only("{x10 0x20 LO \"ID\"}\n", kDeadTag), "LO ID");
  EXPECT_EQ(Only("{00x10 0x20 LO \"ID\"}\n", kDeadTag), "LO ID");
}

TEST(RtcTextBraces, TakeTwoCharactersForDecimalEvenWithAnX) {
  EXPECT_EQ(Only("{0x 0x20 LO \"ID\"}\n", kDeadTag), "LO ID");
}

TEST(RtcTextBraces, MakeADeadEntryOfATagThatIsNoNumber) {
  for (const char* tag :
       {"0x60xx 0x3000", "0x6000 0x3xx0", "group 0x3000", "0x6000 12A", "-1 16", "+1 16"}) {
    EXPECT_EQ(Only(std::string("{") + tag + " OW \"Overlay\"}\n", kDeadTag), "OW Overlay") << tag;
  }
}

TEST(RtcTextBraces, TakeANumberWithWhiteSpaceAroundIt) {
  EXPECT_EQ(Only("{\t16\t 0x10\t PN \"Name\"}\n", kName), "PN Name");
  EXPECT_EQ(Only("{\t 16 PN \"Name\"}\n", kDeadTag), "PN Name");
}

TEST(RtcTextBraces, RefuseANumberOfMoreThan16Bits) {
  for (const char* tag : {"0x10000 16", "65536 16", "16 0x10000", "16 99999999999999999999"}) {
    EXPECT_EQ(ErrorOf(std::string("\n{") + tag + " LO \"ID\"}\n"),
              "line 3: a number has more than 16 bits")
        << tag;
  }
  EXPECT_EQ(Only("{0x00000010 0000032 LO \"ID\"}\n", kPatientId), "LO ID");
}

TEST(RtcTextBraces, TakeTheFirstTwoCharactersOfTheTypeToken) {
  EXPECT_EQ(Only("{0x0010 0x0010 PNxyz \"Name\"}\n", kName), "PN Name");
  EXPECT_EQ(Only("{0x0010 0x0010 xs \"Name\"}\n", kName), "xs Name");
}

TEST(RtcTextBraces, RefuseATypeOfOneLetter) {
  EXPECT_EQ(ErrorOf("{0x0010 0x0010 P \"Name\"}\n"), "line 2: a type needs two letters");
}

TEST(RtcTextBraces, EndTheDescriptionAtTheNextDoubleQuoteOnly) {
  EXPECT_EQ(Only("{0x0010 0x0010 PN \"a, 'b' (c) {d} e\"}\n", kName), "PN a, 'b' (c) {d} e");
  EXPECT_EQ(Only("{0x0010 0x0010 PN Name\"}\n", kName), "PN Name");
}

TEST(RtcTextBraces, TakeTheCharacterAfterABackslashLiterally) {
  EXPECT_EQ(Only(R"({0x0010 0x0010 PN "a \"b\" \\ \c"})", kName), R"(PN a "b" \ c)");
}

TEST(RtcTextBraces, TakeTheFirstCharacterOfTheNextLineAfterABackslashAtALineEnd) {
  EXPECT_EQ(Only("{0x0010 0x0010 PN \"a\\\n\"b\"}\n", kName), "PN a\"b");
}

TEST(RtcTextBraces, LookAtNothingBehindTheDescription) {
  EXPECT_EQ(Only("{0x0010 0x0010 PN \"Name\"} {0x0010 0x0020 LO \"ID\"} (\n", kName), "PN Name");
  EXPECT_EQ(Only("{0x0010 0x0010 PN \"Name\"\n", kName), "PN Name");
}

TEST(RtcTextBraces, ReadTheDescriptionButDropItWhenItIsNotKept) {
  EXPECT_EQ(Only("{0x0010 0x0010 PN \"Na\nme\"}\n", kName, false), "PN -");
}

TEST(RtcTextBraces, MaySpanLinesWhoseEndsAreDropped) {
  EXPECT_EQ(Only("{0x0010,\n0x0010,\nPN,\n\"Patient's\n Name\"\n}\n", kName), "PN Patient's Name");
  EXPECT_EQ(Only("{\n\n0x00\n10 0x0010 P\nN \"Name\"}\n", kName), "PN Name");
}

TEST(RtcTextBraces, CountLinesWhileARecordSpansThem) {
  EXPECT_EQ(ErrorOf("{0x0010,\n0x0010,\nPN,\n\"Name\"}\n{1 1 P \"x\"}\n"),
            "line 6: a type needs two letters");
  EXPECT_EQ(ErrorOf("\n{0x0010,\n0x0010,\nP,\n\"Name\"}\n"), "line 3: a type needs two letters");
}

TEST(RtcTextBraces, TakeTokensOf1023Characters) {
  EXPECT_EQ(Only("{" + Repeated(1021, '0') + "16 16 PN \"Name\"}\n", kName), "PN Name");
  EXPECT_EQ(Only("{16 0x" + Repeated(1019, '0') + "10 PN \"Name\"}\n", kName), "PN Name");
  EXPECT_EQ(Only("{16 16 PN" + Repeated(1021, '.') + " \"Name\"}\n", kName), "PN Name");
  EXPECT_EQ(Only("{16 16 PN \"" + Repeated(1023, 'd') + "\"}\n", kName),
            "PN " + Repeated(1023, 'd'));
  // A backslash does not count.
  EXPECT_EQ(Only("{16 16 PN \"" + Repeated(1022, 'd') + "\\\"\"}\n", kName),
            "PN " + Repeated(1022, 'd') + "\"");
}

TEST(RtcTextBraces, RefuseLongerTokens) {
  const std::string words = "line 3: a token is longer than 1023 characters";
  EXPECT_EQ(ErrorOf("\n{" + Repeated(1022, '0') + "16 16 PN \"Name\"}\n"), words);
  EXPECT_EQ(ErrorOf("\n{16 0x" + Repeated(1020, '0') + "10 PN \"Name\"}\n"), words);
  EXPECT_EQ(ErrorOf("\n{16 16 PN" + Repeated(1022, '.') + " \"Name\"}\n"), words);
  EXPECT_EQ(ErrorOf("\n{16 16 PN \"" + Repeated(1024, 'd') + "\"}\n"), words);
  EXPECT_EQ(ErrorOf("\n{16 16 PN \"" + Repeated(1023, 'd') + "\\\"\"}\n"), words);
}

TEST(RtcTextBraces, RefuseARecordThatTheFileCutsOff) {
  const std::string record = "{0x0010 0x0010 PN \"Name\"";
  ASSERT_EQ(Only(record, kName), "PN Name");
  for (std::size_t size = 1; size < record.size(); ++size) {
    EXPECT_EQ(ErrorOf("\n" + record.substr(0, size)), "line 3: the record has no end") << size;
  }
}

TEST(RtcTextBraces, RefuseARecordThatRunsIntoTheNextOne) {
  for (const char* start :
       {"{", "{16", "{16 16", "{16 16 PN", "{16 16 PN}", "{16 16 PN \"Name}", "{16 16 PN \"\"}"}) {
    EXPECT_EQ(ErrorOf(std::string(start) + "\n{16 32 LO \"ID\"}\n"),
              "line 2: the record has no end before the next one")
        << start;
    EXPECT_EQ(ErrorOf(std::string(start) + "\n(0010,0020) VR=\"LO\"\n"),
              "line 2: the record has no end before the next one")
        << start;
  }
}

TEST(RtcTextBraces, GoOnInALineInParenthesesThatIsNoEntry) {
  EXPECT_EQ(Only("{16 16 PN \"Name\n(0010,0010)\"}\n", kName), "PN Name(0010,0010)");
  EXPECT_EQ(Only("{16 16 PN \"Name \n(VR=\"}\n", kName),
            "refused: line 2: the record has no end before the next one");
}

// Lines in parentheses.

TEST(RtcTextParentheses, HoldTagTypeAndKeyword) {
  EXPECT_EQ(Only("(0010,0010) VERS=\"3\" VR=\"PN\" VM=\"1\" Owner=\"\" Keyword=\"PatientName\" "
                 "Name=\"x\"\n",
                 kName),
            "PN PatientName");
}

TEST(RtcTextParentheses, TakeDigitsOfEitherCase) {
  EXPECT_EQ(Only("(fFfE,e00D) VR=\"xs\"\n", MakeTagKey(0xFFFE, 0xE00D)), "xs -");
}

TEST(RtcTextParentheses, SkipWhateverStandsBetweenGroupAndElement) {
  EXPECT_EQ(Only("(0010 | 0020) VR=\"LO\"\n", kPatientId), "LO -");
  EXPECT_EQ(Only("(00100020) VR=\"LO\"\n", kPatientId), "LO -");
}

TEST(RtcTextParentheses, AddNothingWithoutAType) {
  for (const char* line :
       {"(0010,0010) VM=\"1\" Keyword=\"Name\"\n", "(0010,0010) vr=\"PN\"\n", "(0010,0010) VR=PN\n",
        "(0010 VR=\"PN\" 0010)\n", "(0010,0010) VR=\"\" Keyword=\"Name\"\n", "(\n", "(0010\n",
        "(0010,\n", "(0010,0010\n", "(0010,0010)\n", "(see below)\n", "(VR=\"PN\"\n",
        "(0010, VR=\"PN\")\n", "(0010,0VR=\"PN\"\n", "(0010,000VR=\"PN\"\n", "("}) {
    const Outcome outcome = Parse(line);
    EXPECT_TRUE(outcome.good) << line;
    EXPECT_TRUE(outcome.entries.empty()) << line;
  }
}

TEST(RtcTextParentheses, RefuseATypeOfOneLetterAndOneThatIsCutOff) {
  for (const char* line : {"(0010,0010) VR=\"P\" VM=\"1\"\n", "(0010,0010) VR=\"P\n",
                           "(0010,0010) VR=\"", "(0010,0010) VR=\"\n"}) {
    EXPECT_EQ(ErrorOf(std::string("\n") + line), "line 3: a type needs two letters") << line;
  }
}

TEST(RtcTextParentheses, NeedNoQuoteBehindTheTwoLettersOfTheType) {
  EXPECT_EQ(Only("(0010,0010) VR=\"PN\n", kName), "PN -");
  EXPECT_EQ(Only("(0010,0010) VR=\"PNx Keyword=\"Name\"\n", kName), "PN Name");
}

TEST(RtcTextParentheses, LookForTheKeywordBehindTheTypeOnly) {
  EXPECT_EQ(Only("(0010,0010) Keyword=\"Early\" VR=\"PN\"\n", kName), "PN -");
  EXPECT_EQ(Only("(0010,0010) Keyword=\"Early\" VR=\"PN\" Keyword=\"Late\"\n", kName), "PN Late");
  EXPECT_EQ(Only("(0010,0010) VR=\"PN\" Keyword=\"First\" Keyword=\"Second\"\n", kName),
            "PN First");
}

TEST(RtcTextParentheses, KeepAnEmptyKeyword) {
  EXPECT_EQ(Only("(0010,0010) VR=\"PN\" Keyword=\"\"\n", kName), "PN ");
}

TEST(RtcTextParentheses, RefuseAKeywordWithoutItsLastQuote) {
  EXPECT_EQ(ErrorOf("(0010,0010) VR=\"PN\" Keyword=\"Name\n"), "line 2: the keyword has no end");
}

TEST(RtcTextParentheses, DoNotLookForAKeywordThatIsNotKept) {
  EXPECT_EQ(Only("(0010,0010) VR=\"PN\" Keyword=\"Name\"\n", kName, false), "PN -");
  EXPECT_EQ(Only("(0010,0010) VR=\"PN\" Keyword=\"Name\n", kName, false), "PN -");
}

TEST(RtcTextParentheses, DoNotGoOnInTheNextLine) {
  EXPECT_EQ(Parse("(0010,0010)\nVR=\"PN\"\n").entries.size(), 0u);
}

TEST(RtcTextParentheses, MakeADeadEntryOfAWildcardTag) {
  for (const char* tag : {"(60xx,3000)", "(0028,04x0)", "(gggg,0010)", "(0010,00)"}) {
    EXPECT_EQ(Only(std::string(tag) + " VR=\"OW\"\n", kDeadTag), "OW -") << tag;
  }
}

// Files that are broken as a whole.

TEST(RtcTextHostile, ANulByteIsRefusedWithItsLine) {
  using std::string_view_literals::operator""sv;
  EXPECT_EQ(ErrorOf("{16 16 PN \"Name\"}\n{16 32 LO \"I\0D\"}\n"sv), "line 3: there is a NUL byte");
  EXPECT_EQ(ErrorOf("# comment\n# with \0\n"sv), "line 3: there is a NUL byte");
  EXPECT_EQ(ParseWhole("\0"sv).error, "line 1: there is a NUL byte");
}

TEST(RtcTextHostile, ALineAtTheLimitIsReadAndALongerOneIsRefused) {
  const std::string entry = "\n{16 16 PN \"Name\"}\n";
  EXPECT_EQ(Only(Repeated(65536, '#') + entry, kName), "PN Name");
  EXPECT_EQ(ErrorOf(Repeated(65537, '#') + entry), "line 2: the line is too long");
  EXPECT_EQ(ErrorOf(Repeated(65537, '#')), "line 2: the line is too long");
}

TEST(RtcTextHostile, ALineOfOneMegabyteIsRefusedWhateverItHolds) {
  const std::string words = "line 2: the line is too long";
  EXPECT_EQ(ErrorOf(Repeated(1 << 20, '#')), words);
  EXPECT_EQ(ErrorOf("{" + Repeated(1 << 20, ' ') + "\n"), words);
  EXPECT_EQ(ErrorOf("(0010,0010) " + Repeated(1 << 20, '.') + "\n"), words);
  EXPECT_EQ(ErrorOf("{16 16 PN \"" + Repeated(1 << 20, 'd') + "\"}\n"),
            "line 2: a token is longer than 1023 characters");
  EXPECT_EQ(ParseWhole(Repeated(1 << 20, '#')).error, "line 1: the line is too long");
}

TEST(RtcTextHostile, EveryByteMayStandInADescription) {
  std::string text;
  for (int byte = 1; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    if (c != '"' && c != '\\' && c != '\n') text += c;
  }
  EXPECT_EQ(Only("{16 16 PN \"." + text + "\"}\n", kName), "PN ." + text);
}

}  // namespace
}  // namespace tessaret
