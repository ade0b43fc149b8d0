/* isp-case report: one HTML page of a dump, or of two dumps side by side. */
#include <memory>

#include "tools/isp-case/commands.h"
#include "tools/report/report.h"

namespace isp_case {

command_runner add_report_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "report", "Write one HTML page that shows and draws what a dumped replay programmed");
    auto settings      = std::make_shared<report_settings>();
    report_settings &r = *settings;
    cmd.footer(
        "Exit status: 0 page written, 1 the page could not be written, 2 usage error or a page "
        "that would overwrite a file of a dump it reads, 3 a dump that cannot be read or a "
        "frame it does not hold.");
    cmd.add_option("DUMP", r.dump_dir, "Dump directory of 'isp-case replay --dump'")
        ->required()
        ->type_name("DIR");
    cmd.add_option("--against", r.against_dir, "Another dump to compare with, side by side")
        ->type_name("DIR")
        ->check(non_empty_path());
    add_out_option(cmd, r.out_file, "Page to write (default: report.html)", "FILE");
    cmd.add_option("--frame", r.frame,
                   "The step shown beside setup: frame N, the cycle that read cfgs/fN (0: setup "
                   "alone; default: the last frame)")
        ->type_name("N")
        ->check(CLI::Range(0, 1000000));
    cmd.add_option("--tolerance", r.tolerance,
                   "With --against: largest difference of real values that counts as equal; "
                   "codes always compare exactly (default: 0)")
        ->type_name("X")
        ->check(tolerance_check());
    return [settings] { return run_report(*settings); };
}

}  // namespace isp_case
