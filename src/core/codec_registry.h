// Which codec library serves which transfer syntax, and the codec objects in use.
//
// The census of the libraries runs with the first question, and only names and numbers stay of it; a library is loaded again
// when one of its codecs is wanted, and unloaded when the last engine has given that back. The native syntaxes are known
// without a library; one that lists them takes their place. All operations may be called from any thread.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "core/codec_library.h"
#include "platform/shared_library.h"
#include "tessaret/codec.h"

namespace tessaret {

/// Held while a codec object converts the frames of one data set.
class CodecLock {
 public:
  void lock();
  void unlock() noexcept;
  /// True in a child of fork for what another thread of the parent held: that one is not there to give it back, and left the codec
  /// amid its work.
  [[nodiscard]] bool IsLost() const noexcept;

 private:
  // Of the thread that holds it, 0 for none: all in one number, so that a fork never comes amid taking it.
  std::atomic<pid_t> process_ = 0;
};

/// One transfer syntax. The first three fields stay as the census left them; those behind them are the registry's while
/// nobody uses the codec, and stay as they are while somebody does.
struct CodecEntry {
  [[nodiscard]] bool IsNative() const { return (Props.Flags & TESSARET_CODEC_NATIVE) != 0; }
  [[nodiscard]] bool IsConcurrent() const { return (Props.Flags & TESSARET_CODEC_CONCURRENT) != 0; }
  /// True for a native syntax that no library lists: there is no codec to be had.
  [[nodiscard]] bool IsBuiltIn() const { return LibraryName.empty(); }

  CodecProps Props{};
  std::string LibraryName;
  std::uint32_t Index = 0;  // of the syntax in its library

  SharedLibrary Module;
  DcmCodec* Codec = nullptr;
  decltype(DcmFreeCodec)* FreeCodec = nullptr;
  std::uint32_t UseCount = 0;  // engines that hold the codec

  // Not used where the codec is concurrent. One for all syntaxes that have this codec object.
  std::shared_ptr<CodecLock> Calls;
};

/// Where codec libraries are found.
struct CodecPlaces {
  /// That of the library's own process.
  static CodecPlaces OfThisProcess();

  std::string listFile;  // its lines name further libraries; need not be there, empty for none
  std::function<SharedLibrary(const std::string& name)> load;  // nothing loaded where there is none
};

class CodecRegistry {
 public:
  using Map = std::map<std::string, CodecEntry, std::less<>>;

  explicit CodecRegistry(CodecPlaces places) : places_(std::move(places)) {}
  CodecRegistry(const CodecRegistry&) = delete;
  CodecRegistry& operator=(const CodecRegistry&) = delete;

  /// The entry, which stays the registry's and where it is, or null. Throws std::bad_alloc; a census that it cut short is taken anew. So
  /// is one whose list could not be read for now: until then only the first library counts.
  CodecEntry* Find(std::string_view uid);

  /// Makes the codec of the entry ready, unless it is in use already, and counts the caller. False, with nothing changed, when
  /// it cannot be had. Throws std::bad_alloc likewise. Requires: Release is called as often as this was true.
  bool Acquire(CodecEntry& entry);

  /// The last one gives the codec back and unloads its library.
  void Release(CodecEntry& entry) noexcept;

  /// All entries, in the order of their UIDs. Requires: some Find came before.
  [[nodiscard]] const Map& Entries() const { return entries_; }

 private:
  /// How far the census has come.
  enum class Census { kNone, kWithoutList, kWhole };

  void TakeCensus();
  void Enumerate(const std::string& name, Map& entries) const;
  /// Takes the entries of a new census in; those that it does not change stay what they are.
  void Adopt(Map& entries) noexcept;
  /// The lock of an entry that has this codec object already, otherwise `fresh`.
  std::shared_ptr<CodecLock> LockOf(const DcmCodec* codec, std::shared_ptr<CodecLock> fresh) const;

  CodecPlaces places_;
  Census census_ = Census::kNone;
  Map entries_;
  Map replaced_;  // of a census without the list; somebody may still use them
};

/// That of this process. Lives until the process ends.
CodecRegistry& ModuleCodecRegistry();

}  // namespace tessaret
