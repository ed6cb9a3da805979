#include "net/transfer_syntax_list.h"

#include <gtest/gtest.h>

namespace tessaret {
namespace {

TEST(TransferSyntaxList, GivesBackWhatWasPutIntoIt) {
  TransferSyntax odd("1.2.3");
  odd.ItemType = 0x41;
  odd.Reserved1 = 7;
  TransferSyntax padded;
  padded.Set(std::string_view("1\0\0", 3));
  TransferSyntaxList list = {TransferSyntax("1.2"), odd, TransferSyntax()};
  list.push_back(padded);
  list.emplace_back(std::string(64, '9'));
  ASSERT_EQ(list.size(), 5u);
  EXPECT_EQ(list[0].View(), "1.2");
  EXPECT_EQ(list[0].ItemType, 0x40);
  EXPECT_EQ(list[0].Length, 3);
  EXPECT_EQ(list[1].View(), "1.2.3");
  EXPECT_EQ(list[1].ItemType, 0x41);
  EXPECT_EQ(list[1].Reserved1, 7);
  EXPECT_EQ(list[1].UID::Size, 5u);
  EXPECT_TRUE(list[2].IsEmpty());
  EXPECT_EQ(list[2].UID::Size, 0u);
  EXPECT_EQ(list[3].View(), "1");
  EXPECT_EQ(list[3].UID::Size, 3u);
  EXPECT_EQ(list[4].View(), std::string(64, '9'));
  EXPECT_EQ(list.back().View(), std::string(64, '9'));
  std::string all;
  for (const TransferSyntax& syntax : list) all += std::to_string(syntax.UID::Size) + " ";
  EXPECT_EQ(all, "3 5 0 3 64 ");
}

TEST(TransferSyntaxList, TakesNoMoreThanAnItemHasRoomFor) {
  TransferSyntax item("1.2");
  item.UID::Size = 1000;
  TransferSyntaxList list;
  list.push_back(item);
  list.emplace_back("3");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].UID::Size, 64u);
  EXPECT_EQ(list[0].View(), "1.2");
  EXPECT_EQ(list[1].View(), "3");
}

TEST(TransferSyntaxList, IsEmptiedAndFilledAnew) {
  TransferSyntaxList list;
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.size(), 0u);
  list.assign(3, TransferSyntax("1.2"));
  EXPECT_EQ(list.size(), 3u);
  list = std::vector<TransferSyntax>{TransferSyntax("1.3")};
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].View(), "1.3");
  list.clear();
  EXPECT_TRUE(list.empty());
}

TEST(TransferSyntaxList, ClearsTheReservedByteOfEach) {
  TransferSyntax item("1.2");
  item.Reserved1 = 0x7F;
  TransferSyntaxList list = {item, TransferSyntax("1.7"), item};
  list.ClearReserved();
  for (const TransferSyntax& syntax : list) EXPECT_EQ(syntax.Reserved1, 0);
  EXPECT_EQ(list[1].View(), "1.7");
  EXPECT_EQ(list[2].View(), "1.2");
}

}  // namespace
}  // namespace tessaret
