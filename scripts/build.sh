# ./dev build [PRESET...]
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

[ $# -gt 0 ] || set -- release
for preset in "$@"; do
  build_preset "$preset"
done
say "done: programs in build/$preset/bin, libraries in build/$preset/lib"
