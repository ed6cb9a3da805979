// Sequences of an object, and their items as objects of their own.
#include <gtest/gtest.h>

#include "facade/dcm_object_helpers.h"
#include "facade/stranger.h"
#include "support/allocation_failure.h"
#include "support/small_stack.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr std::int32_t kGroup = 0x0008;
constexpr std::int32_t kElement = 0x1140;

Status Nest(const Ref<IDCMObject>& object, std::int32_t index, const Ref<IDCMObject>& item) {
  return object->putref_Sequence(kGroup, kElement, index, item.Get());
}

std::string PatientAt(const Ref<IDCMObject>& object, std::int32_t index) {
  const Ref<IDCMObject> item = ItemOf(object, kGroup, kElement, index);
  return item ? Text(item, 0x0010, 0x0020) : "none";
}

/// An object with a sequence of so many items, whose patients are "0", "1" and so on.
Ref<IDCMObject> ObjectWithItems(int count) {
  const auto object = NewObject();
  for (int item = 0; item < count; ++item)
    EXPECT_EQ(Nest(object, -1, ObjectOfPatient(std::to_string(item))), kOk);
  return object;
}

TEST(DCMObjectItems, AreAppendedAndCounted) {
  const auto object = NewObject();
  EXPECT_EQ(CountOf(object, kGroup, kElement), 0);
  EXPECT_EQ(Nest(object, -1, ObjectOfPatient("a")), kOk);
  EXPECT_EQ(Nest(object, 1, ObjectOfPatient("b")), kOk);
  EXPECT_EQ(Nest(object, 77, ObjectOfPatient("c")), kOk);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 3);
  EXPECT_EQ(PatientAt(object, 0), "a");
  EXPECT_EQ(PatientAt(object, 1), "b");
  EXPECT_EQ(PatientAt(object, 2), "c");
  EXPECT_EQ(Describe(object, kGroup, kElement).type, "SQ");
}

TEST(DCMObjectItems, TakeThePlaceOfTheOneThatIsThere) {
  const auto object = ObjectWithItems(3);
  EXPECT_EQ(Nest(object, 1, ObjectOfPatient("new")), kOk);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 3);
  EXPECT_EQ(PatientAt(object, 0), "0");
  EXPECT_EQ(PatientAt(object, 1), "new");
  EXPECT_EQ(PatientAt(object, 2), "2");
}

TEST(DCMObjectItems, ThatAreNotThereAreNone) {
  const auto object = ObjectWithItems(2);
  for (const std::int32_t index : {-1, 2, 3, std::numeric_limits<std::int32_t>::max(),
                                   std::numeric_limits<std::int32_t>::min()}) {
    IDCMObject* item = object.Get();
    EXPECT_EQ(object->get_Sequence(kGroup, kElement, index, &item), kOk);
    EXPECT_EQ(item, nullptr) << index;
  }
  EXPECT_FALSE(ItemOf(object, 0x0008, 0x1199, 0));
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "id"), kOk);
  EXPECT_FALSE(ItemOf(object, 0x0010, 0x0020, 0));
  EXPECT_EQ(CountOf(object, 0x0010, 0x0020), 0);
}

TEST(DCMObjectItems, WithoutAnItemAnEmptySequenceIsAdded) {
  const auto object = NewObject();
  EXPECT_EQ(object->putref_Sequence(kGroup, kElement, 0, nullptr), kOk);
  EXPECT_TRUE(Describe(object, kGroup, kElement).found.IsTrue());
  EXPECT_EQ(Describe(object, kGroup, kElement).type, "SQ");
  EXPECT_EQ(CountOf(object, kGroup, kElement), 0);
  // What is there stays.
  const auto full = ObjectWithItems(2);
  EXPECT_EQ(full->putref_Sequence(kGroup, kElement, 0, nullptr), kOk);
  EXPECT_EQ(CountOf(full, kGroup, kElement), 2);
}

TEST(DCMObjectItems, MakeTheirSequenceTheElementThatWasPushedLast) {
  const auto object = ObjectWithItems(1);
  const auto expectLast = [&](TagKey tag) {
    const VR* const last = CoreOf(object)->LastPushedVR;
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->Key(), tag);
  };
  constexpr TagKey kSequence = MakeTagKey(kGroup, kElement);
  constexpr TagKey kId = MakeTagKey(0x0010, 0x0020);
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "id"), kOk);
  expectLast(kId);
  EXPECT_EQ(Nest(object, -1, ObjectOfPatient("a")), kOk);
  expectLast(kSequence);
  EXPECT_EQ(Put(object, 0x0010, 0x0010, "Doe"), kOk);
  EXPECT_EQ(object->putref_Sequence(kGroup, kElement, 0, nullptr), kOk);
  expectLast(kSequence);
}

TEST(DCMObjectItems, AreMoreThan16BitsCanCount) {
  const auto object = ObjectWithItems(1);
  VR& sequence = *CoreOf(object)->GetVR(kGroup, kElement);
  while (sequence.ItemCount() < 32767) sequence.AddItem(new DICOMObject);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 32767);
  sequence.AddItem(new DICOMObject);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 32767);
  EXPECT_TRUE(ItemOf(object, kGroup, kElement, 32767));
  EXPECT_FALSE(ItemOf(object, kGroup, kElement, 32768));
}

TEST(DCMObjectItems, ShowTheItemItself) {
  const auto object = ObjectWithItems(1);
  EXPECT_EQ(Put(ItemOf(object, kGroup, kElement, 0), 0x0010, 0x0020, "changed"), kOk);
  EXPECT_EQ(PatientAt(object, 0), "changed");
}

TEST(DCMObjectItems, KeepWhatTheyLieInAlive) {
  auto object = ObjectWithItems(1);
  const auto item = ItemOf(object, kGroup, kElement, 0);
  object = nullptr;
  EXPECT_FALSE(CanUnload());
  EXPECT_EQ(Text(item, 0x0010, 0x0020), "0");
}

TEST(DCMObjectItems, NestToAnyDepth) {
  auto inner = ObjectOfPatient("innermost");
  for (int level = 0; level < 50; ++level) {
    const auto outer = NewObject();
    EXPECT_EQ(Nest(outer, 0, inner), kOk);
    inner = outer;
  }
  auto walk = inner;
  for (int level = 0; level < 50; ++level) walk = ItemOf(walk, kGroup, kElement, 0);
  inner = nullptr;
  EXPECT_EQ(Text(walk, 0x0010, 0x0020), "innermost");
}

TEST(DCMObjectItems, OfAnyDepthAreReleasedOnASmallStack) {
  constexpr int kLevels = 20000;
  // A stack frame a level, however small, would not go into 256 KiB.
  RunOnStack(kSmallStack, [] {
    bool died = false;
    {
      auto walk = NewObject();
      EXPECT_EQ(ManagerOf(walk)->PutPtr(1, new Witness(died)), kOk);
      for (int level = 0; level < kLevels; ++level) {
        ASSERT_EQ(Nest(walk, 0, NewObject()), kOk);
        walk = ItemOf(walk, kGroup, kElement, 0);
      }
      EXPECT_FALSE(died);
      // The way up is let go by one that goes on living, too.
      const auto last = walk;
      walk = nullptr;
      EXPECT_EQ(last->Load("/no/such/file", true), kException);
      EXPECT_TRUE(died);
    }
  });
  EXPECT_TRUE(CanUnload());
}

TEST(DCMObjectItems, AreStillShownByWhatTheyCameFrom) {
  const auto object = NewObject();
  auto given = ObjectOfPatient("a");
  EXPECT_EQ(Nest(object, 0, given), kOk);
  EXPECT_EQ(Put(given, 0x0010, 0x0020, "b"), kOk);
  EXPECT_EQ(PatientAt(object, 0), "b");
  given = nullptr;
  EXPECT_EQ(PatientAt(object, 0), "b");
}

TEST(DCMObjectItems, AreTakenFromTheirOwnerOnly) {
  const auto object = NewObject();
  const auto given = ObjectOfPatient("a");
  EXPECT_EQ(Nest(object, 0, given), kOk);
  EXPECT_EQ(Nest(object, 1, given), kInvalidArgument);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 1);
  // Another one's item, and one whose owner is elsewhere, and no data set at all.
  const auto other = NewObject();
  EXPECT_EQ(Nest(other, 0, ItemOf(object, kGroup, kElement, 0)), kInvalidArgument);
  EXPECT_FALSE(Describe(other, kGroup, kElement).found.IsTrue());
  EXPECT_EQ(ManagerOf(given)->PutPtr(0, nullptr), kOk);
  EXPECT_EQ(Nest(other, 0, given), kInvalidArgument);
  EXPECT_FALSE(Describe(other, kGroup, kElement).found.IsTrue());
}

TEST(DCMObjectItems, OfAnOwnerOfNothingAreRefused) {
  const auto object = NewObject();
  const auto given = NewObject();
  EXPECT_TRUE(Failed(given->Load("", true)));
  ASSERT_EQ(CoreOf(given), nullptr);
  EXPECT_EQ(Nest(object, 0, given), kInvalidArgument);
  EXPECT_FALSE(Describe(object, kGroup, kElement).found.IsTrue());
  // It still owns whatever comes.
  EXPECT_EQ(ManagerOf(given)->SetOwner(), kFalse);
}

TEST(DCMObjectItems, GoIntoASequenceThatWasReadWithALength) {
  const auto object = ObjectWithItems(1);
  CoreOf(object)->GetVR(kGroup, kElement)->Length = 18;
  EXPECT_EQ(Nest(object, -1, ObjectOfPatient("new")), kOk);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 2);
  EXPECT_EQ(PatientAt(object, 1), "new");
}

TEST(DCMObjectItems, OfAStrangerComeByTheWayToItsDataSet) {
  const auto object = ObjectWithItems(1);
  const auto given = ObjectOfPatient("a");
  // One without such a way.
  Stranger none([](const InterfaceId&, void**) { return kNoInterface; });
  EXPECT_EQ(object->putref_Sequence(kGroup, kElement, 0, &none), kNoInterface);
  EXPECT_EQ(object->Set(&none), kNoInterface);
  EXPECT_EQ(PatientAt(object, 0), "0");
  EXPECT_FALSE(Describe(object, kGroup, 0x1199).found.IsTrue());
  EXPECT_EQ(object->putref_Sequence(kGroup, 0x1199, 0, &none), kNoInterface);
  EXPECT_FALSE(Describe(object, kGroup, 0x1199).found.IsTrue());
  // One that lets this object's data set go while it is asked.
  Stranger rude([&](const InterfaceId& id, void** found) {
    EXPECT_EQ(ManagerOf(object)->PutPtr(0, nullptr), kOk);
    return given->QueryInterface(id, found);
  });
  EXPECT_FAILS_WITH(object->putref_Sequence(kGroup, kElement, 0, &rude), "No data object");
  // The other one still is the owner.
  EXPECT_EQ(Nest(ObjectWithItems(1), 0, given), kOk);
}

TEST(DCMObjectItems, OfAStrangerThatChangesItsMindGoBackToIt) {
  const auto object = ObjectWithItems(1);
  DICOMObject shown;
  DICOMObject other;
  const auto nest = [&](StrangeManager& manager) {
    Stranger given([&](const InterfaceId&, void** found) {
      *found = &manager;
      return kOk;
    });
    return object->putref_Sequence(kGroup, kElement, -1, &given);
  };
  StrangeManager swaps([&](bool takes) { return takes ? &other : &shown; });
  EXPECT_EQ(nest(swaps), kInvalidArgument);
  EXPECT_EQ(swaps.takenBack, 1);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 1);
  StrangeManager lets([&](bool takes) {
    if (takes) ManagerOf(object)->PutPtr(0, nullptr);
    return &shown;
  });
  EXPECT_FAILS_WITH(nest(lets), "No data object");
  EXPECT_EQ(lets.takenBack, 1);
}

TEST(DCMObjectItems, CannotContainThemselves) {
  const auto object = ObjectWithItems(1);
  EXPECT_EQ(Nest(object, 0, object), kInvalidArgument);
  const auto item = ItemOf(object, kGroup, kElement, 0);
  EXPECT_EQ(Nest(item, 0, object), kInvalidArgument);
  EXPECT_EQ(Nest(item, 0, item), kInvalidArgument);
  EXPECT_EQ(Nest(item, -1, ObjectOfPatient("deep")), kOk);
  EXPECT_EQ(Nest(ItemOf(item, kGroup, kElement, 0), 0, object), kInvalidArgument);
  EXPECT_EQ(PatientAt(object, 0), "0");
  // It still is the owner.
  const auto outer = NewObject();
  EXPECT_EQ(Nest(outer, 0, object), kOk);
}

TEST(DCMObjectItems, ThatAreReplacedAreGoneForThoseWhoShowThem) {
  const auto object = ObjectWithItems(2);
  const auto item = ItemOf(object, kGroup, kElement, 0);
  EXPECT_EQ(Nest(object, 0, ObjectOfPatient("new")), kOk);
  EXPECT_TRUE(Get(item, 0x0010, 0x0020).IsEmpty());
  EXPECT_FAILS_WITH(Put(item, 0x0010, 0x0020, "x"), "No data object");
}

TEST(DCMObjectItems, AreGoneForThoseWhoShowThemByEveryWay) {
  const auto check = [](auto end) {
    const auto object = ObjectWithItems(1);
    const auto item = ItemOf(object, kGroup, kElement, 0);
    EXPECT_EQ(Text(item, 0x0010, 0x0020), "0");
    end(object);
    EXPECT_TRUE(Get(item, 0x0010, 0x0020).IsEmpty());
    EXPECT_EQ(CoreOf(item), nullptr);
  };
  check([](const auto& object) { EXPECT_EQ(object->RemoveVR(kGroup, kElement, nullptr), kOk); });
  check([](const auto& object) { EXPECT_EQ(object->Clear(), kOk); });
  check([](const auto& object) { EXPECT_EQ(object->Set(NewObject().Get()), kOk); });
  check([](const auto& object) { EXPECT_TRUE(Failed(object->Load("/no/such/file", true))); });
  check([](const auto& object) { EXPECT_EQ(ManagerOf(object)->PutPtr(0, nullptr), kOk); });
}

TEST(DCMObjectItems, AreNotRemovedByRemoveSequence) {
  const auto object = ObjectWithItems(2);
  VariantBool removed = VariantBool::Of(77);
  EXPECT_EQ(object->RemoveSequence(kGroup, kElement, 0, &removed), kOk);
  EXPECT_EQ(removed.value, 77);
  EXPECT_EQ(object->RemoveSequence(kGroup, kElement, 0, nullptr), kOk);
  EXPECT_EQ(CountOf(object, kGroup, kElement), 2);
}

TEST(DCMObjectItems, AndAValueDoNotGoTogether) {
  const auto object = ObjectOfPatient("id");
  EXPECT_FAILS_WITH(object->putref_Sequence(0x0010, 0x0020, 0, ObjectOfPatient("a").Get()),
                    "The element holds a value: remove it first");
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  EXPECT_EQ(CountOf(object, 0x0010, 0x0020), 0);
  // Without an item there is nothing that would not go together.
  EXPECT_EQ(object->putref_Sequence(0x0010, 0x0020, 0, nullptr), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "LO");
  const auto full = ObjectWithItems(1);
  const Variant bytes = VariantArray::OfBytes(Bytes{1, 2});
  constexpr const char* kWords = "The element holds items: remove it first";
  EXPECT_FAILS_WITH(full->PutVRRawString(kGroup, kElement, "LO", "x"), kWords);
  EXPECT_FAILS_WITH(full->PutVRData(kGroup, kElement, "OB", bytes), kWords);
  _VR_RECORD_TYPE record;
  char value[] = "ab";
  record.Group = kGroup;
  record.Elem = kElement;
  record.len = 2;
  record.pt = value;
  EXPECT_FAILS_WITH(ManagerOf(full)->PutVR(&record), kWords);
  EXPECT_EQ(PatientAt(full, 0), "0");
}

TEST(DCMObjectItems, OfAnElementOfAnotherTypeAreSavedAsASequence) {
  const TempFolder folder;
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0008, 0x0016, "1.2.840.10008.5.1.4.1.1.7"), kOk);
  EXPECT_EQ(Put(object, 0x0002, 0x0010, "1.2.840.10008.1.2.1"), kOk);
  EXPECT_EQ(Put(object, 0x0010, 0x0010, Variant()), kOk);
  EXPECT_EQ(object->putref_Sequence(0x0010, 0x0010, 0, ObjectOfPatient("a").Get()), kOk);
  ASSERT_EQ(object->Save(folder.File("a.dcm")), kOk);
  const auto again = NewObject();
  ASSERT_EQ(again->Load(folder.File("a.dcm"), true), kOk);
  EXPECT_EQ(Text(ItemOf(again, 0x0010, 0x0010, 0), 0x0010, 0x0020), "a");
}

TEST(DCMObjectItems, WithoutMemoryMakeNoSequence) {
  std::uint64_t allocation = 0;
  Status status = kOutOfMemory;
  for (; Failed(status); ++allocation) {
    ASSERT_LT(allocation, 40u);
    const auto object = ObjectOfPatient("outer");
    auto given = ObjectOfPatient("a");
    {
      const AllocationFailure failure(allocation + 1);
      status = Nest(object, -1, given);
    }
    EXPECT_EQ(Describe(object, kGroup, kElement).found.IsTrue(), Succeeded(status)) << allocation;
  }
  // At least the list and its node.
  EXPECT_GT(allocation, 2u);
}

TEST(DCMObjectItems, WithoutMemoryStayWithTheirOwner) {
  for (std::uint64_t allocation = 1; allocation < 40; ++allocation) {
    const auto object = ObjectWithItems(1);
    auto given = ObjectOfPatient("a");
    Status status = kOk;
    {
      const AllocationFailure failure(allocation);
      status = Nest(object, -1, given);
    }
    if (Succeeded(status)) {
      EXPECT_GT(allocation, 1);
      return;
    }
    EXPECT_TRUE(Failed(status));
    EXPECT_EQ(CountOf(object, kGroup, kElement), 1);
    EXPECT_EQ(Nest(object, -1, given), kOk);
    given = nullptr;
    EXPECT_EQ(PatientAt(object, 1), "a");
  }
  FAIL() << "it never had enough memory";
}

}  // namespace
}  // namespace tessaret::test
