/* Every module of the catalogue walked through its whole life on the simulated platform, with
 * its constants written out here as the hardware documentation gives them: wrapper type, block
 * codes, depths, register I/O name, memory tag, wrapper slot, enable bit, status codes, messages
 * and source lines, and the groups in the order they reach the wrapper. */
#include <dlfcn.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

enum class kind { generic, statistics, channelled, pattern };
enum class enable_at { sync, trigger, none };

struct group {
    uint32_t cmd;
    const char *message;
};

/* Source lines of the operations' reports. */
struct op_lines {
    int create_alloc, create_warn;
    int deinit_invalid, deinit_regio, deinit_destroy;
    int init_invalid, init_create, init_regio, init_default;
    int trigger_invalid, trigger_case, trigger_fail;
    int sync_invalid;
};
const op_lines cc_lines     = {118, 120, 209, 217, 221, 151, 163, 183, 190, 244, 250, 255, 266};
const op_lines dehaze_lines = {132, 134, 223, 231, 235, 165, 177, 197, 204, 258, 264, 269, 280};

/* The parameter loader's lines, the same in every module. */
const int load_null_handle = 46, load_null_pipe = 47, load_null_context = 48;
const int load_case_path = 52, load_grid = 58;
int push_line(size_t group) {
    return 94 + 6 * static_cast<int>(group);
}

const uint32_t null_pointer_code = 0x8001010B;

struct module_row {
    const char *name;
    int32_t (*reg)(JsonModuleOps **);
    const char *block; /* top key "isp_<block>" of the register files */
    const char *file;  /* under the frame directory, or the case directory for patterns */
    const char *regio; /* register I/O name */
    kind variant;
    uint32_t type;
    size_t slot;
    uint8_t code0, code1;
    uint32_t depth0, depth1;
    uint32_t tag;
    uint32_t arg, hw, alloc;
    uint32_t grid; /* status of an empty partition grid, 0 when the loader does not check */
    int bypass, enable;
    enable_at at;
    bool trigger_noop;
    const op_lines *lines;
    std::vector<group> groups;
};

// clang-format off
const module_row rows[] = {
    {"cc", qv_isp_module_cc_json_register, "clc", "rtl_clc_p%d.json", "mod_clc", kind::generic,
     21, 15, 2, 15, 200, 10, 0x1B010101, 0x8001180a, 0x80011980, 0x80011918, 0x8001190a,
     8, 13, enable_at::sync, false, &cc_lines,
     {{3, "Isp clc init hal setup failed."}, {1, "Isp clc clc_setup hal setup failed."},
      {2, "Isp clc clc hal setup failed."}}},
    {"dehaze", qv_isp_module_dehaze_json_register, "dehaze", "rtl_dehaze_p%d.json", "mod_dehaze",
     kind::generic, 23, 17, 2, 17, 50, 10, 0x1D010101, 0x8001110a, 0x80011180, 0x80011118,
     0x8001110a, 15, 15, enable_at::sync, false, &dehaze_lines,
     {{1, "Isp dehaze setup hal setup failed."}, {2, "Isp dehaze part hal setup failed."},
      {3, "Isp dehaze ctrl hal setup failed."}}},
    {"demosaic", qv_isp_module_demosaic_json_register, "dem", "rtl_dem_p%d.json", "mod_dem",
     kind::generic, 20, 14, 2, 13, 300, 30, 0x1A010101, 0x80010e0a, 0x80010f80, 0x80010f18, 0,
     1, 12, enable_at::sync, false, &cc_lines,
     {{9, "Isp dem init hal setup failed."}, {2, "Isp dem setup hal setup failed."},
      {4, "Isp dem dem_mode hal setup failed."}, {6, "Isp dem dem_core hal setup failed."},
      {3, "Isp dem wbc hal setup failed."}}},
    {"hs2dlut", qv_isp_module_hs2dlut_json_register, "lce", "rtl_lce_p%d.json", "mod_lce",
     kind::generic, 26, 20, 2, 20, 50, 10, 0x22010201, 0x8001340a, 0x80013580, 0x80013518, 0,
     20, 18, enable_at::sync, false, &cc_lines,
     {{8, "Isp lce hs2dlut hal setup failed."}}},
    /* lin borrows blc's memory tag and hs2dlut's hardware and allocation codes */
    {"lin", qv_isp_module_lin_json_register, "blc", "rtl_blc_p%d.json", "mod_blc", kind::generic,
     6, 0, 1, 19, 50, 10, 0x0B010101, 0x8001350a, 0x80013580, 0x80013518, 0,
     3, 22, enable_at::sync, false, &cc_lines,
     {{3, "Isp blc lin hal setup failed."}}},
    {"ifa", qv_isp_module_ifa_json_register, "ifa", "rtl_ifa_p%d.json", "mod_ifa", kind::generic,
     30, 24, 1, 22, 120, 10, 0x24010101, 0x8001310a, 0x80013180, 0x80013118, 0,
     35, 27, enable_at::sync, true, &cc_lines,
     {{1, "Isp ifa setup hal setup failed."}, {2, "Isp ifa crop hal setup failed."}}},
    {"blc", qv_isp_module_blc_json_register, "blc", "rtl_blc_p%d_chn%d.json", "mod_blc",
     kind::channelled, 6, 0, 1, 19, 50, 10, 0x0B010101, 0x8001040a, 0x80010580, 0x80010518, 0,
     3, 22, enable_at::sync, false, &cc_lines,
     {{3, "Isp blc lin hal setup failed."}, {4, "Isp blc common hal setup failed."},
      {5, "Isp blc dither hal setup failed."}, {6, "Isp blc setup hal setup failed."},
      {7, "Isp blc init hal setup failed."}, {8, "Isp blc kernel gbl hal setup failed."},
      {9, "Isp blc kernel sbl hal setup failed."}, {10, "Isp blc kernel ctrl hal setup failed."}}},
    {"yuv3dnr", qv_isp_module_yuv3dnr_json_register, "yuv3dnr", "rtl_yuv3dnr_p%d.json",
     "mod_yuv3dnr", kind::generic, 25, 19, 2, 19, 500, 20, 0x20010101, 0x8001240a, 0x80012580,
     0x80012518, 0, 13, 17, enable_at::sync, false, &cc_lines,
     {{11, "Isp yuv3dnr ctrl hal setup failed."}, {1, "Isp yuv3dnr extmask hal setup failed."},
      {2, "Isp yuv3dnr motion hal setup failed."}, {3, "Isp yuv3dnr setup hal setup failed."},
      {4, "Isp yuv3dnr tnr hal setup failed."}, {5, "Isp yuv3dnr ysf hal setup failed."},
      {6, "Isp yuv3dnr csf hal setup failed."}, {7, "Isp yuv3dnr cgf hal setup failed."},
      {8, "Isp yuv3dnr part hal setup failed."}, {9, "Isp yuv3dnr dither hal setup failed."},
      {10, "Isp yuv3dnr init hal setup failed."}}},
    {"ae_stat", qv_isp_module_ae_stat_json_register, "ae_stat", "rtl_ae_stat_p%d.json",
     "mod_ae_stat", kind::statistics, 31, 25, 1, 15, 350, 50, 0x07010101, 0x8001080a,
     0x80010980, 0x80010918, 0, 30, 8, enable_at::trigger, false, &cc_lines,
     {{1, "Isp ae_stat init hal setup failed."}, {2, "Isp ae_stat aes_adj hal setup failed."},
      {3, "Isp ae_stat aes_calc hal setup failed."}}},
    {"awb_stat", qv_isp_module_awb_stat_json_register, "awb_stat", "rtl_awb_stat_p%d.json",
     "mod_awb_stat", kind::statistics, 33, 27, 1, 17, 110, 80, 0x08010101, 0x80010a0a,
     0x80010b80, 0x80010b18, 0, 32, 10, enable_at::sync, false, &cc_lines,
     {{1, "Isp awb_stat init hal setup failed."}, {2, "Isp awb_stat awbs_adj hal setup failed."},
      {3, "Isp awb_stat awbs_calc_grid hal setup failed."}}},
    {"lsc", qv_isp_module_lsc_json_register, "lsc", "rtl_lsc_p%d.json", "mod_lsc", kind::generic,
     16, 10, 2, 8, 300, 20, 0x16010101, 0x80010b0a, 0x80010b80, 0x80010b18, 0,
     6, 7, enable_at::sync, false, &cc_lines,
     {{1, "Isp lsc setup hal setup failed."}, {2, "Isp lsc coord hal setup failed."},
      {3, "Isp lsc mesh hal setup failed."}}},
    /* af_stat allocates under the plain tag 9 */
    {"af_stat", qv_isp_module_af_stat_json_register, "af_stat", "rtl_af_stat_p%d.json",
     "mod_af_stat", kind::generic, 32, 26, 1, 16, 50, 10, 9, 0x8001090a, 0x80010980, 0x80010918,
     0, 31, 9, enable_at::sync, false, &cc_lines,
     {{1, "Isp af_stat init hal setup failed."}, {5, "Isp af_stat afs_setup hal setup failed."},
      {3, "Isp af_stat afs_adj hal setup failed."}, {2, "Isp af_stat afs_ptn hal setup failed."},
      {4, "Isp af_stat afs_drc hal setup failed."},
      {6, "Isp af_stat kernel wr_addr hal setup failed."},
      {7, "Isp af_stat kernel afs_setup hal setup failed."}}},
    {"gamma", qv_isp_module_gamma_json_register, "gamma", "rtl_gamma_p%d.json", "mod_gamma",
     kind::generic, 22, 16, 2, 16, 200, 10, 0x1C010101, 0x8001100a, 0x80011180, 0x80011118, 0,
     10, 14, enable_at::sync, false, &cc_lines,
     {{1, "Isp gamma setup hal setup failed."}, {2, "Isp gamma dither hal setup failed."},
      {3, "Isp gamma lut hal setup failed."}}},
    {"wbc", qv_isp_module_wbc_json_register, "wbc", "rtl_wbc_p%d.json", "mod_wbc", kind::generic,
     17, 11, 2, 5, 50, 10, 0x17010101, 0x80010c0a, 0x80010d80, 0x80010d18, 0,
     11, 5, enable_at::sync, false, &cc_lines,
     {{1, "Isp wbc ctrl hal setup failed."}, {2, "Isp wbc setup hal setup failed."},
      {3, "Isp wbc init hal setup failed."}}},
    {"ccmp", qv_isp_module_ccmp_json_register, "lce", "rtl_lce_p%d.json", "mod_lce",
     kind::generic, 26, 20, 2, 20, 50, 10, 0x22010101, 0x8001330a, 0x80013380, 0x80013318, 0,
     22, 18, enable_at::sync, false, &cc_lines,
     {{9, "Isp lce ccmp hal setup failed."}}},
    {"dpc", qv_isp_module_dpc_json_register, "dpc", "rtl_dpc_p%d_chn%d.json", "mod_dpc",
     kind::channelled, 11, 5, 1, 6, 100, 100, 0x0A010101, 0x8001030a, 0x80010380, 0x80010318,
     0x80010380, 4, 1, enable_at::sync, false, &cc_lines,
     {{2, "Isp dpc calc_dp_strength hal setup failed."}, {4, "Isp dpc setup hal setup failed."},
      {5, "Isp dpc calc_noise hal setup failed."}, {6, "Isp dpc calc_wb_gain hal setup failed."},
      {7, "Isp dpc calc_quick_det hal setup failed."},
      {8, "Isp dpc calc_dp_correct hal setup failed."},
      {9, "Isp dpc calc_color_limit hal setup failed."}, {10, "Isp dpc init hal setup failed."}}},
    {"ycproc", qv_isp_module_ycproc_json_register, "lce", "rtl_lce_p%d.json", "mod_lce",
     kind::generic, 26, 20, 2, 20, 50, 10, 0x22010501, 0x80012f0a, 0x80012f80, 0x80012f18, 0,
     21, 18, enable_at::sync, false, &cc_lines,
     {{6, "Isp lce ycproc hal setup failed."}}},
    {"eis_post", qv_isp_module_eis_post_json_register, "eis_post", "rtl_eis_post_p%d.json",
     "mod_eis_post", kind::generic, 29, 23, 2, 27, 50, 10, 0x21010201, 0x8001280a, 0x80012980,
     0x80012918, 0, 26, 21, enable_at::sync, true, &cc_lines,
     {{1, "Isp eis_post ctrl hal setup failed."}, {2, "Isp eis_post setup hal setup failed."},
      {3, "Isp eis_post init hal setup failed."}}},
    {"y2dnr", qv_isp_module_y2dnr_json_register, "y2dnr", "rtl_y2dnr_p%d.json", "mod_y2dnr",
     kind::generic, 44, 38, 2, 32, 250, 10, 0x26010101, 0x80012e0a, 0x80012f80, 0x80012f18, 0,
     29, 26, enable_at::sync, false, &cc_lines,
     {{12, "Isp y2dnr init hal setup failed."}, {4, "Isp y2dnr setup hal setup failed."},
      {2, "Isp y2dnr top_control hal setup failed."}, {1, "Isp y2dnr debug_mode hal setup failed."},
      {5, "Isp y2dnr feature hal setup failed."}, {6, "Isp y2dnr dpc hal setup failed."},
      {7, "Isp y2dnr sf1 hal setup failed."}, {8, "Isp y2dnr sf2 hal setup failed."},
      {9, "Isp y2dnr filter_style hal setup failed."}, {10, "Isp y2dnr luma_str hal setup failed."},
      {11, "Isp y2dnr motion hal setup failed."}, {3, "Isp y2dnr dither hal setup failed."}}},
    {"sharpen", qv_isp_module_sharpen_json_register, "lce", "rtl_lce_p%d.json", "mod_lce",
     kind::generic, 26, 20, 2, 20, 50, 10, 0x22010401, 0x80011a0a, 0x80011b80, 0x80011b18, 0,
     18, 18, enable_at::sync, false, &cc_lines,
     {{7, "Isp lce init hal setup failed."}, {1, "Isp lce setup hal setup failed."},
      {2, "Isp lce basic_setting hal setup failed."},
      {4, "Isp lce luma_chroma_setting hal setup failed."},
      {5, "Isp lce motion_setting hal setup failed."},
      {3, "Isp lce nr_coring_setting hal setup failed."},
      {11, "Isp lce lce_desat_setting hal setup failed."}}},
    {"rltm", qv_isp_module_rltm_json_register, "rltm", "rtl_rltm_p%d.json", "mod_rltm",
     kind::generic, 18, 12, 2, 6, 700, 10, 0x19010101, 0x80010d0a, 0x80010d80, 0x80010d18, 0,
     7, 6, enable_at::sync, false, &cc_lines,
     {{4, "Isp rltm init hal setup failed."}, {2, "Isp rltm setup hal setup failed."},
      {1, "Isp rltm dither hal setup failed."}, {6, "Isp rltm reserved hal setup failed."},
      {3, "Isp rltm common hal setup failed."}, {5, "Isp rltm info hal setup failed."},
      {7, "Isp rltm detail hal setup failed."}, {8, "Isp rltm low_freq hal setup failed."},
      {9, "Isp rltm lut setup failed."}}},
    {"fcc", qv_isp_module_fcc_json_register, "dem", "rtl_dem_p%d.json", "mod_dem",
     kind::generic, 20, 14, 2, 13, 300, 30, 0x1A010401, 0x8001220a, 0x80012380, 0x80012318, 0,
     1, 12, enable_at::sync, false, &cc_lines,
     {{8, "Isp dem fcc hal setup failed."}}},
    {"ainr", qv_isp_module_ainr_json_register, "nrlite", "isp_nrlite_ptn_%d.json", "mod_nrlite",
     kind::pattern, 36, 30, 1, 10, 100, 30, 0x15010101, 0x80011e0a, 0x80011f80, 0x80011f18, 0,
     -1, -1, enable_at::none, false, &cc_lines,
     {{5, "Isp nrlite post hal setup failed."}}},
    {"csc", qv_isp_module_csc_json_register, "csc", "rtl_csc_p%d.json", "mod_csc",
     kind::generic, 24, 18, 2, 18, 50, 10, 0x1E010101, 0x8001120a, 0x80011380, 0x80011318, 0,
     2, 16, enable_at::sync, false, &cc_lines,
     {{1, "Isp csc core hal setup failed."}, {2, "Isp csc setup hal setup failed."},
      {3, "Isp csc init hal setup failed."}}},
    {"gic", qv_isp_module_gic_json_register, "dem", "rtl_dem_p%d.json", "mod_dem",
     kind::generic, 20, 14, 2, 13, 300, 30, 0x1A010301, 0x80010f0a, 0x80010f80, 0x80010f18, 0,
     1, 12, enable_at::sync, false, &cc_lines,
     {{5, "Isp dem gic hal setup failed."}}},
    {"edge_enhance", qv_isp_module_edge_enhance_json_register, "dem", "rtl_dem_p%d.json",
     "mod_dem", kind::generic, 20, 14, 2, 13, 300, 30, 0x1A010201, 0x80012b0a, 0x80012b80,
     0x80012b18, 0, 1, 12, enable_at::sync, false, &cc_lines,
     {{7, "Isp dem sharpen hal setup failed."}}},
    {"hidrc", qv_isp_module_hidrc_json_register, "hidrc", "rtl_hidrc_p%d.json", "mod_hidrc",
     kind::generic, 14, 8, 2, 30, 50, 10, 0x10010101, 0x80012d0a, 0x80012d80, 0x80012d18, 0,
     28, 25, enable_at::trigger, false, &cc_lines,
     {{1, "Isp hidrc setup hal setup failed."}, {2, "Isp hidrc setup hal setup failed."}}},
    {"depurple", qv_isp_module_depurple_json_register, "pfd", "rtl_pfd_p%d.json", "mod_pfd",
     kind::generic, 19, 13, 2, 10, 200, 10, 0x18010101, 0x8001170a, 0x80011780, 0x80011718, 0,
     9, 11, enable_at::sync, false, &cc_lines,
     {{1, "Isp pfd det hal setup failed."}, {2, "Isp pfd setup hal setup failed."},
      {3, "Isp pfd init hal setup failed."}, {4, "Isp pfd ptn_related hal setup failed."},
      {5, "Isp pfd user_mesh_lut hal setup failed."},
      {6, "Isp pfd user_mesh_thr hal setup failed."}}},
    {"eis_pre", qv_isp_module_eis_pre_json_register, "eis_pre", "rtl_eis_pre_p%d.json",
     "mod_eis_pre", kind::generic, 28, 22, 2, 26, 150, 10, 0x21010101, 0x8001270a, 0x80012780,
     0x80012718, 0, 25, 20, enable_at::sync, false, &cc_lines,
     {{1, "Isp eis_pre lut hal setup failed."}, {2, "Isp eis_pre setup hal setup failed."},
      {3, "Isp eis_pre ctrl hal setup failed."}, {4, "Isp eis_pre init hal setup failed."}}},
    {"raw2dnr", qv_isp_module_raw2dnr_json_register, "raw2dnr", "rtl_raw2dnr_p%d.json",
     "mod_raw2dnr", kind::generic, 15, 9, 2, 4, 50, 10, 0x11010101, 0x8001230a, 0x80012380,
     0x80012318, 0, 5, 4, enable_at::sync, false, &cc_lines,
     {{6, "Isp raw2dnr init hal setup failed."}, {1, "Isp raw2dnr setup hal setup failed."},
      {2, "Isp raw2dnr mask hal setup failed."}, {3, "Isp raw2dnr fs hal setup failed."},
      {5, "Isp raw2dnr hfnr hal setup failed."}, {4, "Isp raw2dnr mfnr hal setup failed."},
      {8, "Isp raw2dnr np hal setup failed."}}},
    {"bl_det", qv_isp_module_bl_det_json_register, "bl_det", "rtl_bl_det_p%d_chn%d.json",
     "mod_bl_det", kind::channelled, 45, 39, 0, 6, 50, 10, 0x0C010101, 0x8001300a, 0x80013180,
     0x80013118, 0, 33, 28, enable_at::sync, false, &cc_lines,
     {{1, "Isp bl_det setup hal setup failed."}, {3, "Isp bl_det init hal setup failed."}}},
    {"scm", qv_isp_module_scm_json_register, "lce", "rtl_lce_p%d.json", "mod_lce",
     kind::generic, 26, 20, 2, 20, 50, 10, 0x22010301, 0x8001320a, 0x80013380, 0x80013318, 0,
     19, 18, enable_at::sync, false, &cc_lines,
     {{10, "Isp lce scm hal setup failed."}}},
    {"hdrc", qv_isp_module_hdrc_json_register, "hdrc", "rtl_hdrc_p%d.json", "mod_hdrc",
     kind::generic, 13, 7, 1, 20, 50, 10, 0x0F010101, 0x80012c0a, 0x80012d80, 0x80012d18, 0,
     27, 24, enable_at::trigger, false, &cc_lines,
     {{1, "Isp hdrc setup hal setup failed."}, {3, "Isp hdrc init hal setup failed."},
      {4, "Isp hdrc init hal setup failed."}}},
    {"hdr", qv_isp_module_hdr_json_register, "hdr", "rtl_hdr_p%d.json", "mod_hdr",
     kind::generic, 12, 6, 1, 8, 550, 550, 0x12010101, 0x8001150a, 0x80011580, 0x80011518, 0,
     0, 2, enable_at::sync, false, &cc_lines,
     {{1, "Isp hdr common hal setup failed."}, {2, "Isp hdr deghost hal setup failed."},
      {3, "Isp hdr setup hal setup failed."}, {4, "Isp hdr motion hal setup failed."},
      {5, "Isp hdr init hal setup failed."}, {6, "Isp hdr kernel common hal setup failed."},
      {7, "Isp hdr kernel fusion hal setup failed."},
      {8, "Isp hdr kernel exposure hal setup failed."}}},
};
// clang-format on
static_assert(sizeof rows / sizeof rows[0] == 34, "every module of the catalogue");

const uint8_t walk_pipe_id   = 2;
const uint32_t walk_trigger  = 0x5A5A1234;
const size_t wrapper_slots   = 40;
const size_t no_sync_modules = 4;

std::string format(const char *fmt, ...) __attribute__((format(printf, 1, 2)));
std::string format(const char *fmt, ...) {
    char text[512];
    va_list args;
    va_start(args, fmt);
    vsnprintf(text, sizeof text, fmt, args);
    va_end(args);
    return text;
}

std::string error_text(const std::string &function, int line, uint32_t code, const char *what) {
    return format("[E][%32s][%4d]: Error [%x]: %s\n", function.c_str(), line, code, what);
}

std::vector<std::string> names_of(const std::vector<isp_sim::call> &calls) {
    std::vector<std::string> names;
    for (const isp_sim::call &c : calls) names.push_back(c.function);
    return names;
}

template <typename Record>
Record record_of(const isp_sim::call &c) {
    Record record;
    memset(&record, 0, sizeof record);
    EXPECT_EQ(c.record.size(), sizeof record) << c.function;
    memcpy(&record, c.record.data(), std::min(c.record.size(), sizeof record));
    return record;
}

/* A register file of the block holding no register, except the raw-number curves and meshes,
 * which have no default and must be there. */
std::string register_file(const std::string &block) {
    auto zeros = [](const char *key, size_t count) {
        std::string array = std::string("\"") + key + "\": [";
        for (size_t i = 0; i < count; ++i) array += i ? ", 0" : "0";
        return array + "]";
    };
    std::string body;
    if (block == "lsc")
        body = zeros("rr_mesh", 285) + ", " + zeros("gr_mesh", 285) + ", " + zeros("gb_mesh", 285) +
               ", " + zeros("bb_mesh", 285);
    else if (block == "hidrc")
        body = zeros("hidrc_lut", 513);
    else if (block == "hdrc")
        body = zeros("hdrc_lut", 257);
    return "{\"isp_" + block + "\": {" + body + "}}";
}

bool all_zero(const void *bytes, size_t size) {
    const uint8_t *first = static_cast<const uint8_t *>(bytes);
    for (size_t i = 0; i < size; ++i)
        if (first[i] != 0) return false;
    return true;
}

void PrintTo(const module_row &m, std::ostream *out) {
    *out << m.name;
}

class catalogue : public testing::TestWithParam<module_row> {
  protected:
    void SetUp() override {
        isp_sim::reset();
        isp_sim::set_log_echo(false);
        /* the register files carry no fields, so the converters report every one they miss */
        testing::internal::CaptureStderr();
    }
    void TearDown() override {
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(isp_sim::problems(), std::vector<std::string>());
        isp_sim::reset();
        isp_sim::set_log_echo(true);
    }

    const module_row &row() const { return GetParam(); }
    std::string op(const char *operation) const {
        return std::string("isp_") + row().name + "_json_mod_" + operation;
    }
    std::string loader() const { return std::string("__") + row().name + "_json_param_setup"; }
    bool channelled() const { return row().variant == kind::channelled; }

    JsonModuleOps *ops() const {
        JsonModuleOps *table = nullptr;
        EXPECT_EQ(row().reg(&table), 0);
        return table;
    }

    /* Frames f0 and f1 of a case over the grid, each file holding the block's empty object;
     * the pattern module's files lie in the case directory itself. */
    void write_case(uint8_t partitions, int channels = 1) const {
        const std::string content = register_file(row().block);
        for (int frame = 0; frame < 2; ++frame) {
            const std::string dir = "cfgs/f" + std::to_string(frame) + "/";
            case_dir.mkdir(dir);
            for (int p = 0; p < partitions; ++p) {
                if (row().variant == kind::pattern) {
                    if (frame == 0) case_dir.write(format(row().file, p), content);
                } else if (channelled()) {
                    for (int c = 0; c < channels; ++c)
                        case_dir.write(dir + format(row().file, p, c), content);
                } else {
                    case_dir.write(dir + format(row().file, p), content);
                }
            }
        }
    }

    /* Calls recorded since mark. */
    static std::vector<isp_sim::call> since(size_t mark) {
        const std::vector<isp_sim::call> &all = isp_sim::calls();
        return std::vector<isp_sim::call>(all.begin() + static_cast<long>(mark), all.end());
    }

    /* The one log line expected since mark. */
    static void expect_one_log(size_t mark, int32_t level, const std::string &text) {
        const std::vector<isp_sim::log_line> &lines = isp_sim::log_lines();
        ASSERT_EQ(lines.size(), mark + 1) << text;
        EXPECT_EQ(lines.back().level, level);
        EXPECT_EQ(lines.back().tag, "ISP");
        EXPECT_EQ(lines.back().flag, 1);
        EXPECT_EQ(lines.back().text, text);
    }

    /* Every group pushed to wrapper in order, with its structure. */
    void expect_groups(const std::vector<isp_sim::call> &calls, uint32_t wrapper) const {
        ASSERT_EQ(calls.size(), row().groups.size());
        for (size_t i = 0; i < calls.size(); ++i) {
            EXPECT_EQ(calls[i].function, "vin_hal_wrapper_setup");
            EXPECT_EQ(calls[i].handle, wrapper) << "group " << i;
            EXPECT_EQ(calls[i].cmd, row().groups[i].cmd) << "group " << i;
            EXPECT_TRUE(calls[i].has_data) << "group " << i;
        }
    }

    int32_t frame_of(const JsonModuleHandle &h) const {
        return channelled() ? static_cast<JsonChnContext *>(h.priv)->frame
                            : static_cast<JsonModuleContext *>(h.priv)->frame;
    }
    uint32_t last_frame_of(const JsonModuleHandle &h) const {
        return channelled() ? static_cast<JsonChnContext *>(h.priv)->last_frame
                            : static_cast<JsonModuleContext *>(h.priv)->last_frame;
    }
    static uint32_t wrapper_of(const JsonModuleHandle &h) {
        return *static_cast<const uint32_t *>(h.priv);
    }

    size_t context_size() const {
        switch (row().variant) {
            case kind::statistics:
                return sizeof(JsonStatContext);
            case kind::channelled:
                return sizeof(JsonChnContext);
            default:
                return sizeof(JsonModuleContext);
        }
    }

    /* Sets every bypass bit but the module's (clear = true) or only the module's. */
    void set_bypass(isp_test::pipe &p, bool module_bit_set) const {
        const int bit = row().bypass < 0 ? 0 : row().bypass;
        memset(p.ctx.bypass, module_bit_set ? 0x00 : 0xFF, sizeof p.ctx.bypass);
        uint8_t &byte      = p.ctx.bypass[bit / 8];
        const uint8_t mask = static_cast<uint8_t>(1u << (bit % 8));
        byte =
            module_bit_set ? static_cast<uint8_t>(byte | mask) : static_cast<uint8_t>(byte & ~mask);
    }

    /* The pipe of every walk: a 2 x 1 grid with its own id, on a case with frames f0 and f1. */
    isp_test::pipe make_pipe() const { return isp_test::pipe(2, 1, case_dir.path(), 1); }

    isp_test::temp_dir case_dir;
};

std::string row_name(const testing::TestParamInfo<module_row> &info) {
    return info.param.name;
}

/* register -> create -> init -> process -> trigger -> sync -> deinit -> destroy, and every
 * constant of the module as it shows in the records. */
TEST_P(catalogue, whole_lifecycle_shows_every_constant) {
    const module_row &m = row();
    write_case(2);
    isp_test::pipe p(2, 1, case_dir.path(), 1);
    p.ctx.pipe_id      = walk_pipe_id;
    JsonModuleHandle h = p.handle(walk_trigger);

    JsonModuleOps *table = ops();
    ASSERT_NE(table, nullptr);
    size_t logs = isp_sim::log_lines().size();

    /* create: one zero-filled context under the module's tag */
    size_t mark = isp_sim::calls().size();
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_NE(h.priv, nullptr);
    {
        const std::vector<isp_sim::call> calls = since(mark);
        ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Calloc"});
        EXPECT_EQ(calls[0].tag, m.tag);
        EXPECT_EQ(calls[0].size, context_size());
        EXPECT_TRUE(all_zero(h.priv, context_size()));
        EXPECT_EQ(isp_sim::live_allocations(), (std::map<uint32_t, int>{{m.tag, 1}}));
    }

    /* init: wrapper, register I/O, default parameters, [statistics buffer], frame 0 */
    mark = isp_sim::calls().size();
    ASSERT_EQ(table->init(&h), 0);
    uint32_t wrapper = 0;
    {
        const std::vector<isp_sim::call> calls = since(mark);
        std::vector<std::string> expected      = {
                 "vin_hal_wrapper_create", "vin_hal_wrapper_regio_create", "vin_hal_wrapper_setup"};
        if (m.variant == kind::statistics) expected.push_back("qv_hal_sys_mem_alloc_cached");
        const size_t before_groups = expected.size();
        expected.insert(expected.end(), m.groups.size(), "vin_hal_wrapper_setup");
        ASSERT_EQ(names_of(calls), expected);

        const VinHalWrapperAttr attr = record_of<VinHalWrapperAttr>(calls[0]);
        EXPECT_EQ(attr.type, m.type);
        EXPECT_EQ(attr.reserved, 0u);
        EXPECT_EQ(attr.mode, 2u);
        EXPECT_EQ(attr.register_func, &isp_plat_hal_register_func);
        EXPECT_EQ(attr.pipe_attr, &p.ctx.attr);
        wrapper = calls[0].handle;
        EXPECT_EQ(wrapper_of(h), wrapper);

        const VinHalRegioAttr regio = record_of<VinHalRegioAttr>(calls[1]);
        EXPECT_EQ(calls[1].handle, wrapper);
        EXPECT_EQ(regio.pipe_id, walk_pipe_id);
        EXPECT_EQ(regio.mode, 1);
        EXPECT_EQ(regio.channel, 0);
        EXPECT_TRUE(all_zero(regio.reserved0, sizeof regio.reserved0));
        EXPECT_EQ(regio.reg_base, 0x2400000u);
        EXPECT_EQ(regio.reserved1, 0u);
        EXPECT_EQ(regio.block_code[0], m.code0);
        EXPECT_EQ(regio.block_code[1], m.code1);
        EXPECT_TRUE(all_zero(regio.reserved2, sizeof regio.reserved2));
        EXPECT_EQ(regio.regdesc_get, &qv_regio_regdesc_get_plat);
        EXPECT_EQ(regio.part_num, 2);
        EXPECT_TRUE(all_zero(regio.reserved3, sizeof regio.reserved3));
        EXPECT_EQ(regio.depth[0], m.depth0);
        EXPECT_EQ(regio.depth[1], m.depth1);
        EXPECT_EQ(regio.flag, 1);
        EXPECT_TRUE(all_zero(regio.reserved4, sizeof regio.reserved4));
        EXPECT_EQ(regio.param[0], 2u);
        EXPECT_EQ(regio.param[1], 4u);
        char name[sizeof regio.name] = {};
        memcpy(name, m.regio, strlen(m.regio));
        EXPECT_EQ(memcmp(regio.name, name, sizeof name), 0) << regio.name;

        EXPECT_EQ(calls[2].handle, wrapper);
        EXPECT_EQ(calls[2].cmd, 0u);
        EXPECT_FALSE(calls[2].has_data);

        if (m.variant == kind::statistics) {
            const JsonStatContext *ctx = static_cast<const JsonStatContext *>(h.priv);
            EXPECT_EQ(calls[3].pipe_id, walk_pipe_id);
            EXPECT_EQ(calls[3].align, 128u);
            EXPECT_EQ(ctx->area_count, 3u);
            EXPECT_EQ(ctx->phys, 0x10000000u);
            EXPECT_NE(ctx->virt, nullptr);
            if (std::string(m.name) == "ae_stat") {
                EXPECT_EQ(calls[3].size, 264336u);
                EXPECT_EQ(calls[3].name, "vin_ae_stat2x3");
                EXPECT_EQ(ctx->area_size, 88112u);
            } else {
                EXPECT_EQ(calls[3].size, 456720u);
                EXPECT_EQ(calls[3].name, "vin_awb_stat2x3");
                EXPECT_EQ(ctx->area_size, 152240u);
            }
        }
        expect_groups(std::vector<isp_sim::call>(calls.begin() + static_cast<long>(before_groups),
                                                 calls.end()),
                      wrapper);
    }
    for (size_t slot = 0; slot < wrapper_slots; ++slot)
        EXPECT_EQ(p.ctx.wrapper_slot[slot], slot == m.slot ? h.priv : nullptr) << "slot " << slot;
    const isp_sim::wrapper_state created = isp_sim::wrapper(wrapper);
    EXPECT_TRUE(created.exists);
    EXPECT_TRUE(created.regio);
    EXPECT_EQ(created.type, m.type);
    EXPECT_EQ("mod_" + created.block, m.regio);

    /* the first load moved on to f1; the pattern module has no frames */
    if (m.variant == kind::pattern) {
        EXPECT_EQ(frame_of(h), 0);
        EXPECT_EQ(last_frame_of(h), 0u);
    } else {
        EXPECT_EQ(frame_of(h), 1);
        EXPECT_EQ(last_frame_of(h), 0u);
    }

    /* process, through both processing slots: the groups again, in the same order */
    for (JsonModuleOp process : {table->process, table->process2}) {
        mark = isp_sim::calls().size();
        ASSERT_EQ(process(&h), 0);
        expect_groups(since(mark), wrapper);
        EXPECT_EQ(frame_of(h), m.variant == kind::pattern ? 0 : 1);
        EXPECT_EQ(last_frame_of(h), m.variant == kind::pattern ? 0u : 1u);
    }

    /* trigger: the wrapper with mode 1 and the handle's argument; the enable bit for the
     * modules that keep it there */
    p.shadow.module_enable = 0;
    set_bypass(p, false);
    mark = isp_sim::calls().size();
    ASSERT_EQ(table->trigger(&h), 0);
    {
        const std::vector<isp_sim::call> calls = since(mark);
        if (m.trigger_noop) {
            EXPECT_TRUE(calls.empty());
        } else {
            ASSERT_EQ(names_of(calls), std::vector<std::string>{"vin_hal_wrapper_trigger"});
            EXPECT_EQ(calls[0].handle, wrapper);
            EXPECT_EQ(calls[0].mode, 1u);
            EXPECT_EQ(calls[0].arg, walk_trigger);
            EXPECT_EQ(calls[0].channel, 0u);
        }
        const uint32_t mirrored = m.at == enable_at::trigger ? 1u << m.enable : 0u;
        EXPECT_EQ(p.shadow.module_enable, mirrored);
    }
    p.shadow.module_enable = 0xFFFFFFFF;
    set_bypass(p, true);
    ASSERT_EQ(table->trigger(&h), 0);
    EXPECT_EQ(p.shadow.module_enable, m.at == enable_at::trigger ? ~(1u << m.enable) : 0xFFFFFFFFu);

    /* sync: the bypass bit, inverted, into the enable bit and nowhere else */
    if (m.at == enable_at::sync) {
        ASSERT_NE(table->sync, nullptr);
        mark                   = isp_sim::calls().size();
        p.shadow.module_enable = 0;
        set_bypass(p, false);
        ASSERT_EQ(table->sync(&h), 0);
        EXPECT_EQ(p.shadow.module_enable, 1u << m.enable);
        p.shadow.module_enable = 0xFFFFFFFF;
        set_bypass(p, true);
        ASSERT_EQ(table->sync(&h), 0);
        EXPECT_EQ(p.shadow.module_enable, ~(1u << m.enable));
        EXPECT_TRUE(since(mark).empty());
    } else {
        EXPECT_EQ(table->sync, nullptr);
    }

    /* deinit: register I/O and wrapper destroyed, [buffer freed], slot and handle cleared */
    const uint64_t phys =
        m.variant == kind::statistics ? static_cast<JsonStatContext *>(h.priv)->phys : 0;
    mark = isp_sim::calls().size();
    ASSERT_EQ(table->deinit(&h), 0);
    {
        const std::vector<isp_sim::call> calls = since(mark);
        std::vector<std::string> expected      = {"vin_hal_wrapper_regio_destroy",
                                                  "vin_hal_wrapper_destroy"};
        if (m.variant == kind::statistics) expected.push_back("QV_SYS_MemFree");
        ASSERT_EQ(names_of(calls), expected);
        EXPECT_EQ(calls[0].handle, wrapper);
        EXPECT_EQ(calls[1].handle, wrapper);
        if (m.variant == kind::statistics) {
            EXPECT_EQ(calls[2].phys, phys);
            EXPECT_EQ(static_cast<JsonStatContext *>(h.priv)->phys, 0u);
            EXPECT_EQ(static_cast<JsonStatContext *>(h.priv)->virt, nullptr);
        }
    }
    EXPECT_EQ(wrapper_of(h), 0u);
    EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);

    /* destroy: the context freed under the same tag */
    mark = isp_sim::calls().size();
    ASSERT_EQ(table->destroy(&h), 0);
    EXPECT_EQ(h.priv, nullptr);
    {
        const std::vector<isp_sim::call> calls = since(mark);
        ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Free"});
        EXPECT_EQ(calls[0].tag, m.tag);
    }
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    /* a clean life reports nothing */
    EXPECT_EQ(isp_sim::log_lines().size(), logs);
}

TEST_P(catalogue, registration_fills_every_slot_with_the_exported_operation) {
    JsonModuleOps *first = ops();
    ASSERT_NE(first, nullptr);
    auto exported = [&](const char *operation) {
        return dlsym(RTLD_DEFAULT, op(operation).c_str());
    };
    EXPECT_EQ(reinterpret_cast<void *>(first->create), exported("create"));
    EXPECT_EQ(reinterpret_cast<void *>(first->destroy), exported("destroy"));
    EXPECT_EQ(reinterpret_cast<void *>(first->init), exported("init"));
    EXPECT_EQ(reinterpret_cast<void *>(first->deinit), exported("deinit"));
    EXPECT_EQ(reinterpret_cast<void *>(first->process), exported("process"));
    EXPECT_EQ(reinterpret_cast<void *>(first->process2), exported("process"));
    EXPECT_EQ(reinterpret_cast<void *>(first->trigger), exported("trigger"));
    EXPECT_EQ(reinterpret_cast<void *>(first->ctrl), exported("ctrl"));
    EXPECT_EQ(reinterpret_cast<void *>(first->set_param), exported("set_param"));
    EXPECT_EQ(reinterpret_cast<void *>(first->get_param), exported("get_param"));
    if (row().at == enable_at::sync) {
        EXPECT_NE(exported("sync"), nullptr);
        EXPECT_EQ(reinterpret_cast<void *>(first->sync), exported("sync"));
    } else {
        EXPECT_EQ(first->sync, nullptr);
        EXPECT_EQ(exported("sync"), nullptr);
    }
    EXPECT_NE(first->create, nullptr);
    EXPECT_NE(first->process, nullptr);

    /* registering again rewrites the same table with the same values */
    const JsonModuleOps copy = *first;
    JsonModuleOps *second    = ops();
    EXPECT_EQ(second, first);
    EXPECT_EQ(memcmp(&copy, second, sizeof copy), 0);

    /* the three no-op entries ignore every argument, a null handle included */
    int dummy = 0;
    EXPECT_EQ(first->ctrl(nullptr, 0, nullptr), 0);
    EXPECT_EQ(first->ctrl(nullptr, 0xFFFFFFFF, &dummy), 0);
    EXPECT_EQ(first->set_param(nullptr, nullptr), 0);
    EXPECT_EQ(first->set_param(nullptr, &dummy), 0);
    EXPECT_EQ(first->get_param(nullptr, nullptr), 0);
    EXPECT_EQ(first->get_param(nullptr, &dummy), 0);
    EXPECT_TRUE(isp_sim::calls().empty());
}

TEST_P(catalogue, create_reports_allocation_failure_and_keeps_an_existing_context) {
    const module_row &m  = row();
    isp_test::pipe p     = make_pipe();
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops();
    const size_t logs    = isp_sim::log_lines().size();

    isp_sim::fail_call("QV_OS_MEM_Calloc", 1);
    EXPECT_EQ(static_cast<uint32_t>(table->create(&h)), m.alloc);
    EXPECT_EQ(h.priv, nullptr);
    const std::string malloc_failed = std::string("Isp ") + m.name + " malloc failed.";
    expect_one_log(logs, 3,
                   error_text(op("create"), m.lines->create_alloc, m.alloc, malloc_failed.c_str()));

    ASSERT_EQ(table->create(&h), 0);
    void *context     = h.priv;
    const size_t mark = isp_sim::calls().size();
    EXPECT_EQ(table->create(&h), 0);
    EXPECT_EQ(h.priv, context);
    EXPECT_TRUE(since(mark).empty());
    expect_one_log(logs + 1, 4,
                   format("[W][%32s][%4d]: %s context already calloc!\n", op("create").c_str(),
                          m.lines->create_warn, m.name));

    EXPECT_EQ(table->destroy(&h), 0);
    EXPECT_EQ(h.priv, nullptr);
    /* destroy without a context does nothing */
    const size_t before_second = isp_sim::calls().size();
    EXPECT_EQ(table->destroy(&h), 0);
    EXPECT_TRUE(since(before_second).empty());
    EXPECT_TRUE(isp_sim::live_allocations().empty());
}

TEST_P(catalogue, init_reports_bad_handles_and_each_wrapper_failure) {
    const module_row &m    = row();
    JsonModuleOps *table   = ops();
    const std::string init = op("init");

    {
        SCOPED_TRACE("bad handles");
        isp_test::pipe p   = make_pipe();
        JsonModuleHandle h = p.handle();
        size_t logs        = isp_sim::log_lines().size();
        EXPECT_EQ(static_cast<uint32_t>(table->init(nullptr)), m.arg);
        expect_one_log(logs, 3, error_text(init, m.lines->init_invalid, m.arg, "invalid params."));
        EXPECT_EQ(static_cast<uint32_t>(table->init(&h)), m.arg);  // no context yet
        expect_one_log(logs + 1, 3,
                       error_text(init, m.lines->init_invalid, m.arg, "invalid params."));
        ASSERT_EQ(table->create(&h), 0);
        h.pipe = nullptr;
        EXPECT_EQ(static_cast<uint32_t>(table->init(&h)), m.arg);
        expect_one_log(logs + 2, 3,
                       error_text(init, m.lines->init_invalid, m.arg, "invalid params."));
        EXPECT_EQ(isp_sim::live_wrappers(), 0u);
        EXPECT_EQ(table->destroy(&h), 0);
    }

    struct failure {
        const char *function;
        unsigned nth;
        int line;
        std::string message;
        size_t wrappers_left;
    };
    const std::string block  = std::string("Isp ") + (m.regio + 4);
    const failure failures[] = {
        {"vin_hal_wrapper_create", 1, m.lines->init_create,
         std::string("Isp ") + m.name + " hal wrapper create failed.", 0},
        {"vin_hal_wrapper_regio_create", 1, m.lines->init_regio,
         block + " hal wrapper regio create failed.", 1},
        {"vin_hal_wrapper_setup", 1, m.lines->init_default, block + " hal setup dft param failed.",
         1},
    };
    for (const failure &f : failures) {
        SCOPED_TRACE(f.function);
        isp_sim::reset();
        write_case(2);
        isp_test::pipe p   = make_pipe();
        JsonModuleHandle h = p.handle();
        ASSERT_EQ(table->create(&h), 0);
        const size_t logs = isp_sim::log_lines().size();
        isp_sim::fail_call(f.function, f.nth);
        EXPECT_EQ(static_cast<uint32_t>(table->init(&h)), m.hw);
        expect_one_log(logs, 3, error_text(init, f.line, m.hw, f.message.c_str()));
        /* nothing is rolled back, nothing is loaded, the slot stays empty */
        EXPECT_EQ(isp_sim::live_wrappers(), f.wrappers_left);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
        EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_setup").size(),
                  std::string(f.function) == "vin_hal_wrapper_setup" ? 1u : 0u);
        EXPECT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached").size(), 0u);
        EXPECT_EQ(frame_of(h), 0);
        EXPECT_EQ(table->destroy(&h), 0);
    }
}

TEST_P(catalogue, a_failing_group_push_stops_the_load_with_its_message) {
    const module_row &m = row();
    write_case(2);
    isp_test::pipe p     = make_pipe();
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops();
    ASSERT_EQ(table->create(&h), 0);

    /* the first group failing during init */
    size_t logs = isp_sim::log_lines().size();
    isp_sim::fail_call("vin_hal_wrapper_setup", 2);
    EXPECT_EQ(static_cast<uint32_t>(table->init(&h)), m.hw);
    expect_one_log(logs, 3, error_text(loader(), push_line(0), m.hw, m.groups[0].message));
    EXPECT_EQ(isp_sim::calls_of("vin_hal_wrapper_setup").size(), 2u);
    /* the wrapper was made before the load: it stays, and so does the slot */
    EXPECT_EQ(p.ctx.wrapper_slot[m.slot], h.priv);
    const uint32_t wrapper = wrapper_of(h);

    for (size_t i = 0; i < m.groups.size(); ++i) {
        SCOPED_TRACE("group " + std::to_string(i));
        logs              = isp_sim::log_lines().size();
        const size_t mark = isp_sim::calls().size();
        isp_sim::fail_call("vin_hal_wrapper_setup", static_cast<unsigned>(i + 1));
        EXPECT_EQ(static_cast<uint32_t>(table->process(&h)), m.hw);
        const std::vector<isp_sim::call> calls = since(mark);
        ASSERT_EQ(calls.size(), i + 1);
        for (size_t k = 0; k <= i; ++k) {
            EXPECT_EQ(calls[k].function, "vin_hal_wrapper_setup");
            EXPECT_EQ(calls[k].handle, wrapper);
            EXPECT_EQ(calls[k].cmd, m.groups[k].cmd);
        }
        expect_one_log(logs, 3, error_text(loader(), push_line(i), m.hw, m.groups[i].message));
    }
    EXPECT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_P(catalogue, loader_checks_its_pointers_the_case_path_and_the_grid) {
    const module_row &m = row();
    write_case(2);
    isp_test::pipe p     = make_pipe();
    JsonModuleHandle h   = p.handle();
    JsonModuleOps *table = ops();
    const std::string null_text =
        format("[E][%32s][%4d]: Error: Pointer is null!\n", loader().c_str(), load_null_handle);

    size_t logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(table->process(nullptr)), null_pointer_code);
    expect_one_log(logs, 3, null_text);
    EXPECT_EQ(static_cast<uint32_t>(table->process(&h)), null_pointer_code);  // no context
    expect_one_log(
        logs + 1, 3,
        format("[E][%32s][%4d]: Error: Pointer is null!\n", loader().c_str(), load_null_context));
    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);
    JsonModuleHandle no_pipe = h;
    no_pipe.pipe             = nullptr;
    logs                     = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(table->process(&no_pipe)), null_pointer_code);
    expect_one_log(
        logs, 3,
        format("[E][%32s][%4d]: Error: Pointer is null!\n", loader().c_str(), load_null_pipe));

    /* an empty case path: -1 before any file is touched */
    const int32_t frame = frame_of(h);
    p.ctx.case_path[0]  = '\0';
    size_t mark         = isp_sim::calls().size();
    logs                = isp_sim::log_lines().size();
    EXPECT_EQ(table->process(&h), -1);
    expect_one_log(
        logs, 3, format("[E][%32s][%4d]: case path invalid.\n", loader().c_str(), load_case_path));
    EXPECT_TRUE(since(mark).empty());
    EXPECT_EQ(frame_of(h), frame);
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);

    /* an empty grid: refused by the modules that check it, loaded as nothing by the others */
    for (const IspPipeAttr grid : {IspPipeAttr{0, 1}, IspPipeAttr{2, 0}}) {
        SCOPED_TRACE(std::to_string(grid.part_h) + " x " + std::to_string(grid.part_v));
        p.ctx.attr = grid;
        mark       = isp_sim::calls().size();
        logs       = isp_sim::log_lines().size();
        if (m.grid != 0) {
            EXPECT_EQ(static_cast<uint32_t>(table->process(&h)), m.grid);
            expect_one_log(logs, 3, error_text(loader(), load_grid, m.grid, "partition err!!!."));
            EXPECT_TRUE(since(mark).empty());
        } else {
            EXPECT_EQ(table->process(&h), 0);
            expect_groups(since(mark), wrapper_of(h));
            EXPECT_EQ(isp_sim::log_lines().size(), logs);
        }
    }
    p.ctx.attr = IspPipeAttr{2, 1};
    EXPECT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_P(catalogue, trigger_checks_handle_and_case_path_and_reports_the_wrapper) {
    const module_row &m = row();
    write_case(2);
    isp_test::pipe p          = make_pipe();
    JsonModuleHandle h        = p.handle(walk_trigger);
    JsonModuleOps *table      = ops();
    const std::string trigger = op("trigger");

    if (m.trigger_noop) {
        /* this block is started by another: trigger never looks at anything */
        EXPECT_EQ(table->trigger(nullptr), 0);
        EXPECT_EQ(table->trigger(&h), 0);
        p.ctx.case_path[0] = '\0';
        EXPECT_EQ(table->trigger(&h), 0);
        EXPECT_TRUE(isp_sim::calls().empty());
        EXPECT_TRUE(isp_sim::log_lines().empty());
        return;
    }

    size_t logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(table->trigger(nullptr)), m.arg);
    expect_one_log(logs, 3,
                   error_text(trigger, m.lines->trigger_invalid, m.arg, "invalid params."));
    EXPECT_EQ(static_cast<uint32_t>(table->trigger(&h)), m.arg);
    expect_one_log(logs + 1, 3,
                   error_text(trigger, m.lines->trigger_invalid, m.arg, "invalid params."));
    EXPECT_EQ(p.shadow.module_enable, 0u);

    ASSERT_EQ(table->create(&h), 0);
    ASSERT_EQ(table->init(&h), 0);

    /* bypass bit clear, enable bit clear: a trigger that updates the bit would set it */
    p.shadow.module_enable = 0;
    set_bypass(p, false);
    p.ctx.case_path[0] = '\0';
    size_t mark        = isp_sim::calls().size();
    logs               = isp_sim::log_lines().size();
    EXPECT_EQ(table->trigger(&h), -1);
    expect_one_log(
        logs, 3,
        format("[E][%32s][%4d]: case path invalid.\n", trigger.c_str(), m.lines->trigger_case));
    EXPECT_TRUE(since(mark).empty());
    EXPECT_EQ(p.shadow.module_enable, 0u);
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);

    /* the bit is written before the wrapper is asked, so a failing trigger still updates it */
    isp_sim::fail_call("vin_hal_wrapper_trigger", 1);
    mark = isp_sim::calls().size();
    logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(table->trigger(&h)), m.hw);
    const std::string failed = std::string("Isp ") + m.name + " hal trigger failed.";
    expect_one_log(logs, 3, error_text(trigger, m.lines->trigger_fail, m.hw, failed.c_str()));
    EXPECT_EQ(names_of(since(mark)), std::vector<std::string>{"vin_hal_wrapper_trigger"});
    EXPECT_EQ(p.shadow.module_enable, m.at == enable_at::trigger ? 1u << m.enable : 0u);

    EXPECT_EQ(table->deinit(&h), 0);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_P(catalogue, sync_checks_its_handle_before_touching_the_shadow) {
    const module_row &m  = row();
    JsonModuleOps *table = ops();
    if (m.at != enable_at::sync) GTEST_SKIP() << "no sync operation";
    isp_test::pipe p   = make_pipe();
    JsonModuleHandle h = p.handle();
    const std::string text =
        error_text(op("sync"), m.lines->sync_invalid, m.arg, "invalid params.");
    p.shadow.module_enable = 0;
    set_bypass(p, false);

    size_t logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(table->sync(nullptr)), m.arg);
    expect_one_log(logs, 3, text);
    EXPECT_EQ(static_cast<uint32_t>(table->sync(&h)), m.arg);  // no context
    expect_one_log(logs + 1, 3, text);
    ASSERT_EQ(table->create(&h), 0);
    JsonModuleHandle no_pipe = h;
    no_pipe.pipe             = nullptr;
    EXPECT_EQ(static_cast<uint32_t>(table->sync(&no_pipe)), m.arg);
    expect_one_log(logs + 2, 3, text);
    EXPECT_EQ(p.shadow.module_enable, 0u);

    /* a created module syncs without init */
    EXPECT_EQ(table->sync(&h), 0);
    EXPECT_EQ(p.shadow.module_enable, 1u << m.enable);
    EXPECT_EQ(table->destroy(&h), 0);
}

TEST_P(catalogue, deinit_reports_bad_handles_and_each_wrapper_failure) {
    const module_row &m      = row();
    JsonModuleOps *table     = ops();
    const std::string deinit = op("deinit");
    const std::string block  = std::string("Isp ") + (m.regio + 4);
    write_case(2);

    {
        isp_test::pipe p   = make_pipe();
        JsonModuleHandle h = p.handle();
        size_t logs        = isp_sim::log_lines().size();
        EXPECT_EQ(static_cast<uint32_t>(table->deinit(nullptr)), m.arg);
        expect_one_log(logs, 3,
                       error_text(deinit, m.lines->deinit_invalid, m.arg, "invalid params."));
        EXPECT_EQ(static_cast<uint32_t>(table->deinit(&h)), m.arg);
        expect_one_log(logs + 1, 3,
                       error_text(deinit, m.lines->deinit_invalid, m.arg, "invalid params."));
        /* created but never initialised: the slot is empty, nothing to do */
        ASSERT_EQ(table->create(&h), 0);
        const size_t mark = isp_sim::calls().size();
        EXPECT_EQ(table->deinit(&h), 0);
        EXPECT_TRUE(since(mark).empty());
        EXPECT_EQ(isp_sim::log_lines().size(), logs + 2);
        EXPECT_EQ(table->destroy(&h), 0);
    }

    struct failure {
        const char *function;
        int line;
        std::string message;
    };
    const failure failures[] = {
        {"vin_hal_wrapper_regio_destroy", m.lines->deinit_regio,
         block + " hal regio destroy failed."},
        {"vin_hal_wrapper_destroy", m.lines->deinit_destroy, block + " hal destroy failed."},
    };
    for (const failure &f : failures) {
        SCOPED_TRACE(f.function);
        isp_sim::reset();
        isp_test::pipe p   = make_pipe();
        JsonModuleHandle h = p.handle();
        ASSERT_EQ(table->create(&h), 0);
        ASSERT_EQ(table->init(&h), 0);
        const uint32_t wrapper = wrapper_of(h);
        const size_t logs      = isp_sim::log_lines().size();
        isp_sim::fail_call(f.function, 1);
        EXPECT_EQ(static_cast<uint32_t>(table->deinit(&h)), m.hw);
        expect_one_log(logs, 3, error_text(deinit, f.line, m.hw, f.message.c_str()));
        /* stopped where it failed: handle and slot still there, no buffer freed */
        EXPECT_EQ(wrapper_of(h), wrapper);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], h.priv);
        EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
        EXPECT_EQ(table->destroy(&h), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(all_modules, catalogue, testing::ValuesIn(rows), row_name);

/* The dynamic symbol table names every registration and every operation, and no sync for the
 * four modules without one. */
TEST(catalogue_exports, dynamic_symbols_list_every_registration_and_operation) {
    const std::string command = std::string("nm -D --defined-only ") + ISP_JSON_LIBRARY_FILE;
    FILE *pipe                = popen(command.c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::set<std::string> symbols;
    char line[1024];
    while (fgets(line, sizeof line, pipe)) {
        char type[8], name[900];
        unsigned long long address;
        if (sscanf(line, "%llx %7s %899s", &address, type, name) == 3 && strcmp(type, "T") == 0)
            symbols.insert(name);
    }
    ASSERT_EQ(pclose(pipe), 0) << command;

    const char *const operations[] = {"create",  "destroy", "init", "deinit",    "process",
                                      "trigger", "sync",    "ctrl", "set_param", "get_param"};
    size_t registrations = 0, module_ops = 0;
    for (const std::string &s : symbols) {
        if (std::regex_match(s, std::regex("qv_isp_module_.*_json_register"))) ++registrations;
        if (std::regex_match(s, std::regex("isp_.*_json_mod_.*"))) ++module_ops;
    }
    for (const module_row &m : rows) {
        const std::string name = m.name;
        EXPECT_EQ(symbols.count("qv_isp_module_" + name + "_json_register"), 1u) << name;
        for (const char *operation : operations) {
            const bool present = symbols.count("isp_" + name + "_json_mod_" + operation) == 1;
            const bool wanted  = strcmp(operation, "sync") != 0 || m.at == enable_at::sync;
            EXPECT_EQ(present, wanted) << name << " " << operation;
        }
    }
    EXPECT_EQ(registrations, 34u);
    EXPECT_EQ(module_ops, 34u * 10 - no_sync_modules);
}

class banner : public testing::Test {
  protected:
    void SetUp() override {
        isp_sim::reset();
        isp_sim::set_log_echo(false);
    }
    void TearDown() override {
        isp_sim::reset();
        isp_sim::set_log_echo(true);
    }
};

/* ae_stat announces the library on every registration; no other module says anything. */
TEST_F(banner, ae_stat_registration_logs_the_version_banner_every_time) {
    const std::regex shape(
        "\\[D\\]\\[qv_isp_module_ae_stat_json_register\\]\\[ 400\\]: \\[SDK version\\]: "
        "libisp_json\\.so V2\\.0\\.0_P5_[0-9]{14} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4} "
        "[0-9]{2}:[0-9]{2}:[0-9]{2}\n");
    JsonModuleOps *table = nullptr;
    for (int round = 1; round <= 2; ++round) {
        ASSERT_EQ(qv_isp_module_ae_stat_json_register(&table), 0);
        ASSERT_EQ(isp_sim::log_lines().size(), static_cast<size_t>(round));
        const isp_sim::log_line &line = isp_sim::log_lines().back();
        EXPECT_EQ(line.level, 7);
        EXPECT_EQ(line.tag, "ISP");
        EXPECT_EQ(line.flag, 1);
        EXPECT_TRUE(std::regex_match(line.text, shape)) << line.text;
    }
    EXPECT_TRUE(isp_sim::calls().empty());
}

TEST_F(banner, every_other_registration_is_silent) {
    for (const module_row &m : rows) {
        if (std::string(m.name) == "ae_stat") continue;
        JsonModuleOps *table = nullptr;
        EXPECT_EQ(m.reg(&table), 0) << m.name;
        EXPECT_NE(table, nullptr) << m.name;
    }
    EXPECT_TRUE(isp_sim::log_lines().empty());
    EXPECT_TRUE(isp_sim::calls().empty());
}

}  // namespace
