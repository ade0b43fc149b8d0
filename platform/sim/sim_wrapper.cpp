/* The ISP hardware-abstraction wrapper, simulated: handles, register I/O state, byte copies of
 * every record and pushed structure, and the checks of the wrapper's call discipline. A call
 * the wrapper finds wrong is recorded as a problem and returns -1. */
#include <string.h>

#include "sim_state.h"

namespace {

using isp_sim::call;
using isp_sim::wrapper_state;
using namespace isp_sim::internal;

const char mod_prefix[] = "mod_";

template <typename Record>
std::vector<uint8_t> bytes_of(const Record *record) {
    if (!record) return {};
    const uint8_t *first = reinterpret_cast<const uint8_t *>(record);
    return std::vector<uint8_t>(first, first + sizeof(Record));
}

/* The block a register I/O serves: its name without "mod_"; the name need not be terminated. */
std::string block_of(const VinHalRegioAttr &attr) {
    std::string name(attr.name, strnlen(attr.name, sizeof attr.name));
    const size_t prefix = sizeof mod_prefix - 1;
    return name.compare(0, prefix, mod_prefix) == 0 ? name.substr(prefix) : name;
}

wrapper_state *lookup(uint32_t handle) {
    auto found = sim().wrappers.find(handle);
    return found == sim().wrappers.end() ? nullptr : &found->second;
}

/* The live wrapper a call names, or null after recording why it cannot be used. */
wrapper_state *usable(const char *function, uint32_t handle) {
    wrapper_state *wrapper = lookup(handle);
    if (!wrapper)
        problem(std::string(function) + ": unknown handle " + hex(handle));
    else if (!wrapper->exists)
        problem(std::string(function) + ": handle " + hex(handle) + " used after destroy");
    return wrapper && wrapper->exists ? wrapper : nullptr;
}

/* As usable(), and the wrapper must have its register I/O. */
wrapper_state *with_regio(const char *function, uint32_t handle) {
    wrapper_state *wrapper = usable(function, handle);
    if (wrapper && !wrapper->regio) {
        problem(std::string(function) + ": handle " + hex(handle) + " has no register I/O");
        return nullptr;
    }
    return wrapper;
}

int32_t refuse(call &c) {
    return c.result = -1;
}

}  // namespace

namespace isp_sim {

ISP_SIM_API wrapper_state wrapper(uint32_t handle) {
    const internal::guard locked(internal::platform_lock());
    const wrapper_state *found = lookup(handle);
    return found ? *found : wrapper_state();
}

ISP_SIM_API size_t live_wrappers() {
    const internal::guard locked(internal::platform_lock());
    size_t live = 0;
    for (const auto &entry : sim().wrappers) live += entry.second.exists ? 1 : 0;
    return live;
}

}  // namespace isp_sim

ISP_SIM_EXPORT int32_t vin_hal_wrapper_create(uint32_t *handle, const VinHalWrapperAttr *attr) {
    const guard locked(platform_lock());
    const char *function = "vin_hal_wrapper_create";
    call &c              = record(function);
    c.record             = bytes_of(attr);
    if (failing_now(function, c)) return c.result;
    if (!handle || !attr) {
        problem(std::string(function) + ": null handle or creation record");
        return refuse(c);
    }
    const uint32_t issued = sim().next_handle++;
    wrapper_state &state  = sim().wrappers[issued];
    state.exists          = true;
    state.type            = attr->type;
    *handle               = issued;
    c.handle              = issued;
    return 0;
}

ISP_SIM_EXPORT int32_t vin_hal_wrapper_destroy(uint32_t handle) {
    const guard locked(platform_lock());
    const char *function = "vin_hal_wrapper_destroy";
    call &c              = record(function);
    c.handle             = handle;
    if (failing_now(function, c)) return c.result;
    const wrapper_state *known = lookup(handle);
    if (known && !known->exists) {
        problem(std::string(function) + ": handle " + hex(handle) + " destroyed twice");
        return refuse(c);
    }
    wrapper_state *wrapper = usable(function, handle);
    if (!wrapper) return refuse(c);
    wrapper->exists = false;
    wrapper->regio  = false;
    return 0;
}

ISP_SIM_EXPORT int32_t vin_hal_wrapper_regio_create(uint32_t handle, const VinHalRegioAttr *attr) {
    const guard locked(platform_lock());
    const char *function = "vin_hal_wrapper_regio_create";
    call &c              = record(function);
    c.handle             = handle;
    c.record             = bytes_of(attr);
    if (failing_now(function, c)) return c.result;
    if (!attr) {
        problem(std::string(function) + ": null register I/O record");
        return refuse(c);
    }
    wrapper_state *wrapper = usable(function, handle);
    if (!wrapper) return refuse(c);
    if (wrapper->regio)
        problem(std::string(function) + ": handle " + hex(handle) + " has a register I/O already");
    wrapper->regio   = true;
    wrapper->block   = block_of(*attr);
    wrapper->channel = attr->channel;
    return 0;
}

ISP_SIM_EXPORT int32_t vin_hal_wrapper_regio_destroy(uint32_t handle) {
    const guard locked(platform_lock());
    const char *function = "vin_hal_wrapper_regio_destroy";
    call &c              = record(function);
    c.handle             = handle;
    if (failing_now(function, c)) return c.result;
    wrapper_state *wrapper = with_regio(function, handle);
    if (!wrapper) return refuse(c);
    wrapper->regio = false;
    return 0;
}

ISP_SIM_EXPORT int32_t vin_hal_wrapper_setup(uint32_t handle, const VinHalSetupCmd *cmd) {
    const guard locked(platform_lock());
    const char *function = "vin_hal_wrapper_setup";
    /* The hook runs first and may call back into the platform; a copy survives the hook
     * replacing itself. */
    if (auto hook = sim().setup_hook) hook(handle, cmd);
    call &c  = record(function);
    c.handle = handle;
    if (cmd) {
        c.cmd                      = cmd->cmd;
        c.has_data                 = cmd->data != nullptr;
        const wrapper_state *known = lookup(handle);
        const size_t size = known && cmd->data ? isp_sim::payload_size(known->block, cmd->cmd) : 0;
        const uint8_t *data = static_cast<const uint8_t *>(cmd->data);
        c.payload.assign(data, data + size);
    }
    if (failing_now(function, c)) return c.result;
    if (!cmd) {
        problem(std::string(function) + ": null setup record");
        return refuse(c);
    }
    return with_regio(function, handle) ? 0 : refuse(c);
}

ISP_SIM_EXPORT int32_t vin_hal_wrapper_trigger(uint32_t handle, uint32_t mode, uint32_t arg,
                                               uint32_t channel) {
    const guard locked(platform_lock());
    const char *function = "vin_hal_wrapper_trigger";
    call &c              = record(function);
    c.handle             = handle;
    c.mode               = mode;
    c.arg                = arg;
    c.channel            = channel;
    if (failing_now(function, c)) return c.result;
    return with_regio(function, handle) ? 0 : refuse(c);
}

ISP_SIM_EXPORT int32_t isp_plat_hal_register_func(void) {
    return 0;
}

ISP_SIM_EXPORT int32_t qv_regio_regdesc_get_plat(void) {
    return 0;
}
