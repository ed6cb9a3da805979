# Sourced by demo.sh: an archive of others (Orthanc), with a folder of its own and free ports of this machine, until stop_archive or the
# end of the script.
# shellcheck shell=bash

free_port() {
  /usr/bin/python3 -c 'import socket; listener = socket.create_server(("127.0.0.1", 0)); print(listener.getsockname()[1])'
}

archive_process=

stop_archive() {
  [ -n "$archive_process" ] || return 0
  kill "$archive_process" 2>/dev/null || true
  wait "$archive_process" 2>/dev/null || true
  archive_process=
}

# start_archive FOLDER: leaves its DICOM port in archive_port, and that of its own interface in archive_http.
start_archive() {
  local program
  program="$(PATH="$PATH:/usr/sbin" command -v Orthanc)" || die "demo: the archive Orthanc is not installed"
  mkdir -p "$1"
  archive_port="$(free_port)"
  archive_http="$(free_port)"
  cat >"$1/archive.json" <<EOF
{"Name": "ARCHIVE", "DicomAet": "ARCHIVE", "DicomCheckCalledAet": true, "DicomPort": $archive_port, "HttpPort": $archive_http,
 "RemoteAccessAllowed": false, "AuthenticationEnabled": false, "DicomAlwaysAllowEcho": true, "DicomAlwaysAllowStore": true,
 "StorageDirectory": "$1/storage", "IndexDirectory": "$1/storage", "Plugins": []}
EOF
  trap stop_archive EXIT
  "$program" "$1/archive.json" >"$1/words" 2>&1 &
  archive_process=$!
  for _ in $(seq 300); do
    if ask_archive system >/dev/null 2>&1; then return 0; fi
    kill -0 "$archive_process" 2>/dev/null || die "demo: the archive has ended, its words are in $1/words"
    sleep 0.1
  done
  die "demo: the archive does not answer"
}

# What the archive's own interface says, as JSON.
ask_archive() {
  /usr/bin/python3 -c 'import sys, urllib.request
print(urllib.request.urlopen(sys.argv[1], timeout=30).read().decode())' "http://127.0.0.1:$archive_http/$1"
}

list_archive() {
  printf '\n$ %s\n' "http://127.0.0.1:$archive_http/series, as the archive tells it"
  ask_archive 'series?expand' | /usr/bin/python3 -c 'import json, sys
for series in json.load(sys.stdin):
    tags = series["MainDicomTags"]
    print("{:>4} instances  {:<4} {}".format(len(series["Instances"]), tags.get("Modality", ""), tags.get("SeriesInstanceUID", "")))'
}

# expect_in_archive TOOL FILE|FOLDER...: what the archive lists has to be the instances of these files, each once and none else.
expect_in_archive() {
  local tool="$1" sent listed
  shift
  sent="$(find "$@" -type f -exec "$tool" get {} SOPInstanceUID \; | sort -u)"
  listed="$(ask_archive 'instances?expand' | /usr/bin/python3 -c 'import json, sys
for instance in json.load(sys.stdin): print(instance["MainDicomTags"]["SOPInstanceUID"])' | sort)"
  [ "$sent" = "$listed" ] || die "demo: the archive lists other instances than those that were sent"
  say "the archive lists the $(wc -l <<<"$sent") instances that were sent, and no others"
}
