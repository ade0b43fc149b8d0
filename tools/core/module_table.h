/* What isp-case knows about the 34 modules and their blocks: the library's own module table
 * (modules/tables.h), read through its rows, with the few answers the tool asks of a row that
 * the table holds in another form. */
#ifndef ISP_CASE_MODULE_TABLE_H
#define ISP_CASE_MODULE_TABLE_H

#include <string>
#include <vector>

#include "isp_framework.h"
#include "modules/tables.h"

namespace isp_case {

/* A row of the module table: name, block, file pattern, bits, its converters in load order. */
using module_info = isp::module_desc;
/* A structure of a module's frame, as pushed with its setup command (or kept). */
using group_info = isp::group_desc;
/* A converter of a module, or one the library exports that no module runs. */
using converter_info = isp::converter_desc;
using file_kind      = isp::file_kind;
using enable_update  = isp::enable_update;

/* The modules in pipeline order (blc before lin, see isp::pipeline_order), the module of a
 * name, the file pattern's kind, the registration function, a pushed group by command and a
 * module's file for a frame, partition and channel, as the library answers them. */
using isp::file_kind_of;
using isp::find_module;
using isp::find_pushed_group;
using isp::pipeline_order;
using isp::registration_of;
using isp::relative_file;

/* The bits a module mirrors between the pipe's bypass and its enable register; -1 for a module
 * that mirrors none, whatever its row's bit columns hold. */
int bypass_bit_of(const module_info &module);
int enable_bit_of(const module_info &module);
/* The module's load refuses an empty partition grid. */
inline bool checks_grid(const module_info &module) {
    return module.code_grid != 0;
}

/* The converters of a block that some module runs and whose structure has an exporter, in the
 * block's order. */
std::vector<const converter_info *> exported_converters(const std::string &block);
/* The blocks that have exporters, in the order of the table's block rows. */
const std::vector<std::string> &exporting_blocks();

/* The largest channel count a channelled module accepts. */
constexpr int max_channels = ISP_MAX_CHANNELS;

}  // namespace isp_case

#endif
