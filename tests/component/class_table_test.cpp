// Finding classes by name and identifier.
#include "component/class_table.h"

#include <gtest/gtest.h>

namespace tessaret {
namespace {

Status Refuse(IObject*, const InterfaceId&, void**) { return kNotImplemented; }

constexpr ClassRow kRows[] = {
    {"Tessaret.Lamp", {1, 1}, "ILamp", "_ILampEvents", &Refuse},
    {"Tessaret.Stone", {1, 2}, "IStone", "", &Refuse},
};

class ClassTable : public testing::Test {
 protected:
  void SetUp() override {
    before_ = Classes();
    RegisterClasses(kRows);
  }
  void TearDown() override { RegisterClasses(before_); }

 private:
  std::span<const ClassRow> before_;
};

TEST_F(ClassTable, AClassIsFoundByBothItsNames) {
  EXPECT_EQ(FindClass("Tessaret.Lamp"), &kRows[0]);
  EXPECT_EQ(FindClass("Tessaret.Stone.1"), &kRows[1]);
  EXPECT_EQ(FindClass("TESSARET.stone"), &kRows[1]);
}

TEST_F(ClassTable, OtherNamesAreFoundNowhere) {
  for (const char* name : {"", ".1", "Tessaret", "Tessaret.", "Tessaret.Lam", "Tessaret.Lamps",
                           "Tessaret.Lamp.2", "Tessaret.Lamp.1.1", " Tessaret.Lamp"}) {
    EXPECT_EQ(FindClass(name), nullptr) << name;
  }
}

TEST_F(ClassTable, AClassIsFoundByItsIdentifier) {
  EXPECT_EQ(FindClass(ClassId{1, 2}), &kRows[1]);
  EXPECT_EQ(FindClass(ClassId{2, 1}), nullptr);
  EXPECT_EQ(FindClass(ClassId{}), nullptr);
}

}  // namespace
}  // namespace tessaret
