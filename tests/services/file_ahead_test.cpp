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
#include "services/store_target.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

namespace fs = std::filesystem;

std::string InstanceOf(const DICOMDataObject* object) {
  if (object == nullptr) return "none";
  return std::string(UidOf(*object, 0x0008, 0x0018).value_or(UID()).View());
}

/// Folders of files that were not changed within the last two seconds, as only such are loaded early: many at a time, for all tests to
/// wait for their age once. Images are called by their instances.
class AgedFolders {
 public:
  static fs::path Take() {
    static AgedFolders folders;
    if (folders.left_ == 0) folders.Make();
    return folders.PathOf(--folders.left_);
  }

 private:
  void Make() {
    folder_ = std::make_unique<TempFolder>();
    for (left_ = 0; left_ < 16; ++left_) Fill(PathOf(left_));
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
  }
  [[nodiscard]] fs::path PathOf(int number) const { return folder_->File(std::to_string(number)); }
  static void Fill(const fs::path& path) {
    fs::create_directory(path);
    for (const char* instance : {"1.2.3.1", "1.2.3.2", "1.2.3.3"}) {
      WriteBytes((path / instance).string(), ImageFile(instance));
    }
    WriteBytes((path / "no image").string(), BytesOf("no image"));
    EXPECT_EQ(::mkfifo((path / "pipe").c_str(), 0600), 0);
    // Behind its elements the file is filled up with one long one, which takes no room on the medium.
    const std::uint32_t size = std::uint32_t{16} << 20;
    const Bytes large =
        Joined({ImageFile("1.2.3.1"),
                DataSetBuilder(Encoding::kExplicitLittle).Head(0x7FE1, 0x0010, "OB", size).Done()});
    WriteBytes((path / "large").string(), large);
    fs::resize_file(path / "large", large.size() + size);
  }

  std::unique_ptr<TempFolder> folder_;
  int left_ = 0;
};

class FilesAhead : public testing::Test {
 protected:
  [[nodiscard]] std::string File(const std::string& name) const {
    return (folder_ / name).string();
  }
  /// What Take answers for a file that Load was just told.
  std::string LoadedAndTaken(const std::string& path) {
    ahead_.Load(nullptr, path);
    return InstanceOf(ahead_.Take(path).get());
  }

  const fs::path folder_ = AgedFolders::Take();
  FileAhead ahead_;
};

TEST_F(FilesAhead, AFileIsTakenOnceAndOnlyUnderItsOwnPath) {
  const std::string one = File("1.2.3.1");
  const std::string other = File("1.2.3.2");
  EXPECT_EQ(LoadedAndTaken(one), "1.2.3.1");
  EXPECT_EQ(InstanceOf(ahead_.Take(one).get()), "none");
  ahead_.Load(nullptr, one);
  EXPECT_EQ(InstanceOf(ahead_.Take(other).get()), "none");
  EXPECT_EQ(InstanceOf(ahead_.Take(one).get()), "none");
}

TEST_F(FilesAhead, AFileThatIsChangedMeanwhileIsNotTaken) {
  const std::string written = File("1.2.3.1");
  const std::string replaced = File("1.2.3.2");
  const std::string removed = File("1.2.3.3");

  ahead_.Load(nullptr, written);
  WriteBytes(written, ImageFile("1.2.3.5"));  // as many bytes
  EXPECT_EQ(InstanceOf(ahead_.Take(written).get()), "none");
  // It was changed just now, and may be again within one tick of the clock of the file system.
  EXPECT_EQ(LoadedAndTaken(written), "none");

  ahead_.Load(nullptr, replaced);
  fs::rename(written, replaced);
  EXPECT_EQ(InstanceOf(ahead_.Take(replaced).get()), "none");

  ahead_.Load(nullptr, removed);
  fs::remove(removed);
  EXPECT_EQ(InstanceOf(ahead_.Take(removed).get()), "none");
}

TEST_F(FilesAhead, WhatIsNoUsualFileIsLeftForItsTurn) {
  const std::string large = File("large");
  EXPECT_EQ(LoadedAndTaken(File("pipe")), "none");
  EXPECT_EQ(LoadedAndTaken(folder_.string()), "none");
  EXPECT_EQ(LoadedAndTaken(File("missing")), "none");
  EXPECT_EQ(LoadedAndTaken(large), "none");
  PDU_Service pdu;
  EXPECT_EQ(InstanceOf(LoadForSending(pdu, large).object.get()), "1.2.3.1");
}

TEST_F(FilesAhead, WhatFailsIsLeftForItsTurn) {
  const std::string path = File("1.2.3.1");
  for (const FileCall call : {FileCall::kOpen, FileCall::kRead}) {
    FileFailure failure;
    failure.FailCall(call, 1, EIO);
    EXPECT_EQ(LoadedAndTaken(path), "none");
    EXPECT_EQ(LoadedAndTaken(path), "1.2.3.1");
  }
}

TEST_F(FilesAhead, TracesAreInTheOrderOfTheWork) {
  const std::string path = File("1.2.3.1");
  SetDumpFile("/dev/null");
  SetDumpFlag(kDumpPdu, true);
  EXPECT_EQ(LoadedAndTaken(path), "none");
  SetDumpFlag(kDumpPdu, false);
  SetDumpFile(nullptr);
  EXPECT_EQ(LoadedAndTaken(path), "1.2.3.1");
}

TEST_F(FilesAhead, AThreadThatIsCancelledWhileItLoadsEnds) {
  static std::string path;
  path = File("1.2.3.1");
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
    const std::atomic<bool> isCancelled = false;
    StoreSender sender(files, watching_);
    EXPECT_TRUE(sender.Send(TargetAt(provider_.Port()), {kCTStorage}, isCancelled));
    provider_.End();
    for (const StoredObject& each : provider_.stored) stored_.push_back(each.instance);
  }

  StoreProvider provider_;
  Watching watching_;
  std::vector<std::string> stored_;
};

using Names = std::vector<std::string>;

TEST_F(SendingAhead, EachFileIsOpenedOnceAndTheNextOneBeforeTheResponse) {
  Send({File("1.2.3.1"), File("1.2.3.2"), File("1.2.3.3")});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.2", "1.2.3.3"}));
  // The first one opens the codec library, too.
  ASSERT_EQ(watching_.opened.size(), 3u);
  EXPECT_EQ(watching_.opened[1] - watching_.opened[0], 1);
  EXPECT_EQ(watching_.opened[2] - watching_.opened[1], 0);
}

TEST_F(SendingAhead, AFileThatTheHostRewritesInTheEventBeforeGoesAsItIsThen) {
  const std::string two = File("1.2.3.2");
  watching_.change = [&] { WriteBytes(two, ImageFile("1.2.3.9")); };
  Send({File("1.2.3.1"), two, File("1.2.3.3")});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.9", "1.2.3.3"}));
}

TEST_F(SendingAhead, AFileThatTheHostRemovesInTheEventBeforeIsAnErrorInItsTurn) {
  const std::string two = File("1.2.3.2");
  watching_.change = [&] { fs::remove(two); };
  Send({File("1.2.3.1"), two, File("1.2.3.3")});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.3"}));
  EXPECT_EQ(watching_.errors, (Names{"Error sending [" + two + "]: No such file or directory"}));
}

TEST_F(SendingAhead, AFileThatCannotBeSentIsToldOfInItsTurn) {
  const std::string two = File("no image");
  Send({File("1.2.3.1"), two, File("1.2.3.3")});
  EXPECT_EQ(stored_, (Names{"1.2.3.1", "1.2.3.3"}));
  ASSERT_EQ(watching_.errors.size(), 1u);
  EXPECT_EQ(watching_.errors[0].rfind("Error sending [" + two + "]: ", 0), 0u);
}

}  // namespace
}  // namespace tessaret::test
