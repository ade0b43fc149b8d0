/* The groups of every module, in the order they are pushed to the wrapper, with their setup
 * commands and failure messages, and the converters run on every partition's file, in their
 * own order (the two orders differ for some blocks). Each module loads into one frame: one
 * driver structure per group, the per-partition members inside them. */
#include <stddef.h>

#include <iterator>

#include "isp_json.h"
#include "modules/groups.h"

namespace isp {
namespace {

template <typename Frame, typename Group, Group Frame::*member,
          int (*convert)(picojson::object &, Group *, uint8_t)>
int convert_into(picojson::object &root, void *frame, uint8_t partition) {
    return convert(root, &(static_cast<Frame *>(frame)->*member), partition);
}

}  // namespace

#define CONVERT(frame, member, fn) &convert_into<frame, decltype(frame::member), &frame::member, fn>
#define PUSH(frame, member, cmd, message) \
    { cmd, offsetof(frame, member), message }
#define LAYOUT(frame, converters, groups)                                                     \
    {                                                                                         \
        sizeof(frame), converters, std::size(converters), groups, std::size(groups), nullptr, \
            nullptr, nullptr                                                                  \
    }

/* ---- cc: colour correction --------------------------------------------------------------- */
namespace {
struct cc_frame {
    _isp_clc_user_init_t init;
    _isp_clc_user_clc_setup_t clc_setup;
    _isp_clc_user_clc_t clc;
};
const converter_fn cc_converters[] = {
    CONVERT(cc_frame, init, rtl_to_drv_clc_user_init),
    CONVERT(cc_frame, clc_setup, rtl_to_drv_clc_user_clc_setup),
    CONVERT(cc_frame, clc, rtl_to_drv_clc_user_clc),
};
const group_push cc_pushes[] = {
    PUSH(cc_frame, init, 3, "Isp clc init hal setup failed."),
    PUSH(cc_frame, clc_setup, 1, "Isp clc clc_setup hal setup failed."),
    PUSH(cc_frame, clc, 2, "Isp clc clc hal setup failed."),
};

/* The partition sizes live beside the frame, one 16-bit element per partition of the grid for
 * each of the two, every array padded to a multiple of 8 bytes. */
size_t cc_size_array_bytes(const PipeContext *pipe) {
    const size_t partitions = static_cast<size_t>(pipe->attr.part_h) * pipe->attr.part_v;
    return (partitions * sizeof(uint16_t) + 7) / 8 * 8;
}
size_t cc_extra_size(const PipeContext *pipe) {
    return 2 * cc_size_array_bytes(pipe);
}
void cc_attach_extra(void *frame, void *extra, const PipeContext *pipe) {
    cc_frame *f          = static_cast<cc_frame *>(frame);
    unsigned char *bytes = static_cast<unsigned char *>(extra);
    f->init.part_size_h  = reinterpret_cast<uint16_t *>(bytes);
    f->init.part_size_v  = reinterpret_cast<uint16_t *>(bytes + cc_size_array_bytes(pipe));
}
}  // namespace
const frame_layout cc_groups = {
    sizeof(cc_frame),     cc_converters, std::size(cc_converters), cc_pushes,
    std::size(cc_pushes), cc_extra_size, cc_attach_extra,          nullptr};

/* ---- dehaze ------------------------------------------------------------------------------ */
namespace {
struct dehaze_frame {
    _isp_dehaze_user_setup_t setup;
    _isp_dehaze_user_part_t part;
    _isp_dehaze_user_ctrl_t ctrl;
};
const converter_fn dehaze_converters[] = {
    CONVERT(dehaze_frame, setup, rtl_to_drv_dehaze_user_setup),
    CONVERT(dehaze_frame, part, rtl_to_drv_dehaze_user_part),
    CONVERT(dehaze_frame, ctrl, rtl_to_drv_dehaze_user_ctrl),
};
const group_push dehaze_pushes[] = {
    PUSH(dehaze_frame, setup, 1, "Isp dehaze setup hal setup failed."),
    PUSH(dehaze_frame, part, 2, "Isp dehaze part hal setup failed."),
    PUSH(dehaze_frame, ctrl, 3, "Isp dehaze ctrl hal setup failed."),
};
}  // namespace
const frame_layout dehaze_groups = LAYOUT(dehaze_frame, dehaze_converters, dehaze_pushes);

/* ---- dem block: demosaic, fcc, gic, edge_enhance ----------------------------------------- */
namespace {
struct demosaic_frame {
    _isp_dem_user_init_t init;
    _isp_dem_user_setup_t setup;
    _isp_dem_user_dem_mode_t dem_mode;
    _isp_dem_user_dem_core_t dem_core;
    _isp_dem_user_wbc_t wbc;
};
const converter_fn demosaic_converters[] = {
    CONVERT(demosaic_frame, init, rtl_to_drv_dem_user_init),
    CONVERT(demosaic_frame, setup, rtl_to_drv_dem_user_setup),
    CONVERT(demosaic_frame, dem_mode, rtl_to_drv_dem_user_dem_mode),
    CONVERT(demosaic_frame, dem_core, rtl_to_drv_dem_user_dem_core),
    CONVERT(demosaic_frame, wbc, rtl_to_drv_dem_user_wbc),
};
const group_push demosaic_pushes[] = {
    PUSH(demosaic_frame, init, 9, "Isp dem init hal setup failed."),
    PUSH(demosaic_frame, setup, 2, "Isp dem setup hal setup failed."),
    PUSH(demosaic_frame, dem_mode, 4, "Isp dem dem_mode hal setup failed."),
    PUSH(demosaic_frame, dem_core, 6, "Isp dem dem_core hal setup failed."),
    PUSH(demosaic_frame, wbc, 3, "Isp dem wbc hal setup failed."),
};

struct fcc_frame {
    _isp_dem_user_fcc_t fcc;
};
const converter_fn fcc_converters[] = {CONVERT(fcc_frame, fcc, rtl_to_drv_dem_user_fcc)};
const group_push fcc_pushes[]       = {PUSH(fcc_frame, fcc, 8, "Isp dem fcc hal setup failed.")};

struct gic_frame {
    _isp_dem_user_gic_t gic;
};
const converter_fn gic_converters[] = {CONVERT(gic_frame, gic, rtl_to_drv_dem_user_gic)};
const group_push gic_pushes[]       = {PUSH(gic_frame, gic, 5, "Isp dem gic hal setup failed.")};

struct edge_enhance_frame {
    _isp_dem_user_sharpen_t sharpen;
};
const converter_fn edge_enhance_converters[] = {
    CONVERT(edge_enhance_frame, sharpen, rtl_to_drv_dem_user_sharpen)};
const group_push edge_enhance_pushes[] = {
    PUSH(edge_enhance_frame, sharpen, 7, "Isp dem sharpen hal setup failed.")};
}  // namespace
const frame_layout demosaic_groups = LAYOUT(demosaic_frame, demosaic_converters, demosaic_pushes);
const frame_layout fcc_groups      = LAYOUT(fcc_frame, fcc_converters, fcc_pushes);
const frame_layout gic_groups      = LAYOUT(gic_frame, gic_converters, gic_pushes);
const frame_layout edge_enhance_groups =
    LAYOUT(edge_enhance_frame, edge_enhance_converters, edge_enhance_pushes);

/* ---- lce block: hs2dlut, ccmp, ycproc, sharpen, scm -------------------------------------- */
namespace {
struct hs2dlut_frame {
    _isp_lce_user_hs2dlut_t hs2dlut;
};
const converter_fn hs2dlut_converters[] = {
    CONVERT(hs2dlut_frame, hs2dlut, rtl_to_drv_lce_user_hs2dlut)};
const group_push hs2dlut_pushes[] = {
    PUSH(hs2dlut_frame, hs2dlut, 8, "Isp lce hs2dlut hal setup failed.")};

struct ccmp_frame {
    _isp_lce_user_ccmp_t ccmp;
};
const converter_fn ccmp_converters[] = {CONVERT(ccmp_frame, ccmp, rtl_to_drv_lce_user_ccmp)};
const group_push ccmp_pushes[] = {PUSH(ccmp_frame, ccmp, 9, "Isp lce ccmp hal setup failed.")};

struct ycproc_frame {
    _isp_lce_user_ycproc_t ycproc;
};
const converter_fn ycproc_converters[] = {
    CONVERT(ycproc_frame, ycproc, rtl_to_drv_lce_user_ycproc)};
const group_push ycproc_pushes[] = {
    PUSH(ycproc_frame, ycproc, 6, "Isp lce ycproc hal setup failed.")};

struct scm_frame {
    _isp_lce_user_scm_t scm;
};
const converter_fn scm_converters[] = {CONVERT(scm_frame, scm, rtl_to_drv_lce_user_scm)};
const group_push scm_pushes[]       = {PUSH(scm_frame, scm, 10, "Isp lce scm hal setup failed.")};

struct sharpen_frame {
    _isp_lce_user_init_t init;
    _isp_lce_user_setup_t setup;
    _isp_lce_user_basic_setting_t basic_setting;
    _isp_lce_user_luma_chroma_setting_t luma_chroma_setting;
    _isp_lce_user_motion_setting_t motion_setting;
    _isp_lce_user_nr_coring_setting_t nr_coring_setting;
    _isp_lce_user_desat_setting_t desat_setting;
};
const converter_fn sharpen_converters[] = {
    CONVERT(sharpen_frame, init, rtl_to_drv_lce_user_init),
    CONVERT(sharpen_frame, setup, rtl_to_drv_lce_user_setup),
    CONVERT(sharpen_frame, basic_setting, rtl_to_drv_lce_user_basic_setting),
    CONVERT(sharpen_frame, luma_chroma_setting, rtl_to_drv_lce_user_luma_chroma_setting),
    CONVERT(sharpen_frame, motion_setting, rtl_to_drv_lce_user_motion_setting),
    CONVERT(sharpen_frame, nr_coring_setting, rtl_to_drv_lce_user_nr_coring_setting),
    CONVERT(sharpen_frame, desat_setting, rtl_to_drv_lce_user_desat_setting),
};
const group_push sharpen_pushes[] = {
    PUSH(sharpen_frame, init, 7, "Isp lce init hal setup failed."),
    PUSH(sharpen_frame, setup, 1, "Isp lce setup hal setup failed."),
    PUSH(sharpen_frame, basic_setting, 2, "Isp lce basic_setting hal setup failed."),
    PUSH(sharpen_frame, luma_chroma_setting, 4, "Isp lce luma_chroma_setting hal setup failed."),
    PUSH(sharpen_frame, motion_setting, 5, "Isp lce motion_setting hal setup failed."),
    PUSH(sharpen_frame, nr_coring_setting, 3, "Isp lce nr_coring_setting hal setup failed."),
    PUSH(sharpen_frame, desat_setting, 11, "Isp lce lce_desat_setting hal setup failed."),
};
}  // namespace
const frame_layout hs2dlut_groups = LAYOUT(hs2dlut_frame, hs2dlut_converters, hs2dlut_pushes);
const frame_layout ccmp_groups    = LAYOUT(ccmp_frame, ccmp_converters, ccmp_pushes);
const frame_layout ycproc_groups  = LAYOUT(ycproc_frame, ycproc_converters, ycproc_pushes);
const frame_layout scm_groups     = LAYOUT(scm_frame, scm_converters, scm_pushes);
const frame_layout sharpen_groups = LAYOUT(sharpen_frame, sharpen_converters, sharpen_pushes);

/* ---- blc block: lin, blc ----------------------------------------------------------------- */
namespace {
struct lin_frame {
    _isp_blc_user_lin_t lin;
};
const converter_fn lin_converters[] = {CONVERT(lin_frame, lin, rtl_to_drv_blc_user_lin)};
const group_push lin_pushes[]       = {PUSH(lin_frame, lin, 3, "Isp blc lin hal setup failed.")};

struct blc_frame {
    _isp_blc_user_lin_t lin;
    _isp_blc_user_common_t common;
    _isp_blc_user_dither_t dither;
    _isp_blc_user_setup_t setup;
    _isp_blc_user_init_t init;
    _isp_blc_kernel_gbl_t kernel_gbl;
    _isp_blc_kernel_sbl_t kernel_sbl;
    _isp_blc_kernel_ctrl_t kernel_ctrl;
};
const converter_fn blc_converters[] = {
    CONVERT(blc_frame, lin, rtl_to_drv_blc_user_lin),
    CONVERT(blc_frame, common, rtl_to_drv_blc_user_common),
    CONVERT(blc_frame, dither, rtl_to_drv_blc_user_dither),
    CONVERT(blc_frame, setup, rtl_to_drv_blc_user_setup),
    CONVERT(blc_frame, init, rtl_to_drv_blc_user_init),
    CONVERT(blc_frame, kernel_gbl, rtl_to_drv_blc_kernel_gbl),
    CONVERT(blc_frame, kernel_sbl, rtl_to_drv_blc_kernel_sbl),
    CONVERT(blc_frame, kernel_ctrl, rtl_to_drv_blc_kernel_ctrl),
};
const group_push blc_pushes[] = {
    PUSH(blc_frame, lin, 3, "Isp blc lin hal setup failed."),
    PUSH(blc_frame, common, 4, "Isp blc common hal setup failed."),
    PUSH(blc_frame, dither, 5, "Isp blc dither hal setup failed."),
    PUSH(blc_frame, setup, 6, "Isp blc setup hal setup failed."),
    PUSH(blc_frame, init, 7, "Isp blc init hal setup failed."),
    PUSH(blc_frame, kernel_gbl, 8, "Isp blc kernel gbl hal setup failed."),
    PUSH(blc_frame, kernel_sbl, 9, "Isp blc kernel sbl hal setup failed."),
    PUSH(blc_frame, kernel_ctrl, 10, "Isp blc kernel ctrl hal setup failed."),
};
}  // namespace
const frame_layout lin_groups = LAYOUT(lin_frame, lin_converters, lin_pushes);
const frame_layout blc_groups = LAYOUT(blc_frame, blc_converters, blc_pushes);

/* ---- dpc: defect pixel correction -------------------------------------------------------- */
namespace {
struct dpc_frame {
    _isp_dpc_user_calc_dp_strength_t calc_dp_strength;
    _isp_dpc_user_setup_t setup;
    _isp_dpc_user_calc_noise_t calc_noise;
    _isp_dpc_user_calc_wb_gain_t calc_wb_gain;
    _isp_dpc_user_calc_quick_det_t calc_quick_det;
    _isp_dpc_user_calc_dp_correct_t calc_dp_correct;
    _isp_dpc_user_calc_color_limit_t calc_color_limit;
    _isp_dpc_user_init_t init;
    _isp_dpc_user_calc_top_control_t top_control; /* kept by the module, never pushed */
};
const converter_fn dpc_converters[] = {
    CONVERT(dpc_frame, calc_dp_strength, rtl_to_drv_dpc_user_calc_dp_strength),
    CONVERT(dpc_frame, setup, rtl_to_drv_dpc_user_setup),
    CONVERT(dpc_frame, top_control, rtl_to_drv_dpc_user_calc_top_control),
    CONVERT(dpc_frame, calc_noise, rtl_to_drv_dpc_user_calc_noise),
    CONVERT(dpc_frame, calc_wb_gain, rtl_to_drv_dpc_user_calc_wb_gain),
    CONVERT(dpc_frame, calc_quick_det, rtl_to_drv_dpc_user_calc_quick_det),
    CONVERT(dpc_frame, calc_dp_correct, rtl_to_drv_dpc_user_calc_dp_correct),
    CONVERT(dpc_frame, calc_color_limit, rtl_to_drv_dpc_user_calc_color_limit),
    CONVERT(dpc_frame, init, rtl_to_drv_dpc_user_init),
};
const group_push dpc_pushes[] = {
    PUSH(dpc_frame, calc_dp_strength, 2, "Isp dpc calc_dp_strength hal setup failed."),
    PUSH(dpc_frame, setup, 4, "Isp dpc setup hal setup failed."),
    PUSH(dpc_frame, calc_noise, 5, "Isp dpc calc_noise hal setup failed."),
    PUSH(dpc_frame, calc_wb_gain, 6, "Isp dpc calc_wb_gain hal setup failed."),
    PUSH(dpc_frame, calc_quick_det, 7, "Isp dpc calc_quick_det hal setup failed."),
    PUSH(dpc_frame, calc_dp_correct, 8, "Isp dpc calc_dp_correct hal setup failed."),
    PUSH(dpc_frame, calc_color_limit, 9, "Isp dpc calc_color_limit hal setup failed."),
    PUSH(dpc_frame, init, 10, "Isp dpc init hal setup failed."),
};
}  // namespace
const frame_layout dpc_groups = LAYOUT(dpc_frame, dpc_converters, dpc_pushes);

/* ---- wbc, lsc, gamma, csc ---------------------------------------------------------------- */
namespace {
struct wbc_frame {
    _isp_wbc_user_ctrl_t ctrl;
    _isp_wbc_user_setup_t setup;
    _isp_wbc_user_init_t init;
};
const converter_fn wbc_converters[] = {
    CONVERT(wbc_frame, ctrl, rtl_to_drv_wbc_user_ctrl),
    CONVERT(wbc_frame, setup, rtl_to_drv_wbc_user_setup),
    CONVERT(wbc_frame, init, rtl_to_drv_wbc_user_init),
};
const group_push wbc_pushes[] = {
    PUSH(wbc_frame, ctrl, 1, "Isp wbc ctrl hal setup failed."),
    PUSH(wbc_frame, setup, 2, "Isp wbc setup hal setup failed."),
    PUSH(wbc_frame, init, 3, "Isp wbc init hal setup failed."),
};

struct lsc_frame {
    _isp_lsc_user_setup_t setup;
    _isp_lsc_user_coord_t coord;
    _isp_lsc_user_mesh_t mesh;
};
const converter_fn lsc_converters[] = {
    CONVERT(lsc_frame, setup, rtl_to_drv_lsc_user_setup),
    CONVERT(lsc_frame, coord, rtl_to_drv_lsc_user_coord),
    CONVERT(lsc_frame, mesh, rtl_to_drv_lsc_user_mesh),
};
const group_push lsc_pushes[] = {
    PUSH(lsc_frame, setup, 1, "Isp lsc setup hal setup failed."),
    PUSH(lsc_frame, coord, 2, "Isp lsc coord hal setup failed."),
    PUSH(lsc_frame, mesh, 3, "Isp lsc mesh hal setup failed."),
};

struct gamma_frame {
    _isp_gamma_user_setup_t setup;
    _isp_gamma_user_dither_t dither;
    _isp_gamma_user_lut_t lut;
};
const converter_fn gamma_converters[] = {
    CONVERT(gamma_frame, setup, rtl_to_drv_gamma_user_setup),
    CONVERT(gamma_frame, dither, rtl_to_drv_gamma_user_dither),
    CONVERT(gamma_frame, lut, rtl_to_drv_gamma_user_lut),
};
const group_push gamma_pushes[] = {
    PUSH(gamma_frame, setup, 1, "Isp gamma setup hal setup failed."),
    PUSH(gamma_frame, dither, 2, "Isp gamma dither hal setup failed."),
    PUSH(gamma_frame, lut, 3, "Isp gamma lut hal setup failed."),
};

struct csc_frame {
    _isp_csc_user_core_t core;
    _isp_csc_user_setup_t setup;
    _isp_csc_user_init_t init;
};
const converter_fn csc_converters[] = {
    CONVERT(csc_frame, core, rtl_to_drv_csc_user_core),
    CONVERT(csc_frame, setup, rtl_to_drv_csc_user_setup),
    CONVERT(csc_frame, init, rtl_to_drv_csc_user_init),
};
const group_push csc_pushes[] = {
    PUSH(csc_frame, core, 1, "Isp csc core hal setup failed."),
    PUSH(csc_frame, setup, 2, "Isp csc setup hal setup failed."),
    PUSH(csc_frame, init, 3, "Isp csc init hal setup failed."),
};
}  // namespace
const frame_layout wbc_groups   = LAYOUT(wbc_frame, wbc_converters, wbc_pushes);
const frame_layout lsc_groups   = LAYOUT(lsc_frame, lsc_converters, lsc_pushes);
const frame_layout gamma_groups = LAYOUT(gamma_frame, gamma_converters, gamma_pushes);
const frame_layout csc_groups   = LAYOUT(csc_frame, csc_converters, csc_pushes);

/* ---- hdrc, hidrc ------------------------------------------------------------------------- */
namespace {
struct hdrc_frame {
    _isp_hdrc_user_setup_t setup;
    _isp_hdrc_user_hdrc_lut_t hdrc_lut;
    _isp_hdrc_user_glb_ctrl_t glb_ctl;
};
const converter_fn hdrc_converters[] = {
    CONVERT(hdrc_frame, setup, rtl_to_drv_hdrc_user_setup),
    CONVERT(hdrc_frame, hdrc_lut, rtl_to_drv_hdrc_user_hdrc_lut),
    CONVERT(hdrc_frame, glb_ctl, rtl_to_drv_hdrc_glb_ctl),
};
/* the curve and the global control both report as the init group */
const group_push hdrc_pushes[] = {
    PUSH(hdrc_frame, setup, 1, "Isp hdrc setup hal setup failed."),
    PUSH(hdrc_frame, hdrc_lut, 3, "Isp hdrc init hal setup failed."),
    PUSH(hdrc_frame, glb_ctl, 4, "Isp hdrc init hal setup failed."),
};

struct hidrc_frame {
    _isp_hidrc_user_setup_t setup;
    _isp_hidrc_user_hidrc_lut_t hidrc_lut;
};
const converter_fn hidrc_converters[] = {
    CONVERT(hidrc_frame, setup, rtl_to_drv_hidrc_user_setup),
    CONVERT(hidrc_frame, hidrc_lut, rtl_to_drv_hidrc_user_hidrc_lut),
};
/* the curve reports with the setup group's text */
const group_push hidrc_pushes[] = {
    PUSH(hidrc_frame, setup, 1, "Isp hidrc setup hal setup failed."),
    PUSH(hidrc_frame, hidrc_lut, 2, "Isp hidrc setup hal setup failed."),
};
}  // namespace
const frame_layout hdrc_groups  = LAYOUT(hdrc_frame, hdrc_converters, hdrc_pushes);
const frame_layout hidrc_groups = LAYOUT(hidrc_frame, hidrc_converters, hidrc_pushes);

/* ---- statistics: ae_stat, awb_stat, af_stat ---------------------------------------------- */
namespace {
struct ae_stat_frame {
    _isp_ae_stat_user_init_t init;
    _isp_ae_stat_user_aes_adj_t aes_adj;
    _isp_ae_stat_user_aes_calc_t aes_calc;
};
const converter_fn ae_stat_converters[] = {
    CONVERT(ae_stat_frame, init, rtl_to_drv_ae_stat_user_init),
    CONVERT(ae_stat_frame, aes_adj, rtl_to_drv_ae_stat_user_aes_adj),
    CONVERT(ae_stat_frame, aes_calc, rtl_to_drv_ae_stat_user_aes_calc),
};
const group_push ae_stat_pushes[] = {
    PUSH(ae_stat_frame, init, 1, "Isp ae_stat init hal setup failed."),
    PUSH(ae_stat_frame, aes_adj, 2, "Isp ae_stat aes_adj hal setup failed."),
    PUSH(ae_stat_frame, aes_calc, 3, "Isp ae_stat aes_calc hal setup failed."),
};
/* Each partition owns an area of the buffer with three sub-areas; the hardware takes their
 * addresses in 8-byte units, whatever the register file says. */
void ae_stat_write_addresses(void *frame, uint64_t phys, uint8_t partition) {
    _isp_ae_stat_user_init_t &init = static_cast<ae_stat_frame *>(frame)->init;
    const uint32_t base            = static_cast<uint32_t>((phys + 88112ull * partition) >> 3);
    init.wr_addr0[partition]       = base;
    init.wr_addr1[partition]       = base + 5187;
    init.wr_addr2[partition]       = base + 10374;
}

struct awb_stat_frame {
    _isp_awb_stat_user_init_t init;
    _isp_awb_stat_user_awbs_adj_t awbs_adj;
    _isp_awb_stat_user_awbs_calc_grid_t awbs_calc_grid;
};
const converter_fn awb_stat_converters[] = {
    CONVERT(awb_stat_frame, init, rtl_to_drv_awb_stat_user_init),
    CONVERT(awb_stat_frame, awbs_adj, rtl_to_drv_awb_stat_user_awbs_adj),
    CONVERT(awb_stat_frame, awbs_calc_grid, rtl_to_drv_awb_stat_user_awbs_calc_grid),
};
const group_push awb_stat_pushes[] = {
    PUSH(awb_stat_frame, init, 1, "Isp awb_stat init hal setup failed."),
    PUSH(awb_stat_frame, awbs_adj, 2, "Isp awb_stat awbs_adj hal setup failed."),
    PUSH(awb_stat_frame, awbs_calc_grid, 3, "Isp awb_stat awbs_calc_grid hal setup failed."),
};
void awb_stat_write_addresses(void *frame, uint64_t phys, uint8_t partition) {
    _isp_awb_stat_user_init_t &init = static_cast<awb_stat_frame *>(frame)->init;
    init.wr_addr[partition]         = static_cast<uint32_t>((phys + 152240ull * partition) >> 3);
}

struct af_stat_frame {
    _isp_af_stat_user_init_t init;
    _isp_af_stat_user_afs_setup_t afs_setup;
    _isp_af_stat_user_afs_adj_t afs_adj;
    _isp_af_stat_user_afs_ptn_t afs_ptn;
    _isp_af_stat_user_afs_drc_t afs_drc;
    _isp_af_stat_kernel_wr_addr_t kernel_wr_addr;
    _isp_af_stat_kernel_afs_setup_t kernel_afs_setup;
};
const converter_fn af_stat_converters[] = {
    CONVERT(af_stat_frame, init, rtl_to_drv_af_stat_user_init),
    CONVERT(af_stat_frame, afs_setup, rtl_to_drv_af_stat_user_afs_setup),
    CONVERT(af_stat_frame, afs_adj, rtl_to_drv_af_stat_user_afs_adj),
    CONVERT(af_stat_frame, afs_ptn, rtl_to_drv_af_stat_user_afs_ptn),
    CONVERT(af_stat_frame, afs_drc, rtl_to_drv_af_stat_user_afs_drc),
    CONVERT(af_stat_frame, kernel_wr_addr, rtl_to_drv_af_stat_kernel_wr_addr),
    CONVERT(af_stat_frame, kernel_afs_setup, rtl_to_drv_af_stat_kernel_afs_setup),
};
const group_push af_stat_pushes[] = {
    PUSH(af_stat_frame, init, 1, "Isp af_stat init hal setup failed."),
    PUSH(af_stat_frame, afs_setup, 5, "Isp af_stat afs_setup hal setup failed."),
    PUSH(af_stat_frame, afs_adj, 3, "Isp af_stat afs_adj hal setup failed."),
    PUSH(af_stat_frame, afs_ptn, 2, "Isp af_stat afs_ptn hal setup failed."),
    PUSH(af_stat_frame, afs_drc, 4, "Isp af_stat afs_drc hal setup failed."),
    PUSH(af_stat_frame, kernel_wr_addr, 6, "Isp af_stat kernel wr_addr hal setup failed."),
    PUSH(af_stat_frame, kernel_afs_setup, 7, "Isp af_stat kernel afs_setup hal setup failed."),
};
}  // namespace
const frame_layout ae_stat_groups  = {sizeof(ae_stat_frame),
                                      ae_stat_converters,
                                      std::size(ae_stat_converters),
                                      ae_stat_pushes,
                                      std::size(ae_stat_pushes),
                                      nullptr,
                                      nullptr,
                                      ae_stat_write_addresses};
const frame_layout awb_stat_groups = {sizeof(awb_stat_frame),
                                      awb_stat_converters,
                                      std::size(awb_stat_converters),
                                      awb_stat_pushes,
                                      std::size(awb_stat_pushes),
                                      nullptr,
                                      nullptr,
                                      awb_stat_write_addresses};
const frame_layout af_stat_groups  = LAYOUT(af_stat_frame, af_stat_converters, af_stat_pushes);

/* ---- bl_det, ifa, eis_pre, eis_post ------------------------------------------------------ */
namespace {
struct bl_det_frame {
    _isp_bl_det_user_setup_t setup;
    _isp_bl_det_user_init_t init;
};
const converter_fn bl_det_converters[] = {
    CONVERT(bl_det_frame, setup, rtl_to_drv_bl_det_user_setup),
    CONVERT(bl_det_frame, init, rtl_to_drv_bl_det_user_init),
};
const group_push bl_det_pushes[] = {
    PUSH(bl_det_frame, setup, 1, "Isp bl_det setup hal setup failed."),
    PUSH(bl_det_frame, init, 3, "Isp bl_det init hal setup failed."),
};

struct ifa_frame {
    _isp_ifa_user_setup_t setup;
    _isp_ifa_user_crop_t crop;
};
const converter_fn ifa_converters[] = {
    CONVERT(ifa_frame, setup, rtl_to_drv_ifa_user_setup),
    CONVERT(ifa_frame, crop, rtl_to_drv_ifa_user_crop),
};
const group_push ifa_pushes[] = {
    PUSH(ifa_frame, setup, 1, "Isp ifa setup hal setup failed."),
    PUSH(ifa_frame, crop, 2, "Isp ifa crop hal setup failed."),
};

struct eis_pre_frame {
    _isp_eis_pre_user_lut_t lut;
    _isp_eis_pre_user_setup_t setup;
    _isp_eis_pre_user_ctrl_t ctrl;
    _isp_eis_pre_user_init_t init;
};
const converter_fn eis_pre_converters[] = {
    CONVERT(eis_pre_frame, lut, rtl_to_drv_eis_pre_user_lut),
    CONVERT(eis_pre_frame, setup, rtl_to_drv_eis_pre_user_setup),
    CONVERT(eis_pre_frame, ctrl, rtl_to_drv_eis_pre_user_ctrl),
    CONVERT(eis_pre_frame, init, rtl_to_drv_eis_pre_user_init),
};
const group_push eis_pre_pushes[] = {
    PUSH(eis_pre_frame, lut, 1, "Isp eis_pre lut hal setup failed."),
    PUSH(eis_pre_frame, setup, 2, "Isp eis_pre setup hal setup failed."),
    PUSH(eis_pre_frame, ctrl, 3, "Isp eis_pre ctrl hal setup failed."),
    PUSH(eis_pre_frame, init, 4, "Isp eis_pre init hal setup failed."),
};

struct eis_post_frame {
    _isp_eis_post_user_ctrl_t ctrl;
    _isp_eis_post_user_setup_t setup;
    _isp_eis_post_user_init_t init;
};
const converter_fn eis_post_converters[] = {
    CONVERT(eis_post_frame, ctrl, rtl_to_drv_eis_post_user_ctrl),
    CONVERT(eis_post_frame, setup, rtl_to_drv_eis_post_user_setup),
    CONVERT(eis_post_frame, init, rtl_to_drv_eis_post_user_init),
};
const group_push eis_post_pushes[] = {
    PUSH(eis_post_frame, ctrl, 1, "Isp eis_post ctrl hal setup failed."),
    PUSH(eis_post_frame, setup, 2, "Isp eis_post setup hal setup failed."),
    PUSH(eis_post_frame, init, 3, "Isp eis_post init hal setup failed."),
};
}  // namespace
const frame_layout bl_det_groups   = LAYOUT(bl_det_frame, bl_det_converters, bl_det_pushes);
const frame_layout ifa_groups      = LAYOUT(ifa_frame, ifa_converters, ifa_pushes);
const frame_layout eis_pre_groups  = LAYOUT(eis_pre_frame, eis_pre_converters, eis_pre_pushes);
const frame_layout eis_post_groups = LAYOUT(eis_post_frame, eis_post_converters, eis_post_pushes);

/* ---- noise reduction: yuv3dnr, y2dnr, raw2dnr, ainr -------------------------------------- */
namespace {
struct yuv3dnr_frame {
    _isp_yuv3dnr_user_ctrl_t ctrl;
    _isp_yuv3dnr_user_extmask_t extmask;
    _isp_yuv3dnr_user_motion_t motion;
    _isp_yuv3dnr_user_setup_t setup;
    _isp_yuv3dnr_user_tnr_t tnr;
    _isp_yuv3dnr_user_ysf_t ysf;
    _isp_yuv3dnr_user_csf_t csf;
    _isp_yuv3dnr_user_cgf_t cgf;
    _isp_yuv3dnr_user_part_t part;
    _isp_yuv3dnr_user_dither_t dither;
    _isp_yuv3dnr_user_init_t init;
};
const converter_fn yuv3dnr_converters[] = {
    CONVERT(yuv3dnr_frame, ctrl, rtl_to_drv_yuv3dnr_user_ctrl),
    CONVERT(yuv3dnr_frame, extmask, rtl_to_drv_yuv3dnr_user_extmask),
    CONVERT(yuv3dnr_frame, motion, rtl_to_drv_yuv3dnr_user_motion),
    CONVERT(yuv3dnr_frame, setup, rtl_to_drv_yuv3dnr_user_setup),
    CONVERT(yuv3dnr_frame, tnr, rtl_to_drv_yuv3dnr_user_tnr),
    CONVERT(yuv3dnr_frame, ysf, rtl_to_drv_yuv3dnr_user_ysf),
    CONVERT(yuv3dnr_frame, csf, rtl_to_drv_yuv3dnr_user_csf),
    CONVERT(yuv3dnr_frame, cgf, rtl_to_drv_yuv3dnr_user_cgf),
    CONVERT(yuv3dnr_frame, part, rtl_to_drv_yuv3dnr_user_part),
    CONVERT(yuv3dnr_frame, dither, rtl_to_drv_yuv3dnr_user_dither),
    CONVERT(yuv3dnr_frame, init, rtl_to_drv_yuv3dnr_user_init),
};
const group_push yuv3dnr_pushes[] = {
    PUSH(yuv3dnr_frame, ctrl, 11, "Isp yuv3dnr ctrl hal setup failed."),
    PUSH(yuv3dnr_frame, extmask, 1, "Isp yuv3dnr extmask hal setup failed."),
    PUSH(yuv3dnr_frame, motion, 2, "Isp yuv3dnr motion hal setup failed."),
    PUSH(yuv3dnr_frame, setup, 3, "Isp yuv3dnr setup hal setup failed."),
    PUSH(yuv3dnr_frame, tnr, 4, "Isp yuv3dnr tnr hal setup failed."),
    PUSH(yuv3dnr_frame, ysf, 5, "Isp yuv3dnr ysf hal setup failed."),
    PUSH(yuv3dnr_frame, csf, 6, "Isp yuv3dnr csf hal setup failed."),
    PUSH(yuv3dnr_frame, cgf, 7, "Isp yuv3dnr cgf hal setup failed."),
    PUSH(yuv3dnr_frame, part, 8, "Isp yuv3dnr part hal setup failed."),
    PUSH(yuv3dnr_frame, dither, 9, "Isp yuv3dnr dither hal setup failed."),
    PUSH(yuv3dnr_frame, init, 10, "Isp yuv3dnr init hal setup failed."),
};

struct y2dnr_frame {
    _isp_y2dnr_user_init_t init;
    _isp_y2dnr_user_setup_t setup;
    _isp_y2dnr_user_top_control_t top_control;
    _isp_y2dnr_user_debug_mode_t debug_mode;
    _isp_y2dnr_user_feature_t feature;
    _isp_y2dnr_user_dpc_t dpc;
    _isp_y2dnr_user_sf1_t sf1;
    _isp_y2dnr_user_sf2_t sf2;
    _isp_y2dnr_user_filter_style_t filter_style;
    _isp_y2dnr_user_luma_str_t luma_str;
    _isp_y2dnr_user_motion_t motion;
    _isp_y2dnr_user_dither_t dither;
};
const converter_fn y2dnr_converters[] = {
    CONVERT(y2dnr_frame, init, rtl_to_drv_y2dnr_user_init),
    CONVERT(y2dnr_frame, setup, rtl_to_drv_y2dnr_user_setup),
    CONVERT(y2dnr_frame, top_control, rtl_to_drv_y2dnr_user_top_control),
    CONVERT(y2dnr_frame, debug_mode, rtl_to_drv_y2dnr_user_debug_mode),
    CONVERT(y2dnr_frame, feature, rtl_to_drv_y2dnr_user_feature),
    CONVERT(y2dnr_frame, dpc, rtl_to_drv_y2dnr_user_dpc),
    CONVERT(y2dnr_frame, sf1, rtl_to_drv_y2dnr_user_sf1),
    CONVERT(y2dnr_frame, sf2, rtl_to_drv_y2dnr_user_sf2),
    CONVERT(y2dnr_frame, filter_style, rtl_to_drv_y2dnr_user_filter_style),
    CONVERT(y2dnr_frame, luma_str, rtl_to_drv_y2dnr_user_luma_str),
    CONVERT(y2dnr_frame, motion, rtl_to_drv_y2dnr_user_motion),
    CONVERT(y2dnr_frame, dither, rtl_to_drv_y2dnr_user_dither),
};
const group_push y2dnr_pushes[] = {
    PUSH(y2dnr_frame, init, 12, "Isp y2dnr init hal setup failed."),
    PUSH(y2dnr_frame, setup, 4, "Isp y2dnr setup hal setup failed."),
    PUSH(y2dnr_frame, top_control, 2, "Isp y2dnr top_control hal setup failed."),
    PUSH(y2dnr_frame, debug_mode, 1, "Isp y2dnr debug_mode hal setup failed."),
    PUSH(y2dnr_frame, feature, 5, "Isp y2dnr feature hal setup failed."),
    PUSH(y2dnr_frame, dpc, 6, "Isp y2dnr dpc hal setup failed."),
    PUSH(y2dnr_frame, sf1, 7, "Isp y2dnr sf1 hal setup failed."),
    PUSH(y2dnr_frame, sf2, 8, "Isp y2dnr sf2 hal setup failed."),
    PUSH(y2dnr_frame, filter_style, 9, "Isp y2dnr filter_style hal setup failed."),
    PUSH(y2dnr_frame, luma_str, 10, "Isp y2dnr luma_str hal setup failed."),
    PUSH(y2dnr_frame, motion, 11, "Isp y2dnr motion hal setup failed."),
    PUSH(y2dnr_frame, dither, 3, "Isp y2dnr dither hal setup failed."),
};

struct raw2dnr_frame {
    _isp_raw2dnr_user_init_t init;
    _isp_raw2dnr_user_setup_t setup;
    _isp_raw2dnr_user_mask_t mask;
    _isp_raw2dnr_user_fs_t fs;
    _isp_raw2dnr_user_hfnr_t hfnr;
    _isp_raw2dnr_user_mfnr_t mfnr;
    _isp_raw2dnr_user_np_t np;
};
const converter_fn raw2dnr_converters[] = {
    CONVERT(raw2dnr_frame, init, rtl_to_drv_raw2dnr_user_init),
    CONVERT(raw2dnr_frame, setup, rtl_to_drv_raw2dnr_user_setup),
    CONVERT(raw2dnr_frame, mask, rtl_to_drv_raw2dnr_user_mask),
    CONVERT(raw2dnr_frame, fs, rtl_to_drv_raw2dnr_user_fs),
    CONVERT(raw2dnr_frame, hfnr, rtl_to_drv_raw2dnr_user_hfnr),
    CONVERT(raw2dnr_frame, mfnr, rtl_to_drv_raw2dnr_user_mfnr),
    CONVERT(raw2dnr_frame, np, rtl_to_drv_raw2dnr_user_np),
};
const group_push raw2dnr_pushes[] = {
    PUSH(raw2dnr_frame, init, 6, "Isp raw2dnr init hal setup failed."),
    PUSH(raw2dnr_frame, setup, 1, "Isp raw2dnr setup hal setup failed."),
    PUSH(raw2dnr_frame, mask, 2, "Isp raw2dnr mask hal setup failed."),
    PUSH(raw2dnr_frame, fs, 3, "Isp raw2dnr fs hal setup failed."),
    PUSH(raw2dnr_frame, hfnr, 5, "Isp raw2dnr hfnr hal setup failed."),
    PUSH(raw2dnr_frame, mfnr, 4, "Isp raw2dnr mfnr hal setup failed."),
    PUSH(raw2dnr_frame, np, 8, "Isp raw2dnr np hal setup failed."),
};

struct ainr_frame {
    _isp_nrlite_user_post_t post;
};
const converter_fn ainr_converters[] = {CONVERT(ainr_frame, post, rtl_to_drv_nrlite_user_post)};
const group_push ainr_pushes[] = {PUSH(ainr_frame, post, 5, "Isp nrlite post hal setup failed.")};
}  // namespace
const frame_layout yuv3dnr_groups = LAYOUT(yuv3dnr_frame, yuv3dnr_converters, yuv3dnr_pushes);
const frame_layout y2dnr_groups   = LAYOUT(y2dnr_frame, y2dnr_converters, y2dnr_pushes);
const frame_layout raw2dnr_groups = LAYOUT(raw2dnr_frame, raw2dnr_converters, raw2dnr_pushes);
const frame_layout ainr_groups    = LAYOUT(ainr_frame, ainr_converters, ainr_pushes);

/* ---- rltm, depurple (pfd), hdr ----------------------------------------------------------- */
namespace {
struct rltm_frame {
    _isp_rltm_user_init_t init;
    _isp_rltm_user_setup_t setup;
    _isp_rltm_user_dither_t dither;
    _isp_rltm_user_reserved_t reserved;
    _isp_rltm_user_common_t common;
    _isp_rltm_user_info_t info;
    _isp_rltm_user_detail_t detail;
    _isp_rltm_user_low_freq_t low_freq;
    _isp_rltm_kernel_sync_t kernel_sync; /* kept by the module, never pushed */
    _isp_rltm_user_lut_t lut;
};
const converter_fn rltm_converters[] = {
    CONVERT(rltm_frame, init, rtl_to_drv_rltm_user_init),
    CONVERT(rltm_frame, setup, rtl_to_drv_rltm_user_setup),
    CONVERT(rltm_frame, dither, rtl_to_drv_rltm_user_dither),
    CONVERT(rltm_frame, reserved, rtl_to_drv_rltm_user_reserved),
    CONVERT(rltm_frame, common, rtl_to_drv_rltm_user_common),
    CONVERT(rltm_frame, info, rtl_to_drv_rltm_user_info),
    CONVERT(rltm_frame, detail, rtl_to_drv_rltm_user_detail),
    CONVERT(rltm_frame, low_freq, rtl_to_drv_rltm_user_low_freq),
    CONVERT(rltm_frame, kernel_sync, rtl_to_drv_rltm_kernel_sync),
    CONVERT(rltm_frame, lut, rtl_to_drv_rltm_user_lut),
};
const group_push rltm_pushes[] = {
    PUSH(rltm_frame, init, 4, "Isp rltm init hal setup failed."),
    PUSH(rltm_frame, setup, 2, "Isp rltm setup hal setup failed."),
    PUSH(rltm_frame, dither, 1, "Isp rltm dither hal setup failed."),
    PUSH(rltm_frame, reserved, 6, "Isp rltm reserved hal setup failed."),
    PUSH(rltm_frame, common, 3, "Isp rltm common hal setup failed."),
    PUSH(rltm_frame, info, 5, "Isp rltm info hal setup failed."),
    PUSH(rltm_frame, detail, 7, "Isp rltm detail hal setup failed."),
    PUSH(rltm_frame, low_freq, 8, "Isp rltm low_freq hal setup failed."),
    PUSH(rltm_frame, lut, 9, "Isp rltm lut setup failed."),
};

struct depurple_frame {
    _isp_pfd_user_det_t det;
    _isp_pfd_user_setup_t setup;
    _isp_pfd_user_init_t init;
    _isp_pfd_user_ptn_related_t ptn_related;
    _isp_pfd_user_mesh_lut_t mesh_lut;
    _isp_pfd_user_mesh_thr_t mesh_thr;
};
const converter_fn depurple_converters[] = {
    CONVERT(depurple_frame, det, rtl_to_drv_pfd_user_det),
    CONVERT(depurple_frame, setup, rtl_to_drv_pfd_user_setup),
    CONVERT(depurple_frame, init, rtl_to_drv_pfd_user_init),
    CONVERT(depurple_frame, ptn_related, rtl_to_drv_pfd_user_ptn_related),
    CONVERT(depurple_frame, mesh_lut, rtl_to_drv_pfd_mesh_lut),
    CONVERT(depurple_frame, mesh_thr, rtl_to_drv_pfd_mesh_thr),
};
const group_push depurple_pushes[] = {
    PUSH(depurple_frame, det, 1, "Isp pfd det hal setup failed."),
    PUSH(depurple_frame, setup, 2, "Isp pfd setup hal setup failed."),
    PUSH(depurple_frame, init, 3, "Isp pfd init hal setup failed."),
    PUSH(depurple_frame, ptn_related, 4, "Isp pfd ptn_related hal setup failed."),
    PUSH(depurple_frame, mesh_lut, 5, "Isp pfd user_mesh_lut hal setup failed."),
    PUSH(depurple_frame, mesh_thr, 6, "Isp pfd user_mesh_thr hal setup failed."),
};

struct hdr_frame {
    _isp_hdr_user_common_t common;
    _isp_hdr_user_deghost_t deghost;
    _isp_hdr_user_setup_t setup;
    _isp_hdr_user_motion_t motion;
    _isp_hdr_user_init_t init;
    _isp_hdr_kernel_common_t kernel_common;
    _isp_hdr_kernel_fusion_t kernel_fusion;
    _isp_hdr_kernel_exposure_t kernel_exposure;
};
/* the noise profile and the exposure weight tables fill parts of other groups */
const converter_fn hdr_converters[] = {
    CONVERT(hdr_frame, common, rtl_to_drv_hdr_user_common),
    CONVERT(hdr_frame, common, rtl_to_drv_hdr_noise_profile),
    CONVERT(hdr_frame, deghost, rtl_to_drv_hdr_user_deghost),
    CONVERT(hdr_frame, setup, rtl_to_drv_hdr_user_setup),
    CONVERT(hdr_frame, kernel_exposure, rtl_to_drv_hdr_exp_weight_lut_luma_mid),
    CONVERT(hdr_frame, init, rtl_to_drv_hdr_user_init),
    CONVERT(hdr_frame, motion, rtl_to_drv_hdr_user_motion),
    CONVERT(hdr_frame, kernel_fusion, rtl_to_drv_hdr_kernel_fusion),
    CONVERT(hdr_frame, kernel_common, rtl_to_drv_hdr_kernel_common),
    CONVERT(hdr_frame, kernel_exposure, rtl_to_drv_hdr_kernel_exposure),
    CONVERT(hdr_frame, kernel_exposure, rtl_to_drv_hdr_exp_weight_lut_luma_low_high),
};
const group_push hdr_pushes[] = {
    PUSH(hdr_frame, common, 1, "Isp hdr common hal setup failed."),
    PUSH(hdr_frame, deghost, 2, "Isp hdr deghost hal setup failed."),
    PUSH(hdr_frame, setup, 3, "Isp hdr setup hal setup failed."),
    PUSH(hdr_frame, motion, 4, "Isp hdr motion hal setup failed."),
    PUSH(hdr_frame, init, 5, "Isp hdr init hal setup failed."),
    PUSH(hdr_frame, kernel_common, 6, "Isp hdr kernel common hal setup failed."),
    PUSH(hdr_frame, kernel_fusion, 7, "Isp hdr kernel fusion hal setup failed."),
    PUSH(hdr_frame, kernel_exposure, 8, "Isp hdr kernel exposure hal setup failed."),
};
}  // namespace
const frame_layout rltm_groups     = LAYOUT(rltm_frame, rltm_converters, rltm_pushes);
const frame_layout depurple_groups = LAYOUT(depurple_frame, depurple_converters, depurple_pushes);
const frame_layout hdr_groups      = LAYOUT(hdr_frame, hdr_converters, hdr_pushes);

}  // namespace isp
