#!/usr/bin/env bash
# Fuzzes the WMA/ASF tag reader (Cls_WMATag) for a bounded time with libFuzzer, under
# AddressSanitizer (leaks included) and UndefinedBehaviorSanitizer.
#
#   tools/run_fuzz_wma.sh [SECONDS]        default 60
#
# Builds the clang folder build-fuzz (BUILD_DIR to change it), writes the seeds (headers of
# real files encoded by ffmpeg, and the hand-made headers of zl3_wma_seeds: empty title, leading
# data, objects of size 0, truncations, lengths past the end, …) and runs the fuzzer with a
# 5-second limit per input. The corpus grown by earlier runs is kept in BUILD_DIR/fuzz-wma/corpus.
# Exit code: 0 when the run ends without finding anything; non-zero on a crash, a hang, a leak,
# a sanitizer report or a build failure (the input is then in BUILD_DIR/fuzz-wma/artifacts/).
set -euo pipefail

racine="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$racine/build-fuzz}"
duree="${1:-60}"
travail="$build/fuzz-wma"

for outil in clang clang++ cmake ninja ffmpeg; do
    command -v "$outil" >/dev/null || { echo "run_fuzz_wma: $outil introuvable" >&2; exit 2; }
done

CC=clang CXX=clang++ cmake -S "$racine" -B "$build" -G Ninja \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZL3_FUZZ=ON -DZL3_SANITIZE=ON \
    -DZL3_BUILD_TESTS=OFF -DZL3_BUILD_BENCH=OFF -DZL3_BUILD_GUI=OFF >/dev/null
ninja -C "$build" zl3_fuzz_wmatag zl3_wma_seeds

rm -rf "$travail/seeds" "$travail/artifacts"
mkdir -p "$travail/seeds" "$travail/corpus" "$travail/artifacts"
"$build/src/media/zl3_wma_seeds" "$travail/seeds"

# Real headers from ffmpeg, cut 50 bytes after the header: the reader never goes further, and
# small seeds keep the fuzzer fast.
encode() {
    local nom="$1"
    shift
    local wma="$travail/$nom.full.wma"
    ffmpeg -v error -y -f lavfi -i sine=d=0.2 -c:a wmav2 -fflags +bitexact -flags:a +bitexact \
        "$@" "$wma"
    local taille
    taille=$(od -An -tu8 -j16 -N8 "$wma" | tr -d ' ')
    head -c "$((taille + 50))" "$wma" >"$travail/seeds/ffmpeg_$nom.wma"
    rm -f "$wma"
}
encode simple -metadata title=Titre -metadata artist=Artiste -metadata album=Album
encode accents -metadata "title=Là où je t'emmènerai" -metadata "artist=Zoé" \
    -metadata "album=Œuvre n°5 — été 🎵" -metadata genre=Chanson -metadata composer=Éric \
    -metadata track=7 -metadata comment=Commentaire -metadata copyright=Droits
encode auteur_seul -metadata artist=Abc
encode sans_tags

export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:${ASAN_OPTIONS:-}"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:${UBSAN_OPTIONS:-}"
# The target's scratch file (inputs also read back from disk) stays in the work folder.
mkdir -p "$travail/tmp"
export TMPDIR="$travail/tmp"
cd "$travail"
set +e
"$build/src/media/zl3_fuzz_wmatag" -max_total_time="$duree" -timeout=5 -rss_limit_mb=2048 \
    -max_len=16384 -print_final_stats=1 -artifact_prefix="$travail/artifacts/" \
    "$travail/corpus" "$travail/seeds" 2>&1 | tee "$travail/fuzz.log"
code=${PIPESTATUS[0]}
set -e
rm -rf "$travail/tmp"
if [ "$code" -ne 0 ] || [ -n "$(ls -A "$travail/artifacts")" ]; then
    echo "run_fuzz_wma: ÉCHEC (code $code), voir $travail/artifacts/ et $travail/fuzz.log" >&2
    exit "$((code == 0 ? 1 : code))"
fi
echo "run_fuzz_wma: aucun défaut trouvé en ${duree} s"
