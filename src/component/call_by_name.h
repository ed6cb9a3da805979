// From the values of a call by name to the typed arguments of a member of an interface, and back. A member is described and
// called through its own signature, so that no table can disagree with it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

#include "component/variant_conversion.h"
#include "tessaret/dispatch.hpp"

namespace tessaret {

/// What an interface is called.
template <class Interface>
constexpr const char* NameOf() {
  if constexpr (std::is_same_v<Interface, IDispatch>) {
    return "IDispatch";
  } else {
    return Interface::kName;
  }
}

/// How a type travels in a Variant: its tag, and the ways in and out.
template <class T>
struct Passing;

template <class T, VariantType kType, auto kRead>
struct PlainPassing {
  static constexpr std::uint16_t kTag = static_cast<std::uint16_t>(kType);
  static constexpr const char* kInterface = "";
  static Status In(const Variant& from, T& to) {
    if (from.Is(kType)) {
      to = (from.*kRead)();
      return kOk;
    }
    Variant changed;
    const Status status = ConvertVariant(from, kType, changed);
    if (Succeeded(status)) to = (changed.*kRead)();
    return status;
  }
  static void Out(T&& from, Variant& to) { to = Variant(std::move(from)); }
};

template <>
struct Passing<std::int16_t> : PlainPassing<std::int16_t, VariantType::kShort, &Variant::AsShort> {
};
template <>
struct Passing<std::int32_t> : PlainPassing<std::int32_t, VariantType::kLong, &Variant::AsLong> {};
template <>
struct Passing<float> : PlainPassing<float, VariantType::kFloat, &Variant::AsFloat> {};
template <>
struct Passing<double> : PlainPassing<double, VariantType::kDouble, &Variant::AsDouble> {};
template <>
struct Passing<Date> : PlainPassing<Date, VariantType::kDate, &Variant::AsDate> {};
template <>
struct Passing<VariantBool> : PlainPassing<VariantBool, VariantType::kBool, &Variant::AsBool> {};
template <>
struct Passing<std::uint8_t> : PlainPassing<std::uint8_t, VariantType::kByte, &Variant::AsByte> {};
template <>
struct Passing<String> : PlainPassing<String, VariantType::kString, &Variant::ToString> {};

template <>
struct Passing<Variant> {
  static constexpr std::uint16_t kTag = kAnyType;
  static constexpr const char* kInterface = "";
  static Status In(const Variant& from, Variant& to) {
    to = from;
    return kOk;
  }
  static void Out(Variant&& from, Variant& to) { to = std::move(from); }
};

/// The enumerations of the interface travel as their numbers.
template <class T>
requires std::is_enum_v<T>
struct Passing<T> {
  static constexpr std::uint16_t kTag = Passing<std::int32_t>::kTag;
  static constexpr const char* kInterface = "";
  static_assert(sizeof(T) == sizeof(std::int32_t));
  static Status In(const Variant& from, T& to) {
    std::int32_t number = 0;
    const Status status = Passing<std::int32_t>::In(from, number);
    if (Succeeded(status)) to = static_cast<T>(number);
    return status;
  }
  static void Out(T&& from, Variant& to) { to = Variant(static_cast<std::int32_t>(from)); }
};

/// Objects: held while the call lasts.
template <class Interface>
struct Passing<Ref<Interface>> {
  static constexpr std::uint16_t kTag = static_cast<std::uint16_t>(VariantType::kObject);
  static constexpr const char* kInterface = NameOf<Interface>();
  static Status In(const Variant& from, Ref<Interface>& to) {
    if (from.IsEmpty()) return kOk;
    if (!from.Is(VariantType::kObject)) return kTypeMismatch;
    if (from.AsObject() == nullptr) return kOk;
    return from.AsObject()->QueryInterface(Interface::kId, reinterpret_cast<void**>(to.Receive()));
  }
  static void Out(Ref<Interface>&& from, Variant& to) {
    to = Variant(static_cast<IObject*>(from.Get()));
  }
};

/// One argument while its member runs: how a parameter of type P is kept and handed over.
template <class P>
struct Slot {
  using Value = P;
  P value{};
  P Give() { return value; }
};
template <class T>
struct Slot<const T&> {
  using Value = T;
  T value{};
  const T& Give() { return value; }
};
template <class T>
struct Slot<T*> {
  using Value = T;
  T value{};
  T* Give() { return &value; }
};
template <class I>
requires std::is_base_of_v<IObject, I>
struct Slot<I*> {
  using Value = Ref<I>;
  Ref<I> value;
  I* Give() { return value.Get(); }
};
template <class I>
requires std::is_base_of_v<IObject, I>
struct Slot<I**> {
  using Value = Ref<I>;
  Ref<I> value;
  I** Give() { return value.Receive(); }
};

template <class Method>
struct Signature;
template <class I, class... P>
struct Signature<Status (I::*)(P...)> {
  using Interface = I;
  using Slots = std::tuple<Slot<P>...>;
  static constexpr std::size_t kCount = sizeof...(P);

  /// Types and interfaces from the signature; names, flows and enumerations as given.
  static constexpr std::array<ArgumentInfo, kCount> Describe(
      std::array<ArgumentInfo, kCount> arguments) {
    std::size_t at = 0;
    (Complete<Passing<typename Slot<P>::Value>>(arguments[at++]), ...);
    return arguments;
  }

 private:
  template <class Way>
  static constexpr void Complete(ArgumentInfo& argument) {
    argument.type = Way::kTag;
    if (*Way::kInterface != '\0') argument.interfaceName = Way::kInterface;
  }
};

/// Walks along the arguments of a call.
class ArgumentCursor {
 public:
  ArgumentCursor(const MemberInfo& member, Variant* arguments, std::uint32_t count)
      : member_(member), arguments_(arguments), count_(count) {}

  /// What was given for parameter `index`, or null.
  Variant* At(std::size_t index) const {
    if (FlowAt(index) == ArgumentFlow::kResult) return nullptr;
    if (!SetsProperty()) return index < count_ ? &arguments_[index] : nullptr;
    // The new value is the last of the arguments, also where optional ones before it are left away.
    if (index + 1 == member_.argumentCount) return count_ > 0 ? &arguments_[count_ - 1] : nullptr;
    return index + 1 < count_ ? &arguments_[index] : nullptr;
  }
  [[nodiscard]] ArgumentFlow FlowAt(std::size_t index) const {
    return member_.arguments[index].flow;
  }
  /// The result is no argument of the call.
  [[nodiscard]] bool HasTooMany() const {
    std::uint32_t most = member_.argumentCount;
    if (most > 0 && FlowAt(most - 1) == ArgumentFlow::kResult) --most;
    return count_ > most;
  }

 private:
  [[nodiscard]] bool SetsProperty() const {
    return member_.kind == MemberKind::kPut || member_.kind == MemberKind::kPutRef;
  }

  const MemberInfo& member_;
  Variant* arguments_;
  std::uint32_t count_;
};

/// Calls `kMethod` of `self`, an object of its interface.
template <auto kMethod>
Status CallMember(void* self, const MemberInfo& member, Variant* arguments, std::uint32_t count,
                  Variant* result) {
  using Method = Signature<decltype(kMethod)>;
  const ArgumentCursor cursor(member, arguments, count);
  if (cursor.HasTooMany()) return kBadCount;
  typename Method::Slots slots;

  const auto read = [&]<std::size_t kIndex>() -> Status {
    auto& slot = std::get<kIndex>(slots);
    using Way = Passing<typename std::remove_reference_t<decltype(slot)>::Value>;
    const ArgumentFlow flow = cursor.FlowAt(kIndex);
    if (flow == ArgumentFlow::kResult) return kOk;
    const Variant* given = cursor.At(kIndex);
    if (flow == ArgumentFlow::kOut) {
      // What the member leaves alone comes back as it was.
      if (given != nullptr && !given->IsEmpty()) (void)Way::In(*given, slot.value);
      return kOk;
    }
    if (flow == ArgumentFlow::kOptional && (given == nullptr || given->IsEmpty())) return kOk;
    return given == nullptr ? kBadCount : Way::In(*given, slot.value);
  };
  const auto write = [&]<std::size_t kIndex>() {
    auto& slot = std::get<kIndex>(slots);
    using Way = Passing<typename std::remove_reference_t<decltype(slot)>::Value>;
    const ArgumentFlow flow = cursor.FlowAt(kIndex);
    Variant* to = flow == ArgumentFlow::kResult ? result : cursor.At(kIndex);
    if (flow == ArgumentFlow::kIn || flow == ArgumentFlow::kOptional || to == nullptr) return;
    Way::Out(std::move(slot.value), *to);
  };

  return [&]<std::size_t... kIndex>(std::index_sequence<kIndex...>) {
    Status status = kOk;
    (void)(Succeeded(status = read.template operator()<kIndex>()) && ...);
    if (Failed(status)) return status;
    auto* object = static_cast<typename Method::Interface*>(self);
    status = (object->*kMethod)(std::get<kIndex>(slots).Give()...);
    if (Succeeded(status)) (write.template operator()<kIndex>(), ...);
    return status;
  }
  (std::make_index_sequence<Method::kCount>());
}

using MemberCall = Status (*)(void* self, const MemberInfo& member, Variant* arguments,
                              std::uint32_t count, Variant* result);

/// What is known of an interface: the public description, and how each of its members is called, in the same order.
struct InterfaceTable {
  InterfaceInfo info;
  std::span<const MemberCall> calls;
};

/// The table of an interface; each has a specialisation in src/facade/tables.
template <class Interface>
const InterfaceTable& TableOf();

Status FindMemberIn(const InterfaceInfo& info, const char* name, MemberKind kind,
                    std::int32_t* member);
/// `self` points to the interface that `table` describes.
Status InvokeIn(const InterfaceTable& table, void* self, std::int32_t member, Variant* arguments,
                std::uint32_t count, Variant* result);

/// Gives an interface its calls by name.
template <class Interface>
class CallableByName : public Interface {
 public:
  const InterfaceInfo* Describe() override { return &TableOf<Interface>().info; }
  Status FindMember(const char* name, MemberKind kind, std::int32_t* member) override {
    return FindMemberIn(TableOf<Interface>().info, name, kind, member);
  }
  Status Invoke(std::int32_t member, Variant* arguments, std::uint32_t count,
                Variant* result) override {
    return InvokeIn(TableOf<Interface>(), static_cast<Interface*>(this), member, arguments, count,
                    result);
  }
};

}  // namespace tessaret
