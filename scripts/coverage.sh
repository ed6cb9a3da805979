# ./dev coverage [--enforce]: which lines and branches of src/ the tests reach. The table goes to standard output, pages
# with every line to build/coverage/html. With --enforce too few in base or core is a failure.
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

build_preset coverage
cd "$root/build/coverage"
# Counts add up over runs; those of the last one are of another source.
find . -name '*.gcda' -delete
# Those of the tool compare all that it writes to standard error, where counters that a limit on file size stops complain.
say "running the tests, without those of the tool"
ctest --label-exclude '^tools$' --parallel "$jobs" --output-on-failure --no-tests=error

# GCC counts a branch for every call that might throw, which no test can take and no reader can see; what is left are
# the branches that somebody wrote. Code behind them (landing pads, closing braces) is not counted for the same reason.
say "counting"
mkdir -p html
gcovr --root "$root" --object-directory . --filter "$root/src/" --exclude-throw-branches \
  --exclude-unreachable-branches -j "$jobs" --json-summary summary.json --html-details html/index.html
"$python" "$root/scripts/coverage_table.py" summary.json "$@"
say "every line: build/coverage/html/index.html"
