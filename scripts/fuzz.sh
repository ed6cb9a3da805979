# ./dev fuzz [SECONDS | --runs N [--learn]] [--only NAME] [--longest BYTES] [--reduce]
# Findings stay in build/fuzz/findings. What a run learned is kept in build/fuzz/learned for the next; with --runs only
# under --learn, because without it the same number of runs has to try the same inputs every time.
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

seconds=60
runs=
only=
learn=
reduce=
# Bytes of the longest input that is tried: runs by the million find more in many short inputs than in few long ones.
longest_input=2048
while [ $# -gt 0 ]; do
  case "$1" in
    --runs) runs="$2"; shift ;;
    --only) only="$2"; shift ;;
    --longest) longest_input="$2"; shift ;;
    --learn) learn=yes ;;
    --reduce) reduce=yes ;;
    [0-9]*) seconds="$1" ;;
    *) die "fuzz: no option '$1'" ;;
  esac
  shift
done

# A run is short and frees all that it took, so few freed blocks have to be watched, and a finding is replayed with the
# stacks of its allocations: run the target on the file. It makes the runs half as fast again. The last option is the one
# that tests have too.
export ASAN_OPTIONS="allocator_may_return_null=1:quarantine_size_mb=1:malloc_context_size=1:intercept_tls_get_addr=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"

run_target() {
  local name="$1" seeds="$2" dictionary="$3" learned="$root/build/fuzz/learned/$1"
  local options=(-print_final_stats=1 -timeout=25 -rss_limit_mb=2560 "-max_len=$longest_input"
    "-artifact_prefix=$root/build/fuzz/findings/$name-")
  [ -z "$dictionary" ] || options+=("-dict=$dictionary")
  [ -z "$runs" ] || options+=("-runs=$runs")
  if [ -n "$runs" ] && [ -z "$learn" ]; then
    # The same inputs in the same order every time: nothing learned before, a fixed seed.
    learned="$(mktemp -d)"
    options+=(-seed=1)
  fi
  [ -n "$runs" ] || options+=("-max_total_time=$seconds")
  mkdir -p "$learned" "$seeds"
  local result=0
  "$root/build/asan/bin/$name" "${options[@]}" "$learned" "$seeds" >"$root/build/fuzz/logs/$name.log" 2>&1 || result=$?
  [ "$learned" = "$root/build/fuzz/learned/$name" ] || rm -rf "$learned"
  if [ $result -ne 0 ]; then
    tail -60 "$root/build/fuzz/logs/$name.log" >&2
    printf 'dev: finding in %s, see build/fuzz/findings and build/fuzz/logs/%s.log\n' "$name" "$name" >&2
  fi
  return $result
}

reduce_target() {
  local name="$1" seeds="$2" reduced
  reduced="$(mktemp -d)"
  # What never ran with --learn has learned nothing.
  mkdir -p "$root/build/fuzz/learned/$name"
  "$root/build/asan/bin/$name" -merge=1 -timeout=25 "-max_len=$longest_input" \
    "$reduced" "$seeds" "$root/build/fuzz/learned/$name" >"$root/build/fuzz/logs/$name.merge.log" 2>&1
  [ -n "$(ls "$reduced")" ] || die "$name: nothing is left of the seeds"
  local before
  before="$(find "$seeds" -type f | wc -l)"
  # A seed with a name was made by hand, for a reason that the merge does not know. It stays, and is not kept twice: what was
  # learned is called by its hash.
  find "$seeds" -type f -regextype posix-extended -regex '.*/[0-9a-f]{40}' -delete
  cp "$reduced"/* "$seeds"
  local made
  while read -r made; do
    rm -f "$seeds/$(sha1sum "$made" | cut -d' ' -f1)"
  done < <(find "$seeds" -type f -not -regextype posix-extended -not -regex '.*/[0-9a-f]{40}')
  say "$name: $before seeds become $(find "$seeds" -type f | wc -l)"
  rm -rf "$reduced"
}

build_preset asan fuzzers
mkdir -p "$root/build/fuzz"
cd "$root/build/fuzz"
mkdir -p findings logs learned
targets=()
while IFS=$'\t' read -r name seeds dictionary; do
  [ -n "$name" ] && { [ -z "$only" ] || [ "$only" = "$name" ]; } && targets+=("$name|$seeds|$dictionary")
done <"$root/build/asan/fuzzers.tsv"
[ ${#targets[@]} -gt 0 ] || die "no fuzz target${only:+ named $only}"

if [ -n "$reduce" ]; then
  for target in "${targets[@]}"; do
    IFS='|' read -r name seeds dictionary <<<"$target"
    reduce_target "$name" "$seeds"
  done
  exit 0
fi

# As many targets at a time as there are processors.
failed=0
waiting=0
for target in "${targets[@]}"; do
  IFS='|' read -r name seeds dictionary <<<"$target"
  say "fuzzing $name${runs:+, $runs runs}"
  run_target "$name" "$seeds" "$dictionary" &
  waiting=$((waiting + 1))
  if [ $waiting -ge "$jobs" ]; then
    wait -n || failed=1
    waiting=$((waiting - 1))
  fi
done
while [ $waiting -gt 0 ]; do
  wait -n || failed=1
  waiting=$((waiting - 1))
done

printf '%-32s %10s %8s %8s %8s\n' target runs seconds edges inputs
for target in "${targets[@]}"; do
  name="${target%%|*}"
  awk -v name="$name" '
    / cov: / { for (i = 1; i < NF; ++i) { if ($i == "cov:") edges = $(i + 1); if ($i == "corp:") inputs = $(i + 1) } }
    /^Done / { runs = $2; seconds = $5 }
    END { printf "%-32s %10s %8s %8s %8s\n", name, runs ? runs : "finding", seconds, edges, inputs }' "logs/$name.log"
done
exit $failed
