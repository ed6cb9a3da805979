// Who owns the data set behind an object, through every way in which it changes hands. Run under the address sanitizer, each of
// these proves that nothing dies twice and nothing stays behind.
#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "facade/dcm_object.h"
#include "facade/dcm_object_helpers.h"

namespace tessaret::test {
namespace {

constexpr Status kNo = 1;

TEST(DCMObjectOwner, DestroysTheDataSetWithItself) {
  bool died = false;
  {
    const auto object = NewObject();
    EXPECT_EQ(ManagerOf(object)->PutPtr(1, new Witness(died)), kOk);
    EXPECT_FALSE(died);
  }
  EXPECT_TRUE(died);
}

TEST(DCMObjectOwner, WhoOnlyShowsADataSetLeavesItAlone) {
  bool died = false;
  Witness witness(died);
  {
    const auto object = NewObject();
    EXPECT_EQ(ManagerOf(object)->PutPtr(0, &witness), kOk);
    EXPECT_EQ(CoreOf(object), &witness);
  }
  EXPECT_FALSE(died);
}

TEST(DCMObjectOwner, GivesOwnershipOnce) {
  const auto object = ObjectOfPatient("id");
  DICOMObject* const core = CoreOf(object);
  EXPECT_EQ(ManagerOf(object)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(object)->GetOwnership(), kNo);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  EXPECT_EQ(CoreOf(object), core);
  EXPECT_EQ(ManagerOf(object)->SetOwner(), kOk);
  EXPECT_EQ(ManagerOf(object)->SetOwner(), kNo);
}

TEST(DCMObjectOwner, WhoTakesTheDataSetHasToSeeToItsEnd) {
  bool died = false;
  auto object = NewObject();
  EXPECT_EQ(ManagerOf(object)->PutPtr(1, new Witness(died)), kOk);
  DICOMObject* core = nullptr;
  EXPECT_EQ(ManagerOf(object)->GetPtr(1, &core), kOk);
  DICOMObject* none = object ? core : nullptr;
  EXPECT_EQ(ManagerOf(object)->GetPtr(1, &none), kNo);
  EXPECT_EQ(none, core);  // nothing was given
  object = nullptr;
  EXPECT_FALSE(died);
  delete core;
}

TEST(DCMObjectOwner, AnyNumberButZeroAsksForOwnership) {
  const auto object = NewObject();
  DICOMObject* core = nullptr;
  EXPECT_EQ(ManagerOf(object)->GetPtr(-7, &core), kOk);
  EXPECT_EQ(ManagerOf(object)->GetOwnership(), kNo);
  const auto other = NewObject();
  EXPECT_EQ(ManagerOf(other)->PutPtr(2, core), kOk);
  EXPECT_EQ(ManagerOf(other)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(other)->SetOwner(), kOk);
}

TEST(DCMObjectOwner, WhoShowsADataSetThatDiedShowsNone) {
  const auto object = ObjectOfPatient("id");
  DICOMObject* core = nullptr;
  EXPECT_EQ(ManagerOf(object)->GetPtr(1, &core), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  delete core;
  EXPECT_EQ(CoreOf(object), nullptr);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  EXPECT_EQ(object->Clear(), kOk);
  EXPECT_NE(CoreOf(object), nullptr);
}

TEST(DCMObjectOwner, IsOneOnly) {
  const auto one = ObjectOfPatient("id");
  const auto other = NewObject();
  EXPECT_EQ(ManagerOf(other)->PutPtr(1, CoreOf(one)), kInvalidArgument);
  EXPECT_NE(CoreOf(other), CoreOf(one));
  EXPECT_EQ(ManagerOf(other)->PutPtr(0, CoreOf(one)), kOk);
  EXPECT_EQ(ManagerOf(other)->SetOwner(), kNo);
  EXPECT_EQ(ManagerOf(one)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(other)->SetOwner(), kOk);
  EXPECT_EQ(ManagerOf(one)->SetOwner(), kNo);
  // Nor of what came with its ownership.
  DICOMObject* given = nullptr;
  EXPECT_EQ(ManagerOf(other)->GetPtr(1, &given), kOk);
  const auto third = NewObject();
  EXPECT_EQ(ManagerOf(third)->PutPtr(1, given), kOk);
  EXPECT_EQ(ManagerOf(other)->SetOwner(), kNo);
  EXPECT_EQ(ManagerOf(NewObject())->PutPtr(1, given), kInvalidArgument);
}

TEST(DCMObjectOwner, OfAnItemIsItsSequence) {
  const auto object = NewObject();
  const auto given = ObjectOfPatient("a");
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, given.Get()), kOk);
  EXPECT_EQ(ManagerOf(given)->SetOwner(), kNo);  // before anybody asks for the item
  const auto item = ItemOf(object, 0x0008, 0x1140, 0);
  const auto other = NewObject();
  for (const auto& each : {given, item}) {
    EXPECT_EQ(ManagerOf(each)->SetOwner(), kNo);
    EXPECT_EQ(ManagerOf(each)->GetOwnership(), kNo);
    EXPECT_EQ(ManagerOf(each)->PutPtr(1, CoreOf(each)), kInvalidArgument);
    EXPECT_EQ(ManagerOf(other)->PutPtr(1, CoreOf(each)), kInvalidArgument);
  }
  EXPECT_EQ(Text(item, 0x0010, 0x0020), "a");
}

TEST(DCMObjectOwner, OfAnItemThatNobodyNestedIsItsSequenceToo) {
  const auto object = NewObject();
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("a").Get()), kOk);
  Ref<IDCMObject> copied;
  EXPECT_EQ(object->copy(copied.Receive()), kOk);
  const auto item = ItemOf(copied, 0x0008, 0x1140, 0);
  EXPECT_EQ(ManagerOf(item)->SetOwner(), kNo);
  EXPECT_EQ(ManagerOf(NewObject())->PutPtr(1, CoreOf(item)), kInvalidArgument);
  EXPECT_EQ(Text(item, 0x0010, 0x0020), "a");
}

TEST(DCMObjectOwner, StaysWhenItIsGivenWhatItHas) {
  bool died = false;
  const auto object = NewObject();
  const auto manager = ManagerOf(object);
  auto* const witness = new Witness(died);
  EXPECT_EQ(manager->PutPtr(1, witness), kOk);
  EXPECT_EQ(manager->PutPtr(1, witness), kOk);
  EXPECT_EQ(manager->PutPtr(0, witness), kOk);
  EXPECT_FALSE(died);
  EXPECT_EQ(manager->GetOwnership(), kNo);
  EXPECT_EQ(manager->PutPtr(1, witness), kOk);
  EXPECT_EQ(manager->PutPtr(1, nullptr), kOk);
  EXPECT_TRUE(died);
  EXPECT_EQ(CoreOf(object), nullptr);
  // Nothing has an owner too.
  EXPECT_EQ(manager->GetOwnership(), kOk);
  EXPECT_EQ(manager->PutPtr(0, nullptr), kOk);
  EXPECT_EQ(manager->GetOwnership(), kNo);
}

TEST(DCMObjectOwner, OfADataSetThatShowsOneOfItsItemsNext) {
  const auto object = NewObject();
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("a").Get()), kOk);
  DICOMObject* const item = CoreOf(ItemOf(object, 0x0008, 0x1140, 0));
  // The item dies with what is let go for it.
  EXPECT_EQ(ManagerOf(object)->PutPtr(0, item), kOk);
  EXPECT_EQ(CoreOf(object), nullptr);
}

TEST(DCMObjectOwner, ACopyIsIndependentAtEveryDepth) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("item").Get()), kOk);
  Ref<IDCMObject> copy;
  EXPECT_EQ(object->copy(copy.Receive()), kOk);
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "changed"), kOk);
  EXPECT_EQ(Put(ItemOf(object, 0x0008, 0x1140, 0), 0x0010, 0x0020, "changed"), kOk);
  EXPECT_EQ(object->Clear(), kOk);
  EXPECT_EQ(Text(copy, 0x0010, 0x0020), "id");
  EXPECT_EQ(Text(ItemOf(copy, 0x0008, 0x1140, 0), 0x0010, 0x0020), "item");
  EXPECT_EQ(ManagerOf(copy)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(copy)->SetOwner(), kOk);
  // An item's copy lives without what the item lies in.
  Ref<IDCMObject> itemCopy;
  EXPECT_EQ(ItemOf(copy, 0x0008, 0x1140, 0)->copy(itemCopy.Receive()), kOk);
  copy = nullptr;
  EXPECT_EQ(Text(itemCopy, 0x0010, 0x0020), "item");
}

TEST(DCMObjectOwner, SetCopiesAndLeavesTheSourceAlone) {
  const auto source = ObjectOfPatient("source");
  const auto object = ObjectOfPatient("old");
  EXPECT_EQ(object->Set(source.Get()), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "source");
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "changed"), kOk);
  EXPECT_EQ(Text(source, 0x0010, 0x0020), "source");
  EXPECT_EQ(ManagerOf(source)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(source)->SetOwner(), kOk);
}

TEST(DCMObjectOwner, SetTakesItselfAndItsOwnItems) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(object->Set(object.Get()), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("item").Get()), kOk);
  EXPECT_EQ(object->Set(ItemOf(object, 0x0008, 0x1140, 0).Get()), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "item");
  EXPECT_EQ(CountOf(object, 0x0008, 0x1140), 0);
}

TEST(DCMObjectOwner, SetMakesAnItemsObjectAnOwnerOfItsOwn) {
  const auto object = NewObject();
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("item").Get()), kOk);
  const auto item = ItemOf(object, 0x0008, 0x1140, 0);
  EXPECT_EQ(item->Set(ObjectOfPatient("other").Get()), kOk);
  EXPECT_EQ(Text(item, 0x0010, 0x0020), "other");
  EXPECT_EQ(Text(ItemOf(object, 0x0008, 0x1140, 0), 0x0010, 0x0020), "item");
  EXPECT_EQ(ManagerOf(item)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(item)->SetOwner(), kOk);
}

TEST(DCMObjectOwner, OfNothingCopiesNothing) {
  const auto nothing = NewObject();
  EXPECT_EQ(ManagerOf(nothing)->PutPtr(0, nullptr), kOk);
  Ref<IDCMObject> copy;
  EXPECT_EQ(nothing->copy(copy.Receive()), kOk);
  EXPECT_EQ(Put(copy, 0x0010, 0x0020, "id"), kOk);
  EXPECT_EQ(copy->Set(nothing.Get()), kOk);
  EXPECT_TRUE(Get(copy, 0x0010, 0x0020).IsEmpty());
  EXPECT_EQ(Put(copy, 0x0010, 0x0020, "again"), kOk);
}

TEST(DCMObjectOwner, WrapsADataSetOrACopyOfIt) {
  bool died = false;
  Witness witness(died);
  witness.Push(new VR(0x0010, 0x0020, 2, true));
  const Ref<IDCMObject> shown = CDCMObject::Wrap(&witness, false);
  EXPECT_EQ(CoreOf(shown), &witness);
  EXPECT_EQ(ManagerOf(shown)->GetOwnership(), kNo);
  const Ref<IDCMObject> copied = CDCMObject::Wrap(&witness, true);
  EXPECT_NE(CoreOf(copied), &witness);
  EXPECT_EQ(ManagerOf(copied)->GetOwnership(), kOk);
  EXPECT_EQ(ManagerOf(copied)->SetOwner(), kOk);
  EXPECT_EQ(Describe(copied, 0x0010, 0x0020).length, 2);
}

TEST(DCMObjectWithoutADataSet, AnswersWithoutAnErrorOrWithWords) {
  const auto object = NewObject();
  EXPECT_EQ(ManagerOf(object)->PutPtr(1, nullptr), kOk);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  EXPECT_FALSE(Describe(object, 0x0010, 0x0020).found.IsTrue());
  EXPECT_EQ(CountOf(object, 0x0008, 0x1140), 0);
  EXPECT_FALSE(ItemOf(object, 0x0008, 0x1140, 0));
  std::int32_t count = 5;
  EXPECT_EQ(object->get_VRMultiplicity(0x0010, 0x0020, &count), kOk);
  EXPECT_EQ(count, 0);
  VariantBool found = true;
  std::int32_t group = 0x0010;
  std::int32_t element = 0x0020;
  EXPECT_EQ(object->GetFirstVR(&group, &element, &found), kOk);
  EXPECT_FALSE(found.IsTrue());
  found = true;
  EXPECT_EQ(object->GetNextVR(&group, &element, &found), kOk);
  EXPECT_FALSE(found.IsTrue());
  String type, text("before");
  EXPECT_EQ(object->GetVRRawString(0x0010, 0x0020, &type, &text), kOk);
  EXPECT_EQ(text.Narrow(), "");
  Variant bytes;
  EXPECT_FAILS_WITH(object->GetVRData(0x0010, 0x0020, &type, &bytes), "Empty object");
  EXPECT_EQ(object->RemoveVR(0x0010, 0x0020, nullptr), kOk);
  const Variant array = VariantArray::OfBytes(Bytes{1});
  EXPECT_FAILS_WITH(object->PutVRData(0x0010, 0x0020, "LO", array), "No data object");
  EXPECT_FAILS_WITH(object->PutVRRawString(0x0010, 0x0020, "LO", "x"), "No data object");
  EXPECT_FAILS_WITH(Put(object, 0x0010, 0x0020, "x"), "No data object");
  EXPECT_FAILS_WITH(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("a").Get()),
                    "No data object");
  EXPECT_FAILS_WITH(object->Save("/dev/shm/never.dcm"), "Empty object");
  EXPECT_FAILS_WITH(object->Translate(String(), &found), "No data object");
  _VR_RECORD_TYPE record;
  EXPECT_EQ(ManagerOf(object)->GetVR(0x0010, 0x0020, &record), kOk);
  EXPECT_EQ(record.Group, -1);
  record.Group = 0x0010;
  EXPECT_EQ(ManagerOf(object)->PutVR(&record), kOk);
  EXPECT_EQ(object->Clear(), kOk);
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "x"), kOk);
}

/// Every kind of object around one data set, released in every order.
TEST(DCMObjectOwner, MayBeReleasedInAnyOrder) {
  const auto make = [](bool& died) {
    const auto root = ObjectOfPatient("root");
    const auto given = NewObject();
    EXPECT_EQ(ManagerOf(given)->PutPtr(1, new Witness(died)), kOk);
    EXPECT_EQ(root->putref_Sequence(0x0008, 0x1140, 0, given.Get()), kOk);
    const auto item = ItemOf(root, 0x0008, 0x1140, 0);
    EXPECT_EQ(item->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("deep").Get()), kOk);
    const auto deep = ItemOf(item, 0x0008, 0x1140, 0);
    const auto viewer = NewObject();
    EXPECT_EQ(ManagerOf(viewer)->PutPtr(0, CoreOf(root)), kOk);
    Ref<IDCMObject> copy;
    EXPECT_EQ(root->copy(copy.Receive()), kOk);
    return std::vector<Ref<IDCMObject>>{root, given, item, deep, viewer, copy};
  };
  std::array<std::size_t, 6> order = {0, 1, 2, 3, 4, 5};
  do {
    bool died = false;
    auto all = make(died);
    for (const std::size_t next : order) {
      all[next] = nullptr;
      // Root is held by its items, and the item dies with it.
      const bool held = all[0] || all[2] || all[3];
      EXPECT_EQ(died, !held);
      for (const auto& left : all) {
        if (left) Get(left, 0x0010, 0x0020);
      }
    }
    EXPECT_TRUE(CanUnload());
  } while (std::ranges::next_permutation(order).found);
}

}  // namespace
}  // namespace tessaret::test
