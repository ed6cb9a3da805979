// One codec library: how it is found by its name, and which syntaxes it lists.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/shared_library.h"
#include "tessaret/codec.h"

namespace tessaret {

/// The library that is always looked for.
inline constexpr const char* kFirstCodecLibrary = "DcmCodec.dll";
/// Beside the program: names further ones, one a line.
inline constexpr const char* kCodecListFile = "DcmCodecMgr.ini";
/// Characters of a line of that file, without its end. A longer line names nothing.
inline constexpr std::size_t kLongestLibraryName = 260;
/// Bytes of that file. A larger one counts as not there.
inline constexpr std::uint64_t kLargestCodecList = 1 << 20;
/// A library that lists more syntaxes than this never ends.
inline constexpr std::uint32_t kMostSyntaxes = 1024;

/// The names in the text of the list file, in its order. A line ends with LF, CR LF or the text, and at a NUL; blanks are part
/// of a name. Empty lines name nothing.
std::vector<std::string> LibraryNamesIn(std::string_view text);

/// Loads the library of this name from the first of `directories` (each ending in "/") that has it and gives it, otherwise by
/// the loader's search. A name with a "/" in it is a path: an absolute one is taken as it is, any other is looked for in
/// `directories` alone. Nothing is loaded on failure. Throws std::bad_alloc.
SharedLibrary LoadCodecLibrary(const std::vector<std::string>& directories,
                               const std::string& name);

/// Asks the library what it lists, in the order of the indices. Nothing where an entry point is missing, or where it throws or
/// never ends. Throws std::bad_alloc.
std::vector<CodecProps> SyntaxesOf(const SharedLibrary& library);

/// A codec object with the entry point that takes it back.
struct LoadedCodec {
  DcmCodec* codec = nullptr;
  decltype(DcmFreeCodec)* free = nullptr;
};

/// The codec object of this index; null where an entry point is missing, it throws, gives none, or gives one without all
/// three operations.
LoadedCodec GetCodec(const SharedLibrary& library, std::uint32_t index) noexcept;

/// Gives it back. What is thrown there is lost.
void FreeCodec(const LoadedCodec& loaded) noexcept;

/// The text of a UID that may lack its NUL.
std::string UidOf(const CodecProps& props);

}  // namespace tessaret
