/* Converters and C-model exporters of the lens shading block. */
#include "blocks/lsc.h"

#include "convert/common/cmodel_writer.h"
#include "convert/common/field_reader.h"

namespace {

const char *const top_key = "isp_lsc";

/* The hardware takes the mesh as it is: every node is a raw number, not a fixed-point field. */
void read_mesh_table(const isp::field_reader &f, const char *key,
                     uint32_t (&table)[ISP_LSC_MESH_SIZE]) {
    for (size_t i = 0; i < ISP_LSC_MESH_SIZE; ++i) table[i] = f.raw_number(key, i);
}

}  // namespace

int rtl_to_drv_lsc_user_setup(picojson::object &root, _isp_lsc_user_setup_t *out,
                              uint8_t partition) {
    const isp::field_reader f(root, top_key);
    out->offset_in  = f.read("offset_in", "dt", "u14.6");
    out->offset_out = f.read("offset_out", "dt", "u14.6");
    // The hardware model names this field with a trailing blank; files carry it that way.
    out->bayer_pattern         = f.read("bayer_pattern", "mode ", "u2");
    out->img_size_v[partition] = f.read("img_size", "v", "u14");
    out->img_size_h[partition] = f.read("img_size", "h", "u14");
    return 0;
}

int rtl_to_drv_lsc_user_coord(picojson::object &root, _isp_lsc_user_coord_t *out,
                              uint8_t partition) {
    const isp::field_reader f(root, top_key);
    out->mesh_length_h                    = f.read("mesh_length", "h", "u10");
    out->mesh_length_w                    = f.read("mesh_length", "w", "u10");
    out->inv_mesh_length_h                = f.read("inv_mesh_length_h", "h", "u1.22");
    out->inv_mesh_length_w                = f.read("inv_mesh_length_w", "w", "u1.22");
    out->inv_mesh_length_str[partition].h = f.read("inv_mesh_length_str_h", "h", "u1.22");
    out->inv_mesh_length_str[partition].w = f.read("inv_mesh_length_str_w", "w", "u1.22");
    out->locat[partition].y               = f.read("locat", "y", "u10");
    out->locat[partition].x               = f.read("locat", "x", "u10");
    out->mesh_start[partition].y          = f.read("mesh_start", "y", "u7");
    out->mesh_start[partition].x          = f.read("mesh_start", "x", "u7");
    out->mesh_end[partition].y            = f.read("mesh_end", "y", "u7");
    out->mesh_end[partition].x            = f.read("mesh_end", "x", "u7");
    return 0;
}

int rtl_to_drv_lsc_user_mesh(picojson::object &root, _isp_lsc_user_mesh_t *out, uint8_t) {
    const isp::field_reader f(root, top_key);
    read_mesh_table(f, "rr_mesh", out->rr_mesh);
    read_mesh_table(f, "gr_mesh", out->gr_mesh);
    read_mesh_table(f, "gb_mesh", out->gb_mesh);
    read_mesh_table(f, "bb_mesh", out->bb_mesh);
    return 0;
}

int drv_to_cmodel_lsc_user_setup(_isp_lsc_user_setup_t *in, picojson::object &out, uint8_t) {
    const isp::cmodel_writer w(out);
    w.value("offset_in", in->offset_in, "u14.6");
    w.value("offset_out", in->offset_out, "u14.6");
    return 0;
}

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
