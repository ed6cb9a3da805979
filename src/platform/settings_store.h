// The settings of a user, in one text file: [group] lines, and below each NAME = VALUE lines. A whole number from 0 to 2^32 - 1
// is a number, anything else text. Lines that are neither, and what other programs wrote, stay as they are.
//
// The file is "tessaret/settings.conf" below the directory that XDG_CONFIG_HOME names, or below ".config" in the user's home.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessaret {

/// Where the settings are; empty where the environment names no place.
std::string SettingsPath();

/// The number called `name` in `group`, letters of either case being the same. Nothing where it is not there, no number, or cannot
/// be read. Throws std::bad_alloc.
std::optional<std::uint32_t> ReadNumberSetting(std::string_view group, std::string_view name);

/// Sets it, in a file that is made where there is none. The file is replaced whole; of two programs that write at the same time
/// the last one wins. False where it cannot be written, or could be read only in part, and then it stays as it was. Throws
/// std::bad_alloc.
bool WriteNumberSetting(std::string_view group, std::string_view name, std::uint32_t value);

}  // namespace tessaret
