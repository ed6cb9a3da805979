#include "text_dump.h"

#include "class_object.h"
#include "escape.h"
#include "interrupt.h"

namespace tessaret::tool {
namespace {

// All lines together may take many times the memory of the object.
constexpr std::int32_t kCharactersAtOnce = 1 << 22;

/// The lines of `text`, a byte a character, each of which has an end: the only control character that is meant. How many
/// they are.
std::int32_t WriteLines(std::u16string_view text, Output& output) {
  std::int32_t lines = 0;
  std::string line;
  while (!text.empty()) {
    StopIfInterrupted();
    const std::size_t end = text.find(u'\n');
    line.clear();
    for (const char16_t unit : text.substr(0, end)) line += static_cast<char>(unit);
    output.Line(Escaped(line));
    text.remove_prefix(end + 1);
    ++lines;
  }
  return lines;
}

void WriteElement(IDcmFile& file, TagKey tag, Output& output) {
  std::int32_t lines = 0;
  String text;
  do {
    StopIfInterrupted();
    Require(file.GetElementText(GroupOf(tag), ElementOf(tag), lines, kCharactersAtOnce, &text));
    lines += WriteLines(text.View(), output);
  } while (text.View().size() >= static_cast<std::size_t>(kCharactersAtOnce));
}

}  // namespace

void DumpText(const SourceFile& source, Host& host) {
  const Ref<IDcmFile> file = FileOf(*source.object);
  source.listing.ForEachOnTop(
      [&](const Element& element) { WriteElement(*file, element.tag, host.output); });
}

}  // namespace tessaret::tool
