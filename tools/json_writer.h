// JSON on standard output, one object a line, valid whatever the values hold.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "output.h"

namespace tessaret::tool {

/// `text` as a JSON string in quotes. Text that is not UTF-8 is taken byte by byte, each as the character of that number,
/// which is right for Latin-1 and loses nothing for any other character set.
std::string JsonString(std::string_view text);

/// True when `text` is a number as JSON writes one.
bool IsJsonNumber(std::string_view text);

/// Writes values in the order of the calls and sets the commas.
class JsonWriter {
 public:
  explicit JsonWriter(Output& output) : output_(output) {}

  JsonWriter& BeginObject() { return Open('{'); }
  JsonWriter& EndObject() { return Close('}'); }
  JsonWriter& BeginArray() { return Open('['); }
  JsonWriter& EndArray() { return Close(']'); }
  JsonWriter& Key(std::string_view name);
  /// Part by part, as the text may be long.
  JsonWriter& String(std::string_view text);
  JsonWriter& Number(std::uint64_t number) { return Raw(std::to_string(number)); }
  JsonWriter& Bool(bool value) { return Raw(value ? "true" : "false"); }
  JsonWriter& Null() { return Raw("null"); }
  /// `json` is a whole value already.
  JsonWriter& Raw(std::string_view json);
  /// Goes on with the value that Raw began.
  JsonWriter& More(std::string_view json);

  /// A member of the object that is open.
  JsonWriter& Member(std::string_view name, std::string_view text) {
    return Key(name).String(text);
  }
  JsonWriter& Member(std::string_view name, const char* text) { return Key(name).String(text); }
  JsonWriter& Member(std::string_view name, std::uint64_t number) {
    return Key(name).Number(number);
  }
  JsonWriter& Member(std::string_view name, bool value) { return Key(name).Bool(value); }

  /// Ends the line behind the outermost object.
  void EndLine();

 private:
  JsonWriter& Open(char bracket);
  JsonWriter& Close(char bracket);
  void Separate();

  Output& output_;
  std::vector<bool> hasMembers_;  // of each object and array that is open
  bool afterKey_ = false;
};

}  // namespace tessaret::tool
