// Calls by name: finding members, turning values into arguments and back, and what refuses.
#include "component/call_by_name.h"

#include <new>
#include <string>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

enum class Colour : std::int32_t { kRed = 0, kBlue = 7 };

/// An interface with a member of every kind.
class ILamp : public IDispatch {
 public:
  static constexpr InterfaceId kId{1, 2};
  static constexpr const char* kName = "ILamp";

  virtual Status get_Brightness(Result<std::int16_t> pVal) = 0;
  virtual Status put_Brightness(std::int16_t newVal) = 0;
  virtual Status Add(std::int32_t a, Optional<std::int32_t> b, Result<std::int32_t> sum) = 0;
  virtual Status Exchange(InOut<String> a, InOut<String> b, Out<VariantBool> differ) = 0;
  virtual Status get_Friend(Result<ILamp*> pVal) = 0;
  virtual Status putref_Friend(ILamp* newVal) = 0;
  virtual Status Echo(const Variant& value, Result<Variant> pVal) = 0;
  virtual Status Mix(Colour colour, double weight, float share, Date when, const String& name,
                     VariantBool on, std::uint8_t byte, Result<String> text) = 0;
  virtual Status Fail(Status status, Out<std::int32_t> written) = 0;
  virtual Status IsUnnamed(Optional<const String&> name, Result<VariantBool> isNull) = 0;
};

using Flow = ArgumentFlow;
constexpr auto kGetBrightness =
    Signature<decltype(&ILamp::get_Brightness)>::Describe({{{"pVal", Flow::kResult}}});
constexpr auto kPutBrightness =
    Signature<decltype(&ILamp::put_Brightness)>::Describe({{{"newVal"}}});
constexpr auto kAdd = Signature<decltype(&ILamp::Add)>::Describe(
    {{{"a"}, {"b", Flow::kOptional}, {"sum", Flow::kResult}}});
constexpr auto kExchange = Signature<decltype(&ILamp::Exchange)>::Describe(
    {{{"a", Flow::kInOut}, {"b", Flow::kInOut}, {"differ", Flow::kOut}}});
constexpr auto kGetFriend =
    Signature<decltype(&ILamp::get_Friend)>::Describe({{{"pVal", Flow::kResult}}});
constexpr auto kPutRefFriend = Signature<decltype(&ILamp::putref_Friend)>::Describe({{{"newVal"}}});
constexpr auto kEcho =
    Signature<decltype(&ILamp::Echo)>::Describe({{{"value"}, {"pVal", Flow::kResult}}});
constexpr auto kMix = Signature<decltype(&ILamp::Mix)>::Describe({{{"colour"},
                                                                   {"weight"},
                                                                   {"share"},
                                                                   {"when"},
                                                                   {"name"},
                                                                   {"on"},
                                                                   {"byte"},
                                                                   {"text", Flow::kResult}}});
constexpr auto kFail =
    Signature<decltype(&ILamp::Fail)>::Describe({{{"status"}, {"written", Flow::kOut}}});
constexpr auto kIsUnnamed = Signature<decltype(&ILamp::IsUnnamed)>::Describe(
    {{{"name", Flow::kOptional}, {"isNull", Flow::kResult}}});

constexpr MemberInfo kMembers[] = {
    {"Brightness", MemberKind::kGet, kGetBrightness.data(), 1, "How bright it is."},
    {"Brightness", MemberKind::kPut, kPutBrightness.data(), 1, ""},
    {"Add", MemberKind::kMethod, kAdd.data(), 3, ""},
    {"Exchange", MemberKind::kMethod, kExchange.data(), 3, ""},
    {"Friend", MemberKind::kGet, kGetFriend.data(), 1, ""},
    {"Friend", MemberKind::kPutRef, kPutRefFriend.data(), 1, ""},
    {"Echo", MemberKind::kMethod, kEcho.data(), 2, ""},
    {"Mix", MemberKind::kMethod, kMix.data(), 8, ""},
    {"Fail", MemberKind::kMethod, kFail.data(), 2, ""},
    {"IsUnnamed", MemberKind::kMethod, kIsUnnamed.data(), 2, ""},
};
constexpr MemberCall kCalls[] = {
    &CallMember<&ILamp::get_Brightness>,
    &CallMember<&ILamp::put_Brightness>,
    &CallMember<&ILamp::Add>,
    &CallMember<&ILamp::Exchange>,
    &CallMember<&ILamp::get_Friend>,
    &CallMember<&ILamp::putref_Friend>,
    &CallMember<&ILamp::Echo>,
    &CallMember<&ILamp::Mix>,
    &CallMember<&ILamp::Fail>,
    &CallMember<&ILamp::IsUnnamed>,
};

}  // namespace

template <>
const InterfaceTable& TableOf<ILamp>() {
  static constexpr InterfaceTable kTable = {
      {"ILamp", ILamp::kId, kMembers, std::size(kMembers), ""}, kCalls};
  return kTable;
}

namespace {

/// Lives on the stack; counts only to be asked.
class Lamp final : public CallableByName<ILamp> {
 public:
  Status QueryInterface(const InterfaceId& id, void** object) override {
    *object = nullptr;
    if (!(id == ILamp::kId || id == IDispatch::kId || id == IObject::kId)) return kNoInterface;
    *object = static_cast<ILamp*>(this);
    AddRef();
    return kOk;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }

  Status get_Brightness(std::int16_t* pVal) override {
    *pVal = brightness;
    return kOk;
  }
  Status put_Brightness(std::int16_t newVal) override {
    brightness = newVal;
    return kOk;
  }
  Status Add(std::int32_t a, std::int32_t b, std::int32_t* sum) override {
    *sum = a + b;
    return kOk;
  }
  Status Exchange(String* a, String* b, VariantBool* differ) override {
    *differ = *a != *b;
    std::swap(*a, *b);
    return kFalse;
  }
  Status get_Friend(ILamp** pVal) override {
    *pVal = other;
    if (other != nullptr) other->AddRef();
    return kOk;
  }
  Status putref_Friend(ILamp* newVal) override {
    other = newVal;
    return kOk;
  }
  Status Echo(const Variant& value, Variant* pVal) override {
    *pVal = value;
    return kOk;
  }
  Status Mix(Colour colour, double weight, float share, Date when, const String& name,
             VariantBool on, std::uint8_t byte, String* text) override {
    *text = std::to_string(static_cast<int>(colour)) + " " + std::to_string(weight) + " " +
            std::to_string(share) + " " + std::to_string(when.days) + " " + name.Utf8() +
            (name.IsNull() ? "null" : "") + " " + std::to_string(on.value) + " " +
            std::to_string(byte);
    return kOk;
  }
  Status IsUnnamed(const String& name, VariantBool* isNull) override {
    *isNull = name.IsNull();
    return kOk;
  }
  Status Fail(Status status, std::int32_t* written) override {
    if (status == kUnexpected) return kOk;
    *written = 5;
    if (status == kOutOfMemory) throw std::bad_alloc();
    return status;
  }

  std::int16_t brightness = 3;
  ILamp* other = nullptr;
  std::uint32_t references = 1;
};

/// An object of another interface.
class Stone final : public IObject {
 public:
  Status QueryInterface(const InterfaceId&, void** object) override {
    *object = nullptr;
    return kNoInterface;
  }
  std::uint32_t AddRef() override { return 2; }
  std::uint32_t Release() override { return 1; }
};

class CallByName : public testing::Test {
 protected:
  std::int32_t Find(const char* name, MemberKind kind) {
    std::int32_t member = -1;
    EXPECT_EQ(lamp_.FindMember(name, kind, &member), kOk);
    return member;
  }
  template <class... Arguments>
  Status Call(const char* name, MemberKind kind, Arguments&&... arguments) {
    std::vector<Variant> values = {Variant(std::forward<Arguments>(arguments))...};
    const Status status = lamp_.Invoke(Find(name, kind), values.data(),
                                       static_cast<std::uint32_t>(values.size()), &result_);
    values_ = std::move(values);
    return status;
  }

  Lamp lamp_;
  Variant result_;
  std::vector<Variant> values_;
};

TEST_F(CallByName, AMemberIsFoundByNameAndKind) {
  EXPECT_EQ(Find("Brightness", MemberKind::kGet), 0);
  EXPECT_EQ(Find("Brightness", MemberKind::kPut), 1);
  EXPECT_EQ(Find("brightNESS", MemberKind::kPut), 1);
  EXPECT_EQ(Find("Fail", MemberKind::kMethod), 8);
  std::int32_t member = 77;
  EXPECT_EQ(lamp_.FindMember("Brightness", MemberKind::kMethod, &member), kUnknownMember);
  EXPECT_EQ(lamp_.FindMember("Bright", MemberKind::kGet, &member), kUnknownName);
  EXPECT_EQ(lamp_.FindMember("Brightness2", MemberKind::kGet, &member), kUnknownName);
  EXPECT_EQ(lamp_.FindMember("", MemberKind::kGet, &member), kUnknownName);
  EXPECT_EQ(lamp_.FindMember(nullptr, MemberKind::kGet, &member), kPointer);
  EXPECT_EQ(lamp_.FindMember("Brightness", MemberKind::kGet, nullptr), kPointer);
  EXPECT_EQ(member, 77);
}

TEST_F(CallByName, TheDescriptionHasTypesFromTheSignatures) {
  const InterfaceInfo* info = lamp_.Describe();
  EXPECT_STREQ(info->name, "ILamp");
  EXPECT_EQ(info->id, ILamp::kId);
  ASSERT_EQ(info->memberCount, 10u);
  const MemberInfo& mix = info->members[7];
  ASSERT_EQ(mix.argumentCount, 8u);
  const std::uint16_t types[] = {3, 5, 4, 7, 8, 11, 17, 8};
  for (std::size_t at = 0; at < 8; ++at) EXPECT_EQ(mix.arguments[at].type, types[at]) << at;
  EXPECT_STREQ(mix.arguments[4].name, "name");
  EXPECT_EQ(mix.arguments[7].flow, ArgumentFlow::kResult);
  EXPECT_EQ(info->members[0].arguments[0].type, 2);
  EXPECT_EQ(info->members[4].arguments[0].type, 9);
  EXPECT_STREQ(info->members[4].arguments[0].interfaceName, "ILamp");
  EXPECT_STREQ(info->members[5].arguments[0].interfaceName, "ILamp");
  EXPECT_EQ(info->members[6].arguments[0].type, kAnyType);
  EXPECT_EQ(info->members[6].arguments[1].type, kAnyType);
  EXPECT_STREQ(info->members[0].help, "How bright it is.");
}

TEST_F(CallByName, PropertiesAreReadAndSet) {
  EXPECT_EQ(Call("Brightness", MemberKind::kGet), kOk);
  EXPECT_EQ(result_.AsShort(), 3);
  EXPECT_EQ(Call("Brightness", MemberKind::kPut, "12"), kOk);
  EXPECT_EQ(lamp_.brightness, 12);
  EXPECT_EQ(lamp_.Invoke(0, nullptr, 0, nullptr), kOk);
}

TEST_F(CallByName, OptionalArgumentsMayBeLeftAwayOrEmpty) {
  EXPECT_EQ(Call("Add", MemberKind::kMethod, 5), kOk);
  EXPECT_EQ(result_.AsLong(), 5);
  EXPECT_EQ(Call("Add", MemberKind::kMethod, 5, Variant()), kOk);
  EXPECT_EQ(result_.AsLong(), 5);
  EXPECT_EQ(Call("Add", MemberKind::kMethod, 5, 2.0), kOk);
  EXPECT_EQ(result_.AsLong(), 7);
  EXPECT_EQ(Call("IsUnnamed", MemberKind::kMethod, Variant()), kOk);
  EXPECT_EQ(result_.AsBool().value, -1);
  EXPECT_EQ(Call("IsUnnamed", MemberKind::kMethod, ""), kOk);
  EXPECT_EQ(result_.AsBool().value, 0);
}

TEST_F(CallByName, TooFewAndTooManyArgumentsAreRefused) {
  EXPECT_EQ(Call("Add", MemberKind::kMethod), kBadCount);
  EXPECT_EQ(Call("Add", MemberKind::kMethod, 1, 2, 3), kBadCount);
  EXPECT_EQ(Call("Brightness", MemberKind::kGet, 1), kBadCount);
  EXPECT_EQ(Call("Brightness", MemberKind::kPut), kBadCount);
  EXPECT_EQ(Call("Exchange", MemberKind::kMethod, "a"), kBadCount);
  EXPECT_TRUE(result_.IsEmpty());
}

TEST_F(CallByName, ArgumentsAreTurnedIntoTheirTypes) {
  EXPECT_EQ(Call("Mix", MemberKind::kMethod, "7", 1, 0.5, "2001-02-03", 12, 3, 255), kOk);
  EXPECT_EQ(result_.ToString().Utf8(), "7 1.000000 0.500000 36925.000000 12 -1 255");
  EXPECT_EQ(Call("Mix", MemberKind::kMethod, 0, 0, 0, 0, String(), false, 0), kOk);
  EXPECT_EQ(result_.ToString().Utf8(), "0 0.000000 0.000000 0.000000 null 0 0");
  // A boolean of another number stays that number.
  EXPECT_EQ(Call("Mix", MemberKind::kMethod, 0, 0, 0, 0, "", VariantBool::Of(1), 0), kOk);
  EXPECT_EQ(result_.ToString().Utf8(), "0 0.000000 0.000000 0.000000  1 0");
}

TEST_F(CallByName, WhatCannotBeTurnedIsRefusedBeforeTheCall) {
  EXPECT_EQ(Call("Brightness", MemberKind::kPut, "bright"), kTypeMismatch);
  EXPECT_EQ(Call("Brightness", MemberKind::kPut, 40000), kOverflow);
  EXPECT_EQ(lamp_.brightness, 3);
  EXPECT_EQ(Call("Add", MemberKind::kMethod, 1, "x"), kTypeMismatch);
  EXPECT_TRUE(result_.IsEmpty());
}

TEST_F(CallByName, ValuesComeBackInTheirPlaces) {
  EXPECT_EQ(Call("Exchange", MemberKind::kMethod, "one", 2, Variant()), kFalse);
  EXPECT_EQ(values_[0].ToString().Utf8(), "2");
  EXPECT_EQ(values_[1].ToString().Utf8(), "one");
  EXPECT_TRUE(values_[2].AsBool().IsTrue());
  // Nobody wants the last one.
  EXPECT_EQ(Call("Exchange", MemberKind::kMethod, "one", "one"), kFalse);
  EXPECT_EQ(values_[1].ToString().Utf8(), "one");
}

TEST_F(CallByName, ObjectsAreAskedForTheirInterface) {
  Lamp other;
  EXPECT_EQ(Call("Friend", MemberKind::kPutRef, static_cast<IObject*>(&other)), kOk);
  values_.clear();
  EXPECT_EQ(lamp_.other, &other);
  EXPECT_EQ(other.references, 1u);
  EXPECT_EQ(Call("Friend", MemberKind::kGet), kOk);
  EXPECT_EQ(result_.AsObject(), &other);
  EXPECT_EQ(other.references, 2u);
  result_.Clear();
  EXPECT_EQ(other.references, 1u);
  EXPECT_EQ(Call("Friend", MemberKind::kPutRef, Variant()), kOk);
  EXPECT_EQ(lamp_.other, nullptr);
  lamp_.other = &other;
  EXPECT_EQ(Call("Friend", MemberKind::kPutRef, static_cast<IObject*>(nullptr)), kOk);
  EXPECT_EQ(lamp_.other, nullptr);
  EXPECT_EQ(Call("Friend", MemberKind::kGet), kOk);
  EXPECT_TRUE(result_.Is(VariantType::kObject));
  EXPECT_EQ(result_.AsObject(), nullptr);
  Stone stone;
  EXPECT_EQ(Call("Friend", MemberKind::kPutRef, static_cast<IObject*>(&stone)), kNoInterface);
  EXPECT_EQ(Call("Friend", MemberKind::kPutRef, 5), kTypeMismatch);
}

TEST_F(CallByName, AnyValueComesThroughAsItIs) {
  EXPECT_EQ(Call("Echo", MemberKind::kMethod, 0.25f), kOk);
  EXPECT_EQ(result_.AsFloat(), 0.25f);
  EXPECT_EQ(Call("Echo", MemberKind::kMethod, VariantArray(VariantType::kLong, 2)), kOk);
  EXPECT_EQ(result_.AsArray()->Count(), 2u);
  EXPECT_EQ(Call("Echo", MemberKind::kMethod, Variant()), kOk);
  EXPECT_TRUE(result_.IsEmpty());
}

TEST_F(CallByName, AfterAFailureNothingComesBack) {
  EXPECT_EQ(Call("Fail", MemberKind::kMethod, kException, "untouched"), kException);
  EXPECT_EQ(values_[1].ToString().Utf8(), "untouched");
  EXPECT_EQ(Call("Fail", MemberKind::kMethod, kOutOfMemory, "untouched"), kOutOfMemory);
  EXPECT_EQ(values_[1].ToString().Utf8(), "untouched");
  EXPECT_EQ(Call("Fail", MemberKind::kMethod, kFalse, "written"), kFalse);
  EXPECT_EQ(values_[1].AsLong(), 5);
}

TEST_F(CallByName, WhatAMemberLeavesAloneComesBackAsItWas) {
  EXPECT_EQ(Call("Fail", MemberKind::kMethod, kUnexpected, 77), kOk);
  EXPECT_EQ(values_[1].AsLong(), 77);
  EXPECT_EQ(Call("Fail", MemberKind::kMethod, kUnexpected, Variant()), kOk);
  EXPECT_EQ(values_[1].AsLong(), 0);
}

TEST_F(CallByName, NumbersThatAreNoMemberAreRefused) {
  EXPECT_EQ(lamp_.Invoke(-1, nullptr, 0, nullptr), kUnknownMember);
  EXPECT_EQ(lamp_.Invoke(10, nullptr, 0, nullptr), kUnknownMember);
  EXPECT_EQ(lamp_.Invoke(2, nullptr, 1, nullptr), kPointer);
}

}  // namespace
}  // namespace tessaret
