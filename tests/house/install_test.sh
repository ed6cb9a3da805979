#!/usr/bin/env bash
# Installs to an empty prefix, moves it, and builds a small program against it in C++ and in C: by CMake, by pkg-config
# and by a plain compiler line. Needs TESSARET_BINARY_DIR and TESSARET_SOURCE_DIR.
set -euo pipefail

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

fail() {
  printf 'install test: %s\n' "$*" >&2
  exit 1
}

# expect WHAT PROGRAM: it runs and says the version that the headers have.
expect() {
  local words
  words="$(LD_LIBRARY_PATH="$libdir" "$2")" || fail "$1: ends with $?"
  [ "$words" = "Tessaret $version" ] || fail "$1: says '$words' instead of 'Tessaret $version'"
}

cmake --install "$TESSARET_BINARY_DIR" --prefix "$scratch/first" >/dev/null
mv "$scratch/first" "$scratch/moved"
prefix="$scratch/moved"
if grep -rIlF -e "$scratch/first" -e "$TESSARET_BINARY_DIR" -e "$TESSARET_SOURCE_DIR" \
  "$prefix/include" "$prefix"/lib* "$prefix/share"; then
  fail "these files name the place where they were built or installed"
fi

library="$(find "$prefix" -name libtessaret.so)"
libdir="$(dirname "$library")"
version="$(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --modversion tessaret)"

# The library: its name for the loader, and nothing to see but the C functions.
grep -q 'SONAME.*\[libtessaret\.so\.0\]' < <(readelf -d "$library") || fail "the SONAME is not libtessaret.so.0"
others="$(nm -D --defined-only "$library" | awk '$2 != "A" && $3 !~ /^tessaret_/')"
[ -z "$others" ] || fail "more than the public symbols is exported: $others"
for data in dicom-dict.txt uid-dict.txt; do
  cmp "$prefix/share/tessaret/$data" "$TESSARET_SOURCE_DIR/data/$data" || fail "$data is not installed"
done

mkdir "$scratch/program"
cd "$scratch/program"
cat >host.cpp <<'TEXT'
#include <iostream>
#include <string_view>

#include <tessaret/version.h>

int main() {
  const std::string_view version = tessaret_version();
  std::cout << "Tessaret " << version << '\n';
  return version == TESSARET_VERSION_STRING ? 0 : 1;
}
TEXT
cat >host.c <<'TEXT'
#include <stdio.h>
#include <string.h>
#include <tessaret/version.h>

int main(void) {
  printf("Tessaret %s\n", tessaret_version());
  return strcmp(tessaret_version(), TESSARET_VERSION_STRING) == 0 ? 0 : 1;
}
TEXT
cat >CMakeLists.txt <<'TEXT'
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES C CXX)
find_package(Tessaret 0.1 REQUIRED)
add_executable(host_cpp host.cpp)
target_link_libraries(host_cpp PRIVATE Tessaret::tessaret)
add_executable(host_c host.c)
target_link_libraries(host_c PRIVATE Tessaret::tessaret)
file(WRITE "${CMAKE_BINARY_DIR}/data-dir" "${Tessaret_DATA_DIR}")
TEXT

cmake -G Ninja -S . -B build -DCMAKE_PREFIX_PATH="$prefix" >configure.log 2>&1 || { cat configure.log; fail "CMake"; }
cmake --build build >build.log 2>&1 || { cat build.log; fail "build by CMake"; }
expect "C++ by CMake" build/host_cpp
expect "C by CMake" build/host_c
[ -f "$(cat build/data-dir)/dicom-dict.txt" ] || fail "Tessaret_DATA_DIR does not lead to the dictionaries"

export PKG_CONFIG_PATH="$libdir/pkgconfig"
read -r -a flags <<<"$(pkg-config --cflags --libs tessaret)"
c++ -std=c++20 host.cpp "${flags[@]}" -o by_pkg_config_cpp
cc -std=c11 host.c "${flags[@]}" -o by_pkg_config_c
expect "C++ by pkg-config" ./by_pkg_config_cpp
expect "C by pkg-config" ./by_pkg_config_c

c++ -std=c++20 -I"$prefix/include" host.cpp -L"$libdir" -ltessaret -o by_hand_cpp
cc -std=c11 -I"$prefix/include" host.c -L"$libdir" -ltessaret -o by_hand_c
expect "C++ by hand" ./by_hand_cpp
expect "C by hand" ./by_hand_c

# The tool, where it was built, runs from the moved place, on the library there, and that finds its data.
unset LD_LIBRARY_PATH TESSARET_DATA_DIR
if [ -x "$prefix/bin/tessaret" ]; then
  way="$(realpath -m --relative-to="$prefix/bin" "$libdir")"
  grep -q "R.*PATH.*\[\$ORIGIN/$way\]" < <(readelf -d "$prefix/bin/tessaret") ||
    fail "the installed tool looks for its library elsewhere"
  grep -q "libtessaret.so.0 => $prefix/" < <(ldd "$prefix/bin/tessaret") ||
    fail "the installed tool runs on another library"
  grep -qF "$version" < <("$prefix/bin/tessaret" --version) || fail "the installed tool does not say its version"
  grep -q "Patient's Name" < <("$prefix/bin/tessaret" dictionary 00100010) || fail "the installed tool finds no dictionary"
fi
# The Python package of the moved copy finds the moved library.
package="$(find "$prefix" -name __init__.pyi -printf '%h')"
[ -f "$package/py.typed" ] || fail "the Python package is not installed whole"
words="$(env -u TESSARET_LIBRARY PYTHONPATH="$(dirname "$package")" /usr/bin/python3 -B -c '
import tessaret
with tessaret.create("Tessaret.DcmDictionary") as dictionary:
    print(tessaret.__version__, *dictionary.GetVRDescription(0x0010, 0x0010))')" || fail "the installed Python package: ends with $?"
[ "$words" = "$version True PN Patient's Name" ] || fail "the installed Python package says '$words'"

# Where libraries lie one folder deeper, as Debian has them: the library finds its data, and the tool is told the way.
deep="$scratch/deep/lib/x86_64-linux-gnu"
mkdir -p "$deep"
cp -P "$libdir"/libtessaret.so* "$deep"
cp -r "$prefix/share" "$scratch/deep/share"
words="$(TESSARET_LIBRARY="$deep/libtessaret.so" PYTHONPATH="$(dirname "$package")" /usr/bin/python3 -B -c '
import tessaret
with tessaret.create("Tessaret.DcmDictionary") as dictionary:
    print(*dictionary.GetVRDescription(0x0010, 0x0010))')" || fail "a library in lib/x86_64-linux-gnu: ends with $?"
[ "$words" = "True PN Patient's Name" ] || fail "a library in lib/x86_64-linux-gnu says '$words'"
if [ -x "$prefix/bin/tessaret" ]; then
  cmake -G Ninja -S "$TESSARET_SOURCE_DIR" -B "$scratch/configured" -DCMAKE_INSTALL_LIBDIR=lib/x86_64-linux-gnu \
    -DTESSARET_BUILD_TESTS=OFF -DTESSARET_BUILD_BENCH=OFF -DTESSARET_BUILD_FUZZ=OFF >configure.log 2>&1 ||
    { cat configure.log; fail "CMake with another folder for libraries"; }
  grep -rqF '$ORIGIN/../lib/x86_64-linux-gnu' "$scratch/configured/cmake_install.cmake" ||
    fail "a tool beside lib/x86_64-linux-gnu is not told the way"
fi
echo "installed, moved and used: Tessaret $version"
