#include "manual.h"

#include <algorithm>

#include "exit_code.h"
#include "tessaret/version.h"

namespace tessaret::tool {
namespace {

/// Text as roff takes it: no dash turns into a hyphen, no line into a request.
std::string Roff(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else {
      escaped += c;
    }
  }
  if (escaped.starts_with('.') || escaped.starts_with('\'')) escaped.insert(0, "\\&");
  return escaped;
}

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  });
  return text;
}

std::string Title(const std::string& name) {
  return ".TH \"" + Roff(Upper(name)) + "\" 1 \"\" \"Tessaret " + TESSARET_VERSION_STRING +
         "\" \"Tessaret\"\n.nh\n";  // names of commands are not to be broken
}

std::string NameSection(const std::string& name, const std::string& summary) {
  return ".SH NAME\n" + Roff(name) + " \\- " + Roff(summary) + '\n';
}

std::string Synopsis(const std::string& command, const OptionRows& rows) {
  std::string text = ".SH SYNOPSIS\n.B " + Roff(command) + "\n[\\fIoptions\\fR]";
  for (const OptionRow& row : rows) {
    if (!row.IsPositional()) continue;
    const std::string value = "\\fI" + Roff(row.ShownValue()) + "\\fR";
    text += row.required ? ' ' + value : " [" + value + ']';
  }
  return text + '\n';
}

std::string OptionHead(const OptionRow& row) {
  const std::string value = row.ShownValue();
  if (row.IsPositional()) return "\\fI" + Roff(value) + "\\fR";
  std::string head;
  for (const std::string& name : row.names) {
    if (!head.empty()) head += ", ";
    head += "\\fB" + Roff(name) + "\\fR";
  }
  return value.empty() ? head : head + " \\fI" + Roff(value) + "\\fR";
}

std::string Options(const OptionRows& rows) {
  std::string text = ".SH OPTIONS\n";
  for (const OptionRow& row : rows) {
    text += ".TP\n" + OptionHead(row) + '\n' + Roff(row.description) + '.';
    const std::string value = row.ShownDefault();
    if (!value.empty()) text += " Default: " + Roff(value) + '.';
    text += '\n';
  }
  return text;
}

std::string ExitStatus() {
  std::string text = ".SH EXIT STATUS\n";
  for (const ExitCodeRow& row : kExitCodes) {
    text += ".TP\n\\fB" + std::to_string(static_cast<int>(row.code)) + "\\fR\n" + Roff(row.words) +
            '\n';
  }
  return text;
}

struct Variable {
  const char* name;
  const char* words;
};

constexpr Variable kEnvironment[] = {
    {"NO_COLOR", "Set and not empty: no colours and no progress bars."},
    {"TESSARET_DATA_DIR",
     "The directory of dicom-dict.txt and uid-dict.txt, instead of the one that was installed."},
};

std::string Environment() {
  std::string text = ".SH ENVIRONMENT\n";
  for (const Variable& variable : kEnvironment) {
    text += ".TP\n.B " + Roff(variable.name) + '\n' + Roff(variable.words) + '\n';
  }
  return text;
}

constexpr const char* kConventions =
    ".SH CONVENTIONS\n"
    "Results go to standard output. Words go to standard error, a line each: "
    "\\fBtessaret:\\fR \\fISUBJECT\\fR\\fB:\\fR \\fIWORDS\\fR.\n"
    "Control characters in values and names are shown as \\ex1b.\n"
    "Output that is there already is replaced only with \\fB\\-\\-force\\fR, and a file is written "
    "whole or not at all; devices, pipes and files without a name are written where they are.\n";

std::string VerbPageName(const CommandTable& verb) { return "tessaret-" + verb.name; }

ManPage VerbPage(const CommandTable& verb) {
  const std::string name = VerbPageName(verb);
  const std::string text = Title(name) + NameSection(name, verb.summary) +
                           Synopsis(verb.command, verb.options) + Options(verb.options) +
                           ExitStatus() + Environment();
  return {name + ".1", text + ".SH SEE ALSO\n.BR tessaret (1)\n"};
}

ManPage ToolPage(const CommandTable& tool, const std::vector<CommandTable>& verbs) {
  std::string text =
      Title("tessaret") + NameSection("tessaret", "show, check, convert and make DICOM files");
  text += ".SH SYNOPSIS\n.B tessaret\n\\fIverb\\fR [\\fIoptions\\fR] ...\n.SH VERBS\n";
  std::string seeAlso;
  for (const CommandTable& verb : verbs) {
    text += ".TP\n.B " + Roff(verb.name) + '\n' + Roff(verb.summary) + ".\n";
    seeAlso += (seeAlso.empty() ? ".BR " : ",\n.BR ") + Roff(VerbPageName(verb)) + " (1)";
  }
  text += Options(tool.options) + kConventions + ExitStatus() + Environment();
  return {"tessaret.1", text + ".SH SEE ALSO\n" + seeAlso + '\n'};
}

}  // namespace

std::vector<ManPage> ManPages(const CommandLine& line) {
  const std::vector<CommandTable> verbs = line.ListedVerbs();
  std::vector<ManPage> pages{ToolPage(line.Tool(), verbs)};
  for (const CommandTable& verb : verbs) pages.push_back(VerbPage(verb));
  return pages;
}

}  // namespace tessaret::tool
