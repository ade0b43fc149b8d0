/* What isp-case knows about the 34 modules and their blocks, read from the library's module
 * table: file patterns, converter orders, setup commands, bypass and enable bits, and which
 * exporter reads which pushed structure. */
#ifndef ISP_CASE_MODULE_TABLE_H
#define ISP_CASE_MODULE_TABLE_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include <picojson.h>

#include "isp_framework.h"
#include "modules/tables.h"

namespace isp_case {

/* Runs one converter into a zeroed structure of the group's size. */
using convert_fn = isp::convert_fn;
/* Runs one exporter on a structure of the group's size. */
using export_fn = isp::export_fn;

/* One converter of a block and the structure it fills. Most converters fill a group that is
 * pushed with a setup command of its own; a few fill structures the module keeps, or parts of
 * another group, and have no command (cmd 0). */
struct group_info {
    const char *name; /* "ctrl", "kernel_gbl", "noise_profile" */
    uint32_t cmd;     /* setup command, 0 when never pushed on its own */
    size_t size;      /* bytes of the structure */
    convert_fn convert;
    const char *converter; /* "rtl_to_drv_wbc_user_ctrl" */
    export_fn exporter;    /* null when the group has no C-model form */
    bool per_partition;    /* the exporter reads one partition's members */
    const char *type;      /* the structure's C type name, as the member layouts know it */
    bool partition_sizes;  /* the structure points at the module's partition-size arrays */
};

using file_kind     = isp::file_kind;
using enable_update = isp::enable_update;

struct module_info {
    const char *name;  /* "cc" */
    const char *block; /* "clc" */
    const char *file;  /* under the case directory: "cfgs/f%d/rtl_<block>_p%d.json" */
    file_kind kind;
    int32_t (*register_fn)(JsonModuleOps **out);
    int bypass_bit; /* -1: none */
    int enable_bit; /* -1: none */
    enable_update enable;
    bool checks_grid;                     /* refuses an empty partition grid */
    std::vector<const char *> converters; /* group names, in the order the loader runs them */
};

/* Every module, in the order a pipeline runs them along the picture path. blc comes before
 * lin: whichever of the two is initialised first owns the block's wrapper, and only blc's
 * context holds one wrapper per channel. */
const std::vector<module_info> &modules();
const module_info *find_module(const std::string &name);

const group_info *find_group(const std::string &block, const std::string &name);
/* The group a block pushes with a setup command, null when the block has no such command. */
const group_info *find_pushed_group(const std::string &block, uint32_t cmd);
/* The groups of a block that have an exporter, in the block's order. */
std::vector<const group_info *> exported_groups(const std::string &block);
/* The blocks that have exporters, in a fixed order. */
const std::vector<std::string> &exporting_blocks();

/* The module's file for a frame, partition and channel, relative to the case directory. */
std::string relative_file(const module_info &module, int frame, int partition, int channel);

/* The largest channel count a channelled module accepts. */
constexpr int max_channels = ISP_MAX_CHANNELS;

}  // namespace isp_case

#endif
