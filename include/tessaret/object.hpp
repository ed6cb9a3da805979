/// Objects of the public interface: counted references, and further interfaces of one object on request.
///
/// An object lives as long as references to it are held. Each interface of one object leads to the same object; the IObject that
/// QueryInterface(IObject::kId) gives is the object's identity and can be compared. Counting is safe from any thread; everything
/// else belongs to the thread that created the object unless an interface says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "tessaret/status.hpp"

namespace tessaret {

/// What an interface is asked for by: 128 bits that no other interface has.
struct InterfaceId {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
  friend constexpr bool operator==(const InterfaceId&, const InterfaceId&) = default;
};

/// The base of every interface.
class IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F01001};

  /// The interface `id` of this object, with a reference for the caller to release. kNoInterface, with `*object` null, where
  /// there is none; kPointer for a null `object`.
  virtual Status QueryInterface(const InterfaceId& id, void** object) = 0;
  /// Takes a reference. The new count, for tests only.
  virtual std::uint32_t AddRef() = 0;
  /// Gives a reference back; with the last one the object dies. The new count, for tests only.
  virtual std::uint32_t Release() = 0;

 protected:
  ~IObject() = default;
};

/// Holds one reference to an object, or none.
template <class T>
class Ref {
 public:
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}
  /// Takes a reference of its own.
  explicit Ref(T* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  Ref(const Ref& other) noexcept : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() {
    if (object_ != nullptr) object_->Release();
  }

  /// Takes over a reference that the caller holds.
  static Ref Adopt(T* object) noexcept {
    Ref made;
    made.object_ = object;
    return made;
  }

  [[nodiscard]] T* Get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }

  /// Releases what is held, and gives the place where an operation may put a new reference.
  T** Receive() noexcept {
    *this = nullptr;
    return &object_;
  }
  /// The reference, for the caller to release.
  [[nodiscard]] T* Detach() noexcept { return std::exchange(object_, nullptr); }

  /// Another interface of the object, or none.
  template <class Other>
  [[nodiscard]] Ref<Other> As() const noexcept {
    void* other = nullptr;
    if (object_ != nullptr) object_->QueryInterface(Other::kId, &other);
    return Ref<Other>::Adopt(static_cast<Other*>(other));
  }

 private:
  T* object_ = nullptr;
};

}  // namespace tessaret
