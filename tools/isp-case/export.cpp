/* isp-case export: one partition's register files as C-model parameter files. */
#include <memory>

#include <fmt/core.h>

#include "tools/core/cmodel_export.h"
#include "tools/core/file_probe.h"
#include "tools/isp-case/commands.h"

namespace isp_case {

namespace {

int run_export(const export_settings &settings) {
    if (!is_directory(settings.case_path)) {
        fmt::print(stderr, "isp-case export: {}: no such case directory\n", settings.case_path);
        return exit_no_case;
    }
    const export_result result = export_case(settings);
    if (!result.refused.empty()) {
        fmt::print(stderr, "isp-case export: {}\n", result.refused);
        return result.no_frame ? exit_no_case : exit_failed;
    }
    print_export(stdout, settings, result);
    return result.errors.empty() ? exit_ok : exit_failed;
}

}  // namespace

command_runner add_export_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "export", "Convert one partition's register files into C-model parameter files");
    auto settings      = std::make_shared<export_settings>();
    export_settings &e = *settings;
    e.out_dir          = "cmodel";
    cmd.footer(exit_statuses_help);
    cmd.add_option("CASE", e.case_path, "Case directory")->required()->type_name("DIR");
    cmd.add_option("--frame", e.frame, "Frame directory f<F>")
        ->required()
        ->check(CLI::Range(0, 1000000));
    cmd.add_option("--partition", e.partition, "Partition index")
        ->required()
        ->check(CLI::Range(0, 255));
    cmd.add_option("--channel", e.channel, "Channel of the channelled blocks' files (default: 0)")
        ->check(CLI::Range(0, 255));
    cmd.add_option("--out", e.out_dir, "Output directory (default: cmodel)")
        ->type_name("DIR")
        ->check(non_empty_path());
    return [settings] { return run_export(*settings); };
}

}  // namespace isp_case
