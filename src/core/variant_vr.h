// The bridge between elements and the values of the public interface: what a date, a time, a number or one of several texts
// looks like outside.
#pragma once

#include <cstdint>

#include "core/type_code.h"
#include "core/vr.h"
#include "tessaret/variant.hpp"

namespace tessaret {

/// Made for one call, on one thread. It looks at an element, which outlives it, and never owns it. A null element has no
/// values and takes none. Numbers in text, dates and times never depend on the process's locale or time zone.
class CVariantVR {
 public:
  /// By the element's own type.
  explicit CVariantVR(VR* vr) : CVariantVR(vr, vr == nullptr ? type_code::kNone : vr->TypeCode) {}
  /// By another type; the element keeps its own.
  CVariantVR(VR* vr, VrCode typeCode) : TypeCode(typeCode), vr_(vr) {}

  /// The number of values, as the type counts them. By its bytes an element may hold fewer: ask VRToVariant.
  [[nodiscard]] std::uint32_t VRMultiplicity() const;

  /// Value number `index`, from 0:
  ///  - text without the padding at its end, one byte a character; empty text where there is no such value;
  ///  - IS long, DS double, as far as the text is a number, 0 where it does not begin with one;
  ///  - US and AT long, SS short, UL double, SL long, FL float, FD double;
  ///  - DA and DT date, TM a string such as 14:05:06;
  ///  - any other type, and none, an array of all bytes; `index` does not matter, and without memory it is empty.
  /// Empty for Length 0 and no Data, for a number or date that is not there, and for a date or time that is none. Throws
  /// TypedValueError for an index other than 0 into ST, LT and UT, and std::bad_alloc.
  [[nodiscard]] Variant VRToVariant(std::int32_t index);

  /// Stores `value` as value number `index`: an empty one leaves the element without bytes. Text, numbers, dates and times from
  /// anything that turns into them; TM from a string of the form 14:05:06.250 with all four numbers, or from a date; any
  /// other type from an array of bytes, one-dimensional, as the whole value, padded to an even length with a NUL. SQ stays as
  /// it is, with true. False, with the element as it was, for a value that cannot be turned, a number that is none, an index
  /// that VR_XXTYPED::PutValue refuses, and an element with items. Throws TypedValueError as above and std::bad_alloc, with
  /// the element as it was.
  [[nodiscard]] bool VariantToVR(const Variant& value, std::int32_t index);

  VrCode TypeCode;  // to convert by

 private:
  [[nodiscard]] Variant DateAt(std::int32_t index);
  [[nodiscard]] Variant DateTimeAt(std::int32_t index);
  [[nodiscard]] Variant TimeAt(std::int32_t index);
  bool PutDecimal(const Variant& value, std::int32_t index);
  bool PutInteger(const Variant& value, std::int32_t index);
  bool PutBytes(const Variant& value);

  VR* vr_;
};

}  // namespace tessaret
