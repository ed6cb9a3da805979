// The next file of a queue is loaded early, and nobody notices but by the time that it takes.
#include "services/file_ahead.h"

#include <pthread.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include <gtest/gtest.h>

#include "core/object_maker.h"
#include "core/trace.h"
#include "services/store_files.h"
#include "services/store_provider.h"
#include "services/store_sender.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

namespace fs = std::filesystem;

// Files that were changed within the last two seconds are not loaded early.
constexpr std::chrono::milliseconds kSettled{2100};

std::string InstanceOf(const DICOMDataObject* object) {
  if (object == nullptr) return "none";
  return std::string(UidOf(*object, 0x0008, 0x0018).value_or(UID()).View());
}

class FilesAhead : public testing::Test {
 protected:
  std::string Write(const std::string& name, const Bytes& content) {
    WriteBytes(folder_.File(name), content);
    return folder_.File(name);
  }
  /// What Take answers for a file that Load was just told.
  std::string LoadedAndTaken(const std::string& path) {
    ahead_.Load(nullptr, path);
    return InstanceOf(ahead_.Take(path).get());
  }

  const TempFolder folder_;
  FileAhead ahead_;
};

TEST_F(FilesAhead, AFileIsTakenOnceAndOnlyUnderItsOwnPath) {
  const std::string one = Write("one", ImageFile("1.2.3.1"));
  const std::string other = Write("other", ImageFile("1.2.3.2"));
  std::this_thread::sleep_for(kSettled);
  EXPECT_EQ(LoadedAndTaken(one), "1.2.3.1");
  EXPECT_EQ(InstanceOf(ahead_.Take(one).get()), "none");
  ahead_.Load(nullptr, one);
  EXPECT_EQ(InstanceOf(ahead_.Take(other).get()), "none");
  EXPECT_EQ(InstanceOf(ahead_.Take(one).get()), "none");
}

TEST_F(FilesAhead, AFileThatIsChangedMeanwhileIsNotTaken) {
  const std::string written = Write("written", ImageFile("1.2.3.1"));
  const std::string replaced = Write("replaced", ImageFile("1.2.3.2"));
  const std::string by = Write("by", ImageFile("1.2.3.3"));
  const std::string removed = Write("removed", ImageFile("1.2.3.4"));
  std::this_thread::sleep_for(kSettled);

  ahead_.Load(nullptr, written);
  WriteBytes(written, ImageFile("1.2.3.5"));  // as many bytes
  EXPECT_EQ(InstanceOf(ahead_.Take(written).get()), "none");
  // It was changed just now, and may be again within one tick of the clock of the file system.
  EXPECT_EQ(LoadedAndTaken(written), "none");

  ahead_.Load(nullptr, replaced);
  fs::rename(by, replaced);
  EXPECT_EQ(InstanceOf(ahead_.Take(replaced).get()), "none");

  ahead_.Load(nullptr, removed);
  fs::remove(removed);
  EXPECT_EQ(InstanceOf(ahead_.Take(removed).get()), "none");
}

TEST_F(FilesAhead, WhatIsNoUsualFileIsLeftForItsTurn) {
  const std::string pipe = folder_.File("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  // Behind its elements the file is filled up with one long one, which takes no room on the medium.
  Bytes long_ = ImageFile("1.2.3.1");
  const std::uint32_t size = std::uint32_t{16} << 20;
  const Bytes head =
      DataSetBuilder(Encoding::kExplicitLittle).Head(0x7FE1, 0x0010, "OB", size).Done();
  long_.insert(long_.end(), head.begin(), head.end());
  const std::string large = Write("large", long_);
  fs::resize_file(large, long_.size() + size);
  std::this_thread::sleep_for(kSettled);

  EXPECT_EQ(LoadedAndTaken(pipe), "none");
  EXPECT_EQ(LoadedAndTaken(folder_.Path().string()), "none");
  EXPECT_EQ(LoadedAndTaken(folder_.File("missing")), "none");
  EXPECT_EQ(LoadedAndTaken(large), "none");
  PDU_Service pdu;
  EXPECT_EQ(InstanceOf(LoadForSending(pdu, large).object.get()), "1.2.3.1");
}

TEST_F(FilesAhead, WhatFailsIsLeftForItsTurn) {
  const std::string path = Write("one", ImageFile("1.2.3.1"));
  std::this_thread::sleep_for(kSettled);
  for (const FileCall call : {FileCall::kOpen, FileCall::kRead}) {
    FileFailure failure;
    failure.FailCall(call, 1, EIO);
    EXPECT_EQ(LoadedAndTaken(path), "none");
    EXPECT_EQ(LoadedAndTaken(path), "1.2.3.1");
  }
}

TEST_F(FilesAhead, TracesAreInTheOrderOfTheWork) {
  const std::string path = Write("one", ImageFile("1.2.3.1"));
  std::this_thread::sleep_for(kSettled);
  SetDumpFile("/dev/null");
  SetDumpFlag(kDumpPdu, true);
  EXPECT_EQ(LoadedAndTaken(path), "none");
  SetDumpFlag(kDumpPdu, false);
  SetDumpFile(nullptr);
  EXPECT_EQ(LoadedAndTaken(path), "1.2.3.1");
}

TEST_F(FilesAhead, AThreadThatIsCancelledWhileItLoadsEnds) {
  static std::string path;
  path = Write("one", ImageFile("1.2.3.1"));
  std::this_thread::sleep_for(kSettled);
  FileFailure calls;
  calls.RunBefore(FileCall::kOpen, 1, [] { ::pthread_cancel(::pthread_self()); });
  pthread_t thread{};
  const auto load = [](void*) -> void* {
    FileAhead().Load(nullptr, path);
    return nullptr;
  };
  ASSERT_EQ(::pthread_create(&thread, nullptr, load, nullptr), 0);
  void* answer = nullptr;
  EXPECT_EQ(::pthread_join(thread, &answer), 0);
  EXPECT_EQ(answer, PTHREAD_CANCELED);
  EXPECT_EQ(calls.Calls(FileCall::kOpen), 1);
}

/// Looks at what was opened, and changes files, where a file was sent.
class Watching final : public StoreListener {
 public:
  void OnSent(const std::string&, std::size_t index) override {
    opened.push_back(failure.Calls(FileCall::kOpen));
    if (index == 0 && change) change();
  }
  void OnError(const std::string&, std::size_t, const std::string& words) override {
    opened.push_back(failure.Calls(FileCall::kOpen));
    errors.push_back(words);
  }
  void OnFinished(std::size_t, std::size_t) override {}

  FileFailure failure;
  std::function<void()> change;
  std::vector<int> opened;
  std::vector<std::string> errors;
};

class SendingAhead : public FilesAhead {
 protected:
  void Send(std::vector<std::string> files) {
    std::this_thread::sleep_for(kSettled);
    const std::atomic<bool> isCancelled = false;
    StoreSender sender(files, watching_);
    const StoreTarget target{.host = "127.0.0.1",
                             .port = provider_.Port(),
                             .localTitle = "HERE",
                             .remoteTitle = "THERE",
                             .timeoutSecs = 20};
    EXPECT_TRUE(sender.Send(target, {kCTStorage}, isCancelled));
    provider_.End();
    for (const StoredObject& each : provider_.stored) stored_.push_back(each.instance);
  }

  StoreProvider provider_;
  Watching watching_;
  std::vector<std::string> stored_;
};

using Names = std::vector<std::string>;

TEST_F(SendingAhead, EachFileIsOpenedOnceAndTheNextOneBeforeTheResponse) {
  Send({Write("one", ImageFile("1.2.3.1")), Write("two", ImageFile("1.2.3.2")),
        Write("three", ImageFile("1.2.3.3"))});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.2", "1.2.3.3"}));
  // The first one opens the codec library, too.
  ASSERT_EQ(watching_.opened.size(), 3u);
  EXPECT_EQ(watching_.opened[1] - watching_.opened[0], 1);
  EXPECT_EQ(watching_.opened[2] - watching_.opened[1], 0);
}

TEST_F(SendingAhead, AFileThatTheHostRewritesInTheEventBeforeGoesAsItIsThen) {
  const std::string two = Write("two", ImageFile("1.2.3.2"));
  watching_.change = [&] { WriteBytes(two, ImageFile("1.2.3.9")); };
  Send({Write("one", ImageFile("1.2.3.1")), two, Write("three", ImageFile("1.2.3.3"))});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.9", "1.2.3.3"}));
}

TEST_F(SendingAhead, AFileThatTheHostRemovesInTheEventBeforeIsAnErrorInItsTurn) {
  const std::string two = Write("two", ImageFile("1.2.3.2"));
  watching_.change = [&] { fs::remove(two); };
  Send({Write("one", ImageFile("1.2.3.1")), two, Write("three", ImageFile("1.2.3.3"))});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.3"}));
  EXPECT_EQ(watching_.errors, (Names{"Error sending [" + two + "]: No such file or directory"}));
}

TEST_F(SendingAhead, AFileThatCannotBeSentIsToldOfInItsTurn) {
  const std::string two = Write("two", BytesOf("no image"));
  Send({Write("one", ImageFile("1.2.3.1")), two, Write("three", ImageFile("1.2.3.3"))});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.3"}));
  ASSERT_EQ(watching_.errors.size(), 1u);
  EXPECT_EQ(watching_.errors[0].rfind("Error sending [" + two + "]: ", 0), 0u);
}

}  // namespace
}  // namespace tessaret::test
