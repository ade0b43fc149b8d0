/* The generic module: create, destroy, init, deinit, trigger and sync of every JSON module,
 * driven by its catalogue row. The parameter loader is in case_loader.cpp. */
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <string>

#include "isp_platform.h"
#include "modules/module.h"
#include "modules/module_log.h"

namespace isp {
namespace {

const uint32_t k_reg_base     = 0x2400000;
const uint32_t k_wrapper_mode = 2;
const uint32_t k_trigger_mode = 1;
const uint32_t k_stat_areas   = 3;
const uint32_t k_stat_align   = 128;
const size_t k_stat_name_size = 32;

size_t context_size(const module_desc &m) {
    switch (m.kind) {
        case module_kind::statistics:
            return sizeof(JsonStatContext);
        case module_kind::channelled:
            return sizeof(JsonChnContext);
        default:
            return sizeof(JsonModuleContext);
    }
}

/* How many words of the slot owner's context may be read when copying handles from it. The
 * owner is this very context (initialised again before its deinit) or the context of another
 * module of the block: the smallest context among the modules that can own the slot bounds the
 * read. Worked out afresh on every call rather than remembered per context: modules of other
 * blocks and of other pipes are created and destroyed at the same time on other threads. */
size_t owner_words(const module_desc &m, const JsonModuleHandle *handle,
                   const JsonModuleContext *owner) {
    if (owner == handle->priv) return context_size(m) / sizeof(uint32_t);
    size_t words = context_size(m);
    for (const module_desc &other : modules())
        if (other.wrapper_type == m.wrapper_type) words = std::min(words, context_size(other));
    return words / sizeof(uint32_t);
}

std::string block_message(const module_desc &m, bool by_block, const char *what) {
    return std::string("Isp ") + (by_block ? m.block : m.name) + " " + what;
}

JsonModuleContext *&slot_of(const module_desc &m, PipeContext *pipe) {
    return pipe->wrapper_slot[m.wrapper_type - 6];
}

bool handle_ok(const module_desc &m, JsonModuleHandle *handle, const char *op, int line) {
    if (handle && handle->priv && handle->pipe) return true;
    log_code(op, line, m.code_arg, "invalid params.");
    return false;
}

/* The channelled modules hold six wrapper handles; a pipe with more channels is refused. */
bool channels_ok(const module_desc &m, const PipeContext *pipe, const char *op, int line) {
    if (m.kind != module_kind::channelled || pipe->channel_count <= ISP_MAX_CHANNELS) return true;
    log_code(op, line, m.code_arg, "invalid params.");
    return false;
}

void update_enable_bit(const module_desc &m, PipeContext *pipe) {
    const bool bypass = (pipe->bypass[m.bypass_bit / 8] >> (m.bypass_bit % 8)) & 1;
    uint8_t *enable   = reinterpret_cast<uint8_t *>(&pipe->reg_shadow->module_enable);
    uint8_t &byte     = enable[m.enable_bit / 8];  // the word is little-endian
    const uint8_t bit = static_cast<uint8_t>(1u << (m.enable_bit % 8));
    /* Modules of other blocks write their bits of the same byte at the same time on other
     * threads: one atomic read-modify-write of the byte keeps every update. */
    if (bypass)
        __atomic_fetch_and(&byte, static_cast<uint8_t>(~bit), __ATOMIC_RELAXED);
    else
        __atomic_fetch_or(&byte, bit, __ATOMIC_RELAXED);
}

/* Creates wrapper, register I/O and default parameters of one channel. */
int32_t create_wrapper(const module_desc &m, const PipeContext *pipe, uint32_t *wrapper,
                       uint8_t channel) {
    const log_lines &l = *m.lines;
    VinHalWrapperAttr attr{};
    attr.type          = m.wrapper_type;
    attr.mode          = k_wrapper_mode;
    attr.register_func = isp_plat_hal_register_func;
    attr.pipe_attr     = &pipe->attr;
    if (vin_hal_wrapper_create(wrapper, &attr) != 0) {
        log_code(m.names.init, l.init_create, m.code_hw,
                 block_message(m, false, "hal wrapper create failed.").c_str());
        return m.code_hw;
    }
    VinHalRegioAttr regio;
    memset(&regio, 0, sizeof regio);
    regio.pipe_id       = pipe->pipe_id;
    regio.mode          = 1;
    regio.channel       = channel;
    regio.reg_base      = k_reg_base;
    regio.block_code[0] = m.block_code[0];
    regio.block_code[1] = m.block_code[1];
    regio.regdesc_get   = qv_regio_regdesc_get_plat;
    regio.part_num      = static_cast<uint8_t>(pipe->attr.part_h * pipe->attr.part_v);
    regio.depth[0]      = m.depth[0];
    regio.depth[1]      = m.depth[1];
    regio.flag          = 1;
    regio.param[0]      = 2;
    regio.param[1]      = 4;
    snprintf(regio.name, sizeof regio.name, "mod_%s", m.block);
    if (vin_hal_wrapper_regio_create(*wrapper, &regio) != 0) {
        log_code(m.names.init, l.init_regio, m.code_hw,
                 block_message(m, true, "hal wrapper regio create failed.").c_str());
        return m.code_hw;
    }
    const VinHalSetupCmd defaults = {0, nullptr};
    if (vin_hal_wrapper_setup(*wrapper, &defaults) != 0) {
        log_code(m.names.init, l.init_default, m.code_hw,
                 block_message(m, true, "hal setup dft param failed.").c_str());
        return m.code_hw;
    }
    return 0;
}

/* The statistics buffer, allocated only by the module that creates the block's wrapper. A
 * failure is only logged: init goes on and returns the loader's result. */
void alloc_stat_buffer(const module_desc &m, JsonModuleHandle *handle) {
    JsonStatContext *ctx = static_cast<JsonStatContext *>(handle->priv);
    char name[k_stat_name_size];
    memset(name, 0, sizeof name);
    ctx->area_size  = m.buffer->area_size;
    ctx->area_count = k_stat_areas;
    snprintf(name, sizeof name, m.buffer->name_format, handle->pipe->pipe_id, k_stat_areas);
    const uint32_t bytes = m.buffer->area_size * k_stat_areas;
    const int32_t result = qv_hal_sys_mem_alloc_cached(handle->pipe->pipe_id, &ctx->phys,
                                                       &ctx->virt, bytes, k_stat_align, name);
    if (result == 0) return;
    log_dma_failure(m.names.alloc_buf, m.lines->alloc_buf, bytes, result);
    if (ctx->phys != 0) {
        QV_SYS_MemFree(ctx->phys, ctx->virt);
        ctx->phys = 0;
        ctx->virt = nullptr;
    }
}

void free_stat_buffer(JsonStatContext *ctx) {
    if (ctx->phys != 0) QV_SYS_MemFree(ctx->phys, ctx->virt);
    ctx->phys = 0;
    ctx->virt = nullptr;
}

int32_t channel_count(const module_desc &m, const PipeContext *pipe) {
    return m.kind == module_kind::channelled ? pipe->channel_count : 1;
}

}  // namespace

frame_cursor cursor_of(const module_desc &m, void *context) {
    if (m.kind == module_kind::channelled) {
        JsonChnContext *ctx = static_cast<JsonChnContext *>(context);
        return {&ctx->frame, &ctx->last_frame};
    }
    JsonModuleContext *ctx = static_cast<JsonModuleContext *>(context);
    return {&ctx->frame, &ctx->last_frame};
}

int32_t module_create(const module_desc &m, JsonModuleHandle *handle) {
    if (handle->priv) {
        log_already_allocated(m.names.create, m.lines->create_warn, m.name);
        return 0;
    }
    handle->priv = QV_OS_MEM_Calloc(m.mem_tag, 1, context_size(m));
    if (!handle->priv) {
        log_code(m.names.create, m.lines->create_alloc, m.code_alloc,
                 block_message(m, false, "malloc failed.").c_str());
        return m.code_alloc;
    }
    return 0;
}

int32_t module_destroy(const module_desc &m, JsonModuleHandle *handle) {
    if (handle->priv) {
        QV_OS_MEM_Free(m.mem_tag, handle->priv);
        handle->priv = nullptr;
    }
    return 0;
}

int32_t module_init(const module_desc &m, JsonModuleHandle *handle) {
    const log_lines &l = *m.lines;
    if (!handle_ok(m, handle, m.names.init, l.init_invalid)) return m.code_arg;
    PipeContext *pipe = handle->pipe;
    if (!channels_ok(m, pipe, m.names.init, l.init_invalid)) return m.code_arg;
    uint32_t *wrappers       = static_cast<uint32_t *>(handle->priv);
    JsonModuleContext *&slot = slot_of(m, pipe);
    if (slot) {
        /* Reuse the wrapper of the module that created it: one handle, or one per channel for
         * the channelled modules. The words are copied as the owner's context holds them (a
         * generic owner has its frame index and flag after its one handle), never past its
         * end. */
        const uint32_t *owner = reinterpret_cast<const uint32_t *>(slot);
        const size_t owned    = owner_words(m, handle, slot);
        for (int32_t c = 0; c < channel_count(m, pipe); ++c)
            wrappers[c] = static_cast<size_t>(c) < owned ? owner[c] : 0;
        return module_load(m, handle);
    }
    const int32_t channels = channel_count(m, pipe);
    if (channels < 1) return module_load(m, handle);
    for (int32_t c = 0; c < channel_count(m, pipe); ++c) {
        const int32_t status = create_wrapper(m, pipe, &wrappers[c], static_cast<uint8_t>(c));
        if (status != 0) return status;
    }
    if (m.kind == module_kind::statistics) alloc_stat_buffer(m, handle);
    slot = static_cast<JsonModuleContext *>(handle->priv);
    return module_load(m, handle);
}

int32_t module_deinit(const module_desc &m, JsonModuleHandle *handle) {
    const log_lines &l = *m.lines;
    if (!handle_ok(m, handle, m.names.deinit, l.deinit_invalid)) return m.code_arg;
    PipeContext *pipe = handle->pipe;
    if (!channels_ok(m, pipe, m.names.deinit, l.deinit_invalid)) return m.code_arg;
    JsonModuleContext *&slot = slot_of(m, pipe);
    if (!slot) return 0;
    uint32_t *wrappers    = static_cast<uint32_t *>(handle->priv);
    const uint32_t *owner = reinterpret_cast<const uint32_t *>(slot);
    const size_t owned    = owner_words(m, handle, slot);
    for (int32_t c = 0; c < channel_count(m, pipe); ++c) {
        /* channelled modules take each channel's handle from the slot owner first */
        if (m.kind == module_kind::channelled)
            wrappers[c] = static_cast<size_t>(c) < owned ? owner[c] : 0;
        if (vin_hal_wrapper_regio_destroy(wrappers[c]) != 0) {
            log_code(m.names.deinit, l.deinit_regio, m.code_hw,
                     block_message(m, true, "hal regio destroy failed.").c_str());
            return m.code_hw;
        }
        if (vin_hal_wrapper_destroy(wrappers[c]) != 0) {
            log_code(m.names.deinit, l.deinit_destroy, m.code_hw,
                     block_message(m, true, "hal destroy failed.").c_str());
            return m.code_hw;
        }
        wrappers[c] = 0;
    }
    if (m.kind == module_kind::statistics)
        free_stat_buffer(static_cast<JsonStatContext *>(handle->priv));
    slot = nullptr;
    return 0;
}

int32_t module_trigger(const module_desc &m, JsonModuleHandle *handle) {
    if (m.trigger_noop) return 0;
    const log_lines &l      = *m.lines;
    const bool needs_enable = m.enable == enable_update::in_trigger;
    if (!handle_ok(m, handle, m.names.trigger, l.trigger_invalid)) return m.code_arg;
    PipeContext *pipe = handle->pipe;
    if (pipe->case_path[0] == '\0') {
        log_case_path_invalid(m.names.trigger, l.trigger_case);
        return -1;
    }
    if (!channels_ok(m, pipe, m.names.trigger, l.trigger_invalid)) return m.code_arg;
    if (needs_enable) update_enable_bit(m, pipe);
    const uint32_t *wrappers = static_cast<const uint32_t *>(handle->priv);
    for (int32_t c = 0; c < channel_count(m, pipe); ++c) {
        const uint32_t channel = m.kind == module_kind::channelled ? static_cast<uint32_t>(c) : 0;
        if (vin_hal_wrapper_trigger(wrappers[c], k_trigger_mode, handle->trigger_arg, channel) !=
            0) {
            log_code(m.names.trigger, l.trigger_fail, m.code_hw,
                     block_message(m, false, "hal trigger failed.").c_str());
            return m.code_hw;
        }
    }
    return 0;
}

int32_t module_sync(const module_desc &m, JsonModuleHandle *handle) {
    if (!handle_ok(m, handle, m.names.sync, m.lines->sync_invalid)) return m.code_arg;
    update_enable_bit(m, handle->pipe);
    return 0;
}

}  // namespace isp
