#include "option_table.h"

#include <algorithm>

#include "known_spellings.h"

namespace tessaret::tool {
namespace {

/// What stands in braces in the parser's name of a type, "TEXT:{lines,text}".
std::vector<std::string> ChoicesIn(const std::string& typeName) {
  const std::size_t begin = typeName.find('{');
  const std::size_t end = typeName.find('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  return CLI::detail::split(typeName.substr(begin + 1, end - begin - 1), ',');
}

std::string ValueOf(const CLI::Option& option, const std::vector<std::string>& choices) {
  if (!option.get_option_text().empty()) return option.get_option_text();
  if (!choices.empty()) return CLI::detail::join(choices, "|");
  const bool isFlag = option.get_items_expected_max() == 0;
  return isFlag ? std::string() : "TEXT";
}

/// Adds what other programs call the option.
void AddKnownSpellings(const std::string& verb, OptionRow& row) {
  const std::vector<std::string> own = row.names;
  for (const KnownSpelling& spelling : kKnownSpellings) {
    if (verb != spelling.verb) continue;
    for (const std::string& name : own) {
      const std::string option = spelling.option;
      if (option == name) row.names.emplace_back(spelling.known);
      if (!option.starts_with(name + '=')) continue;
      row.stands.emplace_back(spelling.known);
      row.description += (row.stands.size() == 1 ? "; " : ", ") + row.stands.back() + " for " +
                         option.substr(name.size() + 1);
    }
  }
}

OptionRow RowOf(const std::string& verb, const CLI::Option& option) {
  OptionRow row;
  for (const std::string& name : option.get_snames()) row.names.push_back('-' + name);
  for (const std::string& name : option.get_lnames()) row.names.push_back("--" + name);
  row.choices = ChoicesIn(option.get_type_name());
  row.value = ValueOf(option, row.choices);
  row.description = option.get_description();
  row.defaultValue = option.get_default_str();
  row.required = option.get_required();
  AddKnownSpellings(verb, row);
  return row;
}

}  // namespace

std::vector<OptionRow> OptionRows(const CLI::App& app) {
  std::vector<OptionRow> rows;
  for (const CLI::Option* option : app.get_options()) {
    rows.push_back(RowOf(app.get_name(), *option));
  }
  std::stable_partition(rows.begin(), rows.end(),
                        [](const OptionRow& row) { return row.IsPositional(); });
  return rows;
}

std::vector<const CLI::App*> ListedVerbs(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* verb) { return !verb->get_group().empty(); });
}

}  // namespace tessaret::tool
