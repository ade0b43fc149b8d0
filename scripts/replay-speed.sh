#!/usr/bin/env bash
# Whole-process replay against the bare parse of the files it reads, on the same machine in the
# same run, and the peak resident set of a short and a long replay:
#
#   scripts/replay-speed.sh [FRAMES] [ROUNDS]     default 1000 frames, 5 rounds
#
# Each round runs, one after the other,
#   isp-case replay CASE --frames FRAMES -q                 the tool, the library and the platform
#   isp_json_bench --profile floor FRAMES                   the same frames' register files, each
#                                                           opened, read and parsed with picojson
# and the script prints both times per round (wall clock, and user + system CPU), their medians,
# the milliseconds per frame and the ratios; then the peak resident set of replays of 100 and
# 10,000 frames. CASE is examples/sample_case. The build is BUILD_DIR (default build-bench/),
# configured here with the tool and the benchmarks; missing Debian packages are installed first.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
frames=${1:-1000}
rounds=${2:-5}
build=${BUILD_DIR:-$root/build-bench}
build=$(realpath -m "$build")  # the presets run from the project root

"$root/scripts/deps.sh" build bench
(cd "$root" && cmake --preset bench -B "$build") >/dev/null
cmake --build "$build" --target isp-case isp_json_bench -j"$(nproc)" >&2

tool=$build/tools/isp-case
floor=$build/bench/isp_json_bench
sample=$root/examples/sample_case
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# "wall cpu peak_kib" of a command, its output discarded
measure() {
    /usr/bin/time -f "%e %U %S %M" -o "$work/time" "$@" >/dev/null 2>"$work/err" ||
        { cat "$work/err" >&2; exit 1; }
    awk '{ printf "%.3f %.3f %d\n", $1, $2 + $3, $4 }' "$work/time"
}
median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2 ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2) }'; }

echo "replay of $frames frames against the bare parse of its files, $rounds rounds"
printf '%-6s %22s %22s\n' round "replay wall/cpu (s)" "floor wall/cpu (s)"
: >"$work/rounds"
for ((i = 1; i <= rounds; ++i)); do
    read -r rw rc _ < <(measure "$tool" replay "$sample" --frames "$frames" -q)
    read -r fw fc _ < <(measure "$floor" --profile floor "$frames")
    printf '%-6s %13s / %6s %13s / %6s\n' "$i" "$rw" "$rc" "$fw" "$fc"
    echo "$rw $rc $fw $fc" >>"$work/rounds"
done
for column in 1 2 3 4; do awk -v c=$column '{ print $c }' "$work/rounds" | median; done >"$work/medians"
mapfile -t m <"$work/medians"
awk -v rw="${m[0]}" -v rc="${m[1]}" -v fw="${m[2]}" -v fc="${m[3]}" -v n="$frames" 'BEGIN {
    printf "median  wall: replay %.2f ms/frame, floor %.2f ms/frame, ratio %.2f\n", 1000 * rw / n, 1000 * fw / n, rw / fw
    printf "median  cpu:  replay %.2f ms/frame, floor %.2f ms/frame, ratio %.2f\n", 1000 * rc / n, 1000 * fc / n, rc / fc
}'

read -r _ _ short < <(measure "$tool" replay "$sample" --frames 100 -q)
read -r _ _ long < <(measure "$tool" replay "$sample" --frames 10000 -q)
echo "peak resident set: $short KiB at 100 frames, $long KiB at 10,000 frames ($((long - short)) KiB more)"
