// Statuses of responses (DICOM PS3.7, annex C; PS3.4, annex C).
#pragma once

#include <cstdint>

namespace tessaret::dimse_status {

inline constexpr std::uint16_t kSuccess = 0x0000;
inline constexpr std::uint16_t kSubOperationsFailed = 0xB000;  // of some
inline constexpr std::uint16_t kCancelled = 0xFE00;
inline constexpr std::uint16_t kPending = 0xFF00;
inline constexpr std::uint16_t kPendingWithoutKeys =
    0xFF01;  // some optional keys were not looked at

/// Further responses follow.
constexpr bool IsPending(std::uint16_t status) {
  return status == kPending || status == kPendingWithoutKeys;
}

/// Of a store that was done nevertheless.
constexpr bool IsWarning(std::uint16_t status) { return (status & 0xF000) == 0xB000; }

// Failures of this side's providers.
inline constexpr std::uint16_t kUnableToProcess = 0xC001;
inline constexpr std::uint16_t kNothingPrepared = 0xC002;
inline constexpr std::uint16_t kUnknownDestination = 0xC003;
inline constexpr std::uint16_t kCannotLoad = 0xC004;
inline constexpr std::uint16_t kCannotConnect = 0xC005;

}  // namespace tessaret::dimse_status
