/* Converters and C-model exporters of the lens shading block: every field, table and plain key
 * is a row of lsc.def; the coord exporter's pairs are written here. */
#include "blocks/lsc.h"

#include "convert/common/cmodel_writer.h"
#include "convert/common/register_map.h"

namespace isp {
extern const block_map lsc_map;
}

int rtl_to_drv_lsc_user_setup(picojson::object &root, _isp_lsc_user_setup_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::lsc_map, "setup", root, out, partition);
    return 0;
}

int rtl_to_drv_lsc_user_coord(picojson::object &root, _isp_lsc_user_coord_t *out,
                              uint8_t partition) {
    isp::read_rows(isp::lsc_map, "coord", root, out, partition);
    return 0;
}

int rtl_to_drv_lsc_user_mesh(picojson::object &root, _isp_lsc_user_mesh_t *out, uint8_t partition) {
    isp::read_rows(isp::lsc_map, "mesh", root, out, partition);
    return 0;
}

int drv_to_cmodel_lsc_user_setup(_isp_lsc_user_setup_t *in, picojson::object &out,
                                 uint8_t partition) {
    isp::export_rows(isp::lsc_map, "setup", in, out, partition);
    return 0;
}

/* Each key is a pair of members, in member order; the start, location and mesh bounds are the
 * partition's. */
int drv_to_cmodel_lsc_user_coord(_isp_lsc_user_coord_t *in, picojson::object &out,
                                 uint8_t partition) {
    const isp::cmodel_writer w(out);
    const _isp_lsc_inv_str_t &inv_str = in->inv_mesh_length_str[partition];
    const _isp_lsc_locat_t &locat     = in->locat[partition];
    const _isp_lsc_mesh_node_t &start = in->mesh_start[partition];
    const _isp_lsc_mesh_node_t &end   = in->mesh_end[partition];
    w.array("mesh_length", {in->mesh_length_h, in->mesh_length_w}, "u10");
    w.array("inv_mesh_length", {in->inv_mesh_length_h, in->inv_mesh_length_w}, "u1.22");
    w.array("inv_mesh_start", {inv_str.h, inv_str.w}, "u1.22");
    w.array("locat", {locat.y, locat.x}, "u10");
    w.array("mesh_start", {start.y, start.x}, "u7");
    w.array("mesh_end", {end.y, end.x}, "u7");
    return 0;
}

#define ISP_DEF_FILE "convert/lsc/lsc.def"
#define ISP_DEF_BLOCK lsc
#include "convert/common/register_map_build.h"
