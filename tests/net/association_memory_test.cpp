// What an association takes for the request that it answers, as a whole.
#include <functional>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "net/scripted_peer.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"

namespace tessaret::test {
namespace {

struct Costs {
  std::int64_t most = 0;  // at one time, until the answer has gone
  std::int64_t held = 0;  // while the association stands
};

/// Of the thread that answers `request`, which is that of the test.
Costs CostsOf(const Bytes& request, std::size_t accepted) {
  Connection connection;
  Peer& peer = connection.peer;
  std::thread asking([&] {
    try {
      peer.Send(request);
    } catch (const std::exception&) {  // refused before all of it was read, which shows below
    }
  });
  const AllocationWatch watch;
  const auto pdu = std::make_unique<PDU_Service>();
  EXPECT_EQ(pdu->Listen(connection.ours), 1) << Words(*pdu);
  const Costs costs{.most = watch.MostBytes(), .held = watch.Bytes()};
  asking.join();
  EXPECT_EQ(pdu->AcceptedContexts.size(), accepted);
  EXPECT_EQ(TypesOf(peer.ReceivePdu()), "2");
  pdu->Link.Close();
  return costs;
}

/// 128 contexts of 128 transfer syntaxes each, all but the last of which are `syntax`.
Bytes RequestOfAll(std::string_view syntax) {
  std::vector<Proposal> proposals;
  for (int count = 0; count < 128; ++count) {
    proposals.push_back({static_cast<std::uint8_t>(2 * count + 1), "1.2",
                         std::vector<std::string_view>(127, syntax)});
    proposals.back().transferSyntaxes.push_back(kImplicit);
  }
  return RequestFor(proposals);
}

/// Extended negotiations for 128 classes, each with so many bytes of its own in an item of its own.
Bytes Negotiations(std::size_t bytes) {
  Bytes items;
  for (int number = 0; number < 128; ++number) {
    const std::string uid = "1." + std::to_string(number);
    const Bytes item =
        Item(0x50, Item(0x56, Joined({Big16(uid.size()), BytesOf(uid), Bytes(bytes)})));
    items.insert(items.end(), item.begin(), item.end());
  }
  return items;
}

Bytes Roles() {
  Bytes items;
  for (int number = 0; number < 128; ++number) {
    items = Joined({items, RoleItem("1." + std::to_string(number), 1, 1)});
  }
  return Item(0x50, items);
}

TEST(MemoryOfARequest, IsAtMostFourTimesWhatCame) {
  if (kInstrumented) GTEST_SKIP() << "the bound is for what is shipped";
  const struct {
    const char* name;
    Bytes request;
    std::size_t accepted;
    // Times the request, at one time and for long.
    double most;
    double held;
  } rows[] = {
      {"empty transfer syntaxes", RequestOfAll({}), 128, 4, 3.25},
      {"long transfer syntaxes", RequestOfAll("1.2." + std::string(60, '3')), 128, 3, 2.25},
      // Just below the 4 MiB that a request may have.
      {"words of its own", RequestFor({{1, kEcho, {kImplicit}}}, Negotiations(31 << 10)), 1, 3,
       2.25},
  };
  for (const auto& row : rows) {
    const Costs costs = CostsOf(row.request, row.accepted);
    const auto size = static_cast<double>(row.request.size());
    EXPECT_LT(static_cast<double>(costs.most) / size, row.most) << row.name;
    EXPECT_LT(static_cast<double>(costs.held) / size, row.held) << row.name;
  }
}

TEST(MemoryOfARequest, IsLittleWhereLittleCame) {
  if (kInstrumented) GTEST_SKIP() << "the bound is for what is shipped";
  // As many items as there can be, with as little in them as there can be.
  std::vector<Proposal> proposals;
  for (int count = 0; count < 128; ++count) {
    proposals.push_back({static_cast<std::uint8_t>(2 * count + 1), "1", {kImplicit}});
  }
  const Bytes user = Joined({PeersUserItem(), Roles(), Negotiations(0)});
  const struct {
    Bytes request;
    std::size_t accepted;
    std::int64_t most;
  } rows[] = {{RequestFor(proposals, user), 128, 256 << 10},
              {RequestFor({{1, kEcho, {kImplicit}}}), 1, 128 << 10}};
  for (const auto& row : rows) {
    EXPECT_LT(row.request.size(), 10000u);
    const Costs costs = CostsOf(row.request, row.accepted);
    EXPECT_LT(costs.most, row.most);
    EXPECT_LE(costs.held, costs.most);
  }
}

}  // namespace
}  // namespace tessaret::test
