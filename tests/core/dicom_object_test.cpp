#include "core/dicom_object.h"

#include <map>
#include <memory>
#include <random>
#include <type_traits>
#include <typeinfo>

#include <gtest/gtest.h>

#include "object_maker.h"
#include "support/build_kind.h"
#include "support/small_stack.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::IntactLevels;
using test::KeysOf;
using test::NewBytes;
using test::NewNest;
using test::NewObject;
using test::NewSequence;
using test::NewVR;
using test::Outline;
using test::Repetitions;
using test::RunOnStack;
using test::TextOf;

constexpr TagKey kLow = MakeTagKey(0x0008, 0x0005);
constexpr TagKey kMiddle = MakeTagKey(0x0008, 0x0018);
constexpr TagKey kHigh = MakeTagKey(0x0010, 0x0010);
constexpr TagKey kTop = MakeTagKey(0x7FE0, 0x0010);

/// The popped element's key, which goes with it.
TagKey PopKey(DICOMObject& object) {
  const std::unique_ptr<VR> vr(object.Pop());
  return vr ? vr->Key() : 0;
}

TEST(DICOMObject, StartsEmpty) {
  DICOMObject object;
  EXPECT_TRUE(object.IsEmpty());
  EXPECT_EQ(object.LastPushedVR, nullptr);
  EXPECT_EQ(object.SequenceBytes, 0u);
  EXPECT_EQ(object.Iterating, 0u);
  EXPECT_EQ(object.PushTarget, nullptr);
  EXPECT_EQ(object.GetFirstVR(), nullptr);
  EXPECT_EQ(object.GetVR(0x0010, 0x0010), nullptr);
  EXPECT_EQ(object.Pop(), nullptr);
  EXPECT_EQ(object.Remove(0x0010, 0x0010), nullptr);
  EXPECT_EQ(object.GetUINT16(0x0010, 0x0010), 0);
}

TEST(DICOMObject, PushTakesTheElementAndRemembersItAsTheLast) {
  DICOMObject object;
  VR* low = NewVR(kLow, "low");
  VR* high = NewVR(kHigh, "high");
  EXPECT_TRUE(object.Push(high));
  EXPECT_EQ(object.LastPushedVR, high);
  EXPECT_TRUE(object.Push(low));
  EXPECT_EQ(object.LastPushedVR, low);
  EXPECT_FALSE(object.IsEmpty());
  EXPECT_EQ(object.GetVR(0x0008, 0x0005), low);
  EXPECT_EQ(object.GetVR(0x0010, 0x0010), high);
}

TEST(DICOMObject, OrdersByTheTagAsOneUnsignedNumberWhateverTheOrderOfPushes) {
  // Private elements lie among the public ones; groups from 0x8000 on are not negative.
  const std::vector<TagKey> ascending = {0x00000000, 0x00020000, 0x00020010, 0x0008FFFF,
                                         0x00090000, 0x00091001, 0x00100010, 0x7FE00010,
                                         0x80000000, 0xFFFEE000, 0xFFFFFFFF};
  std::vector<TagKey> keys = ascending;
  std::mt19937 random(1);
  for (int round = 0; round < 200; ++round) {
    std::shuffle(keys.begin(), keys.end(), random);
    DICOMObject object;
    for (const TagKey key : keys) object.Push(NewVR(key));
    ASSERT_EQ(KeysOf(object), ascending);
    for (const TagKey key : ascending) {
      const std::unique_ptr<VR> vr(object.Pop());
      ASSERT_TRUE(vr);
      ASSERT_EQ(vr->Key(), key);
    }
  }
}

TEST(DICOMObject, PushingATagTwiceKeepsTheLast) {
  DICOMObject object;
  object.Push(NewVR(kMiddle, "first"));
  object.Push(NewVR(kHigh, "other"));
  VR* second = NewVR(kMiddle, "second");
  EXPECT_TRUE(object.Push(second));
  EXPECT_EQ(KeysOf(object), (std::vector{kMiddle, kHigh}));
  EXPECT_EQ(object.GetVR(0x0008, 0x0018), second);
  EXPECT_EQ(object.LastPushedVR, second);
  EXPECT_EQ(TextOf(*second), "second");
}

TEST(DICOMObject, PushingTheSameElementTwiceOnlyRemembersItAsTheLast) {
  DICOMObject object;
  VR* first = NewVR(kMiddle, "first");
  object.Push(first);
  object.Push(NewVR(kHigh, "other"));
  EXPECT_TRUE(object.Push(first));
  EXPECT_EQ(object.LastPushedVR, first);
  EXPECT_EQ(Outline(object), "8.24=first 16.16=other");
}

TEST(DICOMObject, PushOfNothingIsRefusedAndChangesNothing) {
  DICOMObject object;
  VR* vr = NewVR(kMiddle);
  object.Push(vr);
  EXPECT_FALSE(object.Push(static_cast<VR*>(nullptr)));
  EXPECT_FALSE(object.Push(static_cast<DICOMObject*>(nullptr)));
  EXPECT_EQ(object.LastPushedVR, vr);
  EXPECT_EQ(vr->Items, nullptr);
  EXPECT_EQ(object.SequenceBytes, 0u);
}

TEST(DICOMObject, AnElementTakenOutOfOneItemMayReplaceTheSequenceAroundIt) {
  DICOMObject object;
  object.Push(NewSequence(kMiddle, {NewObject({NewVR(kMiddle, "inner")})}));
  VR* inner = object.GetFirstVR()->GetItem(0)->Remove(0x0008, 0x0018);
  object.Push(inner);
  EXPECT_EQ(Outline(object), "8.24=inner");
}

// What an item adds to the estimate: 16 for the sequence that it opens, 16 for itself, and its own estimate.
TEST(DICOMObject, PushOfAnItemNestsItIntoTheLastPushedElement) {
  DICOMObject object;
  object.Push(NewVR(kHigh, "high"));
  object.Push(NewVR(kMiddle, ""));
  DICOMObject* first = NewObject({NewVR(kLow, "a")});
  DICOMObject* second = NewObject({NewVR(kLow, "b")});
  second->SequenceBytes = 1000;
  EXPECT_TRUE(object.Push(first));
  EXPECT_EQ(object.SequenceBytes, 32u);
  EXPECT_TRUE(object.Push(second));
  EXPECT_EQ(object.SequenceBytes, 32u + 16u + 1000u);
  object.Push(NewVR(kTop, ""));
  EXPECT_TRUE(object.Push(NewObject({})));
  EXPECT_EQ(object.SequenceBytes, 1048u + 32u);
  EXPECT_EQ(Outline(object), "8.24=[8.5=a][8.5=b] 16.16=high 32736.16=[]");
  EXPECT_EQ(object.GetVR(0x0008, 0x0018)->GetItem(1), second);
}

TEST(DICOMObject, PushOfAnItemFollowsAnElementThatWasPushedAgain) {
  DICOMObject object;
  VR* sequence = NewVR(kMiddle);
  object.Push(sequence);
  object.Push(NewVR(kHigh));
  object.Push(sequence);
  object.Push(NewObject({NewVR(kLow, "a")}));
  EXPECT_EQ(Outline(object), "8.24=[8.5=a] 16.16=");
}

TEST(DICOMObject, PushOfAnItemWithoutALastPushedElementLeavesItWithTheCaller) {
  DICOMObject object;
  const std::unique_ptr<DICOMObject> item(NewObject({NewVR(kLow, "a")}));
  EXPECT_FALSE(object.Push(item.get()));
  EXPECT_EQ(object.SequenceBytes, 0u);
  EXPECT_EQ(Outline(*item), "8.5=a");
}

TEST(DICOMObject, AnElementThatLeftIsNoLongerTheLastPushed) {
  const std::unique_ptr<DICOMObject> item(NewObject({}));
  DICOMObject popped;
  popped.Push(NewVR(kMiddle));
  delete popped.Pop();
  EXPECT_EQ(popped.LastPushedVR, nullptr);
  EXPECT_FALSE(popped.Push(item.get()));

  DICOMObject removed;
  removed.Push(NewVR(kMiddle));
  delete removed.Remove(0x0008, 0x0018);
  EXPECT_EQ(removed.LastPushedVR, nullptr);
  EXPECT_FALSE(removed.Push(item.get()));

  DICOMObject reset;
  reset.Push(NewVR(kMiddle));
  EXPECT_TRUE(reset.Reset());
  EXPECT_EQ(reset.LastPushedVR, nullptr);
  EXPECT_FALSE(reset.Push(item.get()));
}

TEST(DICOMObject, AnotherElementThatLeavesKeepsTheLastPushed) {
  DICOMObject object;
  object.Push(NewVR(kLow));
  object.Push(NewVR(kMiddle));
  VR* last = NewVR(kHigh);
  object.Push(last);
  delete object.Pop();
  EXPECT_EQ(object.LastPushedVR, last);
  delete object.Remove(0x0008, 0x0018);
  EXPECT_EQ(object.LastPushedVR, last);
  EXPECT_EQ(object.Remove(0x0008, 0x0018), nullptr);
  EXPECT_EQ(object.LastPushedVR, last);
}

TEST(DICOMObject, PushForwardsElementsToThePushTargetAndStoresNothing) {
  DICOMObject target;
  DICOMObject source;
  source.PushTarget = &target;
  VR* vr = NewVR(kMiddle, "text");
  delete source.Pop();
  EXPECT_TRUE(source.Push(vr));
  EXPECT_TRUE(source.IsEmpty());
  EXPECT_EQ(source.LastPushedVR, nullptr);
  EXPECT_EQ(source.Iterating, 1u);
  EXPECT_EQ(target.LastPushedVR, vr);
  EXPECT_EQ(Outline(target), "8.24=text");
  // The item still goes by the last element pushed here, and there is none.
  const std::unique_ptr<DICOMObject> item(NewObject({}));
  EXPECT_FALSE(source.Push(item.get()));
}

TEST(DICOMObject, PushForwardsAlongAChainAndAnswersAsItsEndDoes) {
  class Refuser : public DICOMObject {
   public:
    using DICOMObject::Push;
    bool Push(VR*) override { return false; }
  };
  DICOMObject end;
  DICOMObject middle;
  DICOMObject start;
  middle.PushTarget = &end;
  start.PushTarget = &middle;
  EXPECT_TRUE(start.Push(NewVR(kMiddle, "text")));
  EXPECT_EQ(Outline(end), "8.24=text");

  Refuser refuser;
  middle.PushTarget = &refuser;
  const std::unique_ptr<VR> refused(NewVR(kMiddle, "text"));
  EXPECT_FALSE(start.Push(refused.get()));
}

TEST(DICOMObject, TargetsThatLeadInACircleRefuseTheElement) {
  std::unique_ptr<VR> vr(NewVR(kMiddle, "text"));
  vr->Length = 4;
  DICOMObject alone;
  alone.PushTarget = &alone;
  EXPECT_FALSE(alone.Push(vr.get()));
  EXPECT_FALSE(vr->MoveToObject(&alone));
  EXPECT_TRUE(alone.IsEmpty());
  EXPECT_EQ(alone.LastPushedVR, nullptr);

  for (const std::size_t round : {2u, 3u, 4u, 7u}) {
    // One that leads into the circle stands before it.
    std::vector<DICOMObject> objects(round + 1);
    for (std::size_t at = 0; at < round; ++at) objects[at].PushTarget = &objects[at + 1];
    EXPECT_EQ(EndOfForwarding(objects[0]), &objects[round]);
    objects[round].PushTarget = &objects[1];
    EXPECT_EQ(EndOfForwarding(objects[0]), nullptr) << round;
    EXPECT_EQ(EndOfForwarding(objects[1]), nullptr) << round;
    EXPECT_FALSE(objects[0].Push(vr.get()));
    EXPECT_FALSE(vr->MoveToObject(&objects[0]));
    DICOMObject source;
    source.Push(NewVR(kLow, "copied"));
    EXPECT_FALSE(objects[0].CopyFrom(source));
  }
  EXPECT_EQ(TextOf(*vr), "text");
}

TEST(DICOMObject, TheEndOfForwardingIsTheLastOfTheChain) {
  std::vector<DICOMObject> chain(9);
  EXPECT_EQ(EndOfForwarding(chain[0]), &chain[0]);
  for (std::size_t at = 1; at < chain.size(); ++at) {
    chain[at - 1].PushTarget = &chain[at];
    EXPECT_EQ(EndOfForwarding(chain[0]), &chain[at]);
  }
}

TEST(DICOMObject, AnObjectIsNoItemOfItself) {
  DICOMObject object;
  object.Push(NewVR(kMiddle, ""));
  EXPECT_FALSE(object.Push(&object));
  EXPECT_EQ(object.SequenceBytes, 0u);
  EXPECT_EQ(object.LastPushedVR->Items, nullptr);
}

TEST(DICOMObject, PopHandsTheElementsOutFromTheLowestTagOn) {
  DICOMObject object;
  for (const TagKey key : {kHigh, kTop, kLow, kMiddle}) object.Push(NewVR(key));
  EXPECT_EQ(PopKey(object), kLow);
  EXPECT_EQ(object.Iterating, 1u);
  EXPECT_EQ(KeysOf(object), (std::vector{kMiddle, kHigh, kTop}));
  EXPECT_EQ(PopKey(object), kMiddle);
  EXPECT_EQ(PopKey(object), kHigh);
  EXPECT_EQ(PopKey(object), kTop);
  EXPECT_EQ(object.Pop(), nullptr);
  EXPECT_TRUE(object.IsEmpty());
  EXPECT_EQ(object.Pop(), nullptr);
}

TEST(DICOMObject, PopOfAnEmptyObjectBeginsAWalkAllTheSame) {
  DICOMObject object;
  EXPECT_EQ(object.Pop(), nullptr);
  EXPECT_EQ(object.Iterating, 1u);
  object.Push(NewVR(kLow));
  EXPECT_EQ(object.Iterating, 0u);
  EXPECT_EQ(PopKey(object), kLow);
}

TEST(DICOMObject, PushInTheMiddleOfAWalkStartsItAgainAtTheLowestTagThatIsLeft) {
  DICOMObject object;
  for (const TagKey key : {kMiddle, kHigh, kTop}) object.Push(NewVR(key));
  EXPECT_EQ(PopKey(object), kMiddle);
  object.Push(NewVR(kLow));
  EXPECT_EQ(object.Iterating, 0u);
  EXPECT_EQ(PopKey(object), kLow);
  EXPECT_EQ(PopKey(object), kHigh);
  // The same element pushed again, and one that comes behind the walk.
  object.Push(object.GetFirstVR());
  EXPECT_EQ(object.Iterating, 0u);
  object.Push(NewVR(kMiddle));
  EXPECT_EQ(PopKey(object), kMiddle);
  EXPECT_EQ(PopKey(object), kTop);
  EXPECT_EQ(object.Pop(), nullptr);
}

TEST(DICOMObject, PushBehindTheLastInTheMiddleOfAWalkStartsItAgainToo) {
  DICOMObject object;
  for (const TagKey key : {kLow, kMiddle, kHigh}) object.Push(NewVR(key));
  EXPECT_EQ(PopKey(object), kLow);
  EXPECT_EQ(object.Iterating, 1u);
  // There is room for it, so that nothing has to move.
  object.Push(NewVR(kTop));
  EXPECT_EQ(object.Iterating, 0u);
  EXPECT_EQ(PopKey(object), kMiddle);
}

TEST(DICOMObject, RemoveInTheMiddleOfAWalkGoesOnWithTheNextThatIsLeft) {
  DICOMObject object;
  for (const TagKey key : {kLow, kMiddle, kHigh, kTop}) object.Push(NewVR(key));
  EXPECT_EQ(PopKey(object), kLow);
  delete object.Remove(GroupOf(kMiddle), ElementOf(kMiddle));
  EXPECT_EQ(PopKey(object), kHigh);
  delete object.Remove(GroupOf(kTop), ElementOf(kTop));
  EXPECT_EQ(object.Pop(), nullptr);
}

TEST(DICOMObject, APoppedElementBelongsToTheCaller) {
  auto object = std::make_unique<DICOMObject>();
  object->Push(NewSequence(kMiddle, {NewObject({NewVR(kLow, "text")})}));
  const std::unique_ptr<VR> vr(object->Pop());
  object.reset();
  EXPECT_EQ(Outline(*vr->GetItem(0)), "8.5=text");
}

TEST(DICOMObject, ARemovedElementBelongsToTheCaller) {
  auto object = std::make_unique<DICOMObject>();
  object->Push(NewVR(kLow, "low"));
  VR* middle = NewVR(kMiddle, "text");
  object->Push(middle);
  const std::unique_ptr<VR> vr(object->Remove(0x0008, 0x0018));
  EXPECT_EQ(vr.get(), middle);
  EXPECT_EQ(object->GetVR(0x0008, 0x0018), nullptr);
  EXPECT_EQ(KeysOf(*object), std::vector{kLow});
  object.reset();
  EXPECT_EQ(TextOf(*vr), "text");
}

TEST(DICOMObject, ResetEmptiesItAndItCanBeFilledAgain) {
  DICOMObject object;
  object.Push(NewVR(kMiddle, "text"));
  object.Push(NewSequence(kHigh, {NewObject({NewVR(kLow, "nested")})}));
  EXPECT_TRUE(object.Reset());
  EXPECT_TRUE(object.IsEmpty());
  EXPECT_EQ(object.GetFirstVR(), nullptr);
  EXPECT_EQ(object.GetVR(0x0008, 0x0018), nullptr);
  EXPECT_TRUE(object.Reset());
  object.Push(NewVR(kLow, "again"));
  EXPECT_EQ(Outline(object), "8.5=again");
  EXPECT_EQ(PopKey(object), kLow);
}

TEST(DICOMObject, ResetKeepsTheEstimateTheWalkAndTheTarget) {
  DICOMObject target;
  DICOMObject object;
  object.Push(NewSequence(kHigh, {}));
  object.Push(NewObject({}));
  delete object.Pop();
  object.PushTarget = &target;
  object.Reset();
  EXPECT_EQ(object.SequenceBytes, 32u);
  EXPECT_EQ(object.Iterating, 1u);
  EXPECT_EQ(object.PushTarget, &target);
}

TEST(DICOMObject, ResetInTheMiddleOfAWalkLeavesNothing) {
  DICOMObject object;
  for (const TagKey key : {kLow, kMiddle, kHigh}) object.Push(NewVR(key));
  delete object.Pop();
  object.Reset();
  EXPECT_TRUE(object.IsEmpty());
  EXPECT_EQ(object.Pop(), nullptr);
  object.Push(NewVR(kMiddle));
  EXPECT_EQ(KeysOf(object), std::vector{kMiddle});
}

TEST(DICOMObject, GetFirstAndNextWalkWithoutTaking) {
  DICOMObject object;
  for (const TagKey key : {kTop, kLow, kHigh}) object.Push(NewVR(key));
  VR* low = object.GetFirstVR();
  ASSERT_EQ(low->Key(), kLow);
  VR* high = object.GetNextVR(low);
  ASSERT_EQ(high->Key(), kHigh);
  EXPECT_EQ(object.GetNextVR(high)->Key(), kTop);
  EXPECT_EQ(object.GetNextVR(object.GetVR(0x7FE0, 0x0010)), nullptr);
  EXPECT_EQ(object.GetFirstVR(), low);
  EXPECT_EQ(object.Iterating, 0u);
  EXPECT_EQ(KeysOf(object), (std::vector{kLow, kHigh, kTop}));
}

TEST(DICOMObject, GetNextGoesByTheTagOfTheElementGiven) {
  DICOMObject object;
  for (const TagKey key : {kLow, kHigh}) object.Push(NewVR(key));
  const VR sameTag(GroupOf(kLow), ElementOf(kLow), 0, nullptr);
  EXPECT_EQ(object.GetNextVR(&sameTag), object.GetVR(0x0010, 0x0010));
  const VR unknown(GroupOf(kMiddle), ElementOf(kMiddle), 0, nullptr);
  EXPECT_EQ(object.GetNextVR(&unknown), nullptr);
  EXPECT_EQ(object.GetNextVR(nullptr), nullptr);
}

TEST(DICOMObject, GetNextAfterAPoppedTagIsNull) {
  DICOMObject object;
  for (const TagKey key : {kLow, kHigh}) object.Push(NewVR(key));
  const std::unique_ptr<VR> popped(object.Pop());
  EXPECT_EQ(object.GetNextVR(popped.get()), nullptr);
}

TEST(DICOMObject, AnElementOfLengthZeroIsStillAnElement) {
  DICOMObject object;
  VR* vr = NewVR(kMiddle);
  object.Push(vr);
  EXPECT_EQ(object.GetVR(0x0008, 0x0018), vr);
  EXPECT_EQ(vr->Length, 0u);
  EXPECT_EQ(vr->Data, nullptr);
  EXPECT_FALSE(object.IsEmpty());
}

TEST(DICOMObject, GetUint16GivesAHostNumberOfExactlyTwoBytes) {
  DICOMObject object;
  object.Push(NewVR(kLow, Bytes{0x34, 0x12}));
  EXPECT_EQ(object.GetUINT16(0x0008, 0x0005), 0x1234);
  object.Push(NewVR(kLow, Bytes{0xFF, 0xFF}));
  EXPECT_EQ(object.GetUINT16(0x0008, 0x0005), 0xFFFF);
}

TEST(DICOMObject, GetUint16OfAnythingElseIsZero) {
  DICOMObject object;
  EXPECT_EQ(object.GetUINT16(0x0008, 0x0005), 0);
  for (const Bytes& value : {Bytes{}, Bytes{1}, Bytes{1, 2, 3}, Bytes{1, 2, 3, 4}}) {
    object.Push(NewVR(kLow, value));
    EXPECT_EQ(object.GetUINT16(0x0008, 0x0005), 0) << value.size();
  }
  object.Push(new VR(GroupOf(kLow), ElementOf(kLow), 2, nullptr));
  EXPECT_EQ(object.GetUINT16(0x0008, 0x0005), 0);
}

std::unique_ptr<DICOMDataObject> Sample() {
  auto object = std::make_unique<DICOMDataObject>();
  object->Push(NewVR(kTop, test::Pattern(5000)));
  object->Push(NewVR(kMiddle, "text"));
  object->Push(NewSequence(
      kHigh, {NewObject({NewVR(kLow, "a"), NewSequence(kMiddle, {NewObject({NewVR(kLow, "b")})})}),
              NewObject({})}));
  return object;
}

TEST(DICOMObject, CloneIsAPlainObjectWithACopyOfEveryElementInOrder) {
  const auto source = Sample();
  source->SequenceBytes = 77;
  DICOMObject elsewhere;
  source->PushTarget = &elsewhere;
  for (const bool deep : {true, false}) {
    const std::unique_ptr<DICOMObject> clone(source->Clone(deep));
    const DICOMObject& object = *clone;
    EXPECT_EQ(typeid(object), typeid(DICOMObject));
    EXPECT_EQ(Outline(*clone), Outline(*source));
    EXPECT_EQ(KeysOf(*clone), (std::vector{kMiddle, kHigh, kTop}));
    EXPECT_EQ(clone->PushTarget, nullptr);
    EXPECT_EQ(clone->Iterating, 0u);
    EXPECT_EQ(clone->SequenceBytes, 0u);
    EXPECT_EQ(clone->LastPushedVR, clone->GetVR(GroupOf(kTop), ElementOf(kTop)));
    for (const VR* vr = clone->GetFirstVR(); vr != nullptr; vr = clone->GetNextVR(vr)) {
      EXPECT_EQ(vr->Moved, 1u);
      EXPECT_EQ(vr->OwnsData, deep ? 1u : 0u);
      EXPECT_NE(vr, source->GetVR(vr->Group, vr->Element));
    }
  }
  EXPECT_TRUE(elsewhere.IsEmpty());
}

TEST(DICOMObject, DeepCloneOutlivesItsSource) {
  auto source = Sample();
  const std::string outline = Outline(*source);
  const std::unique_ptr<DICOMObject> clone(source->Clone(true));
  source.reset();
  EXPECT_EQ(Outline(*clone), outline);
}

TEST(DICOMObject, ShallowCloneIsPoppedEmptyWithoutHarmToItsSource) {
  const auto source = Sample();
  const std::string outline = Outline(*source);
  const std::unique_ptr<DICOMObject> clone(source->Clone(false));
  EXPECT_EQ(clone->GetVR(0x7FE0, 0x0010)->Data, source->GetVR(0x7FE0, 0x0010)->Data);
  EXPECT_NE(clone->GetVR(0x0010, 0x0010)->GetItem(0), source->GetVR(0x0010, 0x0010)->GetItem(0));
  while (const std::unique_ptr<VR> vr{clone->Pop()}) continue;
  EXPECT_TRUE(clone->IsEmpty());
  EXPECT_EQ(Outline(*source), outline);
}

TEST(DICOMObject, CloneOfAnEmptyObjectIsEmpty) {
  const DICOMObject object;
  const std::unique_ptr<DICOMObject> clone(object.Clone(true));
  EXPECT_TRUE(clone->IsEmpty());
}

TEST(DICOMObject, CloneInTheMiddleOfAWalkHasWhatIsLeft) {
  const auto source = Sample();
  delete source->Pop();
  const std::unique_ptr<DICOMObject> clone(source->Clone(true));
  EXPECT_EQ(KeysOf(*clone), (std::vector{kHigh, kTop}));
  EXPECT_EQ(KeysOf(*source), (std::vector{kHigh, kTop}));
}

TEST(DICOMObject, OfElementsWhoseTagsWereMadeEqualInPlaceTheLastIsCloned) {
  const auto sequenceOf = [](TagKey key, std::string_view text) {
    return NewSequence(key, {NewObject({NewSequence(kLow, {NewObject({NewVR(kLow, text)})})})});
  };
  DICOMObject source;
  source.Push(sequenceOf(kLow, "first"));
  source.Push(sequenceOf(kMiddle, "second"));
  source.Push(sequenceOf(kHigh, "third"));
  for (const TagKey key : {kLow, kMiddle}) {
    VR* vr = source.GetVR(GroupOf(key), ElementOf(key));
    vr->Group = GroupOf(kHigh);
    vr->Element = ElementOf(kHigh);
  }
  const std::unique_ptr<DICOMObject> expected(NewObject({sequenceOf(kHigh, "third")}));
  for (const bool deep : {true, false}) {
    const std::unique_ptr<DICOMObject> clone(source.Clone(deep));
    EXPECT_EQ(Outline(*clone), Outline(*expected));
  }
}

TEST(DICOMObject, CopyFromAddsADeepCopyOfEveryElement) {
  auto source = Sample();
  const std::string outline = Outline(*source);
  DICOMObject target;
  target.Push(NewVR(kLow, "kept"));
  target.Push(NewVR(kMiddle, "replaced"));
  delete target.Pop();
  EXPECT_TRUE(target.CopyFrom(*source));
  EXPECT_EQ(target.Iterating, 0u);
  EXPECT_EQ(Outline(*source), outline);
  EXPECT_NE(target.GetVR(0x7FE0, 0x0010)->Data, source->GetVR(0x7FE0, 0x0010)->Data);
  EXPECT_EQ(target.GetVR(0x7FE0, 0x0010)->Moved, 1u);
  source.reset();
  EXPECT_EQ(Outline(target), outline);
}

TEST(DICOMObject, CopyFromKeepsTheElementsThatTheSourceDoesNotHave) {
  DICOMObject source;
  source.Push(NewVR(kMiddle, "new"));
  DICOMObject target;
  target.Push(NewVR(kLow, "kept"));
  target.Push(NewVR(kMiddle, "old"));
  EXPECT_TRUE(target.CopyFrom(source));
  EXPECT_EQ(Outline(target), "8.5=kept 8.24=new");
}

TEST(DICOMObject, CopyFromItselfOrFromAnEmptyObjectChangesNothing) {
  const auto object = Sample();
  const std::string outline = Outline(*object);
  VR* first = object->GetFirstVR();
  EXPECT_TRUE(object->CopyFrom(*object));
  EXPECT_EQ(Outline(*object), outline);
  EXPECT_EQ(object->GetFirstVR(), first);
  EXPECT_TRUE(object->CopyFrom(DICOMObject()));
  EXPECT_EQ(Outline(*object), outline);
}

TEST(DICOMObject, CopyFromAnItemOfItsOwnReplacesTheSequenceAroundIt) {
  DICOMObject object;
  object.Push(NewSequence(kMiddle, {NewObject({NewVR(kMiddle, "inner"), NewVR(kHigh, "beside")})}));
  EXPECT_TRUE(object.CopyFrom(*object.GetFirstVR()->GetItem(0)));
  EXPECT_EQ(Outline(object), "8.24=inner 16.16=beside");
}

TEST(DICOMObject, CopyFromForwardsToThePushTarget) {
  const auto source = Sample();
  DICOMObject target;
  DICOMObject forwarder;
  forwarder.PushTarget = &target;
  EXPECT_TRUE(forwarder.CopyFrom(*source));
  EXPECT_TRUE(forwarder.IsEmpty());
  EXPECT_EQ(Outline(target), Outline(*source));
}

TEST(DICOMObject, CopyFromEndsAtTheFirstElementThatIsRefused) {
  class TakesTwo : public DICOMObject {
   public:
    using DICOMObject::Push;
    bool Push(VR* element) override { return taken++ < 2 && DICOMObject::Push(element); }
    int taken = 0;
  };
  DICOMObject source;
  for (const TagKey key : {kLow, kMiddle, kHigh, kTop}) source.Push(NewVR(key, "text"));
  TakesTwo target;
  EXPECT_FALSE(target.CopyFrom(source));
  EXPECT_EQ(target.taken, 3);
  EXPECT_EQ(Outline(target), "8.5=text 8.24=text");
  EXPECT_EQ(KeysOf(source), (std::vector{kLow, kMiddle, kHigh, kTop}));
}

TEST(DICOMObject, ANullItemIsCopiedAsOne) {
  DICOMObject object;
  object.Push(NewSequence(kMiddle, {NewObject({NewVR(kLow, "a")})}));
  object.GetFirstVR()->Items->Add(nullptr);
  object.GetFirstVR()->AddItem(NewObject({NewVR(kLow, "b")}));
  for (const bool deep : {true, false}) {
    const std::unique_ptr<DICOMObject> clone(object.Clone(deep));
    VR& copy = *clone->GetFirstVR();
    ASSERT_EQ(copy.ItemCount(), 3u);
    EXPECT_EQ(Outline(*copy.GetItem(0)), "8.5=a");
    EXPECT_EQ(copy.GetItem(1), nullptr);
    EXPECT_EQ(Outline(*copy.GetItem(2)), "8.5=b");
  }
}

TEST(DICOMObject, ManySmallCopiesIntoOneObjectTakeNoLongerThanOneEach) {
  // With a fresh array for each copy this would move about (3 * 10^5)^2 / 2 entries.
  constexpr std::uint32_t kCopies = Repetitions(300000u);
  DICOMObject target;
  for (std::uint32_t at = 0; at < kCopies; ++at) {
    DICOMObject source;
    source.Push(NewVR(at * 2));
    target.CopyFrom(source);
  }
  EXPECT_EQ(KeysOf(target).size(), kCopies);
}

TEST(DICOMObject, KindsOfObjectsAddNoFieldAndAreDestroyedAsWhatTheyAre) {
  static_assert(sizeof(DICOMDataObject) == sizeof(DICOMObject));
  static_assert(sizeof(DICOMCommandObject) == sizeof(DICOMObject));
  static_assert(std::is_base_of_v<DICOMObject, DICOMDataObject>);
  static_assert(std::is_base_of_v<DICOMObject, DICOMCommandObject>);
  static_assert(std::has_virtual_destructor_v<DICOMObject>);
  int died = 0;
  class Counted : public DICOMDataObject {
   public:
    explicit Counted(int& counter) : counter_(counter) {}
    ~Counted() override { ++counter_; }

   private:
    int& counter_;
  };
  {
    DICOMObject object;
    object.Push(NewSequence(kMiddle, {new Counted(died), NewObject({})}));
    DICOMObject* outer = new Counted(died);
    outer->Push(NewSequence(kMiddle, {new Counted(died)}));
    object.Push(outer);
  }
  EXPECT_EQ(died, 3);
}

void CheckDeepNest(std::uint32_t depth) {
  auto nest = NewNest(depth);
  ASSERT_EQ(IntactLevels(*nest, depth), depth);
  std::unique_ptr<DICOMObject> deep(nest->Clone(true));
  ASSERT_TRUE(deep);
  std::unique_ptr<DICOMObject> shallow(nest->Clone(false));
  ASSERT_TRUE(shallow);
  EXPECT_EQ(IntactLevels(*shallow, depth), depth);
  shallow.reset();
  EXPECT_EQ(IntactLevels(*nest, depth), depth);
  nest.reset();
  EXPECT_EQ(IntactLevels(*deep, depth), depth);

  DICOMObject copy;
  EXPECT_TRUE(copy.CopyFrom(*deep));
  EXPECT_TRUE(deep->Reset());
  EXPECT_TRUE(deep->IsEmpty());
  EXPECT_EQ(IntactLevels(copy, depth), depth);

  // One element with all that hangs below it: copied, moved, taken over, replaced and destroyed.
  const std::unique_ptr<VR> sequence(
      copy.Remove(GroupOf(test::kSequenceTag), ElementOf(test::kSequenceTag)));
  const std::unique_ptr<VR> sequenceCopy(sequence->Clone(true));
  EXPECT_EQ(IntactLevels(*sequenceCopy->GetItem(0), depth - 1), depth - 1);
  EXPECT_TRUE(sequence->ReplaceFrom(sequenceCopy.get()));
  EXPECT_TRUE(sequence->Reset());
}

TEST(DICOMObject, CopiesAndDestroysAHundredThousandLevelsOnASmallStack) {
  RunOnStack(test::kSmallStack, [] { CheckDeepNest(Repetitions(100000u)); });
}

TEST(DICOMObject, CopiesAndDestroysAMillionLevelsOnASmallStack) {
  RunOnStack(test::kSmallStack, [] {
    constexpr std::uint32_t kDepth = Repetitions(1000000u);
    auto nest = NewNest(kDepth);
    ASSERT_EQ(IntactLevels(*nest, kDepth), kDepth);
    const std::unique_ptr<DICOMObject> clone(nest->Clone(true));
    nest.reset();
    EXPECT_EQ(IntactLevels(*clone, kDepth), kDepth);
  });
}

TEST(DICOMObject, DestroysADeepNestThatAPushReplaces) {
  RunOnStack(test::kSmallStack, [] {
    DICOMObject object;
    VR* sequence = NewVR(test::kSequenceTag);
    sequence->AddItem(NewNest(Repetitions(100000u)).release());
    object.Push(sequence);
    object.Push(NewVR(test::kSequenceTag, "flat"));
    EXPECT_EQ(TextOf(*object.GetFirstVR()), "flat");
  });
}

/// Random pushes (tags that are there already among them), pops, removals and looks, all beside a std::map.
void CheckAgainstAMap(std::uint32_t seed, std::uint32_t tags, int operations) {
  std::mt19937 random(seed);
  DICOMObject object;
  std::map<TagKey, VR*> model;
  for (int round = 0; round < Repetitions(operations); ++round) {
    const TagKey key = MakeTagKey(static_cast<std::uint16_t>(random() % 4 * 0x5001),
                                  static_cast<std::uint16_t>(random() % tags * 3));
    const auto place = model.find(key);
    switch (random() % 8) {
      case 0:
      case 1:
      case 2: {
        VR* vr = new VR(GroupOf(key), ElementOf(key), 0, nullptr);
        object.Push(vr);
        model[key] = vr;
        ASSERT_EQ(object.LastPushedVR, vr);
        break;
      }
      case 3: {
        const std::unique_ptr<VR> vr(object.Pop());
        ASSERT_EQ(vr.get(), model.empty() ? nullptr : model.begin()->second);
        if (vr) model.erase(model.begin());
        break;
      }
      case 4: {
        const std::unique_ptr<VR> vr(object.Remove(GroupOf(key), ElementOf(key)));
        ASSERT_EQ(vr.get(), place == model.end() ? nullptr : place->second);
        if (vr) model.erase(place);
        break;
      }
      case 5:
        ASSERT_EQ(object.GetFirstVR(), model.empty() ? nullptr : model.begin()->second);
        break;
      case 6: {
        const VR like(GroupOf(key), ElementOf(key), 0, nullptr);
        const auto next = place == model.end() ? place : std::next(place);
        ASSERT_EQ(object.GetNextVR(&like), next == model.end() ? nullptr : next->second);
        break;
      }
      default:
        ASSERT_EQ(object.GetVR(GroupOf(key), ElementOf(key)),
                  place == model.end() ? nullptr : place->second);
    }
    ASSERT_EQ(object.IsEmpty(), model.empty());
  }
  for (const auto& [key, vr] : model) {
    const std::unique_ptr<VR> popped(object.Pop());
    ASSERT_EQ(popped.get(), vr);
  }
  ASSERT_TRUE(object.IsEmpty());
}

TEST(DICOMObject, RandomOperationsGiveWhatAnOrderedMapGives) {
  CheckAgainstAMap(1, 3, 200000);
  CheckAgainstAMap(2, 100, 500000);
  CheckAgainstAMap(3, 5000, 1000000);
}

}  // namespace
}  // namespace tessaret
