/* The export subcommand: converter, then exporter, then write_json_file, one group at a time. */
#include "tools/core/cmodel_export.h"

#include <filesystem>
#include <set>

#include <fmt/core.h>

#include "isp_json_utils.h"
#include "tools/core/case_layout.h"
#include "tools/core/converter_run.h"
#include "tools/core/file_probe.h"
#include "tools/core/module_table.h"
#include "tools/output/escape.h"
#include "tools/output/files.h"
#include "tools/core/stderr_stream.h"

namespace isp_case {
namespace {

void export_block(const export_settings &settings, const std::string &block, stderr_stream &capture,
                  export_result &result) {
    const std::string path =
        join_path(settings.case_path,
                  block_file(block, settings.frame, settings.partition, settings.channel));
    const probed_file probe = probe_file(path);
    if (probe.state != file_state::ok) {
        result.errors.push_back(path + ": " + describe(probe));
        return;
    }
    std::set<std::string> reported;
    for (const converter_info *c : exported_converters(block)) {
        const std::string target =
            fmt::format("{}/{}_{}.json", settings.out_dir, block, c->group->name);
        const uint8_t partition = uint8_t(settings.partition);
        const converter_run run = run_converters(
            {c}, probe.doc.root.get<picojson::object>(), partition, capture,
            [&](const converter_info &, void *structure) {
                std::string error;
                if (write_json_checked(target,
                                       export_structure(c->exporter, structure, c->size, partition),
                                       error))
                    result.written.push_back(target);
                else
                    result.errors.push_back(target + ": " + error);
            });
        if (run.raised_by) result.errors.push_back(path + ": " + run.raised);
        for (const std::string &line : run.messages)
            if (reported.insert(line).second) result.warnings.push_back(path + ": " + line);
    }
}

}  // namespace

std::string block_file(const std::string &block, int frame, int partition, int channel) {
    const module_info *chosen = nullptr;
    for (const module_info *m : pipeline_order()) {
        if (block != m->block) continue;
        if (!chosen || file_kind_of(*m) == file_kind::per_channel) chosen = m;
    }
    return chosen ? relative_file(*chosen, frame, partition, channel) : "";
}

export_result export_case(const export_settings &settings) {
    export_result result;
    const std::string frame_dir = "cfgs/f" + std::to_string(settings.frame);
    if (!is_directory(join_path(settings.case_path, frame_dir))) {
        result.refused  = "no frame directory " + frame_dir;
        result.no_frame = true;
        return result;
    }
    std::string problem = case_place_problem(settings.out_dir, settings.case_path);
    if (problem.empty()) problem = prepare_output_dir(settings.out_dir, existing_contents::keep);
    if (!problem.empty()) {
        result.refused = settings.out_dir + ": " + problem;
        return result;
    }
    stderr_stream capture;
    for (const std::string &block : exporting_blocks())
        export_block(settings, block, capture, result);
    return result;
}

void print_export(std::FILE *out, const export_settings &settings, const export_result &result) {
    fmt::print(out, "export of {}: frame {}, partition {}, channel {} into {}\n",
               terminal_text(settings.case_path), settings.frame, settings.partition,
               settings.channel, terminal_text(settings.out_dir));
    for (const std::string &file : result.written)
        fmt::print(out, "  wrote {}\n", terminal_text(file));
    for (const std::string &warning : result.warnings)
        fmt::print(out, "  warning: {}\n", terminal_text(warning));
    for (const std::string &error : result.errors)
        fmt::print(out, "  error: {}\n", terminal_text(error));
    fmt::print(out, "  result: {} C-model files written, {} warnings, {} errors\n",
               result.written.size(), result.warnings.size(), result.errors.size());
}

}  // namespace isp_case
