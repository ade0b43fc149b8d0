#!/usr/bin/env bash
# Builds everything with warnings as errors and runs every test the project has, installing the
# Debian packages it misses first:
#   1. the native suite (build/), then the source formatting check, then the cluster workflow
#      on a one-node Slurm cluster started for the purpose (scripts/slurm-smoke.sh, as root);
#   2. the same suite under AddressSanitizer and UndefinedBehaviorSanitizer (build-asan/), then
#      the threading test under ThreadSanitizer (build-tsan/);
#   3. the 32-bit ARM build, its suite under qemu-arm, and a comparison with the native build
#      (build-arm/);
#   4. a short run of every fuzz harness (build-fuzz/);
#   5. a replay of the sample case under valgrind memcheck.
# "scripts/test.sh --quick" runs the native suite only.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)

stage() { printf '\n=== %s\n' "$*"; }

stage "native build and test suite"
"$root/scripts/deps.sh" build
(cd "$root" && cmake --preset native && cmake --build --preset native -j"$jobs" &&
    ctest --preset native -j"$jobs")
[ "${1:-}" = "--quick" ] && exit 0

stage "source formatting (clang-format --dry-run --Werror)"
"$root/scripts/format-check.sh"

stage "cluster workflow: the array job in four shards and the merge job on a one-node Slurm cluster"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"  # the daemons run as root
$sudo env ISP_CASE="$root/build/tools/isp-case" "$root/scripts/slurm-smoke.sh"

stage "test suite under AddressSanitizer and UndefinedBehaviorSanitizer"
"$root/scripts/sanitize.sh"

stage "threading test under ThreadSanitizer"
"$root/scripts/tsan.sh"

stage "32-bit ARM build, test suite under qemu-arm, comparison with the native build"
"$root/scripts/arm-suite.sh" "$root/build"

stage "fuzz harnesses, briefly"
"$root/scripts/fuzz-smoke.sh" 10

stage "sample case replay under valgrind memcheck"
"$root/scripts/valgrind-replay.sh"
