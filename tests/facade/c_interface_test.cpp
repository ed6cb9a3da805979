// The C interface: values there and back, calls by name, who owns what, and what refuses.
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "component/event_source.h"
#include "component/proxy_helpers.h"
#include "component/report.h"
#include "facade/c_handles.h"
#include "facade/c_host.h"
#include "facade/c_values.h"
#include "facade/class_ids.h"
#include "support/allocation_failure.h"
#include "tessaret/tessaret.hpp"

namespace tessaret {
namespace {

tessaret_value Long(std::int32_t number) {
  tessaret_value value{};
  value.type = TESSARET_LONG;
  value.as.long_value = number;
  return value;
}
tessaret_value Text(const char* text, std::uint32_t length = 0) {
  tessaret_value value{};
  value.type = TESSARET_STRING;
  value.as.string_value = text;
  value.length = length;
  return value;
}

/// There and back again.
tessaret_value Back(const tessaret_value& from) {
  Variant between;
  EXPECT_EQ(FromC(from, between), kOk);
  EXPECT_EQ(between.Tag(), from.type);
  tessaret_value to{};
  ToC(std::move(between), to);
  EXPECT_EQ(to.type, from.type);
  return to;
}

TEST(CHost, ReadsTheDictionary) {
  char type[64] = "";
  char name[64] = "";
  EXPECT_EQ(DescribeElement(0x0010, 0x0010, type, name, sizeof name), -1);
  EXPECT_STREQ(type, "PN");
  EXPECT_STREQ(name, "Patient's Name");
  EXPECT_EQ(DescribeElement(0x0009, 0x1001, type, name, sizeof name), 0);
  EXPECT_EQ(CountMembers("Tessaret.DcmDictionary"), 4);
  EXPECT_EQ(CountMembers("Tessaret.DCMOptions"), 2);
  EXPECT_EQ(CountMembers("Tessaret.Nothing"), -1);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

TEST(CHost, AsksForInterfacesByName) {
  char described[64] = "";
  int members = 0;
  EXPECT_EQ(
      QueryInterfaceOf("Tessaret.DCMOptions", "idcmOPTIONS", described, sizeof described, &members),
      0);
  EXPECT_STREQ(described, "IDCMOptions");
  EXPECT_EQ(members, 2);
  EXPECT_EQ(QueryInterfaceOf("Tessaret.DcmDictionary", "IDispatch", described, sizeof described,
                             &members),
            0);
  EXPECT_STREQ(described, "IDcmDictionary");
  EXPECT_EQ(QueryInterfaceOf("Tessaret.DcmDictionary", "IDCMOptions", described, sizeof described,
                             &members),
            kNoInterface);
  EXPECT_EQ(members, -1);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

TEST(CHost, ReachesTheDataSetBehindAnObjectByName) {
  char described[64] = "";
  int members = 0;
  EXPECT_EQ(QueryInterfaceOf("Tessaret.DCMObject", "IDcmObjectManager", described, sizeof described,
                             &members),
            0);
  EXPECT_STREQ(described, "IDcmObjectManager");
  EXPECT_EQ(members, 6);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

TEST(CHost, PumpsInItsOwnLoop) {
  EXPECT_EQ(WatchAndPump(0), 0);
  test::NotingProxy proxy;
  ASSERT_TRUE(proxy.Create(nullptr));
  std::thread worker([&] { test::Post(proxy, 7); });
  EXPECT_EQ(WatchAndPump(10000), 1);
  worker.join();
  EXPECT_EQ(proxy.heard, (std::vector<int>{7}));
  EXPECT_EQ(WatchAndPump(0), 0);
}

TEST(CHost, KnowsTheValuesOfEnumerations) {
  EXPECT_EQ(ValueOf("OBLIQUE_ORTHO_AXIAL"), 6);
  EXPECT_EQ(ValueOf("IMAGE_RGB"), 3);
  EXPECT_EQ(ValueOf("_EnumImageType"), -1);
}

TEST(CValues, NumbersComeThrough) {
  tessaret_value value{};
  EXPECT_EQ(Back(value).type, TESSARET_EMPTY);
  value.type = TESSARET_SHORT;
  value.as.short_value = -5;
  EXPECT_EQ(Back(value).as.short_value, -5);
  EXPECT_EQ(Back(Long(-100000)).as.long_value, -100000);
  value.type = TESSARET_FLOAT;
  value.as.float_value = 0.5f;
  EXPECT_EQ(Back(value).as.float_value, 0.5f);
  value.type = TESSARET_DOUBLE;
  value.as.double_value = 0.1;
  EXPECT_EQ(Back(value).as.double_value, 0.1);
  value.type = TESSARET_DATE;
  value.as.date_value = 36925.25;
  EXPECT_EQ(Back(value).as.date_value, 36925.25);
  value.type = TESSARET_BOOL;
  value.as.bool_value = 7;
  EXPECT_EQ(Back(value).as.bool_value, 7);
  value.type = TESSARET_SIGNED_BYTE;
  value.as.signed_byte_value = -7;
  EXPECT_EQ(Back(value).as.signed_byte_value, -7);
  value.type = TESSARET_BYTE;
  value.as.byte_value = 200;
  EXPECT_EQ(Back(value).as.byte_value, 200);
}

TEST(CValues, TextComesThroughWithLengthOrToItsFirstZero) {
  tessaret_value back = Back(Text("M\xC3\xBCller"));
  EXPECT_EQ(back.length, 7u);
  EXPECT_STREQ(back.as.string_value, "M\xC3\xBCller");
  tessaret_clear(&back);
  EXPECT_EQ(back.type, TESSARET_EMPTY);
  EXPECT_EQ(back.as.string_value, nullptr);
  back = Back(Text("a\0b", 3));
  EXPECT_EQ(std::string(back.as.string_value, back.length), std::string("a\0b", 3));
  EXPECT_EQ(back.as.string_value[3], '\0');
  tessaret_clear(&back);
  back = Back(Text("M\xFCller"));
  EXPECT_STREQ(back.as.string_value, "M\xFCller");
  tessaret_clear(&back);
  back = Back(Text(""));
  EXPECT_STREQ(back.as.string_value, "");
  tessaret_clear(&back);
  back = Back(Text(nullptr));
  EXPECT_EQ(back.as.string_value, nullptr);
  EXPECT_EQ(back.owned, 0);
}

TEST(CValues, ArraysComeThrough) {
  const tessaret_bound bounds[] = {{1, 2}, {-1, 3}};
  std::int32_t entries[] = {1, 2, 3, 4, 5, 6};
  const tessaret_array array = {bounds, entries, 6, 2};
  tessaret_value value{};
  value.type = TESSARET_ARRAY | TESSARET_LONG;
  value.as.array_value = &array;
  tessaret_value back = Back(value);
  const tessaret_array* made = back.as.array_value;
  ASSERT_NE(made, &array);
  EXPECT_EQ(made->dimensions, 2u);
  EXPECT_EQ(made->bounds[1].lower, -1);
  EXPECT_EQ(made->bounds[1].count, 3u);
  ASSERT_EQ(made->count, 6u);
  EXPECT_EQ(std::memcmp(made->entries, entries, sizeof entries), 0);
  tessaret_clear(&back);
}

TEST(CValues, ArraysThatAreNotThereAreRefused) {
  const tessaret_bound bounds[] = {{0, 4}};
  std::int32_t entries[] = {1, 2, 3, 4};
  Variant to;
  tessaret_array array = {bounds, entries, 3, 1};
  tessaret_value value{};
  value.type = TESSARET_ARRAY | TESSARET_LONG;
  value.as.array_value = &array;
  EXPECT_EQ(FromC(value, to), kInvalidArgument);
  array = {bounds, nullptr, 4, 1};
  EXPECT_EQ(FromC(value, to), kInvalidArgument);
  array = {nullptr, entries, 4, 1};
  EXPECT_EQ(FromC(value, to), kPointer);
  value.as.array_value = nullptr;
  EXPECT_EQ(FromC(value, to), kTypeMismatch);
  array = {nullptr, nullptr, 0, 0};
  value.as.array_value = &array;
  EXPECT_EQ(FromC(value, to), kOk);
  value.type = TESSARET_ARRAY | TESSARET_STRING;
  EXPECT_EQ(FromC(value, to), kTypeMismatch);
  const tessaret_bound large[] = {{0, 0xFFFFFFFF}, {0, 0xFFFFFFFF}, {0, 0xFFFFFFFF}};
  array = {large, entries, 4, 3};
  value.type = TESSARET_ARRAY | TESSARET_BYTE;
  EXPECT_EQ(FromC(value, to), kInvalidArgument);
}

TEST(CValues, ArraysWithAnEmptyDimensionHaveNoEntriesHoweverLongTheOthersAre) {
  const tessaret_bound bounds[] = {{0, 0xFFFFFFFF}, {1, 0xFFFFFFFF}, {2, 0xFFFFFFFF}, {3, 0}};
  for (const std::uint32_t first : {0u, 3u}) {
    const tessaret_bound turned[] = {bounds[first], bounds[1], bounds[2], bounds[3 - first]};
    const tessaret_array array = {turned, nullptr, 0, 4};
    tessaret_value value{};
    value.type = TESSARET_ARRAY | TESSARET_LONG;
    value.as.array_value = &array;
    tessaret_value back = Back(value);
    ASSERT_EQ(back.type, value.type);
    EXPECT_EQ(back.as.array_value->count, 0u);
    ASSERT_EQ(back.as.array_value->dimensions, 4u);
    EXPECT_EQ(back.as.array_value->bounds[3].lower, static_cast<std::int32_t>(3 - first));
    // And once more, as the library gave it.
    tessaret_value again = Back(back);
    EXPECT_EQ(again.as.array_value->count, 0u);
    tessaret_clear(&again);
    tessaret_clear(&back);
  }
}

TEST(CValues, NoMemoryIsTakenForEntriesThatAreNotThere) {
  const tessaret_bound bounds[] = {{0, 100'000'000}};
  std::uint8_t entry = 1;
  const tessaret_array array = {bounds, &entry, 1, 1};
  tessaret_value value{};
  value.type = TESSARET_ARRAY | TESSARET_BYTE;
  value.as.array_value = &array;
  Variant to;
  const test::AllocationWatch watch;
  EXPECT_EQ(FromC(value, to), kInvalidArgument);
  EXPECT_EQ(watch.Count(), 0u);
}

TEST(CValues, TypesThatAreNoneAreRefused) {
  Variant to;
  tessaret_value value{};
  for (const int type : {1, 6, 10, 12, 18, 100, 0x4003, 0xFFFF}) {
    value.type = static_cast<std::uint16_t>(type);
    EXPECT_EQ(FromC(value, to), kTypeMismatch) << type;
  }
}

TEST(CValues, ClearingFreesWhatTheLibraryGave) {
  const tessaret_bound bounds[] = {{0, 2}};
  std::int32_t entries[] = {1, 2};
  const tessaret_array array = {bounds, entries, 2, 1};
  tessaret_value numbers{};
  numbers.type = TESSARET_ARRAY | TESSARET_LONG;
  numbers.as.array_value = &array;
  for (const tessaret_value& value : {Text("a text"), numbers}) {
    const test::AllocationWatch watch;
    tessaret_value back = Back(value);
    EXPECT_GT(watch.Outstanding(), 0);
    tessaret_clear(&back);
    EXPECT_EQ(watch.Outstanding(), 0);
  }
}

TEST(CValues, ClearingWhatOwnsNothingDoesNoHarm) {
  char mine[] = "mine";
  tessaret_value value = Text(mine);
  tessaret_clear(&value);
  EXPECT_STREQ(mine, "mine");
  tessaret_clear(&value);
  tessaret_clear(nullptr);
}

TEST(CValues, NothingIsLeftOfWhatWasThere) {
  Variant to("old");
  EXPECT_EQ(FromC(tessaret_value{}, to), kOk);
  EXPECT_TRUE(to.IsEmpty());
  tessaret_value value{};
  std::memset(&value, 0x55, sizeof value);
  ToC(Variant(), value);
  const tessaret_value empty{};
  EXPECT_EQ(std::memcmp(&value, &empty, sizeof value), 0);
  std::memset(&value, 0x55, sizeof value);
  ToC(Variant(static_cast<IObject*>(nullptr)), value);
  EXPECT_EQ(value.type, TESSARET_OBJECT);
  EXPECT_EQ(value.as.object_value, nullptr);
  EXPECT_EQ(value.owned, 0);
  tessaret_clear(&value);
}

class CObject : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(tessaret_create("Tessaret.DcmDictionary", &dictionary_), 0); }
  void TearDown() override { tessaret_release(dictionary_); }

  tessaret_object* dictionary_ = nullptr;
};

TEST_F(CObject, PropertiesAreReadByName) {
  tessaret_value value{};
  ASSERT_EQ(tessaret_get(dictionary_, "NumEntries", nullptr, 0, &value), 0);
  EXPECT_EQ(value.type, TESSARET_SHORT);
  EXPECT_GT(value.as.short_value, 5000);
  EXPECT_EQ(tessaret_get(dictionary_, "NumEntries", nullptr, 0, nullptr), 0);
}

TEST_F(CObject, PropertiesAreSetByName) {
  tessaret_object* options = nullptr;
  ASSERT_EQ(tessaret_create("Tessaret.DCMOptions", &options), 0);
  tessaret_value value{};
  ASSERT_EQ(tessaret_get(options, "UseTotokuLUT", nullptr, 0, &value), 0);
  EXPECT_EQ(value.type, TESSARET_BOOL);
  // The value that is there already, so that nobody's settings change.
  EXPECT_EQ(tessaret_put(options, "usetotokulut", &value, 1), 0);
  EXPECT_EQ(tessaret_put(options, "UseTotokuLUT", nullptr, 0), kBadCount);
  tessaret_release(options);
}

TEST_F(CObject, WhatACallWritesIsTheCallersToClear) {
  char own[] = "my own text";
  tessaret_value arguments[] = {Long(0x10), Long(0x10), Text(own), Text(nullptr)};
  tessaret_value found{};
  std::int32_t member = -1;
  ASSERT_EQ(tessaret_find(dictionary_, "GetVRDescription", TESSARET_METHOD, &member), 0);
  ASSERT_EQ(tessaret_call(dictionary_, member, arguments, 4, &found), 0);
  EXPECT_EQ(found.as.bool_value, -1);
  EXPECT_STREQ(arguments[2].as.string_value, "PN");
  EXPECT_STREQ(own, "my own text");
  EXPECT_EQ(arguments[0].as.long_value, 0x10);
  for (tessaret_value& argument : arguments) tessaret_clear(&argument);
}

TEST_F(CObject, AFailedCallLeavesItsArgumentsAlone) {
  char own[] = "no number";
  tessaret_value arguments[] = {Text(own), Long(0x10), Text(own), Text(own)};
  tessaret_value found = Long(77);
  EXPECT_EQ(tessaret_invoke(dictionary_, "GetVRDescription", TESSARET_METHOD, arguments, 4, &found),
            kTypeMismatch);
  for (const std::size_t at : {0u, 2u, 3u}) EXPECT_EQ(arguments[at].as.string_value, own);
  EXPECT_EQ(found.as.long_value, 77);
}

TEST_F(CObject, RefusesWhatIsNotThere) {
  std::int32_t member = 0;
  EXPECT_EQ(tessaret_find(dictionary_, "Nothing", TESSARET_METHOD, &member), kUnknownName);
  EXPECT_EQ(tessaret_find(dictionary_, "NumEntries", TESSARET_METHOD, &member), kUnknownMember);
  EXPECT_EQ(tessaret_find(dictionary_, "NumEntries", 77, &member), kUnknownMember);
  EXPECT_EQ(tessaret_find(dictionary_, nullptr, TESSARET_GET, &member), kPointer);
  EXPECT_EQ(tessaret_find(nullptr, "NumEntries", TESSARET_GET, &member), kPointer);
  EXPECT_EQ(tessaret_call(dictionary_, -1, nullptr, 0, nullptr), kUnknownMember);
  EXPECT_EQ(tessaret_call(dictionary_, 4, nullptr, 0, nullptr), kUnknownMember);
  EXPECT_EQ(tessaret_call(dictionary_, 0, nullptr, 1, nullptr), kPointer);
  EXPECT_EQ(tessaret_call(nullptr, 0, nullptr, 0, nullptr), kPointer);
  tessaret_value many[20] = {};
  EXPECT_EQ(tessaret_call(dictionary_, 1, many, 20, nullptr), kBadCount);
  EXPECT_EQ(tessaret_call(dictionary_, 1, many, 0xFFFFFFFF, nullptr), kBadCount);
  EXPECT_EQ(tessaret_describe(nullptr), nullptr);
  EXPECT_EQ(tessaret_describe_events(nullptr), nullptr);
  tessaret_retain(nullptr);
  tessaret_release(nullptr);
  tessaret_object* object = dictionary_;
  EXPECT_EQ(tessaret_create("Tessaret.DCMVolume", &object), kNotImplemented);
  EXPECT_EQ(object, nullptr);
  EXPECT_STREQ(tessaret_last_error_source(), "Tessaret.DCMVolume");
  EXPECT_STREQ(tessaret_last_error_text(), "This class is not available in this version");
  EXPECT_EQ(tessaret_create(nullptr, &object), kPointer);
  EXPECT_EQ(tessaret_create("Tessaret.DCMVolume", nullptr), kPointer);
}

TEST_F(CObject, IsDescribed) {
  const tessaret_interface_info* info = tessaret_describe(dictionary_);
  EXPECT_STREQ(info->name, "IDcmDictionary");
  EXPECT_EQ(info->id[1], IDcmDictionary::kId.low);
  ASSERT_EQ(info->member_count, 4u);
  const tessaret_member_info& entry = info->members[1];
  EXPECT_STREQ(entry.name, "GetEntry");
  EXPECT_EQ(entry.kind, TESSARET_METHOD);
  ASSERT_EQ(entry.argument_count, 4u);
  EXPECT_STREQ(entry.arguments[1].name, "Group");
  EXPECT_EQ(entry.arguments[1].flow, TESSARET_OUT);
  EXPECT_EQ(entry.arguments[1].type, TESSARET_LONG);
  EXPECT_EQ(entry.arguments[3].flow, TESSARET_RESULT);
  EXPECT_EQ(tessaret_describe_events(dictionary_), nullptr);
}

TEST_F(CObject, IsAskedForNothingThatIsNoInterface) {
  tessaret_object* other = dictionary_;
  EXPECT_EQ(tessaret_query(dictionary_, "INothing", &other), kNoInterface);
  EXPECT_EQ(other, nullptr);
  // Events are heard, not called.
  EXPECT_EQ(tessaret_query(dictionary_, "_IDCMOptionsEvents", &other), kNoInterface);
  other = dictionary_;
  EXPECT_EQ(tessaret_query(dictionary_, nullptr, &other), kPointer);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(tessaret_query(nullptr, "IDcmDictionary", &other), kPointer);
  EXPECT_EQ(tessaret_query(dictionary_, "IDcmDictionary", nullptr), kPointer);
}

int puts = 0;

/// An object with two interfaces, each with members of its own.
class TwoFaces final
    : public ComponentObject<CallableByName<IDCMOptions>, CallableByName<IDcmDictionary>> {
 public:
  explicit TwoFaces(IObject* outer) : ComponentObject(outer) {}
  Status get_UseTotokuLUT(VariantBool* pVal) override {
    *pVal = true;
    return kOk;
  }
  Status put_UseTotokuLUT(VariantBool) override {
    ++puts;
    return kOk;
  }
  Status get_NumEntries(std::int16_t* pVal) override {
    *pVal = 77;
    return kOk;
  }
  Status GetEntry(std::int16_t Idx, std::int32_t*, std::int32_t*, VariantBool*) override {
    if (Idx < 0) throw std::runtime_error("nobody foresaw this");
    return kOk;
  }
  Status GetVRDescription(std::int32_t, std::int32_t, String*, String*, VariantBool*) override {
    return kOk;
  }
  Status GetUIDDescription(const String&, String*, String*, String*, VariantBool*,
                           VariantBool*) override {
    return kOk;
  }
};

TEST(CQuery, LeadsFromOneInterfaceOfAnObjectToTheOtherAndBack) {
  void* made = nullptr;
  ASSERT_EQ(CreateObjectOf<TwoFaces>(nullptr, IDispatch::kId, &made), kOk);
  tessaret_object* options = GiveHandle(Ref<IDispatch>::Adopt(static_cast<IDispatch*>(made)));
  tessaret_object* dictionary = nullptr;
  ASSERT_EQ(tessaret_query(options, "IDcmDictionary", &dictionary), 0);
  EXPECT_NE(dictionary, options);
  EXPECT_STREQ(tessaret_describe(options)->name, "IDCMOptions");
  EXPECT_STREQ(tessaret_describe(dictionary)->name, "IDcmDictionary");
  tessaret_value value{};
  EXPECT_EQ(tessaret_get(options, "NumEntries", nullptr, 0, &value), kUnknownName);
  EXPECT_EQ(tessaret_get(dictionary, "NumEntries", nullptr, 0, &value), 0);
  EXPECT_EQ(value.as.short_value, 77);
  EXPECT_EQ(tessaret_get(dictionary, "UseTotokuLUT", nullptr, 0, &value), kUnknownName);
  tessaret_object* back = nullptr;
  ASSERT_EQ(tessaret_query(dictionary, "IDispatch", &back), 0);
  EXPECT_EQ(back, options);
  for (tessaret_object* object : {options, dictionary, back}) tessaret_release(object);
  EXPECT_EQ(tessaret_can_unload(), 1);
}

TEST(CCall, WhatIsThrownBelowDoesNotReachTheHost) {
  void* made = nullptr;
  ASSERT_EQ(CreateObjectOf<TwoFaces>(nullptr, IDispatch::kId, &made), kOk);
  tessaret_object* options = GiveHandle(Ref<IDispatch>::Adopt(static_cast<IDispatch*>(made)));
  tessaret_object* dictionary = nullptr;
  ASSERT_EQ(tessaret_query(options, "IDcmDictionary", &dictionary), 0);
  tessaret_value arguments[] = {Long(-1), Long(5), Long(6)};
  tessaret_value found = Long(77);
  EXPECT_EQ(tessaret_invoke(dictionary, "GetEntry", TESSARET_METHOD, arguments, 3, &found),
            kUnexpected);
  EXPECT_EQ(arguments[1].as.long_value, 5);
  EXPECT_EQ(found.as.long_value, 77);
  arguments[0] = Long(0);
  EXPECT_EQ(tessaret_invoke(dictionary, "GetEntry", TESSARET_METHOD, arguments, 3, &found), 0);
  EXPECT_EQ(arguments[1].as.long_value, 5);
  tessaret_release(dictionary);
  tessaret_release(options);
}

TEST(CCall, IsDoneWhollyOrNotAtAllWithoutMemory) {
  void* made = nullptr;
  ASSERT_EQ(CreateObjectOf<TwoFaces>(nullptr, IDispatch::kId, &made), kOk);
  tessaret_object* options = GiveHandle(Ref<IDispatch>::Adopt(static_cast<IDispatch*>(made)));
  tessaret_value value{};
  value.type = TESSARET_BOOL;
  const std::uint64_t allocations = test::FailEveryAllocation([&] {
    puts = 0;
    const Status status = tessaret_put(options, "UseTotokuLUT", &value, 1);
    EXPECT_TRUE(status == kOk || status == kOutOfMemory);
    EXPECT_EQ(puts, status == kOk ? 1 : 0);
  });
  EXPECT_GT(allocations, 0u);
  tessaret_release(options);
}

class ITellerEvents : public IObject {
 public:
  static constexpr InterfaceId kId{7, 1};
  virtual Status OnNothing() = 0;
  virtual Status OnWords(const String& name, std::int16_t index, const String& words) = 0;
};

constexpr auto kOnWords =
    Signature<decltype(&ITellerEvents::OnWords)>::Describe({{{"name"}, {"index"}, {"words"}}});
constexpr MemberInfo kTellerEvents[] = {
    {"OnNothing", MemberKind::kMethod, nullptr, 0, ""},
    {"OnWords", MemberKind::kMethod, kOnWords.data(), kOnWords.size(), ""}};
constexpr MemberCall kTellerCalls[] = {&CallMember<&ITellerEvents::OnNothing>,
                                       &CallMember<&ITellerEvents::OnWords>};

}  // namespace

template <>
const InterfaceTable& TableOf<ITellerEvents>() {
  static constexpr InterfaceTable kTable = {
      {"_ITellerEvents", ITellerEvents::kId, kTellerEvents, std::size(kTellerEvents), ""},
      kTellerCalls};
  return kTable;
}

namespace {

/// What became of a Teller, in order.
std::vector<std::string> fate;

/// Tells an event with texts whenever the option is set.
class Teller final
    : public ComponentObject<CallableByName<IDCMOptions>, EventSource<ITellerEvents>> {
 public:
  explicit Teller(IObject* outer) : ComponentObject(outer) {}
  ~Teller() override { fate.emplace_back("gone"); }
  Status get_UseTotokuLUT(VariantBool* pVal) override {
    *pVal = false;
    return kOk;
  }
  Status put_UseTotokuLUT(VariantBool newVal) override {
    const std::int16_t index = newVal.value;
    Fire<&ITellerEvents::OnWords>(String("a file"), index, String("M\xC3\xBCller"));
    fate.emplace_back("told");
    return kOk;
  }
};

/// What one function hears, and what it does about it.
struct Hearing {
  tessaret_object* object = nullptr;
  std::uint32_t cookie = 0;
  bool letsGo = false;
  std::vector<std::string> heard;
};

void Hear(void* user, std::int32_t event, const tessaret_value* arguments, std::uint32_t count) {
  auto& hearing = *static_cast<Hearing*>(user);
  ASSERT_EQ(count, 3u);
  ASSERT_EQ(arguments[0].type, TESSARET_STRING);
  ASSERT_EQ(arguments[1].type, TESSARET_SHORT);
  hearing.heard.push_back(std::to_string(event) + " " + arguments[0].as.string_value + " " +
                          std::to_string(arguments[1].as.short_value));
  if (!hearing.letsGo) return;
  EXPECT_EQ(tessaret_unadvise(hearing.object, hearing.cookie), 0);
  tessaret_release(hearing.object);
  // The function is called still, and its arguments are there.
  hearing.heard.emplace_back(arguments[2].as.string_value, arguments[2].length);
}

TEST(CEvents, ReachTheFunctionsThatAreConnected) {
  void* made = nullptr;
  ASSERT_EQ(CreateObjectOf<Teller>(nullptr, IDispatch::kId, &made), kOk);
  tessaret_object* object = GiveHandle(Ref<IDispatch>::Adopt(static_cast<IDispatch*>(made)));
  Hearing first;
  Hearing second;
  first.object = second.object = object;
  ASSERT_EQ(tessaret_advise(object, &Hear, &first, &first.cookie), 0);
  ASSERT_EQ(tessaret_advise(object, &Hear, &second, &second.cookie), 0);
  EXPECT_STREQ(tessaret_describe_events(object)->members[1].name, "OnWords");
  tessaret_value value{};
  value.type = TESSARET_BOOL;
  value.as.bool_value = 7;
  EXPECT_EQ(tessaret_put(object, "UseTotokuLUT", &value, 1), 0);
  EXPECT_EQ(tessaret_unadvise(object, second.cookie), 0);
  // The last reference of the host goes while the object calls.
  first.letsGo = true;
  EXPECT_EQ(tessaret_put(object, "UseTotokuLUT", &value, 1), 0);
  EXPECT_EQ(first.heard, (std::vector<std::string>{"1 a file 7", "1 a file 7", "M\xC3\xBCller"}));
  EXPECT_EQ(second.heard, (std::vector<std::string>{"1 a file 7"}));
  // It stayed until the call was over.
  EXPECT_EQ(fate, (std::vector<std::string>{"told", "told", "gone"}));
  EXPECT_EQ(tessaret_can_unload(), 1);
}

TEST(CEvents, LeaveNothingBehindWhateverMemoryThereIs) {
  void* made = nullptr;
  ASSERT_EQ(CreateObjectOf<Teller>(nullptr, IDispatch::kId, &made), kOk);
  tessaret_object* object = GiveHandle(Ref<IDispatch>::Adopt(static_cast<IDispatch*>(made)));
  static int heard = 0;
  const auto count = [](void*, std::int32_t, const tessaret_value*, std::uint32_t) { ++heard; };
  fate.reserve(1000);
  test::FailEveryAllocation([&] {
    const test::AllocationWatch watch;
    std::uint32_t cookie = 77;
    const Status status = tessaret_advise(object, count, nullptr, &cookie);
    EXPECT_TRUE(status == kOk || status == kOutOfMemory);
    EXPECT_EQ(cookie != 0, status == kOk);
    tessaret_value value{};
    value.type = TESSARET_BOOL;
    tessaret_put(object, "UseTotokuLUT", &value, 1);
    if (status == kOk) {
      EXPECT_EQ(tessaret_unadvise(object, cookie), 0);
      EXPECT_EQ(tessaret_unadvise(object, cookie), kNoConnection);
    }
    // The list of connections keeps its room for one.
    EXPECT_LE(watch.Outstanding(), 1);
  });
  EXPECT_GT(heard, 0);
  tessaret_release(object);
  fate.clear();
}

tessaret_object* waiting = nullptr;

TEST(CCall, AThreadThatIsCancelledInOneEnds) {
  // Nobody writes into the pipe: the load waits for ever.
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_EQ(tessaret_create("Tessaret.DCMObject", &waiting), 0);
  static const std::string path = "/dev/fd/" + std::to_string(ends[0]);
  const auto load = [](void*) -> void* {
    tessaret_value arguments[] = {Text(path.c_str()), {}};
    arguments[1].type = TESSARET_BOOL;
    tessaret_invoke(waiting, "Load", TESSARET_METHOD, arguments, 2, nullptr);
    return nullptr;
  };
  pthread_t thread{};
  ASSERT_EQ(::pthread_create(&thread, nullptr, load, nullptr), 0);
  EXPECT_EQ(::pthread_cancel(thread), 0);
  void* answer = nullptr;
  EXPECT_EQ(::pthread_join(thread, &answer), 0);
  EXPECT_EQ(answer, PTHREAD_CANCELED);
  tessaret_release(waiting);
  for (const int end : ends) ::close(end);
}

TEST_F(CObject, LivesAsLongAsReferencesAreHeld) {
  tessaret_retain(dictionary_);
  tessaret_release(dictionary_);
  EXPECT_EQ(tessaret_can_unload(), 0);
  tessaret_value value{};
  EXPECT_EQ(tessaret_get(dictionary_, "NumEntries", nullptr, 0, &value), 0);
}

TEST_F(CObject, EventsAreConnectedByFunction) {
  tessaret_object* options = nullptr;
  ASSERT_EQ(tessaret_create("Tessaret.DCMOptions", &options), 0);
  const auto ignore = [](void*, std::int32_t, const tessaret_value*, std::uint32_t) {};
  std::uint32_t cookie = 0;
  EXPECT_EQ(tessaret_advise(options, ignore, nullptr, &cookie), 0);
  EXPECT_NE(cookie, 0u);
  EXPECT_EQ(tessaret_unadvise(options, cookie), 0);
  EXPECT_EQ(tessaret_unadvise(options, cookie), kNoConnection);
  EXPECT_STREQ(tessaret_describe_events(options)->name, "_IDCMOptionsEvents");
  EXPECT_EQ(tessaret_advise(options, nullptr, nullptr, &cookie), kPointer);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(tessaret_advise(options, ignore, nullptr, nullptr), kPointer);
  cookie = 77;
  EXPECT_EQ(tessaret_advise(nullptr, ignore, nullptr, &cookie), kPointer);
  EXPECT_EQ(cookie, 0u);
  cookie = 77;
  EXPECT_EQ(tessaret_advise(dictionary_, ignore, nullptr, &cookie), kNoInterface);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(tessaret_unadvise(dictionary_, 1), kNoInterface);
  EXPECT_EQ(tessaret_unadvise(nullptr, 1), kPointer);
  tessaret_release(options);
}

TEST_F(CObject, WithoutMemoryNothingIsGivenAndNothingLost) {
  char own[] = "my own";
  std::uint64_t refused = 0;
  // What is said of it then needs no room of its own.
  Report(class_id::kDcmDictionary, "words as long as those that come", {});
  test::FailEveryAllocation(
      [&] {
        const test::AllocationWatch watch;
        tessaret_value arguments[] = {Long(0x10), Long(0x10), Text(own), Text(own)};
        tessaret_value found = Long(77);
        if (tessaret_invoke(dictionary_, "GetVRDescription", TESSARET_METHOD, arguments, 4,
                            &found) == kOutOfMemory) {
          ++refused;
          EXPECT_EQ(arguments[2].as.string_value, own);
          EXPECT_EQ(found.as.long_value, 77);
        }
        for (tessaret_value& argument : arguments) tessaret_clear(&argument);
        EXPECT_EQ(watch.Outstanding(), 0);
      },
      [] {});
  EXPECT_GT(refused, 3u);
}

}  // namespace
}  // namespace tessaret
