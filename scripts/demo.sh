# ./dev demo [FILE]: a DICOM object read, shown, encoded anew, read back by a program and sent to an archive that have nothing to do with
# this project (dcmdump of DCMTK).
# shellcheck shell=bash
set -euo pipefail
here="$PWD"
# shellcheck source=common.sh
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"
# shellcheck source=demo_archive.sh
source "$(dirname "${BASH_SOURCE[0]}")/demo_archive.sh"

build_preset release tessaret tessaret_tool tessaret_data tessaret_codec_library
tool="$root/build/release/bin/tessaret"
place="$root/build/demo"
rm -rf "$place"
mkdir -p "$place"

# show COMMAND...: says the command as a person would type it, then runs it.
show() {
  printf '\n$ %s\n' "$(printf '%s ' "$@" | sed "s#$tool#tessaret#; s#$place/##g")"
  "$@"
}

# The first lines of a long text; the command before the pipe may write on into nothing.
head_of() { sed -n "1,$1p; $(($1 + 1))s/.*/  .../p"; }

# compare FIRST SECOND: what the independent program reads in both, apart from the meta header, must be one and the same.
compare() {
  local first second
  first="$(dcmdump +L "$1" | sed -n '/^# Dicom-Data-Set/,$p' | grep '^ *(' | sed 's/ *#.*//')"
  second="$(dcmdump +L "$2" | sed -n '/^# Dicom-Data-Set/,$p' | grep '^ *(' | sed 's/ *#.*//')"
  if [ "$first" != "$second" ]; then
    diff <(printf '%s\n' "$first") <(printf '%s\n' "$second") | head -20 >&2
    die "demo: dcmdump reads another content"
  fi
  printf 'dcmdump reads the same %d elements in both.\n' "$(printf '%s\n' "$first" | wc -l)"
}

if [ $# -gt 0 ]; then
  file="$(cd "$here" && realpath -e -- "$1")" || die "demo: $1 is not there"
  say "what is in it"
  show "$tool" dump "$file" || say "not all of it: the words above say why"
  say "does all of it read?"
  show "$tool" check "$file" || say "not all of it: the words above say why"
  say "its pixels, made native if they are compressed"
  show "$tool" transcode --to explicit "$file" "$place/native.dcm" || say "not to be had: the words above say why"
  say "a copy, written anew"
  if show "$tool" convert "$file" "$place/copy.dcm"; then
    say "read back by an independent program"
    show dcmdump "$place/copy.dcm" | head_of 40 || say "dcmdump does not read all of it: the words above say why"
    say "the copy is build/demo/copy.dcm; $1 is as it was"
  else
    say "no copy: the words above say why; $1 is as it was"
  fi
  exit 0
fi

say "a series of five slices, made here"
show "$tool" phantom --kind ct --size 128 --slices 5 "$place/series"
first="$(find "$place/series" -type f | sort | head -1)"

say "what one of them holds"
show "$tool" dump "$first" | head_of 30

say "the same object in the other encoding, and back again"
show "$tool" convert --syntax implicit "$first" "$place/implicit.dcm"
show "$tool" convert --syntax explicit "$place/implicit.dcm" "$place/explicit.dcm"

say "what an independent program reads in the result"
show dcmdump +P 0008,0016 +P 0008,0060 +P 0010,0010 +P 0020,0013 +P 0028,0010 +P 0028,0011 "$place/implicit.dcm"
compare "$first" "$place/implicit.dcm"
compare "$first" "$place/explicit.dcm"

say "the pixels compressed without loss, and decoded again by an independent program and by us"
show "$tool" transcode --to jpeg-lossless "$first" "$place/compressed.dcm"
show "$tool" dump "$place/compressed.dcm" | tail -3
show dcmdjpeg --quiet "$place/compressed.dcm" "$place/by-dcmtk.dcm"
show "$tool" transcode --to explicit "$place/compressed.dcm" "$place/by-us.dcm"
show ls -l "$first" "$place/compressed.dcm" "$place/by-us.dcm" | sed "s#$place/##g"
compare "$place/by-dcmtk.dcm" "$place/by-us.dcm"
compare "$first" "$place/by-us.dcm"

say "some of its elements, one of them changed"
show "$tool" get "$first" PatientName PixelSpacing 0028,0010
show "$tool" set "$first" "$place/renamed.dcm" PatientName=Doe^Jane
show dcmdump +P 0010,0010 "$place/renamed.dcm"

say "the same library from Python: a walk through the file and a changed copy"
export PYTHONPATH="$root/bindings/python" TESSARET_LIBRARY="$root/build/release/lib/libtessaret.so"
show /usr/bin/python3 -B "$root/examples/python/walk.py" "$first" "$place/walked.dcm" | head_of 12
show dcmdump +P 0010,0010 +P 0008,2112 "$place/walked.dcm"

say "the series and some real files, sent to an archive of others that is started here; it lists what came"
start_archive "$place/archive"
show "$tool" echo "ARCHIVE@127.0.0.1:$archive_port"
show "$tool" send "ARCHIVE@127.0.0.1:$archive_port" "$place/series"
real="$(cd "$root/.." && pwd)/shared/dicom/series/ct-tilt-uneven"
if [ -d "$real" ]; then
  show "$tool" send "ARCHIVE@127.0.0.1:$archive_port" "$real"
else
  say "no real files in $real: the archive gets those made here only"
  real=
fi
show "$tool" send "ARCHIVE@127.0.0.1:$archive_port" "$place/compressed.dcm"
list_archive
expect_in_archive "$tool" "$place/series" ${real:+"$real"} "$place/compressed.dcm"
stop_archive

say "does all of the series read?"
show "$tool" check "$place/series"

say "the files are in build/demo; try: build/release/bin/tessaret --help, or ./dev demo with a file of yours"
