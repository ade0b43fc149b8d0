/* The library's register maps and member layouts, built into the tool from the blocks' own .def
 * files: the library keeps its copy to itself, and the rows are the same source either way. The
 * hand-written readers stay in the library; the tool only reads the rows that describe them. */
#include "isp_json.h"

#define ISP_DEF_HAND_READER(reader) nullptr

#define ISP_DEF_FILE "convert/wbc/wbc.def"
#define ISP_DEF_BLOCK wbc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/blc/blc.def"
#define ISP_DEF_BLOCK blc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/dpc/dpc.def"
#define ISP_DEF_BLOCK dpc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/lsc/lsc.def"
#define ISP_DEF_BLOCK lsc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/dem/dem.def"
#define ISP_DEF_BLOCK dem
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/clc/clc.def"
#define ISP_DEF_BLOCK clc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/gamma/gamma.def"
#define ISP_DEF_BLOCK gamma
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/csc/csc.def"
#define ISP_DEF_BLOCK csc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/hdrc/hdrc.def"
#define ISP_DEF_BLOCK hdrc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/hidrc/hidrc.def"
#define ISP_DEF_BLOCK hidrc
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/hdr/hdr.def"
#define ISP_DEF_BLOCK hdr
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/raw2dnr/raw2dnr.def"
#define ISP_DEF_BLOCK raw2dnr
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/lce/lce.def"
#define ISP_DEF_BLOCK lce
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/rltm/rltm.def"
#define ISP_DEF_BLOCK rltm
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/dehaze/dehaze.def"
#define ISP_DEF_BLOCK dehaze
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/y2dnr/y2dnr.def"
#define ISP_DEF_BLOCK y2dnr
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/yuv3dnr/yuv3dnr.def"
#define ISP_DEF_BLOCK yuv3dnr
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/pfd/pfd.def"
#define ISP_DEF_BLOCK pfd
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/nrlite/nrlite.def"
#define ISP_DEF_BLOCK nrlite
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/ae_stat/ae_stat.def"
#define ISP_DEF_BLOCK ae_stat
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/awb_stat/awb_stat.def"
#define ISP_DEF_BLOCK awb_stat
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/af_stat/af_stat.def"
#define ISP_DEF_BLOCK af_stat
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/bl_det/bl_det.def"
#define ISP_DEF_BLOCK bl_det
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/eis_pre/eis_pre.def"
#define ISP_DEF_BLOCK eis_pre
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/eis_post/eis_post.def"
#define ISP_DEF_BLOCK eis_post
#include "convert/common/register_map_build.h"

#define ISP_DEF_FILE "convert/ifa/ifa.def"
#define ISP_DEF_BLOCK ifa
#include "convert/common/register_map_build.h"
