#include "core/person_name.h"

#include <string>

#include <gtest/gtest.h>

#include "value_maker.h"

namespace tessaret {
namespace {

using test::AfterPut;
using test::kNoValue;
using test::ValueAt;

std::string Display(std::string_view name) {
  std::string text;
  VrPN().DicomToDisplay(name, text);
  return text;
}

std::string Dicom(std::string_view text) {
  std::string name;
  VrPN().DisplayToDicom(text, name);
  return name;
}

TEST(PersonName, HasAFormForPeople) {
  EXPECT_EQ(Display("Doe^John"), "Doe, John");
  EXPECT_EQ(Display("Doe^John^Q^Dr^Jr"), "Doe, John, Q, Dr, Jr");
  EXPECT_EQ(Display("Doe^John^^Dr"), "Doe, John, , Dr");
  EXPECT_EQ(Display("Doe^^^^"), "Doe");
  EXPECT_EQ(Display("^John"), ", John");
  EXPECT_EQ(Display("Doe"), "Doe");
  EXPECT_EQ(Display("^^"), "");
  EXPECT_EQ(Display(""), "");
}

TEST(PersonName, ComesBackFromItsFormForPeople) {
  for (const char* name :
       {"Doe", "Doe^John", "Doe^John^Q^Dr^Jr", "Doe^^^^Jr", "^John", "a,b^c", ""}) {
    EXPECT_EQ(Dicom(Display(name)), name);
  }
}

TEST(PersonName, CutsEachComponentToItsMostCharacters) {
  const std::string x(100, 'x');
  const auto cut = [&](std::size_t most) { return x.substr(0, most); };
  EXPECT_EQ(Display(x + "^" + x + "^" + x + "^" + x + "^" + x),
            cut(63) + ", " + cut(31) + ", " + cut(19) + ", " + cut(19) + ", " + cut(31));
  EXPECT_EQ(Dicom(x + ", " + x + ", " + x + ", " + x + ", " + x),
            cut(63) + "^" + cut(31) + "^" + cut(19) + "^" + cut(19) + "^" + cut(31));
}

TEST(PersonName, WhatFollowsTheFourthSeparatorIsTheSuffix) {
  EXPECT_EQ(Display("a^b^c^d^e^f"), "a, b, c, d, e^f");
  EXPECT_EQ(Dicom("a, b, c, d, e, f"), "a^b^c^d^e, f");
}

TEST(PersonName, ValuesGoThroughTheFormForPeopleWhereTheyHaveSeparators) {
  EXPECT_EQ(ValueAt<VrPN>("Doe^John\\Roe^Jane ", 1), "Roe, Jane");
  EXPECT_EQ(ValueAt<VrPN>("Doe ", 0), "Doe");
  EXPECT_EQ(ValueAt<VrPN>(std::string(100, 'x'), 0), std::string(100, 'x'));
  EXPECT_EQ(ValueAt<VrPN>("Doe", 1), kNoValue);
  EXPECT_EQ(AfterPut<VrPN>("", 0, "Doe, John"), "Doe^John");
  EXPECT_EQ(AfterPut<VrPN>("", 0, "Doe^John^^^"), "Doe^John^^^");
  EXPECT_EQ(AfterPut<VrPN>("", 0, "Doe, Jr^John"), "Doe, Jr^John");
  EXPECT_EQ(AfterPut<VrPN>("Doe^John", 1, "Roe, Jane"), "Doe^John\\Roe^Jane");
  EXPECT_EQ(AfterPut<VrPN>("Doe^John", -1, "Roe, Jane"), kNoValue);
}

}  // namespace
}  // namespace tessaret
