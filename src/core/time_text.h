// Dates and times as elements write them. Nothing here asks for a locale or a time zone.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tessaret/calendar.hpp"

namespace tessaret {

/// The day that a text such as 20010203 begins with; what follows does not matter. Nothing where a field is missing or the day
/// does not exist.
std::optional<Date> DateIn(std::string_view text);

/// The same with a time of day, as in 20010203140506.250: the three digits behind the point are milliseconds. From the month
/// on fields may be missing: the first month, the first day and midnight stand in for them. Nothing where what follows then is
/// neither a zone such as +0100 nor the dash of a range, as in 2001-02-03: it is no date of this form.
std::optional<Date> DateTimeIn(std::string_view text);

/// The time that a text such as 140506.25, 1405 or 14:05:06 begins with, as 14:05:06. Minutes and seconds that are missing
/// become 0, a fraction is dropped. Nothing where there is no hour. The numbers are as they stand, not held to a clock.
std::optional<std::string> TimeForPeople(std::string_view text);

/// As in 20010203.
std::string DicomDate(const Calendar& at);
/// As in 20010203140506.250000: milliseconds, then three zeros.
std::string DicomDateTime(const Calendar& at);
/// As in 140506.250. The milliseconds are a plain number without zeros before it: 5 of them are written as ".5".
std::string DicomTime(const Calendar& at);

/// What DicomTime makes of the four numbers of a text such as 14:05:06.250; what follows does not matter. Nothing where one is
/// missing or beyond 32 bits. The numbers are not held to a clock.
std::optional<std::string> DicomTimeOf(std::string_view text);

}  // namespace tessaret
