/* isp-case on the sample case and on broken copies of it: exit statuses, the reports, the C-model
 * files of export and the dump of a replay against what the simulated wrapper recorded. */

#include <sys/wait.h>

#include <cstring>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "isp_json.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"
#include "tools/case_layout.h"
#include "tools/dump.h"
#include "tools/file_probe.h"
#include "tools/module_table.h"
#include "tools/replay.h"
#include "tools/replay_report.h"
#include "tools/settings.h"
#include "tools/text_table.h"

namespace {

namespace fs = std::filesystem;
using isp_test::read_file;
using isp_test::split_lines;
using isp_test::temp_dir;

struct tool_run {
    int status = -1; /* exit status; -1 when the tool did not exit normally */
    std::string out, err;
};

/* Runs isp-case with its output in files of dir. */
tool_run run_tool(const temp_dir &dir, const std::string &args) {
    const std::string out = dir.path() + "/tool.out", err = dir.path() + "/tool.err";
    const int raw = std::system(
        (ISP_CASE_EMULATOR " '" ISP_CASE_TOOL "' " + args + " >'" + out + "' 2>'" + err + "'")
            .c_str());
    tool_run run;
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.out    = read_file(out);
    run.err    = read_file(err);
    return run;
}

/* A copy of the sample case in dir, to break. */
std::string copy_sample(const temp_dir &dir) {
    const std::string target = dir.path() + "/case";
    fs::copy(ISP_SAMPLE_CASE_DIR, target, fs::copy_options::recursive);
    return target;
}

/* Rewrites a register file after removing one register or entry of its block. */
void remove_register(const std::string &path, const std::string &top, const std::string &reg) {
    picojson::object root = isp_test::parse_object(read_file(path));
    root[top].get<picojson::object>().erase(reg);
    std::ofstream(path) << picojson::value(root).serialize();
}

bool contains_line(const std::string &text, const std::string &line) {
    for (const std::string &l : split_lines(text))
        if (l == line) return true;
    return false;
}

size_t count_lines_starting(const std::string &text, const std::string &start) {
    size_t n = 0;
    for (const std::string &l : split_lines(text)) n += l.rfind(start, 0) == 0;
    return n;
}

/* The bytes a frame of the sample case pushes: the colour-correction init group holds two
 * pointers, so its size depends on the target. */
std::string frame_bytes(size_t without_cc_init) {
    const size_t bytes = without_cc_init + sizeof(_isp_clc_user_init_t);
    return bytes < 1000 ? std::to_string(bytes)
                        : isp_test::format("%zu,%03zu", bytes / 1000, bytes % 1000);
}

TEST(IspCaseReplay, SampleCaseSucceedsForEveryModuleOnBothFrames) {
    temp_dir dir;
    const tool_run run = run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR);
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.err, "");
    const std::vector<std::string> lines = split_lines(run.out);
    EXPECT_EQ(lines[0],
              "replay of " ISP_SAMPLE_CASE_DIR ": grid 2x2, 2 channels, 2 frames, 34 modules");
    EXPECT_TRUE(contains_line(run.out, "setup: register, create, init"));
    EXPECT_TRUE(contains_line(run.out, "frame 0: process, trigger, sync"));
    // the first frame as a table, every later one as a line
    EXPECT_TRUE(contains_line(
        run.out, "frame 1: 34 modules ok, 155 groups, " + frame_bytes(28534) + " bytes"));
    EXPECT_TRUE(contains_line(run.out, "  all 34 modules ok"));
    EXPECT_TRUE(contains_line(run.out, "  operations  366 run, 0 failed"));
    EXPECT_TRUE(contains_line(run.out, "  platform    no leaks, no misuse"));
    EXPECT_TRUE(contains_line(
        run.out, "  result      ok: 34 modules, every operation returned 0 on 2 frames"));
    // init reads f0, both processes f1; the channelled modules step frames per channel
    EXPECT_TRUE(contains_line(
        run.out, "  wbc           ok      ok    f0     ctrl#1 16B, setup#2 8B, init#3 1B"));
    EXPECT_TRUE(contains_line(run.out,
                              "  wbc           ok       ok       ok    f1    b5=1    "
                              "ctrl#1 16B, setup#2 8B, init#3 1B"));
    EXPECT_TRUE(contains_line(run.out,
                              "  bl_det        ok      ok    f0,f1  c0: setup#1 4B, "
                              "init#3 4B"));
    EXPECT_TRUE(contains_line(run.out,
                              "  ifa           ok       no-op    ok    f1    b27=1   "
                              "setup#1 4B, crop#2 4B"));
    EXPECT_TRUE(contains_line(run.out,
                              "  ainr          ok       ok       -     ptn   -       "
                              "post#5 4B"));
    EXPECT_EQ(count_lines_starting(run.out, "  cc            ok"), 2u);
}

TEST(IspCaseReplay, BypassClearsTheEnableBitAndDebugShowsTheBanner) {
    temp_dir dir;
    const tool_run run = run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR
                                       " --modules gamma,ae_stat --bypass gamma --frames 1"
                                       " --log-level debug");
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_TRUE(contains_line(run.out,
                              "  gamma    ok       ok       ok    f1    b14=0   "
                              "setup#1 12B, dither#2 6B, lut#3 258B"));
    EXPECT_TRUE(contains_line(run.out,
                              "  ae_stat  ok       ok       -     f1    b8=1    "
                              "init#1 3076B, aes_adj#2 4B, aes_calc#3 4B"));
    EXPECT_TRUE(contains_line(
        run.out, "  result      ok: 2 modules, every operation returned 0 on 1 frame"));
    EXPECT_NE(run.out.find("[SDK version]: "), std::string::npos);
}

/* A raising module fails every step it raises in; the frames after the first show one line and
 * the rows of what failed, and the JSON lines say the same. */
TEST(IspCaseReplay, ConverterFailuresFailTheReplayWithoutAborting) {
    temp_dir dir;
    const std::string case_dir = copy_sample(dir);
    std::ofstream(case_dir + "/cfgs/f0/rtl_csc_p0.json") << "[1, 2]\n";
    remove_register(case_dir + "/cfgs/f0/rtl_clc_p2.json", "isp_clc", "offset");
    const std::string args = "replay " + case_dir + " --modules csc,cc --frames 3";
    const tool_run run     = run_tool(dir, args);
    ASSERT_EQ(run.status, 1) << run.out << run.err;
    const std::string raised                = "raised: " + isp_test::type_error("object");
    const std::vector<std::string> expected = {
        "  module  create  init    read  pushed (group#cmd size)",
        "  csc     ok      raised  f0",
        "      init " + raised,
        // the init group holds two pointers: its size depends on the target
        "  cc      ok      ok      f0    init#3 " + std::to_string(sizeof(_isp_clc_user_init_t)) +
            "B, clc_setup#1 16B, clc#2 292B",
        "      stderr: read json_obj failed: offset.val0",
        "      stderr: read json_obj failed: offset.val1",
    };
    const std::vector<std::string> lines = split_lines(run.out);
    ASSERT_GE(lines.size(), 9u);
    EXPECT_EQ(std::vector<std::string>(lines.begin() + 3, lines.begin() + 9), expected);
    const std::vector<std::string> frame_2 = {
        "frame 2: 1 module ok, 1 failed, 3 groups, " + frame_bytes(308) + " bytes",
        "  module  process  trigger  sync  read  enable  pushed (group#cmd size)",
        "  csc     raised   ok       ok    f0    b16=1",
        "      process " + raised,
        "",
        "teardown: deinit, destroy",
    };
    auto at = std::find(lines.begin(), lines.end(), frame_2.front());
    ASSERT_LE(at + long(frame_2.size()), lines.end()) << run.out;
    EXPECT_EQ(std::vector<std::string>(at, at + long(frame_2.size())), frame_2);
    EXPECT_TRUE(contains_line(run.out,
                              "  error       cc init (setup): read json_obj failed: "
                              "offset.val1"));
    EXPECT_TRUE(contains_line(run.out, "  error       csc process (frame 2): " + raised));
    EXPECT_TRUE(contains_line(run.out, "  result      FAILED: 6 errors, 0 warnings"));

    const tool_run json = run_tool(dir, args + " --format json -v");
    EXPECT_EQ(json.status, 1);
    std::vector<std::string> types;
    picojson::object frame, summary;
    for (const std::string &line : split_lines(json.out)) {
        const picojson::object o = isp_test::parse_object(line);
        types.push_back(o.at("type").to_str() +
                        (o.count("step") ? " " + o.at("step").to_str() : ""));
        if (types.back() == "step frame 2") frame = o;
        if (types.back() == "summary") summary = o;
    }
    EXPECT_EQ(types,
              (std::vector<std::string>{"start", "step setup", "step frame 0", "step frame 1",
                                        "step frame 2", "step teardown", "summary"}));
    // -v adds the table's rows to each step
    ASSERT_EQ(frame.count("rows"), 1u);
    EXPECT_EQ(frame.at("rows").get<picojson::array>().front().serialize(),
              R"j({"details":["process raised: \"type mismatch! call is<type>() before )j"
              R"j(get<type>()\" && is<object>()"],"enable":1,"module":"csc",)j"
              R"j("operations":{"process":"raised","sync":"ok","trigger":"ok"},"pushed":[],)j"
              R"j("read":"f0"})j");
    frame.erase("rows");
    EXPECT_EQ(isp_test::serialized(frame),
              R"j({"bytes":)j" + std::to_string(308 + sizeof(_isp_clc_user_init_t)) +
                  R"j(,"failed":1,"failed_operations":1,"findings":[{"severity":"error",)j"
                  R"j("step":"frame 2","text":"raised: \"type mismatch! call is<type>() before )j"
                  R"j(get<type>()\" && is<object>()","where":"csc process"}],"groups":3,)j"
                  R"j("log_lines":0,"modules":2,"ok":1,"operations":6,"stderr_lines":0,)j"
                  R"j("step":"frame 2","type":"step","warned":0})j");
    EXPECT_EQ(summary.at("errors").get<double>(), 6);
    EXPECT_EQ(summary.at("findings").get<picojson::array>().size(), 6u);
    EXPECT_EQ(summary.at("result").to_str(), "failed");
    EXPECT_EQ(summary.at("exit_status").get<double>(), 1);
}

/* What an operation's outcome counts as, and what --strict makes of a warning. */
TEST(IspCaseReplay, FindingsHaveASeverityAndStrictFailsOnWarnings) {
    isp_case::op_outcome raised, returned, converted, warned, quiet;
    raised.kind = returned.kind = converted.kind = isp_case::op_kind::process;
    warned.kind = quiet.kind = isp_case::op_kind::sync;
    raised.ran = returned.ran = converted.ran = warned.ran = quiet.ran = true;
    raised.exception                                                   = "bad";
    returned.status                                                    = int32_t(0x80011980);
    returned.log       = {{3, "ISP", 1, "[E] its own report\n"}};
    converted.messages = {"read json_obj failed: d_gain.val"};
    warned.log         = {{4, "ISP", 1, "[W] context already calloc!\n"}};
    quiet.log          = {{7, "ISP", 1, "[D] banner\n"}};
    isp_case::replay_step step{"frame 3", {}};
    for (const isp_case::op_outcome &op : {raised, returned, converted, warned, quiet})
        step.modules.push_back({isp_case::find_module("wbc"), {op}, -1});

    std::vector<std::string> found;
    for (const std::vector<isp_case::finding> &module : isp_case::findings_of(step))
        for (const isp_case::finding &f : module)
            found.push_back(std::string(isp_case::severity_name(f.level)) + " " + f.step + " " +
                            f.where + ": " + f.text);
    EXPECT_EQ(found, (std::vector<std::string>{
                         "error frame 3 wbc process: raised: bad",
                         "error frame 3 wbc process: returned 0x80011980",
                         "error frame 3 wbc process: read json_obj failed: d_gain.val",
                         "warning frame 3 wbc sync: [W] context already calloc!",
                     }));

    isp_case::replay_settings settings;
    isp_case::replay_step only_warned{"frame 0", {{isp_case::find_module("wbc"), {warned}, -1}}};
    for (bool strict : {false, true}) {
        isp_case::replay_output output;
        output.detail = isp_case::verbosity::quiet;
        output.strict = strict;
        temp_dir dir;
        std::FILE *out = std::fopen((dir.path() + "/out").c_str(), "w");
        isp_case::replay_printer printer(out, settings, output);
        printer.step(only_warned);
        printer.finish({});
        std::fclose(out);
        EXPECT_EQ(printer.passed(), !strict);
        EXPECT_EQ(split_lines(read_file(dir.path() + "/out")).back(),
                  strict ? "  result      FAILED: 0 errors, 1 warning (--strict)"
                         : "  result      ok: 0 modules, every operation returned 0 on 1 frame "
                           "(1 warning)");
    }
}

/* A long replay holds one operation's platform records at a time, however many frames it runs,
 * while every call is counted. */
TEST(IspCaseReplay, LongReplayHoldsNoMoreThanAShortOne) {
    isp_case::replay_settings settings;
    settings.run.case_path = ISP_SAMPLE_CASE_DIR;
    settings.run.part_h = settings.run.part_v = 2;
    settings.run.channels                     = 2;
    for (const isp_case::module_info &m : isp_case::modules()) settings.run.modules.push_back(&m);
    auto run = [&](int frames) {
        settings.run.frames = frames;
        size_t steps        = 0;
        isp_case::replay(settings, [&](const isp_case::replay_step &) { ++steps; });
        EXPECT_EQ(steps, size_t(frames) + 2);
        return isp_sim::counters();
    };
    const isp_sim::record_counters short_run = run(2), long_run = run(40);
    EXPECT_EQ(long_run.held_calls, 0u);
    EXPECT_EQ(long_run.held_log_lines, 0u);
    EXPECT_GT(short_run.peak_held_bytes, 0u);
    EXPECT_EQ(long_run.peak_held_bytes, short_run.peak_held_bytes);
    // a frame: 155 pushes and 35 wrapper triggers (none by ifa and eis_post, one per channel by
    // the three channelled modules)
    EXPECT_EQ(long_run.calls - short_run.calls, 38u * (155 + 35));
}

TEST(IspCaseReplay, FilesThatWouldStopTheLibraryAreNamedBeforeAnythingRuns) {
    temp_dir dir;
    const std::string case_dir = copy_sample(dir);
    fs::remove(case_dir + "/cfgs/f1/rtl_wbc_p2.json");
    std::ofstream(case_dir + "/cfgs/f0/rtl_gamma_p1.json") << "{\"isp_gamma\": \n";
    const tool_run run = run_tool(dir, "replay " + case_dir);
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    const std::vector<std::string> expected = {
        "isp-case replay: 2 file(s) of " + case_dir + " would stop the library:",
        "  " + case_dir + "/cfgs/f1/rtl_wbc_p2.json: missing file",
        "  " + case_dir +
            "/cfgs/f0/rtl_gamma_p1.json: JSON does not parse: syntax error at "
            "line 2 near: ",
        "run 'isp-case check " + case_dir + "' for every problem of the case",
    };
    EXPECT_EQ(split_lines(run.err), expected);
}

TEST(IspCaseCheck, SampleCaseIsClean) {
    temp_dir dir;
    const tool_run run = run_tool(dir, "check " ISP_SAMPLE_CASE_DIR);
    EXPECT_EQ(run.status, 0) << run.out;
    EXPECT_TRUE(contains_line(run.out, "summary (224 files read)"));
    EXPECT_TRUE(contains_line(run.out, "  result: clean"));
}

TEST(IspCaseCheck, FindsEveryPlantedProblemAndExitsNonZero) {
    temp_dir dir;
    const std::string c = copy_sample(dir);
    fs::remove(c + "/cfgs/f1/rtl_wbc_p2.json");
    fs::create_directory(c + "/cfgs/f3");
    fs::remove(c + "/cfgs/f0/rtl_hdr_p0.json");
    fs::create_directory(c + "/cfgs/f0/rtl_hdr_p0.json");
    std::ofstream(c + "/cfgs/f0/rtl_gamma_p1.json")
        << "{\n  \"isp_gamma\": {\n    \"gamma\": {\"mode\": 0,}\n  }\n}\n";
    std::ofstream(c + "/cfgs/f0/rtl_csc_p0.json") << "[1, 2]\n";
    std::ofstream(c + "/cfgs/f0/rtl_wbc_p3.json")
        << "{\"isp_wbc\":\n {\"d_gain\": {\"val\": 1e999}}}\n";
    remove_register(c + "/cfgs/f0/rtl_dem_p1.json", "isp_dem", "fc_cor1");
    remove_register(c + "/cfgs/f1/rtl_lsc_p0.json", "isp_lsc", "gb_mesh");

    const tool_run run = run_tool(dir, "check " + c);
    ASSERT_EQ(run.status, 1) << run.out << run.err;
    const std::string type_error = "\"type mismatch! call is<type>() before get<type>()\" && ";
    const std::vector<std::pair<std::string, std::string>> expected = {
        {c + "/cfgs/f2", "  missing frame directory: the frames after it are never read (cfgs/f3)"},
        {c + "/cfgs/f0/rtl_hdr_p0.json", "  cannot read the file: a directory (read by hdr)"},
        {c + "/cfgs/f1/rtl_lsc_p0.json",
         "  rtl_to_drv_lsc_user_mesh (lsc) raises: " + type_error + "is<array>()"},
        {c + "/cfgs/f0/rtl_wbc_p3.json",
         "  number out of range (picojson raises overflow_error): line 2: 1e999 (read by wbc)"},
        {c + "/cfgs/f1/rtl_wbc_p2.json", "  missing file (read by wbc)"},
        {c + "/cfgs/f0/rtl_dem_p1.json", "  read json_obj failed: fc_cor1.limit (fcc)"},
        {c + "/cfgs/f0/rtl_gamma_p1.json",
         "  JSON does not parse: syntax error at line 3 near: } (read by gamma)"},
        {c + "/cfgs/f0/rtl_csc_p0.json",
         "  root is not an object: the root is an array (read by csc)"},
    };
    const std::vector<std::string> lines = split_lines(run.out);
    for (const auto &[file, problem] : expected) {
        auto at = std::find(lines.begin(), lines.end(), file);
        ASSERT_NE(at, lines.end()) << file << "\n" << run.out;
        ASSERT_NE(at + 1, lines.end());
        EXPECT_EQ(*(at + 1), problem);
    }
    const std::vector<std::string> summary = {
        "  problem                  files  count", "  missing frame directory  1      1",
        "  missing file             1      1",     "  unreadable file          1      1",
        "  JSON does not parse      1      1",     "  number out of range      1      1",
        "  root is not an object    1      1",     "  field not read           1      4",
        "  converter raises         1      1",     "  channel count rejected   0      0",
        "  empty grid rejected      0      0",     "  result: 11 problems",
    };
    ASSERT_GE(lines.size(), summary.size());
    EXPECT_EQ(std::vector<std::string>(lines.end() - long(summary.size()), lines.end()), summary);
}

TEST(IspCaseCheck, RejectedChannelCountAndEmptyGrid) {
    temp_dir dir;
    const tool_run run = run_tool(dir, "check " ISP_SAMPLE_CASE_DIR " --channels 7 --grid 0x2");
    EXPECT_EQ(run.status, 1);
    const std::vector<std::string> expected = {
        "check of " ISP_SAMPLE_CASE_DIR ": grid 0x2, 7 channels, 2 frames, 34 modules",
        "",
        "settings",
        "  channel count 7: bl_det, blc, dpc accept 0 to 6 channels",
        "  grid 0x2 is empty: dpc, cc, dehaze report \"partition err!!!.\"",
        "",
        "summary (0 files read)",
    };
    const std::vector<std::string> lines = split_lines(run.out);
    ASSERT_GE(lines.size(), expected.size());
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + long(expected.size())),
              expected);
}

TEST(IspCaseExport, WritesCModelFilesThatReadBack) {
    temp_dir dir;
    const std::string out = dir.path() + "/cmodel";
    const tool_run run    = run_tool(
           dir, "export " ISP_SAMPLE_CASE_DIR " --frame 1 --partition 1 --channel 1 --out " + out);
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(count_lines_starting(run.out, "  wrote "), 35u);
    EXPECT_TRUE(contains_line(run.out, "  result: 35 C-model files written, 0 warnings, 0 errors"));

    const picojson::value wbc = read_json_file(out + "/wbc_ctrl.json");
    EXPECT_EQ(wbc.serialize(), R"({"clip_level":1023,"d_gain":1,"wb_gain":[1,1,1,1]})");
    const picojson::value coord = read_json_file(out + "/lsc_coord.json");
    EXPECT_EQ(coord.get("locat").serialize(), "[0,960]");
    EXPECT_EQ(coord.get("mesh_start").serialize(), "[0,8]");
    const picojson::value csc = read_json_file(out + "/csc_core.json");
    EXPECT_EQ(csc.get("matrix").serialize(),
              "[0.212890625,0.71484375,0.072265625,-0.1142578125,-0.3857421875,0.5,0.5,"
              "-0.4541015625,-0.0458984375]");
    const picojson::value gamma = read_json_file(out + "/gamma_lut.json");
    const picojson::array &lut  = gamma.get("lut").get<picojson::array>();
    ASSERT_EQ(lut.size(), 129u);
    EXPECT_EQ(lut.front().get<double>(), 0.0);
    EXPECT_EQ(lut.back().get<double>(), 255.0);
    for (const std::string name :
         {"blc_lin", "dpc_top_control", "dem_setup", "clc_clc", "hdrc_setup", "hidrc_setup"})
        EXPECT_TRUE(read_json_file(out + "/" + name + ".json").is<picojson::object>()) << name;
}

TEST(IspCaseExport, MissingRegisterFilesAreNamedAndFail) {
    temp_dir dir;
    const tool_run run = run_tool(
        dir, "export " ISP_SAMPLE_CASE_DIR " --frame 0 --partition 9 --out " + dir.path() + "/out");
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(contains_line(
        run.out, "  error: " ISP_SAMPLE_CASE_DIR "/cfgs/f0/rtl_wbc_p9.json: missing file"));
    EXPECT_TRUE(contains_line(
        run.out, "  error: " ISP_SAMPLE_CASE_DIR "/cfgs/f0/rtl_dpc_p9_chn0.json: missing file"));
    EXPECT_TRUE(contains_line(run.out, "  result: 0 C-model files written, 0 warnings, 10 errors"));
}

TEST(IspCaseCommandLine, HelpUsageErrorsAndMissingCase) {
    temp_dir dir;
    for (const char *command : {"replay", "check", "export", "batch"}) {
        const tool_run help = run_tool(dir, std::string(command) + " --help");
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_NE(help.out.find("Exit status: 0 success"), std::string::npos) << command;
    }
    EXPECT_EQ(run_tool(dir, "").status, 2);
    EXPECT_EQ(run_tool(dir, "batch " ISP_SAMPLE_CASE_DIR " --shard 3/2").status, 2);
    EXPECT_EQ(run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR " -q -v").status, 2);
    const tool_run no_case = run_tool(dir, "batch " + dir.path());
    EXPECT_EQ(no_case.status, 3);
    EXPECT_EQ(no_case.err,
              "isp-case batch: no case (a directory holding cfgs/) under " + dir.path() + "\n");
    EXPECT_EQ(run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR " --grid 2by2").status, 2);
    EXPECT_EQ(run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR " --log-level loud").status, 2);
    const tool_run unknown = run_tool(dir, "check " ISP_SAMPLE_CASE_DIR " --modules cc,nosuch");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_NE(unknown.err.find("nosuch"), std::string::npos);
    EXPECT_EQ(run_tool(dir, "export " ISP_SAMPLE_CASE_DIR " --partition 0").status, 2);

    const tool_run missing = run_tool(dir, "replay " + dir.path() + "/nowhere");
    EXPECT_EQ(missing.status, 3);
    EXPECT_EQ(missing.err, "isp-case replay: " + dir.path() + "/nowhere: no such case directory\n");
}

/* The unescaped value of every attr="..." of the elements named tag, in document order. */
std::vector<std::string> xml_attributes(const std::string &xml, const std::string &tag,
                                        const std::string &attr) {
    const std::regex element("<" + tag + "\\b[^>]*?\\b" + attr + "=\"([^\"]*)\"");
    const std::vector<std::pair<std::string, std::string>> entities = {
        {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
    std::vector<std::string> values;
    for (std::sregex_iterator it(xml.begin(), xml.end(), element), end; it != end; ++it) {
        std::string value = (*it)[1];
        for (const auto &[entity, text] : entities)
            for (size_t at; (at = value.find(entity)) != std::string::npos;)
                value.replace(at, entity.size(), text);
        values.push_back(value);
    }
    return values;
}

/* Copies of the sample case: one clean, one with a register file that does not parse, one whose
 * register-file paths are longer than the 254 characters the library keeps of them, so that it
 * reads a cut path and ends the process. Two at a time, each fails alone. */
TEST(IspCaseBatch, BrokenAndAbortingCasesFailAloneAndTheJUnitNamesThem) {
    temp_dir dir;
    const std::string suite = dir.path() + "/suite";
    const size_t pad        = 236 - suite.size() - std::strlen("//aborts");
    if (suite.size() > 200) GTEST_SKIP() << "temporary directory too long: " << dir.path();
    const std::string aborts = std::string(pad, 'p') + "/aborts";
    for (const std::string name : {"good", "broken", aborts.c_str()}) {
        fs::create_directories(fs::path(suite + "/" + name).parent_path());
        fs::copy(ISP_SAMPLE_CASE_DIR, suite + "/" + name, fs::copy_options::recursive);
    }
    std::ofstream(suite + "/broken/cfgs/f0/rtl_gamma_p1.json") << "{\"isp_gamma\": \n";

    const std::string junit = dir.path() + "/junit.xml";
    const tool_run run      = run_tool(dir, "batch " + suite + " -j 2 --frames 1 --junit " + junit);
    ASSERT_EQ(run.status, 1) << run.out << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(count_lines_starting(run.out, "ok      good "), 1u);
    EXPECT_EQ(count_lines_starting(run.out, "FAILED  "), 2u);
    const std::string broken_reason =
        "check: 1 problem; replay: 1 file(s) of " + suite + "/broken would stop the library";
    const std::string aborts_reason        = "replay ended by signal 6 (Aborted)";
    const std::vector<std::string> summary = {
        "summary",
        "  cases       3 run, 1 passed, 2 failed",
        "  failed      broken: " + broken_reason,
        "  failed      " + aborts + ": " + aborts_reason,
        "  junit       " + junit,
        "  result      FAILED",
    };
    const std::vector<std::string> lines = split_lines(run.out);
    ASSERT_GE(lines.size(), summary.size());
    EXPECT_EQ(std::vector<std::string>(lines.end() - long(summary.size()), lines.end()), summary);

    const std::string xml = read_file(junit);
    EXPECT_EQ(xml_attributes(xml, "testsuite", "tests"), std::vector<std::string>{"3"});
    EXPECT_EQ(xml_attributes(xml, "testsuite", "failures"), std::vector<std::string>{"2"});
    EXPECT_EQ(xml_attributes(xml, "testcase", "name"),
              (std::vector<std::string>{"broken", "good", aborts}));
    EXPECT_EQ(xml_attributes(xml, "failure", "message"),
              (std::vector<std::string>{broken_reason, aborts_reason}));
    // the tail of the output: what the library said before it ended the process
    EXPECT_NE(xml.find("\n[error] failed to read json file: " + suite + "/" + aborts + "/cfgs/f0/"),
              std::string::npos);
    EXPECT_NE(xml.find("\n  JSON does not parse: syntax error at line 2 near:  (read by gamma)\n"),
              std::string::npos);
}

TEST(IspCaseBatch, TwoShardsSplitTheSortedSuiteAndCoverItOnce) {
    temp_dir dir;
    // a case's own subdirectories are not searched; a directory without cfgs/ is no case
    for (const char *name : {"b/cfgs", "b/inner/cfgs", "a/y/cfgs", "c/cfgs", "a/x/cfgs", "d"})
        dir.mkdir(std::string("suite/") + name);
    std::vector<std::vector<std::string>> shards;
    for (const char *shard : {"1/2", "2/2"}) {
        const std::string json = dir.path() + "/shard.json";
        const tool_run run     = run_tool(
                dir, "batch " + dir.path() + "/suite --frames 0 --json " + json + " --shard " + shard);
        EXPECT_EQ(run.status, 1) << run.out;  // no register file at all
        const picojson::object report = isp_test::parse_object(read_file(json));
        EXPECT_EQ(report.at("cases_found").get<double>(), 4);
        shards.emplace_back();
        for (const picojson::value &c : report.at("cases").get<picojson::array>())
            shards.back().push_back(c.get("name").to_str());
    }
    EXPECT_EQ(shards, (std::vector<std::vector<std::string>>{{"a/x", "b"}, {"a/y", "c"}}));
}

TEST(IspCaseSettings, GridsLogLevelsAndDefaultsFromTheCase) {
    int h = -1, v = -1;
    const int squarest[][3] = {{0, 1, 1}, {1, 1, 1}, {4, 2, 2}, {6, 3, 2}, {7, 7, 1}, {12, 4, 3}};
    for (const auto &row : squarest) {
        isp_case::default_grid(row[0], h, v);
        EXPECT_EQ(h, row[1]) << row[0];
        EXPECT_EQ(v, row[2]) << row[0];
    }
    EXPECT_TRUE(isp_case::parse_grid("3x0", h, v));
    EXPECT_EQ(h, 3);
    EXPECT_EQ(v, 0);
    EXPECT_TRUE(isp_case::parse_grid("255x1", h, v));
    EXPECT_FALSE(isp_case::parse_grid("256x1", h, v));
    EXPECT_FALSE(isp_case::parse_grid("2x", h, v));
    EXPECT_FALSE(isp_case::parse_grid("2X2", h, v));
    EXPECT_EQ(isp_case::parse_log_level("error"), 3);
    EXPECT_EQ(isp_case::parse_log_level("warning"), 4);
    EXPECT_EQ(isp_case::parse_log_level("debug"), 7);
    EXPECT_EQ(isp_case::parse_log_level("0"), 0);
    EXPECT_EQ(isp_case::parse_log_level("8"), -1);
    EXPECT_EQ(isp_case::parse_log_level("info"), -1);

    temp_dir dir;
    dir.write("cfgs/f0/rtl_wbc_p5.json", "{}");
    dir.write("cfgs/f0/rtl_bl_det_p1_chn2.json", "{}");
    dir.write("cfgs/f1/rtl_wbc_p0.json", "{}");
    dir.mkdir("cfgs/f4");
    dir.mkdir("cfgs/f3");
    dir.write("isp_nrlite_ptn_0.json", "{}");
    dir.write("isp_nrlite_ptn_1.json", "{}");
    isp_case::case_options options;
    options.case_path = dir.path();
    isp_case::run_settings settings;
    isp_case::case_contents contents;
    std::string error;
    ASSERT_TRUE(isp_case::resolve_settings(options, settings, contents, error)) << error;
    EXPECT_EQ(contents.frames, 2);
    EXPECT_EQ(contents.unreached, (std::vector<int>{3, 4}));
    EXPECT_EQ(contents.partitions, 6);
    EXPECT_EQ(contents.channels, 3);
    EXPECT_EQ(contents.pattern_files, 2);
    EXPECT_EQ(settings.part_h, 3);
    EXPECT_EQ(settings.part_v, 2);
    EXPECT_EQ(settings.channels, 3);
    EXPECT_EQ(settings.frames, 2);
    ASSERT_EQ(settings.modules.size(), 34u);
    EXPECT_STREQ(settings.modules.front()->name, "ifa");

    options.modules = {"cc", "nosuch"};
    EXPECT_FALSE(isp_case::resolve_settings(options, settings, contents, error));
    EXPECT_EQ(error, "nosuch: no such module");
}

/* Channelled loads step the frame after every channel's pass; the plan lists each file once. */
TEST(IspCaseSettings, ReadPlanStepsFramesLikeTheLibrary) {
    temp_dir dir;
    for (const char *frame : {"cfgs/f0", "cfgs/f1", "cfgs/f2"}) dir.mkdir(frame);
    isp_case::run_settings settings;
    settings.case_path = dir.path();
    settings.part_h    = 2;
    settings.part_v    = 1;
    settings.channels  = 2;
    settings.frames    = 1;
    settings.modules   = {isp_case::find_module("dpc"), isp_case::find_module("wbc"),
                          isp_case::find_module("ainr"), isp_case::find_module("demosaic"),
                          isp_case::find_module("gic")};
    EXPECT_EQ(isp_case::frames_stepped(dir.path(), 2, 2), (std::vector<int>{0, 1, 2, 2}));
    EXPECT_EQ(isp_case::frames_stepped(dir.path(), 4, 1), (std::vector<int>{0, 1, 2, 2}));
    std::vector<std::string> files;
    for (const isp_case::planned_file &f : isp_case::plan_reads(settings)) {
        std::string readers;
        for (const isp_case::module_info *m : f.readers) readers += std::string(" ") + m->name;
        files.push_back(f.relative + readers);
    }
    const std::vector<std::string> expected = {
        "cfgs/f0/rtl_dpc_p0_chn0.json dpc",     "cfgs/f0/rtl_dpc_p1_chn0.json dpc",
        "cfgs/f1/rtl_dpc_p0_chn1.json dpc",     "cfgs/f1/rtl_dpc_p1_chn1.json dpc",
        "cfgs/f2/rtl_dpc_p0_chn0.json dpc",     "cfgs/f2/rtl_dpc_p1_chn0.json dpc",
        "cfgs/f2/rtl_dpc_p0_chn1.json dpc",     "cfgs/f2/rtl_dpc_p1_chn1.json dpc",
        "cfgs/f0/rtl_wbc_p0.json wbc",          "cfgs/f0/rtl_wbc_p1.json wbc",
        "cfgs/f1/rtl_wbc_p0.json wbc",          "cfgs/f1/rtl_wbc_p1.json wbc",
        "isp_nrlite_ptn_0.json ainr",           "isp_nrlite_ptn_1.json ainr",
        "cfgs/f0/rtl_dem_p0.json demosaic gic", "cfgs/f0/rtl_dem_p1.json demosaic gic",
        "cfgs/f1/rtl_dem_p0.json demosaic gic", "cfgs/f1/rtl_dem_p1.json demosaic gic",
    };
    EXPECT_EQ(files, expected);

    settings.channels = 7;  // the channelled modules read nothing
    EXPECT_EQ(isp_case::plan_reads(settings).size(), 10u);
}

TEST(IspCaseSettings, ProbesReportWhatTheLibraryWouldStopOn) {
    temp_dir dir;
    using isp_case::file_state;
    struct row {
        const char *text;
        file_state state;
        const char *description;
    };
    const row rows[] = {
        {R"({"isp_wbc": {"d_gain": {"val": 1e400}}})", file_state::non_finite,
         "number out of range (picojson raises overflow_error): line 1: 1e400"},
        // a number in a string is text; the second line's number is the one out of range
        {"{\"a\": \"1e999\",\n \"b\": [1, -2e308]}", file_state::non_finite,
         "number out of range (picojson raises overflow_error): line 2: -2e308"},
        {"", file_state::syntax, "JSON does not parse: syntax error at line 1 near: "},
        {"{\"a\": 1}\n{", file_state::ok, "ok"},  // picojson stops after the first value
        {"\"text\"", file_state::not_object, "root is not an object: the root is a string"},
        {"null", file_state::not_object, "root is not an object: the root is null"},
    };
    for (const row &r : rows) {
        const isp_case::probed_file probe = isp_case::probe_file(dir.write("file.json", r.text));
        EXPECT_EQ(probe.state, r.state) << r.text;
        EXPECT_EQ(isp_case::describe(probe), r.description) << r.text;
    }
    EXPECT_EQ(isp_case::probe_file(dir.path() + "/none.json").state, file_state::missing);
    EXPECT_EQ(isp_case::probe_file(dir.path()).state, file_state::unreadable);
    EXPECT_EQ(isp_case::describe(isp_case::probe_file(dir.path())),
              "cannot read the file: a directory");
}

TEST(IspCaseSettings, WrapKeepsItemsWholeAndCommasAttached) {
    EXPECT_EQ(isp_case::wrap({"ab", "cd", "ef"}, 7), (std::vector<std::string>{"ab, cd,", "ef"}));
    EXPECT_EQ(isp_case::wrap({"abcdefghij", "k"}, 4),
              (std::vector<std::string>{"abcdefghij,", "k"}));
    EXPECT_TRUE(isp_case::wrap({}, 10).empty());
}

/* Every file under root, relative to it, with its bytes. */
std::map<std::string, std::string> tree(const std::string &root) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry &e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file())
            files[fs::relative(e.path(), root).string()] = read_file(e.path().string());
    return files;
}

TEST(IspCaseSample, GeneratorReproducesTheCommittedCase) {
    if (std::system("python3 --version >/dev/null 2>&1") != 0) GTEST_SKIP() << "no python3";
    temp_dir dir;
    const std::string generated = dir.path() + "/case";
    ASSERT_EQ(
        std::system(("python3 '" ISP_SAMPLE_CASE_DIR "/../make_sample_case.py' '" + generated + "'")
                        .c_str()),
        0);
    const std::map<std::string, std::string> expected = tree(ISP_SAMPLE_CASE_DIR);
    const std::map<std::string, std::string> actual   = tree(generated);
    EXPECT_EQ(expected.size(), 236u);  // 2 frames x (23 files + 3 x 2 channel files) x 4 + 4
    ASSERT_EQ(actual.size(), expected.size());
    for (const auto &[name, bytes] : expected) {
        auto it = actual.find(name);
        ASSERT_NE(it, actual.end()) << name;
        EXPECT_EQ(it->second, bytes) << name;
    }
}

/* The dump of a replay holds, push by push, the bytes the simulated wrapper copied. */
TEST(IspCaseDump, RawFilesAreTheRecordedPushes) {
    temp_dir dir;
    isp_case::replay_settings settings;
    settings.run.case_path = ISP_SAMPLE_CASE_DIR;
    settings.run.part_h = settings.run.part_v = 2;
    settings.run.channels                     = 2;
    settings.run.frames                       = 2;
    settings.run.modules           = {isp_case::find_module("wbc"), isp_case::find_module("cc")};
    settings.keep_bytes            = true;
    settings.keep_platform_records = true;
    isp_case::dump_stream writer(dir.path(), settings);
    const isp_case::replay_result result =
        isp_case::replay(settings, [&](const isp_case::replay_step &step) { writer.write(step); });
    EXPECT_TRUE(result.platform_problems.empty());
    const isp_case::dump_summary summary = writer.summary();
    EXPECT_TRUE(summary.problems.empty());
    EXPECT_EQ(summary.raw_files, 24u);  // 3 loads x (3 wbc + 3 cc groups + 2 size arrays)
    EXPECT_EQ(summary.cmodel_files, 12u);

    std::vector<isp_sim::call> wbc, clc;
    for (const isp_sim::call &c : isp_sim::calls_of("vin_hal_wrapper_setup")) {
        if (!c.has_data) continue;
        (isp_sim::wrapper(c.handle).block == "wbc" ? wbc : clc).push_back(c);
    }
    const std::vector<std::string> wbc_files = {
        "init/wbc/cmd01_ctrl",   "init/wbc/cmd02_setup",   "init/wbc/cmd03_init",
        "frame0/wbc/cmd01_ctrl", "frame0/wbc/cmd02_setup", "frame0/wbc/cmd03_init",
        "frame1/wbc/cmd01_ctrl", "frame1/wbc/cmd02_setup", "frame1/wbc/cmd03_init"};
    const std::vector<std::string> clc_files = {
        "init/cc/cmd03_init",   "init/cc/cmd01_clc_setup",   "init/cc/cmd02_clc",
        "frame0/cc/cmd03_init", "frame0/cc/cmd01_clc_setup", "frame0/cc/cmd02_clc",
        "frame1/cc/cmd03_init", "frame1/cc/cmd01_clc_setup", "frame1/cc/cmd02_clc"};
    ASSERT_EQ(wbc.size(), wbc_files.size());
    ASSERT_EQ(clc.size(), clc_files.size());
    for (size_t i = 0; i < wbc.size(); ++i) {
        const std::string bytes(wbc[i].payload.begin(), wbc[i].payload.end());
        EXPECT_EQ(read_file(dir.path() + "/" + wbc_files[i] + ".bin"), bytes) << wbc_files[i];
    }
    for (size_t i = 0; i < clc.size(); ++i) {
        const std::string bytes(clc[i].payload.begin(), clc[i].payload.end());
        EXPECT_EQ(read_file(dir.path() + "/" + clc_files[i] + ".bin"), bytes) << clc_files[i];
    }

    // d_gain 1.0 in u10.8, four gains 1.0 in u4.8, clip level 1023.0 in u14.6, little-endian
    const std::string ctrl("\x00\x01\x00\x00\x00\x01\x00\x01\x00\x01\x00\x01\xc0\xff\x00\x00", 16);
    EXPECT_EQ(read_file(dir.path() + "/frame1/wbc/cmd01_ctrl.bin"), ctrl);
    EXPECT_EQ(read_json_file(dir.path() + "/frame1/wbc/cmd01_ctrl.json").serialize(),
              R"({"clip_level":1023,"d_gain":1,"wb_gain":[1,1,1,1]})");
    // the partition sizes behind the init group's pointers: 960 x 540 for each of 4 partitions
    EXPECT_EQ(read_file(dir.path() + "/init/cc/cmd03_init.part_size_h.bin"),
              std::string("\xc0\x03\xc0\x03\xc0\x03\xc0\x03", 8));
    EXPECT_EQ(read_file(dir.path() + "/init/cc/cmd03_init.part_size_v.bin"),
              std::string("\x1c\x02\x1c\x02\x1c\x02\x1c\x02", 8));
    const picojson::value clc_cmodel = read_json_file(dir.path() + "/init/cc/cmd02_clc.json");
    const picojson::array &matrices  = clc_cmodel.get("matrix_list").get<picojson::array>();
    ASSERT_EQ(matrices.size(), 96u);
    std::string first;
    for (size_t i = 0; i < 12; ++i) first += matrices[i].serialize() + " ";
    EXPECT_EQ(first, "1 0 0 0 0 1 0 0 0 0 1 0 ");
}

}  // namespace
