#include "option_table.h"

#include <algorithm>

#include "known_spellings.h"

namespace tessaret::tool {
namespace {

void AddKnownSpellingsTo(OptionRow& row, const std::string& verb) {
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

}  // namespace

std::string OptionRow::ShownValue() const {
  if (!value.empty()) return value;
  return IsPositional() ? positional : Joined(choices, "|");
}

std::string OptionRow::ShownDefault() const {
  if (!showsDefault) return {};
  if (const auto* text = std::get_if<std::string*>(&target)) return **text;
  if (const auto* number = std::get_if<int*>(&target)) return std::to_string(**number);
  return {};
}

std::string Joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) {
    if (&word != &words.front()) text += between;
    text += word;
  }
  return text;
}

OptionRows PositionalsFirst(OptionRows rows) {
  std::stable_partition(rows.begin(), rows.end(),
                        [](const OptionRow& row) { return row.IsPositional(); });
  return rows;
}

void AddKnownSpellings(const std::string& verb, OptionRows& rows) {
  for (OptionRow& row : rows) AddKnownSpellingsTo(row, verb);
}

}  // namespace tessaret::tool
