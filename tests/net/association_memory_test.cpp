// What an association takes for the request that it answers, as a whole.
#include <algorithm>
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

/// 128 contexts, each of `syntax` so many times and of one that is accepted.
Bytes RequestOfAll(std::string_view syntax, std::size_t times,
                   const Bytes& user = PeersUserItem()) {
  std::vector<Proposal> proposals;
  for (int count = 0; count < 128; ++count) {
    proposals.push_back({static_cast<std::uint8_t>(2 * count + 1), "1",
                         std::vector<std::string_view>(times, syntax)});
    proposals.back().transferSyntaxes.push_back(kImplicit);
  }
  return RequestFor(proposals, user);
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

/// Role selections and extended negotiations of 128 classes, whose UIDs are as short as can be, with so many bytes of its own in each of
/// the latter.
Bytes UserOfAll(std::size_t words) {
  Bytes items;
  for (std::uint8_t number = 1; number <= 128; ++number) {
    const std::string uid(1, static_cast<char>(number));
    items = Joined(
        {items, RoleItem(uid, 1, 1), Item(0x56, Joined({Big16(1), BytesOf(uid), Bytes(words)}))});
  }
  return PeersUserItem(items);
}

/// How often an empty transfer syntax, of four bytes, may stand in each context for such a request to be just below 64 KiB.
std::size_t EmptySyntaxesWith(const Bytes& user) {
  return ((64 << 10) - RequestOfAll({}, 0, user).size()) / (128 * 4);
}

/// Room of the block in which malloc gives so many bytes: 24, and each 16 more.
constexpr std::size_t BlockOf(std::size_t bytes) {
  return bytes == 0 ? 0 : 24 + (std::max<std::size_t>(bytes, 24) - 9) / 16 * 16;
}

// 64 KiB into which an association receives, and itself.
constexpr std::size_t kHeldByAll = 70 << 10;
// 32 KiB for what it sends, which it gives back.
constexpr std::size_t kToSend = 33 << 10;

/// What an association holds of such a request: each of its items as it came and as callers see it, contexts and roles once more in the
/// answer, and the accepted contexts by themselves.
std::size_t HeldOfAll(std::size_t emptySyntaxes, std::size_t words) {
  // Two bytes and the text for each transfer syntax.
  const std::size_t syntaxes = BlockOf(2 * emptySyntaxes + 2 + kImplicit.size());
  return kHeldByAll + 128 * (2 * (sizeof(PresentationContext) + syntaxes) +
                             2 * sizeof(PresentationContextAccept) + 3 * sizeof(SCPSCURoleSelect) +
                             2 * (sizeof(ExtendedNegotiation) + BlockOf(words)));
}

void ExpectLittle(const Costs& costs, const Bytes& request, const std::string& name) {
  EXPECT_LT(static_cast<std::size_t>(costs.most), (256 << 10) + 2 * request.size()) << name;
}

TEST(MemoryOfARequest, IsAtMostFourTimesWhatCame) {
  const struct {
    const char* name;
    Bytes request;
    std::size_t accepted;
    // Times the request, at one time and for long.
    double most;
    double held;
  } rows[] = {
      {"empty transfer syntaxes", RequestOfAll({}, 127), 128, 4, 3.25},
      {"long transfer syntaxes", RequestOfAll("1.2." + std::string(60, '3'), 127), 128, 3, 2.25},
      // Just below the 4 MiB that a request may have.
      {"words of its own", RequestFor({{1, kEcho, {kImplicit}}}, Negotiations(31 << 10)), 1, 3,
       2.25},
  };
  for (const auto& row : rows) {
    const Costs costs = CostsOf(row.request, row.accepted);
    // The bounds are for what is shipped.
    if (kInstrumented) continue;
    const auto size = static_cast<double>(row.request.size());
    EXPECT_LT(static_cast<double>(costs.most) / size, row.most) << row.name;
    EXPECT_LT(static_cast<double>(costs.held) / size, row.held) << row.name;
    ExpectLittle(costs, row.request, row.name);
  }
}

TEST(MemoryOfARequest, IsLittleWhereLittleCame) {
  const Bytes user = UserOfAll(1);
  const std::size_t emptySyntaxes = EmptySyntaxesWith(user);
  const struct {
    const char* name;
    Bytes request;
    std::size_t least;  // bytes of it
    std::size_t accepted;
    std::size_t held;
  } rows[] = {
      {"one context", RequestFor({{1, kEcho, {kImplicit}}}), 180, 1, kHeldByAll},
      {"all items, with little in them", RequestOfAll({}, 0, UserOfAll(0)), 6000, 128,
       HeldOfAll(0, 0)},
      {"all items, and empty ones", RequestOfAll({}, emptySyntaxes, user), 65000, 128,
       HeldOfAll(emptySyntaxes, 1)},
  };
  for (const auto& row : rows) {
    EXPECT_GE(row.request.size(), row.least) << row.name;
    EXPECT_LT(row.request.size(), 64u << 10) << row.name;
    const Costs costs = CostsOf(row.request, row.accepted);
    if (kInstrumented) continue;
    EXPECT_LT(static_cast<std::size_t>(costs.held), row.held) << row.name;
    EXPECT_LT(static_cast<std::size_t>(costs.most), row.held + kToSend) << row.name;
    ExpectLittle(costs, row.request, row.name);
  }
}

}  // namespace
}  // namespace tessaret::test
