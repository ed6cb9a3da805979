// The library as a whole: its classes, and what has to be there before any of them can be made.
#pragma once

#include <span>
#include <stdexcept>
#include <string>

#include "component/class_table.h"

namespace tessaret {

/// The twelve classes.
std::span<const ClassRow> AllClasses();

/// The host has the library give up its file calls, so that it could not start: the next one who asks tries again.
class StartCancelled : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Starts the library when it is asked for the first time: registers the classes, loads both dictionaries, reads the options. False
/// where the dictionaries cannot be loaded; that is said on standard error once, and stays so for the process. Any thread. Throws
/// StartCancelled with the words in full, and std::bad_alloc.
bool StartModule();
/// The same without a word on standard error.
bool StartModuleQuietly();

/// Why it did not start; empty where it did.
const std::string& WhyNotStarted();
/// The same with the file, and the line or the words of the system.
const std::string& WhyNotStartedInFull();

}  // namespace tessaret
