#!/usr/bin/env bash
# Takes the seeds of the codecs' fuzz targets through them under valgrind, which sees what was read before anything was written there, in the
# libraries beneath too. Needs TESSARET_BINARY_DIR and TESSARET_SOURCE_DIR.
set -euo pipefail

command -v valgrind >/dev/null || {
  echo "no valgrind"
  exit 77
}
for program in "$TESSARET_BINARY_DIR"/bin/replay_fuzz_codec_*; do
  name="${program##*/replay_}"
  [ "$name" != fuzz_codec_ini ] || continue
  log="$(mktemp)"
  if ! valgrind --quiet --error-exitcode=9 "$program" "$TESSARET_SOURCE_DIR/fuzz/corpus/$name" >"$log" 2>&1; then
    grep '^==' "$log" | head -30 >&2
    printf 'uninitialised test: a finding in %s\n' "$name" >&2
    rm -f "$log"
    exit 1
  fi
  rm -f "$log"
  printf '%s: clean\n' "$name"
done
