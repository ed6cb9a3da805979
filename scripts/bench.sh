# ./dev bench [--only REGEX] [--short]
# Measures the project's own part over input that it makes itself: build/release/bin/tessaret-bench, job after job.
# Medians on a noisy machine say little alone; docs/performance.md tells how ratios to other programs are taken.
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

only=.
short=
while [ $# -gt 0 ]; do
  case "$1" in
    --only) only="$2"; shift ;;
    --short) short=yes; export BENCH_REPS=1 BENCH_BUDGET=0.2 ;;
    *) die "bench: no option '$1'" ;;
  esac
  shift
done

build_preset release tessaret_bench tessaret_data
program="$root/build/release/bin/tessaret-bench"
input="$root/build/bench${short:+-short}"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

say "making the input in $input"
"$program" make "$input" ${short:+--short}
say "measuring (median of the samples)"
"$program" list | grep -E "$only" | while read -r job; do
  "$program" "$job" "$input" "$scratch" || { status=$?; [ $status -eq 77 ] || die "bench: $job failed ($status)"; }
done | "$python" "$root/scripts/bench_table.py"
