#include "help_text.h"

#include <algorithm>

#include "exit_code.h"
#include "option_table.h"

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
  if (row.IsPositional()) return row.value;
  const std::string names = CLI::detail::join(row.names, ", ");
  return row.value.empty() ? names : names + ' ' + row.value;
}

std::string WordsOf(const OptionRow& row) {
  return row.defaultValue.empty() ? row.description
                                  : row.description + " (default: " + row.defaultValue + ')';
}

std::string Usage(const std::string& command, const std::vector<OptionRow>& rows, bool hasVerbs) {
  std::string text = "Usage: " + command + (hasVerbs ? " VERB" : "") + " [OPTIONS]";
  for (const OptionRow& row : rows) {
    if (row.IsPositional()) text += row.required ? ' ' + row.value : " [" + row.value + ']';
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

std::string HelpText(const CLI::App& app, const std::string& command) {
  const std::vector<OptionRow> rows = OptionRows(app);
  const std::vector<const CLI::App*> verbs = ListedVerbs(app);
  std::string text = Usage(command, rows, !verbs.empty()) + '\n' + app.get_description() + ".\n\n";
  for (const OptionRow& row : rows) {
    if (row.IsPositional()) text += Row(HeadOf(row), WordsOf(row));
  }
  if (!verbs.empty()) text += "Verbs:\n";
  for (const CLI::App* verb : verbs) text += Row(verb->get_name(), verb->get_description());
  text += "\nOptions:\n";
  for (const OptionRow& row : rows) {
    if (!row.IsPositional()) text += Row(HeadOf(row), WordsOf(row));
  }
  return text + ExitCodes();
}

}  // namespace tessaret::tool
