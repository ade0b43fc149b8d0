#!/usr/bin/env bash
# Builds the library, the simulated platform and the threading test with ThreadSanitizer in
# build-tsan/ and runs the test under it: two pipes, and two blocks of one pipe, on threads of
# their own. The first report of a data race or of a lock-order inversion fails the run. Only the
# test's own targets are built, so the stage stays short. Installs missing Debian packages first.
#   scripts/tsan.sh            build directory build-tsan/
#   BUILD_DIR=DIR scripts/tsan.sh
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-tsan}
build=$(realpath -m "$build")  # the presets run from the project root
jobs=$(nproc)

"$root/scripts/deps.sh" build
# The preset builds at -O1 with line tables only, as the AddressSanitizer build; its test preset
# halts on the first report and runs the threading test's cases alone.
(cd "$root" && cmake --preset tsan -B "$build")
cmake --build "$build" -j"$jobs" --target test_threads
(cd "$root" && ctest --preset tsan --test-dir "$build")
