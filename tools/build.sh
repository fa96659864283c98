#!/usr/bin/env bash
# Configures and builds the project in BUILD_DIR (default build/). Extra arguments go to cmake.
# Quiet when all goes well; the compiler's output is shown when the build fails.
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD_DIR=${BUILD_DIR:-build}
# ccache (installed by the bootstrap) makes rebuilds after a branch switch take seconds.
LAUNCHER=()
if command -v ccache >/dev/null 2>&1; then LAUNCHER=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
cmake -S . -B "$BUILD_DIR" -G Ninja -DZL3_WERROR=ON "${LAUNCHER[@]}" "$@" >/dev/null
if ! ninja -C "$BUILD_DIR" >"$BUILD_DIR/build.log" 2>&1; then
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$BUILD_DIR/build.log" | tail -n 60
    echo "build failed (full log: $BUILD_DIR/build.log)" >&2
    exit 1
fi
