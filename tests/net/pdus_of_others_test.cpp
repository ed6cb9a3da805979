// PDUs as other programs send them, recorded on their way over the loopback interface: reading them gives the values, and the library
// writes the same bytes for these values.
#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "net/associate_pdus.h"
#include "net/item_bytes.h"
#include "net/short_pdus.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::Hex;
using test::ReadsWholeBehindType;
using test::Written;

// DCMTK 3.6.7 of the distribution and Orthanc 1.10.1, which negotiates by DCMTK.
constexpr const char* kDcmtkClass = "1.2.276.0.7230010.3.0.3.6.7";
constexpr const char* kDcmtkVersion = "OFFIS_DCMTK_367";
constexpr const char* kPlanStorage = "1.2.840.10008.5.1.4.1.1.481.5";
constexpr const char* kCtStorage = "1.2.840.10008.5.1.4.1.1.2";
constexpr const char* kNativeImplicit = "1.2.840.10008.1.2";

// What storescu sends whose configuration asks for both roles of CT images, and for an extended negotiation of plans.
const Bytes kRequestOfStorescu = Hex(
    "01000000015a00010000414e592d53435020202020202020202053544f5245534355202020202020202000000000"
    "0000000000000000000000000000000000000000000000000000000010000015312e322e3834302e31303030382e"
    "332e312e312e312000003a0100ff003000001d312e322e3834302e31303030382e352e312e342e312e312e343831"
    "2e3540000011312e322e3834302e31303030382e312e32200000360300ff0030000019312e322e3834302e313030"
    "30382e352e312e342e312e312e3240000011312e322e3834302e31303030382e312e325000008151000004000040"
    "005200001b312e322e3237362e302e373233303031302e332e302e332e362e375400001d0019312e322e3834302e"
    "31303030382e352e312e342e312e312e3201015500000f4f464649535f44434d544b5f33363756000022001d312e"
    "322e3834302e31303030382e352e312e342e312e312e3438312e35020000");

// What storescp answers to both roles, where its configuration gives them.
const Bytes kAnswerOfStorescpWithRoles = Hex(
    "0200000000f600010000414e592d53435020202020202020202053544f5245534355202020202020202000000000"
    "0000000000000000000000000000000000000000000000000000000010000015312e322e3834302e31303030382e"
    "332e312e312e31210000190100000040000011312e322e3834302e31303030382e312e3221000019030000004000"
    "0011312e322e3834302e31303030382e312e325000005b51000004000040005200001b312e322e3237362e302e37"
    "3233303031302e332e302e332e362e375400001d0019312e322e3834302e31303030382e352e312e342e312e312e"
    "3201015500000f4f464649535f44434d544b5f333637");

// What Orthanc answers to storescu -R, which asks for a plan in explicit and in implicit little endian.
const Bytes kAnswerOfOrthanc = Hex(
    "0200000000d7000100004152434849564520202020202020202053544f5245534355202020202020202000000000"
    "0000000000000000000000000000000000000000000000000000000010000015312e322e3834302e31303030382e"
    "332e312e312e312100001b0100000040000013312e322e3834302e31303030382e312e322e312100001903000000"
    "40000011312e322e3834302e31303030382e312e325000003a51000004000040005200001b312e322e3237362e30"
    "2e373233303031302e332e302e332e362e375500000f4f464649535f44434d544b5f333637");

void FillAsDcmtk(AssociatePdu& pdu, const char* called) {
  pdu.CalledApTitle = MakeApTitle(called);
  pdu.CallingApTitle = MakeApTitle("STORESCU");
  pdu.UserInformation.SetMax(16384);
  pdu.UserInformation.SetImplementationClass(kDcmtkClass);
  pdu.UserInformation.SetImplementationVersion(kDcmtkVersion);
}

PresentationContext Proposed(std::uint8_t id, const char* abstractSyntax) {
  PresentationContext context;
  context.PresentationContextID = id;
  context.Reserved3 = 0xFF;  // DCMTK's; the library writes 0 there by itself
  context.AbstractSyntax.Set(abstractSyntax);
  context.TransferSyntaxes = {TransferSyntax(kNativeImplicit)};
  return context;
}

PresentationContextAccept Accepted(std::uint8_t id, const char* transferSyntax) {
  PresentationContextAccept context;
  context.PresentationContextID = id;
  context.Result = 0;
  context.TransferSyntax.Set(transferSyntax);
  return context;
}

/// DCMTK puts roles in front of the version of its implementation, and the library puts them behind it.
Bytes WithRoleBehindVersion(Bytes pdu) {
  constexpr std::ptrdiff_t kRoleBytes = 4 + 2 + 25 + 2;
  constexpr std::ptrdiff_t kVersionBytes = 4 + 15;
  const Bytes role = Hex("54 00 001d 0019");
  const auto at = std::search(pdu.begin(), pdu.end(), role.begin(), role.end());
  EXPECT_LE(at - pdu.begin() + kRoleBytes + kVersionBytes, static_cast<std::ptrdiff_t>(pdu.size()));
  std::rotate(at, at + kRoleBytes, at + kRoleBytes + kVersionBytes);
  return pdu;
}

TEST(PdusOfOthers, RequestWithRolesAndExtendedNegotiation) {
  AAssociateRQ read;
  ASSERT_TRUE(ReadsWholeBehindType(read, kRequestOfStorescu));
  EXPECT_EQ(std::string(read.CalledApTitle.data()), "ANY-SCP         ");
  EXPECT_EQ(std::string(read.CallingApTitle.data()), "STORESCU        ");
  ASSERT_EQ(read.PresentationContexts.size(), 2u);
  EXPECT_EQ(read.PresentationContexts[0].AbstractSyntax.View(), kPlanStorage);
  EXPECT_EQ(read.PresentationContexts[1].PresentationContextID, 3);
  EXPECT_EQ(read.PresentationContexts[1].AbstractSyntax.View(), kCtStorage);
  ASSERT_EQ(read.UserInformation.RoleSelects.size(), 1u);
  EXPECT_EQ(read.UserInformation.RoleSelects[0].UID.View(), kCtStorage);
  EXPECT_EQ(read.UserInformation.RoleSelects[0].SCURole, 1);
  EXPECT_EQ(read.UserInformation.RoleSelects[0].SCPRole, 1);
  ASSERT_EQ(read.UserInformation.ExtendedNegotiations.size(), 1u);
  EXPECT_EQ(read.UserInformation.ExtendedNegotiations[0].UID.View(), kPlanStorage);
  EXPECT_EQ(read.UserInformation.ExtendedNegotiations[0].ApplicationInfo, Bytes({2, 0, 0}));
  EXPECT_EQ(read.UserInformation.ImplementationVersion.View(), kDcmtkVersion);
  EXPECT_EQ(Written(read), WithRoleBehindVersion(kRequestOfStorescu));
}

TEST(PdusOfOthers, RequestIsWrittenForItsValues) {
  AAssociateRQ made;
  FillAsDcmtk(made, "ANY-SCP");
  made.AddPresentationContext(Proposed(1, kPlanStorage));
  made.AddPresentationContext(Proposed(3, kCtStorage));
  EXPECT_EQ(made.UserInformation.AddRoleSelect(SCPSCURoleSelect(UID(kCtStorage), 1, 1)), 1);
  ExtendedNegotiation negotiation;
  negotiation.UID.Set(kPlanStorage);
  negotiation.ApplicationInfo = {2, 0, 0};
  EXPECT_EQ(made.UserInformation.AddExtendedNegotiation(negotiation), 1);
  EXPECT_EQ(Written(made), WithRoleBehindVersion(kRequestOfStorescu));
}

TEST(PdusOfOthers, AnswerWithRoles) {
  AAssociateAC read;
  ASSERT_TRUE(ReadsWholeBehindType(read, kAnswerOfStorescpWithRoles));
  ASSERT_EQ(read.PresentationContexts.size(), 2u);
  ASSERT_EQ(read.UserInformation.RoleSelects.size(), 1u);
  EXPECT_EQ(read.UserInformation.RoleSelects[0].UID.View(), kCtStorage);
  EXPECT_EQ(read.UserInformation.RoleSelects[0].SCURole, 1);
  EXPECT_EQ(read.UserInformation.RoleSelects[0].SCPRole, 1);
  EXPECT_EQ(Written(read), WithRoleBehindVersion(kAnswerOfStorescpWithRoles));

  AAssociateAC made;
  FillAsDcmtk(made, "ANY-SCP");
  made.PresentationContexts = {Accepted(1, kNativeImplicit), Accepted(3, kNativeImplicit)};
  EXPECT_EQ(made.UserInformation.AddRoleSelect(SCPSCURoleSelect(UID(kCtStorage), 1, 1)), 1);
  EXPECT_EQ(Written(made), WithRoleBehindVersion(kAnswerOfStorescpWithRoles));
}

TEST(PdusOfOthers, AnswerOfAnArchive) {
  AAssociateAC read;
  ASSERT_TRUE(ReadsWholeBehindType(read, kAnswerOfOrthanc));
  EXPECT_EQ(std::string(read.CalledApTitle.data()), "ARCHIVE         ");
  ASSERT_EQ(read.PresentationContexts.size(), 2u);
  EXPECT_EQ(read.PresentationContexts[0].PresentationContextID, 1);
  EXPECT_EQ(read.PresentationContexts[0].Result, 0);
  EXPECT_EQ(read.PresentationContexts[0].TransferSyntax.View(), "1.2.840.10008.1.2.1");
  EXPECT_EQ(read.PresentationContexts[1].PresentationContextID, 3);
  EXPECT_EQ(read.PresentationContexts[1].Result, 0);
  EXPECT_EQ(read.PresentationContexts[1].TransferSyntax.View(), kNativeImplicit);
  EXPECT_EQ(read.UserInformation.MaximumSubLength.MaximumLength, 16384u);
  EXPECT_EQ(read.UserInformation.ImplementationClass.View(), kDcmtkClass);
  EXPECT_EQ(Written(read), kAnswerOfOrthanc);

  AAssociateAC made;
  FillAsDcmtk(made, "ARCHIVE");
  made.PresentationContexts = {Accepted(1, "1.2.840.10008.1.2.1"), Accepted(3, kNativeImplicit)};
  EXPECT_EQ(Written(made), kAnswerOfOrthanc);
}

TEST(PdusOfOthers, ReleaseAndItsAnswer) {
  // What storescu sends when it has done, and what storescp, dcmqrscp and Orthanc answer.
  const Bytes request = Hex("05000000000400000000");
  const Bytes answer = Hex("06000000000400000000");
  AReleaseRQ asked;
  ASSERT_TRUE(ReadsWholeBehindType(asked, request));
  EXPECT_EQ(asked.Reserved2, 0u);
  AReleaseRP answered;
  ASSERT_TRUE(ReadsWholeBehindType(answered, answer));
  EXPECT_EQ(answered.Reserved2, 0u);
  AReleaseRQ ownRequest;
  EXPECT_EQ(Written(ownRequest), request);
  AReleaseRP ownAnswer;
  EXPECT_EQ(Written(ownAnswer), answer);
}

}  // namespace
}  // namespace tessaret
