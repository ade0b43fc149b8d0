#!/usr/bin/env bash
# Main job: builds isp-case with the library and the simulated platform, then replays the
# bundled sample case (examples/sample_case) and prints what every module programmed, frame by
# frame. Installs missing Debian packages first. Extra arguments go to "isp-case replay", for
# example --dump DIR or --log-level debug. The build directory is build/ unless BUILD_DIR says
# otherwise; build output goes to standard error, the replay to standard output.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
build=$(realpath -m "$build")  # the presets run from the project root

"$root/scripts/deps.sh" build
(cd "$root" && cmake --preset native -B "$build") 1>&2
cmake --build "$build" --target isp-case -j"$(nproc)" 1>&2
cd "$root"
exec "$build/tools/isp-case" replay examples/sample_case "$@"
