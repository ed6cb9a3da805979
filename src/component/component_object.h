// What every class of the public interface stands on: counted references, its interfaces on request, being part of another
// object, and its place in the count of objects.
#pragma once

#include <atomic>
#include <cstdint>
#include <new>
#include <type_traits>

#include "component/object_count.h"
#include "tessaret/dispatch.hpp"
#include "tessaret/object.hpp"

namespace tessaret {

/// An object with the interfaces `Main`, by which it is called by name, and `Others`. Made by CreateObjectOf only: it dies with its
/// last reference. As a part of another object it hands all questions on to that one, and its own life is held through the
/// IObject that CreateObjectOf gives.
template <class Main, class... Others>
class ComponentObject : public Main, public Others... {
 public:
  ComponentObject(const ComponentObject&) = delete;
  ComponentObject& operator=(const ComponentObject&) = delete;

  Status QueryInterface(const InterfaceId& id, void** object) override {
    return outer_->QueryInterface(id, object);
  }
  std::uint32_t AddRef() override { return outer_->AddRef(); }
  std::uint32_t Release() override { return outer_->Release(); }

  /// The object itself, whatever it is a part of.
  IObject* Own() { return &own_; }

 protected:
  /// `outer` is not held: it holds this.
  explicit ComponentObject(IObject* outer) : own_(*this), outer_(outer != nullptr ? outer : &own_) {
    CountObject();
  }
  virtual ~ComponentObject() { UncountObject(); }

 private:
  class OwnObject final : public IObject {
   public:
    explicit OwnObject(ComponentObject& object) : object_(object) {}

    Status QueryInterface(const InterfaceId& id, void** object) override {
      if (object == nullptr) return kPointer;
      *object = id == IObject::kId ? static_cast<IObject*>(this) : object_.Find(id);
      if (*object == nullptr) return kNoInterface;
      if (id == IObject::kId) {
        AddRef();
      } else {
        object_.AddRef();
      }
      return kOk;
    }
    std::uint32_t AddRef() override {
      return references_.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    std::uint32_t Release() override {
      const std::uint32_t left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
      if (left != 0) return left;
      // References that come and go while it is taken apart must not end it once more.
      references_.store(kDying, std::memory_order_relaxed);
      (object_.template EndConnections<Others>(), ...);
      delete &object_;
      return 0;
    }

   private:
    static constexpr std::uint32_t kDying = 1u << 30;
    ComponentObject& object_;
    std::atomic<std::uint32_t> references_ = 1;
  };

  template <class Other>
  void EndConnections() {
    if constexpr (requires(Other & other) { other.LetGoOfSinks(); }) Other::LetGoOfSinks();
  }

  /// The interface, without a reference; null where there is none.
  void* Find(const InterfaceId& id) {
    void* found = nullptr;
    if (id == Main::kId || id == IDispatch::kId) found = static_cast<Main*>(this);
    ((found = found == nullptr && id == Others::kId ? static_cast<Others*>(this) : found), ...);
    return found;
  }

  OwnObject own_;
  IObject* const outer_;
};

/// Makes an object of `Class`, whose constructor takes the outer object: see CreateObject.
template <class Class>
Status CreateObjectOf(IObject* outer, const InterfaceId& id, void** object) {
  if (object == nullptr) return kPointer;
  *object = nullptr;
  if (outer != nullptr && !(id == IObject::kId)) return kNoAggregation;
  try {
    IObject* own = (new Class(outer))->Own();
    const Status status = own->QueryInterface(id, object);
    own->Release();
    return status;
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
}

}  // namespace tessaret
