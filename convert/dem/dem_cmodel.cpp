/* C-model exporters of the demosaic block: every plain key is a row of dem.def; the statistics
 * window and the gain tables' rows are written here. The init and memory-control groups have
 * none. */
#include "blocks/dem.h"

#include "convert/common/cmodel_writer.h"
#include "convert/common/register_map.h"

namespace isp {
extern const block_map dem_map;
}

int drv_to_cmodel_dem_user_setup(_isp_dem_user_setup_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::dem_map, "setup", in, out, partition);
    /* the partition's window, as one array: top, bottom, left, right */
    const _isp_dem_wb_stat_roi_t &roi = in->wb_stat_roi[partition];
    isp::cmodel_writer(out).array("wb_stat_roi", {roi.top, roi.bottom, roi.left, roi.right}, "u14");
    return 0;
}

int drv_to_cmodel_dem_user_dem_mode(_isp_dem_user_dem_mode_t *in, picojson::object &out,
                                    uint8_t partition) {
    isp::export_rows(isp::dem_map, "dem_mode", in, out, partition);
    return 0;
}

int drv_to_cmodel_dem_user_dem_core(_isp_dem_user_dem_core_t *in, picojson::object &out,
                                    uint8_t partition) {
    isp::export_rows(isp::dem_map, "dem_core", in, out, partition);
    return 0;
}

/* One row of four gains per register, sixteen rows per table. */
int drv_to_cmodel_dem_user_wbc(_isp_dem_user_wbc_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    const size_t rows = ISP_DEM_WBC_LUT_SIZE / ISP_DEM_WBC_LUT_COLS;
    w.table("wbc_gain_lut_r", in->wbc_gain_lut_r, rows, ISP_DEM_WBC_LUT_COLS, "u1.7");
    w.table("wbc_gain_lut_g", in->wbc_gain_lut_g, rows, ISP_DEM_WBC_LUT_COLS, "u1.7");
    w.table("wbc_gain_lut_b", in->wbc_gain_lut_b, rows, ISP_DEM_WBC_LUT_COLS, "u1.7");
    return 0;
}

int drv_to_cmodel_dem_user_fcc(_isp_dem_user_fcc_t *in, picojson::object &out, uint8_t partition) {
    isp::export_rows(isp::dem_map, "fcc", in, out, partition);
    return 0;
}

int drv_to_cmodel_dem_user_gic(_isp_dem_user_gic_t *in, picojson::object &out, uint8_t partition) {
    isp::export_rows(isp::dem_map, "gic", in, out, partition);
    return 0;
}

int drv_to_cmodel_dem_user_sharpen(_isp_dem_user_sharpen_t *in, picojson::object &out,
                                   uint8_t partition) {
    isp::export_rows(isp::dem_map, "sharpen", in, out, partition);
    return 0;
}
