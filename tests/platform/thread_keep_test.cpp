#include "platform/thread_keep.h"

#include <pthread.h>

#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

struct OneUse {};
struct AnotherUse {};

std::string* Kept() { return ThreadKept<std::string, OneUse>(); }
std::string* KeptForAnotherUse() { return ThreadKept<std::string, AnotherUse>(); }

TEST(ThreadKept, IsTheSameValueWheneverAThreadAsks) {
  *Kept() = "kept";
  EXPECT_EQ(*Kept(), "kept");
}

TEST(ThreadKept, EachUseHasItsOwn) {
  *Kept() = "kept";
  *KeptForAnotherUse() = "other";
  EXPECT_EQ(*Kept(), "kept");
}

TEST(ThreadKept, EachThreadHasItsOwnWhichStartsEmpty) {
  *Kept() = "kept";
  std::string found = "nothing asked";
  std::thread([&] { found = *Kept(); }).join();
  EXPECT_EQ(found, "");
}

TEST(ThreadKept, TheValueGoesWithItsThread) {
  const auto counted = std::make_shared<int>(1);
  std::thread([&] { *ThreadKept<std::shared_ptr<int>, OneUse>() = counted; }).join();
  EXPECT_EQ(counted.use_count(), 1);
}

/// Has `ask` run when the calling thread ends and all its objects are gone.
template <class Ask>
void AskAtTheVeryEnd(Ask ask) {
  static pthread_key_t key = [] {
    pthread_key_t made = 0;
    ::pthread_key_create(&made, [](void* held) { (*static_cast<Ask*>(held))(); });
    return made;
  }();
  static Ask kept = ask;
  ::pthread_setspecific(key, &kept);
}

TEST(ThreadKept, IsStillThereForTheObjectsOfTheThread) {
  static std::string found;
  struct AsksLate {
    ~AsksLate() { found = *ThreadKept<std::string, AsksLate>(); }
  };
  std::thread([] {
    static thread_local AsksLate late;
    static_cast<void>(&late);
    *ThreadKept<std::string, AsksLate>() = "kept";
  }).join();
  EXPECT_EQ(found, "kept");
}

TEST(ThreadKept, IsNotGivenOutOnceItIsGone) {
  struct Use {};
  *ThreadKept<std::string, Use>() = "kept here";
  static int asked = 0;
  static int given = 0;
  std::thread([] {
    *ThreadKept<std::string, Use>() = "kept";
    // A key made after the library's own is destroyed after it.
    AskAtTheVeryEnd([] {
      ++asked;
      given += ThreadKept<std::string, Use>() == nullptr ? 0 : 1;
    });
  }).join();
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(given, 0);
}

TEST(ThreadKept, WhatIsFirstAskedForAtTheVeryEndGoesToo) {
  struct Use {};
  static std::shared_ptr<int> counted = std::make_shared<int>(1);
  std::thread([] {
    AskAtTheVeryEnd([] {
      if (auto* kept = ThreadKept<std::shared_ptr<int>, Use>(); kept != nullptr) *kept = counted;
    });
  }).join();
  EXPECT_EQ(counted.use_count(), 1);
}

}  // namespace
}  // namespace tessaret
