/* Converters of the input formatting block. Its register map is not yet defined, so they read no
 * field; each keeps the signature every converter has so the modules call them in order. */
#include "blocks/ifa.h"

int rtl_to_drv_ifa_user_setup(picojson::object &, _isp_ifa_user_setup_t *, uint8_t) {
    return 0;
}

int rtl_to_drv_ifa_user_crop(picojson::object &, _isp_ifa_user_crop_t *, uint8_t) {
    return 0;
}

#define ISP_DEF_FILE "convert/ifa/ifa.def"
#define ISP_DEF_BLOCK ifa
#include "convert/common/register_map_build.h"
