#include "core/codec_library.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "core/codec_call.h"
#include "platform/hold_cancellation.h"

namespace tessaret {
namespace {

/// What the library answers; nothing where it throws.
std::optional<bool> AskForProps(decltype(DcmGetCodecProps)* getProps, std::uint32_t index,
                                CodecProps& props) noexcept {
  const HoldCancellation hold;
  try {
    return getProps(index, &props) != 0;
  } catch (...) {
    return std::nullopt;
  }
}

}  // namespace

std::vector<std::string> LibraryNamesIn(std::string_view text) {
  std::vector<std::string> names;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    line = line.substr(0, line.find('\0'));
    if (!line.empty() && line.size() <= kLongestLibraryName) names.emplace_back(line);
  }
  return names;
}

SharedLibrary LoadCodecLibrary(const std::vector<std::string>& directories,
                               const std::string& name) {
  if (name.empty()) return {};
  if (name.front() == '/') return SharedLibrary::Load(name);
  for (const std::string& directory : directories) {
    SharedLibrary library = SharedLibrary::Load(directory + name);
    if (library.IsLoaded()) return library;
  }
  return name.find('/') == std::string::npos ? SharedLibrary::Load(name) : SharedLibrary();
}

std::vector<CodecProps> SyntaxesOf(const SharedLibrary& library) {
  const auto getCount = library.FindFunction<decltype(DcmGetCodecCount)>("DcmGetCodecCount");
  const auto getProps = library.FindFunction<decltype(DcmGetCodecProps)>("DcmGetCodecProps");
  if (getCount == nullptr || getProps == nullptr) return {};
  std::vector<CodecProps> syntaxes;
  for (std::uint32_t index = 0; index <= kMostSyntaxes; ++index) {
    CodecProps props{};
    const std::optional<bool> answer = AskForProps(getProps, index, props);
    if (!answer) return {};
    if (!*answer) return syntaxes;
    syntaxes.push_back(props);
  }
  return {};
}

LoadedCodec GetCodec(const SharedLibrary& library, std::uint32_t index) noexcept {
  const HoldCancellation hold;
  const auto getCodec = library.FindFunction<decltype(DcmGetCodec)>("DcmGetCodec");
  LoadedCodec loaded{nullptr, library.FindFunction<decltype(DcmFreeCodec)>("DcmFreeCodec")};
  if (getCodec == nullptr || loaded.free == nullptr) return {};
  try {
    loaded.codec = getCodec(index);
  } catch (...) {
    return {};
  }
  if (loaded.codec == nullptr) return {};
  if (HasAllOperations(*loaded.codec)) return loaded;
  FreeCodec(loaded);
  return {};
}

void FreeCodec(const LoadedCodec& loaded) noexcept {
  const HoldCancellation hold;
  try {
    loaded.free(loaded.codec);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
}

std::string UidOf(const CodecProps& props) {
  return {props.UID, ::strnlen(props.UID, sizeof(props.UID))};
}

}  // namespace tessaret
