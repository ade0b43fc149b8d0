#!/usr/bin/env bash
# Builds the library, the simulated platform, the tool and the tests for the 32-bit ARM target
# (arm-linux-gnueabihf) into build-arm/ with warnings as errors, and runs the whole test suite
# under qemu-arm. Installs the Debian packages it misses first.
#
#   scripts/arm-suite.sh [NATIVE_BUILD_DIR]
#
# Given the build directory of a native build whose suite has run, it then checks that the two
# builds agree: the same exported symbols, and the same replay of the sample case (messages,
# pushed structures byte for byte, C-model files), and that the target's replay recorded by the
# preloaded recorder compares equal with the workstation's dump (isp-case diff).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
native=${1:-}
build="$root/build-arm"
jobs=$(nproc)

"$root/scripts/deps.sh" build arm

(cd "$root" && cmake --preset arm && cmake --build --preset arm -j"$jobs" &&
    ctest --preset arm -j"$jobs")

[ -n "$native" ] || exit 0
native=$(cd "$native" && pwd)
echo "Comparing the ARM build with the native build in $native"

if ! diff -u "$native/tests/exported_symbols.txt" "$build/tests/exported_symbols.txt"; then
    echo "arm-suite: the two builds export different symbols" >&2
    exit 1
fi

# The sample case replayed by both builds' isp-case: what the tool prints must be identical,
# except where pointer width shows (the colour-correction init structure holds two pointers to
# its size arrays: 12 bytes on the target, 24 on a 64-bit workstation, so its size and the byte
# total are masked), and the two dumps must agree member by member, which `isp-case diff` checks
# through their manifests (pointers are dumped as 0, the arrays behind them are compared).
if [ -x "$native/tools/isp-case" ] && [ -x "$build/tools/isp-case" ]; then
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    replay() { # $1 = name, then the command running isp-case
        local name=$1
        shift
        local status=0
        (cd "$root" && "$@" replay examples/sample_case -v --dump "$work/dump" \
            >"$work/$name.out" 2>"$work/$name.err") || status=$?
        echo "$status" >"$work/$name.status"
        mv "$work/dump" "$work/$name-dump"
        sed -E -i -e '/^  cc /s/init#3 [0-9]+B/init#3 (pointers)B/' \
            -e 's/^(  pushed +[0-9]+ groups, )[0-9]+ bytes/\1(pointers) bytes/' "$work/$name.out"
    }
    replay native "$native/tools/isp-case"
    replay arm /bin/sh "$root/cmake/qemu-arm.sh" "$build/tools/isp-case"
    for f in status out err; do
        if ! diff -u "$work/native.$f" "$work/arm.$f"; then
            echo "arm-suite: the two builds' replays differ ($f)" >&2
            exit 1
        fi
    done
    if ! "$native/tools/isp-case" diff "$work/native-dump" "$work/arm-dump" >"$work/diff.out"; then
        cat "$work/diff.out" >&2
        echo "arm-suite: the two builds pushed or exported different data" >&2
        exit 1
    fi
    # the exporters run on each build's own arithmetic: their files must match byte for byte.
    # Decoded files are named by the key of their raw bytes, which differ where pointers do:
    # each push's files are paired through the two index.txt, which list the same pushes.
    differ=0
    while read -r _ a _ b; do
        for f in "$work/native-dump/${a%.json}".*cmodel.json; do
            [ -e "$f" ] || continue
            g=$work/arm-dump/${b%.json}${f#"$work/native-dump/${a%.json}"}
            cmp -s "$f" "$g" || { echo "differs: ${f#"$work/native-dump/"} and ${g#"$work/"}" >&2; differ=1; }
        done
    done < <(paste <(grep '^  ' "$work/native-dump/index.txt") <(grep '^  ' "$work/arm-dump/index.txt") | sort -u)
    if [ "$differ" -ne 0 ]; then
        echo "arm-suite: the two builds exported different C-model files" >&2
        exit 1
    fi
    echo "Both builds export the same symbols and replay the sample case identically" \
         "($(grep '^summary:' "$work/diff.out"), exit status $(cat "$work/arm.status"))."
    # The board against the workstation: the target's replay recorded by the preloaded recorder
    # (in the emulated process's environment) compares equal with the workstation's dump.
    if [ -f "$build/platform/record/libisp_record.so" ]; then
        (cd "$root" && QEMU_SET_ENV="LD_PRELOAD=$build/platform/record/libisp_record.so,ISP_RECORD_DIR=$work/arm-recording" \
            /bin/sh "$root/cmake/qemu-arm.sh" "$build/tools/isp-case" replay examples/sample_case -q \
            >/dev/null)
        if ! "$native/tools/isp-case" diff "$work/arm-recording" "$work/native-dump" \
            >"$work/recording.out"; then
            cat "$work/recording.out" >&2
            echo "arm-suite: the target's recording differs from the workstation's dump" >&2
            exit 1
        fi
        echo "The target's recording and the workstation's dump compare equal" \
             "($(grep '^summary:' "$work/recording.out"))."
    fi
fi
