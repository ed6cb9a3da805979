#include "core/transfer_syntax.h"

#include <cstring>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

struct Row {
  const char* uid;
  std::int32_t code;
};

// In the order of the table.
constexpr Row kRows[] = {
    {"1.2.840.10008.1.2", 100},       {"1.2.840.10008.1.2.1", 101},
    {"1.2.840.10008.1.2.2", 102},     {"1.2.840.10008.1.2.5", 101},
    {"1.2.840.10008.1.2.4.50", 101},  {"1.2.840.10008.1.2.4.51", 101},
    {"1.2.840.10008.1.2.4.52", 101},  {"1.2.840.10008.1.2.4.53", 101},
    {"1.2.840.10008.1.2.4.54", 101},  {"1.2.840.10008.1.2.4.55", 101},
    {"1.2.840.10008.1.2.4.56", 101},  {"1.2.840.10008.1.2.4.57", 101},
    {"1.2.840.10008.1.2.4.58", 101},  {"1.2.840.10008.1.2.4.59", 101},
    {"1.2.840.10008.1.2.4.60", 101},  {"1.2.840.10008.1.2.4.61", 101},
    {"1.2.840.10008.1.2.4.62", 101},  {"1.2.840.10008.1.2.4.63", 101},
    {"1.2.840.10008.1.2.4.64", 101},  {"1.2.840.10008.1.2.4.65", 101},
    {"1.2.840.10008.1.2.4.66", 101},  {"1.2.840.10008.1.2.4.70", 101},
    {"1.2.840.10008.1.2.4.80", 101},  {"1.2.840.10008.1.2.4.81", 101},
    {"1.2.840.10008.1.2.4.90", 101},  {"1.2.840.10008.1.2.4.91", 101},
    {"1.2.840.10008.1.2.4.100", 101},
};

TEST(TransferSyntax, KnowsTheFixedSyntaxesInTheirOrder) {
  ASSERT_EQ(FixedTransferSyntaxCount(), std::size(kRows));
  for (std::size_t at = 0; at < std::size(kRows); ++at) {
    const TransferSyntaxCodec& entry = FixedTransferSyntaxes()[at];
    EXPECT_STREQ(entry.UID, kRows[at].uid);
    EXPECT_EQ(entry.Code, kRows[at].code);
    EXPECT_EQ(entry.reserved1, 0);
    EXPECT_EQ(entry.reserved2, 0);
    EXPECT_EQ(FindTransferSyntax(kRows[at].uid), kRows[at].code);
  }
  EXPECT_STREQ(FixedTransferSyntaxes()[std::size(kRows)].UID, "");
}

TEST(TransferSyntax, EntriesAreOfFixedLayout) {
  EXPECT_EQ(sizeof(TransferSyntaxCodec::UID), 64u);
  EXPECT_EQ(offsetof(TransferSyntaxCodec, Code), 68u);
  EXPECT_EQ(sizeof(TransferSyntaxCodec), 76u);
}

TEST(TransferSyntax, ComparesExactly) {
  for (const char* uid :
       {"", "1", "1.2.840.10008.1.2 ", " 1.2.840.10008.1.2", "1.2.840.10008.1.2.",
        "1.2.840.10008.1.", "1.2.840.10008.1.2.4", "1.2.840.10008.1.2.4.5",
        "1.2.840.10008.1.2.4.500",
        // Neighbours of the ranges, and syntaxes of the standard that are not known here.
        "1.2.840.10008.1.2.4.49", "1.2.840.10008.1.2.4.67", "1.2.840.10008.1.2.4.69",
        "1.2.840.10008.1.2.4.71", "1.2.840.10008.1.2.1.99", "1.2.840.10008.1.2.4.92",
        "1.2.840.10008.1.2.4.101", "1.2.840.10008.1.2.4.201", "1.2.840.10008.1.2.8.1"}) {
    EXPECT_EQ(FindTransferSyntax(uid), std::nullopt) << uid;
  }
  EXPECT_EQ(FindTransferSyntax(std::string_view("1.2.840.10008.1.2\0", 18)), std::nullopt);
}

TEST(TransferSyntax, FindsWhatWasAddedBehindTheFixedEntries) {
  TransferSyntaxCodec added{"9.8.7", 0, 102, 0};
  AddedTransferSyntaxes().Add(added);
  // A second entry for a UID of the table is never reached.
  TransferSyntaxCodec hidden{"1.2.840.10008.1.2", 0, 102, 0};
  AddedTransferSyntaxes().Add(hidden);
  EXPECT_EQ(FindTransferSyntax("9.8.7"), 102);
  EXPECT_EQ(FindTransferSyntax("1.2.840.10008.1.2"), 100);
  EXPECT_EQ(FindTransferSyntax("9.8.70"), std::nullopt);
  AddedTransferSyntaxes().Add(TransferSyntaxCodec{"", 0, 101, 0});
  EXPECT_EQ(FindTransferSyntax(""), std::nullopt);
  AddedTransferSyntaxes().Clear();
  EXPECT_EQ(FindTransferSyntax("9.8.7"), std::nullopt);
}

TEST(TransferSyntax, NativePixelsAreInTheirPlaceByThreeNamesAndThoseOfOtherForms) {
  AddedTransferSyntaxes().Add(TransferSyntaxCodec{"9.8.7", 0, kImplicitLittle, 0});
  AddedTransferSyntaxes().Add(TransferSyntaxCodec{"9.8.8", 0, kExplicitLittle, 0});
  for (const char* uid :
       {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1", "1.2.840.10008.1.2.2", "9.8.7"}) {
    EXPECT_TRUE(IsOfNativePixels(uid)) << uid;
  }
  for (const char* uid : {"", "9.8.8", "9.8.9", "1.2.840.10008.1.2.5", "1.2.840.10008.1.2.4.50",
                          "1.2.840.10008.1.2.4.90", "1.2.840.10008.1.2.1.99"}) {
    EXPECT_FALSE(IsOfNativePixels(uid)) << uid;
  }
  AddedTransferSyntaxes().Clear();
}

TEST(TransferSyntax, CodesSayFormAndByteOrder) {
  EXPECT_TRUE(IsImplicit(100));
  EXPECT_FALSE(IsImplicit(101));
  EXPECT_FALSE(IsImplicit(102));
  EXPECT_FALSE(IsBigEndian(100));
  EXPECT_FALSE(IsBigEndian(101));
  EXPECT_TRUE(IsBigEndian(102));
  // Any other number stands for big endian.
  EXPECT_TRUE(IsBigEndian(0));
}

}  // namespace
}  // namespace tessaret
