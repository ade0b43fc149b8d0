#!/usr/bin/env bash
# Builds the two packages with one command, into packages/ (or the directory given):
#   isp-json-target-<version>-armhf.deb and .tar.gz   for the board (32-bit ARM build in build-arm/):
#       libisp_json, libisp_record, the public headers, CMake and pkg-config files
#   isp-json-workstation-<version>-<arch>.deb and .tar.gz   for a workstation (native build in
#       build/): isp-case, the simulated platform, libisp_json, libisp_record and the same files
# Each build is configured if it is not yet, and brought up to date; no tests run here.
#
#   scripts/package.sh [OUT_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$(mkdir -p "${1:-$root/packages}" && cd "${1:-$root/packages}" && pwd)
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
fi

"$root/scripts/deps.sh" build arm

package() { # $1 = preset, $2 = build directory, $3 = package kind
    (cd "$root" && cmake --preset "$1" "${launcher[@]}" >/dev/null &&
        cmake --build "$2" -j"$(nproc)")
    cpack --config "$2/CPackConfig.cmake" -D ISP_PACKAGE="$3" -B "$out/.work-$3"
    mv "$out/.work-$3"/isp-json-"$3"-*.{deb,tar.gz} "$out/"
    rm -rf "$out/.work-$3"
}
package arm "$root/build-arm" target
package native "$root/build" workstation
ls -l "$out"
