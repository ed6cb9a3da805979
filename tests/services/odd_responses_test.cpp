// What a sender of files makes of responses that no provider of ours would write.
#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/scripted_peer.h"
#include "services/heard_events.h"
#include "services/store_sender.h"
#include "services/store_target.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

TEST(OddResponse, HasNoCommentWhereThatHasItems) {
  const TempFolder folder;
  DataSetBuilder data(Encoding::kImplicitLittle);
  data.Element(0x0008, 0x0016, "UI", Evened(kCt)).Element(0x0008, 0x0018, "UI", Evened("1.2.3"));
  WriteBytes(folder.File("1"), FileOf(Encoding::kImplicitLittle, data));
  ScriptedServer server([](Peer& peer) {
    static_cast<void>(peer.ReceivePdu());
    peer.Send(Associate(2, "THERE", "HERE",
                        Joined({ApplicationItem(), AcceptItem(1, 0, kImplicit), PeersUserItem()})));
    for (int part = 0; part < 2; ++part) static_cast<void>(peer.ReceivePdu());
    peer.SendAll(Data(1, kWholeCommand, RefusalWithItemInComment(0x8001)));
    static_cast<void>(peer.ReceiveToEnd());
  });
  SetIdentifierCounter(1);
  Heard heard;
  const std::vector<std::string> files = {folder.File("1")};
  StoreSender sender(files, heard);
  StoreResponse response;
  heard.afterEach = [&] { response = sender.Response; };
  const std::atomic<bool> isCancelled = false;
  EXPECT_TRUE(sender.Send(TargetAt(server.Port()), {std::string(kCt)}, isCancelled));
  EXPECT_EQ(server.Wait(), "");
  EXPECT_EQ(response.status, 0xA700);
  EXPECT_EQ(response.comment, "");
}

}  // namespace
}  // namespace tessaret::test
