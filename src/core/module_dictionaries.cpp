#include "core/module_dictionaries.h"

#include <cstdio>

#include "platform/module_path.h"

namespace tessaret {
namespace {

constexpr const char* kCaption = "Error Tessaret";

struct Module {
  DcmDictionary dictionary;
  UIDDictionary uids;
  std::string directory;
};

// Never destroyed: a thread may still look something up while the process ends. StopDictionaries frees what it holds.
Module& TheModule() {
  static Module& module = *new Module;
  return module;
}

std::string WithSeparator(std::string directory) {
  if (directory.empty() || directory.back() != '/') directory += '/';
  return directory;
}

/// Fills the module; the message when a file cannot be loaded, otherwise nothing.
std::string Load(Module& module) {
  const std::string path = module.directory + kDataDictionaryFile;
  if (!module.dictionary.AttachRTC(path.c_str())) return "Error reading [" + path + "]";
  try {
    module.uids.Read((module.directory + kUidDictionaryFile).c_str());
  } catch (const UidDictionaryError& error) {
    return error.what();
  }
  return {};
}

}  // namespace

void WriteMessageToStandardError(const std::string& text, const std::string& caption) {
  std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
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
