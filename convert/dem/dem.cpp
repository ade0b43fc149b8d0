/* Converters of the demosaic block: every field is a row of dem.def. */
#include "blocks/dem.h"

#include <stddef.h>

#include "convert/common/register_map.h"

namespace isp {
extern const block_map dem_map;
}

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
