# ./dev build [PRESET...]
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -gt 0 ] || set -- release
for preset in "$@"; do
  if [ "$preset" = fuzz ]; then
    build_preset fuzz fuzzers
  else
    build_preset "$preset"
  fi
done
say "done: programs in build/$preset/bin, libraries in build/$preset/lib"
