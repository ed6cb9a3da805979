// What objects allocate, free and do without memory.
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/dicom_object.h"
#include "core/element_map.h"
#include "core/vr_group_pqueue.h"
#include "object_maker.h"
#include "support/allocation_failure.h"

namespace tessaret {
namespace {

using test::AllocationFailure;
using test::AllocationWatch;
using test::Bytes;
using test::KeysOf;
using test::NewBytes;
using test::NewNest;
using test::NewObject;
using test::NewSequence;
using test::NewVR;
using test::Outline;
using test::Pattern;

constexpr TagKey kTag = MakeTagKey(0x0010, 0x0020);
constexpr TagKey kInner = MakeTagKey(0x0008, 0x0100);

// Records may come from a pool and a thread may keep a block for its next object, so a count is taken when both are
// warm, and a handful of blocks is no leak.
constexpr std::int64_t kKept = 2;

/// Runs `attempt` with its first allocation failing, then its second and so on until it meets no failure, and
/// `check(failed)` after each, with memory again. How many allocations failed.
template <class Attempt, class Check>
std::uint64_t FailEach(Attempt attempt, Check check) {
  for (std::uint64_t nth = 1;; ++nth) {
    bool failed = false;
    {
      const AllocationFailure failure(nth);
      attempt();
      failed = failure.Happened();
    }
    check(failed);
    if (!failed || ::testing::Test::HasFatalFailure()) return nth - 1;
  }
}

/// What `work` leaves allocated when it is done for the second time.
template <class Work>
std::int64_t LeftAllocatedBy(Work work) {
  work();
  const AllocationWatch watch;
  work();
  return watch.Outstanding();
}

std::unique_ptr<DICOMObject> Sample() {
  auto object = std::make_unique<DICOMObject>();
  for (std::uint16_t at = 0; at < 20; ++at) {
    object->Push(
        NewVR(MakeTagKey(0x0009, static_cast<std::uint16_t>(0x1000 + at)), Pattern(100u + at, at)));
  }
  object->Push(NewSequence(
      kTag,
      {NewObject({NewVR(kInner, Pattern(70)),
                  NewSequence(kTag, {NewObject({NewVR(kInner, Pattern(80))}), NewObject({})})}),
       NewObject({NewVR(kTag, Pattern(90))})}));
  return object;
}

TEST(ObjectMemory, ACloneWithoutMemoryIsNullAndLeavesTheSource) {
  for (const bool deep : {true, false}) {
    const auto source = Sample();
    const std::string outline = Outline(*source);
    const AllocationWatch watch;
    {
      std::unique_ptr<DICOMObject> clone;
      const auto failures = FailEach([&] { clone.reset(source->Clone(deep)); },
                                     [&](bool failed) {
                                       ASSERT_EQ(clone == nullptr, failed);
                                       ASSERT_EQ(Outline(*source), outline);
                                     });
      EXPECT_EQ(Outline(*clone), outline);
      EXPECT_GT(failures, deep ? 24u : 4u);
    }
    EXPECT_LE(watch.Outstanding(), kKept);
  }
}

TEST(ObjectMemory, ACloneOfAnElementWithoutMemoryIsNullAndLeavesTheSource) {
  const auto object = Sample();
  const VR& source = *object->GetVR(GroupOf(kTag), ElementOf(kTag));
  const std::string outline = Outline(*object);
  const AllocationWatch watch;
  {
    std::unique_ptr<VR> clone;
    FailEach([&] { clone.reset(source.Clone(true)); },
             [&](bool failed) { ASSERT_EQ(clone == nullptr, failed); });
    EXPECT_EQ(Outline(*clone->GetItem(0)),
              Outline(*object->GetVR(GroupOf(kTag), ElementOf(kTag))->GetItem(0)));
  }
  EXPECT_EQ(Outline(*object), outline);
  EXPECT_LE(watch.Outstanding(), kKept);
}

TEST(ObjectMemory, ACopyOfAnElementWithoutMemoryThrowsAndLeavesNothingBehind) {
  const auto object = Sample();
  const VR& source = *object->GetVR(GroupOf(kTag), ElementOf(kTag));
  const AllocationWatch watch;
  bool threw = false;
  FailEach(
      [&] {
        threw = false;
        try {
          const VR copy(source, true);
        } catch (const std::bad_alloc&) {
          threw = true;
        }
      },
      [&](bool failed) { ASSERT_EQ(threw, failed); });
  EXPECT_LE(watch.Outstanding(), kKept);
}

TEST(ObjectMemory, CopyFromWithoutMemoryIsFalseWithWholeElementsOnly) {
  const auto source = Sample();
  std::unique_ptr<DICOMObject> target;
  const auto renew = [&] { target.reset(NewObject({NewVR(kInner, "kept"), NewVR(kTag, "old")})); };
  const AllocationWatch watch;
  {
    bool copied = false;
    renew();
    FailEach([&] { copied = target->CopyFrom(*source); },
             [&](bool failed) {
               ASSERT_EQ(copied, !failed);
               ASSERT_EQ(test::TextOf(*target->GetVR(GroupOf(kInner), ElementOf(kInner))), "kept");
               for (VR* vr = target->GetFirstVR(); vr != nullptr; vr = target->GetNextVR(vr)) {
                 VR* from = source->GetVR(vr->Group, vr->Element);
                 if (from == nullptr) continue;
                 const bool old = vr->Key() == kTag && vr->ItemCount() == 0;
                 ASSERT_EQ(test::ValueOf(*vr), old ? test::BytesOf("old") : test::ValueOf(*from));
                 ASSERT_EQ(vr->ItemCount(), old ? 0u : from->ItemCount());
               }
               if (failed) renew();
             });
    EXPECT_EQ(KeysOf(*target).size(), 22u);
    target.reset();
  }
  EXPECT_LE(watch.Outstanding(), kKept);
}

TEST(ObjectMemory, APushWithoutMemoryThrowsAndLeavesElementAndObject) {
  DICOMObject object;
  std::uint64_t failures = 0;
  std::vector<TagKey> keys;
  // In order, then before all others, which at last turns the array into a tree.
  for (TagKey key = 10000; key < 10600; ++key) keys.push_back(key);
  for (TagKey key = 100; key > 0; --key) keys.push_back(key);
  for (const TagKey key : keys) {
    std::unique_ptr<VR> vr(NewVR(key, "text"));
    const VR* last = object.LastPushedVR;
    const VR* first = object.GetFirstVR();
    object.Iterating = 7;
    failures += FailEach(
        [&] {
          try {
            if (vr && object.Push(vr.get())) vr.release();
          } catch (const std::bad_alloc&) {
          }
        },
        [&](bool failed) {
          ASSERT_EQ(vr != nullptr, failed);
          if (!failed) return;
          ASSERT_EQ(object.LastPushedVR, last);
          ASSERT_EQ(object.GetFirstVR(), first);
          ASSERT_EQ(object.GetVR(GroupOf(key), ElementOf(key)), nullptr);
          ASSERT_EQ(object.Iterating, 7u);
        });
  }
  EXPECT_GT(failures, 100u);
  EXPECT_EQ(KeysOf(object).size(), keys.size());
}

TEST(ObjectMemory, ReplacingAnElementNeedsNoMemory) {
  DICOMObject object;
  object.Push(NewVR(kTag, "first"));
  VR* second = NewVR(kTag, "second");
  const AllocationWatch watch;
  object.Push(second);
  EXPECT_EQ(watch.Count(), 0u);
}

TEST(ObjectMemory, PushingATagTwiceFreesTheFirst) {
  DICOMObject object;
  object.Push(NewVR(kTag, Pattern(100)));
  EXPECT_EQ(LeftAllocatedBy([&] {
              object.Push(NewSequence(kTag, {NewObject({NewVR(kInner, Pattern(100))})}));
              object.Push(NewVR(kTag, Pattern(100)));
            }),
            0);
}

TEST(ObjectMemory, AnItemThatCannotBeAddedStaysWithTheCaller) {
  DICOMObject object;
  object.Push(NewVR(kTag));
  auto item = std::make_unique<DICOMObject>();
  item->SequenceBytes = 5;
  bool pushed = false;
  const auto failures = FailEach([&] { pushed = object.Push(item.get()); },
                                 [&](bool failed) {
                                   ASSERT_EQ(pushed, !failed);
                                   if (!failed) return;
                                   // It is no sequence yet.
                                   ASSERT_EQ(object.LastPushedVR->Items, nullptr);
                                   ASSERT_EQ(object.SequenceBytes, 0u);
                                 });
  EXPECT_EQ(failures, 2u);
  EXPECT_EQ(object.LastPushedVR->GetItem(0), item.get());
  EXPECT_EQ(object.SequenceBytes, 37u);
  item.release();

  auto second = std::make_unique<DICOMObject>();
  {
    const AllocationFailure failure(1);
    EXPECT_FALSE(object.LastPushedVR->AddItem(second.get()));
  }
  EXPECT_EQ(object.LastPushedVR->ItemCount(), 1u);
}

TEST(ObjectMemory, AMoveWithoutMemoryLosesNothing) {
  const AllocationWatch watch;
  {
    std::unique_ptr<VR> source;
    std::unique_ptr<DICOMObject> target;
    const auto renew = [&] {
      source.reset(NewSequence(
          kTag, {NewObject({NewVR(kInner, "a")}), NewObject({NewVR(kInner, "b")}), NewObject({})}));
      source->Data = NewBytes(Pattern(40));
      source->Length = 40;
      target = std::make_unique<DICOMObject>();
    };
    renew();
    bool moved = false;
    const auto failures = FailEach([&] { moved = source->MoveToObject(target.get()); },
                                   [&](bool failed) {
                                     ASSERT_TRUE(moved || failed);
                                     VR* holder = moved ? target->GetFirstVR() : source.get();
                                     ASSERT_EQ(test::ValueOf(*holder), Pattern(40));
                                     ASSERT_EQ(holder->OwnsData, 1u);
                                     ASSERT_EQ(holder->ItemCount(), 3u);
                                     ASSERT_EQ(Outline(*holder->GetItem(0)), "8.256=a");
                                     ASSERT_EQ(Outline(*holder->GetItem(1)), "8.256=b");
                                     ASSERT_EQ(target->IsEmpty(), !moved);
                                     if (moved) {
                                       ASSERT_EQ(source->Items, nullptr);
                                       ASSERT_EQ(source->Data, nullptr);
                                     }
                                     if (failed) renew();
                                   });
    EXPECT_GT(failures, 3u);
  }
  EXPECT_LE(watch.Outstanding(), kKept);
}

TEST(ObjectMemory, AnElementWithoutMemoryForItsBytesIsNotMade) {
  const AllocationWatch watch;
  {
    const AllocationFailure failure(1);
    EXPECT_THROW(VR(0x0010, 0x0020, 1000, true), std::bad_alloc);
  }
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(ObjectMemory, ReplaceFromNeedsNoMemoryAndFreesWhatWasThere) {
  EXPECT_EQ(LeftAllocatedBy([] {
              VR target(0x0010, 0x0020, 40, NewBytes(Pattern(40)));
              target.AddItem(NewObject({NewVR(kInner, Pattern(50))}));
              VR source(0x0010, 0x0020, 60, NewBytes(Pattern(60)));
              source.AddItem(NewObject({}));
              const AllocationWatch watch;
              target.ReplaceFrom(&source);
              EXPECT_EQ(watch.Count(), 0u);
            }),
            0);
}

TEST(ObjectMemory, ReplaceFromWithoutMemoryToLookBelowTheSourceChangesNothing) {
  VR target(0x0010, 0x0020, 40, NewBytes(Pattern(40)));
  const auto nest = NewNest(50);
  const std::unique_ptr<VR> source(NewSequence(kTag, {nest->Clone(true), NewObject({})}));
  bool replaced = false;
  const auto failures = FailEach([&] { replaced = target.ReplaceFrom(source.get()); },
                                 [&](bool failed) {
                                   ASSERT_EQ(replaced, !failed);
                                   if (!failed) return;
                                   ASSERT_EQ(test::ValueOf(target), Pattern(40));
                                   ASSERT_EQ(source->ItemCount(), 2u);
                                   ASSERT_EQ(source->Moved, 0u);
                                 });
  EXPECT_GT(failures, 0u);
  EXPECT_EQ(target.ItemCount(), 2u);
}

TEST(ObjectMemory, ReplaceFromAShallowCopyWithoutMemoryChangesNothing) {
  const std::unique_ptr<VR> target(
      NewSequence(kTag, {NewObject({NewVR(kInner, Pattern(70)),
                                    NewSequence(kTag, {NewObject({NewVR(kInner, Pattern(80))})})}),
                         NewObject({})}));
  std::unique_ptr<VR> source(target->Clone(false));
  const ItemArray* items = source->Items;
  const VR* held = target->GetItem(0)->GetFirstVR();
  bool replaced = false;
  const auto failures = FailEach([&] { replaced = target->ReplaceFrom(source.get()); },
                                 [&](bool failed) {
                                   ASSERT_EQ(replaced, !failed);
                                   if (!failed) return;
                                   ASSERT_EQ(source->Items, items);
                                   ASSERT_EQ(source->Moved, 1u);
                                   ASSERT_EQ(held->OwnsData, 1u);
                                   ASSERT_EQ(source->GetItem(0)->GetFirstVR()->OwnsData, 0u);
                                 });
  // For the list of what borrows, for two of what holds, and for the way there.
  EXPECT_GE(failures, 3u);
  source.reset();
  EXPECT_EQ(target->Items, items);
  EXPECT_EQ(test::ValueOf(*target->GetItem(0)->GetFirstVR()), Pattern(70));
}

TEST(ObjectMemory, ACopyThatIsRefusedIsFreed) {
  class Refuser : public DICOMObject {
   public:
    using DICOMObject::Push;
    bool Push(VR*) override { return false; }
  };
  const auto source = Sample();
  EXPECT_EQ(LeftAllocatedBy([&] {
              Refuser refuser;
              EXPECT_FALSE(refuser.CopyFrom(*source));
              DICOMObject forwarder;
              forwarder.PushTarget = &refuser;
              EXPECT_FALSE(forwarder.CopyFrom(*source));
            }),
            0);
}

TEST(ObjectMemory, ResetAndDeathFreeOwnedBytesAndAllItems) {
  EXPECT_EQ(LeftAllocatedBy([] {
              VR vr(0x0010, 0x0020, 40, true);
              vr.AddItem(NewObject({NewVR(kInner, Pattern(50))}));
              vr.Reset();
              VR other(0x0010, 0x0020, 40, true);
              other.AddItem(NewObject({NewVR(kInner, Pattern(50))}));
              delete other.PopFirstItem();
              other.AddItem(NewObject({NewVR(kInner, Pattern(50))}));
            }),
            0);
}

TEST(ObjectMemory, BorrowedBytesAreNotFreed) {
  const std::unique_ptr<std::uint8_t[]> bytes(NewBytes(Pattern(40)));
  const AllocationWatch watch;
  {
    VR byDeath(0x0010, 0x0020, 40, bytes.get(), false);
    VR byReset(0x0010, 0x0020, 40, bytes.get(), false);
    byReset.Reset();
    VR byReplacement(0x0010, 0x0020, 40, bytes.get(), false);
    VR source(0x0010, 0x0020, 0, nullptr);
    byReplacement.ReplaceFrom(&source);
  }
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(ObjectMemory, AnObjectFreesAllThatItHolds) {
  EXPECT_EQ(LeftAllocatedBy([] {
              const auto sample = Sample();
              const std::unique_ptr<DICOMObject> deep(sample->Clone(true));
              const std::unique_ptr<DICOMObject> shallow(sample->Clone(false));
              deep->Reset();
              delete shallow->Pop();
              delete shallow->Remove(GroupOf(kTag), ElementOf(kTag));
            }),
            0);
}

TEST(ObjectMemory, DestroyingADeepNestNeedsNoMemory) {
  NewNest(1000).reset();
  auto nest = NewNest(1000);
  const AllocationWatch watch;
  nest.reset();
  EXPECT_EQ(watch.Count(), 0u);
}

TEST(ObjectMemory, AShallowCloneDoesNotCopyPixels) {
  constexpr std::uint32_t kPixels = 64u << 20;
  DICOMObject object;
  object.Push(new VR(0x7FE0, 0x0010, kPixels, true));
  const AllocationWatch watch;
  const std::unique_ptr<DICOMObject> clone(object.Clone(false));
  EXPECT_EQ(clone->GetFirstVR()->Length, kPixels);
  // A pool may take memory for its records.
  EXPECT_LE(watch.LargestRequest(), 1u << 20);
}

TEST(ObjectMemory, AMapWithoutMemoryStaysAsItWas) {
  VR vr;
  ElementMap map;
  for (TagKey key = 1000; key < 2000; ++key) *map.FindOrInsert(key) = &vr;
  map.PopFirst();
  // The turn to a tree fails at each of its allocations.
  bool inserted = false;
  const auto failures = FailEach(
      [&] {
        try {
          *map.FindOrInsert(5) = &vr;
          inserted = true;
        } catch (const std::bad_alloc&) {
        }
      },
      [&](bool failed) {
        ASSERT_EQ(inserted, !failed);
        ASSERT_EQ(map.Size(), failed ? 999u : 1000u);
        std::size_t visited = 0;
        map.ForEach([&](const VR&) { ++visited; });
        ASSERT_EQ(visited, map.Size());
      });
  EXPECT_GT(failures, 999u);
  EXPECT_EQ(map.NextAfter(5), &vr);
}

TEST(ObjectMemory, RemovalNeverFailsForWantOfMemory) {
  constexpr TagKey kCount = 20000;
  VR vr;
  ElementMap map;
  for (TagKey key = 0; key < kCount; ++key) *map.FindOrInsert(key) = &vr;
  for (TagKey key = 1; key < 40; key += 2) {
    const AllocationFailure failure(key);
    ASSERT_EQ(map.Remove(key), &vr);
    ASSERT_EQ(map.Find(key), nullptr);
    ASSERT_EQ(map.Find(key + 1), &vr);
  }
  EXPECT_EQ(map.Size(), kCount - 20);
}

TEST(ObjectMemory, ElementsThatComeAndGoNeedNoMoreMemoryInTheLongRun) {
  VR vr;
  ElementMap map;
  *map.FindOrInsert(0) = &vr;
  const AllocationWatch watch;
  for (TagKey key = 1; key < 1000000; ++key) {
    *map.FindOrInsert(key) = &vr;
    ASSERT_EQ(map.PopFirst(), &vr);
  }
  EXPECT_LE(watch.LargestRequest(), 1u << 20);
}

/// Fills a map with 5000 entries, takes the first 100 out, sets the one at `lastKey` and clears it.
void ExpectAClearedMapLeavesNothing(TagKey lastKey) {
  VR vr;
  ElementMap map;
  const AllocationWatch watch;
  for (TagKey key = 1; key <= 5000; ++key) *map.FindOrInsert(key) = &vr;
  for (int times = 0; times < 100; ++times) map.PopFirst();
  *map.FindOrInsert(lastKey) = &vr;
  EXPECT_GT(watch.Outstanding(), 0);
  map.Clear();
  EXPECT_EQ(watch.Outstanding(), 0);
}

TEST(ObjectMemory, AClearedMapGivesItsMemoryBackAtOnce) {
  // An array that no thread keeps, in use to a part, and a tree. Each in a thread that keeps nothing yet.
  for (const TagKey lastKey : {TagKey{1000}, TagKey{0}}) {
    std::thread([lastKey] { ExpectAClearedMapLeavesNothing(lastKey); }).join();
  }
}

TEST(ObjectMemory, ShortParsedValuesCostNoAllocation) {
  VR vr(0x0010, 0x0020, 32, nullptr);
  VR longer(0x0010, 0x0020, 33, nullptr);
  const AllocationWatch watch;
  vr.AllocateValue();
  EXPECT_EQ(watch.Count(), 0u);
  longer.AllocateValue();
  EXPECT_EQ(watch.Count(), 1u);
}

TEST(ObjectMemory, TakeDataWithoutMemoryThrowsAndChangesNothing) {
  std::uint8_t bytes[] = {1, 2, 3};
  VR borrower(0x0010, 0x0020, 3, bytes, false);
  {
    const AllocationFailure failure(1);
    EXPECT_THROW(borrower.TakeData(), std::bad_alloc);
  }
  EXPECT_EQ(borrower.Data, bytes);
  EXPECT_EQ(borrower.Length, 3u);
}

TEST(ObjectMemory, AGroupQueueWithoutMemoryRefusesAndKeepsWhatItHas) {
  VRGroupPQueue queue(0x0010);
  VR first(0x0010, 0x0010, 4, nullptr);
  VR second(0x0010, 0x0005, 6, nullptr);
  ASSERT_TRUE(queue.Push(&first));
  ASSERT_TRUE(queue.MakeGroupLength());
  const VR* made = queue.GroupLengthVR.get();
  {
    const AllocationFailure failure(1);
    EXPECT_FALSE(queue.Push(&second));
  }
  EXPECT_EQ(queue.Size, 12u);
  EXPECT_EQ(queue.ListLength, 1u);
  bool again = false;
  FailEach([&] { again = queue.MakeGroupLength(); },
           [&](bool failed) {
             ASSERT_EQ(again, !failed);
             if (failed) {
               ASSERT_EQ(queue.GroupLengthVR.get(), made);
             }
           });
  EXPECT_EQ(queue.Pop(), &first);
}

}  // namespace
}  // namespace tessaret
