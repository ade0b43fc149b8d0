/* Converters of the lite noise reduction (pattern files) block. Its register map is not yet
 * defined, so they read no field; each keeps the signature every converter has so the modules call
 * them in order. */
#include "blocks/nrlite.h"

int rtl_to_drv_nrlite_user_post(picojson::object &, _isp_nrlite_user_post_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/nrlite/nrlite.def"
#define ISP_DEF_BLOCK nrlite
#include "convert/common/register_map_build.h"
