#!/usr/bin/env bash
# From a fresh clone: installs what is needed, builds, creates the demo site under demo-site/
# (a year of broadcasts for two stations, ending yesterday), then opens the tool's window on it
# when there is a display; without one it runs the tool's main job instead and prints the Quotas
# report of the last full month for station 1.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/bootstrap.sh
tools/build.sh
ROOT=${ROOT:-$PWD/demo-site}
build/src/db/demo/zl3-demo --root "$ROOT" --force  # the script's own demo site, made anew
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    echo
    echo "Zelvar: Tools Stats sur $ROOT (Fichier > Quitter pour sortir)"
    ZELVAR_ROOT="$ROOT" exec build/src/gui/ZL3_Tools_Stats
fi
FROM=$(date -d "$(date +%Y-%m-01) -1 month" +%Y-%m-%d)
TO=$(date -d "$(date +%Y-%m-01) -1 day" +%Y-%m-%d)
echo
echo "Quotas, station 1, du $FROM au $TO:"
build/src/stats/zl3-stats --root "$ROOT" --station 1 --report quotas --from "$FROM" --to "$TO"
