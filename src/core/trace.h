// Tracing of what the library does, into one text file and under a mask of bits. Off unless a bit is switched on, and a
// site that is off costs one load and one test. Tracing is a debugging aid: the file is opened, written once and closed for
// every text, so that a crash loses nothing, and no failure of it ever reaches the work that is traced. Any thread may call
// anything here at any time; texts of two threads alternate but do not mix.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace tessaret {

inline constexpr std::uint32_t kDumpSocket = 1;  // bytes sent and received
inline constexpr std::uint32_t kDumpData = 2;    // headers and payload of P-DATA
inline constexpr std::uint32_t kDumpParse =
    4;  // every element parsed or written, every sequence boundary
inline constexpr std::uint32_t kDumpPdu = 16;  // fields of what associations are negotiated by

/// The mask. Changed by SetDumpFlag only.
extern std::atomic<std::uint32_t> DumpFlags;

/// True if any of `bits` is on. Every site asks this before it builds a text.
inline bool IsDumping(std::uint32_t bits) {
  return (DumpFlags.load(std::memory_order_relaxed) & bits) != 0;
}

/// Switches all of `bits` on or off and leaves the others as they are.
void SetDumpFlag(std::uint32_t bits, bool on);

/// Switches kDumpSocket on if the environment variable "DCM_DUMP_SOCKET" is there, whatever its value.
void SetSocketDumpFromEnvironment();
/// Switches kDumpData on if the environment variable "DCM_DUMP_PDATA" is there, whatever its value.
void SetDataDumpFromEnvironment();

/// Names the file to write to, kept as a copy; null goes back to the usual one.
void SetDumpFile(const char* path);
/// The file named, or "DcmServiceDump.log" in the working directory.
std::string GetDumpFile();

/// Appends `text` to the file in one piece, whatever the mask. A file that cannot be opened or written is ignored. A file
/// that is created can be read by its owner only, since traces hold patients' data. errno is left as it was.
void AppendToDump(std::string_view text) noexcept;

/// Appends the text as by printf when any of `bits` is on. Not for floating point, whose point follows the locale.
[[gnu::format(printf, 2, 3)]] void DumpTrace(std::uint32_t bits, const char* format, ...) noexcept;

/// Appends the line "time : text", whatever the mask, with the local time as the platform's "%c" writes it.
void DumpTimeStamped(std::string_view text) noexcept;

}  // namespace tessaret
