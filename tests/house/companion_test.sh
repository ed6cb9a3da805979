#!/usr/bin/env bash
# Installs to an empty prefix and compresses and decodes a self-made image with what is installed; then without the codec library, which
# is removed: native files load and are written as before, and compressed ones say what is missing. Needs TESSARET_BINARY_DIR.
set -euo pipefail

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

fail() {
  printf 'companion test: %s\n' "$*" >&2
  exit 1
}

cmake --install "$TESSARET_BINARY_DIR" --prefix "$scratch/prefix" >/dev/null
tool="$scratch/prefix/bin/tessaret"
codecs="$(find "$scratch/prefix" -name DcmCodec.dll)"
[ "$(dirname "$codecs")" = "$(dirname "$(find "$scratch/prefix" -name libtessaret.so)")" ] ||
  fail "the codec library does not lie beside the library"
others="$(nm -D --defined-only "$codecs" | awk '$2 != "A" && $3 !~ /^DcmGetCodecCount$|^DcmGetCodecProps$|^DcmGetCodec$|^DcmFreeCodec$/')"
[ -z "$others" ] || fail "more than its entry points is exported: $others"
grep -q 'NEEDED.*libtessaret\.so\.0' < <(readelf -d "$codecs") || fail "it does not stand on the library"
grep -q 'NEEDED.*DcmCodec' < <(readelf -d "$(find "$scratch/prefix" -name libtessaret.so)") && fail "the library links it"

cd "$scratch"
"$tool" phantom --kind ct --size 64 --slices 1 series >/dev/null 2>&1
native="$(find series -type f)"
"$tool" transcode --to jpeg-ls "$native" compressed.dcm || fail "it is not compressed"
"$tool" transcode --to explicit compressed.dcm decoded.dcm || fail "it is not decoded"
cmp "$native" decoded.dcm || fail "what was decoded is not what was compressed"

rm "$codecs"
"$tool" check "$native" >/dev/null || fail "a native file does not read without the codec library"
"$tool" transcode --to big "$native" big.dcm || fail "a native file is not written without the codec library"
"$tool" dump compressed.dcm >/dev/null || fail "a compressed file does not read without the codec library"
words="$("$tool" transcode --to explicit compressed.dcm none.dcm 2>&1)" && fail "a compressed file was decoded"
[ "$words" = "tessaret: compressed.dcm: Unknown transfer syntax [1.2.840.10008.1.2.4.80]" ] || fail "says: $words"
words="$("$tool" transcode --to jpeg-ls "$native" none.dcm 2>&1)" && fail "a native file was compressed"
[ "$words" = "tessaret: $native: not to be had in JPEGLSLossless: Unknown transfer syntax [1.2.840.10008.1.2.4.80]" ] ||
  fail "says: $words"
[ ! -e none.dcm ] || fail "something was written"
echo "with and without the codec library"
