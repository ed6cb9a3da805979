// Class "Tessaret.DCMOptions": the option, and what of it is in the user's settings.
#include "facade/dcm_options.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/temp_folder.h"
#include "tessaret/tessaret.hpp"

namespace tessaret {
namespace {

/// Puts a value where the option is read from.
void WriteOption(const test::TempFolder& folder, const std::string& value) {
  std::filesystem::create_directories(folder.File("tessaret"));
  test::WriteText(folder.File("tessaret/settings.conf"),
                  "[Software\\Halvorne\\Vandrel]\nUseTotoku = " + value + "\n");
}

class Options : public testing::Test {
 protected:
  void SetUp() override {
    const char* before = std::getenv("XDG_CONFIG_HOME");
    hadPlace_ = before != nullptr;
    if (hadPlace_) before_ = before;
    ::setenv("XDG_CONFIG_HOME", folder_.Path().c_str(), 1);
    options_ = Create<IDCMOptions>("Tessaret.DCMOptions");
    ReadOptions();
  }
  void TearDown() override {
    options_->put_UseTotokuLUT(false);
    hadPlace_ ? ::setenv("XDG_CONFIG_HOME", before_.c_str(), 1) : ::unsetenv("XDG_CONFIG_HOME");
    ReadOptions();
  }
  std::int16_t Value() const {
    VariantBool value = VariantBool::Of(77);
    EXPECT_EQ(options_->get_UseTotokuLUT(&value), kOk);
    return value.value;
  }
  std::string Path() const { return folder_.File("tessaret/settings.conf"); }
  /// Puts a value where the option is read from, and has it read.
  void Set(const std::string& value) {
    WriteOption(folder_, value);
    ReadOptions();
  }

  test::TempFolder folder_;
  Ref<IDCMOptions> options_;

 private:
  std::string before_;
  bool hadPlace_ = false;
};

TEST_F(Options, IsFalseWhereNothingIsSet) { EXPECT_EQ(Value(), 0); }

TEST_F(Options, IsTrueWhereANumberAboveZeroIsSet) {
  Set("1");
  EXPECT_EQ(Value(), -1);
  Set("0");
  EXPECT_EQ(Value(), 0);
  Set("4294967295");
  EXPECT_EQ(Value(), -1);
  Set("\"1\"");
  EXPECT_EQ(Value(), 0);
}

TEST_F(Options, WhatIsPutIsKeptForTheUser) {
  EXPECT_EQ(options_->put_UseTotokuLUT(true), kOk);
  EXPECT_EQ(Value(), -1);
  EXPECT_EQ(test::ReadText(Path()), "[Software\\Halvorne\\Vandrel]\nUseTotoku = 1\n");
  EXPECT_EQ(options_->put_UseTotokuLUT(false), kOk);
  EXPECT_EQ(Value(), 0);
  EXPECT_EQ(test::ReadText(Path()), "[Software\\Halvorne\\Vandrel]\nUseTotoku = 0\n");
}

TEST_F(Options, TheSameValueIsNotWritten) {
  EXPECT_EQ(options_->put_UseTotokuLUT(false), kOk);
  EXPECT_FALSE(std::filesystem::exists(Path()));
  EXPECT_EQ(options_->put_UseTotokuLUT(true), kOk);
  std::filesystem::remove(Path());
  EXPECT_EQ(options_->put_UseTotokuLUT(true), kOk);
  EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(Options, OnlyMinusOneIsTrue) {
  EXPECT_EQ(options_->put_UseTotokuLUT(VariantBool::Of(1)), kOk);
  EXPECT_EQ(Value(), 0);
  EXPECT_EQ(options_->put_UseTotokuLUT(true), kOk);
  EXPECT_EQ(options_->put_UseTotokuLUT(VariantBool::Of(1)), kOk);
  EXPECT_EQ(Value(), 0);
}

TEST_F(Options, OneValueServesTheWholeProcess) {
  const auto other = Create<IDCMOptions>("Tessaret.DCMOptions");
  EXPECT_EQ(other->put_UseTotokuLUT(true), kOk);
  EXPECT_EQ(Value(), -1);
}

TEST_F(Options, AFailureToWriteIsNoFailure) {
  test::WriteText(folder_.File("tessaret"), "a file where the directory should be");
  EXPECT_EQ(options_->put_UseTotokuLUT(true), kOk);
  EXPECT_EQ(Value(), -1);
}

TEST_F(Options, WithoutMemoryToWriteItIsSetAllTheSame) {
  bool wanted = false;
  const std::uint64_t failures = test::FailEveryAllocation(
      [&] {
        wanted = !wanted;
        EXPECT_EQ(options_->put_UseTotokuLUT(wanted), kOk);
      },
      [&] { EXPECT_EQ(Value(), wanted ? -1 : 0); });
  EXPECT_GT(failures, 3u);
}

TEST_F(Options, AreCalledByName) {
  std::int32_t member = -1;
  ASSERT_EQ(options_->FindMember("UseTotokuLUT", MemberKind::kPut, &member), kOk);
  Variant value(true);
  EXPECT_EQ(options_->Invoke(member, &value, 1, nullptr), kOk);
  ASSERT_EQ(options_->FindMember("UseTotokuLUT", MemberKind::kGet, &member), kOk);
  EXPECT_EQ(options_->Invoke(member, nullptr, 0, &value), kOk);
  EXPECT_TRUE(value.AsBool().IsTrue());
  EXPECT_EQ(options_->get_UseTotokuLUT(nullptr), kPointer);
}

TEST_F(Options, HasAnEventInterfaceWithoutEvents) {
  const auto source = options_.As<IEventSource>();
  ASSERT_TRUE(source);
  EXPECT_STREQ(source->DescribeEvents()->name, "_IDCMOptionsEvents");
  EXPECT_EQ(source->DescribeEvents()->memberCount, 0u);
}

/// The option as a new object of the class tells it.
std::int16_t ValueOfANewObject() {
  VariantBool value = VariantBool::Of(77);
  Create<IDCMOptions>("Tessaret.DCMOptions")->get_UseTotokuLUT(&value);
  return value.value;
}

/// In a process that has not met the library yet; 0 where all is as it should be.
int FollowTheReading() {
  const test::TempFolder folder;
  ::setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
  // Starts the library.
  if (!Create<IDcmDictionary>("Tessaret.DcmDictionary")) return 1;
  WriteOption(folder, "1");
  if (ValueOfANewObject() != -1) return 2;
  WriteOption(folder, "0");
  return ValueOfANewObject() == -1 ? 0 : 3;
}

TEST(OptionsDeathTest, AreReadAgainWhenTheClassIsFirstUsedAndNotLater) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(FollowTheReading()), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tessaret
