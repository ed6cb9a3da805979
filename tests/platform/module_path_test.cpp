#include "platform/module_path.h"

#include <stdlib.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret {
namespace {

/// Each test starts and ends without the variable.
class ModulePath : public testing::Test {
 protected:
  ModulePath() { ::unsetenv("TESSARET_DATA_DIR"); }
  ~ModulePath() override { ::unsetenv("TESSARET_DATA_DIR"); }
};

TEST_F(ModulePath, IsWhatTheVariableNamesWhetherOrNotItIsThere) {
  ::setenv("TESSARET_DATA_DIR", "/no/such/place", 1);
  EXPECT_EQ(ModuleDirectory(), "/no/such/place/");
  ::setenv("TESSARET_DATA_DIR", "/no/such/place/", 1);
  EXPECT_EQ(ModuleDirectory(), "/no/such/place/");
  ::setenv("TESSARET_DATA_DIR", "beside", 1);
  EXPECT_EQ(ModuleDirectory(), "beside/");
  ::setenv("TESSARET_DATA_DIR", "/", 1);
  EXPECT_EQ(ModuleDirectory(), "/");
}

TEST_F(ModulePath, AnEmptyVariableCountsAsNone) {
  const std::string without = ModuleDirectory();
  ::setenv("TESSARET_DATA_DIR", "", 1);
  EXPECT_EQ(ModuleDirectory(), without);
}

TEST_F(ModulePath, HoldsTheDictionariesOfTheBuild) {
  const std::string directory = ModuleDirectory();
  EXPECT_EQ(directory.back(), '/');
  EXPECT_EQ(directory.front(), '/') << "a change of the working directory must not move it";
  EXPECT_TRUE(std::filesystem::exists(directory + "dicom-dict.txt")) << directory;
  EXPECT_TRUE(std::filesystem::exists(directory + "uid-dict.txt")) << directory;
}

TEST_F(ModulePath, OfTheCodeAndOfTheProgramDoNotGoByTheVariable) {
  ::setenv("TESSARET_DATA_DIR", "/no/such/place", 1);
  const std::string build = test::kBinaryDir;
  EXPECT_EQ(CodeDirectory(), build + "/lib/");
  EXPECT_EQ(ProgramDirectory(), build + "/bin/");
}

TEST_F(ModulePath, IsTheSameFromAnyWorkingDirectory) {
  const std::string before = ModuleDirectory();
  const auto workingDirectory = std::filesystem::current_path();
  const test::TempFolder folder;
  test::WriteText(folder.File("dicom-dict.txt"), "another one");
  std::filesystem::current_path(folder.Path());
  EXPECT_EQ(ModuleDirectory(), before);
  std::filesystem::current_path(workingDirectory);
}

}  // namespace
}  // namespace tessaret
