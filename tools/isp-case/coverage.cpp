/* isp-case coverage: which register fields a suite holds, and how far their values move. */
#include <stdio.h>
#include <stdlib.h>

#include <memory>

#include <fmt/core.h>

#include "tools/coverage/print.h"
#include "tools/isp-case/commands.h"
#include "tools/output/escape.h"
#include "tools/output/files.h"

namespace isp_case {

namespace {

struct coverage_flags {
    std::vector<std::string> paths;
    std::string format = "text", out;
};

void print_view(std::FILE *out, const coverage_report &report, const std::string &format) {
    if (format == "json")
        print_coverage_json(out, report);
    else if (format == "csv")
        print_coverage_csv(out, report);
    else if (format == "html")
        fmt::print(out, "{}", coverage_page(report));
    else
        print_coverage_text(out, report);
}

/* The view as text, for a file: every view is printed, whatever its destination. */
std::string view_text(const coverage_report &report, const std::string &format) {
    char *buffer      = nullptr;
    size_t size       = 0;
    std::FILE *memory = open_memstream(&buffer, &size);
    if (!memory) return "";
    print_view(memory, report, format);
    std::fclose(memory);
    std::string text(buffer, size);
    free(buffer);
    return text;
}

int run_coverage(const coverage_flags &flags) {
    std::vector<case_options> cases;
    std::string error;
    if (!coverage_cases(flags.paths, cases, error)) {
        fmt::print(stderr, "isp-case coverage: {}\n", terminal_text(error));
        return exit_no_case;
    }
    coverage_tally tally;
    for (const case_options &options : cases) {
        run_settings settings;
        case_contents contents;
        if (!resolve_settings(options, settings, contents, error)) {
            fmt::print(stderr, "isp-case coverage: {}\n", terminal_text(error));
            return exit_no_case;
        }
        tally.add_case(settings);
    }
    const coverage_report report = tally.report();
    for (const unreadable_file &u : report.unreadable)
        fmt::print(stderr, "isp-case coverage: {}: {}; its fields are not counted\n",
                   terminal_text(u.path), terminal_text(u.problem));
    const int status = report.unreadable.empty() ? exit_ok : exit_failed;
    if (flags.out.empty()) {
        print_view(stdout, report, flags.format);
        return status;
    }
    if (!write_text_file(flags.out, view_text(report, flags.format), error)) {
        fmt::print(stderr, "isp-case coverage: {}: {}\n", terminal_text(flags.out),
                   terminal_text(error));
        return exit_failed;
    }
    return status;
}

}  // namespace

command_runner add_coverage_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "coverage",
        "Show which register fields a suite's files hold and how far their values move");
    auto flags = std::make_shared<coverage_flags>();
    cmd.footer(
        "Exit status: 0 the coverage written, 1 a register file not read (its fields not "
        "counted) or the output not written, 2 usage error, 3 no case found or a dump whose "
        "case is not there.");
    cmd.add_option("SUITE_OR_DUMP", flags->paths,
                   "Suites (directories holding cases), cases, or dumps (read as the case and "
                   "settings of their run)")
        ->required()
        ->type_name("DIR")
        ->check(non_empty_path());
    add_view_format_option(cmd, flags->format, {"text", "json", "csv", "html"});
    add_out_option(cmd, flags->out, "File to write (default: standard output)", "FILE");
    return [flags] { return run_coverage(*flags); };
}

}  // namespace isp_case
