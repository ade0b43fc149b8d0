/* Converters of the demosaic block: every field is a row of dem.def; the gain tables and the
 * split tables, whose fields are read element by element, are read here. */
#include "blocks/dem.h"

#include <stddef.h>

#include "convert/common/field_reader.h"
#include "convert/common/register_map.h"

namespace isp {
extern const block_map dem_map;
}

namespace {

const char *const lut_fields[] = {"lut0", "lut1", "lut2", "lut3"};

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

void read_wbc_gain_luts(const isp::field_reader &f, void *out, uint8_t) {
    _isp_dem_user_wbc_t *wbc = static_cast<_isp_dem_user_wbc_t *>(out);
    read_wbc_gain_lut(f, "wbc_gain_lut_r", "wbc_gain_r", wbc->wbc_gain_lut_r);
    read_wbc_gain_lut(f, "wbc_gain_lut_g", "wbc_gain_g", wbc->wbc_gain_lut_g);
    read_wbc_gain_lut(f, "wbc_gain_lut_b", "wbc_gain_b", wbc->wbc_gain_lut_b);
}

void read_gic_ct(const isp::field_reader &f, void *out, uint8_t) {
    read_split_lut(f, "gic_ct_lut", "gic_ct", static_cast<_isp_dem_user_gic_t *>(out)->gic_ct,
                   "u8.4");
}

void read_edge_enhance_levels(const isp::field_reader &f, void *out, uint8_t) {
    read_split_lut(f, "edge_enhance_level_lut", "edge_enhance_level",
                   static_cast<_isp_dem_user_sharpen_t *>(out)->edge_enhance_level_lut, "u1.4");
}

}  // namespace

int rtl_to_drv_dem_user_init(picojson::object &root, _isp_dem_user_init_t *out, uint8_t partition) {
    isp::read_rows(isp::dem_map, "init", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_user_setup(picojson::object &root, _isp_dem_user_setup_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::dem_map, "setup", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_user_dem_mode(picojson::object &root, _isp_dem_user_dem_mode_t *out,
                                 uint8_t partition) {
    isp::read_rows(isp::dem_map, "dem_mode", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_user_dem_core(picojson::object &root, _isp_dem_user_dem_core_t *out,
                                 uint8_t partition) {
    isp::read_rows(isp::dem_map, "dem_core", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_user_wbc(picojson::object &root, _isp_dem_user_wbc_t *out, uint8_t partition) {
    isp::read_rows(isp::dem_map, "wbc", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_user_fcc(picojson::object &root, _isp_dem_user_fcc_t *out, uint8_t partition) {
    isp::read_rows(isp::dem_map, "fcc", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_user_gic(picojson::object &root, _isp_dem_user_gic_t *out, uint8_t partition) {
    isp::read_rows(isp::dem_map, "gic", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_user_sharpen(picojson::object &root, _isp_dem_user_sharpen_t *out,
                                uint8_t partition) {
    isp::read_rows(isp::dem_map, "sharpen", root, out, partition);
    return 0;
}

int rtl_to_drv_dem_kernel_mem_ctrl(picojson::object &root, _isp_dem_kernel_mem_ctrl_t *out,
                                   uint8_t partition) {
    isp::read_rows(isp::dem_map, "kernel_mem_ctrl", root, out, partition);
    return 0;
}

#define ISP_DEF_FILE "convert/dem/dem.def"
#define ISP_DEF_BLOCK dem
#include "convert/common/register_map_build.h"
