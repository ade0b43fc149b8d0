/* isp-case diff: two runs compared member by member, each a dump or a case replayed for it. */
#include <stdlib.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>
#include <tuple>

#include <fmt/core.h>

#include "tools/compare/diff.h"
#include "tools/compare/engine.h"
#include "tools/isp-case/commands.h"
#include "tools/output/files.h"

namespace isp_case {

/* A tolerance is a finite number, zero or more: NaN would make every difference vanish. */
CLI::Validator tolerance_check() {
    return CLI::Validator(
        [](std::string &text) -> std::string {
            char *end              = nullptr;
            const double tolerance = std::strtod(text.c_str(), &end);
            if (text.empty() || *end != '\0') return text + " is not a number";
            const std::string problem = tolerance_problem(tolerance);
            return problem.empty() ? "" : text + " is " + problem;
        },
        "FLOAT >= 0, finite");
}

namespace {

namespace fs = std::filesystem;

/* A case, not a dump: register files under cfgs/ and no manifest. */
bool is_case_dir(const std::string &path) {
    std::error_code ignored;
    return !fs::exists(fs::path(path) / "manifest.json", ignored) &&
           fs::is_directory(fs::path(path) / "cfgs", ignored);
}

/* Replays a case into dump_dir as `replay --dump` would, silently; with the other side's dump,
 * in the grid, channels, frames, modules and bypass that dump was made with, so that the two
 * compare like for like. Returns false after naming on standard error what stops the replay. */
bool replay_into(const std::string &case_dir, const std::string &dump_dir, const dump *like) {
    case_options options;
    options.case_path = case_dir;
    replay_flags flags;
    if (like) {
        options.grid     = fmt::format("{}x{}", like->part_h, like->part_v);
        options.channels = like->channels;
        options.frames   = like->frames;
        options.modules  = like->modules;
        flags.bypass     = like->bypass;
    }
    flags.dump_dir  = dump_dir;
    flags.log_level = "error";
    flags.quiet     = true;
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> sink(std::fopen("/dev/null", "w"),
                                                          &std::fclose);
    if (!sink) return false;
    flags.out = sink.get();
    stage_report report;
    if (run_replay_command(options, flags, &report) != exit_no_case && report.problem.empty())
        return true;
    fmt::print(stderr, "isp-case diff: {}: cannot be replayed: {}\n", case_dir, report.problem);
    return false;
}

/* Cases replayed into temporary dumps, then the dumps compared. */
int run_diff(diff_settings settings) {
    const bool case_a = is_case_dir(settings.a), case_b = is_case_dir(settings.b);
    if (!case_a && !case_b) return diff_dumps(settings, stdout, stderr);
    scratch_dir scratch("isp-case-diff");
    if (scratch.path().empty()) {
        fmt::print(stderr, "isp-case diff: no temporary directory to replay into\n");
        return exit_no_case;
    }
    /* the side that is a dump sets how the case is replayed */
    std::unique_ptr<dump> like;
    try {
        if (case_a != case_b)
            like = std::make_unique<dump>(open_dump(case_a ? settings.b : settings.a));
    } catch (const dump_error &e) {
        fmt::print(stderr, "isp-case diff: {}\n", e.what());
        return exit_no_case;
    }
    for (auto [is_case, path, dir, name] :
         {std::make_tuple(case_a, &settings.a, &settings.dump_a, "a"),
          std::make_tuple(case_b, &settings.b, &settings.dump_b, "b")}) {
        if (!is_case) continue;
        *dir = scratch.path() + "/" + name;
        if (!replay_into(*path, *dir, like.get())) return exit_no_case;
    }
    return diff_dumps(settings, stdout, stderr);
}

}  // namespace

command_runner add_diff_command(CLI::App &app) {
    CLI::App &cmd = *app.add_subcommand(
        "diff",
        "Compare two runs member by member, each a dump or a case (replayed for the comparison): "
        "pushes one side lacks, elements that differ with their registers and files");
    auto settings = std::make_shared<diff_settings>();
    cmd.footer(
        "Exit status: 0 identical runs, 1 the runs differ, 2 usage error, 3 a dump that "
        "cannot be read, or a case that cannot be replayed.");
    cmd.add_option("A", settings->a, "Dump directory (replay --dump) or case directory")
        ->required()
        ->type_name("DIR");
    cmd.add_option("B", settings->b, "Dump or case directory to compare with")
        ->required()
        ->type_name("DIR");
    cmd.add_option("--tolerance", settings->tolerance,
                   "Largest difference of real values that counts as equal; codes always "
                   "compare exactly (default: 0)")
        ->type_name("X")
        ->check(tolerance_check());
    cmd.add_option(
           "--frame", settings->frame,
           "Compare only frame N, the cycle that read cfgs/fN (0: setup, which reads cfgs/f0)")
        ->type_name("N")
        ->check(CLI::Range(0, 1000000));
    auto views  = std::make_shared<std::array<bool, 3>>();
    auto *first = cmd.add_flag("--first", (*views)[0],
                               "The first difference only, in register terms; the runs are read "
                               "no further");
    auto *stat  = cmd.add_flag("--stat", (*views)[1], "Differences counted per module and group")
                     ->excludes(first);
    cmd.add_flag("-q,--quiet", (*views)[2], "Nothing on standard output: the exit status says it")
        ->excludes(first)
        ->excludes(stat);
    auto format = std::make_shared<std::string>("text");
    add_format_option(cmd, *format, "the differences and the summary in one JSON document");
    return [settings, format, views] {
        settings->json = *format == "json";
        settings->view = (*views)[0]   ? diff_view::first
                         : (*views)[1] ? diff_view::stat
                         : (*views)[2] ? diff_view::quiet
                                       : diff_view::all;
        return run_diff(*settings);
    };
}

}  // namespace isp_case
