#include "text_dump.h"

#include "class_object.h"
#include "escape.h"
#include "interrupt.h"

namespace tessaret::tool {
namespace {

/// The lines of `text`, each of which has an end: the only control character that is meant.
void WriteLines(std::string_view text, Output& output) {
  while (!text.empty()) {
    StopIfInterrupted();
    const std::size_t end = text.find('\n');
    output.Line(Escaped(text.substr(0, end)));
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
    WriteLines(text.Narrow(), host.output);
  });
}

}  // namespace tessaret::tool
