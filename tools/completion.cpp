#include "completion.h"

namespace tessaret::tool {
namespace {

constexpr const char* kHead =
    "# bash completion for tessaret\n"
    "_tessaret() {\n"
    "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
    "  local verb= words= word options=yes\n"
    "  COMPREPLY=()\n"
    "  # --option=value comes as three words.\n"
    "  if [[ $current == = ]]; then\n"
    "    current=\n"
    "  elif [[ $previous == = ]]; then\n"
    "    previous=${COMP_WORDS[COMP_CWORD-2]}\n"
    "  fi\n"
    "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
    "    [[ $word == -- ]] && options=\n"
    "    [[ -z $verb && $word != -* ]] && verb=$word\n"
    "  done\n";

constexpr const char* kTail =
    "  if [[ -z $verb || -n $options && $current == [-+]* ]]; then\n"
    "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
    "  else\n"
    "    compopt -o filenames\n"
    "    mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n"
    "  fi\n"
    "}\n"
    "complete -F _tessaret tessaret\n";

std::string OptionWords(const OptionRows& rows) {
  std::vector<std::string> words;
  for (const OptionRow& row : rows) {
    words.insert(words.end(), row.names.begin(), row.names.end());
    words.insert(words.end(), row.stands.begin(), row.stands.end());
  }
  return Joined(words, " ");
}

/// Answers for the word behind an option that takes one of few values.
std::string ChoiceCases(const std::string& verb, const OptionRows& rows) {
  std::string cases;
  for (const OptionRow& row : rows) {
    if (row.choices.empty()) continue;
    for (const std::string& name : row.names) {
      cases.append("    ").append(verb).append(":").append(name).append(")\n");
      cases.append("      mapfile -t COMPREPLY < <(compgen -W \"").append(Joined(row.choices, " "));
      cases.append("\" -- \"$current\")\n      return\n      ;;\n");
    }
  }
  return cases;
}

}  // namespace

std::string BashCompletion(const CommandLine& line) {
  std::vector<std::string> firstWords;
  std::string choices;
  std::string options;
  for (const CommandTable& verb : line.ListedVerbs()) {
    firstWords.push_back(verb.name);
    choices += ChoiceCases(verb.name, verb.options);
    options += "    " + verb.name + ") words=\"" + OptionWords(verb.options) + "\" ;;\n";
  }
  const std::string first = Joined(firstWords, " ") + ' ' + OptionWords(line.Tool().options);
  return kHead + std::string("  case $verb:$previous in\n") + choices +
         "  esac\n  case $verb in\n    '') words=\"" + first + "\" ;;\n" + options + "  esac\n" +
         kTail;
}

}  // namespace tessaret::tool
