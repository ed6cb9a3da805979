#include "core/uid_dictionary.h"

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/file_calls.h"
#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret {
namespace {

using test::TempFolder;
using test::WriteText;

/// The words of the exception, or "read".
std::string Read(UIDDictionary& uids, const char* path) {
  try {
    uids.Read(path);
    return "read";
  } catch (const UidDictionaryError& error) {
    return error.what();
  }
}

std::string ReadText(UIDDictionary& uids, std::string_view text) {
  try {
    uids.ReadText(text);
    return "read";
  } catch (const UidDictionaryError& error) {
    return error.what();
  }
}

/// The one entry of `text` as "type|UID|image|description|modality", or what went wrong.
std::string Only(std::string_view text) {
  UIDDictionary uids;
  const std::string words = ReadText(uids, text);
  if (words != "read") return words;
  if (uids.Entries.size() != 1) return std::to_string(uids.Entries.size()) + " entries";
  const auto& [uid, entry] = *uids.Entries.begin();
  EXPECT_EQ(uid, entry.UID);
  return entry.Type + "|" + uid + "|" + (entry.IsImage ? "1" : "0") + "|" + entry.Description +
         "|" + entry.Modality;
}

TEST(UIDDictionary, ReadsTypeUidImageDescriptionAndModality) {
  EXPECT_EQ(Only("SOPClass\t1.2.3\t1\tCTImageStorage\tCT\n"), "SOPClass|1.2.3|1|CTImageStorage|CT");
}

TEST(UIDDictionary, NeedsNoModality) {
  EXPECT_EQ(Only("SOPClass 1.2.3 0 Verification\n"), "SOPClass|1.2.3|0|Verification|");
}

TEST(UIDDictionary, SeparatesTokensByAnyRunOfTabsAndBlanks) {
  EXPECT_EQ(Only(" \t A \t 1.2 \t\t 1  B\t \tC \t\n"), "A|1.2|1|B|C");
}

TEST(UIDDictionary, SeparatesTokensByNothingElse) {
  EXPECT_EQ(Only("A 1.2 1 B,\r\f\v;C D\n"), "A|1.2|1|B,\r\f\v;C|D");
}

TEST(UIDDictionary, LooksAtFiveTokensOnly) {
  EXPECT_EQ(Only("A 1.2 1 B C D E F\n"), "A|1.2|1|B|C");
}

TEST(UIDDictionary, TheLastLineNeedsNoLineEnd) { EXPECT_EQ(Only("A 1.2 1 B C"), "A|1.2|1|B|C"); }

TEST(UIDDictionary, LinesMayEndInCarriageReturnAndLineFeed) {
  EXPECT_EQ(Only("\r\nA 1.2 1 B\r\n\r\n"), "A|1.2|1|B|");
}

TEST(UIDDictionary, TakesAnyNumberButZeroForTrue) {
  for (const char* number : {"1", "2", "-1", "+1", "010", "99999999999999999999"}) {
    EXPECT_EQ(Only(std::string("A 1.2 ") + number + " B"), "A|1.2|1|B|") << number;
  }
  for (const char* number : {"0", "000", "-0", "+0"}) {
    EXPECT_EQ(Only(std::string("A 1.2 ") + number + " B"), "A|1.2|0|B|") << number;
  }
}

TEST(UIDDictionary, RefusesAnImageMarkThatIsNoNumber) {
  for (const char* word : {"yes", "x1", "1x", "-", "+", "1.0", "0x1"}) {
    EXPECT_EQ(Only(std::string("\nA 1.2 ") + word + " B"), "Error reading UID file at line 2")
        << word;
  }
}

TEST(UIDDictionary, SkipsEmptyLinesAndComments) {
  EXPECT_EQ(Only("# comment\n\n  \t \n   # another\nA 1.2 1 B C\n#A 1.3 1 B C\n"), "A|1.2|1|B|C");
}

TEST(UIDDictionary, CutsALineFromItsFirstHash) {
  EXPECT_EQ(Only("A 1.2 1 B#rest C\n"), "A|1.2|1|B|");
  EXPECT_EQ(Only("A 1.2 1 B # C # D\n"), "A|1.2|1|B|");
}

TEST(UIDDictionary, AnEmptyTextHoldsNoEntry) {
  EXPECT_EQ(Only(""), "0 entries");
  EXPECT_EQ(Only("# nothing\n\n"), "0 entries");
}

TEST(UIDDictionary, RefusesALineWithoutAllFourRequiredTokens) {
  for (const char* line : {"A", "A 1.2", "A 1.2 1", "A 1.2 1 # B", "A 1.2 1 \t "}) {
    EXPECT_EQ(Only(line), "Error reading UID file at line 1") << line;
  }
}

TEST(UIDDictionary, CountsEmptyLinesAndComments) {
  EXPECT_EQ(Only("# one\n\nA 1.2 1 B\n\r\n\nA 1.3 1\n"), "Error reading UID file at line 6");
}

TEST(UIDDictionary, KeepsTheFirstEntryOfAUid) {
  EXPECT_EQ(Only("A 1.2 1 first X\nB 1.2 0 second Y\n"), "A|1.2|1|first|X");
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 first X\n");
  uids.ReadText("B 1.2 0 second Y\nC 1.3 0 third\n");
  EXPECT_EQ(uids.Entries.size(), 2u);
  EXPECT_EQ(uids.FindEntry("1.2")->Description, "first");
  EXPECT_EQ(uids.FindEntry("1.3")->Description, "third");
}

TEST(UIDDictionary, IsOrderedByText) {
  UIDDictionary uids;
  uids.ReadText("A 1.2.9 0 c\nA 1.2.10 0 b\nA 1.10 0 a\n");
  std::string order;
  for (const auto& [uid, entry] : uids.Entries) order += entry.Description;
  EXPECT_EQ(order, "abc");
}

// A line is looked at up to 512 characters.

TEST(UIDDictionary, ReadsAnEntryThatEndsWithin512Characters) {
  const std::string start = "A 1.2 1 ";
  const std::string longest(512 - start.size(), 'd');
  EXPECT_EQ(Only(start + longest + "\n"), "A|1.2|1|" + longest + "|");
  EXPECT_EQ(Only(start + longest + "   \r\n"), "A|1.2|1|" + longest + "|");
  EXPECT_EQ(Only(start + longest + "# comment\n"), "A|1.2|1|" + longest + "|");
}

TEST(UIDDictionary, RefusesAnEntryThatGoesBeyondThem) {
  const std::string start = "\nA 1.2 1 ";
  EXPECT_EQ(Only(start + std::string(513 - start.size() + 1, 'd') + "\n"),
            "Error reading UID file at line 2");
  EXPECT_EQ(Only("\n" + std::string(512, ' ') + "A 1.2 1 B\n"), "Error reading UID file at line 2");
}

TEST(UIDDictionary, SkipsALongComment) {
  EXPECT_EQ(Only("#" + std::string(2000, 'c') + "\nA 1.2 1 B\n"), "A|1.2|1|B|");
  EXPECT_EQ(Only(std::string(2000, ' ') + "\nA 1.2 1 B\n"), "A|1.2|1|B|");
}

// Hostile files.

TEST(UIDDictionary, RefusesANulByteWithItsLine) {
  using namespace std::string_view_literals;
  EXPECT_EQ(Only("A 1.2 1 B\nA 1.3 1 \0B\n"sv), "Error reading UID file at line 2");
  EXPECT_EQ(Only("# \0\n"sv), "Error reading UID file at line 1");
}

TEST(UIDDictionary, RefusesALineOfOneMegabyte) {
  EXPECT_EQ(Only("\n" + std::string(1 << 20, 'A')), "Error reading UID file at line 2");
  EXPECT_EQ(Only("\n#" + std::string(1 << 20, 'A')), "Error reading UID file at line 2");
}

TEST(UIDDictionary, SkipsACommentAtTheLimitAndRefusesALongerOne) {
  EXPECT_EQ(Only("#" + std::string(65535, 'A') + "\n"), "0 entries");
  EXPECT_EQ(Only("#" + std::string(65536, 'A') + "\n"), "Error reading UID file at line 1");
}

TEST(UIDDictionary, RefusesALineThatIsCutOffBeforeItsDescription) {
  const std::string line = "SOPClass\t1.2.3\t1\tB";
  ASSERT_EQ(Only(line), "SOPClass|1.2.3|1|B|");
  for (std::size_t size = 1; size < line.size(); ++size) {
    EXPECT_EQ(Only(line.substr(0, size)), "Error reading UID file at line 1") << size;
  }
}

TEST(UIDDictionary, StaysAsItWasWhenATextIsRefused) {
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 B C\n");
  EXPECT_EQ(ReadText(uids, "A 1.3 1 B C\nA 1.4\n"), "Error reading UID file at line 2");
  EXPECT_EQ(uids.Entries.size(), 1u);
  EXPECT_NE(uids.FindEntry("1.2"), nullptr);
}

// Files.

TEST(UIDDictionary, ReadsAFile) {
  const TempFolder folder;
  WriteText(folder.File("u.txt"), "A 1.2 1 B C\n");
  UIDDictionary uids;
  EXPECT_EQ(Read(uids, folder.File("u.txt").c_str()), "read");
  EXPECT_EQ(uids.Entries.size(), 1u);
}

TEST(UIDDictionary, ThrowsTheSystemsWordsForAFileThatCannotBeRead) {
  const TempFolder folder;
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 B C\n");
  EXPECT_EQ(Read(uids, folder.File("absent").c_str()), "No such file or directory");
  EXPECT_EQ(Read(uids, folder.Path().c_str()), "Is a directory");
  WriteText(folder.File("u.txt"), "A 1.3 1 B C\n");
  {
    test::FileFailure failure;
    failure.FailCall(FileCall::kRead, 1, EIO);
    EXPECT_EQ(Read(uids, folder.File("u.txt").c_str()), "Input/output error");
  }
  std::filesystem::resize_file(folder.File("u.txt"), (16u << 20) + 1);
  EXPECT_EQ(Read(uids, folder.File("u.txt").c_str()), "File too large");
  EXPECT_EQ(uids.Entries.size(), 1u);
}

TEST(UIDDictionary, ThrowsThePathForEverythingElse) {
  const TempFolder folder;
  const std::string path = folder.File("u.txt");
  WriteText(path, "A 1.3 1 B C\n");
  const std::string expected = "DcmUIDIDictionary: Unknown error reading [" + path + "]";
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 B C\n");
  int unknown = 0;
  test::FailEveryAllocation([&] {
    try {
      uids.Read(path.c_str());
    } catch (const UidDictionaryError& error) {
      // The system's words where it is the reading of the file that fails.
      if (expected == error.what()) ++unknown;
      EXPECT_TRUE(expected == error.what() || SystemErrorText(ENOMEM) == error.what());
      EXPECT_EQ(uids.Entries.size(), 1u);
    } catch (const std::bad_alloc&) {
      // The copy of the path itself.
      EXPECT_EQ(uids.Entries.size(), 1u);
    }
  });
  EXPECT_GT(unknown, 0);
  EXPECT_EQ(uids.Entries.size(), 2u);
}

TEST(UIDDictionary, ThrowsForANullPath) {
  UIDDictionary uids;
  EXPECT_EQ(Read(uids, nullptr), "DcmUIDIDictionary: Unknown error reading []");
}

// Looking up.

TEST(UIDDictionary, FindGivesAllFields) {
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 B C\n");
  std::string description, type, modality;
  bool isImage = false;
  EXPECT_TRUE(uids.Find("1.2", &description, &type, &modality, &isImage));
  EXPECT_EQ(description, "B");
  EXPECT_EQ(type, "A");
  EXPECT_EQ(modality, "C");
  EXPECT_TRUE(isImage);
}

TEST(UIDDictionary, FindTakesNullForWhatIsNotWanted) {
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 B C\n");
  std::string type;
  EXPECT_TRUE(uids.Find("1.2", nullptr, nullptr, nullptr, nullptr));
  EXPECT_TRUE(uids.Find("1.2", nullptr, &type, nullptr, nullptr));
  EXPECT_EQ(type, "A");
}

TEST(UIDDictionary, FindTouchesNothingForAnUnknownUid) {
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 B C\n");
  for (const char* uid : {"", "1", "1.2.3", "1.2 ", " 1.2"}) {
    std::string description = "as", type = "it", modality = "was";
    bool isImage = true;
    EXPECT_FALSE(uids.Find(uid, &description, &type, &modality, &isImage)) << uid;
    EXPECT_EQ(description + type + modality, "asitwas");
    EXPECT_TRUE(isImage);
  }
}

TEST(UIDDictionary, ClearEmptiesIt) {
  UIDDictionary uids;
  uids.ReadText("A 1.2 1 B C\n");
  uids.Clear();
  EXPECT_EQ(uids.FindEntry("1.2"), nullptr);
}

// The dictionary that the library brings.

struct KnownUid {
  const char* uid;
  const char* type;
  const char* description;
  const char* modality;
  bool isImage;
};

// From the tables of DICOM PS3.6, annex A.
constexpr KnownUid kKnownUids[] = {
    {"1.2.840.10008.1.1", "SOPClass", "Verification", "", false},
    {"1.2.840.10008.1.2", "TransferSyntax", "ImplicitVRLittleEndian", "", false},
    {"1.2.840.10008.1.2.1", "TransferSyntax", "ExplicitVRLittleEndian", "", false},
    {"1.2.840.10008.1.2.2", "TransferSyntax", "ExplicitVRBigEndian", "", false},
    {"1.2.840.10008.1.2.4.50", "TransferSyntax", "JPEGBaseline8Bit", "", false},
    {"1.2.840.10008.1.2.4.70", "TransferSyntax", "JPEGLosslessSV1", "", false},
    {"1.2.840.10008.1.2.5", "TransferSyntax", "RLELossless", "", false},
    {"1.2.840.10008.1.3.10", "SOPClass", "MediaStorageDirectoryStorage", "", false},
    {"1.2.840.10008.5.1.4.1.1.1", "SOPClass", "ComputedRadiographyImageStorage", "CR", true},
    {"1.2.840.10008.5.1.4.1.1.2", "SOPClass", "CTImageStorage", "CT", true},
    {"1.2.840.10008.5.1.4.1.1.4", "SOPClass", "MRImageStorage", "MR", true},
    {"1.2.840.10008.5.1.4.1.1.6.1", "SOPClass", "UltrasoundImageStorage", "US", true},
    {"1.2.840.10008.5.1.4.1.2.2.1", "SOPClass", "StudyRootQueryRetrieveInformationModelFind", "",
     false},
};

TEST(RealUidDictionary, KnowsUidsOfTheStandard) {
  UIDDictionary uids;
  ASSERT_EQ(Read(uids, (std::string(test::kDataDir) + "/uid-dict.txt").c_str()), "read");
  EXPECT_GT(uids.Entries.size(), 400u);
  for (const KnownUid& known : kKnownUids) {
    const UIDEntry* entry = uids.FindEntry(known.uid);
    ASSERT_NE(entry, nullptr) << known.uid;
    EXPECT_EQ(entry->UID, known.uid);
    EXPECT_EQ(entry->Type, known.type) << known.uid;
    EXPECT_EQ(entry->Description, known.description);
    EXPECT_EQ(entry->Modality, known.modality) << known.uid;
    EXPECT_EQ(entry->IsImage, known.isImage) << known.uid;
  }
}

}  // namespace
}  // namespace tessaret
