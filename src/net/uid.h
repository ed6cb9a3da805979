// The shape in which unique identifiers travel through the network code.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace tessaret {

/// A text of at most 64 bytes (DICOM PS3.5, 9.1).
struct UID {
  static constexpr std::uint32_t kMostBytes = 64;

  UID() = default;
  explicit UID(std::string_view text) { Set(text); }

  /// Takes `text` over, whose rest behind 64 bytes is left out: no unique identifier is longer.
  void Set(std::string_view text) {
    Size = static_cast<std::uint32_t>(std::min<std::size_t>(text.size(), kMostBytes));
    Text.fill('\0');
    std::copy_n(text.begin(), Size, Text.begin());
  }
  /// The text up to its first NUL, so that one that a peer has padded equals one that it has not.
  [[nodiscard]] std::string_view View() const { return Text.data(); }
  [[nodiscard]] bool IsEmpty() const { return Text[0] == '\0'; }

  friend bool operator==(const UID& a, const UID& b) { return a.View() == b.View(); }

  std::uint32_t Size = 0;                   // bytes of Text that count
  std::array<char, kMostBytes + 1> Text{};  // NUL behind them to the end
};

}  // namespace tessaret
