#include "core/codec_registry.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/fork_locks.h"
#include "platform/module_path.h"
#include "platform/whole_file.h"

namespace tessaret {
namespace {

/// The syntaxes that need no codec (DICOM PS3.5, A.1 to A.3).
constexpr const char* kNativeSyntaxes[] = {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1",
                                           "1.2.840.10008.1.2.2"};

void AddNativeSyntaxes(CodecRegistry::Map& entries) {
  for (const char* uid : kNativeSyntaxes) {
    CodecEntry& entry = entries[uid];
    std::memcpy(entry.Props.UID, uid, std::strlen(uid));
    entry.Props.Flags = TESSARET_CODEC_NATIVE;
  }
}

/// Whether a file that could not be read may well be read later: the host has file work given up, or has no descriptor left.
bool IsPassing(int error) { return error == ECANCELED || error == EMFILE || error == ENFILE; }

/// Nothing where the list cannot be read for now; one that is not there names no library.
std::optional<std::vector<std::string>> ListedLibraries(const std::string& listFile) {
  std::vector<std::uint8_t> bytes;
  const int error = ReadWholeFile(listFile, kLargestCodecList, bytes);
  if (error == ENOMEM) throw std::bad_alloc();
  if (IsPassing(error)) return std::nullopt;
  if (error != 0) return std::vector<std::string>();
  return LibraryNamesIn({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

/// Whether both stand for the same syntax of the same library.
bool AreSame(const CodecEntry& a, const CodecEntry& b) {
  return a.LibraryName == b.LibraryName && a.Index == b.Index &&
         std::memcmp(&a.Props, &b.Props, sizeof(a.Props)) == 0;
}

/// The same directory wherever the process goes; as it is where nobody knows where the process is.
std::string Fixed(std::string directory) {
  std::error_code unknown;
  const std::filesystem::path absolute = std::filesystem::absolute(directory, unknown);
  return unknown ? std::move(directory) : absolute.string();
}

}  // namespace

void CodecLock::lock() {
  const pid_t mine = ::getpid();
  for (pid_t holder = 0; !process_.compare_exchange_strong(holder, mine); holder = 0) {
    process_.wait(holder);
  }
}

void CodecLock::unlock() noexcept {
  process_ = 0;
  process_.notify_one();
}

bool CodecLock::IsLost() const noexcept {
  const pid_t process = process_;
  return process != 0 && process != ::getpid();
}

CodecPlaces CodecPlaces::OfThisProcess() {
  // A library is loaded again long after the census, and is to be the same one then.
  std::vector<std::string> directories = {Fixed(ModuleDirectory())};
  if (std::string code = CodeDirectory(); code != directories.front()) {
    directories.push_back(std::move(code));
  }
  // Without a directory it would be a file of the working directory, where anybody may have put it.
  const std::string program = ProgramDirectory();
  return {program.empty() ? std::string() : program + kCodecListFile,
          [places = std::move(directories)](const std::string& name) {
            return LoadCodecLibrary(places, name);
          }};
}

void CodecRegistry::Enumerate(const std::string& name, Map& entries) const {
  const SharedLibrary library = places_.load(name);
  std::uint32_t index = 0;
  for (const CodecProps& props : SyntaxesOf(library)) {
    CodecEntry& entry = entries[UidOf(props)];
    entry.Props = props;
    entry.LibraryName = name;
    entry.Index = index++;
  }
}

void CodecRegistry::Adopt(Map& entries) noexcept {
  for (auto at = entries_.begin(); at != entries_.end();) {
    const auto old = at++;
    const auto fresh = entries.find(old->first);
    if (fresh == entries.end() || !AreSame(old->second, fresh->second)) continue;
    entries.erase(fresh);
    entries.insert(entries_.extract(old));
  }
  entries_.swap(entries);
  replaced_.swap(entries);
}

void CodecRegistry::TakeCensus() {
  const auto listed = ListedLibraries(places_.listFile);
  if (!listed && census_ == Census::kWithoutList) return;
  Map entries;
  AddNativeSyntaxes(entries);
  Enumerate(kFirstCodecLibrary, entries);
  if (listed) {
    for (const std::string& name : *listed) Enumerate(name, entries);
  }
  Adopt(entries);
  census_ = listed ? Census::kWhole : Census::kWithoutList;
}

CodecEntry* CodecRegistry::Find(std::string_view uid) {
  const std::lock_guard lock(forkLocks.codecs);
  if (census_ != Census::kWhole) TakeCensus();
  const auto found = entries_.find(uid);
  return found == entries_.end() ? nullptr : &found->second;
}

std::shared_ptr<CodecLock> CodecRegistry::LockOf(const DcmCodec* codec,
                                                 std::shared_ptr<CodecLock> fresh) const {
  for (const Map* entries : {&entries_, &replaced_}) {
    for (const auto& [uid, entry] : *entries) {
      if (entry.Codec == codec) return entry.Calls;
    }
  }
  return fresh;
}

bool CodecRegistry::Acquire(CodecEntry& entry) {
  const std::lock_guard lock(forkLocks.codecs);
  if (entry.Codec == nullptr) {
    auto calls = std::make_shared<CodecLock>();
    SharedLibrary module = places_.load(entry.LibraryName);
    const LoadedCodec loaded = GetCodec(module, entry.Index);
    if (loaded.codec == nullptr) return false;
    entry.Calls = LockOf(loaded.codec, std::move(calls));
    entry.Module = std::move(module);
    entry.Codec = loaded.codec;
    entry.FreeCodec = loaded.free;
  }
  ++entry.UseCount;
  return true;
}

void CodecRegistry::Release(CodecEntry& entry) noexcept {
  const std::lock_guard lock(forkLocks.codecs);
  if (--entry.UseCount > 0) return;
  FreeCodec({std::exchange(entry.Codec, nullptr), std::exchange(entry.FreeCodec, nullptr)});
  entry.Calls.reset();
  entry.Module.Unload();
}

CodecRegistry& ModuleCodecRegistry() {
  static constinit std::atomic<CodecRegistry*> made = nullptr;
  if (CodecRegistry* const registry = made.load(std::memory_order_acquire)) return *registry;
  const std::lock_guard lock(forkLocks.codecs);
  // Never destroyed: an engine may still work while the process ends.
  static CodecRegistry& registry = *new CodecRegistry(CodecPlaces::OfThisProcess());
  made.store(&registry, std::memory_order_release);
  return registry;
}

}  // namespace tessaret
