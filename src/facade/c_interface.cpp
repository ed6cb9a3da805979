#include <cxxabi.h>

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

#include "base/text.h"
#include "component/class_table.h"
#include "component/report.h"
#include "facade/c_handles.h"
#include "facade/c_values.h"
#include "facade/enumerations.h"
#include "facade/named_interface.h"
#include "tessaret/events.hpp"
#include "tessaret/library.hpp"

namespace tessaret {
namespace {

// Descriptions are handed out as they are: the two forms have the same layout.
static_assert(sizeof(tessaret_argument_info) == sizeof(ArgumentInfo));
static_assert(offsetof(tessaret_argument_info, flow) == offsetof(ArgumentInfo, flow));
static_assert(offsetof(tessaret_argument_info, type) == offsetof(ArgumentInfo, type));
static_assert(offsetof(tessaret_argument_info, interface_name) ==
              offsetof(ArgumentInfo, interfaceName));
static_assert(sizeof(tessaret_member_info) == sizeof(MemberInfo));
static_assert(offsetof(tessaret_member_info, kind) == offsetof(MemberInfo, kind));
static_assert(offsetof(tessaret_member_info, arguments) == offsetof(MemberInfo, arguments));
static_assert(offsetof(tessaret_member_info, argument_count) ==
              offsetof(MemberInfo, argumentCount));
static_assert(offsetof(tessaret_member_info, help) == offsetof(MemberInfo, help));
static_assert(sizeof(tessaret_interface_info) == sizeof(InterfaceInfo));
static_assert(offsetof(tessaret_interface_info, id) == offsetof(InterfaceInfo, id));
static_assert(offsetof(tessaret_interface_info, members) == offsetof(InterfaceInfo, members));
static_assert(offsetof(tessaret_interface_info, member_count) ==
              offsetof(InterfaceInfo, memberCount));
static_assert(offsetof(tessaret_interface_info, help) == offsetof(InterfaceInfo, help));
static_assert(TESSARET_RESULT == static_cast<int>(ArgumentFlow::kResult));
static_assert(TESSARET_PUTREF == static_cast<int>(MemberKind::kPutRef));
static_assert(TESSARET_BYTE == static_cast<int>(VariantType::kByte));
static_assert(TESSARET_ANY == kAnyType);

const tessaret_interface_info* Shown(const InterfaceInfo* info) {
  return reinterpret_cast<const tessaret_interface_info*>(info);
}

/// The arguments of one call as the library takes them; short lists need no memory.
class Arguments {
 public:
  explicit Arguments(std::uint32_t count) {
    if (count > few_.size()) many_.resize(count);
    values_ = count > few_.size() ? many_.data() : few_.data();
  }
  Variant* Get() { return values_; }

 private:
  std::array<Variant, 8> few_;
  std::vector<Variant> many_;
  Variant* values_ = nullptr;
};

bool IsWritten(const MemberInfo& member, std::uint32_t argument) {
  const ArgumentFlow flow = member.arguments[argument].flow;
  return flow == ArgumentFlow::kOut || flow == ArgumentFlow::kInOut;
}

/// What a call gives back, all of it or nothing: without memory the caller's values stay as they were. `made` has room for `count`
/// values and the result.
Status GiveBack(const MemberInfo& member, Variant* given, std::uint32_t count,
                tessaret_value* arguments, Variant&& outcome, tessaret_value* result,
                std::vector<tessaret_value>& made) {
  try {
    for (std::uint32_t at = 0; at < count; ++at) {
      if (IsWritten(member, at)) ToC(std::move(given[at]), made[at]);
    }
    if (result != nullptr) ToC(std::move(outcome), made[count]);
  } catch (const std::bad_alloc&) {
    for (tessaret_value& value : made) tessaret_clear(&value);
    return kOutOfMemory;
  }
  for (std::uint32_t at = 0; at < count; ++at) {
    if (IsWritten(member, at)) arguments[at] = made[at];
  }
  if (result != nullptr) *result = made[count];
  return kOk;
}

Status Call(IDispatch& object, std::int32_t member, tessaret_value* arguments, std::uint32_t count,
            tessaret_value* result) {
  const InterfaceInfo& info = *object.Describe();
  if (member < 0 || static_cast<std::uint32_t>(member) >= info.memberCount) return kUnknownMember;
  const MemberInfo& described = info.members[member];
  if (count > described.argumentCount) return kBadCount;
  Arguments given(count);
  for (std::uint32_t at = 0; at < count; ++at) {
    const Status status = FromC(arguments[at], given.Get()[at]);
    if (Failed(status)) return status;
  }
  Variant outcome;
  // Before the call: one that writes nothing is not to fail when it has been done.
  std::vector<tessaret_value> made(count + 1);
  const Status status = object.Invoke(member, given.Get(), count, &outcome);
  if (Failed(status)) return status;
  const Status back =
      GiveBack(described, given.Get(), count, arguments, std::move(outcome), result, made);
  return Failed(back) ? back : status;
}

/// Hears events for a function of the host.
class FunctionSink final : public IEventSink {
 public:
  FunctionSink(tessaret_event event, void* user) : event_(event), user_(user) {}

  Status QueryInterface(const InterfaceId& id, void** object) override {
    if (object == nullptr) return kPointer;
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
  Status OnEvent(std::int32_t event, const Variant* arguments, std::uint32_t count) override {
    std::vector<tessaret_value> values(count);
    const auto clear = [](std::vector<tessaret_value>* all) {
      for (tessaret_value& value : *all) tessaret_clear(&value);
    };
    const std::unique_ptr<std::vector<tessaret_value>, decltype(clear)> cleared(&values, clear);
    for (std::uint32_t at = 0; at < count; ++at) ToC(Variant(arguments[at]), values[at]);
    event_(user_, event, values.data(), count);
    return kOk;
  }

 private:
  ~FunctionSink() = default;

  tessaret_event event_;
  void* user_;
  std::uint32_t references_ = 1;
};

/// Why `object` leads nowhere.
Status NoObject(tessaret_object* object) { return object == nullptr ? kPointer : kNoObject; }

/// Does `work` where nothing may be thrown into C.
template <class Work>
Status Quietly(Work work) {
  try {
    return work();
  } catch (const abi::__forced_unwind&) {
    throw;  // the thread is being cancelled
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  } catch (...) {
    return kUnexpected;
  }
}

}  // namespace
}  // namespace tessaret

using namespace tessaret;

int32_t tessaret_create(const char* name, tessaret_object** object) {
  if (object == nullptr) return kPointer;
  *object = nullptr;
  void* made = nullptr;
  const Status status = tessaret_create_object(name, &IDispatch::kId, nullptr, &made);
  if (Failed(status)) return status;
  const Status given = Quietly([&] {
    *object = GiveHandle(Ref<IDispatch>::Adopt(static_cast<IDispatch*>(made)));
    return status;
  });
  // The words of an older failure would pass for those of this one.
  if (Failed(given)) Report(FindClass(name)->id, "Not enough memory", IDispatch::kId);
  return given;
}

int32_t tessaret_query(tessaret_object* object, const char* name, tessaret_object** other) {
  if (other == nullptr) return kPointer;
  *other = nullptr;
  if (object == nullptr || name == nullptr) return kPointer;
  const Ref<IDispatch> held = HeldObject(object);
  if (!held) return kNoObject;
  return Quietly([&] {
    for (const NamedInterface& interface : AllInterfaces()) {
      if (IsSameIgnoringCase(interface.name, name)) *other = GiveHandle(interface.ask(held));
    }
    return *other == nullptr ? kNoInterface : kOk;
  });
}

const tessaret_enumeration* tessaret_enumerations(uint32_t* count) {
  const std::span<const tessaret_enumeration> all = AllEnumerations();
  if (count != nullptr) *count = static_cast<std::uint32_t>(all.size());
  return all.data();
}

void tessaret_retain(tessaret_object* object) { RetainHandle(object); }

void tessaret_release(tessaret_object* object) { ReleaseHandle(object); }

const tessaret_interface_info* tessaret_describe(tessaret_object* object) {
  const Ref<IDispatch> held = HeldObject(object);
  return held ? Shown(held->Describe()) : nullptr;
}

const tessaret_interface_info* tessaret_describe_events(tessaret_object* object) {
  const Ref<IEventSource> source = HeldObject(object).As<IEventSource>();
  return source ? Shown(source->DescribeEvents()) : nullptr;
}

int32_t tessaret_find(tessaret_object* object, const char* name, int32_t kind, int32_t* member) {
  const Ref<IDispatch> held = HeldObject(object);
  if (!held) return NoObject(object);
  return held->FindMember(name, static_cast<MemberKind>(kind), member);
}

int32_t tessaret_call(tessaret_object* object, int32_t member, tessaret_value* arguments,
                      uint32_t count, tessaret_value* result) {
  if (object == nullptr || (arguments == nullptr && count != 0)) return kPointer;
  // The object stays, whatever the call does to the caller's reference.
  const Ref<IDispatch> held = HeldObject(object);
  if (!held) return kNoObject;
  return Quietly([&] { return Call(*held, member, arguments, count, result); });
}

int32_t tessaret_invoke(tessaret_object* object, const char* name, int32_t kind,
                        tessaret_value* arguments, uint32_t count, tessaret_value* result) {
  int32_t member = 0;
  const Status status = tessaret_find(object, name, kind, &member);
  return Failed(status) ? status : tessaret_call(object, member, arguments, count, result);
}

int32_t tessaret_get(tessaret_object* object, const char* name, tessaret_value* arguments,
                     uint32_t count, tessaret_value* value) {
  return tessaret_invoke(object, name, TESSARET_GET, arguments, count, value);
}

int32_t tessaret_put(tessaret_object* object, const char* name, tessaret_value* arguments,
                     uint32_t count) {
  return tessaret_invoke(object, name, TESSARET_PUT, arguments, count, nullptr);
}

int32_t tessaret_advise(tessaret_object* object, tessaret_event event, void* user,
                        uint32_t* cookie) {
  if (cookie == nullptr) return kPointer;
  *cookie = 0;
  if (object == nullptr || event == nullptr) return kPointer;
  const Ref<IDispatch> held = HeldObject(object);
  if (!held) return kNoObject;
  const Ref<IEventSource> source = held.As<IEventSource>();
  if (!source) return kNoInterface;
  return Quietly([&] {
    const auto sink = Ref<IEventSink>::Adopt(new FunctionSink(event, user));
    return source->Advise(sink.Get(), cookie);
  });
}

int32_t tessaret_unadvise(tessaret_object* object, uint32_t cookie) {
  const Ref<IDispatch> held = HeldObject(object);
  if (!held) return NoObject(object);
  const Ref<IEventSource> source = held.As<IEventSource>();
  return source ? source->Unadvise(cookie) : kNoInterface;
}
