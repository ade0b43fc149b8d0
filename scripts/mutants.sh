#!/usr/bin/env bash
# The mutation check: plants each fault of tests/mutants.txt in turn, rebuilds and runs the whole
# native suite, and counts the faults the suite kills. Needs ../shared/tools/mutants.py beside the
# project. Prints one line per planted fault, then "mutants: K killed, S survived, N stale".
#   scripts/mutants.sh                 build directory build-mutants/
#   BUILD_DIR=DIR scripts/mutants.sh [MUTANTS_FILE]
# Warnings are not errors in this build: a planted fault often leaves a parameter unused, and a
# fault must be caught by a test, not by the compiler. A planted fault that does not compile at
# all counts as killed by mutants.py: it is listed at the end, to be mended in the list.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build-mutants}
build=$(realpath -m "$build")  # the presets run from the project root
list=${1:-$root/tests/mutants.txt}
tool=$root/../shared/tools/mutants.py
[ -f "$tool" ] || { echo "mutants.sh: $tool not found" >&2; exit 2; }

"$root/scripts/deps.sh" build
(cd "$root" && cmake --preset mutants -B "$build") >/dev/null
cmake --build "$build" -j"$(nproc)" >/dev/null
ctest --test-dir "$build" -j"$(nproc)" >/dev/null || { echo "mutants.sh: the suite fails unchanged" >&2; exit 1; }

cd "$root"
export ISP_MUTANTS_BUILD=$build ISP_MUTANTS_UNBUILT=$build/mutants-unbuilt.txt
: >"$ISP_MUTANTS_UNBUILT"
status=0
python3 "$tool" "$list" --timeout 900 -- '
    if ! cmake --build "$ISP_MUTANTS_BUILD" >/dev/null 2>&1; then
        git diff -U0 | grep "^[-+][^-+]" >>"$ISP_MUTANTS_UNBUILT"; exit 1
    fi
    ctest --test-dir "$ISP_MUTANTS_BUILD" -j"$(nproc)" --timeout 120 >/dev/null 2>&1' || status=$?
if [ -s "$ISP_MUTANTS_UNBUILT" ]; then
    echo "planted faults that do not build (counted as killed above):"
    cat "$ISP_MUTANTS_UNBUILT"
fi
exit $status
