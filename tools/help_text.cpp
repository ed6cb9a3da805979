#include "help_text.h"

#include <algorithm>

#include "exit_code.h"

namespace tessaret::tool {
namespace {

constexpr std::size_t kWordColumn = 26;
constexpr std::size_t kWidth = 100;

/// One row of a two-column list: the words begin in their column, on a line of their own if need be, and are wrapped.
std::string Row(const std::string& head, std::string_view words) {
  std::string text = "  " + head;
  std::size_t column = text.size();
  if (column + 2 > kWordColumn) {
    text += '\n';
    column = 0;
  }
  text.append(kWordColumn - column, ' ');
  column = kWordColumn;
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    const bool begins = column == kWordColumn;
    if (!begins && column + 1 + end > kWidth) {
      text += '\n' + std::string(kWordColumn, ' ');
      column = kWordColumn;
    } else if (!begins) {
      text += ' ';
      ++column;
    }
    text += words.substr(0, end);
    column += end;
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return text + '\n';
}

std::string HeadOf(const OptionRow& row) {
  std::string value = row.ShownValue();
  if (row.IsPositional()) return value;
  const std::string names = Joined(row.names, ", ");
  return value.empty() ? names : names + ' ' + value;
}

std::string WordsOf(const OptionRow& row) {
  const std::string value = row.ShownDefault();
  return value.empty() ? row.description : row.description + " (default: " + value + ')';
}

std::string Usage(const CommandTable& table, bool hasVerbs) {
  std::string text = "Usage: " + table.command + (hasVerbs ? " VERB" : "") + " [OPTIONS]";
  for (const OptionRow& row : table.options) {
    const std::string value = row.ShownValue();
    if (row.IsPositional()) text += row.required ? ' ' + value : " [" + value + ']';
  }
  return text + "\n";
}

std::string ExitCodes() {
  std::string text = "\nExit codes:\n";
  for (const ExitCodeRow& row : kExitCodes)
    text += Row(std::to_string(static_cast<int>(row.code)), row.words);
  return text;
}

}  // namespace

std::string HelpText(const CommandTable& table, const std::vector<CommandTable>& verbs) {
  std::string text = Usage(table, !verbs.empty()) + '\n' + table.summary + ".\n\n";
  for (const OptionRow& row : table.options) {
    if (row.IsPositional()) text += Row(HeadOf(row), WordsOf(row));
  }
  if (!verbs.empty()) text += "Verbs:\n";
  for (const CommandTable& verb : verbs) text += Row(verb.name, verb.summary);
  text += "\nOptions:\n";
  for (const OptionRow& row : table.options) {
    if (!row.IsPositional()) text += Row(HeadOf(row), WordsOf(row));
  }
  return text + ExitCodes();
}

}  // namespace tessaret::tool
