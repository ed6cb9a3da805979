# ./dev check [--changed]: rules of the house that no compiler holds. Says each break; fails when there is one.
# With --changed clang-tidy reads only files that differ from the last commit.
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

changed_only=
[ "${1:-}" = --changed ] && changed_only=yes
cd "$root"

check_format() {
  project_files '*.h' '*.hpp' '*.c' '*.cpp' |
    xargs -d '\n' -r -n 20 -P "$jobs" clang-format --dry-run -Werror
}

# Every public header alone in an empty file: as C++20 with both compilers, the plain ones as C11 too; every header of
# src/ alone as C++20.
check_headers() {
  local flags=(-fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Werror -Iinclude -Isrc)
  local header
  {
    while read -r header; do
      printf '%s\n' "g++ -std=c++20 -x c++ -include $header /dev/null" \
        "clang++ -std=c++20 -x c++ -include $header /dev/null"
      if [[ $header == *.h ]]; then
        printf '%s\n' "gcc -std=c11 -x c -include $header /dev/null" "clang -std=c11 -x c -include $header /dev/null"
      fi
    done < <(project_files '*.h' '*.hpp' | grep '^include/')
    while read -r header; do
      printf '%s\n' "clang++ -std=c++20 -x c++ -include $header /dev/null"
    done < <(project_files '*.h' '*.hpp' | grep '^src/')
  } | FLAGS="${flags[*]}" xargs -d '\n' -P "$jobs" -n 1 bash -c '$0 $FLAGS || { echo "not alone: $0" >&2; exit 1; }'
}

# Sources of the library and of the programs; tests are compiled with all warnings by two compilers and run, and tables that a script
# made are all alike.
tidy_files() {
  local name
  for name in $(project_files '*.cpp' | grep -E '^(src|codecs|tools|bench|fuzz)/' | grep -v '^src/facade/tables/'); do
    if [ -z "$changed_only" ] || ! project_git diff --quiet HEAD -- "$name" 2>/dev/null ||
      [ -z "$(project_git ls-files -- "$name" 2>/dev/null)" ]; then
      printf '%s\n' "$name"
    fi
  done
}

check_tidy() {
  configure clang || return
  tidy_files | xargs -d '\n' -r "$python" -B scripts/tidy.py build/clang
}

check_dictionaries() { "$python" -B data/make-dictionaries --check; }

check_tables() {
  "$python" -B scripts/make_interface_tables.py --check && "$python" -B scripts/make_interface_reference.py --check
}

check_stubs() { "$python" -B scripts/make_python_stubs.py --check; }

check_shell() {
  local scripts
  mapfile -t scripts < <(project_files '*.sh'; printf '%s\n' dev .ci/run)
  local script
  for script in "${scripts[@]}"; do
    bash -n "$script" || return
  done
  shellcheck --severity=warning --external-sources --source-path=SCRIPTDIR --shell=bash "${scripts[@]}"
}

failed=()
rule() {
  local name="$1" begin=$SECONDS
  shift
  say "check: $name"
  "$@" || failed+=("$name")
  [ $((SECONDS - begin)) -lt 10 ] || say "check: $name took $((SECONDS - begin)) s"
}

rule "order of the floors" "$python" scripts/check_layers.py
rule "every file in a build list" "$python" scripts/check_lists.py
rule "words" "$python" scripts/check_words.py
rule "shell scripts" check_shell
rule "dictionaries agree with their tables" check_dictionaries
rule "tables of the interfaces agree with their headers" check_tables
rule "stubs of the Python package agree with the headers" check_stubs
rule "format" check_format
rule "headers compile alone" check_headers
rule "tidy" check_tidy

[ ${#failed[@]} -eq 0 ] || die "check failed: $(printf '%s; ' "${failed[@]}")"
say "check: all well"
