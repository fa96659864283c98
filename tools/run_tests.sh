#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds, runs every test through CTest.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/bootstrap.sh
BUILD_DIR=${BUILD_DIR:-build} tools/build.sh "$@"
ctest --test-dir "${BUILD_DIR:-build}" --output-on-failure -j"$(nproc)"
