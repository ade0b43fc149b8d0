/* The description of a JSON module that the one generic implementation is driven by: one row
 * per module in the catalogue, with the groups it loads and pushes. */
#ifndef ISP_MODULE_H
#define ISP_MODULE_H

#include <stddef.h>
#include <stdint.h>

#include <picojson.h>

#include "isp_framework.h"
#include "isp_json_modules.h"

namespace isp {

enum class module_kind {
    generic,    /* one register file per partition and frame */
    statistics, /* generic, plus a DMA buffer whose addresses go into the pushed groups */
    channelled, /* one wrapper and one register file per partition per channel */
    pattern,    /* one pattern file per partition in the case directory, no frames */
};

enum class enable_update { none, in_sync, in_trigger };

/* Converts one partition's file into the module's frame buffer (one member of it). */
using converter_fn = int (*)(picojson::object &root, void *frame, uint8_t partition);

/* One structure group handed to the wrapper after loading. */
struct group_push {
    uint32_t cmd;
    size_t offset; /* of the group's structure in the frame buffer */
    const char *message;
};

/* What one load works on: a buffer holding one structure per group, the converters that fill
 * it for each partition, and the groups pushed afterwards. */
struct frame_layout {
    size_t size;
    const converter_fn *converters;
    size_t converter_count;
    const group_push *groups;
    size_t group_count;
    /* Bytes the module provides beside the buffer for this grid (0 when none), and the hook that
     * points the buffer at them after it is cleared. */
    size_t (*extra_size)(const PipeContext *pipe);
    void (*attach_extra)(void *frame, void *extra, const PipeContext *pipe);
    /* Statistics modules: writes partition p's buffer addresses into the frame after the first
     * converter has run. */
    void (*write_addresses)(void *frame, uint64_t phys, uint8_t partition);
};

/* Statistics buffer of a statistics module. */
struct stat_buffer {
    uint32_t area_size;
    const char *name_format; /* formatted with the pipe id and the area count */
};

/* Source lines passed with every log call, per operation. */
struct log_lines {
    int create_alloc, create_warn;
    int deinit_invalid, deinit_regio, deinit_destroy;
    int init_invalid, init_create, init_regio, init_default;
    int trigger_invalid, trigger_case, trigger_fail;
    int sync_invalid;
    int load_handle, load_pipe, load_context, load_case, load_grid;
    int push_first, push_step; /* group i is pushed at line push_first + i * push_step */
    int alloc_buf;
};

/* Exported names of one module's operations, for the log lines. */
struct op_names {
    const char *create, *destroy, *init, *deinit, *trigger, *sync, *load, *alloc_buf;
};

struct module_desc {
    const char *name;         /* "cc" */
    const char *block;        /* "clc": regio name, file names, block messages */
    const char *file_pattern; /* "%s/cfgs/f%d/rtl_clc_p%d.json" */
    module_kind kind;
    uint32_t wrapper_type; /* wrapper slot = type - 6 */
    uint8_t block_code[2];
    uint32_t depth[2];
    uint32_t mem_tag;
    int32_t code_arg, code_hw, code_alloc;
    int32_t code_grid; /* 0: the loader does not check for an empty grid */
    uint8_t bypass_bit, enable_bit;
    enable_update enable;
    bool trigger_noop;
    const frame_layout *layout;
    const stat_buffer *buffer; /* statistics modules only */
    const log_lines *lines;
    op_names names;
};

/* The catalogue row of every module, by module name: cc_module, dehaze_module, ... */
#define ISP_CATALOGUE_ROW(mod) extern const module_desc mod##_module;
ISP_JSON_MODULE_LIST(ISP_CATALOGUE_ROW, ISP_CATALOGUE_ROW)
#undef ISP_CATALOGUE_ROW

/* Frame index and last-frame flag of a module's context. */
struct frame_cursor {
    int32_t *frame;
    uint32_t *last_frame;
};
frame_cursor cursor_of(const module_desc &m, void *context);

/* Size in 32-bit words of a live module context, 0 for one that is not live. */
size_t context_words(const void *context);

/* Operations of the generic module. */
int32_t module_create(const module_desc &m, JsonModuleHandle *handle);
int32_t module_destroy(const module_desc &m, JsonModuleHandle *handle);
int32_t module_init(const module_desc &m, JsonModuleHandle *handle);
int32_t module_deinit(const module_desc &m, JsonModuleHandle *handle);
int32_t module_trigger(const module_desc &m, JsonModuleHandle *handle);
int32_t module_sync(const module_desc &m, JsonModuleHandle *handle);
/* The parameter loader: loads the current frame's files and pushes every group. */
int32_t module_load(const module_desc &m, JsonModuleHandle *handle);

}  // namespace isp

#endif
