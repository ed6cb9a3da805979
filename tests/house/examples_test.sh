#!/usr/bin/env bash
# Builds the examples against an installed copy and lets them walk: over a file made here, over real ones where they are, and over
# what is no file. Needs TESSARET_BINARY_DIR and TESSARET_SOURCE_DIR.
set -euo pipefail

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

fail() {
  printf 'examples test: %s\n' "$*" >&2
  exit 1
}

cmake --install "$TESSARET_BINARY_DIR" --prefix "$scratch/installed" >/dev/null
cmake -G Ninja -S "$TESSARET_SOURCE_DIR/examples" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$scratch/installed" \
  -DCMAKE_C_FLAGS="-std=c11 -Wall -Wextra -Werror" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" \
  >"$scratch/configure.log" 2>&1 || { cat "$scratch/configure.log"; fail "CMake"; }
cmake --build "$scratch/build" >"$scratch/build.log" 2>&1 || { cat "$scratch/build.log"; fail "build"; }

# walk FILE: every example saves the same changed copy, which an independent program reads.
walk() {
  local host
  for host in cpp c; do
    "$scratch/build/walk_$host" "$1" "$scratch/$host.dcm" >"$scratch/$host.text" || fail "walk_$host $1: ends with $?"
  done
  TESSARET_LIBRARY="$(find "$scratch/installed" -name libtessaret.so)" PYTHONPATH="$TESSARET_SOURCE_DIR/bindings/python" \
    /usr/bin/python3 -B "$TESSARET_SOURCE_DIR/examples/python/walk.py" "$1" "$scratch/py.dcm" >"$scratch/py.text" ||
    fail "walk.py $1: ends with $?"
  cmp "$scratch/cpp.dcm" "$scratch/c.dcm" || fail "C++ and C save different copies of $1"
  cmp "$scratch/cpp.dcm" "$scratch/py.dcm" || fail "C++ and Python save different copies of $1"
  dcmdump +P 0010,0010 "$scratch/c.dcm" | grep 'Walked^Through' >/dev/null || fail "dcmdump does not read the new name in the copy of $1"
  dcmdump +P 0008,2112 "$scratch/c.dcm" | grep 'SourceImageSequence' >/dev/null || fail "dcmdump does not read the new item in the copy of $1"
}

# Every line but those of numbers and dates, which each language writes in its own way.
plain() { grep -E '\) (AE|AS|CS|IS|LO|PN|SH|SQ|UI|US) ' "$1"; }

"$TESSARET_BINARY_DIR/bin/tessaret" phantom --kind ct --size 16 --slices 1 "$scratch/series" >/dev/null
made="$(find "$scratch/series" -type f | head -1)"
walk "$made"
grep -q "^(0010,0010) PN Patient's Name: " "$scratch/c.text" || fail "walk_c does not show the name"
diff <(plain "$scratch/cpp.text") <(plain "$scratch/c.text") >&2 || fail "C++ and C show different elements"

real="$TESSARET_SOURCE_DIR/../shared/dicom/encodings/native"
if [ -d "$real" ]; then
  for file in "$real"/CT1_UNC.explicit_*_endian.dcm "$real"/MR_small*.dcm; do walk "$file"; done
else
  echo "examples test: no real files in $real, so none was walked"
fi

# A failure is heard in words.
for host in "$scratch/build/walk_cpp" "$scratch/build/walk_c"; do
  words="$("$host" "$scratch/missing.dcm" "$scratch/out.dcm" 2>&1)" && fail "$host: no failure for a missing file"
  [ "$words" = "$scratch/missing.dcm: No such file or directory" ] || fail "$host says '$words'"
  words="$("$host" "$made" "$scratch/no/such/folder.dcm" 2>&1 >/dev/null)" && fail "$host: no failure for a missing folder"
  [ "$words" = "$scratch/no/such/folder.dcm: No such file or directory" ] || fail "$host says '$words'"
done
echo "examples built, run and compared"
