/* isp-case on the sample case and on broken copies of it: exit statuses, the reports, the C-model
 * files of export and the dump of a replay against what the simulated wrapper recorded. */

#include <sys/wait.h>

#include <cstring>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
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
    EXPECT_TRUE(contains_line(run.out, "frame 1: process, trigger, sync"));
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
    EXPECT_EQ(count_lines_starting(run.out, "  cc            ok"), 3u);
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

TEST(IspCaseReplay, ConverterFailuresFailTheReplayWithoutAborting) {
    temp_dir dir;
    const std::string case_dir = copy_sample(dir);
    std::ofstream(case_dir + "/cfgs/f0/rtl_csc_p0.json") << "[1, 2]\n";
    remove_register(case_dir + "/cfgs/f0/rtl_clc_p2.json", "isp_clc", "offset");
    const tool_run run = run_tool(dir, "replay " + case_dir + " --modules csc,cc --frames 1");
    ASSERT_EQ(run.status, 1) << run.out << run.err;
    const std::vector<std::string> expected = {
        "  module  create  init    read  pushed (group#cmd size)",
        "  csc     ok      raised  f0",
        "      init raised: \"type mismatch! call is<type>() before get<type>()\" && "
        "is<object>()",
        // the init group holds two pointers: its size depends on the target
        "  cc      ok      ok      f0    init#3 " + std::to_string(sizeof(_isp_clc_user_init_t)) +
            "B, clc_setup#1 16B, clc#2 292B",
        "      stderr: read json_obj failed: offset.val0",
        "      stderr: read json_obj failed: offset.val1",
    };
    const std::vector<std::string> lines = split_lines(run.out);
    ASSERT_GE(lines.size(), 9u);
    EXPECT_EQ(std::vector<std::string>(lines.begin() + 3, lines.begin() + 9), expected);
    EXPECT_TRUE(contains_line(run.out, "  failed      csc init (setup): raised"));
    EXPECT_TRUE(contains_line(run.out, "  failed      csc process (frame 0): raised"));
    EXPECT_TRUE(contains_line(run.out, "  result      FAILED"));
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
    for (const char *command : {"replay", "check", "export"}) {
        const tool_run help = run_tool(dir, std::string(command) + " --help");
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_NE(help.out.find("Exit status: 0 success"), std::string::npos) << command;
    }
    EXPECT_EQ(run_tool(dir, "").status, 2);
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
    settings.run.modules = {isp_case::find_module("wbc"), isp_case::find_module("cc")};
    const isp_case::replay_result result = isp_case::replay(settings);
    ASSERT_FALSE(result.failed());
    const isp_case::dump_summary summary = isp_case::write_dump(dir.path(), settings, result);
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

/* A report page read as XML: every element's name, attributes and text (its own and its
 * children's, entities left as written). Fails the test on a tag that does not nest. */
struct page_element {
    std::string name, text;
    std::map<std::string, std::string> attributes;
};

std::vector<page_element> parse_page(const std::string &page) {
    std::vector<page_element> done;
    std::vector<page_element> open;
    size_t at = page.find('<', page.find("<html"));
    while (at != std::string::npos && at < page.size()) {
        const size_t end = page.find('>', at);
        if (end == std::string::npos) break;
        std::string tag = page.substr(at + 1, end - at - 1);
        if (tag[0] == '/') {
            if (open.empty() || open.back().name != tag.substr(1)) {
                ADD_FAILURE() << "</" << tag.substr(1) << "> closes "
                              << (open.empty() ? "nothing" : open.back().name) << " at " << at;
                return done;
            }
            done.push_back(open.back());
            open.pop_back();
            if (!open.empty()) open.back().text += done.back().text;
        } else {
            const bool empty = tag.back() == '/';
            if (empty) tag.pop_back();
            page_element e;
            e.name = tag.substr(0, tag.find(' '));
            for (size_t q = tag.find("=\""); q != std::string::npos; q = tag.find("=\"", q + 1)) {
                const size_t name_at = tag.rfind(' ', q) + 1, value_end = tag.find('"', q + 2);
                e.attributes[tag.substr(name_at, q - name_at)] =
                    tag.substr(q + 2, value_end - q - 2);
                q = value_end;
            }
            (empty ? done : open).push_back(e);
        }
        const size_t next = page.find('<', end);
        if (!open.empty()) open.back().text += page.substr(end + 1, next - end - 1);
        at = next;
    }
    EXPECT_TRUE(open.empty()) << open.size() << " elements left open";
    return done;
}

std::vector<std::string> attribute_of_all(const std::vector<page_element> &elements,
                                          const std::string &name, const std::string &attribute) {
    std::vector<std::string> out;
    for (const page_element &e : elements)
        if (e.name == name && e.attributes.count(attribute))
            out.push_back(e.attributes.at(attribute));
    return out;
}

std::vector<std::string> texts_of(const std::vector<page_element> &elements,
                                  const std::string &name) {
    std::vector<std::string> out;
    for (const page_element &e : elements)
        if (e.name == name) out.push_back(e.text);
    return out;
}

size_t count_of(const std::vector<std::string> &items, const std::string &item) {
    return size_t(std::count(items.begin(), items.end(), item));
}

TEST(IspCaseReport, SamplePageIsOneOfflineFileWithEveryPicture) {
    temp_dir dir;
    ASSERT_EQ(run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR " --dump " + dir.path() + "/d").status,
              0);
    const tool_run run = run_tool(dir, "report " + dir.path() + "/d -o " + dir.path() + "/r.html");
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    const std::string page = read_file(dir.path() + "/r.html");
    EXPECT_LT(page.size(), 2u << 20);
    for (const char *outside : {"http", "src=", "<script", "<link", "url(", "@import"})
        EXPECT_EQ(page.find(outside), std::string::npos) << outside;

    const std::vector<page_element> elements = parse_page(page);
    const std::vector<std::string> sections  = attribute_of_all(elements, "section", "id");
    EXPECT_EQ(sections,
              (std::vector<std::string>{"summary", "pushes", "step-init", "step-frame1"}));
    // every curve and mesh once in each step shown, as its own picture
    const std::vector<std::string> pictures = attribute_of_all(elements, "svg", "aria-label");
    for (const char *picture :
         {"gamma curve (gamma lut#3)", "hdrc compression curve (hdrc hdrc_lut#3)",
          "hidrc inverse-compression curve (hidrc hidrc_lut#2)",
          "black-level linearisation (lin lin#3)", "black-level linearisation (blc c0 lin#3)",
          "black-level linearisation (blc c1 lin#3)", "lsc gain mesh R", "lsc gain mesh Gr",
          "lsc gain mesh Gb", "lsc gain mesh B", "lsc coord#2 locat (real)"})
        EXPECT_EQ(count_of(pictures, picture), 2u) << picture;
    const std::vector<std::string> labels = texts_of(elements, "text");
    EXPECT_EQ(count_of(labels, "input: curve point (0-128, 128 = full scale)"), 2u);
    EXPECT_EQ(count_of(labels, "input: curve point (0-256, 256 = full scale)"), 2u);
    EXPECT_EQ(count_of(labels, "output code (20 bits, raw)"), 2u);
    EXPECT_EQ(count_of(labels, "mesh column (0-18)"), 8u);
    // lsc cell starts (y, x) of the 2x2 grid over 1920x1080, laid out like the partitions
    for (const page_element &e : elements)
        if (e.name == "svg" && e.attributes.at("aria-label") == "lsc coord#2 locat (real)") {
            EXPECT_EQ(e.text,
                      "lsc coord#2 locat (real)partition 00, 0partition 10, 960partition 2540, "
                      "0partition 3540, 960");
        }
    // csc rows: Y sums to one, the chroma rows to zero
    const std::vector<std::string> cells = texts_of(elements, "td");
    EXPECT_GE(count_of(cells, "1"), 2u);
    EXPECT_EQ(count_of(texts_of(elements, "caption"), "csc RGB to YUV matrix (real)"), 2u);
}

TEST(IspCaseReport, AgainstShowsBothCurvesAndMarksTheChange) {
    temp_dir dir;
    const std::string changed = copy_sample(dir);
    // gamma points 64 and 65 (the pair of grp0 element 32) dropped to zero in every file
    for (const char *frame : {"f0", "f1"})
        for (int p = 0; p < 4; ++p) {
            const std::string path =
                changed + "/cfgs/" + frame + "/rtl_gamma_p" + std::to_string(p) + ".json";
            picojson::object root  = isp_test::parse_object(read_file(path));
            picojson::object &pair = root["isp_gamma"]
                                         .get<picojson::object>()["grp0"]
                                         .get<picojson::array>()[32]
                                         .get<picojson::object>()["gam_lut"]
                                         .get<picojson::object>();
            pair["low"] = pair["high"] = picojson::value(0.0);
            std::ofstream(path) << picojson::value(root).serialize();
        }
    ASSERT_EQ(run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR " --dump " + dir.path() + "/a").status,
              0);
    ASSERT_EQ(run_tool(dir, "replay " + changed + " --dump " + dir.path() + "/b").status, 0);
    const tool_run run = run_tool(dir, "report " + dir.path() + "/a --against " + dir.path() +
                                           "/b --frame 0 -o " + dir.path() + "/r.html");
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    const std::vector<page_element> elements = parse_page(read_file(dir.path() + "/r.html"));

    EXPECT_EQ(
        attribute_of_all(elements, "section", "id"),
        (std::vector<std::string>{"summary", "changes", "pushes", "step-init", "step-frame0"}));
    // what changed: the curve alone, in each of the three steps; sRGB at 0.5 is 187.5 in u8.4
    std::vector<std::string> rows;
    for (const page_element &e : elements)
        if (e.name == "tr" && e.text.find("gamma lut#3") != std::string::npos)
            rows.push_back(e.text);
    EXPECT_EQ(rows, (std::vector<std::string>{
                        "initgamma lut#3lut2 of 129[64] 187.5 &#8594; 0 (real)",
                        "frame 0gamma lut#3lut2 of 129[64] 187.5 &#8594; 0 (real)",
                        "frame 1gamma lut#3lut2 of 129[64] 187.5 &#8594; 0 (real)"}));
    // B's two points highlighted in the member tables of init and frame 0
    EXPECT_EQ(texts_of(elements, "mark"), (std::vector<std::string>{"0", "0", "0", "0"}));
    // the curve drawn twice, once per run, with a legend naming each
    const std::string a_name = "A: " + dir.path() + "/a", b_name = "B: " + dir.path() + "/b";
    size_t drawn = 0;
    for (const page_element &e : elements)
        if (e.name == "svg" && e.attributes.count("aria-label") &&
            e.attributes.at("aria-label") == "gamma curve (gamma lut#3)")
            drawn += e.text.find(a_name) != std::string::npos &&
                     e.text.find(b_name) != std::string::npos;
    EXPECT_EQ(drawn, 2u);
    const std::vector<std::string> details = attribute_of_all(elements, "details", "open");
    EXPECT_EQ(details.size(), 2u);  // the lut group of init and of frame 0, nothing else
}

}  // namespace
