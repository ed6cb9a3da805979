#!/usr/bin/env bash
# Installs to an empty prefix, builds two codec libraries against what is installed, one in C and one in C++, and has a host in C
# turn an image into their syntaxes and back. The argument is the source of the host, beside this. Needs TESSARET_BINARY_DIR and
# TESSARET_SOURCE_DIR.
set -euo pipefail

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

fail() {
  printf 'codec install test: %s\n' "$*" >&2
  exit 1
}

# The syntaxes of the two codecs of the tests. For two frames the one in C makes an offset table and four fragments, the other
# one a table and two.
c_syntax=1.2.999.2
cpp_syntax=1.2.999.1

prefix="$scratch/prefix"
cmake --install "$TESSARET_BINARY_DIR" --prefix "$prefix" >/dev/null
libdir="$(dirname "$(find "$prefix" -name libtessaret.so)")"
export LD_LIBRARY_PATH="$libdir"
# The one that is installed along would be found first.
rm -f "$libdir/DcmCodec.dll"
export PKG_CONFIG_PATH="$libdir/pkgconfig"
read -r -a flags <<<"$(pkg-config --cflags --libs tessaret)"
warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Werror)

codecs="$TESSARET_SOURCE_DIR/tests/core/codecs"
cc -std=c11 "${warnings[@]}" -shared -fPIC "$codecs/toy_codec_c.c" "${flags[@]}" -Wl,-z,defs -o "$scratch/c.codec"
c++ -std=c++20 "${warnings[@]}" -shared -fPIC "$codecs/toy_codec.cpp" "${flags[@]}" -Wl,-z,defs -o "$scratch/cpp.codec"
mkdir "$scratch/bin" "$scratch/elsewhere"
cc -std=c11 "${warnings[@]}" "$(dirname "${BASH_SOURCE[0]}")/$1" "${flags[@]}" -o "$scratch/bin/host"
cd "$scratch/elsewhere"

# host WORDS SYNTAX ITEMS [gone]: the host runs and says this on standard error, but for the offsets of frames.
host() {
  local words
  words="$("$program" "${@:2}" 2>&1 | sed '/ -> /d')" || true
  [ "$words" = "$1" ] || fail "$2: says '$words' instead of '$1'"
}

program="$scratch/bin/host"
host "$c_syntax: " "$c_syntax" 5

# Beside the library.
cp "$scratch/c.codec" "$libdir/DcmCodec.dll"
host "" "$c_syntax" 5
host "$cpp_syntax: " "$cpp_syntax" 3
rm "$libdir/DcmCodec.dll"

# Beside the data files.
cp "$scratch/c.codec" "$prefix/share/tessaret/DcmCodec.dll"
host "" "$c_syntax" 5

# A second one, which a list with Windows' ends of lines beside the program names.
cp "$scratch/cpp.codec" "$libdir/second.codec"
printf 'missing.codec\r\nsecond.codec\r\n' >"$scratch/bin/DcmCodecMgr.ini"
host "" "$c_syntax" 5
host "" "$cpp_syntax" 3

# By its path; a list in the working directory names nothing.
printf '%s\n' "$libdir/second.codec" >"$scratch/elsewhere/DcmCodecMgr.ini"
rm "$scratch/bin/DcmCodecMgr.ini"
host "$cpp_syntax: " "$cpp_syntax" 3
mv "$scratch/elsewhere/DcmCodecMgr.ini" "$scratch/bin/DcmCodecMgr.ini"
host "" "$cpp_syntax" 3

# Programs are replaced while they run: the list is still beside where this one was.
cp "$scratch/bin/host" "$scratch/bin/deleted"
program="$scratch/bin/deleted"
host "" "$cpp_syntax" 3 gone
[ ! -e "$program" ] || fail "the program is still there"
echo "codecs in C and C++, built against what is installed"
