#!/usr/bin/env bash
# Installs the Debian packages a task needs, only those that are missing.
#   scripts/deps.sh build   compiler, binutils (readelf), CMake, picojson, GoogleTest, CLI11, fmt
#   scripts/deps.sh arm     the 32-bit ARM cross compiler and qemu-user
#   scripts/deps.sh bench   Google Benchmark, GNU time
#   scripts/deps.sh fuzz    clang with its libFuzzer runtime
#   scripts/deps.sh format  clang-format
#   scripts/deps.sh report  headless Chromium and a font, to render report pages
#   scripts/deps.sh slurm   the Slurm controller, node daemon and client commands, and MUNGE
set -euo pipefail

packages=()
for task in "$@"; do
    case "$task" in
        build) packages+=(g++ binutils cmake ninja-build pkg-config picojson-dev libgtest-dev libgmock-dev
                          libcli11-dev libfmt-dev python3) ;;
        arm) packages+=(g++-arm-linux-gnueabihf binutils-arm-linux-gnueabihf qemu-user googletest) ;;
        bench) packages+=(libbenchmark-dev time) ;;
        fuzz) packages+=(clang-14 libclang-rt-14-dev) ;;
        valgrind) packages+=(valgrind) ;;
        format) packages+=(clang-format-14) ;;
        report) packages+=(chromium fonts-dejavu-core) ;;
        slurm) packages+=(slurmctld slurmd slurm-client munge) ;;
        *) echo "deps.sh: unknown task '$task' (build, arm, bench, fuzz, valgrind, format, report, slurm)" >&2; exit 2 ;;
    esac
done

missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
