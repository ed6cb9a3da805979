// The words of a failure, for the thread that met it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "component/class_table.h"
#include "tessaret/object.hpp"
#include "tessaret/status.hpp"

namespace tessaret {

/// What the last failure of a thread said.
struct ErrorWords {
  std::string source;  // the name of the class
  std::string text;    // in UTF-8
  InterfaceId interface;
};

/// Keeps `text`, which may be what is kept already, as the last failure of the calling thread, with the name of the class as its source. kException; kPointer for a
/// null `text`, and then nothing is kept. Without memory the text may be cut.
Status Report(const ClassId& classId, const char* text, const InterfaceId& interface) noexcept;
/// The same with an entry of the string table.
Status Report(const ClassId& classId, std::int32_t stringId, const InterfaceId& interface) noexcept;

/// What Report kept last in the calling thread; empty texts where nothing was. Valid until the next Report of the thread.
const ErrorWords& LastWords() noexcept;
void ForgetLastWords() noexcept;

}  // namespace tessaret
