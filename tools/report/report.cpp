/* isp-case report. */
#include "tools/report/report.h"

#include <fstream>

#include <fmt/core.h>

#include "tools/report/page.h"
#include "tools/core/settings.h"

namespace isp_case {

int run_report(const report_settings &settings) {
    report::dump_view a, b;
    std::string error;
    if (!report::load_dump(settings.dump_dir, a, error) ||
        (!settings.against_dir.empty() && !report::load_dump(settings.against_dir, b, error))) {
        fmt::print(stderr, "isp-case report: {}\n", error);
        return exit_no_case;
    }
    const std::vector<std::string> steps = report::shown_steps(a, settings.frame, error);
    if (steps.empty()) {
        fmt::print(stderr, "isp-case report: {}: {}\n", settings.dump_dir,
                   error.empty() ? "no step in the dump" : error);
        return exit_no_case;
    }
    const std::string page =
        report::render_page(a, settings.against_dir.empty() ? nullptr : &b, steps);
    std::ofstream out(settings.out_file, std::ios::binary);
    out << page;
    out.close();
    if (!out) {
        fmt::print(stderr, "isp-case report: {}: cannot be written\n", settings.out_file);
        return exit_failed;
    }
    fmt::print("report of {}{} written to {} ({} bytes)\n", settings.dump_dir,
               settings.against_dir.empty() ? "" : " against " + settings.against_dir,
               settings.out_file, page.size());
    return exit_ok;
}

}  // namespace isp_case
