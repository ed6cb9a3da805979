// Calls by name with what the interfaces of images and volumes take: any object, numbers of enumerations, values that may be left away.
#include <gtest/gtest.h>

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "tessaret/img_flip_mode.hpp"

namespace tessaret {
namespace {

class IShelf : public IDispatch {
 public:
  static constexpr InterfaceId kId{7, 1};
  static constexpr const char* kName = "IShelf";

  virtual Status Put(IDispatch* thing, _ImgFlipMode flip, Optional<const Variant&> mark,
                     Result<IDispatch*> before) = 0;
  virtual Status get_Flip(Result<_ImgFlipMode> pVal) = 0;
};

constexpr auto kPut =
    Signature<decltype(&IShelf::Put)>::Describe({{{"thing"},
                                                  {"flip", ArgumentFlow::kIn, 0, "_ImgFlipMode"},
                                                  {"mark", ArgumentFlow::kOptional},
                                                  {"before", ArgumentFlow::kResult}}});
constexpr auto kFlip = Signature<decltype(&IShelf::get_Flip)>::Describe(
    {{{"pVal", ArgumentFlow::kResult, 0, "_ImgFlipMode"}}});
constexpr MemberInfo kMembers[] = {{"Put", MemberKind::kMethod, kPut.data(), kPut.size(), ""},
                                   {"Flip", MemberKind::kGet, kFlip.data(), kFlip.size(), ""}};
constexpr MemberCall kCalls[] = {&CallMember<&IShelf::Put>, &CallMember<&IShelf::get_Flip>};

}  // namespace

template <>
const InterfaceTable& TableOf<IShelf>() {
  static constexpr InterfaceTable kTable = {{IShelf::kName, IShelf::kId, kMembers, 2, ""}, kCalls};
  return kTable;
}

namespace {

class Shelf final : public ComponentObject<CallableByName<IShelf>> {
 public:
  explicit Shelf(IObject* outer) : ComponentObject(outer) {}
  Status Put(IDispatch* thing, _ImgFlipMode flip, const Variant& mark,
             IDispatch** before) override {
    *before = held_.Detach();
    held_ = Ref<IDispatch>(thing);
    flip_ = flip;
    marked = !mark.IsEmpty();
    return kOk;
  }
  Status get_Flip(_ImgFlipMode* pVal) override {
    *pVal = flip_;
    return kOk;
  }

  bool marked = false;

 private:
  Ref<IDispatch> held_;
  _ImgFlipMode flip_ = IMAGE_FLIP_NONE;
};

/// Has no calls by name.
class Stone final : public IObject {
 public:
  Status QueryInterface(const InterfaceId&, void** object) override {
    *object = nullptr;
    return kNoInterface;
  }
  std::uint32_t AddRef() override { return 2; }
  std::uint32_t Release() override { return 1; }
};

class AnyObject : public testing::Test {
 protected:
  static Ref<IShelf> Make() {
    Ref<IShelf> made;
    CreateObjectOf<Shelf>(nullptr, IShelf::kId, reinterpret_cast<void**>(made.Receive()));
    return made;
  }
  Status Put(std::vector<Variant> arguments) {
    return shelf_->Invoke(0, arguments.data(), static_cast<std::uint32_t>(arguments.size()),
                          &result_);
  }

  Ref<IShelf> shelf_ = Make();
  Variant result_;
};

TEST_F(AnyObject, IsDescribedAsOneThatCanBeCalledByName) {
  EXPECT_EQ(kPut[0].type, static_cast<std::uint16_t>(VariantType::kObject));
  EXPECT_STREQ(kPut[0].interfaceName, "IDispatch");
  EXPECT_EQ(kPut[1].type, static_cast<std::uint16_t>(VariantType::kLong));
  EXPECT_STREQ(kPut[1].interfaceName, "_ImgFlipMode");
  EXPECT_EQ(kPut[2].type, kAnyType);
  EXPECT_STREQ(kPut[2].interfaceName, "");
}

TEST_F(AnyObject, GoesInAndOut) {
  const Ref<IShelf> other = Make();
  EXPECT_EQ(Put({Variant(static_cast<IObject*>(other.Get())), Variant("3")}), kOk);
  EXPECT_EQ(result_.AsObject(), nullptr);
  EXPECT_FALSE(static_cast<Shelf*>(shelf_.Get())->marked);
  Variant flip;
  EXPECT_EQ(shelf_->Invoke(1, nullptr, 0, &flip), kOk);
  EXPECT_EQ(flip.AsLong(), IMAGE_FLIP_BOTH);
  EXPECT_EQ(Put({Variant(), Variant(std::int32_t{0}), Variant(false)}), kOk);
  EXPECT_EQ(Ref<IObject>(result_.AsObject()).As<IShelf>(), other);
  EXPECT_TRUE(static_cast<Shelf*>(shelf_.Get())->marked);
}

TEST_F(AnyObject, ThatCannotBeCalledByNameIsRefused) {
  Stone stone;
  EXPECT_EQ(Put({Variant(static_cast<IObject*>(&stone)), Variant(std::int32_t{0})}), kNoInterface);
  EXPECT_EQ(Put({Variant(5.0), Variant(std::int32_t{0})}), kTypeMismatch);
  EXPECT_EQ(Put({Variant(), Variant("left")}), kTypeMismatch);
  EXPECT_EQ(Put({Variant()}), kBadCount);
}

TEST_F(AnyObject, NumbersThatNoEnumerationNamesComeThroughForTheMemberToJudge) {
  EXPECT_EQ(Put({Variant(), Variant(std::int32_t{-77})}), kOk);
  Variant flip;
  EXPECT_EQ(shelf_->Invoke(1, nullptr, 0, &flip), kOk);
  EXPECT_EQ(flip.AsLong(), -77);
}

}  // namespace
}  // namespace tessaret
