#include "platform/thread_end.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cstdlib>
#include <filesystem>
#include <latch>
#include <thread>

#include <gtest/gtest.h>

#include "support/test_paths.h"

namespace tessaret {
namespace {

int first = 0;
int second = 0;
int order = 0;

void NoteFirst() noexcept { first = ++order; }
void NoteSecond() noexcept { second = ++order; }

TEST(ThreadEnd, CallsWhatWasAskedForTheLatestFirst) {
  std::thread([] {
    EXPECT_TRUE(CallAtThreadEnd(&NoteFirst));
    EXPECT_TRUE(CallAtThreadEnd(&NoteSecond));
    EXPECT_EQ(order, 0);
  }).join();
  EXPECT_EQ(second, 1);
  EXPECT_EQ(first, 2);
}

int calls = 0;

void CountCall() noexcept { ++calls; }
void AskForAnother() noexcept { CallAtThreadEnd(&CountCall); }

TEST(ThreadEnd, WhatIsAskedForWhileTheThreadEndsIsCalledToo) {
  calls = 0;
  std::thread([] { CallAtThreadEnd(&AskForAnother); }).join();
  EXPECT_EQ(calls, 1);
}

TEST(ThreadEnd, RefusesMoreThanItCanHold) {
  calls = 0;
  std::thread([] {
    for (int asked = 0; asked < kMostCallsAtThreadEnd; ++asked) {
      EXPECT_TRUE(CallAtThreadEnd(&CountCall));
    }
    EXPECT_FALSE(CallAtThreadEnd(&CountCall));
  }).join();
  EXPECT_EQ(calls, kMostCallsAtThreadEnd);
}

/// The module of thread_end_module.cpp, loaded until Unload.
struct LoadedModule {
  void* handle = ::dlopen(
      (std::filesystem::path(test::kBinaryDir) / "lib/thread_end_module.so").c_str(), RTLD_NOW);

  template <class Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(::dlsym(handle, name));
  }
  /// Whether its code is gone from the process.
  bool Unload() const {
    void* code = ::dlsym(handle, "CountThisThreadsEnd");
    Dl_info info;
    return ::dlclose(handle) == 0 && ::dladdr(code, &info) == 0;
  }
};

TEST(ThreadEnd, ALibraryThatIsUnloadedIsCalledThenAndNotByThreadsThatStay) {
  const LoadedModule module;
  ASSERT_NE(module.handle, nullptr) << ::dlerror();
  auto* countEnd = module.Find<bool(int*)>("CountThisThreadsEnd");
  ASSERT_NE(countEnd, nullptr);
  int count = 0;
  ASSERT_TRUE(countEnd(&count));
  std::latch asked(1);
  std::latch unloaded(1);
  std::thread stays([&] {
    EXPECT_TRUE(countEnd(&count));
    asked.count_down();
    unloaded.wait();
  });
  asked.wait();
  EXPECT_TRUE(module.Unload());
  EXPECT_EQ(count, 1);
  unloaded.count_down();
  stays.join();
  EXPECT_EQ(count, 1);
}

TEST(ThreadEnd, RefusesBehindTheEndOfItsLibraryAndTouchesNoKeyOfOthers) {
  const LoadedModule module;
  ASSERT_NE(module.handle, nullptr) << ::dlerror();
  auto* countEnd = module.Find<bool(int*)>("CountThisThreadsEnd");
  auto* askWhenUnloaded = module.Find<void(bool*)>("AskWhenUnloaded");
  ASSERT_TRUE(countEnd != nullptr && askWhenUnloaded != nullptr);
  int count = 0;
  ASSERT_TRUE(countEnd(&count));
  bool served = true;
  askWhenUnloaded(&served);
  EXPECT_TRUE(module.Unload());
  EXPECT_FALSE(served);
  EXPECT_EQ(count, 1);
}

/// Asks again when static objects go, with a key of the host's own in use, and ends the process with the answer.
struct AsksAtExit {
  ~AsksAtExit() {
    std::thread([] {
      pthread_key_t key = 0;
      int value = 0;
      ::pthread_key_create(&key, nullptr);
      ::pthread_setspecific(key, &value);
      calls = 0;
      CallAtThreadEnd(&CountCall);
      if (::pthread_getspecific(key) != &value) std::_Exit(2);
    }).join();
    std::_Exit(calls == 1 ? 0 : 1);
  }
};

TEST(ThreadEndDeathTest, ServesThreadsThatStaticObjectsEndAndTouchesNoKeyOfTheHost) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        static const AsksAtExit late;
        CallAtThreadEnd(&CountCall);
        std::exit(3);
      },
      testing::ExitedWithCode(0), "");
}

void LeaveAtExit() noexcept { std::_Exit(0); }

TEST(ThreadEndDeathTest, IsCalledForTheThreadThatEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        CallAtThreadEnd(&LeaveAtExit);
        std::exit(3);
      },
      testing::ExitedWithCode(0), "");
}

/// Whether the library refuses when the process has used up all keys before it asked for its own.
bool IsRefusedWithoutAKey() {
  pthread_key_t key = 0;
  while (::pthread_key_create(&key, nullptr) == 0) {
  }
  return !CallAtThreadEnd(&CountCall);
}

// In a process of its own, where the library has no key yet.
TEST(ThreadEndDeathTest, RefusesWhereTheSystemHasNoKeyLeft) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(IsRefusedWithoutAKey() ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tessaret
