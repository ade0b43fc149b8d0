/* Converters of the demosaic block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/dem.h"

int rtl_to_drv_dem_user_init(picojson::object &, _isp_dem_user_init_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_user_setup(picojson::object &, _isp_dem_user_setup_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_user_dem_mode(picojson::object &, _isp_dem_user_dem_mode_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_user_dem_core(picojson::object &, _isp_dem_user_dem_core_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_user_wbc(picojson::object &, _isp_dem_user_wbc_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_user_fcc(picojson::object &, _isp_dem_user_fcc_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_user_gic(picojson::object &, _isp_dem_user_gic_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_user_sharpen(picojson::object &, _isp_dem_user_sharpen_t *, uint8_t) { return 0; }

int rtl_to_drv_dem_kernel_mem_ctrl(picojson::object &, _isp_dem_kernel_mem_ctrl_t *, uint8_t) { return 0; }
