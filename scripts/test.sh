# ./dev test [--quick]: everything that a change must pass. Ends in the closing lines of ctest over the release build.
# shellcheck shell=bash
set -euo pipefail
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

fuzz_runs=10000
report="$root/build/test-steps.txt"

# One more at a time than there are processors: there is always one that waits for a clock or a peer.
run_ctest() {
  ctest --test-dir "$root/build/$1" --parallel $((jobs + 1)) --output-on-failure --no-tests=error "${@:2}"
}

# Everything is compiled, so that Clang's warnings are heard too. What independent programs agree with and what measures
# say does not depend on who watches; what the library does there it does in the other tests as well.
test_instrumented() { build_preset asan && run_ctest asan --label-exclude '^(interop|bench)$'; }

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
# behaviour comes out otherwise there. Codecs are left out, and with them the images that only they can show.
test_linked_as_one() {
  build_preset lto fault_file_test fault_file_threads_test corpus_test || return
  GTEST_FILTER='-CorpusObjects.HaveTheNativePixelDataOfTheManifest*' run_ctest lto -L '^(fault|corpus)$' -E '^fault_small_limits_test$'
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
  step "Clang, address and undefined sanitizers" test_instrumented
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
