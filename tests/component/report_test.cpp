// The words of a thread's last failure.
#include "component/report.h"

#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"

namespace tessaret {
namespace {

constexpr ClassId kLamp{1, 1};
constexpr InterfaceId kILamp{2, 1};
constexpr ClassId kStreetLamp{1, 2};
constexpr ClassRow kRows[] = {{"Tessaret.Lamp", kLamp, "ILamp", "", nullptr},
                              {"Tessaret.LampOfTheStreet", kStreetLamp, "ILamp", "", nullptr}};

class ReportTest : public testing::Test {
 protected:
  void SetUp() override {
    before_ = Classes();
    RegisterClasses(kRows);
    ForgetLastWords();
  }
  void TearDown() override {
    RegisterClasses(before_);
    ForgetLastWords();
  }

 private:
  std::span<const ClassRow> before_;
};

TEST_F(ReportTest, KeepsTextClassAndInterface) {
  EXPECT_EQ(Report(kLamp, "It went out", kILamp), static_cast<Status>(0x80020009u));
  EXPECT_EQ(LastWords().source, "Tessaret.Lamp");
  EXPECT_EQ(LastWords().text, "It went out");
  EXPECT_EQ(LastWords().interface, kILamp);
}

TEST_F(ReportTest, TakesEntriesOfTheStringTable) {
  EXPECT_EQ(Report(kLamp, 543, kILamp), kException);
  EXPECT_EQ(LastWords().text, "Error converting VARIANT to VR type");
  EXPECT_EQ(Report(kLamp, 551, kILamp), kException);
  EXPECT_EQ(LastWords().text, "");
}

TEST_F(ReportTest, ANullTextIsAnInvalidPointerAndNothingElse) {
  Report(kLamp, "It went out", kILamp);
  EXPECT_EQ(Report(kLamp, nullptr, kILamp), static_cast<Status>(0x80004003u));
  EXPECT_EQ(LastWords().text, "It went out");
}

TEST_F(ReportTest, TheWordsThatAreKeptMayBeReportedOnceMore) {
  Report({9, 9}, "It went out, and stayed out for long", kILamp);
  EXPECT_EQ(Report(kLamp, LastWords().text.c_str(), kILamp), kException);
  EXPECT_EQ(LastWords().text, "It went out, and stayed out for long");
  EXPECT_EQ(LastWords().source, "Tessaret.Lamp");
  Report({9, 9}, LastWords().source.c_str(), kILamp);
  EXPECT_EQ(LastWords().text, "Tessaret.Lamp");
  EXPECT_EQ(LastWords().source, "");
  Report(kLamp, LastWords().text.c_str() + 9, kILamp);
  EXPECT_EQ(LastWords().text, "Lamp");
}

TEST_F(ReportTest, AClassThatIsNotThereHasNoName) {
  Report({9, 9}, "unknown", kILamp);
  EXPECT_EQ(LastWords().source, "");
  EXPECT_EQ(LastWords().text, "unknown");
}

TEST_F(ReportTest, EachThreadHasItsOwn) {
  Report(kLamp, "here", kILamp);
  std::thread([] {
    EXPECT_EQ(LastWords().text, "");
    Report(kLamp, "there", kILamp);
    EXPECT_EQ(LastWords().text, "there");
  }).join();
  EXPECT_EQ(LastWords().text, "here");
  ForgetLastWords();
  EXPECT_EQ(LastWords().text, "");
  EXPECT_EQ(LastWords().source, "");
}

TEST_F(ReportTest, WithoutMemoryTheStartOfTheTextIsKept) {
  const std::string text(5000, 'x');
  Status status = kOk;
  {
    const test::AllocationFailure failure(1);
    status = Report(kLamp, text.c_str(), kILamp);
  }
  EXPECT_EQ(status, kException);
  EXPECT_GE(LastWords().text.size(), 8u);
  EXPECT_EQ(text.find(LastWords().text), 0u);
}

TEST_F(ReportTest, WithoutMemoryNoOtherClassPassesForTheSource) {
  // In a thread of its own, whose words have not taken memory for longer names yet.
  std::thread([] {
    Report(kLamp, "out", kILamp);
    const test::AllocationFailure failure(1);
    EXPECT_EQ(Report(kStreetLamp, "broken", kILamp), kException);
    EXPECT_TRUE(failure.Happened());
    EXPECT_EQ(LastWords().text, "broken");
    EXPECT_EQ(LastWords().source, "");
  }).join();
}

}  // namespace
}  // namespace tessaret
