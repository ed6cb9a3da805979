// The settings of a user: where they are, what is read, and that writing keeps what others put there.
#include "platform/settings_store.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

constexpr const char* kGroup = "Software\\Maker\\Product";

/// A place of its own for the settings, whatever the tester's are.
class SettingsStore : public testing::Test {
 protected:
  void SetUp() override {
    const char* before = std::getenv("XDG_CONFIG_HOME");
    if (before != nullptr) before_ = before;
    hadPlace_ = before != nullptr;
    ::setenv("XDG_CONFIG_HOME", folder_.File("config").c_str(), 1);
  }
  void TearDown() override {
    hadPlace_ ? ::setenv("XDG_CONFIG_HOME", before_.c_str(), 1) : ::unsetenv("XDG_CONFIG_HOME");
  }
  std::string Path() const { return folder_.File("config/tessaret/settings.conf"); }
  void Put(const std::string& text) {
    std::filesystem::create_directories(folder_.File("config/tessaret"));
    test::WriteText(Path(), text);
  }

  test::TempFolder folder_;

 private:
  std::string before_;
  bool hadPlace_ = false;
};

TEST_F(SettingsStore, LieInTheConfigurationDirectoryOfTheUser) {
  EXPECT_EQ(SettingsPath(), Path());
  const char* home = std::getenv("HOME");
  const std::string before = home == nullptr ? "" : home;
  ::unsetenv("XDG_CONFIG_HOME");
  ::setenv("HOME", "/home/somebody", 1);
  EXPECT_EQ(SettingsPath(), "/home/somebody/.config/tessaret/settings.conf");
  // A path that is not whole would depend on where the program happens to be.
  ::setenv("XDG_CONFIG_HOME", "config", 1);
  EXPECT_EQ(SettingsPath(), "/home/somebody/.config/tessaret/settings.conf");
  ::unsetenv("HOME");
  EXPECT_EQ(SettingsPath(), "");
  EXPECT_EQ(ReadNumberSetting(kGroup, "Size"), std::nullopt);
  EXPECT_FALSE(WriteNumberSetting(kGroup, "Size", 1));
  if (home != nullptr) ::setenv("HOME", before.c_str(), 1);
}

TEST_F(SettingsStore, WhatIsWrittenIsRead) {
  EXPECT_EQ(ReadNumberSetting(kGroup, "Size"), std::nullopt);
  EXPECT_TRUE(WriteNumberSetting(kGroup, "Size", 7));
  EXPECT_EQ(ReadNumberSetting(kGroup, "Size"), 7u);
  EXPECT_EQ(test::ReadText(Path()), "[Software\\Maker\\Product]\nSize = 7\n");
  EXPECT_TRUE(WriteNumberSetting(kGroup, "Size", 4294967295u));
  EXPECT_TRUE(WriteNumberSetting(kGroup, "Other", 0));
  EXPECT_EQ(ReadNumberSetting(kGroup, "Size"), 4294967295u);
  EXPECT_EQ(ReadNumberSetting(kGroup, "Other"), 0u);
}

TEST_F(SettingsStore, AreTheUsersAlone) {
  ASSERT_TRUE(WriteNumberSetting(kGroup, "Size", 7));
  struct stat status {};
  ASSERT_EQ(::stat(folder_.File("config/tessaret").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0700u);
}

TEST_F(SettingsStore, AreFoundByGroupAndNameInAnyCase) {
  Put("Size = 1\n[Other]\nSize = 2\n [software\\MAKER\\product] \n\tsize=3 \nWidth = "
      "4\n[Third]\nWidth = 5\n");
  EXPECT_EQ(ReadNumberSetting(kGroup, "SIZE"), 3u);
  EXPECT_EQ(ReadNumberSetting(kGroup, "Width"), 4u);
  EXPECT_EQ(ReadNumberSetting("third", "Width"), 5u);
  EXPECT_EQ(ReadNumberSetting("Third", "Size"), std::nullopt);
  EXPECT_EQ(ReadNumberSetting("Fourth", "Size"), std::nullopt);
}

TEST_F(SettingsStore, WhatIsNoNumberIsNotSet) {
  for (const char* value : {"", "x", "7x", "-1", "4294967296", "1.5", "0x10", "\"7\"", "7 8"}) {
    Put("[Software\\Maker\\Product]\nSize = " + std::string(value) + "\n");
    EXPECT_EQ(ReadNumberSetting(kGroup, "Size"), std::nullopt) << value;
  }
  Put("[Software\\Maker\\Product]\nSize\nSize 7\n");
  EXPECT_EQ(ReadNumberSetting(kGroup, "Size"), std::nullopt);
}

TEST_F(SettingsStore, WritingLeavesAllElseAsItWas) {
  Put("# a remark\n\n[Other]\nSize = 2\n[Software\\Maker\\Product]\nWidth = 4\nSize = 3\nColour = "
      "\"blue\"\n[Third]\nWidth = 5");
  EXPECT_TRUE(WriteNumberSetting(kGroup, "Size", 8));
  EXPECT_EQ(test::ReadText(Path()),
            "# a remark\n\n[Other]\nSize = 2\n[Software\\Maker\\Product]\nWidth = 4\nSize = "
            "8\nColour = \"blue\"\n[Third]\n"
            "Width = 5\n");
  EXPECT_TRUE(WriteNumberSetting("other", "Depth", 9));
  EXPECT_EQ(ReadNumberSetting("Other", "Depth"), 9u);
  EXPECT_EQ(ReadNumberSetting("Other", "Size"), 2u);
  EXPECT_TRUE(WriteNumberSetting("Fourth", "Depth", 10));
  EXPECT_EQ(ReadNumberSetting("Fourth", "Depth"), 10u);
  EXPECT_EQ(ReadNumberSetting("Third", "Width"), 5u);
}

TEST_F(SettingsStore, AGroupThatIsThereTwiceCountsAsOne) {
  Put("[Other]\nA = 1\n[Third]\n[Other]\nB = 2\n");
  EXPECT_EQ(ReadNumberSetting("Other", "B"), 2u);
  EXPECT_TRUE(WriteNumberSetting("Other", "B", 3));
  EXPECT_EQ(test::ReadText(Path()), "[Other]\nA = 1\n[Third]\n[Other]\nB = 3\n");
  // What is new goes to where the group begins.
  EXPECT_TRUE(WriteNumberSetting("Other", "C", 4));
  EXPECT_EQ(test::ReadText(Path()), "[Other]\nC = 4\nA = 1\n[Third]\n[Other]\nB = 3\n");
}

TEST_F(SettingsStore, BlanksCountForNothing) {
  Put("  [ Other ]  \n\tA=1\r\n[Third]\n");
  EXPECT_EQ(ReadNumberSetting("Other", "A"), 1u);
  EXPECT_TRUE(WriteNumberSetting("Other", "A", 2));
  EXPECT_EQ(test::ReadText(Path()), "  [ Other ]  \nA = 2\n[Third]\n");
}

TEST_F(SettingsStore, WhatCannotBeReadIsNotWrittenOver) {
  Put("[Other]\nA = 1\n");
  {
    test::FileFailure calls;
    calls.FailCall(FileCall::kRead, 1, EIO);
    EXPECT_FALSE(WriteNumberSetting("Other", "A", 2));
  }
  EXPECT_EQ(test::ReadText(Path()), "[Other]\nA = 1\n");
  Put(std::string((1u << 20) + 1, '#'));
  EXPECT_FALSE(WriteNumberSetting("Other", "A", 2));
  EXPECT_EQ(ReadNumberSetting("Other", "A"), std::nullopt);
}

TEST_F(SettingsStore, AFullDiskLeavesThemAsTheyWere) {
  Put("[Other]\nA = 1\n");
  {
    test::FileFailure calls;
    calls.FillDiskAfter(3);
    EXPECT_FALSE(WriteNumberSetting("Other", "A", 2));
  }
  EXPECT_EQ(test::ReadText(Path()), "[Other]\nA = 1\n");
  EXPECT_TRUE(WriteNumberSetting("Other", "A", 2));
}

TEST_F(SettingsStore, HostileBytesAreJustLines) {
  std::string text;
  for (int byte = 0; byte < 256; ++byte) text += static_cast<char>(byte);
  Put(text + "\n[\n]\n[]\n= 5\n=\n[[Other]]\nA = 1\n[Other]\nA = 2");
  EXPECT_EQ(ReadNumberSetting("Other", "A"), 2u);
  EXPECT_EQ(ReadNumberSetting("[Other]", "A"), 1u);
  EXPECT_EQ(ReadNumberSetting("", ""), 5u);
  EXPECT_TRUE(WriteNumberSetting("Other", "A", 3));
  EXPECT_EQ(test::ReadText(Path()),
            text + "\n[\n]\n[]\n= 5\n=\n[[Other]]\nA = 1\n[Other]\nA = 3\n");
}

}  // namespace
}  // namespace tessaret
