#include "core/dump.h"

#include <algorithm>

#include "base/text.h"
#include "core/element_text.h"
#include "core/trace.h"

namespace tessaret {
namespace {

constexpr std::size_t kBytesALine = 32;
constexpr std::size_t kColumnsAByte = 3;

std::string ValueBetweenBars(const VR& vr, VrCode type) {
  switch (FormOfValue(vr, type)) {
    case ValueForm::kEmpty:
      return Format("|%s|", kEmptyValue.data());
    case ValueForm::kText: {
      std::string_view text = FirstCharacters(vr);
      // NULs at the end are padding.
      while (!text.empty() && text.back() == '\0') text.remove_suffix(1);
      return '|' + WithoutControls(text) + '|';
    }
    case ValueForm::kNumber:
      return '|' + NumberText(vr, type) + '|';
    case ValueForm::kBytes:
      break;
  }
  return BytesText(vr);
}

void AppendHexLine(std::string& text, const std::uint8_t* bytes, std::size_t offset,
                   std::size_t count) {
  text += Format("%6.6zu-%6.6zu ", offset, offset + count - 1);
  AppendHexadecimal(text, bytes, count);
  text.append((kBytesALine - count) * kColumnsAByte, ' ');
  text += "| ";
  AppendCharacters(text, bytes, count);
  text += "|\n";
}

}  // namespace

std::string ElementLine(const VR& vr, const DumpService* service) {
  const TagWords words = LookUpTag(service == nullptr ? nullptr : service->dictionary, vr);
  const VrCode type = ShownType(vr, words);
  std::string line = Format("(%4.4X)[%4.4X,%4.4X][%6d]", vr.StreamPosition, vr.Group, vr.Element,
                            static_cast<int>(vr.Length));
  line += '[' + TypeLetters(type) + "]:";
  if (service != nullptr) line += '\'' + words.description + "' ";
  return line + ValueBetweenBars(vr, type);
}

void DumpVR(const VR& vr, const DumpService* service) noexcept {
  try {
    AppendToDump(ElementLine(vr, service) + '\n');
  } catch (...) {
    // A line that finds no memory is not traced, and the work goes on.
  }
}

std::string HexListing(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  std::string text;
  for (std::size_t offset = 0; offset < size; offset += kBytesALine) {
    AppendHexLine(text, bytes + offset, offset, std::min(kBytesALine, size - offset));
  }
  return text;
}

void DumpHex(const void* data, std::size_t size) noexcept {
  try {
    if (size != 0) AppendToDump(HexListing(data, size));
  } catch (...) {
    // As above.
  }
}

}  // namespace tessaret
