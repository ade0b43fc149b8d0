/* Read access to the module table (modules/modules.def) for the library's generic module and
 * for the programs built beside the library: isp-case, the simulated platform, the fuzzers and
 * the benchmarks. Internal: nothing here is exported by libisp_json. */
#ifndef ISP_MODULE_TABLES_H
#define ISP_MODULE_TABLES_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include <picojson.h>

#include "isp_framework.h"

namespace isp {

/* A run of rows of one of the tables. */
template <typename T>
struct rows {
    const T *first;
    size_t count;

    const T *begin() const { return first; }
    const T *end() const { return first + count; }
    size_t size() const { return count; }
    const T &operator[](size_t i) const { return first[i]; }
};

enum class module_kind {
    generic,    /* one register file per partition and frame */
    statistics, /* generic, plus a DMA buffer whose addresses go into the pushed groups */
    channelled, /* one wrapper and one register file per partition per channel */
    pattern,    /* one pattern file per partition in the case directory, no frames */
};

/* Where a module mirrors its bypass bit into its enable bit; in_sync modules have a sync
 * operation, the others leave the sync slot empty. */
enum class enable_update { none, in_sync, in_trigger };

/* Which arguments a module's register file pattern takes after the case path. */
enum class file_kind {
    per_frame,   /* frame, partition */
    per_channel, /* frame, partition, channel */
    pattern,     /* partition; the file lies in the case directory for every frame */
};

/* Converts one partition's file into one structure; throws what the converter throws. */
using convert_fn = int (*)(picojson::object &root, void *structure, uint8_t partition);
/* Writes one structure's C-model form. */
using export_fn = int (*)(void *structure, picojson::object &out, uint8_t partition);

/* One structure of a module's frame. */
struct group_desc {
    const char *name;    /* the frame member: "init", "kernel_gbl" */
    uint32_t cmd;        /* setup command; 0 for a structure the module keeps and never pushes */
    const char *message; /* printed when the push fails; null when never pushed */
    const char *c_type;  /* "_isp_clc_user_init_t" */
    size_t size;         /* sizeof the structure */
    size_t offset;       /* in the frame */
    export_fn exporter;  /* null when the structure has no C-model form */
    bool export_per_partition; /* the exporter reads one partition's members */
    bool partition_sizes;      /* points at the partition-size arrays beside the frame */
};

/* One converter: of a module (it fills a group of the module's frame, a few only part of it),
 * or one the library exports that no module runs (no group). */
struct converter_desc {
    const char *name;   /* "rtl_to_drv_clc_user_init" */
    const char *block;  /* "clc" */
    const char *c_type; /* the structure it fills */
    size_t size;
    const group_desc *group;  /* null for a converter no module runs */
    convert_fn convert;       /* into the module's frame, as the module runs it */
    convert_fn convert_alone; /* into a structure of its own: where the structure points at
                                 partition-size arrays, the converter gets arrays for partitions
                                 0 to the partition it converts */
    export_fn exporter;       /* of the structure it fills, null when none */
    bool raises_type_error;   /* reads raw-number curves or meshes: a missing or mistyped element
                                 raises picojson's type error */
};

/* One address table of a statistics group, filled per partition from the module's buffer. */
struct stat_address {
    const group_desc *group;
    uint32_t offset; /* of the sub-area in the partition's area, in 8-byte units */
    void (*write)(void *group, uint8_t partition, uint32_t address);
};

/* The DMA buffer of a statistics module: one area per partition. */
struct stat_buffer {
    uint32_t area_size;
    const char *name_format; /* formatted with the pipe id and the area count */
    rows<stat_address> addresses;
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
    const char *create, *destroy, *init, *deinit, *trigger, *sync, *load, *alloc_buf, *reg;
};

struct module_desc {
    const char *name;         /* "cc" */
    const char *block;        /* "clc": regio name, file names, block messages */
    const char *file_pattern; /* "%s/cfgs/f%d/rtl_clc_p%d.json" */
    uint32_t wrapper_type;    /* wrapper slot = type - 6 */
    uint8_t block_code[2];
    uint32_t depth[2];
    uint32_t mem_tag;
    int32_t code_arg, code_hw, code_alloc;
    uint8_t bypass_bit, enable_bit;
    enable_update enable;
    module_kind kind;
    int32_t code_grid; /* 0: the loader does not check for an empty grid */
    bool trigger_noop;
    bool banner; /* registration logs the version banner */
    const log_lines *lines;
    size_t pipeline; /* position along the picture path */
    op_names names;
    size_t frame_size; /* the structures of every group, as one frame */
    rows<group_desc> groups;
    rows<converter_desc> converters;
    const stat_buffer *buffer; /* statistics modules only */
};

/* Every module in catalogue order. */
rows<module_desc> modules();
/* null for an unknown name */
const module_desc *find_module(const std::string &name);
/* Every module in the order a pipeline runs them along the picture path. blc comes before lin:
 * whichever of the two is initialised first owns the block's wrapper, and only blc's context
 * holds one wrapper per channel. */
const std::vector<const module_desc *> &pipeline_order();

/* The module's registration function (qv_isp_module_<mod>_json_register). */
using registration_fn = int32_t (*)(JsonModuleOps **out);
registration_fn registration_of(const module_desc &m);

/* Every block, in the order of the table's block rows. */
rows<const char *> blocks();
/* The group a block pushes with a setup command, null when no module of the block pushes it. */
const group_desc *find_pushed_group(const std::string &block, uint32_t cmd);
/* The converters of a block: those of its modules in catalogue order (each once), then the
 * ones no module runs. */
std::vector<const converter_desc *> block_converters(const std::string &block);

file_kind file_kind_of(const module_desc &m);
/* The module's register file for a frame, partition and channel, relative to the case
 * directory (the arguments a pattern does not take are ignored). */
std::string relative_file(const module_desc &m, int frame, int partition, int channel);

/* The partition sizes of the colour-correction init group live beside the frame: two arrays of
 * one 16-bit element per partition of the grid, each padded to a multiple of 8 bytes. */
size_t partition_size_bytes(size_t partitions);
void attach_partition_sizes(const group_desc &g, void *structure, void *arrays, size_t partitions);
/* The bytes of the two arrays a structure of the group points at, count elements each (zeros
 * behind a null pointer); false when the group points at none. */
bool copy_partition_sizes(const group_desc &g, const void *structure, size_t count,
                          std::vector<uint8_t> &h, std::vector<uint8_t> &v);

}  // namespace isp

#endif
