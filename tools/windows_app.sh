#!/usr/bin/env bash
# The Windows application, built on Linux (not part of CI: Qt's first build takes hours).
#
#   tools/windows_app.sh          # builds ZL3_Tools_Stats.exe and its folder, and the installer
#   tools/windows_app.sh --run    # then starts it under Wine on a demo site and takes a screenshot
#
# 1. tools/windows_toolchain.sh: MinGW-w64, Wine, and SQLite, GoogleTest, libcurl, libxlsxwriter
#    compiled for Windows from Debian's sources (cached).
# 2. Qt 6 (qtbase: Core, Gui, Widgets, PrintSupport, Network and the Windows platform, style and
#    TLS plugins) compiled with MinGW from Debian's qt6-base source against Debian's own host
#    tools (moc, rcc, uic of qt6-base-dev-tools, the same 6.4.2), once, into
#    <cache>/x86_64-w64-mingw32/qt6 (ZL3_WIN_CACHE, default ~/.cache/zl3-mingw). About two hours
#    on two cores; skipped when already installed there.
# 3. The tool cross-built into BUILD_DIR (default build-win64-app) with the shared C++ runtime,
#    and its folder BUILD_DIR/ZL3_Tools_Stats/: the executable, the command-line programs, Qt's
#    DLLs and plugins, the MinGW runtime DLLs. Every DLL the folder's files import is checked to be
#    in the folder or a system DLL of Windows.
# 4. The installer ZL3_Tools_Stats_Setup.exe (Debian's NSIS) when makensis is there.
# 5. With --run: a demo site made by zl3-demo.exe under Wine, then ZL3_Tools_Stats.exe on it under
#    Wine, in an Xvfb display started here; the screenshot is BUILD_DIR/ZL3_Tools_Stats_wine.png.
#    The display and the program are ended by the ids this script started them with.
set -euo pipefail
cd "$(dirname "$0")/.."
HERE="$PWD"
CACHE="${ZL3_WIN_CACHE:-$HOME/.cache/zl3-mingw}"
TRIPLET=x86_64-w64-mingw32
QT="$CACHE/$TRIPLET/qt6"
BUILD_DIR="${BUILD_DIR:-build-win64-app}"
RUN=0
[ "${1:-}" = "--run" ] && RUN=1
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"

tools/windows_toolchain.sh

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q "install ok installed"; }
# Qt's host tools of the same version, the installer compiler, the display and the screenshot.
missing=()
for p in qt6-base-dev qt6-base-dev-tools nsis xvfb imagemagick xdotool fonts-liberation; do
    installed "$p" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "windows: installing ${missing[*]}"
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends \
        "${missing[@]}" >/dev/null
fi
HOST_CMAKE_DIR="$(dirname "$(dirname "$(dpkg -L qt6-base-dev | grep -m1 '/cmake/Qt6/Qt6Config.cmake$')")")"

# Debian's qtbase 6.4.2 as configured here (no Direct2D, no OpenGL) needs four local changes to
# build with MinGW; each is a condition Qt's own build files already use elsewhere:
# - Debian removed the Wintab headers (their license forbids changes), so the Windows platform
#   plugin is built without Wintab tablet support (pen tablets still reach it as Windows pointer
#   messages);
# - Qt's DirectWrite font engine and font database are compiled only with Direct2D, but
#   PrintSupport and the platform plugin refer to them on DirectWrite alone;
# - the plugin's software-OpenGL check refers to OpenGL classes when OpenGL is off.
# The plugin then uses the GDI font database.
patch_qt() {
    local t=$1
    [ -f "$t/.zl3-patched" ] && return 0
    local w="$t/src/plugins/platforms/windows"
    sed -i 's/QT_CONFIG(tabletevent)/0/g' "$w/qwindowspointerhandler.h" \
        "$w/qwindowspointerhandler.cpp" "$w/qwindowscontext.cpp"
    sed -i 's/qt_internal_extend_target(QWindowsIntegrationPlugin CONDITION QT_FEATURE_tabletevent/qt_internal_extend_target(QWindowsIntegrationPlugin CONDITION FALSE/' \
        "$w/CMakeLists.txt"
    sed -i 's/^#if QT_CONFIG(dynamicgl)$/#if QT_CONFIG(dynamicgl) \&\& QT_CONFIG(opengl)/' \
        "$w/qwindowswindow.cpp"
    sed -i 's/^#if QT_CONFIG(directwrite3)$/#if QT_CONFIG(directwrite3) \&\& QT_CONFIG(direct2d)/' \
        "$w/qwindowsintegration.cpp"
    sed -i 's/^#if QT_CONFIG(directwrite)$/#if QT_CONFIG(directwrite) \&\& QT_CONFIG(direct2d)/' \
        "$t/src/printsupport/platform/windows/qprintengine_win.cpp"
    touch "$t/.zl3-patched"
}

build_qt() {
    [ -f "$QT/lib/cmake/Qt6Widgets/Qt6WidgetsConfig.cmake" ] &&
        [ -f "$QT/plugins/platforms/qwindows.dll" ] && return 0
    local src="$CACHE/src/qtbase"
    if [ ! -d "$src/tree" ]; then
        rm -rf "$src" && mkdir -p "$src"
        (cd "$src" && apt-get source --download-only qt6-base >/dev/null 2>&1 &&
            dpkg-source -x qt6-base_*.dsc tree >/dev/null 2>&1) || {
            echo "windows: the source of qt6-base cannot be had from the mirror" >&2
            exit 1
        }
    fi
    patch_qt "$src/tree"
    echo "windows: Qt 6 (qtbase) for $TRIPLET: this takes hours the first time"
    # What the tool does not use is left out: SQL, D-Bus, test library, XML, OpenGL, Vulkan,
    # OpenSSL (Windows' Schannel does TLS), FreeType (DirectWrite draws the text), JPEG.
    cmake -S "$src/tree" -B "$src/bld" -G Ninja \
        -DCMAKE_TOOLCHAIN_FILE="$HERE/cmake/mingw-$TRIPLET-qt.cmake" \
        -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="$HOST_CMAKE_DIR" \
        -DCMAKE_INSTALL_PREFIX="$QT" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=ON \
        -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF \
        -DFEATURE_sql=OFF -DFEATURE_dbus=OFF -DFEATURE_testlib=OFF -DFEATURE_concurrent=OFF \
        -DFEATURE_xml=OFF -DFEATURE_opengl=OFF -DFEATURE_vulkan=OFF -DFEATURE_openssl=OFF \
        -DFEATURE_freetype=OFF -DFEATURE_jpeg=OFF -DFEATURE_zstd=OFF -DFEATURE_icu=OFF \
        -DFEATURE_direct2d=OFF -DFEATURE_system_zlib=OFF -DFEATURE_system_pcre2=OFF \
        -DFEATURE_system_harfbuzz=OFF -DFEATURE_system_png=OFF \
        -DFEATURE_system_doubleconversion=OFF >"$src/configure.log" 2>&1 || {
        tail -n 40 "$src/configure.log"
        echo "windows: Qt's configuration failed (log: $src/configure.log)" >&2
        exit 1
    }
    if ! cmake --build "$src/bld" >"$src/build.log" 2>&1; then
        grep -vE '^\[[0-9]+/[0-9]+\] ' "$src/build.log" | tail -n 40
        echo "windows: Qt's build failed (log: $src/build.log)" >&2
        exit 1
    fi
    cmake --install "$src/bld" >/dev/null
}
build_qt

# The tool, with Qt's DLLs: one C++ runtime shared by Qt and the program.
LAUNCHER=()
if command -v ccache >/dev/null 2>&1; then
    LAUNCHER=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi
mkdir -p "$BUILD_DIR"
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_TOOLCHAIN_FILE="cmake/mingw-$TRIPLET-qt.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$QT" \
    -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="$HOST_CMAKE_DIR" \
    -DZL3_BUILD_TESTS=OFF -DZL3_BUILD_BENCH=OFF "${LAUNCHER[@]}" >"$BUILD_DIR/configure.log" 2>&1 || {
    tail -n 40 "$BUILD_DIR/configure.log"
    exit 1
}
if ! ninja -C "$BUILD_DIR" >"$BUILD_DIR/build.log" 2>&1; then
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$BUILD_DIR/build.log" | tail -n 60
    echo "Windows application build failed (full log: $BUILD_DIR/build.log)" >&2
    exit 1
fi

# The folder a station installs: the programs, Qt's DLLs and plugins, the MinGW runtime.
APP="$BUILD_DIR/ZL3_Tools_Stats"
rm -rf "$APP"
mkdir -p "$APP/platforms" "$APP/styles" "$APP/tls" "$APP/imageformats"
cp "$BUILD_DIR/src/gui/ZL3_Tools_Stats.exe" "$BUILD_DIR/src/gui/NOUVEAUTES.txt" "$APP/"
find "$BUILD_DIR/src" -maxdepth 3 -name 'zl3-*.exe' -exec cp {} "$APP/" \;
for m in Core Gui Widgets Network PrintSupport; do cp "$QT/bin/Qt6$m.dll" "$APP/"; done
cp "$QT/plugins/platforms/qwindows.dll" "$APP/platforms/"
cp "$QT/plugins/styles/"*.dll "$APP/styles/" 2>/dev/null || true
cp "$QT/plugins/tls/"*schannel*.dll "$APP/tls/" 2>/dev/null || true
cp "$QT/plugins/imageformats/"*.dll "$APP/imageformats/" 2>/dev/null || true
GCC_DIR="$(dirname "$("$TRIPLET-g++-posix" -print-libgcc-file-name)")"
for dll in libstdc++-6.dll libgcc_s_seh-1.dll; do cp "$GCC_DIR/$dll" "$APP/"; done
cp "/usr/$TRIPLET/lib/libwinpthread-1.dll" "$APP/"

# Wine: its own prefix in the build folder, no debug channels.
export WINEPREFIX="$HERE/$BUILD_DIR/wineprefix"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
if [ ! -f "$WINEPREFIX/system.reg" ]; then
    (unset DISPLAY; wineboot --init >/dev/null 2>&1)
    wineserver --wait
fi
# Every DLL imported is in the folder or one of Windows' own (Wine's system32 lists them).
SYS32="$WINEPREFIX/drive_c/windows/system32"
present="$( (ls "$APP"; ls "$SYS32") | tr 'A-Z' 'a-z')"
absent=0
while IFS= read -r f; do
    for dll in $("$TRIPLET-objdump" -p "$f" | sed -n 's/^\s*DLL Name: //p'); do
        # api-ms-win-* are API sets: names the Windows loader maps to its own DLLs.
        [[ "$dll" == api-ms-win-* ]] && continue
        if ! grep -qxF "$(tr 'A-Z' 'a-z' <<<"$dll")" <<<"$present"; then
            echo "missing: $dll (imported by ${f#$APP/})" >&2
            absent=1
        fi
    done
done < <(find "$APP" -name '*.exe' -o -name '*.dll')
[ $absent -eq 0 ] || { echo "the application's folder is incomplete" >&2; exit 1; }
echo "windows: $APP ($(du -sh "$APP" | cut -f1)), every imported DLL present"

if command -v makensis >/dev/null 2>&1; then
    makensis -V2 -DAPPDIR="$HERE/$APP" -DOUTFILE="$HERE/$BUILD_DIR/ZL3_Tools_Stats_Setup.exe" \
        -DVERSION="$(sed -n 's/^project(ZelvarToolsStats VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)" \
        tools/windows_installer.nsi
    echo "windows: $BUILD_DIR/ZL3_Tools_Stats_Setup.exe"
fi

[ $RUN -eq 1 ] || exit 0

# Wine's own Tahoma, which stands for Windows' dialog fonts, comes out blank in Qt's line edits
# (their text is drawn, with no glyphs); a Windows machine has the real fonts. This prefix maps
# those fonts to Liberation Sans, Arial's metric twin, as Wine's font replacements allow.
for f in "Tahoma" "MS Shell Dlg" "MS Shell Dlg 2" "Arial" "Microsoft Sans Serif" "Segoe UI"; do
    (unset DISPLAY; wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v "$f" \
        /d "Liberation Sans" /f >/dev/null 2>&1)
done
wineserver --wait

# The installer, silent, into the prefix's C:\Quorvane\Zelvar, then its uninstaller: the
# station's configuration beside the tool stays.
if [ -f "$BUILD_DIR/ZL3_Tools_Stats_Setup.exe" ]; then
    CIBLE="$WINEPREFIX/drive_c/Quorvane/Zelvar"
    mkdir -p "$CIBLE/Config" && echo "[Test]" >"$CIBLE/Config/ZL3_Config.ini"
    (unset DISPLAY; wine "$BUILD_DIR/ZL3_Tools_Stats_Setup.exe" /S '/D=C:\Quorvane\Zelvar')
    wineserver --wait
    [ -f "$CIBLE/ZL3_Tools_Stats.exe" ] && [ -f "$CIBLE/platforms/qwindows.dll" ] ||
        { echo "the installer did not install the tool" >&2; exit 1; }
    (unset DISPLAY; wine 'C:\Quorvane\Zelvar\ZL3_Tools_Stats_Desinstaller.exe' /S '_?=C:\Quorvane\Zelvar')
    wineserver --wait
    [ ! -f "$CIBLE/ZL3_Tools_Stats.exe" ] && [ -f "$CIBLE/Config/ZL3_Config.ini" ] ||
        { echo "the uninstaller did not remove the tool alone" >&2; exit 1; }
    echo "windows: installed and uninstalled under Wine (the configuration stayed)"
fi

# The demo site, made by the Windows zl3-demo under Wine, then the window on it.
SITE="$HERE/$BUILD_DIR/demo-site"
rm -rf "$SITE"
(unset DISPLAY; wine "$APP/zl3-demo.exe" --root "$(winepath -w "$SITE")" >/dev/null)
DISPLAY_NUM=":$((90 + RANDOM % 9))"
Xvfb "$DISPLAY_NUM" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
XVFB_PID=$!
APP_PID=""
finish() {
    [ -n "$APP_PID" ] && kill "$APP_PID" 2>/dev/null || true
    wineserver --wait 2>/dev/null || true
    kill "$XVFB_PID" 2>/dev/null || true
}
trap finish EXIT
sleep 2
DISPLAY="$DISPLAY_NUM" ZELVAR_ROOT="$(winepath -w "$SITE")" wine "$APP/ZL3_Tools_Stats.exe" \
    >"$BUILD_DIR/wine-run.log" 2>&1 &
APP_PID=$!
sleep "${ZL3_WINE_WAIT:-25}"
DISPLAY="$DISPLAY_NUM" import -window root "$BUILD_DIR/ZL3_Tools_Stats_wine.png"
echo "windows: screenshot $BUILD_DIR/ZL3_Tools_Stats_wine.png"
# "Lancer" (the top right button of the main window) on the period the window offers, then the
# report on screen.
WIN="$(DISPLAY="$DISPLAY_NUM" xdotool search --onlyvisible --name "Tools Stats" | head -n 1)"
if [ -n "$WIN" ]; then
    eval "$(DISPLAY="$DISPLAY_NUM" xdotool getwindowgeometry --shell "$WIN")"
    DISPLAY="$DISPLAY_NUM" xdotool mousemove --window "$WIN" $((WIDTH - 50)) 35 click 1
    sleep "${ZL3_WINE_WAIT_REPORT:-20}"
    DISPLAY="$DISPLAY_NUM" import -window root "$BUILD_DIR/ZL3_Tools_Stats_wine_quotas.png"
    echo "windows: screenshot after \"Lancer\" $BUILD_DIR/ZL3_Tools_Stats_wine_quotas.png"
fi
