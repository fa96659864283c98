#!/usr/bin/env bash
# From a fresh clone: installs what is needed, builds, creates the demo site under demo-site/
# and runs the tool's main job on it.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/bootstrap.sh
tools/build.sh
ROOT=${ROOT:-$PWD/demo-site}
build/src/app/zl3-demo --root "$ROOT"
build/src/stats/zl3-stats --root "$ROOT" --summary
