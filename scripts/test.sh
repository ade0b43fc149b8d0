#!/usr/bin/env bash
# Builds the library, the simulated platform, the tool and the tests with warnings as errors,
# then runs the whole test suite. Installs missing Debian packages first.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
jobs=$(nproc)

"$root/scripts/deps.sh" build
cmake -S "$root" -B "$root/build" -G Ninja -DISP_JSON_WERROR=ON
cmake --build "$root/build" -j"$jobs"
ctest --test-dir "$root/build" --output-on-failure -j"$jobs"
