#!/usr/bin/env bash
# Installs the Debian packages that the build and the tests need. Idempotent: when everything is
# already there it only checks, quietly, and returns at once.
set -euo pipefail

PACKAGES=(
    # build
    build-essential cmake ninja-build pkg-config
    # libraries
    qt6-base-dev qt6-charts-dev libsqlite3-dev libcurl4-openssl-dev libxlsxwriter-dev
    libqt6opengl6-dev # Qt Charts' CMake package needs Qt's OpenGL module (the compliance chart)
    # tests
    libgtest-dev libgmock-dev
    ffmpeg            # writes the real WMA files the tag reader is tested on
    python3 python3-xlrd python3-mutagen   # independent readers for .xls and ASF checks
    python3-openpyxl  # independent reader for the .xlsx exports
    python3-pyftpdlib # a real FTP server on the loopback for the transfer tests
    proftpd-core      # a second real FTP server, run by the tests in the foreground
    proftpd-mod-crypto # its TLS module: the FTPS tests
    xvfb xauth        # the windows' tests and screenshots without a display
    poppler-utils     # pdftotext/pdfinfo read back the printed pages
    fonts-liberation  # Liberation Sans, with the metrics of Arial: the print layout measures Arial
    ccache            # optional: rebuilds after a branch switch take seconds
    # fuzzing (libFuzzer) and sanitizers with clang
    clang libclang-rt-14-dev
)

missing=()
for p in "${PACKAGES[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
echo "bootstrap: installing ${missing[*]}"
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
# The tests run proftpd themselves on the loopback; the system service the package installs
# would serve FTP on every address of the machine: it is stopped and disabled.
if printf '%s\n' "${missing[@]}" | grep -qx proftpd-core && [ -d /run/systemd/system ]; then
    $SUDO systemctl disable --now proftpd >/dev/null 2>&1 || true
fi
