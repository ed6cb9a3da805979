// What classes stand on: counting, interfaces, aggregation, and the count that keeps the library.
#include "component/component_object.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "component/call_by_name.h"
#include "support/allocation_failure.h"

namespace tessaret {
namespace {

class ILamp : public IDispatch {
 public:
  static constexpr InterfaceId kId{3, 1};
  virtual Status get_Lit(Result<VariantBool> pVal) = 0;
};
class ISwitch : public IObject {
 public:
  static constexpr InterfaceId kId{3, 2};
  virtual Status Press() = 0;
};

constexpr auto kGetLit =
    Signature<decltype(&ILamp::get_Lit)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
constexpr MemberInfo kMembers[] = {{"Lit", MemberKind::kGet, kGetLit.data(), 1, ""}};
constexpr MemberCall kCalls[] = {&CallMember<&ILamp::get_Lit>};

}  // namespace

template <>
const InterfaceTable& TableOf<ILamp>() {
  static constexpr InterfaceTable kTable = {{"ILamp", ILamp::kId, kMembers, 1, ""}, kCalls};
  return kTable;
}

namespace {

int destroyed = 0;

class Lamp final : public ComponentObject<CallableByName<ILamp>, ISwitch> {
 public:
  explicit Lamp(IObject* outer) : ComponentObject(outer) {}
  ~Lamp() override {
    // Whoever is told of the end may ask for a reference once more.
    AddRef();
    Release();
    ++destroyed;
  }
  Status get_Lit(VariantBool* pVal) override {
    *pVal = lit_;
    return kOk;
  }
  Status Press() override {
    lit_ = !lit_;
    return kOk;
  }

 private:
  bool lit_ = false;
};

/// Has a lamp as a part, and an interface of its own beside it.
class Desk final : public IObject {
 public:
  static constexpr InterfaceId kOwnId{4, 1};

  Status QueryInterface(const InterfaceId& id, void** object) override {
    if (id == IObject::kId || id == kOwnId) {
      *object = static_cast<IObject*>(this);
      AddRef();
      return kOk;
    }
    return part->QueryInterface(id, object);
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }

  std::uint32_t references = 1;
  IObject* part = nullptr;
};

template <class I>
Ref<I> Make() {
  Ref<I> made;
  EXPECT_EQ(CreateObjectOf<Lamp>(nullptr, I::kId, reinterpret_cast<void**>(made.Receive())), kOk);
  return made;
}

class ComponentObjectTest : public testing::Test {
 protected:
  void SetUp() override { destroyed = 0; }
};

TEST_F(ComponentObjectTest, DiesWithItsLastReference) {
  const std::int64_t before = ObjectCount();
  {
    const auto lamp = Make<ILamp>();
    EXPECT_EQ(ObjectCount(), before + 1);
    const auto other = lamp.As<ISwitch>();
    EXPECT_EQ(lamp->AddRef(), 3u);
    EXPECT_EQ(lamp->Release(), 2u);
    EXPECT_EQ(destroyed, 0);
  }
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(ObjectCount(), before);
}

TEST_F(ComponentObjectTest, EveryInterfaceLeadsToEveryOtherAndToOneIdentity) {
  const auto lamp = Make<ILamp>();
  const auto button = lamp.As<ISwitch>();
  ASSERT_TRUE(button);
  EXPECT_EQ(button->Press(), kOk);
  VariantBool lit;
  EXPECT_EQ(button.As<ILamp>()->get_Lit(&lit), kOk);
  EXPECT_TRUE(lit.IsTrue());
  EXPECT_EQ(button.As<IObject>(), lamp.As<IObject>());
  EXPECT_EQ(lamp.As<IDispatch>().As<IObject>(), lamp.As<IObject>());
  void* none = &lit;
  EXPECT_EQ(lamp->QueryInterface({9, 9}, &none), kNoInterface);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(lamp->QueryInterface(IObject::kId, nullptr), kPointer);
}

TEST_F(ComponentObjectTest, IsCalledByName) {
  const auto lamp = Make<IDispatch>();
  std::int32_t member = -1;
  EXPECT_EQ(lamp->FindMember("Lit", MemberKind::kGet, &member), kOk);
  Variant result;
  EXPECT_EQ(lamp->Invoke(member, nullptr, 0, &result), kOk);
  EXPECT_FALSE(result.AsBool().IsTrue());
  EXPECT_TRUE(result.Is(VariantType::kBool));
}

TEST_F(ComponentObjectTest, IsAPartOfAnother) {
  Desk desk;
  ASSERT_EQ(CreateObjectOf<Lamp>(&desk, IObject::kId, reinterpret_cast<void**>(&desk.part)), kOk);
  {
    const Ref<IObject> whole(&desk);
    const auto lamp = whole.As<ILamp>();
    ASSERT_TRUE(lamp);
    // The part counts on the whole, and leads to what the whole has.
    EXPECT_EQ(desk.references, 3u);
    EXPECT_EQ(lamp.As<IObject>(), whole);
    void* own = nullptr;
    EXPECT_EQ(lamp->QueryInterface(Desk::kOwnId, &own), kOk);
    desk.Release();
  }
  EXPECT_EQ(desk.references, 1u);
  EXPECT_EQ(destroyed, 0);
  desk.part->Release();
  EXPECT_EQ(destroyed, 1);
}

TEST_F(ComponentObjectTest, APartIsAskedForAsAnObjectOnly) {
  Desk desk;
  void* part = &desk;
  EXPECT_EQ(CreateObjectOf<Lamp>(&desk, ILamp::kId, &part), kNoAggregation);
  EXPECT_EQ(part, nullptr);
  EXPECT_EQ(CreateObjectOf<Lamp>(nullptr, ILamp::kId, nullptr), kPointer);
}

TEST_F(ComponentObjectTest, AnInterfaceThatItLacksLeavesNothingBehind) {
  const std::int64_t before = ObjectCount();
  void* made = &destroyed;
  EXPECT_EQ(CreateObjectOf<Lamp>(nullptr, {9, 9}, &made), kNoInterface);
  EXPECT_EQ(made, nullptr);
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(ObjectCount(), before);
}

TEST_F(ComponentObjectTest, WithoutMemoryThereIsNone) {
  const std::int64_t before = ObjectCount();
  void* made = nullptr;
  Status status = kOk;
  {
    const test::AllocationFailure failure(1);
    status = CreateObjectOf<Lamp>(nullptr, ILamp::kId, &made);
  }
  EXPECT_EQ(status, kOutOfMemory);
  EXPECT_EQ(made, nullptr);
  EXPECT_EQ(ObjectCount(), before);
}

TEST_F(ComponentObjectTest, IsCountedFromSeveralThreads) {
  const auto lamp = Make<ILamp>();
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&lamp] {
      for (int turn = 0; turn < 10000; ++turn) const Ref<ISwitch> held = lamp.As<ISwitch>();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(destroyed, 0);
  EXPECT_EQ(lamp->AddRef(), 2u);
  EXPECT_EQ(lamp->Release(), 1u);
}

TEST_F(ComponentObjectTest, TheLibraryMayGoWithoutObjectsAndLocks) {
  ASSERT_EQ(ObjectCount(), 0);
  EXPECT_TRUE(MayUnload());
  {
    const auto lamp = Make<ILamp>();
    EXPECT_FALSE(MayUnload());
  }
  EXPECT_TRUE(MayUnload());
  LockLibrary();
  LockLibrary();
  UnlockLibrary();
  EXPECT_FALSE(MayUnload());
  UnlockLibrary();
  EXPECT_TRUE(MayUnload());
  UnlockLibrary();
  EXPECT_TRUE(MayUnload());
  LockLibrary();
  EXPECT_FALSE(MayUnload());
  UnlockLibrary();
}

}  // namespace
}  // namespace tessaret
