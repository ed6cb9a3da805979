// Looking at an object without owning it: a facade may outlive what it shows, and has to know.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "core/dicom_object.h"

namespace tessaret {

/// Who destroys an object, as far as facades have to agree on it.
enum class ObjectHolder : std::uint8_t {
  kSomebody,  // code that holds the pointer; a facade may take it over
  kFacade,    // an object of the public interface
  kSequence,  // the element in which it is an item
};

/// What is known of an object by those who look at it; shared by them and the object, and gone with the last of these.
struct ObjectMark {
  explicit ObjectMark(DICOMObject& marked) : object(&marked) {}

  void Hold() noexcept { references.fetch_add(1, std::memory_order_relaxed); }
  void Drop() noexcept {
    if (references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  std::atomic<std::uint32_t> references = 1;  // the first is the object's
  std::atomic<DICOMObject*> object;           // null once it is gone
  ObjectHolder holder = ObjectHolder::kSomebody;
};

/// Null, or an object until it is destroyed. Watches belong to the thread of their object; only that it dies elsewhere does no harm.
class ObjectWatch {
 public:
  ObjectWatch() noexcept = default;
  /// Throws std::bad_alloc.
  explicit ObjectWatch(DICOMObject* object);
  ObjectWatch(const ObjectWatch& other) noexcept : mark_(other.mark_) {
    if (mark_ != nullptr) mark_->Hold();
  }
  ObjectWatch(ObjectWatch&& other) noexcept : mark_(std::exchange(other.mark_, nullptr)) {}
  ObjectWatch& operator=(ObjectWatch other) noexcept {
    std::swap(mark_, other.mark_);
    return *this;
  }
  ~ObjectWatch() {
    if (mark_ != nullptr) mark_->Drop();
  }

  [[nodiscard]] DICOMObject* Get() const noexcept {
    return mark_ == nullptr ? nullptr : mark_->object.load(std::memory_order_acquire);
  }
  /// Requires: Get() is not null.
  [[nodiscard]] ObjectHolder Holder() const noexcept { return mark_->holder; }
  /// The same.
  void SetHolder(ObjectHolder holder) noexcept { mark_->holder = holder; }

 private:
  ObjectMark* mark_ = nullptr;
};

}  // namespace tessaret
