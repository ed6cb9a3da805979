#include "core/element_text.h"

#include <string>

#include <gtest/gtest.h>

#include "core/element_maker.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::MadeElement;

TEST(ElementText, WithoutADictionaryEveryTagIsUnknown) {
  MadeElement element(0x0010, 0x0010, type_code::PN, Bytes{});
  const TagWords words = LookUpTag(nullptr, *element);
  EXPECT_EQ(words.type, type_code::UN);
  EXPECT_EQ(words.description, "");
}

TEST(ElementText, ADictionaryGivesTypeAndDescriptionOrNothing) {
  const auto dictionary = test::DictionaryOf("{0x0010 0x0010 PN \"Patient's Name\"}\n");
  MadeElement known(0x0010, 0x0010, type_code::kNone, Bytes{});
  EXPECT_EQ(LookUpTag(dictionary.get(), *known).type, type_code::PN);
  EXPECT_EQ(LookUpTag(dictionary.get(), *known).description, "Patient's Name");
  MadeElement unknown(0x0011, 0x0010, type_code::kNone, Bytes{});
  EXPECT_EQ(LookUpTag(dictionary.get(), *unknown).type, type_code::kNone);
  EXPECT_EQ(LookUpTag(dictionary.get(), *unknown).description, "");
}

TEST(ElementText, ADictionaryWithoutDescriptionsGivesTheType) {
  RTC dictionary(false);
  const std::string text = "#\n{0x0010 0x0010 PN \"Patient's Name\"}\n";
  ASSERT_TRUE(dictionary.AttachBytes(text.data(), text.size()));
  MadeElement element(0x0010, 0x0010, type_code::kNone, Bytes{});
  EXPECT_EQ(LookUpTag(&dictionary, *element).type, type_code::PN);
  EXPECT_EQ(LookUpTag(&dictionary, *element).description, "");
}

TEST(ElementText, TheOwnTypeOfAnElementComesFirst) {
  MadeElement element(type_code::LO, "x");
  EXPECT_EQ(ShownType(*element, {type_code::PN, ""}), type_code::LO);
  element->TypeCode = type_code::kNone;
  EXPECT_EQ(ShownType(*element, {type_code::PN, ""}), type_code::PN);
}

TEST(ElementText, LettersArePrintable) {
  EXPECT_EQ(TypeLetters(type_code::PN), "PN");
  EXPECT_EQ(TypeLetters(type_code::kNone), "XX");
  EXPECT_EQ(TypeLetters(0x0101), "..");
  EXPECT_EQ(TypeLetters(0x50FF), "P.");
}

TEST(ElementText, AValueIsANumberOnlyWhenTheWholeNumberIsThere) {
  const auto formOf = [](VrCode type, std::size_t length) {
    MadeElement element(type, Bytes(length));
    return FormOfValue(*element, type);
  };
  EXPECT_EQ(formOf(type_code::FD, 0), ValueForm::kEmpty);
  EXPECT_EQ(formOf(type_code::FD, 7), ValueForm::kBytes);
  EXPECT_EQ(formOf(type_code::FD, 8), ValueForm::kNumber);
  EXPECT_EQ(formOf(type_code::FD, 9), ValueForm::kNumber);
  EXPECT_EQ(formOf(type_code::PN, 1), ValueForm::kText);
  EXPECT_EQ(formOf(type_code::AS, 4), ValueForm::kBytes);
}

TEST(ElementText, ControlCharactersBecomeDotsAndAllOthersStay) {
  std::string all;
  std::string expected;
  for (int code = 0; code < 256; ++code) {
    all += static_cast<char>(code);
    expected += code < 0x20 || code == 0x7F ? '.' : static_cast<char>(code);
  }
  EXPECT_EQ(WithoutControls(all), expected);
}

TEST(ElementText, BytesStandInHexadecimalAndAsCharacters) {
  const Bytes bytes = {0x00, 0x9F, 0x41, 0x20, 0x7E};
  std::string text = "<";
  AppendHexadecimal(text, bytes.data(), bytes.size());
  EXPECT_EQ(text, "<00 9F 41 20 7E ");
  AppendCharacters(text, bytes.data(), bytes.size());
  EXPECT_EQ(text, "<00 9F 41 20 7E ..A ~");
}

}  // namespace
}  // namespace tessaret
