// The character sets that (0008,0005) names (DICOM PS3.3, C.12.1.1.2), and what an escape sequence puts in their place
// (PS3.5, 6.1.2.5).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessaret::tool {

/// How the bytes of a set make characters.
enum class CodeForm : std::uint8_t {
  kAscii,     // one byte below 0x80, as ISO-IR 6 has it
  kRomaji,    // the same but for two places, ISO-IR 14
  kHigh,      // one byte from 0xA0
  kKatakana,  // one byte from 0xA1 to 0xDF, ISO-IR 13
  kLowPair,   // two bytes from 0x21 to 0x7E
  kHighPair,  // two bytes from 0xA1 to 0xFE
  kUtf8,      // a text by itself, without escape sequences
  kChinese,   // GBK and GB18030, which are ASCII below 0x80; without escape sequences
};

struct CodedSet {
  std::string_view name;  // as (0008,0005) has it behind "ISO_IR " and "ISO 2022 IR "
  CodeForm form;
  const char* converter;    // what the C library calls it; empty where no table is needed
  std::string_view lead;    // stands before each character for the converter
  std::string_view escape;  // what follows ESC; empty where none leads to the set
};

/// Whether a set is for bytes from 0x80, G1, rather than for those below, G0.
constexpr bool IsForHighBytes(CodeForm form) {
  return form == CodeForm::kHigh || form == CodeForm::kKatakana || form == CodeForm::kHighPair;
}

/// The set that `bytes`, which begin behind an ESC, lead to; null for none.
const CodedSet* FindEscape(std::string_view bytes);

/// What texts of a data set are written in.
class CharacterSets {
 public:
  /// Nothing is named: texts are ASCII, and what else may be in them nobody knows.
  CharacterSets() = default;
  /// By the value of (0008,0005), padding included. Blanks, dashes and underscores are taken for one another.
  explicit CharacterSets(std::string_view value);

  /// No set is named at all.
  [[nodiscard]] bool IsUnnamed() const { return unnamed_; }
  /// Whether escape sequences switch between sets.
  [[nodiscard]] bool HasExtensions() const { return extensions_; }
  /// The name of a set that is not known, the first of them, cut where it is very long; empty where all are.
  [[nodiscard]] const std::string& Unknown() const { return unknown_; }

  /// What counts at the start of a text: for bytes below 0x80, never null, and for those from 0x80, null where there is none. One that
  /// is a text by itself is both.
  [[nodiscard]] const CodedSet* Low() const;
  [[nodiscard]] const CodedSet* High() const { return high_; }

 private:
  void TakeFirst(std::string_view name);

  bool unnamed_ = true;
  bool extensions_ = false;
  const CodedSet* low_ = nullptr;
  const CodedSet* high_ = nullptr;
  std::string unknown_;
};

}  // namespace tessaret::tool
