#include "platform/shared_library.h"

#include <pthread.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret {
namespace {

std::string ModulePath() {
  return (std::filesystem::path(test::kBinaryDir) / "lib/thread_end_module.so").string();
}

TEST(SharedLibrary, IsLoadedByItsPathAndFindsWhatItExports) {
  SharedLibrary library = SharedLibrary::Load(ModulePath());
  ASSERT_TRUE(library.IsLoaded());
  EXPECT_NE(library.FindFunction<void(bool*)>("AskWhenUnloaded"), nullptr);
  EXPECT_EQ(library.Find("NoSuchName"), nullptr);
  library.Unload();
  EXPECT_FALSE(library.IsLoaded());
  EXPECT_EQ(library.Find("AskWhenUnloaded"), nullptr);
  library.Unload();
}

TEST(SharedLibrary, IsFoundByTheLoaderUnderABareName) {
  EXPECT_TRUE(SharedLibrary::Load("libc.so.6").IsLoaded());
  EXPECT_FALSE(SharedLibrary::Load("no-such-library.so").IsLoaded());
}

TEST(SharedLibrary, IsNeitherTheProgramNorWhatNoLibraryIs) {
  EXPECT_FALSE(SharedLibrary::Load("").IsLoaded());
  EXPECT_FALSE(SharedLibrary::Load(ModulePath() + std::string(1, '\0') + "x").IsLoaded());
  const test::TempFolder folder;
  test::WriteText(folder.File("text.so"), "no library");
  EXPECT_FALSE(SharedLibrary::Load(folder.File("text.so")).IsLoaded());
  EXPECT_FALSE(SharedLibrary::Load(folder.Path().string()).IsLoaded());
}

std::string CancelledModulePath() {
  return (std::filesystem::path(test::kBinaryDir) / "lib/cancelled_module.so").string();
}

TEST(SharedLibrary, AThreadThatIsCancelledEndsBehindWhatTheLibraryRuns) {
  std::atomic<bool> unloaded = false;
  std::thread worker([&unloaded] {
    ::pthread_cancel(::pthread_self());  // takes place where the next call lets it
    SharedLibrary library = SharedLibrary::Load(CancelledModulePath());
    if (!library.IsLoaded()) return;
    library.Unload();
    unloaded = true;
    ::pthread_testcancel();
    unloaded = false;
  });
  worker.join();
  EXPECT_TRUE(unloaded) << "neither loading nor unloading was left early";
  // The loader is still good for others.
  EXPECT_TRUE(SharedLibrary::Load(CancelledModulePath()).IsLoaded());
}

TEST(SharedLibrary, MovesWithItsHolder) {
  SharedLibrary first = SharedLibrary::Load(ModulePath());
  SharedLibrary second = std::move(first);
  EXPECT_TRUE(second.IsLoaded());
  first = std::move(second);
  EXPECT_TRUE(first.IsLoaded());
}

}  // namespace
}  // namespace tessaret
