// How a library goes: unloaded by a process that goes on, or with its process.
#include "platform/library_end.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>

#include <gtest/gtest.h>

#include "support/test_paths.h"

namespace tessaret {
namespace {

void Say(std::string_view words) {
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, words.data(), words.size());
}
void SayHow(bool processEnds) { Say(processEnds ? "with the process\n" : "unloaded\n"); }

/// The module of library_end_module.cpp, which says how it goes; null where it cannot be loaded.
void* LoadModule() {
  void* handle = ::dlopen(
      (std::filesystem::path(test::kBinaryDir) / "lib/library_end_module.so").c_str(), RTLD_NOW);
  if (handle == nullptr) return nullptr;
  reinterpret_cast<void (*)(void (*)(bool))>(::dlsym(handle, "TellHowItGoes"))(&SayHow);
  return handle;
}

TEST(LibraryEnd, ALibraryThatIsUnloadedKnowsIt) {
  void* module = LoadModule();
  ASSERT_NE(module, nullptr) << ::dlerror();
  testing::internal::CaptureStderr();
  EXPECT_EQ(::dlclose(module), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "unloaded\n");
}

TEST(LibraryEndDeathTest, ALibraryThatIsStillLoadedGoesWithTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(LoadModule() != nullptr ? 0 : 1), testing::ExitedWithCode(0),
              "^with the process\n$");
}

bool saysHowThisProgramGoes = false;

/// Runs before that of the libraries that the program is linked with.
[[gnu::destructor]] void SayHowThisProgramGoes() {
  if (saysHowThisProgramGoes) SayHow(DoesProcessEnd());
}

TEST(LibraryEndDeathTest, ALibraryThatTheProgramIsLinkedWithGoesWithTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto end = [] {
    WatchProcessEnd();
    saysHowThisProgramGoes = true;
    std::exit(0);
  };
  EXPECT_EXIT(end(), testing::ExitedWithCode(0), "^with the process\n$");
}

}  // namespace
}  // namespace tessaret
