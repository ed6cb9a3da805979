#include "core/module_dictionaries.h"

#include <unistd.h>

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret {
namespace {

using test::TempFolder;
using test::WriteText;

class ModuleDictionaries : public testing::Test {
 protected:
  void SetUp() override {
    WriteText(Tags(), "# test\n{0x0010 0x0010 PN \"Name\"}\n");
    WriteText(Uids(), "A 1.2 1 B C\n");
  }
  void TearDown() override { StopDictionaries(); }

  [[nodiscard]] std::string Tags() const { return folder_.File("dicom-dict.txt"); }
  [[nodiscard]] std::string Uids() const { return folder_.File("uid-dict.txt"); }
  [[nodiscard]] std::string Directory() const { return folder_.Path().string() + "/"; }

  bool Start(const std::string& directory) {
    return StartDictionaries(directory,
                             [this](const std::string& text, const std::string& caption) {
                               messages_.push_back(caption + "|" + text);
                             });
  }

  void ExpectEmpty() const {
    EXPECT_EQ(ModuleDictionary().Table, nullptr);
    EXPECT_TRUE(ModuleUidDictionary().Entries.empty());
    EXPECT_EQ(ModuleDirectoryText(), "");
  }

  const TempFolder folder_;
  std::vector<std::string> messages_;
};

TEST_F(ModuleDictionaries, AreEmptyBeforeTheyAreStarted) { ExpectEmpty(); }

TEST_F(ModuleDictionaries, AreLoadedFromTheDirectory) {
  ASSERT_TRUE(Start(Directory()));
  EXPECT_EQ(ModuleDictionary().RunTimeClass(0x0010, 0x0010, nullptr), type_code::PN);
  EXPECT_NE(ModuleUidDictionary().FindEntry("1.2"), nullptr);
  EXPECT_EQ(ModuleDirectoryText(), Directory());
  EXPECT_TRUE(messages_.empty());
}

TEST_F(ModuleDictionaries, TheDirectoryTextEndsInTheSeparatorWhateverWasGiven) {
  ASSERT_TRUE(Start(folder_.Path().string()));
  EXPECT_EQ(ModuleDirectoryText(), Directory());
}

TEST_F(ModuleDictionaries, AMissingDataDictionaryIsToldWithItsPath) {
  std::filesystem::remove(Tags());
  EXPECT_FALSE(Start(Directory()));
  EXPECT_EQ(messages_, std::vector<std::string>{"Error Tessaret|Error reading [" + Tags() + "]"});
  ExpectEmpty();
}

TEST_F(ModuleDictionaries, ADataDictionaryWithoutAnEntryIsAFailure) {
  WriteText(Tags(), "# nothing\n");
  EXPECT_FALSE(Start(Directory()));
  EXPECT_EQ(messages_, std::vector<std::string>{"Error Tessaret|Error reading [" + Tags() + "]"});
  ExpectEmpty();
}

TEST_F(ModuleDictionaries, TheReasonStaysWithTheDataDictionary) {
  WriteText(Tags(), "# test\n{16 16 P \"Name\"}\n");
  EXPECT_FALSE(Start(Directory()));
  EXPECT_EQ(ModuleDictionary().LastErrorText(), "line 2: a type needs two letters");
}

TEST_F(ModuleDictionaries, AMissingUidDictionaryIsToldInTheSystemsWords) {
  std::filesystem::remove(Uids());
  EXPECT_FALSE(Start(Directory()));
  EXPECT_EQ(messages_, std::vector<std::string>{"Error Tessaret|No such file or directory"});
  ExpectEmpty();
}

TEST_F(ModuleDictionaries, AUidLineWithTooFewTokensIsToldWithItsNumber) {
  WriteText(Uids(), "A 1.2 1 B\nA 1.3\n");
  EXPECT_FALSE(Start(Directory()));
  EXPECT_EQ(messages_, std::vector<std::string>{"Error Tessaret|Error reading UID file at line 2"});
  ExpectEmpty();
}

TEST_F(ModuleDictionaries, OneMessageIsShownWhenBothFilesAreMissing) {
  EXPECT_FALSE(Start("/nonexistent"));
  EXPECT_EQ(messages_,
            std::vector<std::string>{"Error Tessaret|Error reading [/nonexistent/dicom-dict.txt]"});
}

TEST_F(ModuleDictionaries, WithoutASinkTheMessageGoesToStandardError) {
  testing::internal::CaptureStderr();
  EXPECT_FALSE(StartDictionaries("/nonexistent/"));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Error Tessaret: Error reading [/nonexistent/dicom-dict.txt]\n");
}

TEST_F(ModuleDictionaries, StartingAgainReplacesThem) {
  ASSERT_TRUE(Start(Directory()));
  WriteText(Tags(), "# test\n{0x0010 0x0020 LO \"ID\"}\n");
  WriteText(Uids(), "A 1.3 1 B C\n");
  ASSERT_TRUE(Start(Directory()));
  EXPECT_EQ(ModuleDictionary().RunTimeClass(0x0010, 0x0010, nullptr), 0);
  EXPECT_EQ(ModuleUidDictionary().FindEntry("1.2"), nullptr);
  EXPECT_NE(ModuleUidDictionary().FindEntry("1.3"), nullptr);
}

TEST_F(ModuleDictionaries, AFailedStartLeavesThemEmptyEvenWhenTheyWereLoaded) {
  ASSERT_TRUE(Start(Directory()));
  EXPECT_FALSE(Start("/nonexistent"));
  ExpectEmpty();
}

TEST_F(ModuleDictionaries, AreLoadedWholeOrEmptyWhereverMemoryRunsOut) {
  const std::string directory = Directory();
  bool started = false;
  test::FailEveryAllocation(
      [&] {
        try {
          started = StartDictionaries(directory, [](const std::string& text, const std::string&) {
            ADD_FAILURE() << "a lack of memory is no failure of the files: " << text;
          });
        } catch (const std::bad_alloc&) {
          started = false;
        }
      },
      [&] {
        if (!started) ExpectEmpty();
      });
  EXPECT_TRUE(started);
}

TEST_F(ModuleDictionaries, StopEmptiesThem) {
  ASSERT_TRUE(Start(Directory()));
  StopDictionaries();
  ExpectEmpty();
}

TEST_F(ModuleDictionaries, ABinaryDataDictionaryIsLoadedToo) {
  ASSERT_TRUE(Start(Directory()));
  ASSERT_TRUE(ModuleDictionary().SaveBinary(Tags().c_str()));
  ASSERT_TRUE(Start(Directory()));
  EXPECT_STREQ(ModuleDictionary().Find(0x00100010)->Description, "Name");
}

TEST_F(ModuleDictionaries, KeepDescriptionsAgainAfterABinaryFileWithoutThem) {
  ModuleDictionary().KeepDescriptions = 0;
  ASSERT_TRUE(ModuleDictionary().AttachRTC(Tags().c_str()));
  ASSERT_TRUE(ModuleDictionary().SaveBinary(Tags().c_str()));
  ASSERT_TRUE(Start(Directory()));
  EXPECT_EQ(ModuleDictionary().KeepDescriptions, 0u);
  SetUp();
  ASSERT_TRUE(Start(Directory()));
  EXPECT_STREQ(ModuleDictionary().Find(0x00100010)->Description, "Name");
}

TEST_F(ModuleDictionaries, TheModulesOwnDirectoryIsTheDefault) {
  ASSERT_EQ(::setenv("TESSARET_DATA_DIR", folder_.Path().c_str(), 1), 0);
  const bool started = StartDictionaries();
  ::unsetenv("TESSARET_DATA_DIR");
  ASSERT_TRUE(started);
  EXPECT_EQ(ModuleDirectoryText(), Directory());
  EXPECT_NE(ModuleUidDictionary().FindEntry("1.2"), nullptr);
}

/// Ends the process with 0 if the dictionaries can still be read behind all that was made after this was registered.
void LookUpAndExit() {
  const bool known = ModuleDictionary().RunTimeClass(0x0010, 0x0010, nullptr) == type_code::PN &&
                     ModuleUidDictionary().FindEntry("1.2.840.10008.1.2") != nullptr;
  ::_exit(known ? 0 : 1);
}

void StartAndExit() {
  std::atexit(LookUpAndExit);
  StartDictionaries(test::kDataDir);
  std::exit(2);
}

TEST(ModuleDictionariesDeathTest, AreStillThereWhileTheProcessEnds) {
  // In a process of its own, where nothing has touched them before.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(StartAndExit(), testing::ExitedWithCode(0), "");
}

TEST_F(ModuleDictionaries, TheFilesThatTheLibraryBringsAreLoaded) {
  ASSERT_TRUE(Start(test::kDataDir));
  EXPECT_GT(ModuleDictionary().Table->Count, 5000u);
  EXPECT_GT(ModuleUidDictionary().Entries.size(), 400u);
  EXPECT_TRUE(messages_.empty());
}

}  // namespace
}  // namespace tessaret
