#!/usr/bin/env bash
# Soak test of one station used by several people at once (not part of CTest): on a fresh demo
# site, two report processes (zl3-stats, Quotas and SACEM, each run again and again) and two
# read-only open/close loops (zl3-btr stat on the history and tracks files) run side by side for
# DURATION seconds (default 60). Every report must succeed and give the same CSV as a report
# run alone beforehand; every open must succeed. Run as root, it then also runs the reports on
# a read-only mount of the data folder and compares them.
#   DURATION=60 BUILD_DIR=build tools/run_soak.sh
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD_DIR:-build}
DURATION=${DURATION:-60}
STATS=$BUILD/src/stats/zl3-stats
BTR=$BUILD/src/db/engine/zl3-btr
ROOT=$(mktemp -d "${TMPDIR:-/tmp}/zl3-soak.XXXXXX")
trap 'rm -rf "$ROOT"' EXIT

"$BUILD/src/db/demo/zl3-demo" --root "$ROOT" --stations 1 --tracks 1500 --days 62 \
    --end 2026-10-31 >/dev/null
DATA="$ROOT/C/BTRieve/Data"
report() {  # report NAME: the station's report as CSV on standard output
    "$STATS" --root "$ROOT" --station 1 --report "$1" --from 2026-10-01 --to 2026-10-31 \
        --format csv
}
for r in quotas sacem; do report "$r" >"$ROOT/ref-$r.csv"; done

END=$((SECONDS + DURATION))
report_loop() {
    local n=0
    while [ $SECONDS -lt $END ]; do
        if ! report "$1" >"$ROOT/out-$1.csv" 2>"$ROOT/err-$1.txt"; then
            echo "FAILED: report $1 (run $((n + 1))): $(tail -n 3 "$ROOT/err-$1.txt")"
            return 1
        fi
        if ! cmp -s "$ROOT/out-$1.csv" "$ROOT/ref-$1.csv"; then
            echo "FAILED: report $1 (run $((n + 1))) differs from the report run alone"
            return 1
        fi
        n=$((n + 1))
    done
    echo "report $1: $n runs, all identical"
}
open_loop() {
    local n=0
    while [ $SECONDS -lt $END ]; do
        if ! "$BTR" stat "$DATA/$1" >/dev/null 2>"$ROOT/err-$1.txt"; then
            echo "FAILED: open/close of $1: $(cat "$ROOT/err-$1.txt")"
            return 1
        fi
        n=$((n + 1))
    done
    echo "open/close $1: $n opens"
}

pids=()
report_loop quotas & pids+=($!)
report_loop sacem & pids+=($!)
open_loop FRADA47.bt6 & pids+=($!)
open_loop FRADA22.bt6 & pids+=($!)
failed=0
for pid in "${pids[@]}"; do wait "$pid" || failed=1; done

if [ "$(id -u)" = 0 ] && command -v unshare >/dev/null; then
    for r in quotas sacem; do
        if unshare -m sh -c "mount --make-rprivate / && mount --bind '$DATA' '$DATA' && \
                mount -o remount,bind,ro '$DATA' && exec '$STATS' --root '$ROOT' --station 1 \
                --report $r --from 2026-10-01 --to 2026-10-31 --format csv" \
                >"$ROOT/ro-$r.csv" && cmp -s "$ROOT/ro-$r.csv" "$ROOT/ref-$r.csv"; then
            echo "report $r on a read-only data folder: identical"
        else
            echo "FAILED: report $r on a read-only data folder"
            failed=1
        fi
    done
fi
[ $failed = 0 ] && echo "soak: OK ($DURATION s)" || echo "soak: FAILED"
exit $failed
