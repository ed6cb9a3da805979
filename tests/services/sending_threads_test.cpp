// Queues of files sent by several threads at once, and cancelled by others.
#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "services/heard_events.h"
#include "services/store_files.h"
#include "services/store_provider.h"
#include "services/store_sender.h"
#include "services/store_target.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr std::size_t kThreads = 4;
constexpr std::size_t kFiles = 25;

class Queue {
 public:
  /// Of that file, and of none of another queue.
  [[nodiscard]] std::string Instance(std::size_t file) const {
    return root_ + "." + std::to_string(file);
  }

  bool Send(const std::string& port, const std::atomic<bool>& isCancelled) {
    return sender_.Send(TargetAt(port), {kCTStorage}, isCancelled);
  }

  [[nodiscard]] const StoreSender& Sender() const { return sender_; }
  [[nodiscard]] const std::vector<std::string>& Lines() const { return heard_.lines; }

 private:
  static std::string NextRoot() {
    static int queues = 0;
    return "1.2." + std::to_string(++queues);
  }

  const TempFolder folder_;
  const std::string root_ = NextRoot();
  const std::vector<std::string> files_ = WriteNumberedImages(folder_, kFiles, root_);
  Heard heard_;
  StoreSender sender_{files_, heard_};
};

TEST(SendingThreads, EachSendItsOwnFilesWhole) {
  std::array<Queue, kThreads> queues;
  std::array<StoreProvider, kThreads> providers;
  const std::atomic<bool> isCancelled = false;
  std::vector<std::thread> threads;
  for (std::size_t each = 0; each < kThreads; ++each) {
    threads.emplace_back(
        [&, each] { EXPECT_TRUE(queues[each].Send(providers[each].Port(), isCancelled)); });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t each = 0; each < kThreads; ++each) {
    EXPECT_EQ(queues[each].Sender().Sent, kFiles);
    providers[each].End();
    ASSERT_EQ(providers[each].stored.size(), kFiles);
    for (std::size_t at = 0; at < kFiles; ++at) {
      const StoredObject& stored = providers[each].stored[at];
      EXPECT_EQ(stored.instance, queues[each].Instance(at));
      const VR* pixels = stored.object->GetVR(0x7FE0, 0x0010);
      ASSERT_NE(pixels, nullptr);
      EXPECT_EQ(Bytes(pixels->Data, pixels->Data + pixels->Length), LittleWords());
    }
  }
}

TEST(SendingThreads, ACancelFromAnotherEndsItBeforeTheNextFile) {
  for (const std::size_t last : {std::size_t{0}, std::size_t{7}, kFiles - 1}) {
    Queue queue;
    std::atomic<bool> isCancelled = false;
    StoreProvider provider({.answer = [&](std::size_t before) {
      if (before == last) isCancelled = true;
      return StoreAnswer{};
    }});
    EXPECT_TRUE(queue.Send(provider.Port(), isCancelled));
    provider.End();
    EXPECT_EQ(queue.Sender().Sent, last + 1);
    EXPECT_EQ(provider.stored.size(), last + 1);
    EXPECT_EQ(queue.Lines().back(), "finished " + std::to_string(last + 1) + " 0");
  }
}

/// How long one queue takes here.
std::chrono::steady_clock::duration TimeToSend() {
  Queue queue;
  StoreProvider provider;
  const std::atomic<bool> isCancelled = false;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(queue.Send(provider.Port(), isCancelled));
  return std::chrono::steady_clock::now() - begin;
}

TEST(SendingThreads, ACancelAtAnyTimeLosesNoEvent) {
  const auto whole = TimeToSend();
  for (int each = 0; each < 20; ++each) {
    Queue queue;
    StoreProvider provider;
    std::atomic<bool> isCancelled = false;
    std::thread other([&] {
      std::this_thread::sleep_for(whole * each / 20);
      isCancelled = true;
    });
    EXPECT_TRUE(queue.Send(provider.Port(), isCancelled));
    other.join();
    provider.End();
    EXPECT_EQ(provider.stored.size(), queue.Sender().Sent);
    EXPECT_EQ(queue.Lines().size(), queue.Sender().Sent + 1);
    EXPECT_EQ(queue.Lines().back(), "finished " + std::to_string(queue.Sender().Sent) + " 0");
  }
}

}  // namespace
}  // namespace tessaret::test
