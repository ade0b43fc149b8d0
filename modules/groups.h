/* The structure groups of every module: what one load fills and pushes. */
#ifndef ISP_MODULE_GROUPS_H
#define ISP_MODULE_GROUPS_H

#include "modules/module.h"

namespace isp {

#define ISP_GROUPS_OF(mod) extern const frame_layout mod##_groups;
ISP_JSON_MODULE_LIST(ISP_GROUPS_OF, ISP_GROUPS_OF)
#undef ISP_GROUPS_OF

}  // namespace isp

#endif
