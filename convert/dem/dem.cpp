/* Converters of the demosaic block. */
#include "blocks/dem.h"

#include <stddef.h>

#include "convert/common/field_reader.h"

namespace {

const char *const top_key = "isp_dem";

const char *const lut_fields[] = {"lut0", "lut1", "lut2", "lut3"};

/* A table packed PerReg entries to a register: entry i sits in register i / PerReg, field
 * "lut<i % PerReg>"; the last register holds only what is left over. */
template <size_t PerReg, typename T, size_t N, size_t R>
void read_packed_lut(const isp::field_reader &f, const char *const (&regs)[R], T (&lut)[N],
                     const char *format) {
    static_assert(PerReg <= sizeof lut_fields / sizeof lut_fields[0], "fields lut0 to lut3 only");
    static_assert((N + PerReg - 1) / PerReg == R, "one register per PerReg entries");
    for (size_t i = 0; i < N; ++i)
        lut[i] = f.read(regs[i / PerReg], lut_fields[i % PerReg], format);
}

/* Group element k holds entry k in "lut0" and entry k + 9 in "lut1", read in that order. */
template <typename T>
void read_split_lut(const isp::field_reader &f, const char *group, const char *reg,
                    T (&lut)[ISP_DEM_SPLIT_LUT_SIZE], const char *format) {
    const size_t half = ISP_DEM_SPLIT_LUT_SIZE / 2;
    for (size_t k = 0; k < half; ++k) {
        lut[k]        = f.read(group, k, reg, "lut0", format);
        lut[k + half] = f.read(group, k, reg, "lut1", format);
    }
}

/* Sixteen group elements of four gains each: entry 4k + j is element k, field "lut<j>". */
void read_wbc_gain_lut(const isp::field_reader &f, const char *group, const char *reg,
                       uint8_t (&lut)[ISP_DEM_WBC_LUT_SIZE]) {
    const size_t per_reg = ISP_DEM_WBC_LUT_COLS;
    for (size_t k = 0; k < ISP_DEM_WBC_LUT_SIZE / per_reg; ++k)
        for (size_t j = 0; j < per_reg; ++j)
            lut[per_reg * k + j] = f.read(group, k, reg, lut_fields[j], "u1.7");
}

}  // namespace

int rtl_to_drv_dem_user_init(picojson::object &root, _isp_dem_user_init_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    out->clkgt_enable = f.read("clkgt_enable", "en", "u16");
    out->debug_en     = f.read("misc_ctrl", "debug_en", "u1");
    return 0;
}

int rtl_to_drv_dem_user_setup(picojson::object &root, _isp_dem_user_setup_t *out,
                              uint8_t partition) {
    const isp::field_reader f(root, top_key);
    const size_t p      = partition;
    out->wb_stat_enable = f.read("wb_stat_ctrl", "enable", "u1.0");
    // The window is split over two registers: top and bottom, then left and right.
    out->wb_stat_roi[p].top             = f.read("wb_stat_roi0", "top", "u14");
    out->wb_stat_roi[p].bottom          = f.read("wb_stat_roi0", "bottom", "u14");
    out->wb_stat_roi[p].left            = f.read("wb_stat_roi1", "left", "u14");
    out->wb_stat_roi[p].right           = f.read("wb_stat_roi1", "right", "u14");
    out->wb_stat_mesh_block_start[p][0] = f.read("wb_stat_mesh_block", "start0", "u3");
    out->wb_stat_mesh_block_start[p][1] = f.read("wb_stat_mesh_block", "start1", "u3");
    out->wb_stat_mesh_pos_start[p][0]   = f.read("wb_stat_mesh_pos", "start0", "u14");
    out->wb_stat_mesh_pos_start[p][1]   = f.read("wb_stat_mesh_pos", "start1", "u14");
    out->wb_stat_slice_level            = f.read("wb_stat_slice", "level", "u8.4");
    out->wb_stat_slice_sat_tp           = f.read("wb_stat_slice_sat", "tp", "u1.0");
    out->wb_stat_mesh_shape[0]          = f.read("wb_stat_mesh", "shape0", "u11");
    out->wb_stat_mesh_shape[1]          = f.read("wb_stat_mesh", "shape1", "u11");
    out->wbc_enable                     = f.read("wbc_ctrl", "enable", "u1.0");
    out->wbc_mesh_block_start[p][0]     = f.read("wbc_mesh_block", "start0", "u4");
    out->wbc_mesh_block_start[p][1]     = f.read("wbc_mesh_block", "start1", "u4");
    out->wbc_mesh_phase_start[p][0]     = f.read("wbc_mesh_phase", "start0", "u0.15");
    out->wbc_mesh_phase_start[p][1]     = f.read("wbc_mesh_phase", "start1", "u0.15");
    out->wbc_mesh_pos_start[p][0]       = f.read("wbc_mesh_pos", "start0", "u14");
    out->wbc_mesh_pos_start[p][1]       = f.read("wbc_mesh_pos", "start1", "u14");
    out->wbc_mesh_step[0]               = f.read("wbc_mesh", "step0", "u0.14");
    out->wbc_mesh_step[1]               = f.read("wbc_mesh", "step1", "u0.14");
    out->gic_enable                     = f.read("gic", "enable", "u1.0");
    out->grad_h_enable                  = f.read("grad_h", "enable", "u1.0");
    out->gclip_level                    = f.read("gclip", "level", "u0.4");
    out->edge_enhance_enable            = f.read("edge_enhance_ctrl", "enable", "u1.0");
    out->edge_enhance_ghv_level         = f.read("edge_enhance", "ghv_level", "u2.4");
    out->edge_enhance_gpn_level         = f.read("edge_enhance", "gpn_level", "u2.4");
    out->edge_enhance_ghv_corner_min    = f.read("edge_enhance_ghv", "corner_min", "u0.8");
    out->edge_enhance_ghv_corner_slope  = f.read("edge_enhance_ghv", "corner_slope", "u2.4");
    out->edge_enhance_ghv_corner_offset = f.read("edge_enhance_ghv", "corner_offset", "s0.8");
    out->fc_cor0_enable                 = f.read("fc_cor0", "enable", "u1.0");
    out->offset_in                      = f.read("offset", "in", "u8.4");
    out->offset_out                     = f.read("offset", "out", "u8.4");
    out->bayer_pattern                  = f.read("bayer", "pattern", "u2.0");
    out->img_size_hsize[p]              = f.read("img_size", "hsize", "u14");
    out->img_size_vsize[p]              = f.read("img_size", "vsize", "u14");
    return 0;
}

int rtl_to_drv_dem_user_dem_mode(picojson::object &root, _isp_dem_user_dem_mode_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    out->pre_gamma_enable  = f.read("pre_gamma_ctrl", "enable", "u1.0");
    out->mode              = f.read("dem", "mode", "u4.0");
    out->post_gamma_enable = f.read("post_gamma_ctrl", "enable", "u1.0");
    return 0;
}

int rtl_to_drv_dem_user_dem_core(picojson::object &root, _isp_dem_user_dem_core_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    out->gradf_ratio   = f.read("gradf", "ratio", "u1.4");
    out->grad_hh_level = f.read("grad_hh", "level", "u2.2");
    read_packed_lut<2>(f, {"inv_noise0", "inv_noise1", "inv_noise2", "inv_noise3", "inv_noise4"},
                       out->inv_noise_lut, "u4.8");
    out->ginterp_hf_ratio_x  = f.read("ginterp_hf_ratio", "x", "u1.5");
    out->ginterp_hf_ratio_pn = f.read("ginterp_hf_ratio", "pn", "u1.5");
    out->ginterp_hf_ratio_hv = f.read("ginterp_hf_ratio", "hv", "u1.5");
    return 0;
}

int rtl_to_drv_dem_user_wbc(picojson::object &root, _isp_dem_user_wbc_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    read_wbc_gain_lut(f, "wbc_gain_lut_r", "wbc_gain_r", out->wbc_gain_lut_r);
    read_wbc_gain_lut(f, "wbc_gain_lut_g", "wbc_gain_g", out->wbc_gain_lut_g);
    read_wbc_gain_lut(f, "wbc_gain_lut_b", "wbc_gain_b", out->wbc_gain_lut_b);
    return 0;
}

int rtl_to_drv_dem_user_fcc(picojson::object &root, _isp_dem_user_fcc_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    out->fc_cor1_limit              = f.read("fc_cor1", "limit", "u8.4");
    out->fc_cor1_gain_safe          = f.read("fc_cor1", "gain_safe", "u2.2");
    out->fc_cor1_gain               = f.read("fc_cor1", "gain", "u4.4");
    out->fc_cor1_th                 = f.read("fc_cor1", "th", "u4.4");
    out->fc_cor2_inv_base_sat_level = f.read("fc_cor2", "inv_base_sat_level", "u0.8");
    out->fc_cor2_ratio_limit[0]     = f.read("fc_cor2", "ratio_limit0", "u1.8");
    out->fc_cor2_ratio_limit[1]     = f.read("fc_cor2", "ratio_limit1", "u1.8");
    read_packed_lut<2>(f,
                       {"fc_cor_sat0", "fc_cor_sat1", "fc_cor_sat2", "fc_cor_sat3", "fc_cor_sat4"},
                       out->fc_cor_sat_lut, "u8.4");
    return 0;
}

int rtl_to_drv_dem_user_gic(picojson::object &root, _isp_dem_user_gic_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    read_packed_lut<4>(f, {"gic_strength0", "gic_strength1", "gic_strength2"},
                       out->gic_strength_lut, "u1.7");
    read_split_lut(f, "gic_ct_lut", "gic_ct", out->gic_ct, "u8.4");
    read_packed_lut<2>(f, {"gic_limit0", "gic_limit1", "gic_limit2", "gic_limit3", "gic_limit4"},
                       out->gic_limit, "u8.4");
    return 0;
}

int rtl_to_drv_dem_user_sharpen(picojson::object &root, _isp_dem_user_sharpen_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    read_split_lut(f, "edge_enhance_level_lut", "edge_enhance_level", out->edge_enhance_level_lut,
                   "u1.4");
    return 0;
}

int rtl_to_drv_dem_kernel_mem_ctrl(picojson::object &root, _isp_dem_kernel_mem_ctrl_t *out,
                                   uint8_t) {
    const isp::field_reader f(root, top_key);
    out->sw_rd  = f.read("wb_stat_mem_ctrl", "sw_rd", "u1");
    out->sw_clr = f.read("wb_stat_mem_ctrl", "sw_clr", "u1");
    return 0;
}

#define ISP_DEF_FILE "convert/dem/dem.def"
#define ISP_DEF_BLOCK dem
#include "convert/common/register_map_build.h"
