// Typed views over elements: what the values of an element are when its type is known.
//
// An element is a plain record (core/vr.h), and a large object holds very many. So nothing virtual is added to it: a typed view
// stands beside the record for the time of one call, on one thread. It looks at an element that somebody else owns and
// that outlives it, or at one of its own, which dies with it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "core/tag.h"
#include "core/vr.h"
#include "core/vr_properties.h"

namespace tessaret {

/// A request that makes no sense for the type of the element; the words are for users.
class TypedValueError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Longer values have no even length that a stream could state.
inline constexpr std::uint64_t kLongestValue = kUndefinedLength - 1;

/// A put may leave as many values empty between the last one and its own. More would be a slip of the caller's, for
/// no element of these types can be as long in the explicit form; without a bound it would cost gigabytes.
inline constexpr std::uint32_t kMostSkippedValues = 65535;

/// The root: an element and what can be asked of it, by index from 0.
class VR_XXTYPED {
 public:
  VR_XXTYPED(const VR_XXTYPED&) = delete;
  VR_XXTYPED& operator=(const VR_XXTYPED&) = delete;

  /// Bytes of one value; 0 where they vary.
  [[nodiscard]] virtual std::uint32_t ValueWidth() const = 0;
  /// Prepares `count` bytes for the stream, in place. Nothing outside of them is touched.
  virtual void ToWire(std::uint32_t count, std::uint8_t* data) const;
  /// Prepares `count` bytes that came from the stream, in place. Nothing outside of them is touched.
  virtual void FromWire(std::uint32_t count, std::uint8_t* data) const;
  /// The code of the class, whatever the element says.
  [[nodiscard]] virtual VrCode GetTypeCode() const = 0;
  /// The bytes of value number `index` in `out`. False where there is no such value, and `out` is as it was then. Throws
  /// std::bad_alloc.
  virtual bool GetValue(std::int32_t index, std::string& out) const = 0;
  /// Stores value number `index`. False, and nothing changes, for a negative index, more than kMostSkippedValues to be left
  /// empty, a value that would become longer than kLongestValue, a value that the type does not have, and an element with
  /// items. Throws std::bad_alloc with nothing changed. Bytes that are not this element's own are not written to.
  virtual bool PutValue(std::int32_t index, std::string_view in) = 0;
  /// GetValue and PutValue of the first value.
  virtual bool Get(std::string& out) const { return GetValue(0, out); }
  virtual bool Put(std::string_view in) { return PutValue(0, in); }
  virtual ~VR_XXTYPED() = default;

  /// The element that this is a view of.
  [[nodiscard]] VR& Record() { return *record_; }
  [[nodiscard]] const VR& Record() const { return *record_; }

 protected:
  /// With an element of its own, as the constructors of VR make it.
  VR_XXTYPED() : record_(&own_) {}
  VR_XXTYPED(std::uint16_t group, std::uint16_t element, std::uint32_t length, std::uint8_t* data,
             bool ownsData)
      : own_(group, element, length, data, ownsData), record_(&own_) {}
  VR_XXTYPED(std::uint16_t group, std::uint16_t element, std::uint32_t length, bool allocate)
      : own_(group, element, length, allocate), record_(&own_) {}
  /// Over `element`, whose TypeCode plays no part.
  explicit VR_XXTYPED(VR& element) : record_(&element) {}

 private:
  VR own_;  // idle in a view of another element
  VR* record_;
};

/// The value of an element as text; empty without Data, whatever its Length claims.
inline std::string_view ValueText(const VR& vr) {
  if (vr.Data == nullptr) return {};
  return {reinterpret_cast<const char*>(vr.Data), vr.Length};
}

/// Whether a value of an odd length gets a NUL behind it.
enum class Padding { kNone, kToEven };

/// Makes a copy of `value` the value of `vr`. False, and nothing changes, for more than kLongestValue bytes
/// and for an element with items, where nobody would find it. Throws std::bad_alloc with nothing changed.
bool StoreValue(VR& vr, std::string_view value, Padding padding = Padding::kNone);

/// What each class has besides its family: constructors, its code and the width of its row. An element of its own gets
/// that code as its type.
template <class Family, VrCode kCode>
class VrOf : public Family {
 public:
  VrOf() { this->Record().TypeCode = kCode; }
  explicit VrOf(VR& element) : Family(element) {}
  VrOf(std::uint16_t group, std::uint16_t element, std::uint32_t length, std::uint8_t* data,
       bool ownsData = true)
      : Family(group, element, length, data, ownsData) {
    this->Record().TypeCode = kCode;
  }
  VrOf(std::uint16_t group, std::uint16_t element, std::uint32_t length, bool allocate)
      : Family(group, element, length, allocate) {
    this->Record().TypeCode = kCode;
  }
  /// Any other pointer would pass for the order to allocate.
  template <class T>
  VrOf(std::uint16_t group, std::uint16_t element, std::uint32_t length, const T* data) = delete;

  [[nodiscard]] std::uint32_t ValueWidth() const override { return PropertiesOf(kCode).width; }
  [[nodiscard]] VrCode GetTypeCode() const override { return kCode; }
};

/// One text that is the whole value.
class LoneTextVR : public VR_XXTYPED {
 public:
  /// The bytes as they are, for index 0 alone.
  bool GetValue(std::int32_t index, std::string& out) const override;
  /// Makes `in` the whole value, for index 0 alone.
  bool PutValue(std::int32_t index, std::string_view in) override;

 protected:
  using VR_XXTYPED::VR_XXTYPED;
};

/// No values at all.
class SequenceVR : public VR_XXTYPED {
 public:
  /// Always false.
  bool GetValue(std::int32_t index, std::string& out) const override;
  bool PutValue(std::int32_t index, std::string_view in) override;

 protected:
  using VR_XXTYPED::VR_XXTYPED;
};

using VrLT = VrOf<LoneTextVR, type_code::LT>;
using VrST = VrOf<LoneTextVR, type_code::ST>;
using VrSQ = VrOf<SequenceVR, type_code::SQ>;

}  // namespace tessaret
