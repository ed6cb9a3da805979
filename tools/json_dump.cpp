#include "json_dump.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "core/element_text.h"
#include "core/value_order.h"
#include "object_walk.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

std::string Base64(const std::uint8_t* bytes, std::size_t size) {
  constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t at = 0; at < size; at += 3) {
    const std::size_t count = std::min<std::size_t>(3, size - at);
    std::uint32_t bits = 0;
    for (std::size_t part = 0; part < 3; ++part) {
      bits = bits << 8 | (part < count ? bytes[at + part] : 0u);
    }
    for (std::size_t letter = 0; letter < 4; ++letter) {
      text += letter <= count ? kLetters[bits >> (18 - 6 * letter) & 0x3F] : '=';
    }
  }
  return text;
}

/// "7FE00010" of "(7fe0,0010)".
std::string JsonTag(const std::string& text) {
  std::string digits = text.substr(1, 4) + text.substr(6, 4);
  for (char& digit : digits) {
    if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
  }
  return digits;
}

std::string_view WithoutBlanksAround(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

/// Calls `visit` with each part of `text` between backslashes.
template <class Visit>
void ForEachPart(std::string_view text, Visit visit) {
  for (;;) {
    const std::size_t end = text.find('\\');
    visit(text.substr(0, end));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

class JsonDump final : public ObjectVisitor {
 public:
  explicit JsonDump(JsonWriter& json) : json_(json) {}

  void OnElement(const VR& vr, const DICOMObject&, int) override {
    if (vr.Group == kStructuralGroup) {
      json_.BeginObject();
      BytesValue(vr);
      json_.EndObject();
      return;
    }
    Begin(vr);
    Value(vr);
    json_.EndObject();
  }

  void OnSequence(const VR& vr, const DICOMObject&, int) override {
    Begin(vr);
    json_.Key(HoldsFragments(vr) ? "fragments" : "Value").BeginArray();
  }
  void OnSequenceEnd(const VR&, int) override { json_.EndArray().EndObject(); }
  void OnItem(const VR& sequence, std::uint32_t, const DICOMObject&, int) override {
    if (!HoldsFragments(sequence)) json_.BeginObject();
  }
  void OnItemEnd(const VR& sequence, int) override {
    if (!HoldsFragments(sequence)) json_.EndObject();
  }

 private:
  static bool HoldsFragments(const VR& sequence) { return sequence.Key() == kPixelDataTag; }

  void Begin(const VR& vr) {
    json_.Key(Format("%04X%04X", vr.Group, vr.Element)).BeginObject();
    json_.Member(
        "vr", TypeLetters(vr.Items == nullptr || HoldsFragments(vr) ? vr.TypeCode : type_code::SQ));
  }

  void Value(const VR& vr) {
    if (vr.Length == 0) return;
    if (vr.Data == nullptr) {
      if (vr.TypeCode != type_code::SQ) json_.Member("length", std::uint64_t{vr.Length});
      return;
    }
    switch (KindOf(vr.TypeCode)) {
      case ValueKind::kText:
      case ValueKind::kUid:
        return TextValue(vr);
      case ValueKind::kInteger:
      case ValueKind::kUnsigned:
      case ValueKind::kFloat:
      case ValueKind::kTag:
        return NumbersValue(vr);
      case ValueKind::kBytes:
      case ValueKind::kSequence:
        return BytesValue(vr);
    }
  }

  void TextValue(const VR& vr) {
    const std::string_view text = UnpaddedText(vr);
    if (text.empty()) return;
    json_.Key("Value").BeginArray();
    if (FindTraits(vr.TypeCode)->severalValues) {
      ForEachPart(text, [&](std::string_view part) { TextPart(vr.TypeCode, part); });
    } else {
      json_.String(text);
    }
    json_.EndArray();
  }

  void TextPart(VrCode type, std::string_view part) {
    const bool number = type == type_code::DS || type == type_code::IS;
    const std::string_view bare = WithoutBlanksAround(part);
    if (bare.empty()) {
      json_.Null();
    } else if (type == type_code::PN) {
      Name(part);
    } else if (number && IsJsonNumber(bare)) {
      json_.Raw(bare);
    } else {
      json_.String(number ? bare : part);
    }
  }

  void Name(std::string_view name) {
    constexpr std::array<std::string_view, 3> kGroups = {"Alphabetic", "Ideographic", "Phonetic"};
    json_.BeginObject();
    for (const std::string_view group : kGroups) {
      const std::size_t end = group == kGroups.back() ? std::string_view::npos : name.find('=');
      if (!name.substr(0, end).empty()) json_.Member(group, name.substr(0, end));
      if (end == std::string_view::npos) break;
      name.remove_prefix(end + 1);
    }
    json_.EndObject();
  }

  void NumbersValue(const VR& vr) {
    const bool tag = KindOf(vr.TypeCode) == ValueKind::kTag;
    const std::uint32_t width = tag ? 4 : NumberWidth(vr.TypeCode);
    if (vr.Length % width != 0) return BytesValue(vr);
    json_.Key("Value").BeginArray();
    for (std::uint32_t index = 0; index < vr.Length / width; ++index) {
      std::string text = NumberText(vr, index);
      if (tag) text = JsonTag(text);
      // Infinities and what is not a number have no form in JSON.
      if (!tag && IsJsonNumber(text)) {
        json_.Raw(text);
      } else {
        json_.String(text);
      }
    }
    json_.EndArray();
  }

  void BytesValue(const VR& vr) {
    if (vr.Data != nullptr && vr.Length <= kLongestInlineBinary) {
      json_.Member("InlineBinary", Base64(vr.Data, vr.Length));
    } else {
      json_.Member("length", std::uint64_t{vr.Length});
    }
  }

  JsonWriter& json_;
};

}  // namespace

void DumpJson(const DICOMObject& object, JsonWriter& json) {
  json.BeginObject();
  JsonDump dump(json);
  WalkObject(object, dump);
  json.EndObject();
}

}  // namespace tessaret::tool
