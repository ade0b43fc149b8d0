/* The register files each of the 34 modules reads, for harnesses and benchmarks that write or
 * read a case themselves: one row per module in catalogue order. */
#ifndef ISP_FUZZ_MODULE_FILES_H
#define ISP_FUZZ_MODULE_FILES_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <string>

#include "isp_json_modules.h"

namespace isp_modules {

enum class file_kind {
    frame,      /* "%s/cfgs/f%d/..._p%d.json": case path, frame, partition */
    channelled, /* "%s/cfgs/f%d/..._p%d_chn%d.json": case path, frame, partition, channel */
    pattern,    /* "%s/..._%d.json": case path, partition; no frames */
};

struct module_file {
    const char *name;
    int32_t (*register_module)(JsonModuleOps **out);
    const char *pattern;
    file_kind kind;
    bool raw_tables; /* a curve or mesh converter passes picojson's type error on */
};

// clang-format off
const module_file modules[] = {
    {"cc", qv_isp_module_cc_json_register, "%s/cfgs/f%d/rtl_clc_p%d.json", file_kind::frame, false},
    {"dehaze", qv_isp_module_dehaze_json_register, "%s/cfgs/f%d/rtl_dehaze_p%d.json", file_kind::frame, false},
    {"demosaic", qv_isp_module_demosaic_json_register, "%s/cfgs/f%d/rtl_dem_p%d.json", file_kind::frame, false},
    {"hs2dlut", qv_isp_module_hs2dlut_json_register, "%s/cfgs/f%d/rtl_lce_p%d.json", file_kind::frame, false},
    {"lin", qv_isp_module_lin_json_register, "%s/cfgs/f%d/rtl_blc_p%d.json", file_kind::frame, false},
    {"ifa", qv_isp_module_ifa_json_register, "%s/cfgs/f%d/rtl_ifa_p%d.json", file_kind::frame, false},
    {"blc", qv_isp_module_blc_json_register, "%s/cfgs/f%d/rtl_blc_p%d_chn%d.json", file_kind::channelled, false},
    {"yuv3dnr", qv_isp_module_yuv3dnr_json_register, "%s/cfgs/f%d/rtl_yuv3dnr_p%d.json", file_kind::frame, false},
    {"ae_stat", qv_isp_module_ae_stat_json_register, "%s/cfgs/f%d/rtl_ae_stat_p%d.json", file_kind::frame, false},
    {"awb_stat", qv_isp_module_awb_stat_json_register, "%s/cfgs/f%d/rtl_awb_stat_p%d.json", file_kind::frame, false},
    {"lsc", qv_isp_module_lsc_json_register, "%s/cfgs/f%d/rtl_lsc_p%d.json", file_kind::frame, true},
    {"af_stat", qv_isp_module_af_stat_json_register, "%s/cfgs/f%d/rtl_af_stat_p%d.json", file_kind::frame, false},
    {"gamma", qv_isp_module_gamma_json_register, "%s/cfgs/f%d/rtl_gamma_p%d.json", file_kind::frame, false},
    {"wbc", qv_isp_module_wbc_json_register, "%s/cfgs/f%d/rtl_wbc_p%d.json", file_kind::frame, false},
    {"ccmp", qv_isp_module_ccmp_json_register, "%s/cfgs/f%d/rtl_lce_p%d.json", file_kind::frame, false},
    {"dpc", qv_isp_module_dpc_json_register, "%s/cfgs/f%d/rtl_dpc_p%d_chn%d.json", file_kind::channelled, false},
    {"ycproc", qv_isp_module_ycproc_json_register, "%s/cfgs/f%d/rtl_lce_p%d.json", file_kind::frame, false},
    {"eis_post", qv_isp_module_eis_post_json_register, "%s/cfgs/f%d/rtl_eis_post_p%d.json", file_kind::frame, false},
    {"y2dnr", qv_isp_module_y2dnr_json_register, "%s/cfgs/f%d/rtl_y2dnr_p%d.json", file_kind::frame, false},
    {"sharpen", qv_isp_module_sharpen_json_register, "%s/cfgs/f%d/rtl_lce_p%d.json", file_kind::frame, false},
    {"rltm", qv_isp_module_rltm_json_register, "%s/cfgs/f%d/rtl_rltm_p%d.json", file_kind::frame, false},
    {"fcc", qv_isp_module_fcc_json_register, "%s/cfgs/f%d/rtl_dem_p%d.json", file_kind::frame, false},
    {"ainr", qv_isp_module_ainr_json_register, "%s/isp_nrlite_ptn_%d.json", file_kind::pattern, false},
    {"csc", qv_isp_module_csc_json_register, "%s/cfgs/f%d/rtl_csc_p%d.json", file_kind::frame, false},
    {"gic", qv_isp_module_gic_json_register, "%s/cfgs/f%d/rtl_dem_p%d.json", file_kind::frame, false},
    {"edge_enhance", qv_isp_module_edge_enhance_json_register, "%s/cfgs/f%d/rtl_dem_p%d.json", file_kind::frame, false},
    {"hidrc", qv_isp_module_hidrc_json_register, "%s/cfgs/f%d/rtl_hidrc_p%d.json", file_kind::frame, true},
    {"depurple", qv_isp_module_depurple_json_register, "%s/cfgs/f%d/rtl_pfd_p%d.json", file_kind::frame, false},
    {"eis_pre", qv_isp_module_eis_pre_json_register, "%s/cfgs/f%d/rtl_eis_pre_p%d.json", file_kind::frame, false},
    {"raw2dnr", qv_isp_module_raw2dnr_json_register, "%s/cfgs/f%d/rtl_raw2dnr_p%d.json", file_kind::frame, false},
    {"bl_det", qv_isp_module_bl_det_json_register, "%s/cfgs/f%d/rtl_bl_det_p%d_chn%d.json", file_kind::channelled, false},
    {"scm", qv_isp_module_scm_json_register, "%s/cfgs/f%d/rtl_lce_p%d.json", file_kind::frame, false},
    {"hdrc", qv_isp_module_hdrc_json_register, "%s/cfgs/f%d/rtl_hdrc_p%d.json", file_kind::frame, true},
    {"hdr", qv_isp_module_hdr_json_register, "%s/cfgs/f%d/rtl_hdr_p%d.json", file_kind::frame, false},
};
// clang-format on

const size_t module_count = sizeof modules / sizeof modules[0];

/* The file a module reads for one frame, partition and channel. */
inline std::string path_of(const module_file &m, const std::string &case_path, int frame,
                           int partition, int channel) {
    char path[4096];
    switch (m.kind) {
        case file_kind::channelled:
            snprintf(path, sizeof path, m.pattern, case_path.c_str(), frame, partition, channel);
            break;
        case file_kind::pattern:
            snprintf(path, sizeof path, m.pattern, case_path.c_str(), partition);
            break;
        default:
            snprintf(path, sizeof path, m.pattern, case_path.c_str(), frame, partition);
            break;
    }
    return path;
}

}  // namespace isp_modules

#endif
