#!/usr/bin/env bash
# Replays the sample case with isp-case under valgrind's memcheck. Passes when memcheck finds no
# error and no leaked block (definitely, indirectly or possibly lost; the simulated platform's
# own records stay reachable on purpose), and isp-case finds every operation returning 0 and the
# simulated platform clean: every context freed under the tag it was allocated with, every
# wrapper and buffer released, no misuse. Installs missing Debian packages first.
#   scripts/valgrind-replay.sh [FRAMES]   frames to replay, default 3 (the sample case has 2;
#                                         the third replays the last one again)
#   BUILD_DIR=DIR                         build directory with isp-case, default build/
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
frames=${1:-3}
build=${BUILD_DIR:-$root/build}
build=$(realpath -m "$build")  # the presets run from the project root

"$root/scripts/deps.sh" build valgrind
(cd "$root" && cmake --preset native -B "$build") >/dev/null
cmake --build "$build" --target isp-case -j"$(nproc)"

report=$build/valgrind-replay.txt
status=0
valgrind --tool=memcheck --error-exitcode=99 --leak-check=full \
    --show-leak-kinds=definite,indirect,possible --errors-for-leak-kinds=definite,indirect,possible \
    "$build/tools/isp-case" replay "$root/examples/sample_case" --frames "$frames" \
    >"$report" 2>"$report.memcheck" || status=$?

sed -n '/^summary/,$p' "$report"
grep -E "ERROR SUMMARY|definitely lost|indirectly lost|possibly lost" "$report.memcheck" | sed 's/^==[0-9]*== */memcheck: /'
case $status in
    0) echo "valgrind replay of $frames frames: clean" ;;
    99) echo "valgrind replay: memcheck found errors or leaks, see $report.memcheck" >&2 ;;
    *) echo "valgrind replay: isp-case failed with status $status, see $report" >&2 ;;
esac
exit $status
