// Spellings that people know from other DICOM programs and that are no options by the usual rules, beside ours.
#pragma once

namespace tessaret::tool {

struct KnownSpelling {
  const char* verb;
  const char* known;
  const char* option;  // ours, with "=" and its value where it takes one
};

inline constexpr KnownSpelling kKnownSpellings[] = {
    {"dump", "+L", "--long"},
    {"dump", "+r", "--recurse"},
    {"dump", "+sd", "--recurse"},
    {"check", "+r", "--recurse"},
    {"check", "+sd", "--recurse"},
    {"echo", "-aet", "--aet"},
    {"echo", "-aec", "--aec"},
    {"send", "-aet", "--aet"},
    {"send", "-aec", "--aec"},
    {"send", "+r", "--recurse"},
    {"convert", "+ti", "--syntax=implicit"},
    {"convert", "+te", "--syntax=explicit"},
};

}  // namespace tessaret::tool
