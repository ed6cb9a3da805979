#include "net/identifiers.h"

#include <gtest/gtest.h>

#include "net/presentation_context.h"

namespace tessaret {
namespace {

// As it stands before any test.
const std::uint32_t counterAtStart = IdentifierCounter();

class Identifiers : public testing::Test {
 protected:
  ~Identifiers() override { SetIdentifierCounter(before_); }

  const std::uint32_t before_ = IdentifierCounter();
};

TEST_F(Identifiers, BeginAtOne) { EXPECT_EQ(counterAtStart, 1u); }

TEST_F(Identifiers, AContextTakesTheCounterWhereItIsOdd) {
  SetIdentifierCounter(5);
  EXPECT_EQ(PresentationContext().PresentationContextID, 5);
  EXPECT_EQ(IdentifierCounter(), 6u);
}

TEST_F(Identifiers, AContextTakesTheOneAboveTheCounterWhereThatIsEven) {
  SetIdentifierCounter(6);
  EXPECT_EQ(PresentationContext().PresentationContextID, 7);
  EXPECT_EQ(IdentifierCounter(), 8u);
}

TEST_F(Identifiers, AnAnswerTakesTheCounterAsItStands) {
  SetIdentifierCounter(6);
  EXPECT_EQ(PresentationContextAccept().PresentationContextID, 6);
  EXPECT_EQ(PresentationContextAccept().PresentationContextID, 7);
  EXPECT_EQ(IdentifierCounter(), 8u);
}

TEST_F(Identifiers, OfContextsAreOddAndRisingButNotConsecutive) {
  SetIdentifierCounter(1);
  EXPECT_EQ(PresentationContext().PresentationContextID, 1);
  EXPECT_EQ(PresentationContext().PresentationContextID, 3);
  EXPECT_EQ(TakeIdentifier(), 4u);
  EXPECT_EQ(TakeIdentifier(), 5u);
  EXPECT_EQ(PresentationContext().PresentationContextID, 7);
}

TEST_F(Identifiers, ACopyTakesNone) {
  const PresentationContext context;
  const std::uint32_t stands = IdentifierCounter();
  const PresentationContext copy = context;
  EXPECT_EQ(copy.PresentationContextID, context.PresentationContextID);
  EXPECT_EQ(IdentifierCounter(), stands);
}

TEST_F(Identifiers, OfContextsComeRoundAfterAByte) {
  SetIdentifierCounter(255);
  EXPECT_EQ(PresentationContext().PresentationContextID, 255);
  EXPECT_EQ(PresentationContext().PresentationContextID, 1);
  EXPECT_EQ(IdentifierCounter(), 258u);
}

TEST_F(Identifiers, BeginAnewAfterTheLast) {
  SetIdentifierCounter(0xffffffff);
  EXPECT_EQ(TakeOddIdentifier(), 0xffffffffu);
  EXPECT_EQ(TakeOddIdentifier(), 1u);
}

}  // namespace
}  // namespace tessaret
