#include "text_dump.h"

#include "core/object_text.h"
#include "escape.h"
#include "interrupt.h"

namespace tessaret::tool {

void DumpText(const DICOMObject& object, Host& host) {
  ListObject(object, 0, &host.Tags(), [&host](std::string_view line) {
    StopIfInterrupted();
    line.remove_suffix(1);  // a line end is the only control character that is meant
    host.output.Line(Escaped(line));
  });
}

}  // namespace tessaret::tool
