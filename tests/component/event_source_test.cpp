// Connections for events: who is told, in which order, and what sinks may do while they are told.
#include "component/event_source.h"

#include <pthread.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "component/component_object.h"
#include "support/allocation_failure.h"

namespace tessaret {
namespace {

class ILamp : public IDispatch {
 public:
  static constexpr InterfaceId kId{5, 1};
  virtual Status Press() = 0;
};
class ILampEvents : public IObject {
 public:
  static constexpr InterfaceId kId{5, 2};
  virtual Status OnPress() = 0;
  virtual Status OnBright(std::int16_t brightness, const String& name) = 0;
};

constexpr MemberInfo kMembers[] = {{"Press", MemberKind::kMethod, nullptr, 0, ""}};
constexpr MemberCall kCalls[] = {&CallMember<&ILamp::Press>};
constexpr auto kBright =
    Signature<decltype(&ILampEvents::OnBright)>::Describe({{{"brightness"}, {"name"}}});
constexpr MemberInfo kEvents[] = {{"OnPress", MemberKind::kMethod, nullptr, 0, ""},
                                  {"OnBright", MemberKind::kMethod, kBright.data(), 2, ""}};
constexpr MemberCall kEventCalls[] = {&CallMember<&ILampEvents::OnPress>,
                                      &CallMember<&ILampEvents::OnBright>};

}  // namespace

template <>
const InterfaceTable& TableOf<ILamp>() {
  static constexpr InterfaceTable kTable = {{"ILamp", ILamp::kId, kMembers, 1, ""}, kCalls};
  return kTable;
}
template <>
const InterfaceTable& TableOf<ILampEvents>() {
  static constexpr InterfaceTable kTable = {{"_ILampEvents", ILampEvents::kId, kEvents, 2, ""},
                                            kEventCalls};
  return kTable;
}

namespace {

class Lamp final : public ComponentObject<CallableByName<ILamp>, EventSource<ILampEvents>> {
 public:
  explicit Lamp(IObject* outer) : ComponentObject(outer) {}
  Status Press() override {
    Fire<&ILampEvents::OnPress>();
    Fire<&ILampEvents::OnBright>(std::int16_t{7}, String("high"));
    return kOk;
  }
};

using Words = std::vector<std::string>;
Words heard;

/// Notes what it hears; does `then` when it does.
class NumberSink final : public IEventSink {
 public:
  explicit NumberSink(std::string name) : name_(std::move(name)) {}
  Status QueryInterface(const InterfaceId& id, void** object) override {
    *object = id == IEventSink::kId || id == IObject::kId ? this : nullptr;
    if (*object == nullptr) return kNoInterface;
    AddRef();
    return kOk;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }
  Status OnEvent(std::int32_t event, const Variant* arguments, std::uint32_t count) override {
    std::string words = name_ + " " + std::to_string(event);
    for (std::uint32_t at = 0; at < count; ++at) {
      Variant text = arguments[at];
      EXPECT_EQ(text.ChangeType(VariantType::kString), kOk);
      words += " " + text.ToString().Utf8();
    }
    heard.push_back(words);
    // A copy: what is done may replace it.
    if (const auto action = then) action();
    return kException;
  }

  std::function<void()> then;
  std::uint32_t references = 1;

 private:
  std::string name_;
};

/// Has the event interface itself.
class TypedSink final : public ILampEvents {
 public:
  Status QueryInterface(const InterfaceId& id, void** object) override {
    *object = id == ILampEvents::kId || id == IObject::kId ? this : nullptr;
    if (*object == nullptr) return kNoInterface;
    AddRef();
    return kOk;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }
  Status OnPress() override {
    heard.emplace_back("typed press");
    throw 5;
  }
  Status OnBright(std::int16_t brightness, const String& name) override {
    heard.push_back("typed " + std::to_string(brightness) + " " + name.Utf8());
    return kOk;
  }

  std::uint32_t references = 1;
};

class Events : public testing::Test {
 protected:
  void SetUp() override {
    heard.clear();
    ASSERT_EQ(CreateObjectOf<Lamp>(nullptr, ILamp::kId, reinterpret_cast<void**>(lamp_.Receive())),
              kOk);
    source_ = lamp_.As<IEventSource>();
  }
  std::uint32_t Connect(IObject& sink) {
    std::uint32_t cookie = 0;
    EXPECT_EQ(source_->Advise(&sink, &cookie), kOk);
    return cookie;
  }
  std::vector<std::string> Press() {
    heard.clear();
    EXPECT_EQ(lamp_->Press(), kOk);
    return heard;
  }

  NumberSink& NewSink(const char* name) {
    sinks_.push_back(std::make_unique<NumberSink>(name));
    return *sinks_.back();
  }

  // Those who listen outlive what they listen to.
  std::vector<std::unique_ptr<NumberSink>> sinks_;
  TypedSink typed_;
  Ref<ILamp> lamp_;
  Ref<IEventSource> source_;
};

/// Belongs to nobody but what it listens to, and leaves when it ends.
class LeavingSink final : public IEventSink {
 public:
  Status QueryInterface(const InterfaceId& id, void** object) override {
    *object = id == IEventSink::kId || id == IObject::kId ? this : nullptr;
    if (*object == nullptr) return kNoInterface;
    AddRef();
    return kOk;
  }
  std::uint32_t AddRef() override { return ++references_; }
  std::uint32_t Release() override {
    const std::uint32_t left = --references_;
    if (left == 0) delete this;
    return left;
  }
  Status OnEvent(std::int32_t, const Variant*, std::uint32_t) override { return kOk; }

  IEventSource* source = nullptr;
  std::uint32_t cookie = 0;
  NumberSink* heir = nullptr;

 private:
  ~LeavingSink() {
    if (heir != nullptr) heard.push_back("heir " + std::to_string(source->Advise(heir, &cookie)));
    heard.push_back("left " + std::to_string(source->Unadvise(cookie) == kNoConnection));
    Ref<ILamp> lamp = Ref<IEventSource>(source).As<ILamp>();
    heard.push_back("pressed " + std::to_string(lamp->Press()));
  }

  std::uint32_t references_ = 1;
};

TEST_F(Events, ASinkThatEndsWithItsSourceMayLeaveAndLook) {
  for (int turn = 0; turn < 3; ++turn) {
    const auto sink = Ref<LeavingSink>::Adopt(new LeavingSink);
    sink->source = source_.Get();
    sink->cookie = Connect(*sink);
  }
  source_ = nullptr;
  lamp_ = nullptr;
  EXPECT_EQ(heard, (Words{"left 1", "pressed 0", "left 1", "pressed 0", "left 1", "pressed 0"}));
}

TEST_F(Events, ASourceThatEndsTakesNoSink) {
  NumberSink& heir = NewSink("heir");
  {
    const auto sink = Ref<LeavingSink>::Adopt(new LeavingSink);
    sink->source = source_.Get();
    sink->cookie = Connect(*sink);
    sink->heir = &heir;
  }
  source_ = nullptr;
  lamp_ = nullptr;
  EXPECT_EQ(heard, (Words{"heir " + std::to_string(kUnexpected), "left 1", "pressed 0"}));
  EXPECT_EQ(heir.references, 1u);
}

TEST_F(Events, AThreadThatIsCancelledInASinkEnds) {
  NumberSink& one = NewSink("one");
  NumberSink& two = NewSink("two");
  Connect(one);
  Connect(two);
  one.then = [] {
    ::pthread_cancel(::pthread_self());
    ::pthread_testcancel();
  };
  const auto press = [](void* lamp) -> void* {
    static_cast<ILamp*>(lamp)->Press();
    return nullptr;
  };
  pthread_t thread{};
  ASSERT_EQ(::pthread_create(&thread, nullptr, press, lamp_.Get()), 0);
  void* result = nullptr;
  ASSERT_EQ(::pthread_join(thread, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_EQ(heard, (Words{"one 0"}));
  one.then = nullptr;
  EXPECT_EQ(Press(), (Words{"one 0", "two 0", "one 1 7 high", "two 1 7 high"}));
}

TEST_F(Events, AreDescribed) {
  EXPECT_STREQ(source_->DescribeEvents()->name, "_ILampEvents");
  EXPECT_EQ(source_->DescribeEvents()->memberCount, 2u);
}

TEST_F(Events, ReachEverySinkInTheOrderOfConnecting) {
  NumberSink& first = NewSink("first");
  TypedSink& typed = typed_;
  NumberSink& last = NewSink("last");
  Connect(first);
  Connect(typed);
  Connect(last);
  EXPECT_EQ(Press(), (Words{"first 0", "typed press", "last 0", "first 1 7 high", "typed 7 high",
                            "last 1 7 high"}));
  lamp_ = nullptr;
  source_ = nullptr;
  EXPECT_EQ(first.references, 1u);
  EXPECT_EQ(typed.references, 1u);
}

TEST_F(Events, ASinkThatLeftHearsNothing) {
  NumberSink& one = NewSink("one");
  NumberSink& two = NewSink("two");
  const std::uint32_t cookie = Connect(one);
  Connect(two);
  EXPECT_EQ(one.references, 2u);
  EXPECT_EQ(source_->Unadvise(cookie), kOk);
  EXPECT_EQ(one.references, 1u);
  EXPECT_EQ(Press(), (Words{"two 0", "two 1 7 high"}));
  EXPECT_EQ(source_->Unadvise(cookie), kNoConnection);
  EXPECT_EQ(source_->Unadvise(0), kNoConnection);
  EXPECT_EQ(source_->Unadvise(77), kNoConnection);
}

TEST_F(Events, OneSinkMayBeConnectedTwice) {
  NumberSink& one = NewSink("one");
  const std::uint32_t first = Connect(one);
  const std::uint32_t second = Connect(one);
  EXPECT_NE(first, second);
  EXPECT_EQ(Press(), (Words{"one 0", "one 0", "one 1 7 high", "one 1 7 high"}));
  EXPECT_EQ(source_->Unadvise(first), kOk);
  EXPECT_EQ(Press(), (Words{"one 0", "one 1 7 high"}));
}

TEST_F(Events, OthersThanSinksCannotConnect) {
  std::uint32_t cookie = 77;
  EXPECT_EQ(source_->Advise(lamp_.Get(), &cookie), kCannotConnect);
  EXPECT_EQ(cookie, 0u);
  NumberSink& one = NewSink("one");
  cookie = 77;
  EXPECT_EQ(source_->Advise(nullptr, &cookie), kPointer);
  EXPECT_EQ(cookie, 0u);
  EXPECT_EQ(source_->Advise(&one, nullptr), kPointer);
  EXPECT_EQ(one.references, 1u);
}

TEST_F(Events, WithoutMemoryNobodyIsConnected) {
  NumberSink& one = NewSink("one");
  std::uint32_t cookie = 77;
  Status status = kOk;
  {
    const test::AllocationFailure failure(1);
    status = source_->Advise(&one, &cookie);
  }
  EXPECT_EQ(status, kOutOfMemory);
  EXPECT_EQ(one.references, 1u);
  EXPECT_EQ(Press(), Words());
}

TEST_F(Events, SinksThatCameAndLeftTakeNoRoom) {
  NumberSink& one = NewSink("one");
  ASSERT_EQ(source_->Unadvise(Connect(one)), kOk);
  const test::AllocationWatch watch;
  for (int turn = 0; turn < 1000; ++turn) ASSERT_EQ(source_->Unadvise(Connect(one)), kOk);
  EXPECT_EQ(watch.Count(), 0u);
}

TEST_F(Events, NoConnectionHasTheNumberZeroAlsoWhileASinkHasLeft) {
  NumberSink& one = NewSink("one");
  const std::uint32_t cookie = Connect(one);
  std::vector<Status> answers;
  one.then = [&] {
    answers.push_back(source_->Unadvise(cookie));
    answers.push_back(source_->Unadvise(cookie));
    answers.push_back(source_->Unadvise(0));
  };
  Press();
  EXPECT_EQ(answers, (std::vector<Status>{kOk, kNoConnection, kNoConnection}));
}

TEST_F(Events, ASinkMayLeaveWhileItIsTold) {
  NumberSink& one = NewSink("one");
  NumberSink& two = NewSink("two");
  const std::uint32_t cookie = Connect(one);
  Connect(two);
  one.then = [&] { EXPECT_EQ(source_->Unadvise(cookie), kOk); };
  EXPECT_EQ(Press(), (Words{"one 0", "two 0", "two 1 7 high"}));
  EXPECT_EQ(one.references, 1u);
}

TEST_F(Events, ASinkMaySendTheNextOneAway) {
  NumberSink& one = NewSink("one");
  NumberSink& two = NewSink("two");
  Connect(one);
  const std::uint32_t cookie = Connect(two);
  one.then = [&] {
    source_->Unadvise(cookie);
    one.then = nullptr;
  };
  EXPECT_EQ(Press(), (Words{"one 0", "one 1 7 high"}));
}

TEST_F(Events, ASinkThatJoinsMeanwhileHearsTheNextEventFirst) {
  NumberSink& one = NewSink("one");
  NumberSink& two = NewSink("two");
  Connect(one);
  one.then = [&] {
    for (int turn = 0; turn < 100; ++turn) source_->Unadvise(Connect(two));
    Connect(two);
    one.then = nullptr;
  };
  EXPECT_EQ(Press(), (Words{"one 0", "one 1 7 high", "two 1 7 high"}));
}

TEST_F(Events, AnEventMayBeFiredWhileOneIsTold) {
  NumberSink& one = NewSink("one");
  const std::uint32_t cookie = Connect(one);
  one.then = [&] {
    one.then = [&] { source_->Unadvise(cookie); };
    lamp_->Press();
  };
  EXPECT_EQ(Press(), (Words{"one 0", "one 0"}));
  EXPECT_EQ(one.references, 1u);
}

TEST_F(Events, ASinkMayLetGoOfTheSource) {
  NumberSink& one = NewSink("one");
  Connect(one);
  one.then = [&] {
    source_ = nullptr;
    one.then = nullptr;
  };
  // Whoever calls holds the object himself.
  const Ref<ILamp> caller = lamp_;
  lamp_ = nullptr;
  EXPECT_EQ(caller->Press(), kOk);
  EXPECT_EQ(heard, (Words{"one 0", "one 1 7 high"}));
}

}  // namespace
}  // namespace tessaret
