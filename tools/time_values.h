// Dates and times as people write them, in the form that data elements have (DICOM PS3.5, 6.2: DA, TM, DT).
#pragma once

#include <string>
#include <string_view>

namespace tessaret::tool {

// Each gives the stored form, or nothing for what is no such value.

/// "20010203", also from "2001-02-03" and "2001.02.03".
std::string DateValue(std::string_view text);

/// "14", "1405", "140506" or "140506.250", also from "14:05", "14:05:06" and "14:05:06.250". A minute may have a 60th second.
std::string TimeValue(std::string_view text);

/// A year and as much behind it as is known, "2001" to "20010203140506.250", and perhaps an offset from UTC, "+0100". Also from
/// "2001-02-03 14:05:06.250 +01:00", with a blank or a T between date and time.
std::string DateTimeValue(std::string_view text);

}  // namespace tessaret::tool
