#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <semaphore>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/dicom_object.h"
#include "core/file_buffer.h"
#include "core/vr_pool.h"
#include "object_maker.h"
#include "platform/fork_locks.h"
#include "support/all_threads.h"
#include "support/build_kind.h"
#include "support/child_process.h"
#include "support/fork_amid.h"
#include "support/held_resources.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::KeysOf;
using test::kThreads;
using test::NewObject;
using test::NewSequence;
using test::NewVR;
using test::OnAllThreads;
using test::Outline;
using test::Pattern;
using test::Repetitions;

/// An object with 60 values of different lengths and a nest of items.
std::unique_ptr<DICOMObject> Sample(std::uint32_t seed) {
  auto object = std::make_unique<DICOMObject>();
  for (std::uint32_t at = 0; at < 60; ++at) {
    object->Push(NewVR(MakeTagKey(0x0009, static_cast<std::uint16_t>(0x1000 + at)),
                       Pattern(at * 3 % 50, seed)));
  }
  object->Push(NewVR(MakeTagKey(0x0028, 0x0010), Bytes{0x00, 0x02}));
  object->Push(NewSequence(
      MakeTagKey(0x0040, 0x0275),
      {NewObject({NewVR(MakeTagKey(0x0040, 0x0007), "first")}),
       NewObject({NewSequence(MakeTagKey(0x0040, 0x0008), {NewObject({NewVR(1, "inner")})})})}));
  return object;
}

TEST(ObjectThreads, EachThreadHasObjectsOfItsOwn) {
  OnAllThreads([](int number) {
    std::mt19937 random(static_cast<std::uint32_t>(number));
    DICOMObject object;
    std::map<TagKey, Bytes> model;
    for (int round = 0; round < 20000; ++round) {
      const auto key = static_cast<TagKey>(random() % 2000 * 7);
      if (random() % 3 != 0) {
        Bytes value = Pattern(random() % 40, key);
        object.Push(NewVR(key, value));
        model[key] = std::move(value);
      } else {
        delete object.Remove(GroupOf(key), ElementOf(key));
        model.erase(key);
      }
    }
    const std::unique_ptr<DICOMObject> clone(object.Clone(true));
    object.Reset();
    for (const auto& [key, value] : model) {
      const std::unique_ptr<VR> vr(clone->Pop());
      ASSERT_EQ(vr->Key(), key);
      ASSERT_EQ(test::ValueOf(*vr), value);
    }
    ASSERT_TRUE(clone->IsEmpty());
  });
}

TEST(ObjectThreads, AllThreadsReadAndCopyOneObjectThatNobodyChanges) {
  const std::unique_ptr<DICOMObject> sample = Sample(5);
  const DICOMObject& object = *sample;
  const std::string outline = Outline(object);
  OnAllThreads([&](int number) {
    for (int round = 0; round < 300; ++round) {
      ASSERT_EQ(object.GetUINT16(0x0028, 0x0010), 512);
      ASSERT_EQ(test::ValueOf(*object.GetVR(0x0009, 0x1004)), Pattern(12, 5));
      ASSERT_FALSE(object.IsEmpty());
      ASSERT_EQ(KeysOf(object).size(), 62u);
      std::unique_ptr<DICOMObject> clone(object.Clone((round + number) % 2 == 0));
      ASSERT_EQ(Outline(*clone), outline);
      if (round % 3 == 0) {
        while (const std::unique_ptr<VR> vr{clone->Pop()}) continue;
      }
      DICOMObject copy;
      ASSERT_TRUE(copy.CopyFrom(object));
      ASSERT_EQ(KeysOf(copy).size(), 62u);
    }
  });
  EXPECT_EQ(Outline(object), outline);
}

TEST(ObjectThreads, ObjectsAreHandedFromThreadToThread) {
  // Each round every thread takes what its neighbour made, changes it and passes it on.
  std::array<std::unique_ptr<DICOMObject>, kThreads> objects;
  for (std::uint32_t number = 0; number < kThreads; ++number) objects[number] = Sample(number);
  for (std::size_t round = 0; round < 20; ++round) {
    OnAllThreads([&](int number) {
      auto& mine = objects[(static_cast<std::size_t>(number) + round) % kThreads];
      std::unique_ptr<DICOMObject> copy(mine->Clone(true));
      mine = std::move(copy);
      mine->Push(
          NewVR(MakeTagKey(0x7FE0, 0x0010), Pattern(1000, static_cast<std::uint32_t>(round))));
    });
  }
  for (std::uint32_t number = 0; number < kThreads; ++number) {
    EXPECT_EQ(test::ValueOf(*objects[number]->GetVR(0x0009, 0x1010)), Pattern(48, number));
    EXPECT_EQ(test::ValueOf(*objects[number]->GetVR(0x7FE0, 0x0010)), Pattern(1000, 19));
  }
}

TEST(ObjectThreads, AnObjectOutlivesTheThreadThatMadeIt) {
  std::unique_ptr<DICOMObject> object;
  std::thread([&] { object = Sample(3); }).join();
  EXPECT_EQ(Outline(*object), Outline(*Sample(3)));
  std::thread([&] { object.reset(); }).join();
  EXPECT_EQ(object, nullptr);
}

TEST(ObjectThreads, AnObjectThatOutlivesWhatItsThreadKeepsIsDestroyedWhole) {
  static std::atomic<int> died;
  struct Counted : DICOMObject {
    ~Counted() override { ++died; }
  };
  died = 0;
  std::thread([] {
    // Made before anything is kept, so it goes after that. It holds as many elements as a thread keeps an array for.
    static thread_local DICOMObject late;
    late.Push(NewSequence(1, {new Counted, new Counted}));
    for (TagKey key = 2; key < 300; ++key) late.Push(NewVR(key, Pattern(40)));
    // Makes the thread keep something.
    DICOMObject early;
    for (TagKey key = 2; key < 100; ++key) early.Push(NewVR(key, Pattern(40)));
    early.Reset();
    EXPECT_EQ(died, 0);
  }).join();
  EXPECT_EQ(died, 2);
}

/// In bytes: the process's whole address space, and how much of it is in memory.
struct MemoryOfProcess {
  std::size_t mapped = 0;
  std::size_t resident = 0;
};

MemoryOfProcess MeasureMemory() {
  MemoryOfProcess pages;
  std::ifstream("/proc/self/statm") >> pages.mapped >> pages.resident;
  const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return {pages.mapped * pageSize, pages.resident * pageSize};
}

/// By how many bytes the process grows over `rounds` of `round`, when some have run already. Under a sanitizer, which has its own
/// memory for what it watches, the bound of a few rounds says nothing, and what they do is looked at all the same.
template <class Round>
std::size_t GrowthOver(int rounds, Round round,
                       std::size_t MemoryOfProcess::*kind = &MemoryOfProcess::resident) {
  for (int warmUp = 0; warmUp < 20; ++warmUp) round();
  const std::size_t before = MeasureMemory().*kind;
  for (int times = 0; times < Repetitions(rounds); ++times) round();
  const std::size_t after = MeasureMemory().*kind;
  return after > before ? after - before : 0;
}

void FillWithEmptyElements(DICOMObject& object, TagKey count) {
  for (TagKey key = 0; key < count; ++key) {
    object.Push(new VR(GroupOf(key), ElementOf(key), 0, nullptr));
  }
}

// Records lost in any of these ways would be more than 400 MB, at no less than 80 bytes each. The address sanitizer itself
// holds 256 MB of freed blocks back.
static_assert(sizeof(VR) >= 80);
constexpr std::size_t kAllowedGrowth = std::size_t{320} << 20;

TEST(ObjectThreads, MemoryOfObjectsThatOtherThreadsDestroyIsUsedAgain) {
  // 3,000 elements a round.
  EXPECT_LT(GrowthOver(2500,
                       [] {
                         DICOMObject object;
                         FillWithEmptyElements(object, 3000);
                         std::thread([&] { object.Reset(); }).join();
                       }),
            kAllowedGrowth);
}

TEST(ObjectThreads, MemoryOfLargeObjectsThatOtherThreadsDestroyIsUsedAgain) {
  // More than a thread keeps in one list of 4096, of which it keeps two.
  EXPECT_LT(GrowthOver(1500,
                       [] {
                         DICOMObject object;
                         FillWithEmptyElements(object, 9000);
                         std::thread([&] { object.Reset(); }).join();
                       }),
            kAllowedGrowth);
}

TEST(ObjectThreads, MemoryOfLargeObjectsOfOneThreadIsUsedAgain) {
  EXPECT_LT(GrowthOver(1500,
                       [] {
                         DICOMObject object;
                         FillWithEmptyElements(object, 9000);
                       }),
            kAllowedGrowth);
}

TEST(ObjectThreads, MemoryThatSeveralThreadsFreedBeforeItWasAskedForIsAllUsedAgain) {
  // 9,000 elements a round, if only what one of four threads freed were found again.
  EXPECT_LT(GrowthOver(600,
                       [] {
                         std::array<DICOMObject, 4> objects;
                         for (DICOMObject& object : objects) FillWithEmptyElements(object, 3000);
                         for (DICOMObject& object : objects) {
                           std::thread([&] { object.Reset(); }).join();
                         }
                       }),
            kAllowedGrowth);
}

/// What the process grows by when thread after thread makes one element for this one.
std::size_t GrowthByElementsOfThreadsThatEnd() {
  return GrowthOver(
      16000,
      [] {
        std::unique_ptr<VR> made;
        std::thread([&] { made = std::make_unique<VR>(); }).join();
      },
      &MemoryOfProcess::mapped);
}

// A thread takes memory for 256 elements for its first one and uses little of it: 20 KiB at least. In a process of its own, where no
// test before this one has left free records.
TEST(ObjectThreadsDeathTest, MemoryThatAThreadTookAndDidNotUseIsUsedByOthers) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(GrowthByElementsOfThreadsThatEnd() < kAllowedGrowth ? 0 : 1),
              testing::ExitedWithCode(0), "");
}

/// What 64 threads take that each hold 60 elements at the same time.
std::ptrdiff_t HeapOfManyThreadsWithFewElements() {
  constexpr int kMany = 64;
  std::counting_semaphore<kMany> filled(0);
  std::counting_semaphore<kMany> mayEnd(0);
  std::vector<std::thread> threads;
  const std::ptrdiff_t before = test::HeapInUse();
  for (int count = 0; count < kMany; ++count) {
    threads.emplace_back([&] {
      DICOMObject object;
      FillWithEmptyElements(object, 60);
      filled.release();
      mayEnd.acquire();
    });
  }
  for (int count = 0; count < kMany; ++count) filled.acquire();
  const std::ptrdiff_t taken = test::HeapInUse() - before;
  mayEnd.release(kMany);
  for (std::thread& thread : threads) thread.join();
  return taken;
}

// Their elements take 64 * 60 * 160 bytes at most, and what is kept for further ones as much as 64 KiB a thread.
TEST(ObjectThreadsDeathTest, ManyThreadsWithFewElementsEachTakeLittle) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  constexpr std::ptrdiff_t kMost = 64 * (60 * 160 + (64 << 10));
  EXPECT_EXIT(std::exit(HeapOfManyThreadsWithFewElements() < kMost ? 0 : 1),
              testing::ExitedWithCode(0), "");
}

/// What the process grows by in this way where the system has no way left to see threads off.
std::size_t GrowthWithoutAKey() {
  pthread_key_t key = 0;
  while (::pthread_key_create(&key, nullptr) == 0) {
  }
  return GrowthByElementsOfThreadsThatEnd();
}

TEST(ObjectThreadsDeathTest, WithoutAWayToSeeThreadsOffNothingIsKeptForThem) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(GrowthWithoutAKey() < kAllowedGrowth ? 0 : 1), testing::ExitedWithCode(0),
              "");
}

TEST(ObjectThreads, MemoryOfObjectsDestroyedAtTheVeryEndOfAThreadIsUsedAgain) {
  // 3,000 elements a round.
  EXPECT_LT(GrowthOver(2500,
                       [] {
                         std::thread([] {
                           // Made before the first element, so it goes when the thread has handed its free records on.
                           static thread_local std::unique_ptr<DICOMObject> late;
                           late = std::make_unique<DICOMObject>();
                           FillWithEmptyElements(*late, 3000);
                         }).join();
                       }),
            kAllowedGrowth);
}

/// Ends a thread that holds `object` by a key of the system's own, whose destructor frees it after those of all objects of the
/// thread.
void DestroyByKey(DICOMObject* object) {
  static const pthread_key_t key = [] {
    pthread_key_t made = 0;
    ::pthread_key_create(&made, [](void* held) { delete static_cast<DICOMObject*>(held); });
    return made;
  }();
  std::thread([object] { ::pthread_setspecific(key, object); }).join();
}

TEST(ObjectThreads, MemoryOfObjectsThatAKeyDestroysIsUsedAgain) {
  // 3,000 elements a round; the thread itself uses none.
  EXPECT_LT(GrowthOver(2500,
                       [] {
                         auto object = std::make_unique<DICOMObject>();
                         FillWithEmptyElements(*object, 3000);
                         DestroyByKey(object.release());
                       }),
            kAllowedGrowth);
}

TEST(ObjectThreads, ListsOfObjectsThatAKeyDestroysAreNotKeptForNobody) {
  // 900 entries of 16 bytes in an array of 1024, which a thread would keep: 400 MB.
  EXPECT_LT(GrowthOver(25000,
                       [] {
                         auto object = std::make_unique<DICOMObject>();
                         FillWithEmptyElements(*object, 900);
                         DestroyByKey(object.release());
                       }),
            kAllowedGrowth);
}

TEST(ObjectThreads, MemoryTakenAtTheVeryEndOfAThreadIsUsedAgain) {
  struct MakesLate {
    ~MakesLate() { delete new VR; }
  };
  EXPECT_LT(GrowthOver(
                800,
                [] {
                  std::thread([] {
                    static thread_local MakesLate late;
                    static_cast<void>(&late);
                    delete new VR;
                  }).join();
                },
                &MemoryOfProcess::mapped),
            kAllowedGrowth);
}

TEST(ObjectThreads, ElementsMadeAtTheVeryEndOfAThreadShareNoMemoryWithOthers) {
  static std::vector<std::unique_ptr<VR>> madeLate;
  struct MakesLate {
    ~MakesLate() {
      for (int times = 0; times < 100; ++times) madeLate.push_back(std::make_unique<VR>());
    }
  };
  std::thread([] {
    // Made before the first element, so it goes when the thread has handed its free records on.
    static thread_local MakesLate late;
    static_cast<void>(&late);
    std::vector<std::unique_ptr<VR>> early(5000);
    for (auto& vr : early) vr = std::make_unique<VR>();
  }).join();
  ASSERT_EQ(madeLate.size(), 100u);
  for (const auto& vr : madeLate) vr->Length = 7;
  std::vector<std::unique_ptr<VR>> others(20000);
  for (auto& vr : others) {
    vr = std::make_unique<VR>();
    vr->Length = 8;
  }
  for (const auto& vr : madeLate) EXPECT_EQ(vr->Length, 7u);
  madeLate.clear();
}

TEST(ObjectThreads, AllThreadsReadOneFileThroughStreamsOfTheirOwn) {
  const test::TempFolder folder;
  const std::string path = folder.File("file");
  test::WriteBytes(path, Pattern(100000));
  OnAllThreads([&](int number) {
    for (int round = 0; round < 10; ++round) {
      FileBuffer buffer;
      ASSERT_TRUE(buffer.OpenForRead(path.c_str()));
      ASSERT_TRUE(buffer.Seek(static_cast<std::uint64_t>(number) * 1000));
      Bytes bytes(30000);
      ASSERT_EQ(buffer.Read(bytes.data(), 30000), 1);
      ASSERT_EQ(bytes, Pattern(30000, static_cast<std::uint32_t>(number) * 1000 + 1));
    }
  });
}

TEST(ObjectThreads, ObjectsAreMadeInAChildOfForkWhateverOtherThreadsDo) {
  if (test::kInstrumented) GTEST_SKIP() << test::kForkUnderSanitizer;
  // More elements than a thread keeps for itself, so that they come from what all share and go there again.
  const int stuck = test::FirstStuckChild(100, [] {
    std::array<std::unique_ptr<VR>, 20000> elements;
    for (auto& element : elements) element = std::make_unique<VR>();
  });
  EXPECT_EQ(stuck, -1);
}

/// The memory of records is given back as when the library is unloaded, while another thread is amid a fork.
int FreeAmidAFork() {
  ::alarm(20);
  std::binary_semaphore begun{0};
  std::binary_semaphore end{0};
  std::thread forking([&] {
    forkLocks.blocks.LockForFork();
    begun.release();
    end.acquire();
    forkLocks.blocks.UnlockAfterFork();
  });
  begun.acquire();
  FreeVrBlocks();
  end.release();
  forking.join();
  return std::make_unique<VR>(0x0010, 0x0010, 4, true)->Length == 4 ? 0 : 1;
}

TEST(ObjectThreads, ALibraryThatIsUnloadedWaitsForNoFork) {
  EXPECT_EQ(test::RunInChild(&FreeAmidAFork), 0);
}

}  // namespace
}  // namespace tessaret
