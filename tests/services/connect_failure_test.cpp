// The words of associations that did not come about.
#include "services/connect_failure.h"

#include <string>

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace tessaret::test {
namespace {

std::string Words(std::uint8_t result, std::uint8_t reason, const std::string& host = "there",
                  const std::string& title = "ARCHIVE") {
  AAssociateRJ refusal;
  refusal.Result = result;
  refusal.Reason = reason;
  return ConnectFailureWords(refusal, host, title);
}

TEST(ConnectFailureWords, SayForHowLongAndWhy) {
  struct Row {
    std::uint8_t reason;
    const char* words;
  };
  constexpr Row kRows[] = {{1, "Non active link"},       {2, "Unupported Application Context"},
                           {3, "Unknown local AETitle"}, {4, "Non active link"},
                           {5, "Non active link"},       {6, "Non active link"},
                           {7, "Unknown remote AETitle"}};
  for (const Row& row : kRows) {
    EXPECT_EQ(Words(1, row.reason),
              std::string("Connection to  there: ARCHIVE permanently refused\n") + row.words);
    EXPECT_EQ(Words(2, row.reason),
              std::string("Connection to  there: ARCHIVE temporarily refused\n") + row.words);
  }
}

TEST(ConnectFailureWords, NumbersThatMeanNothingHaveNoReason) {
  for (const std::uint8_t reason : Bytes{0, 8, 9, 10, 255}) {
    EXPECT_EQ(Words(1, reason), "Connection to  there: ARCHIVE permanently refused\n") << +reason;
  }
  for (const std::uint8_t result : Bytes{0, 3, 255}) {
    EXPECT_EQ(Words(result, 7),
              "Connection to  there: ARCHIVE permanently refused\nUnknown remote AETitle")
        << +result;
  }
}

TEST(ConnectFailureWords, NamesAreTakenAsTheyAre) {
  EXPECT_EQ(Words(1, 1, "%s", "%s%n"),
            "Connection to  %s: %s%n permanently refused\nNon active link");
  EXPECT_EQ(Words(2, 1, "", ""), "Connection to  :  temporarily refused\nNon active link");
}

TEST(LastWords, AreThoseOfTheAssociationAndThenOfItsLostLink) {
  PDU_Service pdu;
  EXPECT_EQ(LastWordsOf(pdu), "The association has ended");
  pdu.Link.Connected = 1;
  EXPECT_EQ(LastWordsOf(pdu), "The object cannot be encoded");
  pdu.Link.Connected = 0;
  pdu.Link.ErrorText = {"link"};
  EXPECT_EQ(LastWordsOf(pdu), "link");
  pdu.SetError("words");
  EXPECT_EQ(LastWordsOf(pdu), "words: link");
  pdu.SetError("link");
  EXPECT_EQ(LastWordsOf(pdu), "link");
  pdu.SetError("words");
  pdu.Link.Connected = 1;
  EXPECT_EQ(LastWordsOf(pdu), "words");
  pdu.Link.Connected = 0;
}

}  // namespace
}  // namespace tessaret::test
