/* Every module of the catalogue walked through its whole life on the simulated platform, with
 * its constants written out here as the hardware documentation gives them: wrapper type, block
 * codes, depths, register I/O name, memory tag, wrapper slot, enable bit, status codes, messages
 * and source lines, and the groups in the order they reach the wrapper. */
#include <dlfcn.h>
#include <stdint.h>
#include <string.h>

#include <map>
#include <ostream>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_platform.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::calls_since;
using isp_test::error_line;
using isp_test::expect_log;
using isp_test::format;
using isp_test::names_of;

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

const uint8_t walk_pipe_id  = 2;
const uint32_t walk_trigger = 0x5A5A1234;

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

void PrintTo(const module_row &m, std::ostream *out) {
    *out << m.name;
}

class catalogue : public isp_test::platform_test, public testing::WithParamInterface<module_row> {
  protected:
    /* the register files carry no fields, so the converters report every one they miss */
    void SetUp() override {
        platform_test::SetUp();
        quiet_stderr();
    }

    const module_row &row() const { return GetParam(); }
    std::string op(const char *operation) const {
        return std::string("isp_") + row().name + "_json_mod_" + operation;
    }
    std::string loader() const { return std::string("__") + row().name + "_json_param_setup"; }
    std::string invalid(const char *operation, int line) const {
        return error_line(op(operation), line, row().arg, "invalid params.");
    }
    bool channelled() const { return row().variant == kind::channelled; }
    bool pattern() const { return row().variant == kind::pattern; }
    bool statistics() const { return row().variant == kind::statistics; }

    /* Frames f0 and f1 of a case over two partitions, each file holding the block's empty
     * object; the pattern module's files lie in the case directory itself. */
    void write_case() const {
        const std::string content = register_file(row().block);
        for (int frame = 0; frame < 2; ++frame)
            for (int p = 0; p < 2; ++p) {
                if (pattern())
                    case_dir.write(format(row().file, p), content);
                else if (channelled())
                    frame_file(frame, format(row().file, p, 0), content);
                else
                    frame_file(frame, format(row().file, p), content);
            }
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

    /* frame index and last-frame flag, wherever the module's context keeps them */
    std::pair<int32_t, uint32_t> frame_of(const isp_test::module_instance &m) const {
        if (channelled())
            return {m.context<JsonChnContext>()->frame, m.context<JsonChnContext>()->last_frame};
        return {m.context<JsonModuleContext>()->frame, m.context<JsonModuleContext>()->last_frame};
    }

    size_t context_size() const {
        return statistics()   ? sizeof(JsonStatContext)
               : channelled() ? sizeof(JsonChnContext)
                              : sizeof(JsonModuleContext);
    }

    /* Sets every bypass bit but the module's, or only the module's. */
    void set_bypass(isp_test::pipe &p, bool module_bit_set) const {
        const int bit = row().bypass < 0 ? 0 : row().bypass;
        memset(p.ctx.bypass, module_bit_set ? 0x00 : 0xFF, sizeof p.ctx.bypass);
        p.ctx.bypass[bit / 8] ^= static_cast<uint8_t>(1u << (bit % 8));
    }
    /* The enable bits expected: the module's bit follows the inverted bypass bit, the others
     * keep what they held. */
    uint32_t with_bit(uint32_t others, bool on) const {
        if (row().enable < 0) return others;  // ainr keeps no enable bit
        const uint32_t bit = 1u << row().enable;
        return on ? others | bit : others & ~bit;
    }

    /* The pipe of every walk: a 2 x 1 grid on the case with frames f0 and f1. */
    isp_test::pipe make_pipe() const { return isp_test::pipe(2, 1, case_dir.path(), 1); }
};

std::string row_name(const testing::TestParamInfo<module_row> &info) {
    return info.param.name;
}

/* register -> create -> init -> process -> deinit -> destroy, and every constant of the module
 * as it shows in the records (trigger and sync have tests of their own below). */
TEST_P(catalogue, whole_lifecycle_shows_every_constant) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    p.ctx.pipe_id    = walk_pipe_id;
    isp_test::module_instance mod(m.reg, p);
    ASSERT_NE(mod.ops, nullptr);
    const size_t logs = isp_sim::log_lines().size();

    /* create: one zero-filled context under the module's tag */
    size_t mark = isp_sim::calls().size();
    ASSERT_EQ(mod.create(), 0);
    ASSERT_NE(mod.h.priv, nullptr);
    std::vector<isp_sim::call> calls = calls_since(mark);
    ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Calloc"});
    EXPECT_EQ(calls[0].tag, m.tag);
    EXPECT_EQ(calls[0].size, context_size());
    EXPECT_EQ(std::vector<uint8_t>(mod.context<uint8_t>(), mod.context<uint8_t>() + context_size()),
              std::vector<uint8_t>(context_size(), 0));
    EXPECT_EQ(isp_sim::live_allocations(), (std::map<uint32_t, int>{{m.tag, 1}}));

    /* init: wrapper, register I/O, default parameters, [statistics buffer], frame 0 */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.init(), 0);
    calls                             = calls_since(mark);
    std::vector<std::string> expected = {"vin_hal_wrapper_create", "vin_hal_wrapper_regio_create",
                                         "vin_hal_wrapper_setup"};
    if (statistics()) expected.push_back("qv_hal_sys_mem_alloc_cached");
    const size_t before_groups = expected.size();
    expected.insert(expected.end(), m.groups.size(), "vin_hal_wrapper_setup");
    ASSERT_EQ(names_of(calls), expected);

    VinHalWrapperAttr attr;
    isp_test::copy_bytes(calls[0].record, attr);
    EXPECT_EQ(attr.type, m.type);
    EXPECT_EQ(attr.reserved, 0u);
    EXPECT_EQ(attr.mode, 2u);
    EXPECT_EQ(attr.register_func, &isp_plat_hal_register_func);
    EXPECT_EQ(attr.pipe_attr, &p.ctx.attr);
    const uint32_t wrapper = calls[0].handle;
    EXPECT_EQ(mod.wrapper(), wrapper);

    /* the register I/O record byte for byte, every reserved byte zero */
    VinHalRegioAttr regio;
    isp_test::clear(regio);
    regio.pipe_id       = walk_pipe_id;
    regio.mode          = 1;
    regio.reg_base      = 0x2400000;
    regio.block_code[0] = m.code0;
    regio.block_code[1] = m.code1;
    regio.regdesc_get   = &qv_regio_regdesc_get_plat;
    regio.part_num      = 2;
    regio.depth[0]      = m.depth0;
    regio.depth[1]      = m.depth1;
    regio.flag          = 1;
    regio.param[0]      = 2;
    regio.param[1]      = 4;
    strncpy(regio.name, m.regio, sizeof regio.name - 1);
    EXPECT_EQ(calls[1].handle, wrapper);
    EXPECT_EQ(calls[1].record, isp_test::bytes_of(regio));

    EXPECT_EQ(calls[2].handle, wrapper);
    EXPECT_EQ(calls[2].cmd, 0u);
    EXPECT_FALSE(calls[2].has_data);
    if (statistics()) {
        const JsonStatContext *ctx = mod.context<JsonStatContext>();
        const bool ae              = std::string(m.name) == "ae_stat";
        EXPECT_EQ(calls[3].pipe_id, walk_pipe_id);
        EXPECT_EQ(calls[3].align, 128u);
        EXPECT_EQ(calls[3].size, ae ? 264336u : 456720u);
        EXPECT_EQ(calls[3].name, ae ? "vin_ae_stat2x3" : "vin_awb_stat2x3");
        EXPECT_EQ(ctx->area_size, ae ? 88112u : 152240u);
        EXPECT_EQ(ctx->area_count, 3u);
        EXPECT_EQ(ctx->phys, 0x10000000u);
        EXPECT_NE(ctx->virt, nullptr);
    }
    expect_groups(std::vector<isp_sim::call>(calls.begin() + before_groups, calls.end()), wrapper);
    for (size_t slot = 0; slot < ISP_WRAPPER_SLOTS; ++slot)
        EXPECT_EQ(p.ctx.wrapper_slot[slot], slot == m.slot ? mod.h.priv : nullptr) << slot;
    EXPECT_TRUE(isp_sim::wrapper(wrapper).exists && isp_sim::wrapper(wrapper).regio);
    /* the first load moved on to f1; the pattern module has no frames */
    EXPECT_EQ(frame_of(mod), std::make_pair(pattern() ? 0 : 1, 0u));

    /* process, through both processing slots: the groups again, in the same order */
    for (JsonModuleOp process : {mod.ops->process, mod.ops->process2}) {
        mark = isp_sim::calls().size();
        ASSERT_EQ(process(&mod.h), 0);
        expect_groups(calls_since(mark), wrapper);
        EXPECT_EQ(frame_of(mod), pattern() ? std::make_pair(0, 0u) : std::make_pair(1, 1u));
    }

    /* deinit: register I/O and wrapper destroyed, [buffer freed], slot and handle cleared */
    const uint64_t phys = statistics() ? mod.context<JsonStatContext>()->phys : 0;
    mark                = isp_sim::calls().size();
    ASSERT_EQ(mod.deinit(), 0);
    calls    = calls_since(mark);
    expected = {"vin_hal_wrapper_regio_destroy", "vin_hal_wrapper_destroy"};
    if (statistics()) expected.push_back("QV_SYS_MemFree");
    ASSERT_EQ(names_of(calls), expected);
    EXPECT_EQ(calls[0].handle, wrapper);
    EXPECT_EQ(calls[1].handle, wrapper);
    if (statistics()) {
        EXPECT_EQ(calls[2].phys, phys);
        EXPECT_EQ(mod.context<JsonStatContext>()->phys, 0u);
        EXPECT_EQ(mod.context<JsonStatContext>()->virt, nullptr);
    }
    EXPECT_EQ(mod.wrapper(), 0u);
    EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
    EXPECT_EQ(isp_sim::live_wrappers(), 0u);
    EXPECT_EQ(isp_sim::live_dma_buffers(), 0u);
    /* a second deinit finds the slot empty: nothing is destroyed or freed twice */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.deinit(), 0);
    EXPECT_TRUE(calls_since(mark).empty());

    /* destroy: the context freed under the same tag */
    mark = isp_sim::calls().size();
    ASSERT_EQ(mod.destroy(), 0);
    EXPECT_EQ(mod.h.priv, nullptr);
    calls = calls_since(mark);
    ASSERT_EQ(names_of(calls), std::vector<std::string>{"QV_OS_MEM_Free"});
    EXPECT_EQ(calls[0].tag, m.tag);
    EXPECT_TRUE(isp_sim::live_allocations().empty());
    /* a clean life reports nothing */
    EXPECT_EQ(isp_sim::log_lines().size(), logs);
}

TEST_P(catalogue, registration_fills_every_slot_with_the_exported_operation) {
    JsonModuleOps *first = isp_test::ops_of(row().reg);
    ASSERT_NE(first, nullptr);
    const auto exported = [&](const char *operation) {
        return dlsym(RTLD_DEFAULT, op(operation).c_str());
    };
    const std::pair<const void *, const char *> slots[] = {
        {reinterpret_cast<void *>(first->create), "create"},
        {reinterpret_cast<void *>(first->destroy), "destroy"},
        {reinterpret_cast<void *>(first->init), "init"},
        {reinterpret_cast<void *>(first->deinit), "deinit"},
        {reinterpret_cast<void *>(first->process), "process"},
        {reinterpret_cast<void *>(first->process2), "process"},
        {reinterpret_cast<void *>(first->trigger), "trigger"},
        {reinterpret_cast<void *>(first->sync), "sync"},
        {reinterpret_cast<void *>(first->ctrl), "ctrl"},
        {reinterpret_cast<void *>(first->set_param), "set_param"},
        {reinterpret_cast<void *>(first->get_param), "get_param"},
    };
    for (const auto &slot : slots) {
        EXPECT_EQ(slot.first, exported(slot.second)) << slot.second;
        /* only the four modules without a sync slot leave one empty */
        EXPECT_EQ(slot.first != nullptr,
                  std::string(slot.second) != "sync" || row().at == enable_at::sync)
            << slot.second;
    }

    /* registering again rewrites the same table with the same values */
    const JsonModuleOps copy = *first;
    EXPECT_EQ(isp_test::ops_of(row().reg), first);
    EXPECT_EQ(memcmp(&copy, first, sizeof copy), 0);

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
    const module_row &m = row();
    isp_test::pipe p    = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    const size_t logs = isp_sim::log_lines().size();

    isp_sim::fail_call("QV_OS_MEM_Calloc", 1);
    EXPECT_EQ(static_cast<uint32_t>(mod.create()), m.alloc);
    EXPECT_EQ(mod.h.priv, nullptr);
    expect_log(logs, error_line(op("create"), m.lines->create_alloc, m.alloc,
                                std::string("Isp ") + m.name + " malloc failed."));

    ASSERT_EQ(mod.create(), 0);
    void *context = mod.h.priv;
    size_t mark   = isp_sim::calls().size();
    EXPECT_EQ(mod.create(), 0);
    EXPECT_EQ(mod.h.priv, context);
    EXPECT_TRUE(calls_since(mark).empty());
    expect_log(logs + 1,
               format("[W][%32s][%4d]: %s context already calloc!\n", op("create").c_str(),
                      m.lines->create_warn, m.name),
               4);

    EXPECT_EQ(mod.destroy(), 0);
    EXPECT_EQ(mod.h.priv, nullptr);
    /* destroy without a context does nothing */
    mark = isp_sim::calls().size();
    EXPECT_EQ(mod.destroy(), 0);
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_TRUE(isp_sim::live_allocations().empty());
}

TEST_P(catalogue, init_reports_bad_handles_and_each_wrapper_failure) {
    const module_row &m = row();
    {
        SCOPED_TRACE("bad handles");
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        const size_t logs = isp_sim::log_lines().size();  // after ae_stat's banner
        EXPECT_EQ(static_cast<uint32_t>(mod.ops->init(nullptr)), m.arg);
        expect_log(logs, invalid("init", m.lines->init_invalid));
        EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.arg);  // no context yet
        expect_log(logs + 1, invalid("init", m.lines->init_invalid));
        ASSERT_EQ(mod.create(), 0);
        mod.h.pipe = nullptr;
        EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.arg);
        expect_log(logs + 2, invalid("init", m.lines->init_invalid));
        EXPECT_EQ(isp_sim::live_wrappers(), 0u);
        EXPECT_EQ(mod.destroy(), 0);
    }

    const std::string block = std::string("Isp ") + (m.regio + 4);
    const struct {
        const char *function;
        int line;
        std::string message;
        size_t wrappers_left;
    } failures[] = {
        {"vin_hal_wrapper_create", m.lines->init_create,
         std::string("Isp ") + m.name + " hal wrapper create failed.", 0},
        {"vin_hal_wrapper_regio_create", m.lines->init_regio,
         block + " hal wrapper regio create failed.", 1},
        {"vin_hal_wrapper_setup", m.lines->init_default, block + " hal setup dft param failed.", 1},
    };
    write_case();
    for (const auto &f : failures) {
        SCOPED_TRACE(f.function);
        isp_sim::reset();
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        ASSERT_EQ(mod.create(), 0);
        const size_t logs = isp_sim::log_lines().size();
        isp_sim::fail_call(f.function, 1);
        EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.hw);
        expect_log(logs, error_line(op("init"), f.line, m.hw, f.message));
        /* nothing is rolled back, nothing is loaded, the slot stays empty */
        EXPECT_EQ(isp_sim::live_wrappers(), f.wrappers_left);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], nullptr);
        EXPECT_EQ(isp_test::pushes().size(),
                  std::string(f.function) == "vin_hal_wrapper_setup" ? 1u : 0u);
        EXPECT_EQ(isp_sim::calls_of("qv_hal_sys_mem_alloc_cached").size(), 0u);
        EXPECT_EQ(frame_of(mod).first, 0);
        EXPECT_EQ(mod.destroy(), 0);
    }
}

TEST_P(catalogue, a_failing_group_push_stops_the_load_with_its_message) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    ASSERT_EQ(mod.create(), 0);

    /* the first group failing during init */
    size_t logs = isp_sim::log_lines().size();
    isp_sim::fail_call("vin_hal_wrapper_setup", 2);
    EXPECT_EQ(static_cast<uint32_t>(mod.init()), m.hw);
    expect_log(logs, error_line(loader(), push_line(0), m.hw, m.groups[0].message));
    EXPECT_EQ(isp_test::pushes().size(), 2u);
    /* the wrapper was made before the load: it stays, and so do the slot and the frame advance */
    EXPECT_EQ(p.ctx.wrapper_slot[m.slot], mod.h.priv);
    EXPECT_EQ(frame_of(mod).first, pattern() ? 0 : 1);

    for (size_t i = 0; i < m.groups.size(); ++i) {
        SCOPED_TRACE("group " + std::to_string(i));
        logs              = isp_sim::log_lines().size();
        const size_t mark = isp_sim::calls().size();
        isp_sim::fail_call("vin_hal_wrapper_setup", static_cast<unsigned>(i + 1));
        EXPECT_EQ(static_cast<uint32_t>(mod.process()), m.hw);
        const std::vector<isp_sim::call> calls = calls_since(mark);
        ASSERT_EQ(calls.size(), i + 1);
        for (size_t k = 0; k <= i; ++k) {
            EXPECT_EQ(calls[k].function, "vin_hal_wrapper_setup");
            EXPECT_EQ(calls[k].handle, mod.wrapper());
            EXPECT_EQ(calls[k].cmd, m.groups[k].cmd);
        }
        expect_log(logs, error_line(loader(), push_line(i), m.hw, m.groups[i].message));
    }
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, loader_checks_its_pointers_the_case_path_and_the_grid) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    const size_t logs    = isp_sim::log_lines().size();
    const auto null_line = [&](int line) {
        return format("[E][%32s][%4d]: Error: Pointer is null!\n", loader().c_str(), line);
    };

    EXPECT_EQ(static_cast<uint32_t>(mod.ops->process(nullptr)), null_pointer_code);
    expect_log(logs, null_line(load_null_handle));
    EXPECT_EQ(static_cast<uint32_t>(mod.process()), null_pointer_code);  // no context
    expect_log(logs + 1, null_line(load_null_context));
    ASSERT_EQ(mod.create(), 0);
    ASSERT_EQ(mod.init(), 0);
    JsonModuleHandle no_pipe = mod.h;
    no_pipe.pipe             = nullptr;
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->process(&no_pipe)), null_pointer_code);
    expect_log(logs + 2, null_line(load_null_pipe));

    /* an empty case path: -1 before any file is touched */
    const auto frame   = frame_of(mod);
    p.ctx.case_path[0] = '\0';
    size_t mark        = isp_sim::calls().size();
    EXPECT_EQ(mod.process(), -1);
    expect_log(logs + 3,
               format("[E][%32s][%4d]: case path invalid.\n", loader().c_str(), load_case_path));
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_EQ(frame_of(mod), frame);
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);

    /* an empty grid: refused by the modules that check it, loaded as nothing by the others */
    for (const IspPipeAttr grid : {IspPipeAttr{0, 1}, IspPipeAttr{2, 0}}) {
        SCOPED_TRACE(std::to_string(grid.part_h) + " x " + std::to_string(grid.part_v));
        p.ctx.attr         = grid;
        mark               = isp_sim::calls().size();
        const size_t lines = isp_sim::log_lines().size();
        if (m.grid != 0) {
            EXPECT_EQ(static_cast<uint32_t>(mod.process()), m.grid);
            expect_log(lines, error_line(loader(), load_grid, m.grid, "partition err!!!."));
            EXPECT_TRUE(calls_since(mark).empty());
        } else {
            EXPECT_EQ(mod.process(), 0);
            expect_groups(calls_since(mark), mod.wrapper());
            EXPECT_EQ(isp_sim::log_lines().size(), lines);
        }
    }
    p.ctx.attr = IspPipeAttr{2, 1};
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, trigger_checks_handle_and_case_path_and_reports_the_wrapper) {
    const module_row &m = row();
    write_case();
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p, walk_trigger);

    if (m.trigger_noop) {
        /* this block is started by another: trigger never looks at anything */
        EXPECT_EQ(mod.ops->trigger(nullptr), 0);
        EXPECT_EQ(mod.trigger(), 0);
        p.ctx.case_path[0] = '\0';
        EXPECT_EQ(mod.trigger(), 0);
        EXPECT_TRUE(isp_sim::calls().empty());
        EXPECT_TRUE(isp_sim::log_lines().empty());
        return;
    }

    const size_t logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->trigger(nullptr)), m.arg);
    expect_log(logs, invalid("trigger", m.lines->trigger_invalid));
    EXPECT_EQ(static_cast<uint32_t>(mod.trigger()), m.arg);
    expect_log(logs + 1, invalid("trigger", m.lines->trigger_invalid));
    EXPECT_EQ(p.shadow.module_enable, 0u);
    ASSERT_EQ(mod.create(), 0);
    ASSERT_EQ(mod.init(), 0);

    /* the wrapper with mode 1 and the handle's argument; the enable bit, inverted from the bypass
     * bit, for the modules that keep it there, in either direction */
    for (const bool bypassed : {false, true}) {
        const uint32_t others  = bypassed ? 0xFFFFFFFF : 0;
        p.shadow.module_enable = others;
        set_bypass(p, bypassed);
        const size_t mark = isp_sim::calls().size();
        ASSERT_EQ(mod.trigger(), 0);
        const std::vector<isp_sim::call> calls = calls_since(mark);
        ASSERT_EQ(names_of(calls), std::vector<std::string>{"vin_hal_wrapper_trigger"});
        EXPECT_EQ(calls[0].handle, mod.wrapper());
        EXPECT_EQ(calls[0].mode, 1u);
        EXPECT_EQ(calls[0].arg, walk_trigger);
        EXPECT_EQ(calls[0].channel, 0u);
        EXPECT_EQ(p.shadow.module_enable,
                  m.at == enable_at::trigger ? with_bit(others, !bypassed) : others);
    }

    /* bypass bit clear, enable bit clear: a trigger that updates the bit would set it */
    p.shadow.module_enable = 0;
    set_bypass(p, false);
    p.ctx.case_path[0] = '\0';
    size_t mark        = isp_sim::calls().size();
    EXPECT_EQ(mod.trigger(), -1);
    expect_log(logs + 2, format("[E][%32s][%4d]: case path invalid.\n", op("trigger").c_str(),
                                m.lines->trigger_case));
    EXPECT_TRUE(calls_since(mark).empty());
    EXPECT_EQ(p.shadow.module_enable, 0u);
    strncpy(p.ctx.case_path, case_dir.path().c_str(), sizeof p.ctx.case_path - 1);

    /* the bit is written before the wrapper is asked, so a failing trigger still updates it */
    isp_sim::fail_call("vin_hal_wrapper_trigger", 1);
    mark = isp_sim::calls().size();
    EXPECT_EQ(static_cast<uint32_t>(mod.trigger()), m.hw);
    expect_log(logs + 3, error_line(op("trigger"), m.lines->trigger_fail, m.hw,
                                    std::string("Isp ") + m.name + " hal trigger failed."));
    EXPECT_EQ(names_of(calls_since(mark)), std::vector<std::string>{"vin_hal_wrapper_trigger"});
    EXPECT_EQ(p.shadow.module_enable, with_bit(0, m.at == enable_at::trigger));
    EXPECT_EQ(mod.deinit(), 0);
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, sync_checks_its_handle_before_touching_the_shadow) {
    const module_row &m = row();
    if (m.at != enable_at::sync) GTEST_SKIP() << "no sync operation";
    isp_test::pipe p = make_pipe();
    isp_test::module_instance mod(m.reg, p);
    p.shadow.module_enable = 0;
    set_bypass(p, false);

    const size_t logs = isp_sim::log_lines().size();
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->sync(nullptr)), m.arg);
    expect_log(logs, invalid("sync", m.lines->sync_invalid));
    EXPECT_EQ(static_cast<uint32_t>(mod.sync()), m.arg);  // no context
    expect_log(logs + 1, invalid("sync", m.lines->sync_invalid));
    ASSERT_EQ(mod.create(), 0);
    JsonModuleHandle no_pipe = mod.h;
    no_pipe.pipe             = nullptr;
    EXPECT_EQ(static_cast<uint32_t>(mod.ops->sync(&no_pipe)), m.arg);
    expect_log(logs + 2, invalid("sync", m.lines->sync_invalid));
    EXPECT_EQ(p.shadow.module_enable, 0u);

    /* a created module syncs without init: the bypass bit, inverted, into the enable bit and
     * nowhere else, without a platform call */
    for (const bool bypassed : {false, true}) {
        const uint32_t others  = bypassed ? 0xFFFFFFFF : 0;
        p.shadow.module_enable = others;
        set_bypass(p, bypassed);
        ASSERT_EQ(mod.sync(), 0);
        EXPECT_EQ(p.shadow.module_enable, with_bit(others, !bypassed));
    }
    EXPECT_EQ(names_of(isp_sim::calls()), std::vector<std::string>{"QV_OS_MEM_Calloc"});
    EXPECT_EQ(mod.destroy(), 0);
}

TEST_P(catalogue, deinit_reports_bad_handles_and_each_wrapper_failure) {
    const module_row &m = row();
    write_case();
    {
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        const size_t logs = isp_sim::log_lines().size();
        EXPECT_EQ(static_cast<uint32_t>(mod.ops->deinit(nullptr)), m.arg);
        expect_log(logs, invalid("deinit", m.lines->deinit_invalid));
        EXPECT_EQ(static_cast<uint32_t>(mod.deinit()), m.arg);
        expect_log(logs + 1, invalid("deinit", m.lines->deinit_invalid));
        /* created but never initialised: the slot is empty, nothing to do */
        ASSERT_EQ(mod.create(), 0);
        const size_t mark = isp_sim::calls().size();
        EXPECT_EQ(mod.deinit(), 0);
        EXPECT_TRUE(calls_since(mark).empty());
        EXPECT_EQ(isp_sim::log_lines().size(), logs + 2);
        EXPECT_EQ(mod.destroy(), 0);
    }

    const std::string block = std::string("Isp ") + (m.regio + 4);
    const struct {
        const char *function;
        int line;
        std::string message;
    } failures[] = {
        {"vin_hal_wrapper_regio_destroy", m.lines->deinit_regio,
         block + " hal regio destroy failed."},
        {"vin_hal_wrapper_destroy", m.lines->deinit_destroy, block + " hal destroy failed."},
    };
    for (const auto &f : failures) {
        SCOPED_TRACE(f.function);
        isp_sim::reset();
        isp_test::pipe p = make_pipe();
        isp_test::module_instance mod(m.reg, p);
        ASSERT_EQ(mod.create(), 0);
        ASSERT_EQ(mod.init(), 0);
        const uint32_t wrapper = mod.wrapper();
        const size_t logs      = isp_sim::log_lines().size();
        isp_sim::fail_call(f.function, 1);
        EXPECT_EQ(static_cast<uint32_t>(mod.deinit()), m.hw);
        expect_log(logs, error_line(op("deinit"), f.line, m.hw, f.message));
        /* stopped where it failed: handle and slot still there, no buffer freed */
        EXPECT_EQ(mod.wrapper(), wrapper);
        EXPECT_EQ(p.ctx.wrapper_slot[m.slot], mod.h.priv);
        EXPECT_EQ(isp_sim::calls_of("QV_SYS_MemFree").size(), 0u);
        EXPECT_EQ(mod.destroy(), 0);
    }
}

INSTANTIATE_TEST_SUITE_P(all_modules, catalogue, testing::ValuesIn(rows), row_name);

using banner = isp_test::platform_test;

/* ae_stat announces the library on every registration; no other module says anything. */
TEST_F(banner, ae_stat_alone_logs_the_version_banner_on_every_registration) {
    const std::regex shape(
        "\\[D\\]\\[qv_isp_module_ae_stat_json_register\\]\\[ 400\\]: \\[SDK version\\]: "
        "libisp_json\\.so V2\\.0\\.0_P5_[0-9]{14} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{4} "
        "[0-9]{2}:[0-9]{2}:[0-9]{2}\n");
    for (size_t round = 0; round < 2; ++round) {
        isp_test::ops_of(qv_isp_module_ae_stat_json_register);
        ASSERT_EQ(isp_sim::log_lines().size(), round + 1);
        const isp_sim::log_line &line = isp_sim::log_lines().back();
        EXPECT_EQ(line.level, 7);
        EXPECT_EQ(line.tag, "ISP");
        EXPECT_EQ(line.flag, 1);
        EXPECT_TRUE(std::regex_match(line.text, shape)) << line.text;
    }
    for (const module_row &m : rows) {
        if (std::string(m.name) == "ae_stat") continue;
        EXPECT_NE(isp_test::ops_of(m.reg), nullptr) << m.name;
    }
    EXPECT_EQ(isp_sim::log_lines().size(), 2u);
    EXPECT_TRUE(isp_sim::calls().empty());
}

}  // namespace
