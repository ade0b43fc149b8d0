/* Everything libisp_json exports: the 34 module registrations and their operations, the
 * register-file converters and C-model exporters of every block, and the JSON and fixed-point
 * utilities. */
#ifndef ISP_JSON_H
#define ISP_JSON_H

#include "isp_framework.h"
#include "isp_json_modules.h"
#include "isp_json_utils.h"

#include "blocks/wbc.h"
#include "blocks/blc.h"
#include "blocks/dpc.h"
#include "blocks/lsc.h"
#include "blocks/dem.h"
#include "blocks/clc.h"
#include "blocks/gamma.h"
#include "blocks/csc.h"
#include "blocks/hdrc.h"
#include "blocks/hidrc.h"
#include "blocks/hdr.h"
#include "blocks/raw2dnr.h"
#include "blocks/lce.h"
#include "blocks/rltm.h"
#include "blocks/dehaze.h"
#include "blocks/y2dnr.h"
#include "blocks/yuv3dnr.h"
#include "blocks/pfd.h"
#include "blocks/nrlite.h"
#include "blocks/ae_stat.h"
#include "blocks/awb_stat.h"
#include "blocks/af_stat.h"
#include "blocks/bl_det.h"
#include "blocks/eis_pre.h"
#include "blocks/eis_post.h"
#include "blocks/ifa.h"

#endif
