/* The 34 JSON modules: one registration function and one set of operations per module. */
#ifndef ISP_JSON_MODULES_H
#define ISP_JSON_MODULES_H

#include <stdint.h>

#include "isp_framework.h"
#include "isp_json_export.h"

/* Every module of the library, in catalogue order. WITH_SYNC modules have a sync operation;
 * NO_SYNC modules leave the sync slot of their table null and export no sync function. */
#define ISP_JSON_MODULE_LIST(WITH_SYNC, NO_SYNC)                                                \
    WITH_SYNC(cc) WITH_SYNC(dehaze) WITH_SYNC(demosaic) WITH_SYNC(hs2dlut) WITH_SYNC(lin)      \
    WITH_SYNC(ifa) WITH_SYNC(blc) WITH_SYNC(yuv3dnr) NO_SYNC(ae_stat) WITH_SYNC(awb_stat)      \
    WITH_SYNC(lsc) WITH_SYNC(af_stat) WITH_SYNC(gamma) WITH_SYNC(wbc) WITH_SYNC(ccmp)          \
    WITH_SYNC(dpc) WITH_SYNC(ycproc) WITH_SYNC(eis_post) WITH_SYNC(y2dnr) WITH_SYNC(sharpen)   \
    WITH_SYNC(rltm) WITH_SYNC(fcc) NO_SYNC(ainr) WITH_SYNC(csc) WITH_SYNC(gic)                 \
    WITH_SYNC(edge_enhance) NO_SYNC(hidrc) WITH_SYNC(depurple) WITH_SYNC(eis_pre)              \
    WITH_SYNC(raw2dnr) WITH_SYNC(bl_det) WITH_SYNC(scm) NO_SYNC(hdrc) WITH_SYNC(hdr)

#define ISP_JSON_DECLARE_MODULE_NO_SYNC(mod)                                                   \
    ISP_JSON_API int32_t qv_isp_module_##mod##_json_register(JsonModuleOps **out);             \
    ISP_JSON_API int32_t isp_##mod##_json_mod_create(JsonModuleHandle *handle);                \
    ISP_JSON_API int32_t isp_##mod##_json_mod_destroy(JsonModuleHandle *handle);               \
    ISP_JSON_API int32_t isp_##mod##_json_mod_init(JsonModuleHandle *handle);                  \
    ISP_JSON_API int32_t isp_##mod##_json_mod_deinit(JsonModuleHandle *handle);                \
    ISP_JSON_API int32_t isp_##mod##_json_mod_process(JsonModuleHandle *handle);               \
    ISP_JSON_API int32_t isp_##mod##_json_mod_trigger(JsonModuleHandle *handle);               \
    ISP_JSON_API int32_t isp_##mod##_json_mod_ctrl(JsonModuleHandle *handle, uint32_t cmd,     \
                                                   void *arg);                                 \
    ISP_JSON_API int32_t isp_##mod##_json_mod_set_param(JsonModuleHandle *handle, void *param); \
    ISP_JSON_API int32_t isp_##mod##_json_mod_get_param(JsonModuleHandle *handle, void *param);
#define ISP_JSON_DECLARE_MODULE(mod)      \
    ISP_JSON_DECLARE_MODULE_NO_SYNC(mod)  \
    ISP_JSON_API int32_t isp_##mod##_json_mod_sync(JsonModuleHandle *handle);

#ifdef __cplusplus
extern "C" {
#endif

ISP_JSON_MODULE_LIST(ISP_JSON_DECLARE_MODULE, ISP_JSON_DECLARE_MODULE_NO_SYNC)

#ifdef __cplusplus
}
#endif

#endif
