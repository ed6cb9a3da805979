# ./dev bench [--only REGEX] [--short] [--peers]
# Measures the project's own part over input that it makes itself: build/release/bin/tessaret-bench, job after job.
# Medians on a noisy machine say little alone; docs/performance.md tells how ratios to other programs are taken.
# With --peers three rounds, in each of which every job is done by all programs in turn; only jobs that a peer does too.
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

only=.
short=
peers=
while [ $# -gt 0 ]; do
  case "$1" in
    --only) only="$2"; shift ;;
    --short) short=yes; export BENCH_REPS=1 BENCH_BUDGET=0.2 ;;
    --peers) peers=yes ;;
    *) die "bench: no option '$1'" ;;
  esac
  shift
done

build_preset release tessaret_bench tessaret_data
folder="$root/build/release/bin"
programs=("$folder/tessaret-bench")
rounds=1
if [ -n "$peers" ]; then
  cmake -S "$root" --preset release -DTESSARET_BENCH_PEERS=ON >/dev/null
  cmake --build "$root/build/release" --parallel "$jobs" --target bench_dcmtk bench_gdcm bench_libraries
  programs+=("$folder/bench_dcmtk" "$folder/bench_gdcm" "$folder/bench_libraries")
  rounds="${short:+1}"
  rounds="${rounds:-3}"
fi
input="$root/build/bench${short:+-short}"
scratch="$(mktemp -d)"
server=
trap 'rm -rf "$scratch"; [ -z "$server" ] || kill "$server"' EXIT

say "making the input in $input"
"${programs[0]}" make "$input" ${short:+--short}

# Names of the jobs; with peers only of those that two programs do.
wanted_jobs() {
  if [ -z "$peers" ]; then
    "${programs[0]}" list
  else
    for program in "${programs[@]}"; do "$program" list; done | sort | uniq -d
  fi | grep -E "$only"
}

# A node for the jobs of the network, by the same program.
port="$("$python" -c 'import socket; print(socket.create_server(("127.0.0.1", 0)).getsockname()[1])')"
"${programs[0]}" scp "$port" null "$scratch" >/dev/null 2>&1 &
server=$!

measure() {
  local job program status
  for ((round = 1; round <= rounds; ++round)); do
    while read -r job; do
      for program in "${programs[@]}"; do
        status=0
        case "$job" in
          net.*) "$program" "$job" "$input" "$scratch" "$port" </dev/null 2>/dev/null || status=$? ;;
          *) "$program" "$job" "$input" "$scratch" </dev/null || status=$? ;;
        esac
        [ $status -eq 0 ] || [ $status -eq 77 ] || die "bench: $job failed ($status)"
      done
    done < <(wanted_jobs)
  done
}

say "measuring (median of the samples)"
measure | "$python" "$root/scripts/bench_table.py" ${peers:+--peers}
