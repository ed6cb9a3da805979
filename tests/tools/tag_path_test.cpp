#include "tag_path.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "support/test_paths.h"

namespace tessaret::tool {
namespace {

Keywords StandardKeywords() { return Keywords(Create<IDcmDictionary>("Tessaret.DcmDictionary")); }

/// The path written out, or the words of its failure.
std::string Read(std::string_view text) {
  Keywords keywords = StandardKeywords();
  const TagPath path = ParseTagPath(text, keywords);
  EXPECT_EQ(path.steps.empty(), !path.failure.empty());
  return path.failure.empty() ? TextOf(path) : path.failure;
}

TEST(TagPath, AnElementIsNamedByTagOrKeyword) {
  for (const char* text : {"(0010,0010)", "0010,0010", "00100010", "PatientName"})
    EXPECT_EQ(Read(text), "(0010,0010)");
  EXPECT_EQ(Read("7FE0,0010"), "(7fe0,0010)");
}

TEST(TagPath, ElementsOfItemsAreNamedThroughTheirSequences) {
  EXPECT_EQ(Read("(0008,1140)[0].(0008,1150)"), "(0008,1140)[0].(0008,1150)");
  EXPECT_EQ(Read("ReferencedImageSequence[0].ReferencedSOPClassUID"), "(0008,1140)[0].(0008,1150)");
  EXPECT_EQ(Read("0040,A730[12].0040,a730[3].TextValue"),
            "(0040,a730)[12].(0040,a730)[3].(0040,a160)");
}

TEST(TagPath, WhatIsWrongIsTold) {
  EXPECT_EQ(Read(""), "a tag is missing");
  EXPECT_EQ(Read("PatientNam"), "no element has the keyword \"PatientNam\"");
  EXPECT_EQ(Read("(0010,001"),
            "\"(0010,001\" is no tag: gggg,eeee is one, in hexadecimal digits, or a keyword");
  EXPECT_EQ(Read("0010,00100"),
            "\"0010,00100\" is no tag: gggg,eeee is one, in hexadecimal digits, or a keyword");
  EXPECT_EQ(Read("0008,1140[0]."), "a tag is missing");
  EXPECT_EQ(Read("0008,1140[0]"),
            "\"0008,1140[0]\" is an item: name an element of it, as in TAG[0].TAG");
  EXPECT_EQ(Read("0008,1140.0008,1150"),
            "\"0008,1140\" wants the number of an item before the point, as in TAG[0].TAG");
  EXPECT_EQ(Read("0008,1140[x].0008,1150"), "\"x\" is no number of an item: they count from 0");
  EXPECT_EQ(Read("0008,1140[2147483647].0008,1150"), "(0008,1140)[2147483647].(0008,1150)");
  EXPECT_EQ(Read("0008,1140[2147483648].0008,1150"),
            "\"2147483648\" is no number of an item: they count from 0");
  EXPECT_EQ(Read("0008,1140[-1].0008,1150"), "\"-1\" is no number of an item: they count from 0");
  EXPECT_EQ(Read("0008,1140[9999999999].0008,1150"),
            "\"9999999999\" is no number of an item: they count from 0");
  EXPECT_EQ(Read("0008,1140[0.0008,1150"), "\"0008,1140[0\" has a bracket that does not end it");
}

TEST(Keywords, AreMadeOfNames) {
  EXPECT_EQ(KeywordOf("Patient's Name"), "PatientName");
  EXPECT_EQ(KeywordOf("SOP Class UID"), "SOPClassUID");
  EXPECT_EQ(KeywordOf("X-Ray Tube Current"), "XRayTubeCurrent");
  EXPECT_EQ(KeywordOf("Echo Number(s)"), "EchoNumbers");
  EXPECT_EQ(KeywordOf("Exposure in uAs"), "ExposureInuAs");
}

TEST(Keywords, OfOverlaysLeadToTheFirst) {
  EXPECT_EQ(StandardKeywords().Find("OverlayData"), TagKey{0x60003000});
}

/// The rows of a table of the standard's elements: group, element, keyword, name.
std::vector<std::vector<std::string>> RowsOf(const std::string& table) {
  std::ifstream file(test::kDataDir + ("/tables/" + table));
  std::vector<std::vector<std::string>> rows;
  std::string line;
  while (std::getline(file, line)) {
    std::istringstream fields(line);
    rows.emplace_back();
    for (std::string field; std::getline(fields, field, '\t');) rows.back().push_back(field);
  }
  return rows;
}

TEST(Keywords, AreThoseOfTheStandardForEveryElement) {
  std::size_t count = 0;
  for (const char* table : {"elements.tsv", "elements-repeating.tsv"}) {
    for (const auto& row : RowsOf(table)) {
      if (row[0] == "group") continue;
      EXPECT_EQ(KeywordOf(row[5]), row[4]) << row[0] << ',' << row[1];
      ++count;
    }
  }
  EXPECT_GT(count, 6000U);
}

}  // namespace
}  // namespace tessaret::tool
