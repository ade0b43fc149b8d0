#!/usr/bin/env python3
"""Writes the sample case of isp-case: register files for all 34 JSON modules.

Two frames (f0, f1), a 2x2 partition grid over a 1920x1080 picture, two channels for the
channelled blocks (blc, dpc, bl_det) and the four pattern files of ainr. The blocks that have a
register map get neutral but realistic settings: unit gains, zero black-level offsets, identity
colour-correction matrices, a BT.709 RGB to YCbCr conversion, an sRGB gamma curve, a radial
lens-shading mesh and a logarithmic compression curve with its inverse. Frames differ only in
their dither seeds, as consecutive frames of a real capture do. The blocks without a register map
get their top key with an empty object.

The settings below are real values of the driver structures' members, named as the block tables
(convert/<block>/<block>.def) name them; the tables give every member's register path and
format, so the register files are written from the tables and this script spells no register
key. Each value is written as the hardware model writes it, the register's integer before
encoding: for a "u4.8" field 1.0 becomes 256. The files of every module's register file pattern
in modules/modules.def are written. The output is deterministic, so regenerating gives the same
bytes:

    python3 examples/make_sample_case.py [OUTPUT_DIR]     (default: examples/sample_case)
"""

import math
import os
import re
import shutil
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.join(HERE, "..")

WIDTH, HEIGHT = 1920, 1080
GRID_H, GRID_V = 2, 2
CHANNELS = 2
FRAMES = 2
PART_W, PART_H = WIDTH // GRID_H, HEIGHT // GRID_V


# ---- the tables -------------------------------------------------------------------------
def module_rows():
    """The columns of every module row of modules/modules.def, by name, in catalogue order."""
    text = open(os.path.join(ROOT, "modules", "modules.def")).read()
    rows = []
    for body in re.findall(r'^ISP_MODULE\(\w+,(.*?)\)$', text, re.M | re.S):
        columns = re.findall(r'\.(\w+) = ("[^"]*"|\{[^}]*\}|[^,]+)', body)
        rows.append({name: value.strip().strip('"') for name, value in columns})
    return rows


def block_rows(block):
    """(member, element, path, fraction bits) of every read and table row of a block, in order."""
    text = open(os.path.join(ROOT, "convert", block, block + ".def")).read()
    rows = []
    for kind, args in re.findall(r'^ISP_(READ|TABLE)\((.*)\)$', text, re.M):
        if kind == "READ":
            _, member, element, path, fmt = [a.strip() for a in args.split(",")]
        else:
            _, member, path, fmt = [a.strip() for a in args.split(",")]
            element = "k"
        fraction = fmt.strip('"').split(".")
        rows.append((member, element, path.strip('"'), int(fraction[1]) if len(fraction) > 1 else 0))
    return rows


def indices(key):
    """The key of a path piece and the indices it reads: "grp0[0..6]" -> grp0, 0..6."""
    m = re.match(r'(.*)\[(\d+)(?:\.\.(\d+))?\]$', key)
    if not m:
        return key, None
    first = int(m.group(2))
    return m.group(1), range(first, int(m.group(3) or first) + 1)


def first_element(element):
    """The element a row writes first in partition 0."""
    return eval(element, {"k": 0, "per_part": 0})


def register_file(block, values):
    """The register file of one partition: the fields of every row, at the row's path, from
    the member values (a number, or a list by element; a per-partition member's value is the
    partition's). Registers and fields come in the order of the members in `values`, each
    member's in the order of its elements; members without a value are left out of the file."""
    regs = {}
    for name, value in values.items():
        mine = [row for row in block_rows(block) if row[0] == name]
        for member, element, path, fraction in sorted(mine, key=lambda row: first_element(row[1])):
            keys = re.split(r"\.(?![^\[]*\])", path)  # a range's full stops are not separators
            first, index = indices(keys[0])
            for k in index if index is not None else [0]:
                at = eval(element, {"k": k, "per_part": 0})
                code = int(round((value[at] if isinstance(value, list) else value) * (1 << fraction)))
                if len(keys) == 1:  # a table of raw numbers under the top key
                    regs.setdefault(first, []).append(code)
                    continue
                holder = regs.setdefault(first, [] if index is not None else {})
                if index is not None:
                    while len(holder) <= k:
                        holder.append({})
                    holder = holder[k]
                for key in keys[1:-1]:
                    holder = holder.setdefault(key, {})
                holder[keys[-1]] = code
    return {"isp_" + block: regs}


# ---- settings ---------------------------------------------------------------------------
def partitions():
    """(index, column, row) in the library's raster order: rows outer, columns inner."""
    index = 0
    for row in range(GRID_V):
        for col in range(GRID_H):
            yield index, col, row
            index += 1


def dither_seeds(frame, salt):
    """A 16-bit and a 15-bit seed that change from frame to frame."""
    value = (0x9E37 * (frame + 1) + salt * 0x3C6F) & 0xFFFF
    return value, (value * 7 + 0x1234) & 0x7FFF


def wbc(frame, col, row, channel):
    return {"bayer_pattern": 0, "offset_in": 0, "offset_out": 0, "d_gain": 1.0,
            "wb_gain": [1.0] * 4, "clip_level": 1023.0}


def blc(frame, col, row, channel):
    knots = [18.0 * e for e in range(15)]  # identity: y = x, slope 1.0
    seed16, seed15 = dither_seeds(frame, 1 + channel)
    return {
        "bayer_patten": 0, "dgain": 1.0, "dither_enable": 1, "dither_seed_enable": 1,
        "dither_pmask": [0xFFFF, 0x7FFF], "dither_seed": [seed16, seed15],
        "sbl_corr_enable": 0, "gbl_corr_enable": 1, "lin_enable": 0, "offset_out": 0,
        "sbl_val": [0] * 4, "gbl_val": [0] * 4,
        "lin_lut_x": knots,
        "lin_lut_y": [knots[e] for e in range(15) for _ in range(4)],  # knot-major
        "lin_lut_slope": [1.0] * 64,
    }


def dpc(frame, col, row, channel):
    return {
        "pic_size_h": PART_W, "pic_size_v": PART_H, "pic_blank_h": 64,
        "hdr_dgst_en": 0, "wdma_err_ctrl": 0, "rdma_err_ctrl": 0, "sbpc_table_type": 0,
        "bayer_pat": 0, "dma_burst_len_rd": 2, "sbpc_load": 0, "dummy_wr_val": 0,
        "sbpc_qos_thr": 8, "sbpc_qos_low": 4, "sbpc_qos_high": 12,
        "sbpc_pos_base_h_addr": 0, "sbpc_pos_base_l_addr": 0, "sbpc_pos_length": 0,
        "quick_det_enable": 1, "calc_limit_enable": 1, "dp_det_mode": 0, "static_enable": 0,
        "quick_det_th_offset": 4.0, "quick_det_th_max": 64.0, "quick_det_th_slope": 0.5,
        "dp_det_th_ratio": 0.5, "dp_det_m2": 1.5, "dp_det_m1": 2.0,
        "dp_cor_m5": 1.0, "dp_cor_m4": 0.5, "dp_cor_m3": 0.5,
        "wb_gain": [1.0, 1.0], "inv_wb_gain": [1.0, 1.0],
        "margin_u": [10.0] * 3, "margin_l": [10.0] * 3,
        "noise_lut": [2.0 + k for k in range(9)],
        "offset_out": 0, "offset_in": 0,
        "dp_cor_ch_mode": 0, "dp_cor_clip_ratio": 0.5, "dp_cor_dir_wt_r2": 1.0,
        "color_limit_ratio": [1.0] * 3,
    }


MESH_COLS, MESH_ROWS = 19, 15  # 285 nodes per Bayer channel
CELL_W = math.ceil(WIDTH / (MESH_COLS - 1))
CELL_H = math.ceil(HEIGHT / (MESH_ROWS - 1))


def lsc_mesh(falloff):
    """Gain 1.0 (4096) in the centre rising with the squared distance to the corners."""
    values = []
    for r in range(MESH_ROWS):
        for c in range(MESH_COLS):
            dx = (c * CELL_W - WIDTH / 2) / (WIDTH / 2)
            dy = (r * CELL_H - HEIGHT / 2) / (WIDTH / 2)
            values.append(int(round(4096 * (1.0 + falloff * (dx * dx + dy * dy)))))
    return values


def lsc(frame, col, row, channel):
    x0, y0 = col * PART_W, row * PART_H
    start_x, start_y = x0 // CELL_W, y0 // CELL_H
    return {
        "offset_in": 0, "offset_out": 0, "bayer_pattern": 0,
        "img_size_v": PART_H, "img_size_h": PART_W,
        "mesh_length_h": CELL_H, "mesh_length_w": CELL_W,
        "inv_mesh_length_h": 1.0 / CELL_H, "inv_mesh_length_w": 1.0 / CELL_W,
        # the partition's first cell is cut where the partition starts inside it
        "inv_mesh_length_str.h": 1.0 / ((start_y + 1) * CELL_H - y0),
        "inv_mesh_length_str.w": 1.0 / ((start_x + 1) * CELL_W - x0),
        "locat.y": y0, "locat.x": x0,
        "mesh_start.y": start_y, "mesh_start.x": start_x,
        "mesh_end.y": min((y0 + PART_H - 1) // CELL_H + 1, MESH_ROWS - 1),
        "mesh_end.x": min((x0 + PART_W - 1) // CELL_W + 1, MESH_COLS - 1),
        "rr_mesh": lsc_mesh(0.45), "gr_mesh": lsc_mesh(0.35), "gb_mesh": lsc_mesh(0.35),
        "bb_mesh": lsc_mesh(0.40),
    }


def dem(frame, col, row, channel):
    return {
        "clkgt_enable": 0xFFFF, "debug_en": 0, "wb_stat_enable": 1,
        "wb_stat_roi.top": 0, "wb_stat_roi.bottom": PART_H - 1,
        "wb_stat_roi.left": 0, "wb_stat_roi.right": PART_W - 1,
        "wb_stat_mesh_block_start": [0, 0], "wb_stat_mesh_pos_start": [0, 0],
        "wb_stat_slice_level": 255.0, "wb_stat_slice_sat_tp": 1,
        "wb_stat_mesh_shape": [PART_W // 16, PART_H // 16],
        "wbc_enable": 0, "wbc_mesh_block_start": [0, 0], "wbc_mesh_phase_start": [0, 0],
        "wbc_mesh_pos_start": [0, 0], "wbc_mesh_step": [16.0 / PART_W, 16.0 / PART_H],
        "gic_enable": 1, "grad_h_enable": 1, "gclip_level": 0.5,
        "edge_enhance_enable": 1, "edge_enhance_ghv_level": 1.0, "edge_enhance_gpn_level": 1.0,
        "edge_enhance_ghv_corner_min": 0.125, "edge_enhance_ghv_corner_slope": 1.0,
        "edge_enhance_ghv_corner_offset": 0, "fc_cor0_enable": 1,
        "offset_in": 0, "offset_out": 0, "bayer_pattern": 0,
        "img_size_hsize": PART_W, "img_size_vsize": PART_H,
        "pre_gamma_enable": 0, "mode": 0, "post_gamma_enable": 0,
        "gradf_ratio": 0.5, "grad_hh_level": 1.0,
        "ginterp_hf_ratio_x": 0.5, "ginterp_hf_ratio_pn": 0.5, "ginterp_hf_ratio_hv": 0.5,
        "wbc_gain_lut_r": [1.0] * 64, "wbc_gain_lut_g": [1.0] * 64, "wbc_gain_lut_b": [1.0] * 64,
        "gic_strength_lut": [0.5] * 9,
        "gic_ct": [8.0 * k for k in range(9)] + [8.0 * k + 4 for k in range(9)],
        "edge_enhance_level_lut": [1.0] * 18,
        "fc_cor1_limit": 32.0, "fc_cor1_gain_safe": 1.0, "fc_cor1_gain": 1.0, "fc_cor1_th": 2.0,
        "fc_cor2_inv_base_sat_level": 0.25, "fc_cor2_ratio_limit": [1.0, 1.0],
        "sw_rd": 0, "sw_clr": 0,
        "inv_noise_lut": [1.0 / (1 + k) for k in range(9)],
        "gic_limit": [16.0] * 9,
        "fc_cor_sat_lut": [16.0 * k for k in range(9)],
    }


def clc(frame, col, row, channel):
    # each matrix is 3 rows of (r, g, b, offset), the identity
    identity = [1.0 if k in (0, 5, 10) else 0 for k in range(12)]
    return {
        "manual_clk_en": 0, "part_size_h": PART_W, "part_size_v": PART_H,
        "offset_out": 0, "offset_in": 0, "mode": 0,
        "hr_lpf": [0, 0, 1.0, 0, 0],  # pass-through filter
        "sat_mit_enable": 0, "matrix_list": identity * 8,
        "sat_mit_ratio_lower_lut": [1.0] * 8, "sat_mit_ratio_upper_lut": [1.0] * 8,
        # knees on the identity line
        "sat_mit_lower_lut_x": [16.0 * i for i in range(8)],
        "sat_mit_lower_lut_y": [16.0 * i for i in range(8)],
        "sat_mit_upper_lut_x": [36.0 * i for i in range(8)],
        "sat_mit_upper_lut_y": [36.0 * i for i in range(8)],
        "sat_mit_lower_lut_slope": [1.0] * 9, "sat_mit_upper_lut_slope": [1.0] * 9,
    }


def srgb(linear):
    if linear <= 0.0031308:
        return 12.92 * linear
    return 1.055 * linear ** (1 / 2.4) - 0.055


def gamma(frame, col, row, channel):
    seed16, seed15 = dither_seeds(frame, 7)
    return {
        "range_adjust_enable": 0, "mode": 0, "dither_enable": 1, "dither_seed_enable": 1,
        "dither_pmask": [0xFFFF, 0x7FFF], "dither_seed": [seed16, seed15],
        "offset_out": 0, "offset_in": 0,
        "gam_lut": [255.0 * srgb(i / 128.0) for i in range(129)],
    }


def csc(frame, col, row, channel):
    # BT.709 full range; chroma centred on 128
    return {
        "cg_bypass": 0, "uv_seq_sel": 0,
        "matrix": [0.2126, 0.7152, 0.0722, -0.1146, -0.3854, 0.5, 0.5, -0.4542, -0.0458],
        "decimation_h": [0, -2 / 32, 9 / 32, 18 / 32, 9 / 32, -2 / 32, 0],  # half-band, sum 1
        "decimation_v": [0.5, 0.5], "input_type": 0, "output_type": 1,
        "offset_out": [0, 128.0, 128.0], "offset_in": [0, 0, 0],
    }


COMPRESSION = 255.0  # mu-law style: y = log(1 + mu x) / log(1 + mu)


def hdrc(frame, col, row, channel):
    seed0, seed1 = dither_seeds(frame, 11)
    return {
        "manual_clk_en": 0, "bayer_pat": 0, "dither_seed_enable": 1, "dither_enable": 1,
        "affine_k": 1.0, "clip_level": 1023.0, "offset_in": [0] * 4, "offset_out": 0,
        "dither_seed": [seed0, seed1], "dither_pmask_16bit": 0xFFFF,
        "dither_pmask_15bit": 0x7FFF, "lut_max": 1023.0,
        "hdrc_lut": [int(round(65535 * math.log1p(COMPRESSION * i / 256) /
                               math.log1p(COMPRESSION))) for i in range(257)],
    }


def hidrc(frame, col, row, channel):
    return {
        "affine_k": 1.0, "lut_inv_mode": 1, "offset_in": 0, "offset_out": [0] * 4,
        # the inverse curve back to 20 bits
        "hidrc_lut": [int(round(0xFFFFF * math.expm1(math.log1p(COMPRESSION) * i / 512) /
                                COMPRESSION)) for i in range(513)],
    }


# The blocks whose register map is not defined yet read nothing: their files hold the top key
# with an empty object.
SETTINGS = {"wbc": wbc, "blc": blc, "dpc": dpc, "lsc": lsc, "dem": dem, "clc": clc,
            "gamma": gamma, "csc": csc, "hdrc": hdrc, "hidrc": hidrc}


# ---- writing ----------------------------------------------------------------------------
def inline(value):
    if isinstance(value, dict):
        return "{" + ", ".join('"%s": %s' % (k, inline(v)) for k, v in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ", ".join(inline(v) for v in value) + "]"
    return str(value)


def to_json(value, indent=0):
    """Anything that fits a line of 100 characters on one line, arrays of numbers always,
    everything else one item a line, in the style of the hardware model's dumps."""
    pad = "  " * indent
    flat = inline(value)
    numbers = isinstance(value, list) and all(isinstance(v, int) for v in value)
    if numbers or not isinstance(value, (dict, list)) or len(pad) + len(flat) <= 96:
        return flat
    if isinstance(value, dict):
        items = ['%s  "%s": %s' % (pad, key, to_json(item, indent + 1))
                 for key, item in value.items()]
        return "{\n" + ",\n".join(items) + "\n" + pad + "}"
    items = [pad + "  " + to_json(item, indent + 1) for item in value]
    return "[\n" + ",\n".join(items) + "\n" + pad + "]"


def write(path, document):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="ascii", newline="\n") as out:
        out.write(to_json(document) + "\n")


def main(argv):
    out = argv[1] if len(argv) > 1 else os.path.join(HERE, "sample_case")
    if os.path.isdir(os.path.join(out, "cfgs")):
        shutil.rmtree(os.path.join(out, "cfgs"))
    files = {}  # every register file pattern once, with its block and kind
    for row in module_rows():
        files.setdefault(row["file"], (row["block"], row.get("kind", "generic")))
    for pattern, (block, kind) in sorted(files.items(), key=lambda item: item[1][0]):
        settings = SETTINGS.get(block, lambda frame, col, row, channel: {})
        for index, col, row in partitions():
            if kind == "pattern":  # one file per partition, beside the frames
                write(pattern % (out, index), register_file(block, {}))
                continue
            for frame in range(FRAMES):
                for channel in range(CHANNELS if kind == "channelled" else 1):
                    where = (out, frame, index, channel)[:4 if kind == "channelled" else 3]
                    write(pattern % where,
                          register_file(block, settings(frame, col, row, channel)))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
