#include "core/module_dictionaries.h"

#include <unistd.h>

#include <new>

#include "platform/file_calls.h"
#include "platform/hold_cancellation.h"
#include "platform/library_end.h"
#include "platform/module_path.h"

namespace tessaret {
namespace {

constexpr const char* kCaption = "Error Tessaret";

struct Module {
  DcmDictionary dictionary;
  UIDDictionary uids;
  std::string directory;
};

/// Null until it is made.
constinit Module* theModule = nullptr;

Module& MakeModule() {
  WatchProcessEnd();
  theModule = new Module;
  return *theModule;
}

// Not destroyed when the process ends: a thread may still look something up. StopDictionaries frees what it holds.
Module& TheModule() {
  static Module& module = MakeModule();
  return module;
}

[[gnu::destructor]] void GoWithTheLibrary() noexcept {
  if (!DoesProcessEnd()) delete theModule;
}

std::string WithSeparator(std::string directory) {
  if (directory.empty() || directory.back() != '/') directory += '/';
  return directory;
}

/// Fills the module; the message when a file cannot be loaded, otherwise nothing.
std::string Load(Module& module) {
  const std::string path = module.directory + kDataDictionaryFile;
  if (!module.dictionary.AttachRTC(path.c_str())) {
    // The file may be as it should: there may be memory the next time.
    if (module.dictionary.LastErrorText() == kRtcNoMemory) throw std::bad_alloc();
    return "Error reading [" + path + "]";
  }
  try {
    module.uids.Read((module.directory + kUidDictionaryFile).c_str());
  } catch (const UidDictionaryError& error) {
    if (error.LacksMemory()) throw std::bad_alloc();
    return error.what();
  }
  return {};
}

}  // namespace

void WriteMessageToStandardError(const std::string& text, const std::string& caption) {
  const std::string line = caption + ": " + text + "\n";
  // The library starts within a call that nothing may leave early; where nobody reads, nobody is told.
  const HoldCancellation held;
  (void)WriteAll(STDERR_FILENO, line.data(), line.size());
}

bool StartDictionaries(const std::string& directory, const MessageSink& sink) {
  StopDictionaries();
  std::string message;
  try {
    TheModule().directory = WithSeparator(directory);
    message = Load(TheModule());
  } catch (...) {
    StopDictionaries();
    throw;
  }
  if (message.empty()) return true;
  StopDictionaries();
  sink ? sink(message, kCaption) : WriteMessageToStandardError(message, kCaption);
  return false;
}

bool StartDictionaries() { return StartDictionaries(ModuleDirectory()); }

void StopDictionaries() {
  Module& module = TheModule();
  module.dictionary.DetachRTC();
  // A binary file without descriptions may have turned this off.
  module.dictionary.KeepDescriptions = 1;
  module.uids.Clear();
  module.directory.clear();
}

DcmDictionary& ModuleDictionary() { return TheModule().dictionary; }
UIDDictionary& ModuleUidDictionary() { return TheModule().uids; }
const std::string& ModuleDirectoryText() { return TheModule().directory; }

}  // namespace tessaret
