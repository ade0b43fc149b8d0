#!/usr/bin/env bash
# What dumps take on disk with the store of distinct structures:
#
#   scripts/store-size.sh [CASES] [FRAMES]     default 40 cases of 4 frames
#
# 1. `replay --dump` of the sample case for 10 and for 2,000 frames (the case holds f0 and f1:
#    frames 2 and on read f1 again): `du -sb`, files, and the manifest's size.
# 2. A suite of CASES copies of the sample case, each with FRAMES frame directories made from f1
#    with the white-balance digital gain changed per case and per frame (every case programs
#    something of its own in every frame), replayed two at a time into DIR/<case>/ sharing one
#    store in DIR, as a baseline keeps them: raw-only, then with the decoded files.
# The build is BUILD_DIR (default build/), which must hold tools/isp-case.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cases=${1:-40}
frames=${2:-4}
build=$(realpath -m "${BUILD_DIR:-$root/build}")
tool=$build/tools/isp-case
[ -x "$tool" ] || { echo "store-size.sh: $tool not built" >&2; exit 2; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

size() {  # DIR LABEL: bytes and files
    printf '%-34s %10s bytes %6s files\n' "$2" "$(du -sb "$1" | cut -f1)" \
        "$(find "$1" -type f | wc -l)"
}

for n in 10 2000; do
    "$tool" replay "$root/examples/sample_case" --frames "$n" -q --dump "$work/sample-$n" >/dev/null
    size "$work/sample-$n" "sample case, $n frames"
    printf '%-34s %10s bytes\n' "  its manifest.json" "$(stat -c %s "$work/sample-$n/manifest.json")"
done

python3 - "$root/examples/sample_case" "$work/suite" "$cases" "$frames" <<'EOF'
import json, os, shutil, sys
sample, suite, cases, frames = sys.argv[1], sys.argv[2], int(sys.argv[3]), int(sys.argv[4])
for c in range(cases):
    case = os.path.join(suite, f"case{c:02}")
    shutil.copytree(sample, case)
    for f in range(1, frames):
        target = os.path.join(case, "cfgs", f"f{f}")
        if f > 1:
            shutil.copytree(os.path.join(case, "cfgs", "f1"), target)
        for name in sorted(os.listdir(target)):
            if name.startswith("rtl_wbc_p"):
                path = os.path.join(target, name)
                with open(path) as file:
                    root = json.load(file)
                root["isp_wbc"]["d_gain"]["val"] = 256 + 4 * c + f
                with open(path, "w") as file:
                    json.dump(root, file, indent=2)
EOF

for kind in raw-only decoded; do
    base=$work/base-$kind
    extra=$([ "$kind" = raw-only ] && echo --raw-only || true)
    ls "$work/suite" | xargs -P 2 -I{} "$tool" replay "$work/suite/{}" --frames "$frames" -q \
        --dump "$base/{}" --store "$base" $extra >/dev/null
    size "$base" "$cases cases x $frames frames, $kind"
done
