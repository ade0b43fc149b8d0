/* isp-case where: from a register path to the driver element it fills, and back. */
#include <memory>

#include <fmt/core.h>

#include "tools/isp-case/commands.h"
#include "tools/regmap/print.h"

namespace isp_case {

namespace {

struct where_flags {
    std::string query, format = "text";
};

int run_where(const where_flags &flags) {
    const std::vector<regmap_field> all = all_fields();
    std::string problem;
    const std::vector<where_answer> answers = where(all, flags.query, problem);
    if (answers.empty()) {
        fmt::print(stderr, "isp-case where: {}\n", problem);
        return exit_failed;
    }
    if (flags.format == "json")
        print_where_json(stdout, answers);
    else
        for (const where_answer &a : answers) print_where_text(stdout, a);
    return exit_ok;
}

}  // namespace

command_runner add_where_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "where",
        "Find the driver element a register path fills, or the register path of an "
        "element");
    auto flags = std::make_shared<where_flags>();
    cmd.footer("Exit status: 0 found, 1 no register row reads or fills it, 2 usage error.");
    cmd.add_option("QUERY", flags->query,
                   "A register path (isp_clc.matrix_list[1].matrix_list0.val1) or a driver "
                   "element module.group.member[index] (wbc.ctrl.wb_gain[3], "
                   "cc.clc.matrix_list[0][7])")
        ->required();
    add_format_option(cmd, flags->format, "the fields found, as regmap --format json writes them");
    return [flags] { return run_where(*flags); };
}

}  // namespace isp_case
