# ./dev format
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

say "formatting all C and C++ files"
cd "$root"
project_files '*.h' '*.hpp' '*.c' '*.cpp' | xargs -d '\n' -r clang-format -i
