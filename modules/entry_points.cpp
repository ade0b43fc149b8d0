/* The exported entry points of every module, generated from the module list: a registration
 * function filling the module's operations table, and thin operations calling the generic
 * module with the module's catalogue row. */
#include "isp_json_modules.h"
#include "modules/module.h"
#include "modules/module_log.h"

namespace isp {
namespace {

/* The version banner, logged by every registration of the ae_stat module. */
const char k_banner[] = "[SDK version]: libisp_json.so V2.0.0_P5_" ISP_JSON_BUILD_STAMP
                        " " ISP_JSON_BUILD_DATE " " ISP_JSON_BUILD_TIME;
const int k_banner_line = 400;

}  // namespace
}  // namespace isp

#define ISP_MODULE_OPS(mod)                                                   \
    int32_t isp_##mod##_json_mod_create(JsonModuleHandle *h) {                \
        return isp::module_create(isp::mod##_module, h);                      \
    }                                                                         \
    int32_t isp_##mod##_json_mod_destroy(JsonModuleHandle *h) {               \
        return isp::module_destroy(isp::mod##_module, h);                     \
    }                                                                         \
    int32_t isp_##mod##_json_mod_init(JsonModuleHandle *h) {                  \
        return isp::module_init(isp::mod##_module, h);                        \
    }                                                                         \
    int32_t isp_##mod##_json_mod_deinit(JsonModuleHandle *h) {                \
        return isp::module_deinit(isp::mod##_module, h);                      \
    }                                                                         \
    int32_t isp_##mod##_json_mod_process(JsonModuleHandle *h) {               \
        return isp::module_load(isp::mod##_module, h);                        \
    }                                                                         \
    int32_t isp_##mod##_json_mod_trigger(JsonModuleHandle *h) {               \
        return isp::module_trigger(isp::mod##_module, h);                     \
    }                                                                         \
    int32_t isp_##mod##_json_mod_ctrl(JsonModuleHandle *, uint32_t, void *) { \
        return 0;                                                             \
    }                                                                         \
    int32_t isp_##mod##_json_mod_set_param(JsonModuleHandle *, void *) {      \
        return 0;                                                             \
    }                                                                         \
    int32_t isp_##mod##_json_mod_get_param(JsonModuleHandle *, void *) {      \
        return 0;                                                             \
    }

/* The table is filled by the call, not by static initialisation; process sits in both
 * processing slots so that either entry does the same work. */
#define ISP_MODULE_REGISTER(mod, sync_op, after)                       \
    int32_t qv_isp_module_##mod##_json_register(JsonModuleOps **out) { \
        static JsonModuleOps ops;                                      \
        ops.create    = isp_##mod##_json_mod_create;                   \
        ops.destroy   = isp_##mod##_json_mod_destroy;                  \
        ops.init      = isp_##mod##_json_mod_init;                     \
        ops.deinit    = isp_##mod##_json_mod_deinit;                   \
        ops.process   = isp_##mod##_json_mod_process;                  \
        ops.process2  = isp_##mod##_json_mod_process;                  \
        ops.trigger   = isp_##mod##_json_mod_trigger;                  \
        ops.sync      = sync_op;                                       \
        ops.ctrl      = isp_##mod##_json_mod_ctrl;                     \
        ops.set_param = isp_##mod##_json_mod_set_param;                \
        ops.get_param = isp_##mod##_json_mod_get_param;                \
        *out          = &ops;                                          \
        after;                                                         \
        return 0;                                                      \
    }

#define ISP_MODULE_WITH_SYNC(mod)                            \
    ISP_MODULE_OPS(mod)                                      \
    int32_t isp_##mod##_json_mod_sync(JsonModuleHandle *h) { \
        return isp::module_sync(isp::mod##_module, h);       \
    }                                                        \
    ISP_MODULE_REGISTER(mod, isp_##mod##_json_mod_sync, (void)0)

#define ISP_MODULE_NO_SYNC(mod) \
    ISP_MODULE_OPS(mod)         \
    ISP_MODULE_REGISTER(mod, nullptr, ISP_MODULE_ANNOUNCE_##mod)

/* Only ae_stat announces the library when it registers. */
#define ISP_MODULE_ANNOUNCE_ae_stat \
    isp::log_debug_text("qv_isp_module_ae_stat_json_register", isp::k_banner_line, isp::k_banner)
#define ISP_MODULE_ANNOUNCE_ainr (void)0
#define ISP_MODULE_ANNOUNCE_hidrc (void)0
#define ISP_MODULE_ANNOUNCE_hdrc (void)0

extern "C" {
ISP_JSON_MODULE_LIST(ISP_MODULE_WITH_SYNC, ISP_MODULE_NO_SYNC)
}
