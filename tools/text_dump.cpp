#include "text_dump.h"

#include "class_object.h"
#include "escape.h"
#include "interrupt.h"

namespace tessaret::tool {
namespace {

/// The lines of `text`, a byte a character, each of which has an end: the only control character that is meant.
void WriteLines(std::u16string_view text, Output& output) {
  std::string line;
  while (!text.empty()) {
    StopIfInterrupted();
    const std::size_t end = text.find(u'\n');
    line.clear();
    for (const char16_t unit : text.substr(0, end)) line += static_cast<char>(unit);
    output.Line(Escaped(line));
    text.remove_prefix(end + 1);
  }
}

}  // namespace

void DumpText(const SourceFile& source, Host& host) {
  const Ref<IDcmFile> file = FileOf(*source.object);
  // One by one, since all lines together may take many times the memory of the object.
  source.listing.ForEachOnTop([&](const Element& element) {
    StopIfInterrupted();
    String text;
    Require(file->GetElementText(GroupOf(element.tag), ElementOf(element.tag), &text));
    WriteLines(text.View(), host.output);
  });
}

}  // namespace tessaret::tool
