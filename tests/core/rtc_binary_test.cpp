// The binary form of the data dictionary.
#include "core/rtc_binary.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/text.h"
#include "core/rtc.h"
#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::Joined;
using test::TempFolder;

// Two entries with descriptions: (0010,0010) PN "Name" and (0028,0010) US "Rows".
const Bytes kMark = BytesOf("#!BinRTC\n");
const Bytes kReserved{0x00, 0x00, 0x00};
const Bytes kTwo{0x02, 0x00, 0x00, 0x00};
const Bytes kWithTexts{0x01, 0x00, 0x00, 0x00};
const Bytes kWithoutTexts{0x00, 0x00, 0x00, 0x00};
const Bytes kKeys{0x10, 0x00, 0x10, 0x00, 0x10, 0x00, 0x28, 0x00};
const Bytes kElements{0x10, 0x00, 0x10, 0x00, 0x4E, 0x50, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                      0x28, 0x00, 0x10, 0x00, 0x53, 0x55, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
const Bytes kTexts = BytesOf(std::string_view("Name\0Rows\0", 10));

const Bytes kFile = Joined({kMark, kReserved, kTwo, kWithTexts, kKeys, kElements, kTexts});
const Bytes kFileWithoutTexts = Joined({kMark, kReserved, kTwo, kWithoutTexts, kKeys, kElements});

constexpr std::string_view kSameAsText =
    "\n{0x0028 0x0010 US \"Rows\"}\n{0x0010 0x0010 PN \"Name\"}\n";
constexpr std::size_t kHeaderSize = 20;

bool Attach(RTC& rtc, const Bytes& bytes) { return rtc.AttachBytes(bytes.data(), bytes.size()); }
bool Attach(RTC& rtc, std::string_view text) { return rtc.AttachBytes(text.data(), text.size()); }

/// The entries in words: "00100010 PN Name, 00280010 US -".
std::string Shown(const RTC& rtc) {
  std::ostringstream out;
  for (std::uint32_t at = 0; rtc.Table && at < rtc.Table->Count; ++at) {
    const _RTCElement& entry = rtc.Table->Elements[at];
    EXPECT_EQ(rtc.Table->Keys[at], MakeTagKey(entry.Group, entry.Element));
    out << (at == 0 ? "" : ", ") << std::hex << std::uppercase
        << std::string(rtc.Table->Keys[at] < 0x100000 ? 3 : 2, '0') << rtc.Table->Keys[at] << ' '
        << FirstLetter(entry.TypeCode) << SecondLetter(entry.TypeCode) << ' '
        << (entry.Description == nullptr ? "-" : entry.Description);
  }
  return out.str();
}

constexpr const char* kBoth = "00100010 PN Name, 00280010 US Rows";
constexpr const char* kBothWithoutTexts = "00100010 PN -, 00280010 US -";

/// A dictionary that holds another entry before it is loaded.
struct Loaded {
  explicit Loaded(bool keepDescriptions = true) : rtc(keepDescriptions) {
    EXPECT_TRUE(Attach(rtc, std::string_view("\n{0x0008 0x0060 CS \"Modality\"}\n")));
  }
  RTC rtc;
};
constexpr const char* kAsItWas = "00080060 CS Modality";

Bytes Replaced(Bytes bytes, std::size_t at, const Bytes& part) {
  std::copy(part.begin(), part.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
  return bytes;
}

Bytes Cut(const Bytes& bytes, std::size_t size) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

// Writing.

TEST(RtcBinary, IsWrittenInItsLayout) {
  const TempFolder folder;
  RTC rtc;
  ASSERT_TRUE(Attach(rtc, kSameAsText));
  EXPECT_TRUE(rtc.SaveBinary(folder.File("d.bin").c_str()));
  EXPECT_EQ(test::ReadBytes(folder.File("d.bin")), kFile);
}

TEST(RtcBinary, IsWrittenWithoutDescriptionsWhenTheyAreNotKept) {
  const TempFolder folder;
  RTC rtc(false);
  ASSERT_TRUE(Attach(rtc, kSameAsText));
  EXPECT_TRUE(rtc.SaveBinary(folder.File("d.bin").c_str()));
  EXPECT_EQ(test::ReadBytes(folder.File("d.bin")), kFileWithoutTexts);
}

TEST(RtcBinary, AnEntryWithoutADescriptionGetsAnEmptyOne) {
  RTC rtc;
  ASSERT_TRUE(Attach(
      rtc, std::string_view("\n(0010,0010) VR=\"PN\"\n(0028,0010) VR=\"US\" Keyword=\"Rows\"\n")));
  const Bytes texts = BytesOf(std::string_view("\0Rows\0", 6));
  EXPECT_EQ(WriteRtcBinary(*rtc.Table, true),
            Joined({kMark, kReserved, kTwo, kWithTexts, kKeys, kElements, texts}));
}

TEST(RtcBinary, CannotBeWrittenFromAnEmptyDictionaryOrWithoutAPath) {
  const TempFolder folder;
  RTC rtc;
  EXPECT_FALSE(rtc.SaveBinary(folder.File("d.bin").c_str()));
  EXPECT_EQ(folder.Listing(), "");
  ASSERT_TRUE(Attach(rtc, kSameAsText));
  EXPECT_FALSE(rtc.SaveBinary(nullptr));
  EXPECT_FALSE(rtc.SaveBinary(folder.File("absent/d.bin").c_str()));
  EXPECT_FALSE(rtc.SaveBinary(""));
}

TEST(RtcBinary, IsNotWrittenLargerThanAFileThatCanBeLoaded) {
  // 20 bytes of header; 4 for the key, 12 for the element, its text and a NUL: 512 for all but the last, of 492.
  constexpr std::uint32_t kCount = 32768;
  std::string text = "\n";
  for (std::uint32_t at = 0; at + 1 < kCount; ++at)
    text += Format("{0 %u LO ", at) + std::string(495, 'x') + "\"\n";
  text += Format("{0 %u LO ", kCount - 1);
  const TempFolder folder;
  const std::string path = folder.File("large.bin");
  for (const std::size_t length : {475u, 476u}) {
    RTC rtc;
    ASSERT_TRUE(Attach(rtc, text + std::string(length, 'x') + "\"\n"));
    ASSERT_EQ(rtc.Table->Count, kCount);
    EXPECT_EQ(rtc.SaveBinary(path.c_str()), length == 475);
    EXPECT_EQ(std::filesystem::file_size(path), 16u << 20);
    RTC loaded;
    EXPECT_TRUE(loaded.LoadBinary(path.c_str()));
    EXPECT_EQ(loaded.Table->Count, kCount);
  }
}

TEST(RtcBinary, IsWrittenWholeOrNotAtAllWhicheverCallFails) {
  const TempFolder folder;
  const std::string path = folder.File("d.bin");
  RTC rtc;
  ASSERT_TRUE(Attach(rtc, kSameAsText));
  bool saved = false;
  for (int nth = 1; !saved; ++nth) {
    ASSERT_LT(nth, 100);
    test::WriteText(path, "old");
    int calls = 0;
    {
      test::FileFailure failure;
      failure.FailCall(nth, ENOSPC);
      saved = rtc.SaveBinary(path.c_str());
      calls = failure.Calls();
    }
    const Bytes found = test::ReadBytes(path);
    EXPECT_TRUE(found == kFile || (!saved && found == BytesOf("old"))) << nth;
    if (calls < nth) {
      EXPECT_TRUE(saved);
      EXPECT_EQ(found, kFile);
    } else {
      saved = false;
    }
  }
  EXPECT_EQ(folder.Listing(), "d.bin");
}

TEST(RtcBinary, OnAFullDiskTheOldFileStays) {
  const TempFolder folder;
  const std::string path = folder.File("d.bin");
  test::WriteText(path, "old");
  RTC rtc;
  ASSERT_TRUE(Attach(rtc, kSameAsText));
  test::FileFailure failure;
  failure.FillDiskAfter(kFile.size() - 1);
  EXPECT_FALSE(rtc.SaveBinary(path.c_str()));
  EXPECT_EQ(test::ReadText(path), "old");
  EXPECT_EQ(folder.Listing(), "d.bin");
}

TEST(RtcBinary, IsNotWrittenWhereverMemoryRunsOut) {
  RTC rtc;
  ASSERT_TRUE(Attach(rtc, kSameAsText));
  bool failed = true;
  for (std::uint64_t nth = 1; failed; ++nth) {
    const TempFolder folder;
    const std::string path = folder.File("d.bin");
    bool saved = false;
    {
      const test::AllocationFailure failure(nth);
      saved = rtc.SaveBinary(path.c_str());
      failed = failure.Happened();
    }
    // Where the work goes on without the memory, it may succeed all the same.
    EXPECT_TRUE(saved || failed) << nth;
    EXPECT_EQ(std::filesystem::exists(path), saved) << nth;
  }
}

// Reading.

TEST(RtcBinary, IsTakenForBinaryByItsMark) {
  const TempFolder folder;
  test::WriteBytes(folder.File("d.txt"), kFile);
  RTC rtc;
  EXPECT_TRUE(rtc.AttachRTC(folder.File("d.txt").c_str()));
  EXPECT_EQ(Shown(rtc), kBoth);
  EXPECT_EQ(rtc.Table->Capacity, 2u);
  EXPECT_EQ(rtc.RunTimeClass(0x0028, 0x0010, nullptr), type_code::US);
  EXPECT_EQ(rtc.RunTimeClass(0x0028, 0x0011, nullptr), 0);
  EXPECT_NE(rtc.KeepDescriptions, 0u);
  EXPECT_EQ(rtc.LastErrorText(), "");
}

TEST(RtcBinary, IsTakenForBinaryWhateverFollowsItsMark) {
  Loaded loaded;
  EXPECT_FALSE(Attach(loaded.rtc, std::string_view("#!BinRTC\n{16 16 PN \"Name\"}\n")));
  // What looks like text is read as numbers: a count of 0x50203631, far beyond the end.
  EXPECT_EQ(loaded.rtc.LastErrorText().substr(0, 23), "the file ends after 0 o");
  EXPECT_FALSE(Attach(loaded.rtc, std::string_view("#!BinRTC")));
  EXPECT_EQ(loaded.rtc.LastErrorText(), "the header of the binary form is not sound");
  EXPECT_EQ(Shown(loaded.rtc), kAsItWas);
}

TEST(RtcBinary, WithAnotherMarkIsText) {
  Loaded loaded;
  EXPECT_TRUE(Attach(loaded.rtc, std::string_view("#!binRTC\n{0x0010 0x0010 PN \"Name\"}\n")));
  EXPECT_EQ(Shown(loaded.rtc), "00100010 PN Name");
}

TEST(RtcBinary, LoadBinaryReadsAFile) {
  const TempFolder folder;
  test::WriteBytes(folder.File("d.bin"), kFile);
  Loaded loaded;
  EXPECT_TRUE(loaded.rtc.LoadBinary(folder.File("d.bin").c_str()));
  EXPECT_EQ(Shown(loaded.rtc), kBoth);
}

TEST(RtcBinary, LoadBinaryStaysAsItWasWithoutAFileInThisForm) {
  const TempFolder folder;
  test::WriteText(folder.File("d.txt"), kSameAsText);
  Loaded loaded;
  EXPECT_FALSE(loaded.rtc.LoadBinary(nullptr));
  EXPECT_FALSE(loaded.rtc.LoadBinary(folder.File("absent").c_str()));
  EXPECT_EQ(loaded.rtc.LastErrorText(), "No such file or directory");
  EXPECT_FALSE(loaded.rtc.LoadBinary(folder.File("d.txt").c_str()));
  EXPECT_EQ(loaded.rtc.LastErrorText(), "the header of the binary form is not sound");
  EXPECT_EQ(Shown(loaded.rtc), kAsItWas);
}

TEST(RtcBinary, WithoutDescriptionsInTheFileTheyAreNotKept) {
  Loaded loaded;
  EXPECT_TRUE(Attach(loaded.rtc, kFileWithoutTexts));
  EXPECT_EQ(Shown(loaded.rtc), kBothWithoutTexts);
  EXPECT_EQ(loaded.rtc.KeepDescriptions, 0u);
  std::array<char, kDescriptionBuffer> text{'?'};
  EXPECT_EQ(loaded.rtc.RunTimeClass(0x0010, 0x0010, text.data()), type_code::PN);
  EXPECT_STREQ(text.data(), "");
}

TEST(RtcBinary, DescriptionsInTheFileAreLeftOutWhenTheyAreNotKept) {
  Loaded loaded(false);
  EXPECT_TRUE(Attach(loaded.rtc, kFile));
  EXPECT_EQ(Shown(loaded.rtc), kBothWithoutTexts);
  EXPECT_EQ(loaded.rtc.KeepDescriptions, 0u);
}

TEST(RtcBinary, AnyOtherFlagThanZeroAnnouncesDescriptions) {
  for (const Bytes& flag :
       {Bytes{0x02, 0, 0, 0}, Bytes{0, 0, 0, 0x80}, Bytes{0xFF, 0xFF, 0xFF, 0xFF}}) {
    RTC rtc;
    EXPECT_TRUE(Attach(rtc, Replaced(kFile, 16, flag)));
    EXPECT_EQ(Shown(rtc), kBoth);
  }
}

TEST(RtcBinary, WordsWithoutMeaningAreIgnored) {
  Bytes bytes = Replaced(kFile, 8, {0xEE, 0xEE, 0xEE, 0xEE});
  const std::size_t elements = kHeaderSize + kKeys.size();
  for (const std::size_t element : {elements, elements + 12}) {
    bytes = Replaced(bytes, element + 6, {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE});
  }
  RTC kept;
  EXPECT_TRUE(Attach(kept, bytes));
  EXPECT_EQ(Shown(kept), kBoth);
  // Where no descriptions are read the stale pointers must not be followed either.
  RTC dropped(false);
  EXPECT_TRUE(Attach(dropped, bytes));
  EXPECT_EQ(Shown(dropped), kBothWithoutTexts);
}

TEST(RtcBinary, WhatFollowsTheLastTextIsIgnored) {
  RTC rtc;
  EXPECT_TRUE(Attach(rtc, Joined({kFile, BytesOf("more")})));
  EXPECT_EQ(Shown(rtc), kBoth);
}

TEST(RtcBinary, AnEmptyDescriptionIsOne) {
  RTC rtc;
  const Bytes texts = BytesOf(std::string_view("\0Rows\0", 6));
  EXPECT_TRUE(Attach(rtc, Joined({kMark, kReserved, kTwo, kWithTexts, kKeys, kElements, texts})));
  EXPECT_EQ(Shown(rtc), "00100010 PN , 00280010 US Rows");
}

TEST(RtcBinary, OfTwoEntriesOfATagTheFirstCounts) {
  const Bytes keys{0x10, 0, 0x10, 0, 0x10, 0, 0x10, 0};
  const Bytes elements = Replaced(kElements, 12, {0x10, 0});
  RTC rtc;
  EXPECT_TRUE(Attach(rtc, Joined({kMark, kReserved, kTwo, kWithTexts, keys, elements, kTexts})));
  EXPECT_EQ(rtc.RunTimeClass(0x0010, 0x0010, nullptr), type_code::PN);
}

TEST(RtcBinary, WithoutAnEntryIsAFailureAndLeavesTheDictionaryEmpty) {
  Loaded loaded;
  EXPECT_FALSE(Attach(loaded.rtc, Replaced(kFile, 12, {0, 0, 0, 0})));
  EXPECT_EQ(loaded.rtc.Table, nullptr);
  EXPECT_NE(loaded.rtc.KeepDescriptions, 0u);
}

// A file that ends early.

TEST(RtcBinary, CutInTheHeaderTheKeysOrTheFirstElementChangesNothing) {
  const std::size_t firstWhole = kHeaderSize + kKeys.size() + 12;
  for (std::size_t size = kMark.size() - 1; size < firstWhole; ++size) {
    Loaded loaded;
    EXPECT_FALSE(Attach(loaded.rtc, Cut(kFile, size))) << size;
    EXPECT_EQ(Shown(loaded.rtc), kAsItWas) << size;
    EXPECT_NE(loaded.rtc.LastErrorText(), "");
  }
}

TEST(RtcBinary, CutInTheElementsHoldsTheEntriesThatCameWhole) {
  const std::size_t elements = kHeaderSize + kKeys.size();
  for (std::size_t size = elements + 12; size < elements + kElements.size(); ++size) {
    Loaded loaded;
    EXPECT_FALSE(Attach(loaded.rtc, Cut(kFile, size))) << size;
    EXPECT_EQ(Shown(loaded.rtc), "00100010 PN -") << size;
    EXPECT_EQ(loaded.rtc.LastErrorText(), "the file ends after 1 of 2 entries");
    EXPECT_EQ(loaded.rtc.RunTimeClass(0x0010, 0x0010, nullptr), type_code::PN);
    EXPECT_EQ(loaded.rtc.RunTimeClass(0x0028, 0x0010, nullptr), 0);
  }
}

TEST(RtcBinary, CutWithoutDescriptionsKeepsThemForTheNextFile) {
  Loaded loaded;
  EXPECT_FALSE(Attach(loaded.rtc, Cut(kFileWithoutTexts, kFileWithoutTexts.size() - 1)));
  EXPECT_EQ(Shown(loaded.rtc), "00100010 PN -");
  EXPECT_NE(loaded.rtc.KeepDescriptions, 0u);
  EXPECT_TRUE(Attach(loaded.rtc, kFile));
  EXPECT_EQ(Shown(loaded.rtc), kBoth);
}

TEST(RtcBinary, CutInTheDescriptionsHoldsAllEntriesAndTheDescriptionsThatCameWhole) {
  const std::size_t texts = kFile.size() - kTexts.size();
  for (std::size_t size = texts; size < kFile.size(); ++size) {
    Loaded loaded;
    EXPECT_FALSE(Attach(loaded.rtc, Cut(kFile, size))) << size;
    EXPECT_EQ(Shown(loaded.rtc),
              size < texts + 5 ? kBothWithoutTexts : "00100010 PN Name, 00280010 US -")
        << size;
    EXPECT_EQ(loaded.rtc.LastErrorText(), "the file ends within the descriptions");
  }
}

TEST(RtcBinary, CutDescriptionsDoNotMatterWhenTheyAreNotKept) {
  Loaded loaded(false);
  EXPECT_TRUE(Attach(loaded.rtc, Cut(kFile, kFile.size() - kTexts.size())));
  EXPECT_EQ(Shown(loaded.rtc), kBothWithoutTexts);
}

// Files that lie.

TEST(RtcBinary, ANegativeCountIsRefused) {
  for (const Bytes& count : {Bytes{0xFF, 0xFF, 0xFF, 0xFF}, Bytes{0, 0, 0, 0x80}}) {
    Loaded loaded;
    EXPECT_FALSE(Attach(loaded.rtc, Replaced(kFile, 12, count)));
    EXPECT_EQ(loaded.rtc.LastErrorText(), "the header of the binary form is not sound");
    EXPECT_EQ(Shown(loaded.rtc), kAsItWas);
  }
}

TEST(RtcBinary, AHugeCountTakesNoMemory) {
  const Bytes bytes = Replaced(kFile, 12, {0xFF, 0xFF, 0xFF, 0x7F});
  Loaded loaded;
  const test::AllocationWatch watch;
  EXPECT_FALSE(Attach(loaded.rtc, bytes));
  EXPECT_LT(watch.LargestRequest(), 1000u);
  EXPECT_EQ(loaded.rtc.LastErrorText(), "the file ends after 0 of 2147483647 entries");
  EXPECT_EQ(Shown(loaded.rtc), kAsItWas);
}

TEST(RtcBinary, KeysThatDescendAreRefused) {
  const Bytes keys{0x10, 0, 0x28, 0, 0x10, 0, 0x10, 0};
  Bytes elements(kElements.begin() + 12, kElements.end());
  elements.insert(elements.end(), kElements.begin(), kElements.begin() + 12);
  Loaded loaded;
  EXPECT_FALSE(
      Attach(loaded.rtc, Joined({kMark, kReserved, kTwo, kWithTexts, keys, elements, kTexts})));
  EXPECT_EQ(loaded.rtc.LastErrorText(), "keys and elements of the binary form do not agree");
  EXPECT_EQ(Shown(loaded.rtc), kAsItWas);
}

TEST(RtcBinary, KeysOfOtherTagsThanTheElementsAreRefused) {
  for (std::size_t at = kHeaderSize; at < kHeaderSize + kKeys.size(); ++at) {
    Loaded loaded;
    EXPECT_FALSE(Attach(loaded.rtc, Replaced(kFile, at, {0x01}))) << at;
    EXPECT_EQ(Shown(loaded.rtc), kAsItWas);
  }
}

TEST(RtcBinary, ADescriptionMayHave1023CharactersAndNoMore) {
  for (const std::size_t length : {std::size_t{1023}, std::size_t{1024}}) {
    const Bytes texts = Joined({BytesOf(std::string(length, 'd')), {0}, BytesOf("Rows"), {0}});
    Loaded loaded;
    EXPECT_EQ(
        Attach(loaded.rtc, Joined({kMark, kReserved, kTwo, kWithTexts, kKeys, kElements, texts})),
        length == 1023);
    EXPECT_EQ(
        Shown(loaded.rtc),
        length == 1023 ? "00100010 PN " + std::string(1023, 'd') + ", 00280010 US Rows" : kAsItWas);
    EXPECT_EQ(loaded.rtc.LastErrorText(),
              length == 1023 ? "" : "a description is longer than 1023 characters");
  }
}

TEST(RtcBinary, AMegabyteWithoutANulIsRefused) {
  Loaded loaded;
  const Bytes texts = BytesOf(std::string(1 << 20, 'd'));
  EXPECT_FALSE(
      Attach(loaded.rtc, Joined({kMark, kReserved, kTwo, kWithTexts, kKeys, kElements, texts})));
  EXPECT_EQ(Shown(loaded.rtc), kBothWithoutTexts);
}

TEST(RtcBinary, EveryChangeOfAByteIsReadOrRefused) {
  for (std::size_t at = 0; at < kFile.size(); ++at) {
    for (const std::uint8_t value : Bytes{0x00, 0x01, 0x7F, 0x80, 0xFF}) {
      RTC rtc;
      const bool good = Attach(rtc, Replaced(kFile, at, {value}));
      EXPECT_TRUE(!good || rtc.Table->Count >= 1) << at;
      Shown(rtc);
    }
  }
}

TEST(RtcBinary, IsLoadedWholeOrNotAtAllWhereverMemoryRunsOut) {
  Loaded loaded;
  bool good = false;
  const std::uint64_t allocations = test::FailEveryAllocation([&] {
    good = Attach(loaded.rtc, kFile);
    if (!good) {
      EXPECT_EQ(loaded.rtc.LastErrorText(), "out of memory");
      EXPECT_EQ(loaded.rtc.Table->Count, 1u);
    }
  });
  EXPECT_TRUE(good);
  EXPECT_GT(allocations, 4u);
  EXPECT_EQ(Shown(loaded.rtc), kBoth);
}

// The dictionary that the library brings.

TEST(RealDictionaryInBinary, IsTheSameAsInText) {
  const TempFolder folder;
  const std::string path = folder.File("d.bin");
  RTC text;
  ASSERT_TRUE(text.AttachRTC((std::string(test::kDataDir) + "/dicom-dict.txt").c_str()));
  ASSERT_TRUE(text.SaveBinary(path.c_str()));
  RTC binary;
  ASSERT_TRUE(binary.AttachRTC(path.c_str()));
  EXPECT_EQ(Shown(binary), Shown(text));
  for (std::uint32_t at = 0; at < text.Table->Count; ++at) {
    ASSERT_EQ(binary.Find(text.Table->Keys[at]), &binary.Table->Elements[at]);
  }
  ASSERT_TRUE(binary.SaveBinary(folder.File("again.bin").c_str()));
  EXPECT_EQ(test::ReadBytes(folder.File("again.bin")), test::ReadBytes(path));
}

}  // namespace
}  // namespace tessaret
