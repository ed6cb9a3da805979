#include "decoded_text.h"

#include <algorithm>
#include <iterator>

#include "converter.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr VrCode kInCharacterSet[] = {
    type_code::LO, type_code::LT,          type_code::PN, type_code::SH,
    type_code::ST, MakeTypeCode('U', 'C'), type_code::UT,
};

constexpr char kEscape = '\x1B';
constexpr std::string_view kYen = "\xC2\xA5";           // U+00A5, at 0x5C of ISO-IR 14
constexpr std::string_view kOverline = "\xE2\x80\xBE";  // U+203E, at 0x7E

std::uint8_t ByteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<std::uint8_t>(bytes[at]) : std::uint8_t{0};
}

bool IsIn(std::uint8_t byte, std::uint8_t first, std::uint8_t last) {
  return first <= byte && byte <= last;
}

constexpr char32_t kFirstKatakana = 0xFF61;  // at 0xA1 of ISO-IR 13
constexpr char32_t kLastKatakana = 0xFF9F;   // at 0xDF

std::string Katakana(std::uint8_t byte) {
  const char32_t code = kFirstKatakana + byte - 0xA1;
  return {static_cast<char>(0xE0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3F)),
          static_cast<char>(0x80 | (code & 0x3F))};
}

/// How many bytes the character that begins with `bytes` has in GBK or GB18030.
std::size_t ChineseSize(std::string_view bytes) { return IsIn(ByteAt(bytes, 1), '0', '9') ? 4 : 2; }

using TakeValue = std::function<void(std::string_view)>;

class Decoder {
 public:
  Decoder(const CharacterSets& sets, VrCode type, std::size_t most, const TakeValue& take)
      : sets_(sets),
        most_(most),
        take_(take),
        hasSeveral_(FindTraits(type)->severalValues),
        isName_(type == type_code::PN) {
    Reset();
  }

  void Through(std::string_view bytes) {
    while (!bytes.empty() && count_ <= most_) bytes.remove_prefix(TakeOne(bytes));
    take_(value_);
  }

 private:
  void Reset() {
    low_ = sets_.Low();
    high_ = sets_.High();
  }

  /// Takes a character or an escape sequence from the start of `bytes`; how long it was.
  std::size_t TakeOne(std::string_view bytes) {
    const std::uint8_t byte = ByteAt(bytes, 0);
    if (bytes[0] == kEscape && sets_.HasExtensions()) {
      if (const std::size_t size = TakeEscape(bytes.substr(1)); size != 0) return 1 + size;
    }
    ++count_;
    if (byte >= 0x80) return TakeHigh(bytes);
    if (low_->form == CodeForm::kLowPair && IsIn(byte, 0x21, 0x7E)) return TakeLowPair(bytes);
    return TakeLow(bytes[0]);
  }

  /// 0 where no set is known by it.
  std::size_t TakeEscape(std::string_view behind) {
    const CodedSet* set = FindEscape(behind);
    if (set == nullptr) return 0;
    (IsForHighBytes(set->form) ? high_ : low_) = set;
    return set->escape.size();
  }

  std::size_t TakeLow(char c) {
    if (c == '\\' && hasSeveral_) {
      take_(value_);
      value_.clear();
      Reset();
      return 1;
    }
    const bool isControl = c < ' ' && c != kEscape;
    if (isControl || (isName_ && (c == '^' || c == '='))) Reset();
    if (low_->form == CodeForm::kRomaji && c == '\\') return Add(kYen, 1);
    if (low_->form == CodeForm::kRomaji && c == '~') return Add(kOverline, 1);
    return Add({&c, 1}, 1);
  }

  std::size_t TakeLowPair(std::string_view bytes) {
    const std::uint8_t second = ByteAt(bytes, 1);
    if (!IsIn(second, 0x21, 0x7E)) return AddByte(bytes);
    const char high[] = {static_cast<char>(bytes[0] | 0x80), static_cast<char>(bytes[1] | 0x80)};
    return AddConverted(*low_, {high, 2}, bytes);
  }

  std::size_t TakeHigh(std::string_view bytes) {
    if (high_ == nullptr) return AddByte(bytes);
    const std::uint8_t byte = ByteAt(bytes, 0);
    switch (high_->form) {
      case CodeForm::kKatakana:
        return IsIn(byte, 0xA1, 0xDF) ? Add(Katakana(byte), 1) : AddByte(bytes);
      case CodeForm::kHigh:
        // Below lie control characters, which no text may hold.
        return byte >= 0xA0 ? AddConverted(*high_, bytes.substr(0, 1), bytes) : AddByte(bytes);
      case CodeForm::kHighPair:
        if (byte < 0xA1 || ByteAt(bytes, 1) < 0xA1) return AddByte(bytes);
        return AddConverted(*high_, bytes.substr(0, 2), bytes);
      case CodeForm::kChinese:
        if (!IsIn(byte, 0x81, 0xFE) || bytes.size() < ChineseSize(bytes)) return AddByte(bytes);
        return AddConverted(*high_, bytes.substr(0, ChineseSize(bytes)), bytes);
      case CodeForm::kUtf8: {
        const std::size_t size = FirstCharacter(bytes).size;
        return size == 0 ? AddByte(bytes) : Add(bytes.substr(0, size), size);
      }
      case CodeForm::kAscii:
      case CodeForm::kRomaji:
      case CodeForm::kLowPair:
        break;
    }
    return AddByte(bytes);
  }

  std::size_t Add(std::string_view utf8, std::size_t size) {
    value_ += utf8;
    return size;
  }

  /// The first byte of `bytes`, which makes no character.
  std::size_t AddByte(std::string_view bytes) {
    value_ += HexEscape(bytes[0]);
    return 1;
  }

  /// The character `coded`, which lies at the start of `bytes`.
  std::size_t AddConverted(const CodedSet& set, std::string_view coded, std::string_view bytes) {
    const auto utf8 = ToUtf8(set.converter, std::string(set.lead).append(coded));
    // One alone: a lead byte may be a character too, and what follows another.
    const bool isOne = utf8 && !utf8->empty() && FirstCharacter(*utf8).size == utf8->size();
    return isOne ? Add(*utf8, coded.size()) : AddByte(bytes);
  }

  const CharacterSets& sets_;
  const std::size_t most_;
  const TakeValue& take_;
  const bool hasSeveral_;
  const bool isName_;
  const CodedSet* low_ = nullptr;
  const CodedSet* high_ = nullptr;
  std::size_t count_ = 0;  // of characters, delimiters included
  std::string value_;
};

void ForEachPart(std::string_view bytes, const TakeValue& take) {
  for (;;) {
    const std::size_t end = bytes.find('\\');
    take(bytes.substr(0, end));
    if (end == std::string_view::npos) return;
    bytes.remove_prefix(end + 1);
  }
}

bool IsDecoded(const CharacterSets& sets, VrCode type) {
  return IsInCharacterSet(type) && !sets.IsUnnamed();
}

bool IsAscii(char c) { return static_cast<std::uint8_t>(c) < 0x80; }

/// One character, UTF-8, in the sets that count at the start of a value.
std::optional<std::string> EncodedCharacter(const CharacterSets& sets, std::string_view character) {
  const CodedSet* high = sets.High();
  if (IsAscii(character[0])) return std::string(character);
  if (sets.Low()->form == CodeForm::kRomaji) {
    if (character == kYen) return "\\";
    if (character == kOverline) return "~";
  }
  if (high == nullptr) return std::nullopt;
  switch (high->form) {
    case CodeForm::kUtf8:
      return std::string(character);
    case CodeForm::kHigh:
    case CodeForm::kChinese:
      return FromUtf8(high->converter, character);
    case CodeForm::kKatakana: {
      const char32_t code = FirstCharacter(character).code;
      if (code < kFirstKatakana || code > kLastKatakana) return std::nullopt;
      return std::string(1, static_cast<char>(code - kFirstKatakana + 0xA1));
    }
    default:
      return std::nullopt;
  }
}

}  // namespace

bool IsInCharacterSet(VrCode type) {
  return std::find(std::begin(kInCharacterSet), std::end(kInCharacterSet), type) !=
         std::end(kInCharacterSet);
}

std::vector<std::string> DecodedValues(const CharacterSets& sets, VrCode type,
                                       std::string_view bytes, std::size_t most) {
  std::vector<std::string> values;
  ForEachDecodedValue(
      sets, type, bytes, [&](std::string_view value) { values.emplace_back(value); }, most);
  return values;
}

void ForEachDecodedValue(const CharacterSets& sets, VrCode type, std::string_view bytes,
                         const TakeValue& take, std::size_t most) {
  if (IsDecoded(sets, type)) return Decoder(sets, type, most, take).Through(bytes);
  const VrTraits* traits = FindTraits(type);
  if (traits != nullptr && traits->severalValues) return ForEachPart(bytes, take);
  take(bytes);
}

std::string DecodedText(const CharacterSets& sets, VrCode type, std::string_view bytes,
                        std::size_t most) {
  if (!IsDecoded(sets, type)) {
    // No character has more bytes.
    const std::size_t enough = most < kNoLimit / 8 ? 4 * (most + 1) : kNoLimit;
    return std::string(bytes.substr(0, enough));
  }
  std::string text;
  ForEachDecodedValue(
      sets, type, bytes, [&](std::string_view value) { (text += value) += '\\'; }, most);
  text.pop_back();
  return text;
}

std::optional<std::string> EncodedText(const CharacterSets& sets, VrCode type,
                                       std::string_view text) {
  if (!IsUtf8(text)) return std::nullopt;
  std::string bytes;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view character = rest.substr(0, FirstCharacter(rest).size);
    const auto coded = EncodedCharacter(sets, character);
    if (!coded) return std::nullopt;
    bytes += *coded;
    rest.remove_prefix(character.size());
  }
  // What reads back as something else, as a tilde of ISO-IR 14 does, cannot be written.
  const bool isPlain = IsDecoded(sets, type) ? DecodedText(sets, type, bytes) == text
                                             : std::all_of(bytes.begin(), bytes.end(), &IsAscii);
  return isPlain ? std::optional(bytes) : std::nullopt;
}

}  // namespace tessaret::tool
