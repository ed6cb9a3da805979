/// An element as a record, for hosts that work by name.
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// A _VR_RECORD_TYPE for calls by name. GetVR gives one.
class IVRRecord : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02102};
  static constexpr const char* kName = "IVRRecord";

  /// The group of the tag; -1 where there was no such element.
  virtual Status get_Group(Result<std::int32_t> pVal) = 0;
  /// Sets the group of the tag.
  virtual Status put_Group(std::int32_t newVal) = 0;
  /// The element number of the tag; -1 where there was no such element.
  virtual Status get_Elem(Result<std::int32_t> pVal) = 0;
  /// Sets the element number of the tag.
  virtual Status put_Elem(std::int32_t newVal) = 0;
  /// The type: its first letter times 256 plus the second.
  virtual Status get_TypeCode(Result<std::int32_t> pVal) = 0;
  /// Sets the type, of which the low 16 bits count.
  virtual Status put_TypeCode(std::int32_t newVal) = 0;
  /// How many bytes the element has, also where they were not loaded; -1 for an undefined length. To set it set `pt`.
  virtual Status get_len(Result<std::int32_t> pVal) = 0;
  /// The bytes, as an array with one dimension from 0; empty where there are none.
  virtual Status get_pt(Result<Variant> pVal) = 0;
  /// Sets the bytes, and with them `len`. kTypeMismatch for anything but an array of bytes with one dimension, or an empty value.
  virtual Status put_pt(const Variant& newVal) = 0;
};

}  // namespace tessaret
