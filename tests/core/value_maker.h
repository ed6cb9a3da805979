// Elements for tests of typed values, with what they hold afterwards.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "core/typed_vr.h"
#include "core/vr.h"
#include "element_maker.h"
#include "support/bytes.h"

namespace tessaret::test {

/// The ends of what an index may be.
inline constexpr std::int32_t kFirst = std::numeric_limits<std::int32_t>::min();
inline constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max();

/// A value that no text of a test is, where there is none.
inline constexpr const char* kNoValue = "(no value)";

/// The same for an element that a put left without Data, so that no refusal passes for that, nor the other way round.
inline constexpr const char* kEmptied = "(emptied)";

/// An element that owns a copy of these bytes.
inline std::unique_ptr<VR> Owned(VrCode type, const Bytes& value) {
  return std::unique_ptr<VR>(NewElement(0x0009, 0x1001, type, value));
}
inline std::unique_ptr<VR> Owned(VrCode type, std::string_view text = {}) {
  return Owned(type, BytesOf(text));
}

/// The bytes of `vr` as text; kNoValue for one without Data.
inline std::string Held(const VR& vr) {
  if (vr.Data == nullptr) return kNoValue;
  return {reinterpret_cast<const char*>(vr.Data), vr.Length};
}

/// What GetValue gives, or kNoValue where it says no and leaves the text alone.
inline std::string Got(const VR_XXTYPED& view, std::int32_t index) {
  std::string text = kNoValue;
  const bool there = view.GetValue(index, text);
  const bool isGiven = text != kNoValue;
  if (there) return isGiven ? text : "nothing, with a yes";
  return isGiven ? "changed by a refusal" : kNoValue;
}

/// Value `index` of an element of class View that holds `value`.
template <class View>
std::string ValueAt(std::string_view value, std::int32_t index) {
  const auto vr = Owned(type_code::kNone, value);
  return Got(View(*vr), index);
}

/// What `vr`, which held `before`, tells of a put that was taken or not: its bytes, kEmptied without Data; kNoValue for a
/// refusal that left it as it was.
inline std::string OutcomeOf(bool isTaken, const VR& vr, std::string_view before) {
  if (!isTaken) return Held(vr) == before ? kNoValue : "changed by a refusal";
  return vr.Data == nullptr ? kEmptied : Held(vr);
}

/// What an element that held `old` tells of a put of `text` through a view.
template <class View>
std::string AfterPut(std::string_view old, std::int32_t index, std::string_view text) {
  const auto vr = Owned(type_code::kNone, old);
  const std::string before = Held(*vr);
  const bool isTaken = View(*vr).PutValue(index, text);
  return OutcomeOf(isTaken, *vr, before);
}

/// What `bytes` become on the way to the wire, or from it.
template <class View>
std::string ToWire(std::string bytes) {
  View().ToWire(static_cast<std::uint32_t>(bytes.size()),
                reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}
template <class View>
std::string FromWire(std::string bytes) {
  View().FromWire(static_cast<std::uint32_t>(bytes.size()),
                  reinterpret_cast<std::uint8_t*>(bytes.data()));
  return bytes;
}

/// `count` times `c`, then `then`.
inline std::string Many(std::size_t count, char c, std::string_view then) {
  std::string text(count, c);
  text.append(then);
  return text;
}

/// Text with NULs in it.
template <std::size_t kSize>
std::string WithNuls(const char (&literal)[kSize]) {
  return {literal, kSize - 1};
}

}  // namespace tessaret::test
