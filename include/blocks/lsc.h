/* Driver structures, converters and C-model exporters of the lens shading block ("isp_lsc"). */
#ifndef ISP_BLOCK_LSC_H
#define ISP_BLOCK_LSC_H

#include <stdint.h>

#include "isp_framework.h"

#define ISP_LSC_MESH_SIZE 285 /* gain nodes per Bayer channel */

typedef struct _isp_lsc_user_setup_t {
    uint32_t offset_in;                      /* "offset_in"."dt", u14.6 */
    uint32_t offset_out;                     /* "offset_out"."dt", u14.6 */
    uint8_t bayer_pattern;                   /* "bayer_pattern"."mode " (blank in the key), u2 */
    uint16_t img_size_v[ISP_MAX_PARTITIONS]; /* "img_size"."v", u14; per partition */
    uint16_t img_size_h[ISP_MAX_PARTITIONS]; /* "img_size"."h", u14; per partition */
} _isp_lsc_user_setup_t;

/* Inverse size of a partition's first mesh cell. */
typedef struct _isp_lsc_inv_str_t {
    uint32_t h; /* "inv_mesh_length_str_h"."h", u1.22 */
    uint32_t w; /* "inv_mesh_length_str_w"."w", u1.22 */
} _isp_lsc_inv_str_t;

/* A partition's location in the picture. */
typedef struct _isp_lsc_locat_t {
    uint16_t y; /* "locat"."y", u10 */
    uint16_t x; /* "locat"."x", u10 */
} _isp_lsc_locat_t;

/* A mesh node index pair. */
typedef struct _isp_lsc_mesh_node_t {
    uint8_t y; /* "y", u7 */
    uint8_t x; /* "x", u7 */
} _isp_lsc_mesh_node_t;

typedef struct _isp_lsc_user_coord_t {
    uint16_t mesh_length_h;                                     /* "mesh_length"."h", u10 */
    uint16_t mesh_length_w;                                     /* "mesh_length"."w", u10 */
    uint32_t inv_mesh_length_h;                                 /* "inv_mesh_length_h"."h", u1.22 */
    uint32_t inv_mesh_length_w;                                 /* "inv_mesh_length_w"."w", u1.22 */
    _isp_lsc_inv_str_t inv_mesh_length_str[ISP_MAX_PARTITIONS]; /* per partition */
    _isp_lsc_locat_t locat[ISP_MAX_PARTITIONS];                 /* per partition */
    _isp_lsc_mesh_node_t mesh_start[ISP_MAX_PARTITIONS];        /* "mesh_start"; per partition */
    _isp_lsc_mesh_node_t mesh_end[ISP_MAX_PARTITIONS];          /* "mesh_end"; per partition */
} _isp_lsc_user_coord_t;

/* Raw hardware mesh values, each table a JSON array of numbers directly under "isp_lsc". */
typedef struct _isp_lsc_user_mesh_t {
    uint32_t rr_mesh[ISP_LSC_MESH_SIZE]; /* "rr_mesh"[i], unencoded */
    uint32_t gr_mesh[ISP_LSC_MESH_SIZE]; /* "gr_mesh"[i], unencoded */
    uint32_t gb_mesh[ISP_LSC_MESH_SIZE]; /* "gb_mesh"[i], unencoded */
    uint32_t bb_mesh[ISP_LSC_MESH_SIZE]; /* "bb_mesh"[i], unencoded */
} _isp_lsc_user_mesh_t;

#ifdef __cplusplus
#include <picojson.h>

#include "isp_json_export.h"

ISP_JSON_API int rtl_to_drv_lsc_user_setup(picojson::object &root, _isp_lsc_user_setup_t *out,
                                           uint8_t partition);
ISP_JSON_API int rtl_to_drv_lsc_user_coord(picojson::object &root, _isp_lsc_user_coord_t *out,
                                           uint8_t partition);
/* Unlike every other converter, failures are not caught: a missing or mistyped table or entry
 * raises picojson's type error to the caller, with the entries read so far already stored. */
ISP_JSON_API int rtl_to_drv_lsc_user_mesh(picojson::object &root, _isp_lsc_user_mesh_t *out,
                                          uint8_t partition);

/* "offset_in", "offset_out". */
ISP_JSON_API int drv_to_cmodel_lsc_user_setup(_isp_lsc_user_setup_t *in, picojson::object &out,
                                              uint8_t partition);
/* The partition's mesh geometry: "mesh_length", "inv_mesh_length", "inv_mesh_start", "locat",
 * "mesh_start", "mesh_end", each a pair in member order. */
ISP_JSON_API int drv_to_cmodel_lsc_user_coord(_isp_lsc_user_coord_t *in, picojson::object &out,
                                              uint8_t partition);
#endif

#endif
