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
        "Exit status: 0 page written, 1 the page could not be written, 2 usage error, 3 a "
        "dump that cannot be read or a frame it does not hold.");
    cmd.add_option("DUMP", r.dump_dir, "Dump directory of 'isp-case replay --dump'")
        ->required()
        ->type_name("DIR");
    cmd.add_option("--against", r.against_dir, "Another dump to compare with, side by side")
        ->type_name("DIR")
        ->check(non_empty_path());
    cmd.add_option("-o,--out", r.out_file, "Page to write (default: report.html)")
        ->type_name("FILE")
        ->check(non_empty_path());
    cmd.add_option("--frame", r.frame, "Frame shown beside init (default: the last one)")
        ->check(CLI::Range(0, 1000000));
    return [settings] { return run_report(*settings); };
}

}  // namespace isp_case
