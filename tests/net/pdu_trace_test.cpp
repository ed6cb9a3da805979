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
  /// Of a PDU, behind its type.
  template <class Pdu>
  std::string TraceOfReadingPdu(Pdu& pdu, const Bytes& bytes) {
    Received received(bytes);
    EXPECT_TRUE(pdu.Read(received));
    return Taken();
  }
  template <class Item>
  std::string TraceOfWriting(Item& item) {
    test::Written(item);
    return Taken();
  }
  /// `lines` is the trace of an item that is read from `bytes` and written again, with "@" for "Reading" and for "Writing".
  template <class Item>
  void ExpectTraced(const Bytes& bytes, const std::string& lines) {
    Item item;
    EXPECT_EQ(TraceOfReading(item, bytes), With(lines, "Reading"));
    EXPECT_EQ(TraceOfWriting(item), With(lines, "Writing"));
  }
  static std::string With(std::string lines, const std::string& verb) {
    for (auto at = lines.find('@'); at != std::string::npos; at = lines.find('@')) {
      lines.replace(at, 1, verb);
    }
    return lines;
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

TEST_F(PduTrace, NamesTheTextItemsThatAreRead) {
  const std::string fields = "\t\t\t\tReserved [1]=7\n\t\t\t\tLength [2]=3\n\t\t\t\t";
  const Bytes rest = Hex("07 0003 312e32");
  AbstractSyntax abstract;
  EXPECT_EQ(TraceOfReading(abstract, test::Joined({{0x30}, rest})),
            "Reading Abstract Syntax (0x30) Type=30\n" + fields + "Abstract Syntax=[1.2]\n");
  TransferSyntax transfer;
  EXPECT_EQ(TraceOfReading(transfer, test::Joined({{0x40}, rest})),
            "Reading Transfer Syntax (0x40) Type=40\n" + fields + "Transfer Syntax=[1.2]\n");
  ImplementationClass implementation;
  EXPECT_EQ(TraceOfReading(implementation, test::Joined({{0x52}, rest})),
            "Reading Implementation Class (0x52) Type=52\n" + fields + "Impl. Class=[1.2]\n");
  ImplementationVersion version;
  EXPECT_EQ(TraceOfReading(version, test::Joined({{0x55}, rest})),
            "Reading Implementation Version (0x55) Type=55\n" + fields + "Impl. Vesrion=[1.2]\n");
}

TEST_F(PduTrace, ShowsRolesAndExtendedNegotiations) {
  ExpectTraced<SCPSCURoleSelect>(Hex("54 05 0007 0003 312e32 01 00"),
                                 "@ SCP/SCU Role Select (0x54) Type=54\n"
                                 "\t\t\t\tReserved [1]=5\n"
                                 "\t\t\t\tLength [2]=7\n"
                                 "\t\t\t\tUID Length [2]=3\n"
                                 "\t\t\t\tUID=[1.2]\n"
                                 "\t\t\t\tSCU Role [1]=1\n"
                                 "\t\t\t\tSCP Role [1]=0\n");
  // A listing has 32 bytes a line, three places each.
  ExpectTraced<ExtendedNegotiation>(Hex("56 00 0007 0003 312e32 4100"),
                                    "@ Extended Negotiation (0x56) Type=56\n"
                                    "\t\t\t\tReserved [1]=0\n"
                                    "\t\t\t\tLength [2]=7\n"
                                    "\t\t\t\tUID Length [2]=3\n"
                                    "\t\t\t\tUID=[1.2]\n"
                                    "\t\t\t\tApplication Info Length [2]=2\n"
                                    "\t\t\t\tApplication Info [2]=\n"
                                    "000000-000001 41 00 " +
                                        std::string(std::size_t{30} * 3, ' ') + "| A.|\n");
}

TEST_F(PduTrace, ShowsContexts) {
  ExpectTraced<PresentationContext>(Hex("20 01 000b 1f 020304 30 00 0003 312e32"),
                                    "@ Presentation Context (0x20) Type=20\n"
                                    "\t\t\tReserved [1]=1\n"
                                    "\t\t\tLength [2]=B\n"
                                    "\t\t\tPresentation Context ID [1]=1F\n"
                                    "\t\t\tReserved [1]=2\n"
                                    "\t\t\tReserved [1]=3\n"
                                    "\t\t\tReserved [1]=4\n"
                                    "@ Abstract Syntax (0x30) Type=30\n"
                                    "\t\t\t\tReserved [1]=0\n"
                                    "\t\t\t\tLength [2]=3\n"
                                    "\t\t\t\tAbstract Syntax=[1.2]\n");
  PresentationContextAccept answer;
  const std::string own =
      " Presentation Context Accept (0x21) Type=21\n"
      "\t\t\tReserved [1]=1\n"
      "\t\t\tLength [2]=B\n"
      "\t\t\tPresentation Context ID [1]=1F\n"
      "\t\t\tReserved [1]=2\n"
      "\t\t\tResult [1]=0\n"
      "\t\t\tReserved [1]=4\n";
  const std::string syntax =
      "\t\t\t\tReserved [1]=0\n"
      "\t\t\t\tLength [2]=3\n"
      "\t\t\t\tTransfer Syntax=[1.2]\n";
  EXPECT_EQ(TraceOfReading(answer, Hex("21 01 000b 1f 020004 40 00 0003 312e32")),
            "Reading" + own + "Reading Transfer Syntax (0x40) Type=40\n" + syntax);
  EXPECT_EQ(TraceOfWriting(answer), "Writing" + own + "Writing Tranfer Syntax Type=40\n" + syntax);
}

TEST_F(PduTrace, ShowsUserInformationThatIsRead) {
  UserInformation item;
  EXPECT_EQ(TraceOfReading(item, Hex("50 02 0008 51 00 0004 00004000")),
            "Reading User Information (0x50) Type=50\n"
            "\t\t\tReserved [1]=2\n"
            "\t\t\tLength [2]=8\n"
            "\t\t\tMaximum Sub Length (0x51):51\n"
            "\t\t\t\tReserved [1]=0\n"
            "\t\t\t\tLength [2]=4\n"
            "\t\t\t\tMaximum Length [4]=4000\n");
  EXPECT_EQ(TraceOfWriting(item.MaximumSubLength),
            "\t\t\tMaximum Sub Length (0x51):51\n"
            "\t\t\t\tReserved [1]=0\n"
            "\t\t\t\tLength [2]=4\n"
            "\t\t\t\tMaximum Length [4]=4000\n");
}

TEST_F(PduTrace, ShowsTheFieldsInFrontOfTheItemsOfAnAssociatePdu) {
  const std::string fields =
      "\tReserved [1]=7\n"
      "\tLength [4]=44\n"
      "\tProtocol Version [2]=102\n"
      "\tReserved [2]=304\n"
      "\tCalled AP Title=[BBBBBBBBBBBBBBBB]\n"
      "\tCalling AP Title=[AAAAAAAAAAAAAAAA]\n"
      "\tReserved [32]=\n"
      "000000-000031 43 43 43 43 43 43 43 43 43 43 43 43 43 43 43 43 "
      "43 43 43 43 43 43 43 43 43 43 43 43 43 43 43 43 | CCCCCCCCCCCCCCCCCCCCCCCCCCCCCCCC|\n";
  // 68 bytes are 0x44.
  const Bytes bytes =
      test::Joined({Hex("07 00000044 0102 0304"), Bytes(16, 'B'), Bytes(16, 'A'), Bytes(32, 'C')});
  AAssociateRQ request;
  EXPECT_EQ(TraceOfReadingPdu(request, bytes), "Reading AAssociateRQ (0x01) Type=01\n" + fields);
  AAssociateAC answer;
  EXPECT_EQ(TraceOfReadingPdu(answer, bytes), "Reading AAssociateAC (0x02) Type=02\n" + fields);
}

TEST_F(PduTrace, ShowsRefusals) {
  const std::string fields =
      "\tReserved [1]=9\n"
      "\tLength [4]=4\n"
      "\tReserved [1]=8\n"
      "\tResult [1]=2\n"
      "\tSource [1]=1\n"
      "\tReason [1]=7\n";
  AAssociateRJ refusal;
  EXPECT_EQ(TraceOfReadingPdu(refusal, Hex("09 00000004 08 02 01 07")),
            "Reading AAssociateRJ (0x03) Type=03\n" + fields);
  EXPECT_EQ(TraceOfWriting(refusal), "Writing AAssociateRJ (0x03) Type=03\n" + fields);
}

TEST_F(PduTrace, ShowsReleasesAndAbortsThatAreRead) {
  SetDumpFlag(kDumpData, true);
  const std::string released =
      "\tReserved [1]=9\n"
      "\tLength [4]=4\n"
      "\tReserved [4]=1020304\n";
  const Bytes bytes = Hex("09 00000004 01020304");
  AReleaseRQ request;
  EXPECT_EQ(TraceOfReadingPdu(request, bytes), "Reading AReleaseRQ (0x05) Type=05\n" + released);
  AReleaseRP answer;
  EXPECT_EQ(TraceOfReadingPdu(answer, bytes), "Reading AReleaseRP (0x06) Type=06\n" + released);
  const std::string aborted =
      "\tReserved [1]=9\n"
      "\tLength [4]=4\n"
      "\tReserved [1]=1\n"
      "\tReserved [1]=2\n"
      "\tSource [1]=3\n"
      "\tReason [1]=4\n";
  AAbortRQ abort;
  EXPECT_EQ(TraceOfReadingPdu(abort, bytes), "Reading AAbortRQ (0x07) Type=02.2X\n" + aborted);
  EXPECT_EQ(TraceOfWriting(abort), "Writing AAbortRQ (0x07) Type=07\n" + aborted);
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
