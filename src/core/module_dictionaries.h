// The two dictionaries that the whole library shares, and the directory that they came from.
//
// Start and stop belong to the loading and unloading of the module, when no other thread works with it. In between
// everything here is read only and needs no lock.
#pragma once

#include <functional>
#include <string>

#include "core/rtc.h"
#include "core/uid_dictionary.h"

namespace tessaret {

/// What the files are called.
inline constexpr const char* kDataDictionaryFile = "dicom-dict.txt";
inline constexpr const char* kUidDictionaryFile = "uid-dict.txt";

/// Shows a message to whoever runs the program.
using MessageSink = std::function<void(const std::string& text, const std::string& caption)>;

/// Writes "caption: text" as a line to standard error.
void WriteMessageToStandardError(const std::string& text, const std::string& caption);

/// Loads both files from `directory`, in place of what was loaded. False when one of them cannot
/// be loaded: `sink` has then been told why, and both dictionaries and the directory are empty. An empty `sink` means
/// standard error. Throws std::bad_alloc, with all of them empty too.
bool StartDictionaries(const std::string& directory, const MessageSink& sink = {});

/// The same with the directory of the module.
bool StartDictionaries();

/// Empties both dictionaries and the directory.
void StopDictionaries();

/// The dictionaries; empty unless started.
DcmDictionary& ModuleDictionary();
UIDDictionary& ModuleUidDictionary();

/// The directory of the module with "/" at its end; empty unless started.
const std::string& ModuleDirectoryText();

}  // namespace tessaret
