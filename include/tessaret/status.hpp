/// How an operation of the public interface ended, and the booleans that it takes and gives.
#pragma once

#include <concepts>
#include <cstdint>

namespace tessaret {

/// What every operation answers: 0 or above after success, below 0 after a failure. The numbers are part of the interface.
using Status = std::int32_t;

/// Done.
inline constexpr Status kOk = 0;
/// Done, and the answer is no: for instance that there is no ownership left to be given.
inline constexpr Status kFalse = 1;
/// Not available in this build or for this class.
inline constexpr Status kNotImplemented = static_cast<Status>(0x80004001u);
/// The object has no such interface.
inline constexpr Status kNoInterface = static_cast<Status>(0x80004002u);
/// A pointer that has to lead somewhere is null.
inline constexpr Status kPointer = static_cast<Status>(0x80004003u);
/// A failure of another kind.
inline constexpr Status kFail = static_cast<Status>(0x80004005u);
/// What was found in no state to do this.
inline constexpr Status kUnexpected = static_cast<Status>(0x8000FFFFu);
/// An object asked for by name: it has no such member, or not of this kind.
inline constexpr Status kUnknownMember = static_cast<Status>(0x80020003u);
/// A value cannot be turned into the type that is wanted.
inline constexpr Status kTypeMismatch = static_cast<Status>(0x80020005u);
/// There is no such name.
inline constexpr Status kUnknownName = static_cast<Status>(0x80020006u);
/// It failed, and words for people say why: see LastError() in tessaret/library.hpp.
inline constexpr Status kException = static_cast<Status>(0x80020009u);
/// A number does not fit the type that is wanted.
inline constexpr Status kOverflow = static_cast<Status>(0x8002000Au);
/// An index lies outside the bounds of an array.
inline constexpr Status kBadIndex = static_cast<Status>(0x8002000Bu);
/// A member was called with too few or too many arguments.
inline constexpr Status kBadCount = static_cast<Status>(0x8002000Eu);
/// A class cannot be aggregated the way that was tried.
inline constexpr Status kNoAggregation = static_cast<Status>(0x80040110u);
/// The library could not start, so it has no classes to give: the words say why.
inline constexpr Status kClassNotAvailable = static_cast<Status>(0x80040111u);
/// No class has this name or identifier.
inline constexpr Status kClassNotRegistered = static_cast<Status>(0x80040154u);
/// There is no connection of this number.
inline constexpr Status kNoConnection = static_cast<Status>(0x80040200u);
/// An object cannot listen to these events.
inline constexpr Status kCannotConnect = static_cast<Status>(0x80040202u);
/// A handle of the C interface is of no object that the host holds: it was given back, or was never one.
inline constexpr Status kNoObject = static_cast<Status>(0x80070006u);
/// No memory.
inline constexpr Status kOutOfMemory = static_cast<Status>(0x8007000Eu);
/// An argument makes no sense.
inline constexpr Status kInvalidArgument = static_cast<Status>(0x80070057u);

constexpr bool Succeeded(Status status) { return status >= 0; }
constexpr bool Failed(Status status) { return status < 0; }

/// A boolean of the interface: 16 bits, of which true is exactly -1. Some operations take any other number for false.
struct VariantBool {
  constexpr VariantBool() = default;
  /// From a bool only: the number 1 is not what it looks like here.
  template <std::same_as<bool> Truth>
  constexpr VariantBool(Truth truth) : value(truth ? std::int16_t{-1} : std::int16_t{0}) {}
  /// Exactly this number.
  static constexpr VariantBool Of(std::int16_t number) {
    VariantBool made;
    made.value = number;
    return made;
  }
  /// True for any number but 0.
  constexpr explicit operator bool() const { return value != 0; }
  /// True for -1 alone.
  [[nodiscard]] constexpr bool IsTrue() const { return value == -1; }
  friend constexpr bool operator==(const VariantBool&, const VariantBool&) = default;

  std::int16_t value = 0;
};

}  // namespace tessaret
