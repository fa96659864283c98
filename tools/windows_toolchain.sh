#!/usr/bin/env bash
# Installs what the Windows build needs (Debian packages only) and builds, once, the libraries
# the Windows programs link: SQLite and GoogleTest compiled with MinGW-w64 from Debian's own
# sources, into a fixed cache folder (ZL3_WIN_CACHE, default ~/.cache/zl3-mingw). Each library is
# skipped when its folder is already complete, so a second run only checks.
#
#   tools/windows_toolchain.sh            # SQLite and GoogleTest, 64-bit (x86_64) and 32-bit (i686)
#
# Layout of the cache:  <cache>/<triplet>/{include,lib}  for x86_64-w64-mingw32 and
#                                                        i686-w64-mingw32
set -euo pipefail

CACHE="${ZL3_WIN_CACHE:-$HOME/.cache/zl3-mingw}"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"

PACKAGES=(
    g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix   # the compilers (posix threads model:
                                                          # std::thread and std::mutex)
    wine wine64               # runs the Windows test programs
    dpkg-dev                  # apt-get source
    tcl                       # SQLite's build makes its one-file source with tclsh
    libz-mingw-w64-dev        # zlib for Windows: libxlsxwriter's .xlsx files are zip archives
    cmake ninja-build
)

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed"; }

apt_ready=0
apt_update() {
    [ $apt_ready -eq 1 ] && return 0
    if ! dpkg --print-foreign-architectures | grep -qx i386; then
        $SUDO dpkg --add-architecture i386
    fi
    # apt-get source needs the source lists of the same suites as the binary ones.
    if ! grep -rqs '^Types:.*deb-src' /etc/apt/sources.list.d/ &&
       ! grep -qs '^deb-src' /etc/apt/sources.list; then
        if [ -f /etc/apt/sources.list.d/debian.sources ]; then
            sed 's/^Types: deb$/Types: deb-src/' /etc/apt/sources.list.d/debian.sources |
                $SUDO tee /etc/apt/sources.list.d/zl3-deb-src.sources >/dev/null
        else
            grep '^deb ' /etc/apt/sources.list | sed 's/^deb /deb-src /' |
                $SUDO tee /etc/apt/sources.list.d/zl3-deb-src.list >/dev/null
        fi
    fi
    # One index that fails (a mirror in the middle of a sync) does not stop the others.
    $SUDO apt-get update -qq >/dev/null 2>&1 || true
    apt_ready=1
}

missing=()
for p in "${PACKAGES[@]}"; do installed "$p" || missing+=("$p"); done
if [ ${#missing[@]} -gt 0 ]; then
    echo "windows: installing ${missing[*]}"
    apt_update
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
fi
# Wine's 32-bit half runs the 32-bit test of the WBTRV32-compatible library. It needs the i386
# packages at the same versions as the installed amd64 ones: when the mirror cannot give them,
# the 32-bit test is skipped with that reason (tools/windows_tests.sh) and the rest goes on.
if ! installed wine32:i386; then
    apt_update
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends \
        wine32:i386 >/dev/null 2>&1 || echo "windows: wine32:i386 cannot be installed now"
fi

# SQLite: Debian's source package (with Debian's patches), made into its one-file form by its own
# build on this machine, then compiled by MinGW as a static library, once per architecture.
build_sqlite() {
    local triplet=$1 out="$CACHE/$1"
    [ -f "$out/lib/libsqlite3.a" ] && [ -f "$out/include/sqlite3.h" ] && return 0
    local src="$CACHE/src/sqlite"
    if [ ! -f "$src/bld/sqlite3.c" ]; then
        rm -rf "$src" && mkdir -p "$src"
        (cd "$src" && apt-get source --download-only sqlite3 >/dev/null 2>&1 &&
            dpkg-source -x sqlite3_*.dsc tree >/dev/null 2>&1)
        mkdir -p "$src/bld"
        (cd "$src/bld" && ../tree/configure --disable-tcl >/dev/null && make sqlite3.c >/dev/null)
    fi
    echo "windows: SQLite for $triplet"
    mkdir -p "$out/lib" "$out/include" "$src/$triplet"
    # The engine reads through memory mapping and the WAL index; defaults as Debian builds them.
    "$triplet-gcc-posix" -O2 -DSQLITE_THREADSAFE=1 -DSQLITE_ENABLE_COLUMN_METADATA \
        -DSQLITE_MAX_DEFAULT_PAGE_SIZE=32768 -c "$src/bld/sqlite3.c" -o "$src/$triplet/sqlite3.o"
    "$triplet-ar" rcs "$out/lib/libsqlite3.a" "$src/$triplet/sqlite3.o"
    cp "$src/bld/sqlite3.h" "$src/bld/sqlite3ext.h" "$out/include/"
}

# GoogleTest and GoogleMock from Debian's /usr/src/googletest, built with the same toolchain
# file as the project.
build_gtest() {
    local triplet=$1 out="$CACHE/$1"
    [ -f "$out/lib/libgtest.a" ] && [ -f "$out/lib/cmake/GTest/GTestConfig.cmake" ] && return 0
    echo "windows: GoogleTest for $triplet"
    local bld="$CACHE/src/googletest-$triplet"
    rm -rf "$bld"
    cmake -S /usr/src/googletest -B "$bld" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$HERE/cmake/mingw-$triplet.cmake" \
        -DCMAKE_INSTALL_PREFIX="$out" -Dgtest_disable_pthreads=OFF >/dev/null
    cmake --build "$bld" >/dev/null
    cmake --install "$bld" >/dev/null
}

# A Debian source package unpacked once into <cache>/src/<name>/tree.
unpack_source() {
    local name=$1 src="$CACHE/src/$1"
    if [ ! -d "$src/tree" ]; then
        rm -rf "$src" && mkdir -p "$src"
        (cd "$src" && apt-get source --download-only "$name" >/dev/null 2>&1 &&
            dpkg-source -x "$name"_*.dsc tree >/dev/null 2>&1) || {
            echo "windows: the source of $name cannot be had from the mirror" >&2
            rm -rf "$src"
            return 1
        }
    fi
}

# A library from a Debian source package with a CMake build, compiled static with the project's
# toolchain file into <cache>/<triplet>; skipped when `marker` (a file its install writes last)
# is there. Further arguments go to CMake.
build_cmake_source() {
    local name=$1 triplet=$2 marker=$3 out="$CACHE/$2"
    shift 3
    [ -f "$out/$marker" ] && return 0
    echo "windows: $name for $triplet"
    unpack_source "$name"
    local bld="$CACHE/src/$name-$triplet"
    rm -rf "$bld"
    cmake -S "$CACHE/src/$name/tree" -B "$bld" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_TOOLCHAIN_FILE="$HERE/cmake/mingw-$triplet.cmake" \
        -DCMAKE_INSTALL_PREFIX="$out" -DCMAKE_INSTALL_LIBDIR=lib -DBUILD_SHARED_LIBS=OFF \
        "$@" >/dev/null
    cmake --build "$bld" >/dev/null
    cmake --install "$bld" >/dev/null
}

# libcurl (FTP and FTPS through Windows' own TLS, Schannel) from Debian's curl source. No CA
# bundle path is compiled in: Schannel checks certificates against the Windows store.
build_curl() {
    build_cmake_source curl "$1" lib/cmake/CURL/CURLConfig.cmake \
        -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF -DCURL_USE_SCHANNEL=ON \
        -DCURL_USE_OPENSSL=OFF -DCURL_USE_LIBSSH2=OFF -DUSE_LIBIDN2=OFF -DUSE_NGHTTP2=OFF \
        -DCURL_ZLIB=OFF -DCURL_BROTLI=OFF -DCURL_ZSTD=OFF -DCURL_DISABLE_LDAP=ON \
        -DCURL_CA_BUNDLE=none -DCURL_CA_PATH=none
}

# libxlsxwriter from Debian's source, with MinGW's zlib.
build_xlsxwriter() {
    build_cmake_source libxlsxwriter "$1" lib/pkgconfig/xlsxwriter.pc
}

HERE="$(cd "$(dirname "$0")/.." && pwd)"
build_sqlite x86_64-w64-mingw32
build_gtest x86_64-w64-mingw32
# The writers and the FTP client (the 32-bit build makes only WBTRV32.DLL and its test).
build_curl x86_64-w64-mingw32
build_xlsxwriter x86_64-w64-mingw32
build_sqlite i686-w64-mingw32
build_gtest i686-w64-mingw32
