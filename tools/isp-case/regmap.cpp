/* isp-case regmap: the register map of blocks, from the library's register rows. */
#include <algorithm>
#include <memory>

#include <fmt/core.h>

#include "modules/tables.h"
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
        /* a module stands for its block: cc for clc, lin for blc */
        const isp::module_desc *module = isp::find_module(name);
        const isp::block_map *map      = isp::find_block_map(module ? module->block : name.c_str());
        const bool shown               = std::any_of(blocks.begin(), blocks.end(),
                                                     [&](const regmap_block &b) { return b.map == map; });
        if (!shown) blocks.push_back({map, block_fields(*map)});
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
    std::vector<std::string> names = block_names();
    for (const isp::module_desc &m : isp::modules())
        if (std::find(names.begin(), names.end(), m.name) == names.end()) names.push_back(m.name);
    cmd.add_option("BLOCK", flags->blocks,
                   "Blocks to show, or modules for their blocks (default: every block)")
        ->type_name("NAME")
        ->check(name_check(names, "block or module"));
    add_view_format_option(cmd, flags->format, {"text", "json", "csv", "html"});
    return [flags] { return run_regmap(*flags); };
}

}  // namespace isp_case
