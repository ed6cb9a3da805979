# ./dev test [--quick]: everything that a change must pass. Ends in the closing lines of ctest over the release build.
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

fuzz_runs=20000
report="$root/build/test-steps.txt"

run_ctest() {
  ctest --test-dir "$root/build/$1" --parallel "$jobs" --output-on-failure --no-tests=error "${@:2}"
}

# Programs of a preset that has to compile everything, and all tests but those that look at the installed copy, which
# is one and the same for all compilers.
test_instrumented() { build_preset "$1" && run_ctest "$1" "${@:2}"; }

# Only tests that start threads have something to show here, so only they are built.
test_threads() {
  build_preset tsan threads_tests || return
  if grep -q '^Total Tests: 0' < <(ctest --test-dir "$root/build/tsan" -N -L '^threads$'); then
    say "no test has the label threads"
    return
  fi
  run_ctest tsan -L '^threads$'
}

# Real and damaged files once more, through code that the linker has optimised as a whole: what rests on undefined
# behaviour comes out otherwise there.
test_linked_as_one() {
  build_preset lto fault_file_test fault_file_threads_test corpus_test || return
  run_ctest lto -L '^(fault|corpus)$' -E '^fault_small_limits_test$'
}

failed=()
# step NAME COMMAND...: runs one step, keeps its time, goes on after a failure so that one run shows all of them.
step() {
  local name="$1" begin=$SECONDS result=ok
  shift
  say "step: $name"
  "$@" </dev/null || { result=FAILED; failed+=("$name"); }
  printf '%-40s %5d s  %s\n' "$name" $((SECONDS - begin)) "$result" | tee -a "$report"
}

mkdir -p "$root/build"
: >"$report"
step "release build (GCC)" build_preset release
[ ${#failed[@]} -eq 0 ] || die "failed: ${failed[*]}"

if [ "${1:-}" != --quick ]; then
  # Clang compiles everything here, so that its warnings are heard too.
  step "Clang, address and undefined sanitizers" test_instrumented asan
  step "thread sanitizer" test_threads
  step "link-time optimisation" test_linked_as_one
  step "check" bash "$root/scripts/check.sh"
  step "fuzz targets, $fuzz_runs runs each" bash "$root/scripts/fuzz.sh" --runs $fuzz_runs
fi

say "steps so far"
cat "$report"
say "step: release tests"
run_ctest release || failed+=("release tests")
if [ ${#failed[@]} -gt 0 ]; then
  printf 'dev: failed step: %s\n' "${failed[@]}" >&2
  exit 1
fi
