#include "component/report.h"

#include <new>

#include "component/string_table.h"
#include "platform/thread_keep.h"

namespace tessaret {
namespace {

struct OfThread;
using Kept = ThreadKeep<ErrorWords, OfThread>;

/// For threads that keep nothing any more.
const ErrorWords& NoWords() noexcept {
  static const ErrorWords kNone;
  return kNone;
}

void KeepText(ErrorWords& words, const char* text) noexcept {
  try {
    words.text = text;
  } catch (const std::bad_alloc&) {
    // What fits without memory is better than nothing.
    words.text.assign(std::string_view(text).substr(0, words.text.capacity()));
  }
}

void KeepSource(ErrorWords& words, std::string_view name) noexcept {
  try {
    words.source = name;
  } catch (const std::bad_alloc&) {
    words.source.clear();
  }
}

}  // namespace

Status Report(const ClassId& classId, const char* text, const InterfaceId& interface) noexcept {
  if (text == nullptr) return kPointer;
  ErrorWords* words = Kept::Get();
  if (words == nullptr) return kException;
  const ClassRow* row = FindClass(classId);
  words->interface = interface;
  // The text first: it may be what is kept already, of which the source is a part too.
  KeepText(*words, text);
  KeepSource(*words, row != nullptr ? row->name : std::string_view());
  return kException;
}

Status Report(const ClassId& classId, std::int32_t stringId,
              const InterfaceId& interface) noexcept {
  return Report(classId, StringOf(stringId).data(), interface);
}

const ErrorWords& LastWords() noexcept {
  const ErrorWords* words = Kept::Get();
  return words == nullptr ? NoWords() : *words;
}

void ForgetLastWords() noexcept {
  if (ErrorWords* words = Kept::Get(); words != nullptr) *words = ErrorWords{};
}

}  // namespace tessaret
