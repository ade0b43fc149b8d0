/* The module catalogue: one row per JSON module with the constants it hands to the wrapper, its
 * status codes, memory tag and enable bit. Its groups are in groups.cpp. */
#include "modules/groups.h"
#include "modules/module.h"

namespace isp {
namespace {

/* Status codes are written as the hardware documentation writes them. */
constexpr int32_t code(uint32_t value) {
    return static_cast<int32_t>(value);
}

/* Source lines of every log call: the colour-correction module's, which every module but dehaze
 * reports with. */
const log_lines cc_lines = {
    118, 120,               /* create: allocation, warning */
    209, 217, 221,          /* deinit: invalid, regio destroy, destroy */
    151, 163, 183, 190,     /* init: invalid, wrapper create, regio create, default setup */
    244, 250, 255,          /* trigger: invalid, case path, trigger */
    266,                    /* sync */
    46,  47,  48,  52,  58, /* loader: handle, pipe, context, case path, grid */
    94,  6,                 /* loader: first group push, step per group */
    72,                     /* statistics buffer allocation */
};
const log_lines dehaze_lines = {
    132, 134, 223, 231, 235, 165, 177, 197, 204, 258, 264, 269, 280, 46, 47, 48, 52, 58, 94, 6, 72,
};

const stat_buffer ae_stat_buffer  = {88112, "vin_ae_stat%dx%d"};
const stat_buffer awb_stat_buffer = {152240, "vin_awb_stat%dx%d"};

}  // namespace

#define NAMES(mod)                                                         \
    {                                                                      \
        "isp_" #mod "_json_mod_create", "isp_" #mod "_json_mod_destroy",   \
            "isp_" #mod "_json_mod_init", "isp_" #mod "_json_mod_deinit",  \
            "isp_" #mod "_json_mod_trigger", "isp_" #mod "_json_mod_sync", \
            "__" #mod "_json_param_setup", "__" #mod "_json_alloc_buf"     \
    }

#define ROW(mod, block, file, kind, type, code0, code1, depth0, depth1, tag, arg, hw, alloc, grid, \
            bypass, enable, where, noop, buffer, lines)                                            \
    const module_desc mod##_module = {#mod,                                                        \
                                      block,                                                       \
                                      "%s/" file,                                                  \
                                      module_kind::kind,                                           \
                                      type,                                                        \
                                      {code0, code1},                                              \
                                      {depth0, depth1},                                            \
                                      tag,                                                         \
                                      code(arg),                                                   \
                                      code(hw),                                                    \
                                      code(alloc),                                                 \
                                      code(grid),                                                  \
                                      bypass,                                                      \
                                      enable,                                                      \
                                      enable_update::where,                                        \
                                      noop,                                                        \
                                      &mod##_groups,                                               \
                                      buffer,                                                      \
                                      &lines,                                                      \
                                      NAMES(mod)};

/* Notes kept on purpose: lin borrows blc's memory tag and hs2dlut's hardware and allocation
 * codes; af_stat allocates under tag 9; several modules share hardware codes; cc reports an
 * empty grid with its own partition code, dehaze with its argument code, dpc with its hardware
 * code. All modules of one block mirror into one enable bit, from their own bypass bits. */
// clang-format off
//  module        block       file under the case directory        kind        type codes   depths     memory tag  argument    hardware    allocation  empty grid  bypass enable where       trigger noop  buffer            lines
ROW(cc,           "clc",      "cfgs/f%d/rtl_clc_p%d.json",         generic,    21, 2, 15,  200, 10,  0x1B010101, 0x8001180a, 0x80011980, 0x80011918, 0x8001190a,  8, 13, in_sync,    false, nullptr,          cc_lines)
ROW(dehaze,       "dehaze",   "cfgs/f%d/rtl_dehaze_p%d.json",      generic,    23, 2, 17,   50, 10,  0x1D010101, 0x8001110a, 0x80011180, 0x80011118, 0x8001110a, 15, 15, in_sync,    false, nullptr,          dehaze_lines)
ROW(demosaic,     "dem",      "cfgs/f%d/rtl_dem_p%d.json",         generic,    20, 2, 13,  300, 30,  0x1A010101, 0x80010e0a, 0x80010f80, 0x80010f18, 0,           1, 12, in_sync,    false, nullptr,          cc_lines)
ROW(hs2dlut,      "lce",      "cfgs/f%d/rtl_lce_p%d.json",         generic,    26, 2, 20,   50, 10,  0x22010201, 0x8001340a, 0x80013580, 0x80013518, 0,          20, 18, in_sync,    false, nullptr,          cc_lines)
ROW(lin,          "blc",      "cfgs/f%d/rtl_blc_p%d.json",         generic,     6, 1, 19,   50, 10,  0x0B010101, 0x8001350a, 0x80013580, 0x80013518, 0,           3, 22, in_sync,    false, nullptr,          cc_lines)
ROW(ifa,          "ifa",      "cfgs/f%d/rtl_ifa_p%d.json",         generic,    30, 1, 22,  120, 10,  0x24010101, 0x8001310a, 0x80013180, 0x80013118, 0,          35, 27, in_sync,    true,  nullptr,          cc_lines)
ROW(blc,          "blc",      "cfgs/f%d/rtl_blc_p%d_chn%d.json",   channelled,  6, 1, 19,   50, 10,  0x0B010101, 0x8001040a, 0x80010580, 0x80010518, 0,           3, 22, in_sync,    false, nullptr,          cc_lines)
ROW(yuv3dnr,      "yuv3dnr",  "cfgs/f%d/rtl_yuv3dnr_p%d.json",     generic,    25, 2, 19,  500, 20,  0x20010101, 0x8001240a, 0x80012580, 0x80012518, 0,          13, 17, in_sync,    false, nullptr,          cc_lines)
ROW(ae_stat,      "ae_stat",  "cfgs/f%d/rtl_ae_stat_p%d.json",     statistics, 31, 1, 15,  350, 50,  0x07010101, 0x8001080a, 0x80010980, 0x80010918, 0,          30,  8, in_trigger, false, &ae_stat_buffer,  cc_lines)
ROW(awb_stat,     "awb_stat", "cfgs/f%d/rtl_awb_stat_p%d.json",    statistics, 33, 1, 17,  110, 80,  0x08010101, 0x80010a0a, 0x80010b80, 0x80010b18, 0,          32, 10, in_sync,    false, &awb_stat_buffer, cc_lines)
ROW(lsc,          "lsc",      "cfgs/f%d/rtl_lsc_p%d.json",         generic,    16, 2,  8,  300, 20,  0x16010101, 0x80010b0a, 0x80010b80, 0x80010b18, 0,           6,  7, in_sync,    false, nullptr,          cc_lines)
ROW(af_stat,      "af_stat",  "cfgs/f%d/rtl_af_stat_p%d.json",     generic,    32, 1, 16,   50, 10,  9,          0x8001090a, 0x80010980, 0x80010918, 0,          31,  9, in_sync,    false, nullptr,          cc_lines)
ROW(gamma,        "gamma",    "cfgs/f%d/rtl_gamma_p%d.json",       generic,    22, 2, 16,  200, 10,  0x1C010101, 0x8001100a, 0x80011180, 0x80011118, 0,          10, 14, in_sync,    false, nullptr,          cc_lines)
ROW(wbc,          "wbc",      "cfgs/f%d/rtl_wbc_p%d.json",         generic,    17, 2,  5,   50, 10,  0x17010101, 0x80010c0a, 0x80010d80, 0x80010d18, 0,          11,  5, in_sync,    false, nullptr,          cc_lines)
ROW(ccmp,         "lce",      "cfgs/f%d/rtl_lce_p%d.json",         generic,    26, 2, 20,   50, 10,  0x22010101, 0x8001330a, 0x80013380, 0x80013318, 0,          22, 18, in_sync,    false, nullptr,          cc_lines)
ROW(dpc,          "dpc",      "cfgs/f%d/rtl_dpc_p%d_chn%d.json",   channelled, 11, 1,  6,  100, 100, 0x0A010101, 0x8001030a, 0x80010380, 0x80010318, 0x80010380,  4,  1, in_sync,    false, nullptr,          cc_lines)
ROW(ycproc,       "lce",      "cfgs/f%d/rtl_lce_p%d.json",         generic,    26, 2, 20,   50, 10,  0x22010501, 0x80012f0a, 0x80012f80, 0x80012f18, 0,          21, 18, in_sync,    false, nullptr,          cc_lines)
ROW(eis_post,     "eis_post", "cfgs/f%d/rtl_eis_post_p%d.json",    generic,    29, 2, 27,   50, 10,  0x21010201, 0x8001280a, 0x80012980, 0x80012918, 0,          26, 21, in_sync,    true,  nullptr,          cc_lines)
ROW(y2dnr,        "y2dnr",    "cfgs/f%d/rtl_y2dnr_p%d.json",       generic,    44, 2, 32,  250, 10,  0x26010101, 0x80012e0a, 0x80012f80, 0x80012f18, 0,          29, 26, in_sync,    false, nullptr,          cc_lines)
ROW(sharpen,      "lce",      "cfgs/f%d/rtl_lce_p%d.json",         generic,    26, 2, 20,   50, 10,  0x22010401, 0x80011a0a, 0x80011b80, 0x80011b18, 0,          18, 18, in_sync,    false, nullptr,          cc_lines)
ROW(rltm,         "rltm",     "cfgs/f%d/rtl_rltm_p%d.json",        generic,    18, 2,  6,  700, 10,  0x19010101, 0x80010d0a, 0x80010d80, 0x80010d18, 0,           7,  6, in_sync,    false, nullptr,          cc_lines)
ROW(fcc,          "dem",      "cfgs/f%d/rtl_dem_p%d.json",         generic,    20, 2, 13,  300, 30,  0x1A010401, 0x8001220a, 0x80012380, 0x80012318, 0,           1, 12, in_sync,    false, nullptr,          cc_lines)
ROW(ainr,         "nrlite",   "isp_nrlite_ptn_%d.json",            pattern,    36, 1, 10,  100, 30,  0x15010101, 0x80011e0a, 0x80011f80, 0x80011f18, 0,           0,  0, none,       false, nullptr,          cc_lines)
ROW(csc,          "csc",      "cfgs/f%d/rtl_csc_p%d.json",         generic,    24, 2, 18,   50, 10,  0x1E010101, 0x8001120a, 0x80011380, 0x80011318, 0,           2, 16, in_sync,    false, nullptr,          cc_lines)
ROW(gic,          "dem",      "cfgs/f%d/rtl_dem_p%d.json",         generic,    20, 2, 13,  300, 30,  0x1A010301, 0x80010f0a, 0x80010f80, 0x80010f18, 0,           1, 12, in_sync,    false, nullptr,          cc_lines)
ROW(edge_enhance, "dem",      "cfgs/f%d/rtl_dem_p%d.json",         generic,    20, 2, 13,  300, 30,  0x1A010201, 0x80012b0a, 0x80012b80, 0x80012b18, 0,           1, 12, in_sync,    false, nullptr,          cc_lines)
ROW(hidrc,        "hidrc",    "cfgs/f%d/rtl_hidrc_p%d.json",       generic,    14, 2, 30,   50, 10,  0x10010101, 0x80012d0a, 0x80012d80, 0x80012d18, 0,          28, 25, in_trigger, false, nullptr,          cc_lines)
ROW(depurple,     "pfd",      "cfgs/f%d/rtl_pfd_p%d.json",         generic,    19, 2, 10,  200, 10,  0x18010101, 0x8001170a, 0x80011780, 0x80011718, 0,           9, 11, in_sync,    false, nullptr,          cc_lines)
ROW(eis_pre,      "eis_pre",  "cfgs/f%d/rtl_eis_pre_p%d.json",     generic,    28, 2, 26,  150, 10,  0x21010101, 0x8001270a, 0x80012780, 0x80012718, 0,          25, 20, in_sync,    false, nullptr,          cc_lines)
ROW(raw2dnr,      "raw2dnr",  "cfgs/f%d/rtl_raw2dnr_p%d.json",     generic,    15, 2,  4,   50, 10,  0x11010101, 0x8001230a, 0x80012380, 0x80012318, 0,           5,  4, in_sync,    false, nullptr,          cc_lines)
ROW(bl_det,       "bl_det",   "cfgs/f%d/rtl_bl_det_p%d_chn%d.json", channelled, 45, 0, 6,  50, 10,  0x0C010101, 0x8001300a, 0x80013180, 0x80013118, 0,          33, 28, in_sync,    false, nullptr,          cc_lines)
ROW(scm,          "lce",      "cfgs/f%d/rtl_lce_p%d.json",         generic,    26, 2, 20,   50, 10,  0x22010301, 0x8001320a, 0x80013380, 0x80013318, 0,          19, 18, in_sync,    false, nullptr,          cc_lines)
ROW(hdrc,         "hdrc",     "cfgs/f%d/rtl_hdrc_p%d.json",        generic,    13, 1, 20,   50, 10,  0x0F010101, 0x80012c0a, 0x80012d80, 0x80012d18, 0,          27, 24, in_trigger, false, nullptr,          cc_lines)
ROW(hdr,          "hdr",      "cfgs/f%d/rtl_hdr_p%d.json",         generic,    12, 1,  8,  550, 550, 0x12010101, 0x8001150a, 0x80011580, 0x80011518, 0,           0,  2, in_sync,    false, nullptr,          cc_lines)
// clang-format on

}  // namespace isp
