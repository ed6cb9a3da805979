// Words for why an association was refused (DICOM PS3.8, 9.3.4), by the numbers in the PDU.
#pragma once

#include <array>
#include <cstdint>

namespace tessaret::reject_text {

inline constexpr std::array<const char*, 3> kResults = {"", "permanent", "transient"};

inline constexpr std::array<const char*, 4> kSources = {
    "",
    "service-user",
    "service-provider (ACSE related function)",
    "service-provider (Presentation related function)",
};

inline constexpr std::array<const char*, 11> kReasons = {
    "",
    "no reason given",
    "application context name not supported",
    "calling AE title not recognized",
    "reserved",
    "reserved",
    "reserved",
    "called AE title not recognized",
    "reserved",
    "reserved",
    "reserved",
};

}  // namespace tessaret::reject_text
