/* The one way the tool runs the library's converters and exporters outside a module: the
 * lint's dry load, the export subcommand and the dump's C-model files. */
#ifndef ISP_CASE_CONVERTER_RUN_H
#define ISP_CASE_CONVERTER_RUN_H

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <string>
#include <vector>

#include <picojson.h>

#include "tools/core/module_table.h"
#include "tools/core/stderr_stream.h"

namespace isp_case {

struct converter_run {
    std::vector<std::string> messages;         /* what the converters wrote on standard error */
    const converter_info *raised_by = nullptr; /* the converter that raised, null when none */
    std::string raised;                        /* "rtl_to_drv_lsc_user_mesh raises: ..." */
};

/* Runs the converters in the order given on one copy of the root, as a load shares it, each
 * into a zeroed structure of its own size, up to the first that raises; `converted` sees every
 * structure a converter filled without raising. */
converter_run run_converters(
    const std::vector<const converter_info *> &converters, picojson::object root, uint8_t partition,
    stderr_stream &capture,
    const std::function<void(const converter_info &, void *structure)> &converted = nullptr);

/* The converters of a module, in the order its load runs them. */
std::vector<const converter_info *> load_order(const module_info &module);

/* A structure's C-model form: the bytes are copied into storage aligned for any structure
 * first, so recorded bytes can be exported as well as converted ones. */
picojson::value export_structure(isp::export_fn exporter, const void *bytes, size_t size,
                                 uint8_t partition);

}  // namespace isp_case

#endif
