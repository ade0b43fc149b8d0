/* isp-case template: a register file of a block holding every field its rows read. */
#include <memory>

#include <fmt/core.h>

#include "tools/isp-case/commands.h"
#include "tools/output/files.h"
#include "tools/regmap/regmap.h"

namespace isp_case {

namespace {

struct template_flags {
    std::string block, value = "zero", out;
};

int run_template(const template_flags &flags) {
    const template_value value = flags.value == "min"   ? template_value::min
                                 : flags.value == "max" ? template_value::max
                                                        : template_value::zero;
    const picojson::value file =
        register_template(*isp::find_block_map(flags.block.c_str()), value);
    if (flags.out.empty()) {
        fmt::print("{}\n", file.serialize(true));
        return exit_ok;
    }
    std::string error;
    if (!write_json_checked(flags.out, file, error)) {
        fmt::print(stderr, "isp-case template: {}\n", error);
        return exit_failed;
    }
    return exit_ok;
}

}  // namespace

command_runner add_template_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "template", "Write a register file of a block with every register and field it reads");
    auto flags = std::make_shared<template_flags>();
    cmd.footer("Exit status: 0 the file written, 1 the file not written, 2 usage error.");
    cmd.add_option("BLOCK", flags->block, "Block (the register files' rtl_<block>_p<N>.json)")
        ->required()
        ->check(name_check(block_names(), "block"));
    cmd.add_option("--value", flags->value,
                   "Every field set to zero (default), or to the min or max of its range")
        ->type_name("zero|min|max")
        ->check(name_check({"zero", "min", "max"}, "value"));
    add_out_option(cmd, flags->out, "File to write (default: standard output)", "FILE");
    return [flags] { return run_template(*flags); };
}

}  // namespace isp_case
