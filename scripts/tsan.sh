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
jobs=$(nproc)

"$root/scripts/deps.sh" build
# -O1 and line tables only, as the AddressSanitizer build: the reports keep file and line.
cmake -S "$root" -B "$build" -G Ninja -DISP_JSON_SANITIZE=thread -DISP_JSON_WERROR=ON \
    -DISP_JSON_BUILD_TOOLS=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG" "-DCMAKE_C_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG"
cmake --build "$build" -j"$jobs" --target test_threads

export TSAN_OPTIONS=${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}
ctest --test-dir "$build" --output-on-failure -R '^test_threads$'
