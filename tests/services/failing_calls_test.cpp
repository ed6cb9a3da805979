// A queue of files on its way while one call of the system fails, here or in the node that receives.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "services/heard_events.h"
#include "services/store_files.h"
#include "services/store_provider.h"
#include "services/store_sender.h"
#include "services/store_target.h"
#include "support/held_resources.h"
#include "support/socket_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr SocketCall kCalls[] = {SocketCall::kSocket, SocketCall::kConnect, SocketCall::kAccept,
                                 SocketCall::kSend,   SocketCall::kReceive, SocketCall::kWait,
                                 SocketCall::kOption, SocketCall::kPair};
constexpr int kErrors[] = {EIO, ENOSPC, EINTR, EMFILE, EACCES, ECONNRESET};
constexpr std::size_t kFiles = 3;

class FailingCalls : public testing::Test {
 protected:
  /// Whether there was such a call to fail.
  bool SendWhileFails(SocketCall kind, int nth, int error) {
    const int before = OpenDescriptors();
    bool wasReached = false;
    {
      SocketFailure failure;
      failure.FailCall(kind, nth, error);
      StoreProvider provider;
      Send(provider, error);
      wasReached = failure.Calls(kind) >= nth;
    }
    EXPECT_EQ(OpenDescriptors(), before);
    return wasReached;
  }

 private:
  void Send(StoreProvider& provider, int error) {
    Heard heard;
    StoreSender sender(files_, heard);
    const auto begin = std::chrono::steady_clock::now();
    const bool isConnected = sender.Send(TargetAt(provider.Port()), {kCTStorage}, isCancelled_);
    provider.End();
    // Nobody waits for what will not come: both would for twenty seconds.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    if (isConnected) {
      ExpectEachToldOnce(heard, sender);
    } else {
      EXPECT_NE(sender.Failure, "");
      EXPECT_TRUE(heard.lines.empty());
    }
    EXPECT_GE(provider.stored.size(), sender.Sent) << "told as sent and not there";
    if (error == EINTR) {
      EXPECT_EQ(sender.Sent, kFiles) << "a signal breaks nothing";
    }
  }

  static void ExpectEachToldOnce(const Heard& heard, const StoreSender& sender) {
    ASSERT_EQ(heard.lines.size(), kFiles + 1) << testing::PrintToString(heard.lines);
    std::size_t sent = 0;
    for (std::size_t each = 0; each < kFiles; ++each) {
      const std::string number = std::to_string(each);
      const std::string place = " " + number + " " + number;
      if (heard.lines[each] == "sent" + place) {
        ++sent;
      } else {
        EXPECT_EQ(heard.lines[each], "error" + place);
      }
    }
    EXPECT_EQ(heard.lines.back(),
              "finished " + std::to_string(sent) + " " + std::to_string(kFiles - sent));
    EXPECT_EQ(sender.Sent, sent);
    EXPECT_EQ(heard.errors.size(), kFiles - sent);
    for (const std::string& words : heard.errors) EXPECT_NE(words, "");
  }

  const TempFolder folder_;
  const std::vector<std::string> files_ = WriteNumberedImages(folder_, kFiles);
  const std::atomic<bool> isCancelled_ = false;
};

TEST_F(FailingCalls, LeaveEachFileWithOneEvent) {
  testing::internal::CaptureStderr();  // where sockets say that a connect was waited for
  for (const SocketCall kind : kCalls) {
    for (const int error : kErrors) {
      // Of a connect that a signal broke the system makes the rest, which here nobody would.
      if (kind == SocketCall::kConnect && error == EINTR) continue;
      int nth = 1;
      while (SendWhileFails(kind, nth, error)) {
        ASSERT_FALSE(HasFailure()) << static_cast<int>(kind) << " " << error << " " << nth;
        ++nth;
      }
      // Each of these is made at least once for an association.
      EXPECT_GT(nth, 1) << static_cast<int>(kind);
    }
  }
  testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace tessaret::test
