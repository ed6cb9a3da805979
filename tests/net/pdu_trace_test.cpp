#include "net/pdu_trace.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "net/associate_pdus.h"
#include "net/item_bytes.h"
#include "net/short_pdus.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::Hex;
using test::Received;
using test::TextItemBytes;

class PduTrace : public testing::Test {
 protected:
  PduTrace() {
    SetDumpFile(path_.c_str());
    SetDumpFlag(kDumpPdu, true);
  }
  ~PduTrace() override {
    SetDumpFlag(kDumpPdu | kDumpData, false);
    SetDumpFile(nullptr);
  }

  /// What stands in the trace, which begins anew.
  std::string Taken() {
    if (!std::filesystem::exists(path_)) return "";
    const std::string text = test::ReadText(path_);
    std::filesystem::remove(path_);
    return text;
  }

  template <class Item>
  std::string TraceOfReading(Item& item, const Bytes& bytes) {
    test::Reads(item, bytes);
    return Taken();
  }
  template <class Item>
  std::string TraceOfWriting(Item& item) {
    test::Written(item);
    return Taken();
  }

  test::TempFolder folder_;
  const std::string path_ = folder_.File("trace");
};

TEST_F(PduTrace, HasALineForEachFieldOfAnItem) {
  ApplicationContext item;
  EXPECT_EQ(TraceOfReading(item, TextItemBytes(0x10, "1.2")),
            "Reading Applicationm Context (0x10) Type=10\n"
            "\t\t\t\tReserved [1]=0\n"
            "\t\t\t\tLength [2]=3\n"
            "\t\t\t\tApplication Context=[1.2]\n");
  EXPECT_EQ(TraceOfWriting(item),
            "Writing Application Context (0x10) Type=10\n"
            "\t\t\t\tReserved [1]=0\n"
            "\t\t\t\tLength [2]=3\n"
            "\t\t\t\tApplication Context=[1.2]\n");
}

TEST_F(PduTrace, NamesTheTextItems) {
  AbstractSyntax abstract("1.2");
  EXPECT_EQ(TraceOfWriting(abstract).substr(0, 44),
            "Writing Abstract Syntax (0x30) Type=30\n\t\t\t\tR");
  TransferSyntax transfer("1.2");
  EXPECT_EQ(TraceOfWriting(transfer).substr(0, 31), "Writing Tranfer Syntax Type=40\n");
  ImplementationVersion version("V1");
  const std::string trace = TraceOfWriting(version);
  EXPECT_NE(trace.find("\n\t\t\t\tImpl. Vesrion=[V1]\n"), std::string::npos) << trace;
  ImplementationClass implementation("1.9");
  EXPECT_NE(TraceOfWriting(implementation).find("\n\t\t\t\tImpl. Class=[1.9]\n"),
            std::string::npos);
}

TEST_F(PduTrace, ShowsAMaximumLength) {
  MaximumSubLength item;
  EXPECT_EQ(TraceOfReading(item, Hex("51 00 0004 0000abcd")),
            "\t\t\tMaximum Sub Length (0x51):51\n"
            "\t\t\t\tReserved [1]=0\n"
            "\t\t\t\tLength [2]=4\n"
            "\t\t\t\tMaximum Length [4]=ABCD\n");
}

TEST_F(PduTrace, NamesAnUnknownItemOfARequest) {
  AAssociateRQ request;
  Received received(test::Joined({Hex("00 0000004a"), Bytes(68, 0), Hex("7a 00 00000000")}));
  request.Read(received);
  EXPECT_NE(Taken().find("\t\t\tUNKNOWN Item 7A\n"), std::string::npos);
}

TEST_F(PduTrace, OfReleaseAndAbortStandsUnderTheBitOfDataWithTheirFieldsUnderThatOfPdus) {
  AReleaseRQ request;
  AAbortRQ abort;
  EXPECT_EQ(TraceOfWriting(request), "\tReserved [1]=0\n\tLength [4]=4\n\tReserved [4]=0\n");
  SetDumpFlag(kDumpPdu, false);
  SetDumpFlag(kDumpData, true);
  EXPECT_EQ(TraceOfWriting(request), "Writing AReleaseRQ (0x05) Type=05\n");
  AReleaseRP answer;
  EXPECT_EQ(TraceOfWriting(answer), "Writing AReleaseRP (0x06) Type=06\n");
  EXPECT_EQ(TraceOfWriting(abort), "Writing AAbortRQ (0x07) Type=07\n");
  Received received(Hex("00 00000004 00 00 03 01"));
  abort.Read(received);
  // The sign before the number has been missing for so long that scripts know it.
  EXPECT_EQ(Taken(), "Reading AAbortRQ (0x07) Type=02.2X\n");
}

TEST_F(PduTrace, KeepsSignsOfFormatsThatAPeerSends) {
  ImplementationVersion version;
  EXPECT_NE(TraceOfReading(version, TextItemBytes(0x55, "%n%s%999d")).find("[%n%s%999d]\n"),
            std::string::npos);
}

TEST_F(PduTrace, IsSilentWithoutItsBit) {
  SetDumpFlag(kDumpPdu, false);
  AAssociateRQ request;
  TraceOfWriting(request);
  AAssociateRJ reject;
  EXPECT_EQ(TraceOfWriting(reject), "");
}

TEST_F(PduTrace, ShowsTheHeadsOfAssociatePdusAndContexts) {
  AAssociateRQ request;
  request.CalledApTitle = MakeApTitle("B");
  request.AddPresentationContext(PresentationContext());
  request.PresentationContexts[0].PresentationContextID = 0x1f;
  const std::string trace = TraceOfWriting(request);
  EXPECT_EQ(trace.substr(0, 36), "Writing AAssociateRQ (0x01) Type=01\n");
  EXPECT_NE(trace.find("\n\tProtocol Version [2]=1\n"), std::string::npos);
  EXPECT_NE(trace.find("\n\tCalled AP Title=[B               ]\n"), std::string::npos);
  EXPECT_NE(trace.find("\nWriting Presentation Context (0x20) Type=20\n"), std::string::npos);
  EXPECT_NE(trace.find("\n\t\t\tPresentation Context ID [1]=1F\n"), std::string::npos);
  EXPECT_NE(trace.find("\nWriting User Information (0x50) Type=50\n"), std::string::npos);
}

}  // namespace
}  // namespace tessaret
