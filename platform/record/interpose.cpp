/* The functions a preload puts in front of the platform's and the library's: the wrapper calls
 * and the modules' registration functions. Each one forwards to the next definition in the
 * dynamic linker's order (the platform library, libisp_json) with the arguments it was given and
 * returns what that returned; what passed is handed to the recorder afterwards. */
#include <dlfcn.h>
#include <unistd.h>

#include <cstddef>

#include "isp_json_modules.h"
#include "platform/record/recorder.h"

#define ISP_RECORD_EXPORT extern "C" __attribute__((visibility("default")))

namespace isp_record {
namespace {

/* The next definition of a function, looked up once. A process without one would have failed
 * to start without the preload; the call then fails as the missing symbol would have. */
template <typename Fn>
Fn next(const char *name) {
    return reinterpret_cast<Fn>(dlsym(RTLD_NEXT, name));
}

#define ISP_RECORD_NEXT(fn)                                          \
    static const auto real = isp_record::next<decltype(&::fn)>(#fn); \
    if (!real) return -1

/* ---- operations tables -------------------------------------------------------------------- */

enum module_index : size_t {
#define ISP_MODULE(mod, ...) k_##mod,
#include "modules/modules.def"
    k_module_count
};

/* The library's table of every module, and the table handed to the framework in its place. */
JsonModuleOps *g_real[k_module_count];
JsonModuleOps g_wrapped[k_module_count];

template <size_t M, JsonModuleOp JsonModuleOps::*Slot, op Kind>
int32_t attributed(JsonModuleHandle *handle) {
    op_scope scope(isp::modules()[M], Kind, handle);
    return (g_real[M]->*Slot)(handle);
}

/* Each slot the library filled gets its attributed call; an empty slot stays empty, and ctrl,
 * set_param and get_param, which push nothing, are the library's own. */
template <size_t M>
JsonModuleOps *wrapped_table(JsonModuleOps *real) {
    g_real[M]          = real;
    JsonModuleOps &ops = g_wrapped[M];
    ops                = *real;
    const auto wrap    = [&](JsonModuleOp JsonModuleOps::*slot, JsonModuleOp fn) {
        if (real->*slot) ops.*slot = fn;
    };
    wrap(&JsonModuleOps::create, attributed<M, &JsonModuleOps::create, op::create>);
    wrap(&JsonModuleOps::destroy, attributed<M, &JsonModuleOps::destroy, op::destroy>);
    wrap(&JsonModuleOps::init, attributed<M, &JsonModuleOps::init, op::init>);
    wrap(&JsonModuleOps::deinit, attributed<M, &JsonModuleOps::deinit, op::deinit>);
    wrap(&JsonModuleOps::process, attributed<M, &JsonModuleOps::process, op::process>);
    wrap(&JsonModuleOps::process2, attributed<M, &JsonModuleOps::process2, op::process>);
    wrap(&JsonModuleOps::trigger, attributed<M, &JsonModuleOps::trigger, op::trigger>);
    wrap(&JsonModuleOps::sync, attributed<M, &JsonModuleOps::sync, op::sync>);
    return &ops;
}

template <size_t M>
int32_t register_module(const char *name, JsonModuleOps **out) {
    using registration             = int32_t (*)(JsonModuleOps **);
    static const registration real = next<registration>(name);
    if (!real) return -1;
    const int32_t status = real(out);
    if (status == 0 && out && *out) {
        registered(isp::modules()[M], *out, reinterpret_cast<const void *>(real));
        *out = wrapped_table<M>(*out);
    }
    return status;
}

}  // namespace
}  // namespace isp_record

/* ---- the modules' registration functions -------------------------------------------------- */

#define ISP_MODULE(mod, ...)                                                             \
    ISP_RECORD_EXPORT int32_t qv_isp_module_##mod##_json_register(JsonModuleOps **out) { \
        return isp_record::register_module<isp_record::k_##mod>(                         \
            "qv_isp_module_" #mod "_json_register", out);                                \
    }
#include "modules/modules.def"

/* ---- the hardware wrapper ----------------------------------------------------------------- */

ISP_RECORD_EXPORT int32_t vin_hal_wrapper_create(uint32_t *handle, const VinHalWrapperAttr *attr) {
    ISP_RECORD_NEXT(vin_hal_wrapper_create);
    const int32_t status = real(handle, attr);
    if (status == 0 && handle) isp_record::wrapper_created(*handle, attr);
    return status;
}

ISP_RECORD_EXPORT int32_t vin_hal_wrapper_regio_create(uint32_t handle,
                                                       const VinHalRegioAttr *attr) {
    ISP_RECORD_NEXT(vin_hal_wrapper_regio_create);
    const int32_t status = real(handle, attr);
    if (status == 0) isp_record::regio_created(handle, attr);
    return status;
}

ISP_RECORD_EXPORT int32_t vin_hal_wrapper_setup(uint32_t handle, const VinHalSetupCmd *cmd) {
    ISP_RECORD_NEXT(vin_hal_wrapper_setup);
    const int32_t status = real(handle, cmd);
    if (status == 0 && cmd && cmd->data) isp_record::pushed(handle, cmd);
    return status;
}

ISP_RECORD_EXPORT int32_t vin_hal_wrapper_trigger(uint32_t handle, uint32_t mode, uint32_t arg,
                                                  uint32_t channel) {
    ISP_RECORD_NEXT(vin_hal_wrapper_trigger);
    return real(handle, mode, arg, channel);
}

ISP_RECORD_EXPORT int32_t vin_hal_wrapper_regio_destroy(uint32_t handle) {
    ISP_RECORD_NEXT(vin_hal_wrapper_regio_destroy);
    return real(handle);
}

ISP_RECORD_EXPORT int32_t vin_hal_wrapper_destroy(uint32_t handle) {
    ISP_RECORD_NEXT(vin_hal_wrapper_destroy);
    const int32_t status = real(handle);
    if (status == 0) isp_record::wrapper_destroyed(handle);
    return status;
}
