// The interfaces that an object can be asked for by name.
#pragma once

#include <span>

#include "component/call_by_name.h"

namespace tessaret {

struct NamedInterface {
  const char* name = "";
  /// The interface of `object`, with a reference; null where it has none.
  Ref<IDispatch> (*ask)(const Ref<IDispatch>& object) = nullptr;
};

template <class Interface>
constexpr NamedInterface RowOf() {
  return {NameOf<Interface>(), [](const Ref<IDispatch>& object) {
            return Ref<IDispatch>::Adopt(object.As<Interface>().Detach());
          }};
}

/// IDispatch, by which an object's main interface is asked for, and all that derive from it. In src/facade/tables.
std::span<const NamedInterface> AllInterfaces();

}  // namespace tessaret
