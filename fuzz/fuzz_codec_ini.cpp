// The list of codec libraries. Each name is what a plain reading of its line gives, and the census asks for just these, in
// their order, behind the library that it always asks for.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "core/codec_registry.h"

namespace {

using Names = std::vector<std::string>;

void Require(bool holds) {
  if (!holds) std::abort();
}

/// Character by character, as the list would be read by hand.
Names PlainlyRead(std::string_view text) {
  Names names;
  std::string line;
  bool ended = false;
  const auto endLine = [&] {
    if (!ended && !line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line.size() <= 260) names.push_back(line);
    line.clear();
    ended = false;
  };
  for (const char c : text) {
    if (c == '\n') {
      endLine();
    } else if (c == '\0') {
      ended = true;
    } else if (!ended) {
      line += c;
    }
  }
  endLine();
  return names;
}

/// A file in memory that holds the text. One for the whole run.
class ListFile {
 public:
  ListFile() : descriptor_(::memfd_create("codecs", MFD_CLOEXEC)) { Require(descriptor_ >= 0); }
  ListFile(const ListFile&) = delete;
  ListFile& operator=(const ListFile&) = delete;
  ~ListFile() { ::close(descriptor_); }

  void Hold(std::string_view text) const {
    Require(::ftruncate(descriptor_, 0) == 0);
    const ssize_t written = ::pwrite(descriptor_, text.data(), text.size(), 0);
    Require(written == static_cast<ssize_t>(text.size()));
  }
  [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

/// What a census over this list asks for. No library is there.
Names AskedFor(const std::string& list) {
  Names asked;
  tessaret::CodecRegistry registry({list, [&asked](const std::string& name) {
                                      asked.push_back(name);
                                      return tessaret::SharedLibrary();
                                    }});
  Require(registry.Find("1.2.840.10008.1.2") != nullptr);
  Require(registry.Entries().size() == 3);
  return asked;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ListFile file;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  Names expected = PlainlyRead(text);
  Require(tessaret::LibraryNamesIn(text) == expected);
  if (size > tessaret::kLargestCodecList) expected.clear();
  file.Hold(text);
  expected.insert(expected.begin(), "DcmCodec.dll");
  Require(AskedFor(file.Path()) == expected);
  return 0;
}
