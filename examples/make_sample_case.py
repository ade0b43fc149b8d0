#!/usr/bin/env python3
"""Writes the sample case of isp-case: register files for all 34 JSON modules.

Two frames (f0, f1), a 2x2 partition grid over a 1920x1080 picture, two channels for the
channelled blocks (blc, dpc, bl_det) and the four pattern files of ainr. The blocks that have a
register map get neutral but realistic settings: unit gains, zero black-level offsets, identity
colour-correction matrices, a BT.709 RGB to YCbCr conversion, an sRGB gamma curve, a radial
lens-shading mesh and a logarithmic compression curve with its inverse. Frames differ only in
their dither seeds, as consecutive frames of a real capture do. The blocks without a register map
get their top key with an empty object.

Every value is the register's integer as the hardware model writes it, before encoding: for a
"u4.8" field 256 means 1.0. The output is deterministic, so regenerating gives the same bytes:

    python3 examples/make_sample_case.py [OUTPUT_DIR]     (default: examples/sample_case)
"""

import math
import os
import shutil
import sys

WIDTH, HEIGHT = 1920, 1080
GRID_H, GRID_V = 2, 2
CHANNELS = 2
FRAMES = 2
PART_W, PART_H = WIDTH // GRID_H, HEIGHT // GRID_V

# Blocks whose register map is not defined yet: their converters read nothing.
UNMAPPED_BLOCKS = [
    "hdr", "raw2dnr", "lce", "rltm", "dehaze", "y2dnr", "yuv3dnr", "pfd",
    "ae_stat", "awb_stat", "af_stat", "eis_pre", "eis_post", "ifa",
]


def partitions():
    """(index, column, row) in the library's raster order: rows outer, columns inner."""
    index = 0
    for row in range(GRID_V):
        for col in range(GRID_H):
            yield index, col, row
            index += 1


def fixed(value, fraction_bits):
    """The register integer of a real value in a format with that many fraction bits."""
    return int(round(value * (1 << fraction_bits)))


def dither_seeds(frame, salt):
    """A 16-bit and a 15-bit seed that change from frame to frame."""
    value = (0x9E37 * (frame + 1) + salt * 0x3C6F) & 0xFFFF
    return value, (value * 7 + 0x1234) & 0x7FFF


# ---- white balance gain ------------------------------------------------------------------
def wbc(frame, col, row):
    return {"isp_wbc": {
        "bayer_pattern": {"val": 0},
        "offset_in": {"val": 0},
        "offset_out": {"val": 0},
        "d_gain": {"val": fixed(1.0, 8)},
        # the four gains live in two registers named after their first element
        "wb_gain0": {"val0": fixed(1.0, 8), "val1": fixed(1.0, 8)},
        "wb_gain2": {"val2": fixed(1.0, 8), "val3": fixed(1.0, 8)},
        "clip_level": {"val": fixed(1023.0, 6)},
    }}


# ---- black level and linearisation ------------------------------------------------------
def blc(frame, col, row, channel=0):
    knots = [fixed(18.0 * e, 6) for e in range(15)]  # identity: y = x, slope 1.0
    seed16, seed15 = dither_seeds(frame, 1 + channel)
    regs = {
        "bayer": {"patten": 0},  # the block's own spelling
        "dgain": {"val": fixed(1.0, 8)},
        "dither": {"enable": 1, "seed_enable": 1},
        "dither_pmask": {"val15": 0x7FFF, "val16": 0xFFFF},
        "dither_seed": {"val15": seed15, "val16": seed16},
        "blc": {"sbl_corr_enable": 0, "gbl_corr_enable": 1, "lin_enable": 0},
        "offset": {"out": 0},
        "grp9": [{"sbl_val": {"value": 0}} for _ in range(4)],
        "grp10": [{"gbl_val": {"value": 0}} for _ in range(4)],
        "grp0": [{"lin_lut_x": {"low": knots[k], "high": knots[k + 7]}} for k in range(7)],
        "lin_lut_x_14": {"low": knots[14]},
    }
    for c in range(4):
        regs["grp%d" % (1 + c)] = [
            {"lin_lut_y%d" % c: {"low": knots[k], "high": knots[k + 7]}} for k in range(7)]
        regs["lin_lut_y%d_14" % c] = {"low": knots[14]}
        regs["grp%d" % (5 + c)] = [
            {"lin_lut_slope%d" % c: {"value": fixed(1.0, 8)}} for _ in range(16)]
    return {"isp_blc": regs}


# ---- defect pixel correction ------------------------------------------------------------
def dpc(frame, col, row, channel=0):
    noise = [fixed(2.0 + k, 6) for k in range(9)]
    return {"isp_dpc": {
        "pic_size": {"h": PART_W, "v": PART_H},
        "pic_blank": {"h": 64},
        "bpc_hw_cfg": {"hdr_dgst_en": 0, "wdma_err_ctrl": 0, "rdma_err_ctrl": 0,
                       "sbpc_table_type": 0, "bayer_pat": 0},
        "dma_burst_len": {"rd": 2},
        "bpc_osd_num": {"sbpc_load": 0},
        "dummy_wr": {"val": 0},
        "qos_ctrl": {"sbpc_qos_thr": 8, "sbpc_qos_low": 4, "sbpc_qos_high": 12},
        "sbpc_pos_base_h": {"addr": 0},
        "sbpc_pos_base_l": {"addr": 0},
        "sbpc_pos": {"length": 0},
        "bpc_ctrl": {"quick_det_enable": 1, "calc_limit_enable": 1, "bp_det_mode": 0,
                     "static_enable": 0},
        "quick_det_th": {"offset": fixed(4.0, 6), "max": fixed(64.0, 6)},
        "quick_det_th_slope": {"val": fixed(0.5, 4)},
        "bp_det": {"th_ratio": fixed(0.5, 6), "m2": fixed(1.5, 8), "m1": fixed(2.0, 4)},
        "bp_cor_m": {"val5": fixed(1.0, 4), "val4": fixed(0.5, 7), "val3": fixed(0.5, 7)},
        "wb_gain": {"val0": fixed(1.0, 4), "val1": fixed(1.0, 4)},
        "inv_wb_gain": {"val0": fixed(1.0, 7), "val1": fixed(1.0, 7)},
        "margin_u0": {"val0": fixed(10.0, 6), "val1": fixed(10.0, 6)},
        "margin_u1": {"val2": fixed(10.0, 6)},
        "margin_l0": {"val0": fixed(10.0, 6), "val1": fixed(10.0, 6)},
        "margin_l1": {"val2": fixed(10.0, 6)},
        "noise_lut_grp": [{"noise_lut_even": {"val": noise[2 * k]},
                           "noise_lut_odd": {"val": noise[2 * k + 1]}} for k in range(4)],
        "noise_lut_lst": {"val": noise[8]},
        "bp_offset": {"val0": 0, "val1": 0},
        "bp_cor": {"ch_mode": 0, "clip_ratio": fixed(0.5, 6), "dir_wt_r2": fixed(1.0, 4)},
        "color_limit_ratio": {"val0": fixed(1.0, 7), "val1": fixed(1.0, 7),
                              "val2": fixed(1.0, 7)},
    }}


# ---- lens shading -----------------------------------------------------------------------
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


def inverse_u1_22(length):
    return int(round((1 << 22) / length))


def lsc(frame, col, row):
    x0, y0 = col * PART_W, row * PART_H
    start_x, start_y = x0 // CELL_W, y0 // CELL_H
    end_x = min((x0 + PART_W - 1) // CELL_W + 1, MESH_COLS - 1)
    end_y = min((y0 + PART_H - 1) // CELL_H + 1, MESH_ROWS - 1)
    return {"isp_lsc": {
        "offset_in": {"dt": 0},
        "offset_out": {"dt": 0},
        "bayer_pattern": {"mode ": 0},  # the key carries a trailing blank
        "img_size": {"v": PART_H, "h": PART_W},
        "mesh_length": {"h": CELL_H, "w": CELL_W},
        "inv_mesh_length_h": {"h": inverse_u1_22(CELL_H)},
        "inv_mesh_length_w": {"w": inverse_u1_22(CELL_W)},
        # the partition's first cell is cut where the partition starts inside it
        "inv_mesh_length_str_h": {"h": inverse_u1_22((start_y + 1) * CELL_H - y0)},
        "inv_mesh_length_str_w": {"w": inverse_u1_22((start_x + 1) * CELL_W - x0)},
        "locat": {"y": y0, "x": x0},
        "mesh_start": {"y": start_y, "x": start_x},
        "mesh_end": {"y": end_y, "x": end_x},
        "rr_mesh": lsc_mesh(0.45),
        "gr_mesh": lsc_mesh(0.35),
        "gb_mesh": lsc_mesh(0.35),
        "bb_mesh": lsc_mesh(0.40),
    }}


# ---- demosaic ---------------------------------------------------------------------------
def lut9(registers, values, fields=("lut0", "lut1")):
    """A nine-entry table over five registers of two fields, the last with "lut0" only."""
    out = {}
    for i, name in enumerate(registers):
        out[name] = {fields[j]: values[2 * i + j] for j in range(2) if 2 * i + j < 9}
    return out


def unit_gain_lut(register):
    """16 registers of four gains of 1.0 ("u1.7")."""
    return [{register: {"lut%d" % j: fixed(1.0, 7) for j in range(4)}} for _ in range(16)]


def dem(frame, col, row):
    regs = {
        "clkgt_enable": {"en": 0xFFFF},
        "misc_ctrl": {"debug_en": 0},
        "wb_stat_ctrl": {"enable": 1},
        "wb_stat_roi0": {"top": 0, "bottom": PART_H - 1},
        "wb_stat_roi1": {"left": 0, "right": PART_W - 1},
        "wb_stat_mesh_block": {"start0": 0, "start1": 0},
        "wb_stat_mesh_pos": {"start0": 0, "start1": 0},
        "wb_stat_slice": {"level": fixed(255.0, 4)},
        "wb_stat_slice_sat": {"tp": 1},
        "wb_stat_mesh": {"shape0": PART_W // 16, "shape1": PART_H // 16},
        "wbc_ctrl": {"enable": 0},
        "wbc_mesh_block": {"start0": 0, "start1": 0},
        "wbc_mesh_phase": {"start0": 0, "start1": 0},
        "wbc_mesh_pos": {"start0": 0, "start1": 0},
        "wbc_mesh": {"step0": fixed(16.0 / PART_W, 14), "step1": fixed(16.0 / PART_H, 14)},
        "gic": {"enable": 1},
        "grad_h": {"enable": 1},
        "gclip": {"level": fixed(0.5, 4)},
        "edge_enhance_ctrl": {"enable": 1},
        "edge_enhance": {"ghv_level": fixed(1.0, 4), "gpn_level": fixed(1.0, 4)},
        "edge_enhance_ghv": {"corner_min": fixed(0.125, 8), "corner_slope": fixed(1.0, 4),
                             "corner_offset": 0},
        "fc_cor0": {"enable": 1},
        "offset": {"in": 0, "out": 0},
        "bayer": {"pattern": 0},
        "img_size": {"hsize": PART_W, "vsize": PART_H},
        "pre_gamma_ctrl": {"enable": 0},
        "dem": {"mode": 0},
        "post_gamma_ctrl": {"enable": 0},
        "gradf": {"ratio": fixed(0.5, 4)},
        "grad_hh": {"level": fixed(1.0, 2)},
        "ginterp_hf_ratio": {"x": fixed(0.5, 5), "pn": fixed(0.5, 5), "hv": fixed(0.5, 5)},
        "wbc_gain_lut_r": unit_gain_lut("wbc_gain_r"),
        "wbc_gain_lut_g": unit_gain_lut("wbc_gain_g"),
        "wbc_gain_lut_b": unit_gain_lut("wbc_gain_b"),
        "gic_strength0": {"lut%d" % j: fixed(0.5, 7) for j in range(4)},
        "gic_strength1": {"lut%d" % j: fixed(0.5, 7) for j in range(4)},
        "gic_strength2": {"lut0": fixed(0.5, 7)},
        "gic_ct_lut": [{"gic_ct": {"lut0": fixed(8.0 * k, 4), "lut1": fixed(8.0 * k + 4, 4)}}
                       for k in range(9)],
        "edge_enhance_level_lut": [{"edge_enhance_level": {"lut0": fixed(1.0, 4),
                                                           "lut1": fixed(1.0, 4)}}
                                   for _ in range(9)],
        "fc_cor1": {"limit": fixed(32.0, 4), "gain_safe": fixed(1.0, 2), "gain": fixed(1.0, 4),
                    "th": fixed(2.0, 4)},
        "fc_cor2": {"inv_base_sat_level": fixed(0.25, 8), "ratio_limit0": fixed(1.0, 8),
                    "ratio_limit1": fixed(1.0, 8)},
        "wb_stat_mem_ctrl": {"sw_rd": 0, "sw_clr": 0},
    }
    regs.update(lut9(["inv_noise%d" % i for i in range(5)],
                     [fixed(1.0 / (1 + k), 8) for k in range(9)]))
    regs.update(lut9(["gic_limit%d" % i for i in range(5)], [fixed(16.0, 4)] * 9))
    regs.update(lut9(["fc_cor_sat%d" % i for i in range(5)],
                     [fixed(16.0 * k, 4) for k in range(9)]))
    return {"isp_dem": regs}


# ---- colour correction ------------------------------------------------------------------
def clc(frame, col, row):
    # each matrix is 3 rows of (r, g, b, offset); identity on the diagonal, 1.0 = 256 in s3.8
    identity = [fixed(1.0, 8) if k in (0, 5, 10) else 0 for k in range(12)]
    matrix_list = [{"matrix_list%d" % n: {"val0": identity[k], "val1": identity[k + 6]}
                    for n in range(8)} for k in range(6)]
    lower = []  # knees (x, y) on the identity line, s8.4
    upper = []  # knees (x, y) on the identity line, x u9.4, y u8.4
    for i in range(8):
        lower += [fixed(16.0 * i, 4), fixed(16.0 * i, 4)]
        upper += [fixed(36.0 * i, 4), fixed(36.0 * i, 4)]
    unit = {"val%d" % j: fixed(1.0, 7) for j in range(4)}
    return {"isp_clc": {
        "clc_ctrl2": {"manual_clk_en": 0},
        "part_size": {"h": PART_W, "v": PART_H},
        "offset": {"val0": 0, "val1": 0},
        "clc_ctrl1": {"mode": 0},
        "hr_lpf0": {"val0": 0, "val1": 0, "val2": fixed(1.0, 7)},  # pass-through filter
        "hr_lpf1": {"val0": 0, "val1": 0},
        "clc_ctrl0": {"sat_mit_enable": 0},
        "matrix_list": matrix_list,
        "sat_mit_ratio_lower_lut0": dict(unit), "sat_mit_ratio_lower_lut1": dict(unit),
        "sat_mit_ratio_upper_lut0": dict(unit), "sat_mit_ratio_upper_lut1": dict(unit),
        "lower_lut": [{"sat_mit_lower_lut": v} for v in lower],
        "upper_lut": [{"sat_mit_upper_lut": v} for v in upper],
        "sat_mit_lower_lut_slope0": dict(unit), "sat_mit_lower_lut_slope1": dict(unit),
        "sat_mit_lower_lut_slope2": {"val0": fixed(1.0, 7)},
        "sat_mit_upper_lut_slope0": dict(unit), "sat_mit_upper_lut_slope1": dict(unit),
        "sat_mit_upper_lut_slope2": {"val0": fixed(1.0, 7)},
    }}


# ---- gamma ------------------------------------------------------------------------------
def srgb(linear):
    if linear <= 0.0031308:
        return 12.92 * linear
    return 1.055 * linear ** (1 / 2.4) - 0.055


def gamma(frame, col, row):
    curve = [fixed(255.0 * srgb(i / 128.0), 4) for i in range(129)]  # u8.4
    seed16, seed15 = dither_seeds(frame, 7)
    return {"isp_gamma": {
        "gamma": {"range_adjust_enable": 0, "mode": 0},
        "dither": {"enable": 1, "seed_enable": 1},
        "dither_pmask": {"val15": 0x7FFF, "val16": 0xFFFF},
        "dither_seed": {"val15": seed15, "val16": seed16},
        "gamma_offset": {"out": 0, "in": 0},
        "grp0": [{"gam_lut": {"low": curve[2 * k], "high": curve[2 * k + 1]}}
                 for k in range(64)],
        "gam_lut_65": {"low": curve[128]},
    }}


# ---- colour space conversion ------------------------------------------------------------
def csc(frame, col, row):
    # BT.709 full range, s2.10: 1.0 = 1024
    m = [[0.2126, 0.7152, 0.0722],
         [-0.1146, -0.3854, 0.5],
         [0.5, -0.4542, -0.0458]]
    c = {"m%d%d" % (r, k): fixed(m[r][k], 10) for r in range(3) for k in range(3)}
    taps = [0, -2, 9, 18, 9, -2, 0]  # s1.5 half-band chroma filter, sum 32 = 1.0
    return {"isp_csc": {
        "reg_csc_ctrl": {"cg_bypass": 0, "uv_seq_sel": 0},
        "reg_csc_matrix_gp0": {"m00": c["m00"], "m01": c["m01"]},
        "reg_csc_matrix_gp1": {"m02": c["m02"], "m10": c["m10"]},
        "reg_csc_matrix_gp2": {"m11": c["m11"], "m12": c["m12"]},
        "reg_csc_matrix_gp3": {"m20": c["m20"], "m21": c["m21"]},
        "reg_csc_matrix_gp4": {"m22": c["m22"]},
        "reg_csc_decimation_h01": {"val0": taps[0], "val1": taps[1]},
        "reg_csc_decimation_h23": {"val2": taps[2], "val3": taps[3]},
        "reg_csc_decimation_h45": {"val4": taps[4], "val5": taps[5]},
        "reg_csc_decimation_h6": {"val6": taps[6]},
        "reg_csc_decimation_v": {"val0": fixed(0.5, 1), "val1": fixed(0.5, 1)},
        "reg_csc_mode": {"in": 0, "out": 1},
        # chroma centred on 128, s8.2
        "reg_csc_offset_gp0": {"out": 0, "in": 0},
        "reg_csc_offset_gp1": {"out": fixed(128.0, 2), "in": 0},
        "reg_csc_offset_gp2": {"out": fixed(128.0, 2), "in": 0},
    }}


# ---- dynamic range compression ----------------------------------------------------------
COMPRESSION = 255.0  # mu-law style: y = log(1 + mu x) / log(1 + mu)


def hdrc(frame, col, row):
    curve = [int(round(65535 * math.log1p(COMPRESSION * i / 256) / math.log1p(COMPRESSION)))
             for i in range(257)]
    seed0, seed1 = dither_seeds(frame, 11)
    return {"isp_hdrc": {
        "glb_ctrl": {"manual_clk_en": 0, "bayer_pat": 0},
        "hdrc_ctrl": {"dither_seed_en": 1, "dither_en": 1},
        "glb_val": {"affine_k": fixed(1.0, 9), "clip_level": fixed(1023.0, 6)},
        "offset_in0": {"val": 0}, "offset_in1": {"val": 0},
        "offset_in2": {"val": 0}, "offset_in3": {"val": 0},
        "offset_out": {"val": 0},
        "dither_seed": {"val0": seed0, "val1": seed1},
        "dither_pmask": {"val_16bit": 0xFFFF, "val_15bit": 0x7FFF},
        "lut_max": {"val": fixed(1023.0, 6)},
        "hdrc_lut": curve,
    }}


def hidrc(frame, col, row):
    # the inverse curve back to 20 bits
    curve = [int(round(0xFFFFF * math.expm1(math.log1p(COMPRESSION) * i / 512) / COMPRESSION))
             for i in range(513)]
    return {"isp_hidrc": {
        "affine_k": {"val": fixed(1.0, 11)},
        "lut_inv_mode": {"val": 1},
        "offset_in": {"val": 0},
        "offset_out0": {"val": 0}, "offset_out1": {"val": 0},
        "offset_out2": {"val": 0}, "offset_out3": {"val": 0},
        "hidrc_lut": curve,
    }}


def unmapped(block):
    return lambda frame, col, row, channel=0: {"isp_" + block: {}}


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


SINGLE = {"wbc": wbc, "blc": blc, "lsc": lsc, "dem": dem, "clc": clc, "gamma": gamma,
          "csc": csc, "hdrc": hdrc, "hidrc": hidrc}
SINGLE.update({block: unmapped(block) for block in UNMAPPED_BLOCKS})
CHANNELLED = {"blc": blc, "dpc": dpc, "bl_det": unmapped("bl_det")}


def main(argv):
    here = os.path.dirname(os.path.abspath(__file__))
    out = argv[1] if len(argv) > 1 else os.path.join(here, "sample_case")
    if os.path.isdir(os.path.join(out, "cfgs")):
        shutil.rmtree(os.path.join(out, "cfgs"))
    for frame in range(FRAMES):
        frame_dir = os.path.join(out, "cfgs", "f%d" % frame)
        for index, col, row in partitions():
            for block, make in sorted(SINGLE.items()):
                write(os.path.join(frame_dir, "rtl_%s_p%d.json" % (block, index)),
                      make(frame, col, row))
            for block, make in sorted(CHANNELLED.items()):
                for channel in range(CHANNELS):
                    write(os.path.join(frame_dir, "rtl_%s_p%d_chn%d.json" % (block, index, channel)),
                          make(frame, col, row, channel))
    for index, _, _ in partitions():
        write(os.path.join(out, "isp_nrlite_ptn_%d.json" % index), {"isp_nrlite": {}})
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
