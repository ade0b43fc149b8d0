#!/usr/bin/env bash
# Builds the library, the simulated platform, the tool and the tests with AddressSanitizer and
# UndefinedBehaviorSanitizer (no recovery: the first report ends the test) and runs the whole
# test suite under them, leak checking included. Installs missing Debian packages first.
#   scripts/sanitize.sh            build directory build-asan/
#   BUILD_DIR=DIR scripts/sanitize.sh
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-asan}
build=$(realpath -m "$build")  # the presets run from the project root
jobs=$(nproc)

"$root/scripts/deps.sh" build
# The preset builds at -O1 with line tables only: a third less compile time than the default
# -O2 -g, the same reports with file and line. Its test preset sets the sanitizer options beyond
# the defaults: string interceptors check the whole string, locals live on a fake stack so a use
# after return is seen, and globals must not be used before their initialiser ran. The death
# tests abort on purpose; the sanitizers do not intercept that abort.
(cd "$root" && cmake --preset sanitize -B "$build")
cmake --build "$build" -j"$jobs"
(cd "$root" && ctest --preset sanitize --test-dir "$build" -j"$jobs")
