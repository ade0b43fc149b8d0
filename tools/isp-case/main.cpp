/* isp-case: the replay, check and export of register-file cases on a workstation, with the
 * library and the simulated platform, the comparison of two dumps, and batches of cases for CI.
 * Each subcommand lives in a file of its own beside this one. */
#include <cstdio>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "tools/isp-case/commands.h"
#include "tools/output/files.h"

using namespace isp_case;

int main(int argc, char **argv) {
    reserve_standard_streams();
    CLI::App app(
        "Replays, checks and exports the register-file cases of the ISP JSON modules with the "
        "library and a simulated platform.",
        "isp-case");
    app.footer(exit_statuses_help);
    app.set_version_flag("--version", "isp-case " ISP_JSON_VERSION);
    app.require_subcommand(1, 1);
    const std::vector<command_runner> runners = {
        add_replay_command(app), add_check_command(app), add_export_command(app),
        add_diff_command(app),   add_batch_command(app), add_report_command(app),
        add_regmap_command(app), add_where_command(app), add_template_command(app),
        add_merge_command(app),
    };
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        return app.exit(e) == 0 ? exit_ok : exit_usage;
    }
    /* every subcommand, in the order they were added, whether parsed or not */
    const std::vector<CLI::App *> commands = app.get_subcommands([](CLI::App *) { return true; });
    for (size_t i = 0; i < runners.size(); ++i) {
        if (!commands[i]->parsed()) continue;
        /* a failed write to standard output is one line and status 1, never an abort */
        std::string failure;
        int status = exit_failed;
        try {
            status = runners[i]();
        } catch (const std::system_error &e) {
            if (!std::ferror(stdout)) throw; /* not a write of standard output */
            failure = e.code().message();
        }
        if (failure.empty()) failure = finish_standard_output();
        if (failure.empty()) return status;
        fmt::print(stderr, "isp-case {}: cannot write the standard output: {}\n",
                   commands[i]->get_name(), failure);
        return exit_failed;
    }
    return exit_usage;
}
