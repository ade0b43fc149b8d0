/* isp-case regmap: the register map of blocks, from the library's register rows. */
#include <memory>

#include <fmt/core.h>

#include "tools/isp-case/commands.h"
#include "tools/regmap/print.h"

namespace isp_case {

namespace {

struct regmap_flags {
    std::vector<std::string> blocks;
    std::string format = "text";
};

int run_regmap(const regmap_flags &flags) {
    std::vector<regmap_block> blocks;
    const std::vector<std::string> names = flags.blocks.empty() ? block_names() : flags.blocks;
    for (const std::string &name : names) {
        const isp::block_map *map = isp::find_block_map(name.c_str());
        blocks.push_back({map, block_fields(*map)});
    }
    if (flags.format == "json")
        print_regmap_json(stdout, blocks);
    else if (flags.format == "csv")
        print_regmap_csv(stdout, blocks);
    else if (flags.format == "html")
        fmt::print("{}", regmap_page(blocks));
    else
        print_regmap_text(stdout, blocks);
    return exit_ok;
}

}  // namespace

CLI::Option *add_view_format_option(CLI::App &command, std::string &format,
                                    const std::vector<std::string> &formats) {
    std::string names;
    for (const std::string &f : formats) names += (names.empty() ? "" : "|") + f;
    return command.add_option("--format", format, "How to write to standard output: " + names)
        ->type_name(names)
        ->check(name_check(formats, "format"));
}

command_runner add_regmap_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "regmap", "Show the register map of blocks: every field their register files hold");
    auto flags = std::make_shared<regmap_flags>();
    cmd.footer("Exit status: 0 the map written, 2 usage error.");
    cmd.add_option("BLOCK", flags->blocks, "Blocks to show (default: every block)")
        ->type_name("BLOCK...")
        ->check(name_check(block_names(), "block"));
    add_view_format_option(cmd, flags->format, {"text", "json", "csv", "html"});
    return [flags] { return run_regmap(*flags); };
}

}  // namespace isp_case
