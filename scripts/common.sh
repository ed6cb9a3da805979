# Sourced by ./dev and its subcommands: words, places, builds.
# shellcheck shell=bash

root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
jobs="$(nproc)"
# The distribution's Python, which has the distribution's packages; another may come first in PATH.
python=/usr/bin/python3
export LC_ALL=C.UTF-8 PYTHONDONTWRITEBYTECODE=1

say() { printf '== %s\n' "$*"; }

die() {
  printf 'dev: %s\n' "$*" >&2
  exit 1
}

# git, also in a tree that belongs to somebody else
project_git() { git -c safe.directory='*' -C "$root" "$@"; }

# project_files PATTERN...: files of the project (not of a build) by name pattern, relative to its top.
project_files() {
  (cd "$root" && "$python" scripts/project_files.py "$@")
}

# configure PRESET: makes build/PRESET ready; quiet unless it fails.
configure() {
  local log="$root/build/$1/configure.log"
  mkdir -p "$root/build/$1"
  if ! cmake -S "$root" --preset "$1" >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
}

# build_preset PRESET [TARGET...]
build_preset() {
  local preset="$1"
  shift
  say "building $preset into build/$preset"
  configure "$preset" && cmake --build "$root/build/$preset" --parallel "$jobs" ${1:+--target "$@"}
}

# Under sudo the packages are root's business; the build is that of the person, to whom its files shall belong.
leave_sudo() {
  if [ "$EUID" -eq 0 ] && [ "${SUDO_UID:-0}" -ne 0 ] && sudo -n -u "#$SUDO_UID" test -w "$root"; then
    exec sudo -n -H -u "#$SUDO_UID" env -u SUDO_UID "$root/dev" "$@"
  fi
}
