# Sourced by ./dev: which Debian packages a command needs, and their installation.
# shellcheck shell=bash

build_packages=(g++ cmake ninja-build ccache pkg-config python3 libcli11-dev libgtest-dev libgmock-dev
  libjpeg62-turbo-dev libcharls-dev libopenjp2-7-dev)
clang_packages=(clang llvm libclang-rt-14-dev)
peer_packages=(dcmtk dicom3tools python3-pydicom man-db mandoc libgdcm-tools libjpeg-tools libopenjp2-tools
  orthanc valgrind iproute2)
python_packages=(mypy python3-numpy python3-pip python3-venv)
check_packages=(git clang-format clang-tidy shellcheck)

packages_for() {
  case "$1" in
    build | bench) printf '%s\n' "${build_packages[@]}" "${clang_packages[@]}" ;;
    bench_peers) printf '%s\n' libdcmtk-dev libgdcm-dev ;;
    demo) printf '%s\n' "${build_packages[@]}" dcmtk orthanc ;;
    fuzz) printf '%s\n' "${build_packages[@]}" "${clang_packages[@]}" ;;
    coverage) printf '%s\n' "${build_packages[@]}" "${peer_packages[@]}" "${python_packages[@]}" gcovr ;;
    check) printf '%s\n' "${build_packages[@]}" "${clang_packages[@]}" "${check_packages[@]}" ;;
    format) printf '%s\n' python3 clang-format ;;
    test)
      printf '%s\n' "${build_packages[@]}" "${clang_packages[@]}" "${peer_packages[@]}" "${python_packages[@]}" \
        "${check_packages[@]}"
      ;;
  esac
}

as_root() {
  if [ "$EUID" -eq 0 ]; then
    "$@"
  else
    sudo -n "$@"
  fi
}

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# Installs what is missing for a command; touches nothing when nothing is.
install_packages_for() {
  local missing=() package
  if ! command -v dpkg-query >/dev/null; then
    say "not a Debian system: taking it that these are there: $(packages_for "$1" | tr '\n' ' ')"
    return
  fi
  for package in $(packages_for "$1"); do
    is_installed "$package" || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  say "installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  if ! { as_root apt-get update -q </dev/null &&
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}" </dev/null; }; then
    die "these packages are needed and could not be installed: ${missing[*]}"
  fi
  # Tests start their own archive; that of the system is not to stay because of them.
  if printf '%s\n' "${missing[@]}" | grep -qx orthanc; then stop_service orthanc; fi
}

# Ends a service that a package has just started, and has it stay away.
stop_service() {
  if [ -d /run/systemd/system ]; then
    as_root systemctl disable --now "$1" </dev/null >/dev/null 2>&1 || say "the service $1 could not be stopped"
  elif [ -x "/etc/init.d/$1" ]; then
    as_root "/etc/init.d/$1" stop </dev/null >/dev/null 2>&1 || true
  fi
}
