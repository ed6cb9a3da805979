// Asking a node in this process whether it is there.
#include "services/peer_verification.h"

#include <gtest/gtest.h>

#include "services/store_provider.h"
#include "services/store_target.h"

namespace tessaret::test {
namespace {

TEST(PeerVerification, ANodeThatAnswersIsThere) {
  StoreProvider provider;
  const VerificationOutcome outcome = VerifyPeer(TargetAt(provider.Port()));
  EXPECT_TRUE(outcome.isAnswered);
  EXPECT_EQ(outcome.failure, "");
  EXPECT_EQ(outcome.linkWords, "");
  provider.End();
  EXPECT_EQ(provider.echoes, 1u);
  EXPECT_EQ(provider.releases, 1u);
  EXPECT_EQ(provider.titles, "HERE             > THERE           ");
  // Implicit little endian alone is enough for a command.
  EXPECT_EQ(provider.proposals, (std::vector<std::string>{"1.2.840.10008.1.1: 1.2.840.10008.1.2"}));
}

TEST(PeerVerification, OneThatEndsTheLinkInsteadIsNot) {
  StoreProvider provider({.answersEcho = false});
  const VerificationOutcome outcome = VerifyPeer(TargetAt(provider.Port()));
  EXPECT_FALSE(outcome.isAnswered);
  EXPECT_EQ(outcome.failure, "");
  EXPECT_EQ(outcome.linkWords, "The peer has closed the link");
}

TEST(PeerVerification, WithoutAnAssociationItSaysWhy) {
  AnsweringPeer refusing(Refusal(1, 1, 7));
  const VerificationOutcome outcome = VerifyPeer(TargetAt(refusing.Port()));
  EXPECT_FALSE(outcome.isAnswered);
  EXPECT_EQ(outcome.failure,
            "Connection to  127.0.0.1: THERE permanently refused\nUnknown remote AETitle");
  EXPECT_EQ(outcome.linkWords,
            "Connection rejected permanent: service-user, called AE title not recognized");
}

TEST(PeerVerification, WithoutATimeThatOfASocketStands) {
  StoreProvider provider;
  StoreTarget target = TargetAt(provider.Port());
  target.timeoutSecs = 0;
  EXPECT_TRUE(VerifyPeer(target).isAnswered);
}

TEST(PeerVerification, TitlesAreOfOneByteACharacter) {
  StoreProvider provider;
  StoreTarget target = TargetAt(provider.Port());
  target.localTitle = "T\xC3\x9CV";
  EXPECT_TRUE(VerifyPeer(target).isAnswered);
  provider.End();
  EXPECT_EQ(provider.titles, "T\xDCV              > THERE           ");
}

}  // namespace
}  // namespace tessaret::test
