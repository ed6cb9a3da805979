// Turning values of the public interface into one another. Never looks at the process's locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tessaret/variant.hpp"

namespace tessaret {

/// `from` as a value of `type` in `to`, by the rules at Variant::ChangeType. After a failure `to` stays as it was. `to` may be
/// `from`. Throws std::bad_alloc.
Status ConvertVariant(const Variant& from, VariantType type, Variant& to);

/// The date in `text`: 2001-02-03, 2001/02/03, 2001.02.03 or 20010203, with or without a time behind a blank or T; or a time
/// alone, on 1899-12-30. Times are 14:05, 14:05:06 or 14:05:06.25. Nothing for any other text.
std::optional<Date> ParseDate(std::string_view text);

/// As 2001-02-03, with 14:05:06 behind a blank unless that is midnight, and .250 where milliseconds are not 0. A date outside the
/// calendar gives its number of days.
std::string DateText(Date date);

}  // namespace tessaret
