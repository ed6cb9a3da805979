// The way to the core's data sets: records of elements, and all of it by name, where pointers travel as objects.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include <gtest/gtest.h>

#include "facade/dcm_object_helpers.h"
#include "support/allocation_failure.h"

namespace tessaret::test {
namespace {

/// Calls a member of an object by name.
Status Call(const Ref<IDispatch>& object, const char* name, MemberKind kind,
            std::vector<Variant> arguments, Variant* result = nullptr) {
  std::int32_t member = -1;
  const Status found = object->FindMember(name, kind, &member);
  if (Failed(found)) return found;
  return object->Invoke(member, arguments.data(), static_cast<std::uint32_t>(arguments.size()),
                        result);
}

Ref<IDispatch> ByName(const Ref<IDCMObject>& object) {
  return Ref<IDispatch>(ManagerOf(object).Get());
}

Ref<IDispatch> ObjectIn(const Variant& value) {
  return Ref<IObject>(value.AsObject()).As<IDispatch>();
}

bool IsAlive(const Variant& handle) {
  Variant alive;
  EXPECT_EQ(Call(ObjectIn(handle), "IsAlive", MemberKind::kGet, {}, &alive), kOk);
  return alive.AsBool().IsTrue();
}

Variant HandleOf(const Ref<IDCMObject>& object, std::int32_t takes) {
  Variant handle;
  EXPECT_EQ(Call(ByName(object), "GetPtr", MemberKind::kMethod, {takes}, &handle), kOk);
  return handle;
}

/// The record of an element, as a host in C++ meets it.
Ref<IVRRecord> RecordOf(const Ref<IDCMObject>& object, std::int32_t group, std::int32_t element) {
  Variant value;
  EXPECT_EQ(Call(ByName(object), "GetVR", MemberKind::kMethod, {group, element}, &value), kOk);
  return Ref<IObject>(value.AsObject()).As<IVRRecord>();
}

TEST(ElementRecords, TellOfAnElement) {
  const auto object = ObjectOfPatient("patient");
  _VR_RECORD_TYPE record;
  record.numseq = 7;
  record.DDO = &record;
  record.seq = &record.DDO;
  EXPECT_EQ(ManagerOf(object)->GetVR(0x0010, 0x0020, &record), kOk);
  const std::unique_ptr<char[]> bytes(record.pt);
  EXPECT_EQ(record.Group, 0x0010);
  EXPECT_EQ(record.Elem, 0x0020);
  EXPECT_EQ(record.TypeCode, 'L' * 256 + 'O');
  ASSERT_EQ(record.len, 7);
  EXPECT_EQ(std::memcmp(record.pt, "patient", 7), 0);
  // A copy of its own.
  record.pt[0] = 'X';
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "patient");
  EXPECT_EQ(record.numseq, 7);
  EXPECT_EQ(record.DDO, &record);
  EXPECT_EQ(record.seq, &record.DDO);
}

TEST(ElementRecords, OfAnElementWithoutATypeHaveThatOfTheDictionary) {
  const auto object = ObjectOfPatient("id");
  CoreOf(object)->GetVR(0x0010, 0x0020)->TypeCode = type_code::kNone;
  _VR_RECORD_TYPE record;
  EXPECT_EQ(ManagerOf(object)->GetVR(0x0010, 0x0020, &record), kOk);
  const std::unique_ptr<char[]> bytes(record.pt);
  EXPECT_EQ(record.TypeCode, 'L' * 256 + 'O');
}

TEST(ElementRecords, OfWhatIsNotThereSaySo) {
  char bytes[1];
  _VR_RECORD_TYPE record;
  record.len = 9;
  record.pt = bytes;
  record.TypeCode = 77;
  EXPECT_EQ(ManagerOf(NewObject())->GetVR(0x0010, 0x0020, &record), kOk);
  EXPECT_EQ(record.Group, -1);
  EXPECT_EQ(record.Elem, -1);
  EXPECT_EQ(record.len, 0);
  EXPECT_EQ(record.pt, nullptr);
  EXPECT_EQ(record.TypeCode, 77);
}

TEST(ElementRecords, OfAnElementWithoutBytesHaveNone) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0010, 0x0020, Variant()), kOk);
  _VR_RECORD_TYPE record;
  EXPECT_EQ(ManagerOf(object)->GetVR(0x0010, 0x0020, &record), kOk);
  EXPECT_EQ(record.Group, 0x0010);
  EXPECT_EQ(record.len, 0);
  EXPECT_EQ(record.pt, nullptr);
  // Pixels that were not loaded: a length without bytes.
  CoreOf(object)->Push(new VR(0x7FE0, 0x0010, 1000, nullptr));
  EXPECT_EQ(ManagerOf(object)->GetVR(0x7FE0, 0x0010, &record), kOk);
  EXPECT_EQ(record.len, 1000);
  EXPECT_EQ(record.pt, nullptr);
}

TEST(ElementRecords, MakeElements) {
  const auto object = NewObject();
  char bytes[] = {'a', 'b', 'c'};
  _VR_RECORD_TYPE record;
  record.Group = 0x0010;
  record.Elem = 0x0020;
  record.TypeCode = type_code::SH;
  record.len = 3;
  record.pt = bytes;
  EXPECT_EQ(ManagerOf(object)->PutVR(&record), kOk);
  bytes[0] = 'X';
  EXPECT_EQ(Raw(object, 0x0010, 0x0020), BytesOf("abc"));
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "SH");
  record.TypeCode = type_code::LO;
  record.len = 2;
  EXPECT_EQ(ManagerOf(object)->PutVR(&record), kOk);
  EXPECT_EQ(Raw(object, 0x0010, 0x0020), BytesOf("Xb"));
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "LO");
  record.len = 0;
  EXPECT_EQ(ManagerOf(object)->PutVR(&record), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).length, 0);
  record.len = 6;
  record.pt = nullptr;
  EXPECT_EQ(ManagerOf(object)->PutVR(&record), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).length, 6);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  EXPECT_EQ(Raw(object, 0x0010, 0x0020), Bytes());
}

TEST(ElementRecords, ThatMakeNoSenseChangeNothing) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(ManagerOf(object)->PutVR(nullptr), kOk);
  char bytes[] = "ab";
  _VR_RECORD_TYPE record;
  record.Group = 0x0010;
  record.Elem = 0x0020;
  record.len = -1;
  record.pt = bytes;
  EXPECT_EQ(ManagerOf(object)->PutVR(&record), kInvalidArgument);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  // A length of its own for an element with items.
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("item").Get()), kOk);
  record.Group = 0x0008;
  record.Elem = 0x1140;
  record.len = 6;
  record.pt = nullptr;
  EXPECT_FAILS_WITH(ManagerOf(object)->PutVR(&record), "The element holds items: remove it first");
  EXPECT_EQ(Describe(object, 0x0008, 0x1140).length, 0);
  EXPECT_EQ(Describe(object, 0x0008, 0x1140).type, "SQ");
}

TEST(ObjectManagerByName, GivesAndTakesOwnership) {
  const auto object = NewObject();
  EXPECT_EQ(Call(ByName(object), "GetOwnership", MemberKind::kMethod, {}), kOk);
  EXPECT_EQ(Call(ByName(object), "GetOwnership", MemberKind::kMethod, {}), kFalse);
  EXPECT_EQ(Call(ByName(object), "SetOwner", MemberKind::kMethod, {}), kOk);
  EXPECT_EQ(Call(ByName(object), "SetOwner", MemberKind::kMethod, {}), kFalse);
}

TEST(ObjectManagerByName, PassesADataSetOn) {
  auto from = ObjectOfPatient("id");
  const auto to = NewObject();
  const Variant handle = HandleOf(from, 1);
  EXPECT_EQ(Call(ByName(to), "PutPtr", MemberKind::kMethod, {std::int32_t{1}, handle}), kOk);
  from = nullptr;
  EXPECT_EQ(Text(to, 0x0010, 0x0020), "id");
  EXPECT_TRUE(IsAlive(handle));
  // It belongs to the other object now.
  const auto third = NewObject();
  EXPECT_EQ(Call(ByName(third), "PutPtr", MemberKind::kMethod, {std::int32_t{1}, handle}),
            kInvalidArgument);
  EXPECT_EQ(to->Set(third.Get()), kOk);
  EXPECT_FALSE(IsAlive(handle));
  EXPECT_EQ(Call(ByName(third), "PutPtr", MemberKind::kMethod, {std::int32_t{0}, handle}),
            kInvalidArgument);
}

TEST(ObjectManagerByName, ShowsADataSetOfAnother) {
  auto owner = ObjectOfPatient("id");
  const auto viewer = NewObject();
  const Variant handle = HandleOf(owner, 0);
  EXPECT_EQ(Call(ByName(viewer), "PutPtr", MemberKind::kMethod, {std::int32_t{1}, handle}),
            kInvalidArgument);
  EXPECT_EQ(Call(ByName(viewer), "PutPtr", MemberKind::kMethod, {std::int32_t{0}, handle}), kOk);
  EXPECT_EQ(Text(viewer, 0x0010, 0x0020), "id");
  owner = nullptr;
  EXPECT_TRUE(Get(viewer, 0x0010, 0x0020).IsEmpty());
}

TEST(ObjectManagerByName, AHandleThatNobodyTakesDestroysItsDataSet) {
  const auto object = ObjectOfPatient("id");
  {
    const Variant handle = HandleOf(object, 1);
    EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  }
  EXPECT_EQ(CoreOf(object), nullptr);
}

TEST(ObjectManagerByName, WhatAHandleOwnsNobodyElseTakes) {
  const auto object = ObjectOfPatient("id");
  const auto other = NewObject();
  Variant handle = HandleOf(object, 1);
  EXPECT_EQ(ManagerOf(object)->SetOwner(), kFalse);
  EXPECT_EQ(ManagerOf(other)->PutPtr(1, CoreOf(object)), kInvalidArgument);
  EXPECT_EQ(Call(ByName(object), "PutPtr", MemberKind::kMethod, {std::int32_t{1}, handle}), kOk);
  EXPECT_EQ(ManagerOf(object)->SetOwner(), kFalse);
  handle.Clear();
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
}

TEST(ObjectManagerByName, WhatAnObjectGivesUpByShowingItBelongsToTheHandle) {
  const auto object = ObjectOfPatient("id");
  Variant handle = HandleOf(object, 0);
  EXPECT_EQ(Call(ByName(object), "PutPtr", MemberKind::kMethod, {std::int32_t{0}, handle}), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  EXPECT_EQ(ManagerOf(object)->SetOwner(), kFalse);
  // Once more changes nothing.
  EXPECT_EQ(Call(ByName(object), "PutPtr", MemberKind::kMethod, {std::int32_t{0}, handle}), kOk);
  EXPECT_TRUE(IsAlive(handle));
  handle.Clear();
  EXPECT_EQ(CoreOf(object), nullptr);
}

/// A data set that a handle owns, and all who look at it, released in every order.
TEST(ObjectManagerByName, HandlesAndObjectsMayBeReleasedInAnyOrder) {
  constexpr std::size_t kOwner = 3;
  constexpr std::size_t kLooks = 4;
  const auto make = [](bool& died) {
    const auto from = NewObject();
    EXPECT_EQ(ManagerOf(from)->PutPtr(1, new Witness(died)), kOk);
    EXPECT_EQ(from->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("item").Get()), kOk);
    const auto viewer = NewObject();
    EXPECT_EQ(ManagerOf(viewer)->PutPtr(0, CoreOf(from)), kOk);
    const auto item = ItemOf(viewer, 0x0008, 0x1140, 0);
    return std::array<Variant, 5>{Variant(from.Get()), Variant(viewer.Get()), Variant(item.Get()),
                                  HandleOf(from, 1), HandleOf(from, 0)};
  };
  std::array<std::size_t, 5> order = {0, 1, 2, kOwner, kLooks};
  do {
    bool died = false;
    auto all = make(died);
    for (const std::size_t next : order) {
      all[next].Clear();
      EXPECT_EQ(died, all[kOwner].IsEmpty());
      for (std::size_t at = 0; at < kOwner; ++at) {
        if (all[at].IsEmpty()) continue;
        Get(Ref<IObject>(all[at].AsObject()).As<IDCMObject>(), 0x0010, 0x0020);
      }
      if (!all[kLooks].IsEmpty()) {
        EXPECT_EQ(IsAlive(all[kLooks]), !died);
      }
    }
    EXPECT_TRUE(CanUnload());
  } while (std::ranges::next_permutation(order).found);
}

TEST(ObjectManagerByName, WithoutMemoryForAHandleTheOwnerStays) {
  std::uint64_t failures = 0;
  for (std::uint64_t nth = 1;; ++nth) {
    const auto object = ObjectOfPatient("id");
    const auto named = ByName(object);
    std::int32_t member = -1;
    EXPECT_EQ(named->FindMember("GetPtr", MemberKind::kMethod, &member), kOk);
    Variant takes(std::int32_t{1});
    Variant handle;
    Status status = kOk;
    bool happened = false;
    {
      const AllocationFailure failure(nth);
      status = named->Invoke(member, &takes, 1, &handle);
      happened = failure.Happened();
    }
    if (!happened) break;
    if (Succeeded(status)) continue;
    ++failures;
    EXPECT_EQ(ManagerOf(object)->GetOwnership(), kOk) << nth;
    EXPECT_EQ(ManagerOf(object)->SetOwner(), kOk);
    EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  }
  EXPECT_GT(failures, 0u);
}

TEST(ObjectManagerByName, WhatNobodyWantsToHaveIsGone) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(Call(ByName(object), "GetVR", MemberKind::kMethod,
                 {std::int32_t{0x0010}, std::int32_t{0x0020}}),
            kOk);
  EXPECT_EQ(Call(ByName(object), "GetPtr", MemberKind::kMethod, {std::int32_t{0}}), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  EXPECT_EQ(Call(ByName(object), "GetPtr", MemberKind::kMethod, {std::int32_t{1}}), kOk);
  EXPECT_EQ(CoreOf(object), nullptr);
}

TEST(ObjectManagerByName, NoOwnershipGivesNoHandle) {
  const auto object = NewObject();
  const Variant first = HandleOf(object, 1);
  Variant second(std::int32_t{5});
  EXPECT_EQ(Call(ByName(object), "GetPtr", MemberKind::kMethod, {std::int32_t{1}}, &second),
            kFalse);
  EXPECT_TRUE(second.IsEmpty());
}

TEST(ObjectManagerByName, AnEmptyValueIsNoDataSet) {
  const auto object = NewObject();
  EXPECT_EQ(Call(ByName(object), "PutPtr", MemberKind::kMethod, {std::int32_t{1}, Variant()}), kOk);
  EXPECT_EQ(CoreOf(object), nullptr);
  EXPECT_EQ(object->Clear(), kOk);
  const Variant noObject(static_cast<IObject*>(nullptr));
  EXPECT_EQ(Call(ByName(object), "PutPtr", MemberKind::kMethod, {std::int32_t{0}, noObject}), kOk);
  EXPECT_EQ(CoreOf(object), nullptr);
  Variant none(std::int32_t{5});
  EXPECT_EQ(Call(ByName(object), "GetPtr", MemberKind::kMethod, {std::int32_t{0}}, &none), kOk);
  EXPECT_TRUE(none.IsEmpty());
}

TEST(ObjectManagerByName, RefusesWhatIsNoDataSet) {
  const auto object = NewObject();
  const auto call = [&](std::vector<Variant> arguments) {
    return Call(ByName(object), "PutPtr", MemberKind::kMethod, std::move(arguments));
  };
  EXPECT_EQ(call({std::int32_t{0}, Variant(object.Get())}), kNoInterface);
  EXPECT_EQ(call({std::int32_t{0}, std::int32_t{1234}}), kTypeMismatch);
  EXPECT_EQ(call({std::int32_t{0}, "text"}), kTypeMismatch);
  EXPECT_EQ(call({std::int32_t{0}}), kBadCount);
  EXPECT_EQ(call({}), kBadCount);
  EXPECT_EQ(call({"many", Variant()}), kTypeMismatch);
  EXPECT_EQ(Call(ByName(object), "GetPtr", MemberKind::kMethod, {}), kBadCount);
  EXPECT_EQ(Call(ByName(object), "GetPtr", MemberKind::kMethod, {"many"}), kTypeMismatch);
  EXPECT_EQ(Call(ByName(object), "GetVR", MemberKind::kMethod, {std::int32_t{1}}), kBadCount);
  EXPECT_EQ(Call(ByName(object), "GetVR", MemberKind::kMethod, {"many", std::int32_t{1}}),
            kTypeMismatch);
  EXPECT_EQ(Call(ByName(object), "GetVR", MemberKind::kMethod, {std::int32_t{1}, "many"}),
            kTypeMismatch);
  EXPECT_EQ(Call(ByName(object), "PutVR", MemberKind::kMethod, {}), kBadCount);
  EXPECT_EQ(Call(ByName(object), "PutVR", MemberKind::kMethod, {std::int32_t{1}}), kTypeMismatch);
  EXPECT_EQ(Call(ByName(object), "PutVR", MemberKind::kMethod, {Variant(object.Get())}),
            kNoInterface);
  EXPECT_EQ(Call(ByName(object), "PutVR", MemberKind::kMethod, {Variant()}), kOk);
}

TEST(ObjectManagerByName, ReadsAndChangesRecords) {
  const auto object = ObjectOfPatient("id");
  Variant value;
  EXPECT_EQ(Call(ByName(object), "GetVR", MemberKind::kMethod,
                 {std::int32_t{0x0010}, std::int32_t{0x0020}}, &value),
            kOk);
  const auto record = ObjectIn(value);
  const auto get = [&](const char* name) {
    Variant found;
    EXPECT_EQ(Call(record, name, MemberKind::kGet, {}, &found), kOk);
    return found;
  };
  EXPECT_EQ(get("Group").AsLong(), 0x0010);
  EXPECT_EQ(get("Elem").AsLong(), 0x0020);
  EXPECT_EQ(get("TypeCode").AsLong(), 'L' * 256 + 'O');
  EXPECT_EQ(get("len").AsLong(), 2);
  ASSERT_NE(get("pt").AsArray(), nullptr);
  EXPECT_EQ(get("pt").AsArray()->Bytes()[1], 'd');

  EXPECT_EQ(Call(record, "Elem", MemberKind::kPut, {std::int32_t{0x0021}}), kOk);
  EXPECT_EQ(Call(record, "Group", MemberKind::kPut, {std::int32_t{0x0010}}), kOk);
  EXPECT_EQ(Call(record, "TypeCode", MemberKind::kPut, {std::int32_t{type_code::SH}}), kOk);
  EXPECT_EQ(Call(record, "pt", MemberKind::kPut, {VariantArray::OfBytes(BytesOf("new"))}), kOk);
  EXPECT_EQ(get("len").AsLong(), 3);
  EXPECT_EQ(Call(ByName(object), "PutVR", MemberKind::kMethod, {value}), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0021), "new");
  EXPECT_EQ(Describe(object, 0x0010, 0x0021).type, "SH");
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  Variant other;
  EXPECT_EQ(Call(ByName(object), "GetVR", MemberKind::kMethod,
                 {std::int32_t{0x0010}, std::int32_t{0x0021}}, &other),
            kOk);
  Variant bytes;
  EXPECT_EQ(Call(ObjectIn(other), "pt", MemberKind::kGet, {}, &bytes), kOk);
  ASSERT_NE(bytes.AsArray(), nullptr);
  EXPECT_EQ(bytes.AsArray()->Count(), 3u);

  EXPECT_EQ(Call(record, "pt", MemberKind::kPut, {"text"}), kTypeMismatch);
  EXPECT_EQ(Call(record, "pt", MemberKind::kPut, {VariantArray(VariantType::kShort, 2)}),
            kTypeMismatch);
  const ArrayBound square[] = {{0, 2}, {0, 2}};
  EXPECT_EQ(Call(record, "pt", MemberKind::kPut, {VariantArray(VariantType::kByte, square)}),
            kTypeMismatch);
  EXPECT_EQ(get("len").AsLong(), 3);
  EXPECT_EQ(Call(record, "pt", MemberKind::kPut, {Variant()}), kOk);
  EXPECT_EQ(get("len").AsLong(), 0);
  EXPECT_TRUE(get("pt").IsEmpty());
}

TEST(ObjectManagerByName, ARecordOfWhatIsNotThereSaysSo) {
  Variant value;
  EXPECT_EQ(Call(ByName(NewObject()), "GetVR", MemberKind::kMethod,
                 {std::int32_t{0x0010}, std::int32_t{0x0020}}, &value),
            kOk);
  Variant group;
  EXPECT_EQ(Call(ObjectIn(value), "Group", MemberKind::kGet, {}, &group), kOk);
  EXPECT_EQ(group.AsLong(), -1);
}

TEST(ObjectManagerByName, ARecordHasAnUndefinedLengthAndLow16BitsOfAType) {
  const auto object = NewObject();
  CoreOf(object)->Push(new VR(0x7FE0, 0x0010, kUndefinedLength, nullptr));
  const auto record = RecordOf(object, 0x7FE0, 0x0010);
  std::int32_t number = 0;
  EXPECT_EQ(record->get_len(&number), kOk);
  EXPECT_EQ(number, -1);
  for (const std::int32_t type : {0x30000 + type_code::OB, -0x10000 + type_code::OB}) {
    EXPECT_EQ(record->put_TypeCode(0), kOk);
    EXPECT_EQ(record->put_TypeCode(type), kOk);
    EXPECT_EQ(record->get_TypeCode(&number), kOk);
    EXPECT_EQ(number, type_code::OB);
  }
}

TEST(ObjectManagerByName, RecordsAndHandlesRefuseNullPointers) {
  const auto object = ObjectOfPatient("id");
  const auto record = RecordOf(object, 0x0010, 0x0020);
  EXPECT_EQ(record->get_Group(nullptr), kPointer);
  EXPECT_EQ(record->get_Elem(nullptr), kPointer);
  EXPECT_EQ(record->get_TypeCode(nullptr), kPointer);
  EXPECT_EQ(record->get_len(nullptr), kPointer);
  EXPECT_EQ(record->get_pt(nullptr), kPointer);
  const Variant handle = HandleOf(object, 0);
  EXPECT_EQ(Ref<IObject>(handle.AsObject()).As<IDataSetHandle>()->get_IsAlive(nullptr), kPointer);
}

TEST(ObjectManagerByName, RecordsWithoutMemoryAreAsTheyWere) {
  const auto record = RecordOf(ObjectOfPatient("id"), 0x0010, 0x0020);
  const Variant bytes = VariantArray::OfBytes(Bytes(100, 1));
  Variant found;
  std::int32_t length = 0;
  std::uint64_t failures = 0;
  const auto count = [&](Status status) {
    if (status == kOutOfMemory) ++failures;
    EXPECT_TRUE(status == kOk || status == kOutOfMemory);
  };
  FailEveryAllocation([&] { count(record->get_pt(&found)); });
  EXPECT_GT(failures, 0u);
  EXPECT_EQ(found.AsArray()->Count(), 2u);
  FailEveryAllocation([&] { count(record->put_pt(bytes)); },
                      [&] {
                        EXPECT_EQ(record->get_len(&length), kOk);
                        EXPECT_EQ(record->get_pt(&found), kOk);
                        EXPECT_EQ(found.AsArray()->Count(), static_cast<std::uint64_t>(length));
                      });
  EXPECT_EQ(length, 100);
}

TEST(ObjectByName, SetsAPropertyWithOptionalArgumentsLeftAway) {
  const auto object = NewObject();
  const Ref<IDispatch> named = object.As<IDispatch>();
  EXPECT_EQ(
      Call(named, "VR", MemberKind::kPut, {std::int32_t{0x0008}, std::int32_t{0x0008}, "ORIGINAL"}),
      kOk);
  EXPECT_EQ(
      Call(named, "VR", MemberKind::kPut,
           {std::int32_t{0x0008}, std::int32_t{0x0008}, Variant(), std::int32_t{1}, "PRIMARY"}),
      kOk);
  EXPECT_EQ(Raw(object, 0x0008, 0x0008), BytesOf("ORIGINAL\\PRIMARY"));
  EXPECT_EQ(Call(named, "VR", MemberKind::kPut, {std::int32_t{0x0008}, std::int32_t{0x0008}}),
            kBadCount);
  EXPECT_EQ(Call(named, "VR", MemberKind::kPut, {}), kBadCount);
}

}  // namespace
}  // namespace tessaret::test
