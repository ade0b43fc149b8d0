#!/usr/bin/env bash
# Builds the libFuzzer harnesses of fuzz/ with clang, AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs each briefly on seed corpora made from the sample case.
# A crash, a sanitizer report, an exception the library does not document or an input taking
# over 10 s fails the run; the input is kept as BUILD_DIR/fuzz-artifacts/<harness>-crash-...
# and replays with "BUILD_DIR/fuzz/fuzz_<harness> FILE". Corpora grow across runs in
# BUILD_DIR/fuzz-corpus/. The dictionary holds every key of the register rows
# (BUILD_DIR/fuzz/register_file.dict, written by the build). Installs missing Debian packages
# first.
#   scripts/fuzz-smoke.sh [SECONDS]      seconds per harness, default 25
#   BUILD_DIR=DIR scripts/fuzz-smoke.sh  build directory, default build-fuzz/
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-25}
build=${BUILD_DIR:-$root/build-fuzz}
build=$(realpath -m "$build")  # the presets run from the project root

"$root/scripts/deps.sh" build fuzz
(cd "$root" && cmake --preset fuzz -B "$build")
cmake --build "$build" -j"$(nproc)" --target fuzz_converters fuzz_fixed_point fuzz_case_loader \
    fuzz_dict

seeds=$build/fuzz-seeds
rm -rf "$seeds"
python3 "$root/fuzz/make_seeds.py" "$root/examples/sample_case" "$seeds"
mkdir -p "$build/fuzz-artifacts"

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
status=0
for harness in converters fixed_point case_loader; do
    corpus=$build/fuzz-corpus/$harness
    log=$build/fuzz-artifacts/$harness.log
    mkdir -p "$corpus"
    options=(-max_total_time="$seconds" -timeout=10 -print_final_stats=1
             -artifact_prefix="$build/fuzz-artifacts/$harness-")
    # The converters report every missing field on standard error: closed for speed; libFuzzer
    # and the sanitizers keep their own copy of the stream for their reports.
    [ "$harness" = fixed_point ] || options+=(-close_fd_mask=2 -dict="$build/fuzz/register_file.dict")
    if "$build/fuzz/fuzz_$harness" "${options[@]}" "$corpus" "$seeds/$harness" >"$log" 2>&1; then
        echo "fuzz_$harness: $(grep -m1 '^Done' "$log")"
    else
        echo "fuzz_$harness: FAILED, last lines of $log:"
        tail -n 60 "$log"
        status=1
    fi
done
exit $status
