// Dictionary entries on their way from a file into a dictionary, in the order of the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "core/tag.h"
#include "core/type_code.h"

namespace tessaret {

/// Characters of the longest description, and of any other token of the text form.
inline constexpr std::size_t kLongestToken = 1023;

/// Bytes of the largest dictionary file that is read, of either form and either kind. The library's own has 0.3 MB.
inline constexpr std::uint64_t kLargestDictionaryFile = std::uint64_t{16} << 20;

struct RtcDraft {
  struct Entry {
    TagKey key;
    VrCode typeCode;
    std::uint32_t textAt;  // where in `texts` the description begins, or kNoText
  };
  static constexpr std::uint32_t kNoText = 0xFFFFFFFF;

  /// Appends a text and its NUL; where it begins. No file has so many bytes that the answer does not fit.
  std::uint32_t KeepText(std::string_view text) {
    const std::size_t at = texts.size();
    texts.insert(texts.end(), text.begin(), text.end());
    texts.push_back('\0');
    return static_cast<std::uint32_t>(at);
  }

  std::vector<Entry> entries;
  std::vector<char> texts;
};

}  // namespace tessaret
