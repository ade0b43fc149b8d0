#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz harnesses from a case directory (the sample case).

    fuzz/make_seeds.py CASE_DIR OUTPUT_DIR

OUTPUT_DIR/converters: every register and pattern file of the case's first frame as it is.
OUTPUT_DIR/case_loader: for each module, its partition 0 file (channel 0) behind the two
    harness bytes: the module's position in modules/modules.def, then the grid and channel
    byte (0: one partition and channel; 7: 2x2 partitions and two channels).
OUTPUT_DIR/fixed_point: a value as four little-endian bytes followed by a format string, for
    the usual formats and a few odd ones.
"""

import os
import re
import struct
import sys

HERE = os.path.dirname(os.path.abspath(__file__))

FORMATS = ["s3.8", "S3.8", "u1.0", "u12", "u1.7", "s12", "s0.0", "3.8", "u4.8", "u14.6",
           "s2.10", "u16.0", "u32", "s31", "u0.31", "s1.32", "..", "", "u12345678901234567890",
           "s1.2.3.4"]
VALUES = [0, 1, -1, 255, -256, 300, 3000, -3000, 0x7FFFFFFF, -0x80000000]


def module_rows():
    """The columns of every module row of the module table, by name, in catalogue order."""
    text = open(os.path.join(HERE, "..", "modules", "modules.def")).read()
    rows = []
    for body in re.findall(r'^ISP_MODULE\(\w+,(.*?)\)$', text, re.M | re.S):
        columns = re.findall(r'\.(\w+) = ("[^"]*"|\{[^}]*\}|[^,]+)', body)
        rows.append({name: value.strip() for name, value in columns})
    return rows


def module_patterns():
    """(position, pattern, kind) of every module row, in catalogue order."""
    return [(i, row["file"].strip('"'), row["kind"]) for i, row in enumerate(module_rows())]


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    case, out = sys.argv[1], sys.argv[2]
    for sub in ("converters", "case_loader", "fixed_point"):
        os.makedirs(os.path.join(out, sub), exist_ok=True)

    frame = os.path.join(case, "cfgs", "f0")
    sources = [os.path.join(frame, name) for name in sorted(os.listdir(frame))]
    sources += [os.path.join(case, name) for name in sorted(os.listdir(case))
                if name.endswith(".json")]
    for path in sources:
        with open(path, "rb") as src, \
                open(os.path.join(out, "converters", os.path.basename(path)), "wb") as dst:
            dst.write(src.read())

    for position, pattern, kind in module_patterns():
        if kind == "channelled":
            path = pattern % (case, 0, 0, 0)
        elif kind == "pattern":
            path = pattern % (case, 0)
        else:
            path = pattern % (case, 0, 0)
        with open(path, "rb") as src:
            text = src.read()
        for grid in (0, 7):
            name = "%02d_%d_%s" % (position, grid, os.path.basename(path))
            with open(os.path.join(out, "case_loader", name), "wb") as dst:
                dst.write(bytes([position, grid]) + text)

    for i, value in enumerate(VALUES):
        for j, fmt in enumerate(FORMATS):
            with open(os.path.join(out, "fixed_point", "%02d_%02d" % (i, j)), "wb") as dst:
                dst.write(struct.pack("<i", value) + fmt.encode())


if __name__ == "__main__":
    main()
