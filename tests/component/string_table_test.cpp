// The texts of the interface by number, letter by letter.
#include "component/string_table.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

const std::map<std::int32_t, std::string> kTexts = {
    {100, "Tessaret"},
    {501, "DCMDictionary Class"},
    {512, "Error reading DICOM object"},
    {513, "Cannot open file for reading"},
    {514, "Image is from different series"},
    {515, "Images is from the same series but not from the same sequence"},
    {516, "Image is not parallel"},
    {517, "Image has different pixel spacing"},
    {518, "SOP Class (Modality) not supported"},
    {519, "Image has different dimensions"},
    {520, "Image type not supported"},
    {521, "The Dicom Object is already present"},
    {522, "Error saving converted file"},
    {523, "Pixel type not supported, only 8 and 16 bits allowed."},
    {524, "Not enough memory for object"},
    {525, "Error creating directory for output"},
    {526, "Error opening Analyze file"},
    {527, "Error saving DICOM series"},
    {528, "Bad IOD or image index"},
    {529, "Registry configuration error"},
    {530, "Error starting Dicom SCU"},
    {531, "Connection to  %s: %s permanently refused"},
    {532, "Connection to  %s: %s temporarily refused"},
    {533, "Non active link"},
    {534, "Unupported Application Context"},
    {535, "Unknown local AETitle"},
    {536, "Unknown remote AETitle"},
    {537, "No active DICOM Association"},
    {538, "Non existing File o wthout read permissions"},
    {539, "Invalid DICOM object"},
    {540, "Cannot determine the DICOM object type"},
    {541, "Storage not supported for modality %s"},
    {542, "Error during transfer"},
    {543, "Error converting VARIANT to VR type"},
    {544, "Bad or Unknown VR TypeCode"},
    {545, "Invalid index"},
    {546, "Error loading/saving ROI file"},
    {547, "Invalid DicomSeries pointer"},
    {548, "Invalid ROI"},
    {549, "The initial point doesn't belong to the isoline"},
    {550, "Internal contouring error"},
};

TEST(StringTable, HasEachTextToTheLetterAndNoOther) {
  for (std::int32_t id = -1000; id <= 1000; ++id) {
    const auto expected = kTexts.find(id);
    EXPECT_EQ(StringOf(id), expected == kTexts.end() ? "" : expected->second) << id;
  }
}

TEST(StringTable, EndsWithANul) {
  for (const auto& [id, text] : kTexts) EXPECT_EQ(StringOf(id).data()[text.size()], '\0');
  EXPECT_EQ(*StringOf(551).data(), '\0');
}

}  // namespace
}  // namespace tessaret
