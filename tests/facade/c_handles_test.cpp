// Handles of the C interface that lead nowhere: given back already, or never given.
#include "facade/c_handles.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "support/all_threads.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/child_process.h"
#include "tessaret/tessaret.hpp"

namespace tessaret {
namespace {

constexpr Status kStale = static_cast<Status>(0x80070006u);

tessaret_object* New(const char* name = "Tessaret.DCMObject") {
  tessaret_object* object = nullptr;
  EXPECT_EQ(tessaret_create(name, &object), 0);
  return object;
}

tessaret_value ObjectValue(tessaret_object* object) {
  tessaret_value value{};
  value.type = TESSARET_OBJECT;
  value.as.object_value = object;
  return value;
}

void IgnoreEvents(void*, std::int32_t, const tessaret_value*, std::uint32_t) {}

/// That every function refuses `handle`, and leaves what it would have written as it is documented.
void ExpectRefused(tessaret_object* handle) {
  tessaret_object* other = handle;
  EXPECT_EQ(tessaret_query(handle, "IDcmObjectManager", &other), kStale);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(tessaret_describe(handle), nullptr);
  EXPECT_EQ(tessaret_describe_events(handle), nullptr);
  std::int32_t member = -7;
  EXPECT_EQ(tessaret_find(handle, "Clear", TESSARET_METHOD, &member), kStale);
  EXPECT_EQ(member, -7);
  tessaret_value result{};
  result.type = TESSARET_LONG;
  result.as.long_value = 77;
  EXPECT_EQ(tessaret_call(handle, 0, nullptr, 0, &result), kStale);
  EXPECT_EQ(tessaret_invoke(handle, "copy", TESSARET_METHOD, nullptr, 0, &result), kStale);
  EXPECT_EQ(tessaret_get(handle, "UseTotokuLUT", nullptr, 0, &result), kStale);
  EXPECT_EQ(result.as.long_value, 77);
  EXPECT_EQ(tessaret_put(handle, "UseTotokuLUT", &result, 1), kStale);
  std::uint32_t cookie = 7;
  EXPECT_EQ(tessaret_advise(handle, IgnoreEvents, nullptr, &cookie), kStale);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(tessaret_unadvise(handle, 1), kStale);
  tessaret_retain(handle);
  tessaret_release(handle);
  tessaret_release(handle);
}

TEST(CHandles, OfObjectsThatWereGivenBackAreRefused) {
  tessaret_object* const object = New();
  tessaret_release(object);
  EXPECT_EQ(tessaret_can_unload(), 1);
  ExpectRefused(object);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

TEST(CHandles, ThatNeverWereOneAreRefused) {
  std::uint64_t words[8] = {};
  ExpectRefused(reinterpret_cast<tessaret_object*>(words));
  // Where no process has memory: to follow it would end this one.
  ExpectRefused(reinterpret_cast<tessaret_object*>(std::uintptr_t{1}));
}

TEST(CHandles, OfAnObjectThatLivesOnElsewhereAreRefusedToo) {
  tessaret_object* const object = New();
  tessaret_object* manager = nullptr;
  ASSERT_EQ(tessaret_query(object, "IDcmObjectManager", &manager), 0);
  ASSERT_NE(manager, object);
  tessaret_release(object);
  ExpectRefused(object);
  EXPECT_STREQ(tessaret_describe(manager)->name, "IDcmObjectManager");
  tessaret_release(manager);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

TEST(CHandles, CountTheReferencesOfTheHost) {
  tessaret_object* const object = New();
  tessaret_retain(object);
  tessaret_retain(object);
  for (int held = 3; held > 0; --held) {
    EXPECT_NE(tessaret_describe(object), nullptr) << held;
    EXPECT_EQ(tessaret_can_unload(), 0) << held;
    tessaret_release(object);
  }
  EXPECT_EQ(tessaret_can_unload(), 1);
  ExpectRefused(object);
}

TEST(CHandles, InArgumentsAreRefused) {
  tessaret_object* const object = New();
  tessaret_object* const gone = New();
  tessaret_release(gone);
  tessaret_value argument = ObjectValue(gone);
  EXPECT_EQ(tessaret_invoke(object, "Set", TESSARET_METHOD, &argument, 1, nullptr), kStale);
  argument = ObjectValue(nullptr);
  // Null is a value, which this member does not take.
  EXPECT_EQ(tessaret_invoke(object, "Set", TESSARET_METHOD, &argument, 1, nullptr), kPointer);
  tessaret_release(object);
}

TEST(CHandles, OfAValueEndWithItHoweverOftenACopyIsCleared) {
  tessaret_object* const object = New();
  tessaret_value copy{};
  ASSERT_EQ(tessaret_invoke(object, "copy", TESSARET_METHOD, nullptr, 0, &copy), 0);
  ASSERT_EQ(copy.type, TESSARET_OBJECT);
  EXPECT_NE(tessaret_describe(copy.as.object_value), nullptr);
  tessaret_value twin = copy;
  tessaret_clear(&copy);
  EXPECT_EQ(tessaret_describe(twin.as.object_value), nullptr);
  tessaret_clear(&twin);
  EXPECT_EQ(twin.type, TESSARET_EMPTY);
  tessaret_release(object);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

/// Leaves the words of a failure that is none of memory.
void FailOtherwise() {
  tessaret_object* none = nullptr;
  EXPECT_EQ(tessaret_create("Tessaret.Nothing", &none), kClassNotRegistered);
}

TEST(CHandles, WithoutMemoryNothingIsHeld) {
  FailOtherwise();
  const auto scenario = [] {
    tessaret_object* object = nullptr;
    const Status status = tessaret_create("Tessaret.DCMObject", &object);
    EXPECT_EQ(object == nullptr, Failed(status));
    if (object == nullptr) {
      EXPECT_EQ(status, kOutOfMemory);
      EXPECT_STREQ(tessaret_last_error_text(), "Not enough memory");
      EXPECT_STREQ(tessaret_last_error_source(), "Tessaret.DCMObject");
    }
    if (object != nullptr) {
      tessaret_object* manager = nullptr;
      const Status asked = tessaret_query(object, "IDcmObjectManager", &manager);
      EXPECT_EQ(manager == nullptr, Failed(asked));
      tessaret_release(manager);
    }
    tessaret_release(object);
    EXPECT_EQ(tessaret_can_unload(), 1);
  };
  test::FailEveryAllocation(scenario, &FailOtherwise);
}

/// Tries a pointer that is no object, without memory, where nothing was ever given; 0 where nothing is thrown.
int TryWhereNothingWasGiven() {
  std::uint64_t words[8] = {};
  const test::AllocationFailure failure(1);
  ExpectRefused(reinterpret_cast<tessaret_object*>(words));
  ExpectRefused(reinterpret_cast<tessaret_object*>(words));
  return testing::Test::HasFailure() ? 1 : 0;
}

TEST(CHandlesDeathTest, AreRefusedWithoutMemoryWhereNothingWasEverGiven) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(TryWhereNothingWasGiven()), testing::ExitedWithCode(0), "");
}

/// Asks for the handle of another object, and for its own, while it dies.
class Curious final : public ComponentObject<CallableByName<IDCMOptions>> {
 public:
  explicit Curious(IObject* outer) : ComponentObject(outer) {}
  ~Curious() override {
    EXPECT_EQ(tessaret_describe(own), nullptr);
    tessaret_release(own);
    tessaret_release(other);
  }
  Status get_UseTotokuLUT(VariantBool*) override { return kOk; }
  Status put_UseTotokuLUT(VariantBool) override { return kOk; }

  tessaret_object* own = nullptr;
  tessaret_object* other = nullptr;
};

TEST(CHandles, MayBeAskedForByAnObjectThatDies) {
  void* made = nullptr;
  ASSERT_EQ(CreateObjectOf<Curious>(nullptr, IDispatch::kId, &made), kOk);
  auto* const curious = static_cast<Curious*>(static_cast<IDispatch*>(made));
  curious->other = New();
  tessaret_object* const handle = GiveHandle(Ref<IDispatch>::Adopt(curious));
  curious->own = handle;
  tessaret_release(handle);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

/// An object with a part; something happens while the next reference to it is taken.
class BusyWhole final : public IObject {
 public:
  BusyWhole() {
    EXPECT_EQ(tessaret_create_object("Tessaret.DCMOptions", &IObject::kId, this,
                                     reinterpret_cast<void**>(part.Receive())),
              kOk);
  }
  Status QueryInterface(const InterfaceId& id, void** object) override {
    return part->QueryInterface(id, object);
  }
  std::uint32_t AddRef() override {
    if (const auto work = std::exchange(meanwhile, nullptr)) work();
    return ++references;
  }
  std::uint32_t Release() override { return --references; }

  std::function<void()> meanwhile;
  std::atomic<std::uint32_t> references = 1;
  Ref<IObject> part;
};

TEST(CHandles, AreNoneTheLessThereInAChildOfForkWhateverOtherThreadsDid) {
  BusyWhole whole;
  tessaret_object* const handle = GiveHandle(whole.part.As<IDispatch>());
  std::latch begun{1};
  whole.meanwhile = [&] {
    begun.count_down();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  };
  std::thread other([&] { EXPECT_NE(tessaret_describe(handle), nullptr); });
  begun.wait();
  EXPECT_EQ(test::RunInChild([&] {
              ::alarm(20);
              return tessaret_describe(handle) != nullptr ? 0 : 1;
            }),
            0);
  other.join();
  tessaret_release(handle);
}

/// Forks where it is amid a handle itself; 0 where both processes go on.
int ForkAmidOwnHandle() {
  ::alarm(20);
  BusyWhole whole;
  tessaret_object* const handle = GiveHandle(whole.part.As<IDispatch>());
  int ofChild = -1;
  pid_t forked = -1;
  whole.meanwhile = [&] { forked = ::fork(); };
  if (tessaret_describe(handle) == nullptr) return 1;
  // From here on in both; the handle is free for all.
  if (forked != 0) ::waitpid(forked, &ofChild, 0);
  bool isThere = false;
  std::thread([&] { isThere = tessaret_describe(handle) != nullptr; }).join();
  tessaret_release(handle);
  if (forked == 0) ::_exit(isThere ? 0 : 2);
  if (!isThere) return 3;
  return ofChild == 0 ? 0 : 4;
}

TEST(CHandles, LetAThreadForkThatIsAmidOne) { EXPECT_EQ(test::RunInChild(&ForkAmidOwnHandle), 0); }

/// Forks while another thread gets the first handle of all; 0 where the child gets one too.
int ForkAmidTheFirstHandle() {
  const auto create = [] {
    tessaret_object* object = nullptr;
    const Status status = tessaret_create("Tessaret.DCMOptions", &object);
    tessaret_release(object);
    return status == kOk ? 0 : 1;
  };
  std::atomic<bool> begins = false;
  std::thread other([&] {
    begins = true;
    create();
  });
  while (!begins) {
  }
  const int answer = test::RunInChild([&] {
    ::alarm(20);
    return create();
  });
  other.join();
  return answer;
}

/// Over and over: it takes luck to be amid it. The fork waits for the start of the library, and comes when the handle is next.
int ForkAmidManyFirstHandles() {
  int answer = 0;
  for (int round = 0; round < 300 && answer == 0; ++round) {
    answer = test::RunInChild(&ForkAmidTheFirstHandle);
  }
  return answer == 0 ? 0 : 3;
}

TEST(CHandlesDeathTest, AreMadeInAChildThatIsForkedAmidTheFirstOne) {
  if (test::kInstrumented) GTEST_SKIP() << test::kForkUnderSanitizer;
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(ForkAmidManyFirstHandles()), testing::ExitedWithCode(0), "");
}

TEST(CHandles, AreGivenBackOnceByThreadsThatAllTry) {
  for (int round = 0; round < 50; ++round) {
    tessaret_object* const object = New("Tessaret.DCMOptions");
    test::OnAllThreads([&](int) {
      tessaret_value value{};
      const Status status = tessaret_get(object, "UseTotokuLUT", nullptr, 0, &value);
      EXPECT_TRUE(status == kOk || status == kStale);
      tessaret_release(object);
    });
    EXPECT_EQ(tessaret_can_unload(), 1);
  }
}

}  // namespace
}  // namespace tessaret
