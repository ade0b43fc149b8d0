#!/usr/bin/env bash
# Renders the report page of the sample case in headless Chromium, saves a screenshot and checks
# that the picture is not blank. Run by hand (it installs Chromium when missing, which CI should
# not download): scripts/report-smoke.sh [OUTPUT_DIR], default build/report-smoke. With
# SCREENSHOT=docs/report.png it also refreshes the screenshot of the documentation.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
build=$(realpath -m "$build")  # the presets run from the project root
out=$(mkdir -p "${1:-$build/report-smoke}" && cd "${1:-$build/report-smoke}" && pwd)

"$root/scripts/deps.sh" build report
(cd "$root" && cmake --preset native -B "$build") >/dev/null
cmake --build "$build" --target isp-case -j2 >/dev/null
tool="$build/tools/isp-case"

rm -rf "$out/dump"
(cd "$root" && "$tool" replay examples/sample_case --dump "$out/dump" >/dev/null)
"$tool" report "$out/dump" -o "$out/report.html"

# a fresh profile and no network: the page must draw from its own bytes
chromium --headless --no-sandbox --disable-gpu --hide-scrollbars --no-first-run \
    --user-data-dir="$out/profile" --proxy-server=127.0.0.1:9 --window-size=1280,1800 \
    --screenshot="$out/report.png" "file://$out/report.html" >/dev/null 2>&1
[ -s "$out/report.png" ] || { echo "report-smoke: no screenshot written" >&2; exit 1; }

# blank means one colour: count the distinct colours of the screenshot
colours=$(python3 - "$out/report.png" <<'PY'
import struct, sys, zlib
data = open(sys.argv[1], "rb").read()
pos, chunks, width, height, kind = 8, [], 0, 0, 0
while pos < len(data):
    length, tag = struct.unpack(">I4s", data[pos:pos + 8])
    body = data[pos + 8:pos + 8 + length]
    if tag == b"IHDR":
        width, height, depth, kind = struct.unpack(">IIBB", body[:10])
    elif tag == b"IDAT":
        chunks.append(body)
    pos += 12 + length
raw = zlib.decompress(b"".join(chunks))
bpp = {2: 3, 6: 4}[kind]  # 8-bit RGB or RGBA
stride = width * bpp
prior, colours = bytearray(stride), set()
for row in range(height):
    kind_of_filter, line = raw[row * (stride + 1)], bytearray(raw[row * (stride + 1) + 1:(row + 1) * (stride + 1)])
    for i in range(stride):
        left = line[i - bpp] if i >= bpp else 0
        up, corner = prior[i], prior[i - bpp] if i >= bpp else 0
        if kind_of_filter == 1: line[i] = (line[i] + left) & 255
        elif kind_of_filter == 2: line[i] = (line[i] + up) & 255
        elif kind_of_filter == 3: line[i] = (line[i] + (left + up) // 2) & 255
        elif kind_of_filter == 4:
            p = left + up - corner
            pa, pb, pc = abs(p - left), abs(p - up), abs(p - corner)
            line[i] = (line[i] + (left if pa <= pb and pa <= pc else up if pb <= pc else corner)) & 255
    colours.update(bytes(line[i:i + 3]) for i in range(0, stride, bpp * 4))
    prior = line
print(len(colours))
PY
)
echo "report-smoke: $out/report.html ($(stat -c %s "$out/report.html") bytes), screenshot $out/report.png, $colours colours sampled"
[ "$colours" -ge 16 ] || { echo "report-smoke: the screenshot looks blank" >&2; exit 1; }
if [ -n "${SCREENSHOT:-}" ]; then cp "$out/report.png" "$root/$SCREENSHOT"; fi
