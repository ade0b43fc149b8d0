/* isp-case on the sample case and on broken copies of it: exit statuses, the reports, the C-model
 * files of export and the dump of a replay against what the simulated wrapper recorded. */

#include <malloc.h>
#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "convert/common/register_map.h"
#include "isp_json.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"
#include "tools/core/case_layout.h"
#include "tools/dump/decode.h"
#include "tools/dump/reader.h"
#include "tools/dump/writer.h"
#include "tools/core/file_probe.h"
#include "tools/lint/json_locations.h"
#include "tools/lint/lint.h"
#include "tools/core/module_table.h"
#include "tools/core/run_record.h"
#include "tools/core/runner.h"
#include "tools/output/replay_printer.h"
#include "tools/core/settings.h"
#include "tools/output/text_table.h"

namespace {

namespace fs = std::filesystem;
using isp_test::read_file;
using isp_test::split_lines;
using isp_test::temp_dir;
using lines_t = std::vector<std::string>;

struct tool_run {
    int status = -1; /* exit status; -1 when the tool did not exit normally */
    std::string out, err;
};

tool_run collect(const temp_dir &dir, int raw) {
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, read_file(dir.path() + "/tool.out"),
            read_file(dir.path() + "/tool.err")};
}

/* Runs isp-case with its output in files of dir. */
tool_run run_tool(const temp_dir &dir, const std::string &args) {
    return collect(dir, std::system((ISP_CASE_EMULATOR " '" ISP_CASE_TOOL "' " + args + " >'" +
                                     dir.path() + "/tool.out' 2>'" + dir.path() + "/tool.err'")
                                        .c_str()));
}

/* Runs the tool as a user that cannot write where root can: root drops to nobody in a child. */
tool_run run_tool_unprivileged(const temp_dir &dir, const std::string &args) {
    if (getuid() != 0) return run_tool(dir, args);
    const struct passwd *nobody = getpwnam("nobody");
    if (!nobody) return {};
    fs::remove(dir.path() + "/tool.out"), fs::remove(dir.path() + "/tool.err");  // root's
    const pid_t child = fork();
    if (child == 0) {
        if (setgid(nobody->pw_gid) != 0 || setuid(nobody->pw_uid) != 0) _exit(120);
        /* a build under a directory only root may enter: nobody cannot start the tool */
        const std::string emulator = ISP_CASE_EMULATOR;
        for (const std::string &program :
             {std::string(ISP_CASE_TOOL), emulator.substr(0, emulator.find(' '))})
            if (!program.empty() && access(program.c_str(), R_OK | X_OK) != 0) _exit(120);
        _exit(run_tool(dir, args).status & 0xff);
    }
    int raw = 0;
    waitpid(child, &raw, 0);
    return collect(dir, raw);
}

/* A copy of the sample case in dir, to break. */
std::string copy_sample(const temp_dir &dir, const std::string &name = "case") {
    const std::string target = dir.path() + "/" + name;
    fs::create_directories(fs::path(target).parent_path());
    fs::copy(ISP_SAMPLE_CASE_DIR, target, fs::copy_options::recursive);
    return target;
}

/* Rewrites a register file after changing its parsed root. */
void edit_json(const std::string &path, const std::function<void(picojson::object &)> &edit) {
    picojson::object root = isp_test::parse_object(read_file(path));
    edit(root);
    std::ofstream(path) << picojson::value(root).serialize();
}

void remove_register(const std::string &path, const std::string &top, const std::string &reg) {
    edit_json(path, [&](picojson::object &root) { root[top].get<picojson::object>().erase(reg); });
}

/* Replaces the first occurrence of from in a file. */
void replace_in(const std::string &path, const std::string &from, const std::string &to) {
    std::string text = read_file(path);
    const size_t at  = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    std::ofstream(path) << text.replace(at, from.size(), to);
}

bool contains_line(const std::string &text, const std::string &line) {
    const lines_t lines = split_lines(text);
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

/* Each of lines on a line of its own in text. */
void expect_lines(const std::string &text, const lines_t &lines) {
    for (const std::string &line : lines)
        EXPECT_TRUE(contains_line(text, line)) << line << "\n" << text;
}

lines_t last_lines(const std::string &text, size_t n) {
    const lines_t lines = split_lines(text);
    return lines_t(lines.end() - long(std::min(n, lines.size())), lines.end());
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

/* Every file under root, relative to it, with its bytes. */
std::map<std::string, std::string> tree(const std::string &root) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry &e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file())
            files[fs::relative(e.path(), root).string()] = read_file(e.path().string());
    return files;
}

/* A dump of the sample case, or of a copy of it, through the tool. */
std::string dump_of(const temp_dir &dir, const std::string &name, const std::string &case_dir,
                    const std::string &options = "") {
    const std::string target = dir.path() + "/" + name;
    const tool_run run = run_tool(dir, "replay " + case_dir + " --dump " + target + " " + options);
    EXPECT_EQ(run.status, 0) << run.err;
    return target;
}

TEST(IspCaseReplay, SampleCaseSucceedsForEveryModuleOnBothFrames) {
    temp_dir dir;
    const tool_run run = run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR);
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(split_lines(run.out)[0],
              "replay of " ISP_SAMPLE_CASE_DIR ": grid 2x2, 2 channels, 2 frames, 34 modules");
    // the first frame as a table, every later one as a line; setup reads f0, frame 1 f1 and
    // frame 2 f1 again; the channelled modules step frames per channel
    expect_lines(
        run.out,
        {"setup: register, create, init", "frame 1: process, trigger, sync",
         "frame 2 (f1 again): 34 modules ok, 155 groups, " + frame_bytes(28534) + " bytes",
         "  all 34 modules ok", "  operations  366 run, 0 failed",
         "  platform    no leaks, no misuse",
         "  result      ok: 34 modules, every operation returned 0 on 2 frames",
         "  wbc           ok      ok    f0     ctrl#1 16B, setup#2 8B, init#3 1B",
         "  wbc           ok       ok       ok    f1    b5=1    ctrl#1 16B, setup#2 8B, init#3 1B",
         "  bl_det        ok      ok    f0,f1  c0: setup#1 4B, init#3 4B",
         "  ifa           ok       no-op    ok    f1    b27=1   setup#1 4B, crop#2 4B",
         "  ainr          ok       ok       -     ptn   -       post#5 4B"});
    EXPECT_EQ(count_lines_starting(run.out, "  cc            ok"), 2u);

    const tool_run bypass = run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR
                                          " --modules gamma,ae_stat --bypass gamma --frames 1"
                                          " --log-level debug");
    ASSERT_EQ(bypass.status, 0) << bypass.out << bypass.err;
    expect_lines(bypass.out,
                 {"  gamma    ok       ok       ok    f1    b14=0   "
                  "setup#1 12B, dither#2 6B, lut#3 258B",
                  "  ae_stat  ok       ok       -     f1    b8=1    "
                  "init#1 3076B, aes_adj#2 4B, aes_calc#3 4B",
                  "  result      ok: 2 modules, every operation returned 0 on 1 frame"});
    EXPECT_NE(bypass.out.find("[SDK version]: "), std::string::npos);
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
    const std::string raised = "raised: " + isp_test::type_error("object");
    const lines_t lines      = split_lines(run.out);
    const lines_t frame_2    = {
           "frame 3 (f1 again): 1 module ok, 1 failed, 3 groups, " + frame_bytes(308) + " bytes",
           "  module  process  trigger  sync  read  enable  pushed (group#cmd size)",
           "  csc     raised   ok       ok    f0    b16=1",
           "      process " + raised,
           "",
           "teardown: deinit, destroy",
    };
    auto at = std::find(lines.begin(), lines.end(), frame_2.front());
    ASSERT_LE(at + long(frame_2.size()), lines.end()) << run.out;
    EXPECT_EQ(lines_t(at, at + long(frame_2.size())), frame_2);
    // the pre-flight's findings first, then the replay's, each with its place, printed as
    // check prints them; what the lint explains and what repeats over steps is one entry each
    const std::string c = case_dir;
    EXPECT_EQ(
        last_lines(run.out, 8),
        (lines_t{
            "  findings    5 errors, 1 warning",
            "settings: warning: 3 frames asked for and the case holds 2 (cfgs/f0 to "
            "cfgs/f1): frames 2 to 3 replay cfgs/f1 again [frames]",
            c + "/cfgs/f0/rtl_csc_p0.json:1:1: error: csc: root is not an object: the root is an "
                "array [root-not-object]",
            c + "/cfgs/f0/rtl_clc_p2.json:1:12: error: cc: offset.val0 (u8.4): no \"offset\" in "
                "\"isp_clc\"; the field reads as 0 (at setup) [missing-field]",
            c + "/cfgs/f0/rtl_clc_p2.json:1:12: error: cc: offset.val1 (u8.4): no \"offset\" in "
                "\"isp_clc\"; the field reads as 0 (at setup) [missing-field]",
            "setup: error: csc: init: " + raised + " [operation-raised]",
            "frame 1: error: csc: process: " + raised +
                " (at 3 steps, frame 1 to frame 3 (f1 again)) [operation-raised]",
            "  result      FAILED: 5 errors, 1 warning",
        }));

    const tool_run json = run_tool(dir, args + " --format json -v");
    EXPECT_EQ(json.status, 1);
    lines_t types;
    picojson::object frame, summary;
    for (const std::string &line : split_lines(json.out)) {
        const picojson::object o = isp_test::parse_object(line);
        types.push_back(o.at("type").to_str() +
                        (o.count("step") ? " " + o.at("step").to_str() : ""));
        if (types.back() == "step frame 3 (f1 again)") frame = o;
        if (types.back() == "summary") summary = o;
    }
    EXPECT_EQ(types, (lines_t{"start", "step setup", "step frame 1", "step frame 2 (f1 again)",
                              "step frame 3 (f1 again)", "step teardown", "summary"}));
    // -v adds the table's rows to each step
    ASSERT_EQ(frame.count("rows"), 1u);
    EXPECT_EQ(frame.at("rows").get<picojson::array>().front().serialize(),
              R"j({"details":["process raised: \"type mismatch! call is<type>() before )j"
              R"j(get<type>()\" && is<object>()"],"enable":1,"module":"csc",)j"
              R"j("operations":{"process":"raised","sync":"ok","trigger":"ok"},"pushed":[],)j"
              R"j("read":"f0"})j");
    EXPECT_EQ(summary.at("findings").get<picojson::array>().size(), 6u);
    EXPECT_EQ(summary.at("result").to_str() + " " + summary.at("errors").to_str() + " " +
                  summary.at("warnings").to_str() + " " + summary.at("exit_status").to_str(),
              "failed 5 1 1");
}

/* A long dumped replay holds one operation's platform records at a time, however many frames it
 * runs, while every call is counted; the dump's manifest grows on disk, not in the heap. */
TEST(IspCaseReplay, LongDumpedReplayHoldsNoMoreThanAShortOne) {
    temp_dir dir;
    isp_case::replay_settings settings;
    settings.run.case_path = ISP_SAMPLE_CASE_DIR;
    settings.run.part_h = settings.run.part_v = 2;
    settings.run.channels                     = 2;
    settings.keep_bytes                       = true;
    settings.run.modules                      = isp_case::pipeline_order();
    std::vector<size_t> heap; /* what the heap held at the end of each step */
    auto run = [&](int frames) {
        settings.run.frames = frames;
        size_t steps        = 0;
        heap.clear();
        const std::string dump = dir.mkdir("dump" + std::to_string(frames));
        isp_case::dump_writer writer(dump, settings);
        isp_case::run_record record;
        isp_case::replay(settings, [&](const isp_case::replay_step &step) {
            writer.write_step(step);
            record.add(step);
            heap.push_back(mallinfo2().uordblks);
            ++steps;
        });
        writer.finish(record, isp_case::judge(record, false));
        EXPECT_TRUE(writer.summary().problems.empty());
        EXPECT_EQ(steps, size_t(frames) + 2);
        return isp_sim::counters();
    };
    const isp_sim::record_counters short_run = run(2);
    const isp_sim::record_counters long_run  = run(20);
    EXPECT_EQ(long_run.held_calls + long_run.held_log_lines, 0u);
    EXPECT_GT(short_run.peak_held_bytes, 0u);
    EXPECT_EQ(long_run.peak_held_bytes, short_run.peak_held_bytes);
    // a frame: 155 pushes and 35 wrapper triggers (none by ifa and eis_post, one per channel by
    // the three channelled modules)
    EXPECT_EQ(long_run.calls - short_run.calls, 18u * (155 + 35));
    // the manifest's 155 entries a frame, once held in memory, grew it by megabytes
    EXPECT_LT(*std::max_element(heap.begin() + 3, heap.end()), heap[2] + 64 * 1024);
}

TEST(IspCaseReplay, FilesThatWouldStopTheLibraryAreNamedBeforeAnythingRuns) {
    temp_dir dir;
    const std::string case_dir = copy_sample(dir);
    fs::remove(case_dir + "/cfgs/f1/rtl_wbc_p2.json");
    std::ofstream(case_dir + "/cfgs/f0/rtl_gamma_p1.json") << "{\"isp_gamma\": \n";
    const tool_run run = run_tool(dir, "replay " + case_dir);
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(split_lines(run.err),
              (lines_t{"isp-case replay: 2 file(s) of " + case_dir + " would stop the library:",
                       "  " + case_dir + "/cfgs/f1/rtl_wbc_p2.json: missing file",
                       "  " + case_dir +
                           "/cfgs/f0/rtl_gamma_p1.json: JSON does not parse: syntax error at "
                           "line 2 column 1 near: ",
                       "run 'isp-case check " + case_dir + "' for every problem of the case"}));
}

/* One broken copy of the sample case per kind of finding: the line that names it, and status 1
 * under --strict ("C" in the line stands for the copy's directory); the sample itself is clean. */
TEST(IspCaseCheck, EveryKindOfFindingIsNamedWithItsPlace) {
    temp_dir clean_dir;
    const tool_run clean = run_tool(clean_dir, "check --strict " ISP_SAMPLE_CASE_DIR);
    EXPECT_EQ(clean.status, 0) << clean.out;
    expect_lines(clean.out, {"summary (224 files read)", "  result: clean"});

    using plant            = std::function<void(const std::string &)>;
    const std::string wbc0 = "/cfgs/f0/rtl_wbc_p0.json";
    auto edit = [](const std::string &file, const std::string &from, const std::string &to) {
        return plant([=](const std::string &c) { replace_in(c + file, from, to); });
    };
    /* in every partition, which gives one entry of what each finds */
    auto d_gain = [](const std::string &value) {
        return plant([=](const std::string &c) {
            for (const char *p : {"0", "1", "2", "3"})
                replace_in(c + "/cfgs/f0/rtl_wbc_p" + p + ".json", "\"d_gain\": {\"val\": 256}",
                           "\"d_gain\": {\"val\": " + value + "}");
        });
    };
    auto write = [](const std::string &file, const std::string &text) {
        return plant([=](const std::string &c) { std::ofstream(c + file) << text; });
    };
    auto remove_reg = [](const std::string &file, const std::string &top, const std::string &reg) {
        return plant([=](const std::string &c) { remove_register(c + file, top, reg); });
    };
    const plant nothing = [](const std::string &) {};
    std::string escaped_ff;
    for (int i = 0; i < 16; ++i) escaped_ff += "\\xFF";
    const struct {
        plant broken;
        std::string args, line;
    } rows[] = {
        {edit(wbc0, "\"offset_in\": {\"val\": 0}", "\"offset_in\": {\"val\": \"12\"}"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:4:26: error: wbc: offset_in.val (u14.6): expected a number, "
         "got the string \"12\"; the field reads as 0 [type]"},
        {edit(wbc0, "\"d_gain\": {\"val\": 256}", "\"d_gain\": {}"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:15: error: wbc: d_gain.val (u10.8): no \"val\" in "
         "\"d_gain\"; the field reads as 0 [missing-field]"},
        {d_gain("-5"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:23: warning: wbc: d_gain.val = -5 (u10.8): the format is "
         "unsigned and the sign is dropped; the hardware gets 5 (0.01953125) (p0-p3) "
         "[sign-dropped]"},
        {d_gain("1048576"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:23: warning: wbc: d_gain.val = 1048576 (u10.8): wider than "
         "u10.8 (18 bits), the register keeps the low 18 bits; the hardware gets 0 (0) (p0-p3) "
         "[too-wide]"},
        {d_gain("100.5"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:23: warning: wbc: d_gain.val = 100.5 (u10.8): the fraction "
         "below one step is truncated to 100; the hardware gets 100 (0.390625) (p0-p3) "
         "[truncated]"},
        {d_gain("99999999999"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:23: warning: wbc: d_gain.val = 99999999999 (u10.8): beyond "
         "the 32-bit range, it saturates to 2147483647, wider than u10.8 (18 bits), the register "
         "keeps the low 18 bits; the hardware gets 262143 (1023.99609375) (p0-p3) [saturated]"},
        {[](const std::string &c) {
             for (const char *p : {"0", "1", "2", "3"})
                 replace_in(c + "/cfgs/f0/rtl_wbc_p" + p + ".json", "\"d_gain\"", "\"d_gian\"");
         },
         "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:5: error: wbc: \"d_gian\" is probably \"d_gain\": the field "
         "d_gain.val (u10.8) reads as 0 (p0-p3) [missing-field]"},
        {edit(wbc0, "\"val3\": 256}", "\"val3\": 256, \"val3\": 300}"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:8:44: warning: wbc: key \"val3\" repeats in \"wb_gain2\": "
         "picojson keeps the last value, 300 (line 8), and ignores 256 (line 8, column 31) "
         "[duplicate-key]"},
        {edit(wbc0, "\"d_gain\": {\"val\": 256}", "\"d_gain\": {\"val\": 300}"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:23: warning: wbc: d_gain.val (u10.8) is not per partition "
         "and rtl_wbc_p0.json differs from the other partitions: p0 300, p1-p3 256; only p3's "
         "256 (rtl_wbc_p3.json) reaches the hardware [partitions-disagree]"},
        {[](const std::string &c) {
             const std::string path = c + "/cfgs/f0/rtl_gamma_p1.json";
             const std::string text = read_file(path);
             std::ofstream(path) << "\xEF\xBB\xBF" << text;
         },
         "gamma",
         "C/cfgs/f0/rtl_gamma_p1.json:1:1: error: gamma: the file starts with a UTF-8 byte-order "
         "mark, which picojson does not accept: the library aborts [byte-order-mark]"},
        {[](const std::string &c) { fs::create_directory(c + "/cfgs/f3"); }, "wbc",
         "C/cfgs/f2: warning: missing frame directory: the frames after it are never read "
         "(cfgs/f3) [frame-directory]"},
        {nothing, "wbc --frames 4",
         "settings: warning: 4 frames asked for and the case holds 2 (cfgs/f0 to cfgs/f1): "
         "frames 2 to 4 replay cfgs/f1 again [frames]"},
        {nothing, "wbc --grid 17x16",
         "settings: warning: grid 17x16 has 272 partitions and the partition index is 8 bits "
         "wide: partitions 256 to 271 read the files of p0 to p15 again [grid]"},
        {nothing, "cc --grid 0x2",
         "settings: error: grid 0x2 is empty: cc report \"partition err!!!.\" [grid]"},
        {nothing, "blc,lin --channels 0",
         "settings: error: channel count 0: blc creates no wrapper, and its deinit, which runs "
         "before lin's, empties the block's wrapper slot: lin's wrapper is never destroyed "
         "[module-order]"},
        {nothing, "lin,blc",
         "settings: error: lin runs before blc with 2 channels: blc takes lin's context (one "
         "wrapper, then its frame index and flag) as its channel wrappers, and the wrapper calls "
         "of channel 1 fail [module-order]"},
        {nothing, "dpc --channels 7",
         "settings: error: channel count 7: dpc accept 0 to 6 channels [channels]"},
        {[](const std::string &c) { fs::remove(c + "/cfgs/f1/rtl_wbc_p2.json"); }, "wbc",
         "C/cfgs/f1/rtl_wbc_p2.json: error: wbc: missing file [missing-file]"},
        // a FIFO without a writer would block the read forever; directories and devices alike
        {[](const std::string &c) {
             fs::remove(c + "/cfgs/f0/rtl_hdr_p0.json");
             ASSERT_EQ(mkfifo((c + "/cfgs/f0/rtl_hdr_p0.json").c_str(), 0600), 0);
         },
         "hdr",
         "C/cfgs/f0/rtl_hdr_p0.json: error: hdr: cannot read the file: a FIFO "
         "[unreadable-file]"},
        // the place and a few bytes, escaped, not the rest of a line of binary
        {edit("/cfgs/f0/rtl_gamma_p1.json", "\"mode\": 0}",
              "\"mode\": 0," + std::string(40, '\xFF') + "}"),
         "gamma",
         "C/cfgs/f0/rtl_gamma_p1.json:3:51: error: gamma: JSON does not parse: syntax error at "
         "line 3 "
         "column 51 near: " +
             escaped_ff + "... [syntax]"},
        {write("/cfgs/f0/rtl_csc_p0.json", "{\"isp_csc\": " + std::string(120, '[') + "}"), "csc",
         "C/cfgs/f0/rtl_csc_p0.json:1:113: error: csc: JSON does not parse: nesting deeper than "
         "picojson's limit of 100 levels at line 1 column 113 [syntax]"},
        {edit(wbc0, "\n}", "\n}\n{\"isp_wbc\": {}}"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:12:1: warning: wbc: content after the root value: picojson "
         "reads the first value and the library ignores the rest without a word "
         "[trailing-content]"},
        {d_gain("1e-400"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json:6:23: warning: wbc: d_gain.val = 1e-400 (u10.8): too small "
         "for a double, it reads as 0; the hardware gets 0 (0) (p0-p3) [underflow]"},
        {[](const std::string &c) { fs::create_directory(c + "/cfgs/f01"); }, "wbc",
         "C/cfgs/f01: warning: frame directory f01 is never read: the library reads frame "
         "directories named f0, f1, ... without leading zeros [frame-directory]"},
        {d_gain("1e999"), "wbc",
         "C/cfgs/f0/rtl_wbc_p0.json: error: wbc: number out of range (picojson raises "
         "overflow_error): line 6: 1e999 (p0-p3) [number-out-of-range]"},
        {write("/cfgs/f0/rtl_csc_p0.json", "[1, 2]"), "csc",
         "C/cfgs/f0/rtl_csc_p0.json:1:1: error: csc: root is not an object: the root is an "
         "array [root-not-object]"},
        // a module reading a block file named after another
        {remove_reg("/cfgs/f0/rtl_dem_p1.json", "isp_dem", "fc_cor1"), "fcc",
         "C/cfgs/f0/rtl_dem_p1.json:1:12: error: fcc: fc_cor1.limit (u8.4): no \"fc_cor1\" "
         "in \"isp_dem\"; the field reads as 0 [missing-field]"},
        {remove_reg("/cfgs/f1/rtl_lsc_p0.json", "isp_lsc", "gb_mesh"), "lsc",
         "C/cfgs/f1/rtl_lsc_p0.json:1:12: error: lsc: gb_mesh (u32): no \"gb_mesh\" in "
         "\"isp_lsc\"; the converter raises picojson's type error [missing-field]"},
        {edit("/cfgs/f0/rtl_clc_p0.json", "\"matrix_list0\": {\"val0\": 256,",
              "\"matrix_list0\": {\"val0\": 5000,"),
         "cc",
         "C/cfgs/f0/rtl_clc_p0.json:12:34: warning: cc: matrix_list[0].matrix_list0.val0 = 5000 "
         "(s3.8): beyond -2048 to 2047 of s3.8, the code wraps; this partition would give the "
         "hardware 904 (3.53125), but only p3's 256 reaches it [wrapped]"},
    };
    for (const auto &r : rows) {
        temp_dir dir;
        const std::string c = copy_sample(dir);
        r.broken(c);
        const tool_run run     = run_tool(dir, "check --strict " + c + " --modules " + r.args);
        const std::string line = r.line.rfind("C/", 0) == 0 ? c + r.line.substr(1) : r.line;
        EXPECT_EQ(run.status, 1) << line;
        EXPECT_TRUE(contains_line(run.out, line)) << line << "\n" << run.out;
    }
}

/* Warnings alone leave the status at 0 without --strict, in check and in replay; replay names
 * them in its summary and does not call the run ok. */
TEST(IspCaseCheck, WarningsFailOnlyUnderStrictAndJsonListsThem) {
    temp_dir dir;
    const std::string c = copy_sample(dir);
    replace_in(c + "/cfgs/f0/rtl_wbc_p0.json", "\"d_gain\": {\"val\": 256}",
               "\"d_gain\": {\"val\": -5}");
    const tool_run check = run_tool(dir, "check --format json --modules wbc " + c);
    ASSERT_EQ(check.status, 0) << check.out;
    const picojson::object doc = isp_test::parse_object(check.out);
    // f0 and f1, four partitions each; two warnings: the value, and p0 against p1 to p3
    EXPECT_EQ(doc.at("files_read").to_str() + " " + doc.at("errors").to_str() + " " +
                  doc.at("warnings").to_str(),
              "8 0 2");
    // the value's own warning says which partition's value the hardware gets instead
    const std::string wbc0 = picojson::value(c + "/cfgs/f0/rtl_wbc_p0.json").serialize();
    EXPECT_EQ(
        doc.at("findings").get<picojson::array>().at(0).serialize(),
        "{\"column\":23,\"field\":\"val\",\"file\":" + wbc0 +
            ",\"format\":\"u10.8\",\"hardware\":\"256\",\"kind\":\"sign-dropped\",\"line\":6,"
            "\"message\":\"d_gain.val = -5 (u10.8): the format is unsigned and the sign is "
            "dropped; this partition would give the hardware 5 (0.01953125), but only p3's "
            "256 reaches it\",\"module\":\"wbc\",\"places\":[{\"channel\":-1,\"file\":" +
            wbc0 +
            ",\"frame\":0,\"partition\":0,\"step\":\"\"}],\"places_not_listed\":0,"
            "\"probably\":\"\",\"register\":\"d_gain\",\"severity\":\"warning\",\"step\":\"\","
            "\"value\":\"-5\"}");

    // the same entries as workflow annotations, the place in their properties
    const tool_run github = run_tool(dir, "check --format github --modules wbc " + c);
    EXPECT_EQ(github.status, 0);
    EXPECT_EQ(split_lines(github.out).at(1),
              "::warning file=" + c +
                  "/cfgs/f0/rtl_wbc_p0.json,line=6,col=23,title=partitions-"
                  "disagree::wbc: d_gain.val (u10.8) is not per partition and "
                  "rtl_wbc_p0.json differs from the other partitions: p0 -5, "
                  "p1-p3 256; only p3's 256 (rtl_wbc_p3.json) reaches the "
                  "hardware");

    const tool_run replay = run_tool(dir, "replay --modules wbc " + c);
    EXPECT_EQ(replay.status, 0);
    expect_lines(replay.out, {"  findings    0 errors, 2 warnings",
                              "  result      not clean: 2 warnings; 1 module, every operation "
                              "returned 0 on 2 frames"});
    const tool_run json = run_tool(dir, "replay -q --format json --modules wbc " + c);
    EXPECT_EQ(json.status, 0);
    const picojson::object summary = isp_test::parse_object(json.out);
    EXPECT_EQ(summary.at("result").to_str(), "not clean");
    EXPECT_EQ(summary.at("findings").serialize(), doc.at("findings").serialize());
    const tool_run strict = run_tool(dir, "replay --strict --modules wbc " + c);
    EXPECT_EQ(strict.status, 1);
    expect_lines(strict.out, {"  result      FAILED: 2 warnings (--strict)"});

    /* a value that cannot be read fails the replay as it fails the check; the dump's manifest
     * and its page state the verdict and the findings */
    replace_in(c + "/cfgs/f0/rtl_wbc_p1.json", "\"d_gain\": {\"val\": 256}",
               "\"d_gain\": {\"val\": \"12\"}");
    const std::string d = dir.path() + "/d";
    EXPECT_EQ(run_tool(dir, "replay --modules wbc --dump " + d + " " + c).status, 1);
    const picojson::value manifest(isp_test::parse_object(read_file(d + "/manifest.json")));
    // the replay's "read json_obj failed" is a place of the check's finding, not an error more
    EXPECT_EQ(manifest.get("verdict").serialize(),
              R"({"errors":1,"result":"FAILED","strict":false,"text":"FAILED: 1 error, 2 )"
              R"(warnings","warnings":2})");
    EXPECT_EQ(manifest.get("findings").get<picojson::array>().size(), 3u);
    ASSERT_EQ(run_tool(dir, "report " + d + " -o " + dir.path() + "/r.html").status, 0);
    const std::string page = read_file(dir.path() + "/r.html");
    EXPECT_NE(page.find("<span class=\"bad\">FAILED: 1 error, 2 warnings</span>"),
              std::string::npos);
    EXPECT_NE(page.find("the field reads as 0 (at setup)</td><td>type</td>"), std::string::npos);
}

/* The C-model files of one load, and the files a partition without register files lacks. */
TEST(IspCaseExport, WritesCModelFilesOrNamesTheMissingRegisterFiles) {
    temp_dir dir;
    const std::string out = dir.path() + "/cmodel";
    const tool_run run    = run_tool(
           dir, "export " ISP_SAMPLE_CASE_DIR " --frame 1 --partition 1 --channel 1 --out " + out);
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_EQ(count_lines_starting(run.out, "  wrote "), 35u);
    expect_lines(run.out, {"  result: 35 C-model files written, 0 warnings, 0 errors"});
    EXPECT_EQ(read_json_file(out + "/wbc_ctrl.json").serialize(),
              R"({"clip_level":1023,"d_gain":1,"wb_gain":[1,1,1,1]})");
    const picojson::value coord = read_json_file(out + "/lsc_coord.json");
    EXPECT_EQ(coord.get("locat").serialize() + coord.get("mesh_start").serialize(), "[0,960][0,8]");
    EXPECT_EQ(read_json_file(out + "/csc_core.json").get("matrix").serialize(),
              "[0.212890625,0.71484375,0.072265625,-0.1142578125,-0.3857421875,0.5,0.5,"
              "-0.4541015625,-0.0458984375]");
    const picojson::array lut =
        read_json_file(out + "/gamma_lut.json").get("lut").get<picojson::array>();
    ASSERT_EQ(lut.size(), 129u);
    EXPECT_EQ(lut.front().get<double>(), 0.0);
    EXPECT_EQ(lut.back().get<double>(), 255.0);

    const tool_run missing = run_tool(
        dir, "export " ISP_SAMPLE_CASE_DIR " --frame 0 --partition 9 --out " + dir.path() + "/out");
    EXPECT_EQ(missing.status, 1);
    expect_lines(missing.out,
                 {"  error: " ISP_SAMPLE_CASE_DIR "/cfgs/f0/rtl_wbc_p9.json: missing file",
                  "  error: " ISP_SAMPLE_CASE_DIR "/cfgs/f0/rtl_dpc_p9_chn0.json: missing file",
                  "  result: 0 C-model files written, 0 warnings, 10 errors"});
}

TEST(IspCaseCommandLine, HelpUsageErrorsAndMissingCase) {
    temp_dir dir;
    for (const char *command : {"replay", "check", "export", "diff", "batch", "report"}) {
        const tool_run help = run_tool(dir, std::string(command) + " --help");
        EXPECT_EQ(help.status, 0) << command;
        const size_t line = help.out.find("\nExit status: 0 ");  // its own, in the last line
        EXPECT_EQ(help.out.find('\n', line + 1), help.out.size() - 1) << command;
    }
    EXPECT_NE(run_tool(dir, "--help").out.find("Exit status of every subcommand:\n  0  success"),
              std::string::npos);
    for (const char *usage :
         {"", "batch " ISP_SAMPLE_CASE_DIR " --shard 3/2", "replay " ISP_SAMPLE_CASE_DIR " -q -v",
          "replay " ISP_SAMPLE_CASE_DIR " --grid 2by2",
          "replay " ISP_SAMPLE_CASE_DIR " --log-level loud",
          "export " ISP_SAMPLE_CASE_DIR " --partition 0",
          // an empty path is a mistake, not "none"
          "replay " ISP_SAMPLE_CASE_DIR " --dump ''", "batch " ISP_SAMPLE_CASE_DIR " --junit ''"})
        EXPECT_EQ(run_tool(dir, usage).status, 2) << usage;
    const tool_run unknown = run_tool(dir, "check " ISP_SAMPLE_CASE_DIR " --modules cc,gama");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.err.rfind("--modules: unknown module \"gama\"; did you mean \"gamma\"?", 0),
              0u);
    const tool_run no_case = run_tool(dir, "batch " + dir.path());
    EXPECT_EQ(no_case.status, 3);
    EXPECT_EQ(no_case.err,
              "isp-case batch: no case (a directory holding cfgs/) under " + dir.path() + "\n");
    const tool_run missing = run_tool(dir, "replay " + dir.path() + "/nowhere");
    EXPECT_EQ(missing.status, 3);
    EXPECT_EQ(missing.err, "isp-case replay: " + dir.path() + "/nowhere: no such case directory\n");
}

/* Output that cannot be written, standard output included (a full disk, a closed descriptor):
 * one line on standard error and status 1, never an abort or a module failed in its place. */
TEST(IspCaseOutput, FailedWritesAreOneLineAndStatusOne) {
    temp_dir dir;
    const std::string full = "No space left on device";
    const struct {
        std::string args, err;
    } rows[] = {
        {"replay " ISP_SAMPLE_CASE_DIR " >/dev/full",
         "isp-case replay: cannot write the standard output: " + full},
        {"check --format json " ISP_SAMPLE_CASE_DIR " >/dev/full",
         "isp-case check: cannot write the standard output: " + full},
        {"replay " ISP_SAMPLE_CASE_DIR " >&-",
         "isp-case replay: cannot write the standard output: Bad file descriptor"},
        {"batch " ISP_SAMPLE_CASE_DIR " --junit /dev/full >/dev/null",
         "isp-case batch: /dev/full: cannot be written"},
    };
    for (const auto &row : rows) {
        const int raw = std::system((ISP_CASE_EMULATOR " '" ISP_CASE_TOOL "' " + row.args + " 2>'" +
                                     dir.path() + "/tool.err'")
                                        .c_str());
        EXPECT_EQ(WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, 1) << row.args;
        EXPECT_EQ(read_file(dir.path() + "/tool.err"), row.err + "\n") << row.args;
    }
}

/* A report page or a JUnit file read as XML, elements in the order they close: every element's
 * name, attributes and text (its own and its children's, entities left as written). Fails the
 * test on a tag that does not nest. */
struct xml_element {
    std::string name, text;
    std::map<std::string, std::string> attributes;
};

std::vector<xml_element> parse_xml(const std::string &page) {
    std::vector<xml_element> done, open;
    size_t at = page.find('<');
    while (at != std::string::npos && (page[at + 1] == '?' || page[at + 1] == '!'))
        at = page.find('<', at + 1);  // the XML declaration, the document type
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
            xml_element e;
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

/* The given attribute, or the text when attribute is empty, of the elements called name whose
 * text holds part. */
lines_t of_all(const std::vector<xml_element> &elements, const std::string &name,
               const std::string &attribute = "", const std::string &part = "") {
    lines_t out;
    for (const xml_element &e : elements)
        if (e.name == name && e.text.find(part) != std::string::npos) {
            if (attribute.empty())
                out.push_back(e.text);
            else if (e.attributes.count(attribute))
                out.push_back(e.attributes.at(attribute));
        }
    return out;
}

size_t count_of(const lines_t &items, const std::string &item) {
    return size_t(std::count(items.begin(), items.end(), item));
}

/* Copies of the sample case: one that passes with warnings, one with a register file that does
 * not parse, one whose register-file paths have 255 characters, which the library cuts: the two
 * cases the library would stop on fail alone, named in the summary and in the JUnit file with
 * their findings. */
TEST(IspCaseBatch, BrokenCasesFailAloneAndTheJUnitNamesThem) {
    temp_dir dir;
    const std::string suite = dir.path() + "/suite";
    if (suite.size() > 200) GTEST_SKIP() << "temporary directory too long: " << dir.path();
    // the longest register-file paths, cfgs/fN/rtl_bl_det_pP_chnC.json, get 255 characters
    const std::string too_long =
        std::string(223 - suite.size() - std::strlen("//long"), 'p') + "/long";
    for (const std::string name : {"good", "broken", too_long.c_str()})
        copy_sample(dir, "suite/" + name);
    std::ofstream(suite + "/broken/cfgs/f0/rtl_gamma_p1.json") << "{\"isp_gamma\": \n";
    replace_in(suite + "/good/cfgs/f0/rtl_wbc_p0.json", "\"d_gain\": {\"val\": 256}",
               "\"d_gain\": {\"val\": -5}");

    const std::string junit = dir.path() + "/junit.xml", json = dir.path() + "/batch.json";
    const tool_run run =
        run_tool(dir, "batch " + suite + " -j 2 --frames 1 --junit " + junit + " --json " + json);
    ASSERT_EQ(run.status, 1) << run.out << run.err;
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(count_lines_starting(run.out, "ok (2 warnings)  good "), 1u);
    EXPECT_EQ(count_lines_starting(run.out, "FAILED  "), 2u);
    const std::string gamma_finding =
        "cfgs/f0/rtl_gamma_p1.json:2:1: error: gamma: JSON does not parse: syntax error at line 2 "
        "column 1 near:  [syntax]";
    const std::string broken_reason = "check: 1 error, 0 warnings (" + gamma_finding +
                                      "); replay: 1 file(s) of " + suite +
                                      "/broken would stop the library";
    // one entry for the twelve files, with where they are
    const std::string long_reason =
        "check: 1 error, 0 warnings (cfgs/f0/rtl_bl_det_p0_chn0.json: error: bl_det: the path has "
        "255 characters and the library cuts every path at 254: it would not find the file "
        "(f0-f1 c0-c1 p0-p3) [path-too-long]); replay: 12 file(s) of " +
        suite + "/" + too_long + " would stop the library";
    EXPECT_EQ(last_lines(run.out, 7),
              (lines_t{"summary", "  cases       3 run, 1 passed (1 with warnings), 2 failed",
                       "  failed      broken: " + broken_reason,
                       "  failed      " + too_long + ": " + long_reason, "  junit       " + junit,
                       "  json        " + json, "  result      FAILED"}));
    const picojson::value good = isp_test::parse_object(read_file(json))["cases"].get(1);
    EXPECT_EQ(good.get("verdict").to_str() + ", " + good.get("replay").get("verdict").to_str(),
              "ok (2 warnings), not clean: 2 warnings");

    const std::string xml                   = read_file(junit);
    const std::vector<xml_element> elements = parse_xml(xml);
    EXPECT_EQ(of_all(elements, "testsuite", "tests"), lines_t{"3"});
    EXPECT_EQ(of_all(elements, "testsuite", "failures"), lines_t{"2"});
    EXPECT_EQ(of_all(elements, "testcase", "name"), (lines_t{"broken", "good", too_long}));
    EXPECT_EQ(of_all(elements, "failure", "message"), (lines_t{broken_reason, long_reason}));
    EXPECT_EQ(of_all(elements, "property", "value"), (lines_t{"1", "0", "0", "2", "1", "0"}));
    // the tail of the output: the findings as the check printed them
    EXPECT_NE(xml.find("\n" + suite + "/broken/" + gamma_finding + "\n"), std::string::npos);
}

TEST(IspCaseBatch, TwoShardsSplitTheSortedSuiteAndCoverItOnce) {
    temp_dir dir;
    // a case's own subdirectories are not searched; a directory without cfgs/ is no case
    for (const char *name : {"b/cfgs", "b/inner/cfgs", "a/y/cfgs", "c/cfgs", "a/x/cfgs", "d"})
        dir.mkdir(std::string("suite/") + name);
    // each case once by its real path, under its own name; a loop is not followed
    fs::create_directory_symlink("b", dir.path() + "/suite/z_alias");
    fs::create_directory_symlink("..", dir.path() + "/suite/d/loop");
    std::vector<lines_t> shards;
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
    EXPECT_EQ(shards, (std::vector<lines_t>{{"a/x", "b"}, {"a/y", "c"}}));
}

/* The tool started in a process group of its own, its standard output into a pipe read here
 * (closed after the first `lines` lines when given) and its standard error into a file. */
struct started_tool {
    pid_t pid = -1;
    int out   = -1;
};
started_tool start_tool(const temp_dir &dir, const std::string &args) {
    int ends[2];
    if (pipe(ends) != 0) return {};
    const pid_t pid = fork();
    if (pid == 0) {
        setpgid(0, 0);
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]), close(ends[1]);
        const std::string command = "exec " ISP_CASE_EMULATOR " '" ISP_CASE_TOOL "' " + args +
                                    " 2>'" + dir.path() + "/tool.err'";
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    setpgid(pid, pid);
    return {pid, ends[0]};
}
std::string read_line(int fd) {
    std::string line;
    char c = 0;
    while (read(fd, &c, 1) == 1 && c != '\n') line += c;
    return line;
}
/* The exit status, once the tool and every process of its group have ended. */
int end_of(const started_tool &t) {
    int raw = 0;
    waitpid(t.pid, &raw, 0);
    EXPECT_NE(kill(-t.pid, 0), 0) << "a child of the batch outlived it";
    return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
}

/* Cases that would run for hours (a million frames): the time limit kills them; SIGTERM, and a
 * reader that goes away, end the children under way and still leave the reports, every case
 * not finished marked interrupted. */
TEST(IspCaseBatch, TimeLimitSignalsAndAClosedOutputEndTheChildren) {
    temp_dir dir;
    const std::string a = copy_sample(dir, "suite/a"), b = copy_sample(dir, "suite/b");
    const std::string suite = dir.path() + "/suite", junit = dir.path() + "/j.xml";
    const std::string slow = "batch " + suite + " --frames 1000000 --junit " + junit;

    const tool_run limited = run_tool(dir, slow + " --timeout 1 -j2");
    EXPECT_EQ(limited.status, 1);
    const std::string limit = ": timed out after 1 s";  // in the check or the replay
    size_t timed_out        = 0;
    for (const std::string &line : split_lines(limited.out))
        timed_out += line.rfind("  failed      ", 0) == 0 && line.size() > limit.size() &&
                     line.compare(line.size() - limit.size(), limit.size(), limit) == 0;
    EXPECT_EQ(timed_out, 2u) << limited.out;
    EXPECT_EQ(of_all(parse_xml(read_file(junit)), "failure", "type"),
              (lines_t{"timed out", "timed out"}));

    fs::remove(junit);
    const std::string json     = dir.path() + "/j.json";
    const started_tool stopped = start_tool(dir, slow + " --timeout 0 -j2 --json " + json);
    EXPECT_EQ(read_line(stopped.out), "batch of 2 cases, 2 at a time");
    usleep(300000);  // the children under way, most likely
    kill(stopped.pid, SIGTERM);
    EXPECT_EQ(end_of(stopped), 1);
    EXPECT_EQ(read_file(dir.path() + "/tool.err"),
              "isp-case batch: interrupted by SIGTERM: 0 of 2 cases finished\n");
    EXPECT_EQ(of_all(parse_xml(read_file(junit)), "failure", "message"),
              (lines_t{"interrupted by SIGTERM", "interrupted by SIGTERM"}));
    const picojson::value summary = isp_test::parse_object(read_file(json)).at("summary");
    EXPECT_EQ(summary.get("failed").get<double>(), 0);
    EXPECT_EQ(summary.get("interrupted").get<double>(), 2);
    close(stopped.out);

    fs::remove(junit);
    const started_tool headed = start_tool(dir, slow + " --timeout 1 -j1");
    EXPECT_EQ(read_line(headed.out), "batch of 2 cases, 1 at a time");
    close(headed.out);  // as `| head -1` does
    EXPECT_EQ(end_of(headed), 1);
    EXPECT_EQ(read_file(dir.path() + "/tool.err"),
              "isp-case batch: standard output closed: 1 of 2 cases finished\n");
    EXPECT_EQ(of_all(parse_xml(read_file(junit)), "failure", "type"),
              (lines_t{"timed out", "interrupted"}));
}

/* The grid a case's partition count gives when none is asked for: the squarest one. */
TEST(IspCaseSettings, DefaultGridIsTheSquarest) {
    int h = -1, v = -1;
    const int squarest[][3] = {{0, 1, 1}, {1, 1, 1},  {4, 2, 2}, {6, 3, 2},
                               {7, 7, 1}, {12, 4, 3}, {15, 5, 3}};
    for (const auto &row : squarest) {
        isp_case::default_grid(row[0], h, v);
        EXPECT_EQ((std::vector<int>{h, v}), (std::vector<int>{row[1], row[2]})) << row[0];
    }
}

TEST(IspCaseSettings, WrapKeepsItemsWholeAndCommasAttached) {
    EXPECT_EQ(isp_case::wrap({"ab", "cd", "ef"}, 7), (lines_t{"ab, cd,", "ef"}));
    EXPECT_EQ(isp_case::wrap({"abcdefghij", "k"}, 4), (lines_t{"abcdefghij,", "k"}));
    EXPECT_TRUE(isp_case::wrap({}, 10).empty());
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
    EXPECT_EQ(expected.size(), 236u);  // 2 frames x (23 files + 3 x 2 channel files) x 4 + 4
    EXPECT_TRUE(tree(generated) == expected);
}

/* A template holds every field the block's rows read, inside its range: check reads it with
 * no missing or ignored key and no value the hardware would get changed. */
TEST(IspCaseRegmap, TemplatesReadBackCleanAndTheMapNamesTheLastGammaPoint) {
    temp_dir dir;
    const std::string c = dir.path() + "/case";
    fs::create_directories(c + "/cfgs/f0");
    for (const char *made : {"clc --value min", "gamma --value max", "lsc --value max"}) {
        const std::string block = std::string(made).substr(0, std::string(made).find(' '));
        EXPECT_EQ(run_tool(dir, std::string("template ") + made + " -o " + c + "/cfgs/f0/rtl_" +
                                    block + "_p0.json")
                      .status,
                  0)
            << made;
    }
    const tool_run check = run_tool(dir, "check --format json --modules cc,gamma,lsc " + c);
    EXPECT_EQ(check.status, 0) << check.out << check.err;
    const picojson::object doc = isp_test::parse_object(check.out);
    EXPECT_EQ(doc.at("files_read").to_str() + " " + doc.at("errors").to_str() + " " +
                  doc.at("warnings").to_str(),
              "3 0 0");

    const tool_run gamma = run_tool(dir, "regmap gamma hdr");
    EXPECT_EQ(gamma.status, 0);
    EXPECT_EQ(count_lines_starting(gamma.out, "  isp_gamma."), 139u);
    EXPECT_TRUE(contains_line(gamma.out,
                              "hdr (isp_hdr): no register map: its converters read no "
                              "field yet"));
    const std::string last = gamma.out.substr(gamma.out.find("  isp_gamma.gam_lut_65.low "));
    EXPECT_NE(last.substr(0, last.find('\n')).find(" gam_lut[128] "), std::string::npos);
    // scripts read the same fields; a module stands for its block
    const tool_run json           = run_tool(dir, "regmap --format json wbc cc");
    const picojson::object map    = isp_test::parse_object(json.out);
    const picojson::array &blocks = map.at("blocks").get<picojson::array>();
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[0].get("fields").get<picojson::array>().size(), 9u);
    EXPECT_EQ(blocks[1].get("top_key").to_str(), "isp_clc");
    EXPECT_EQ(split_lines(run_tool(dir, "regmap --format csv wbc").out).size(), 10u);
    const tool_run where = run_tool(dir, "where 'gamma.lut.gam_lut[129]'");
    EXPECT_EQ(where.status, 1);
    EXPECT_EQ(where.err, "isp-case where: no register row fills gamma.lut.gam_lut[129]\n");
    EXPECT_EQ(run_tool(dir, "regmap gama").status, 2);
    EXPECT_NE(run_tool(dir, "regmap gama").err.find("did you mean \"gamma\"?"), std::string::npos);
}

/* A dump stands for the files its run read: its case, with its modules, grid and frames. */
TEST(IspCaseCoverage, ADumpIsReadAsItsCaseWithTheSettingsOfItsRun) {
    temp_dir dir;
    const std::string c = copy_sample(dir), dump = dir.path() + "/dump";
    ASSERT_EQ(run_tool(dir, "replay -q --modules wbc --frames 1 --dump " + dump + " " + c).status,
              0);
    const tool_run json = run_tool(dir, "coverage --format json " + dump);
    EXPECT_EQ(json.status, 0) << json.err;
    const picojson::object doc = isp_test::parse_object(json.out);
    EXPECT_EQ(doc.at("files_read").to_str() + " " + doc.at("blocks").serialize() + " " +
                  doc.at("summary").serialize(),
              "8 [\"wbc\"] {\"at_max\":0,\"at_min\":3,\"constant\":9,\"fields\":9,\"held\":9}");

    std::ofstream(c + "/cfgs/f1/rtl_wbc_p2.json") << "{";
    const std::string page = dir.path() + "/page.html";
    const tool_run broken  = run_tool(dir, "coverage --format html -o " + page + " " + dump);
    EXPECT_EQ(broken.status, 1);
    EXPECT_EQ(broken.err, "isp-case coverage: " + c +
                              "/cfgs/f1/rtl_wbc_p2.json: JSON does not parse: syntax error at "
                              "line 1 column 2 near: ; its fields are not counted\n");
    EXPECT_NE(read_file(page).find("<li>unreadable: 1 file, their fields not counted</li>"),
              std::string::npos);

    fs::remove_all(c);
    const tool_run gone = run_tool(dir, "coverage " + dump);
    EXPECT_EQ(gone.status, 3);
    EXPECT_EQ(gone.err, "isp-case coverage: " + dump + ": the case it was replayed from, " + c +
                            ", is not there; coverage reads a case's register files\n");
}

/* The dump of a replay holds, push by push, the bytes the simulated wrapper copied (with the
 * host's pointers cleared) and every member decoded. */
TEST(IspCaseDump, RawBytesAndDecodedMembersOfEachKind) {
    temp_dir dir;
    // f2: f1 with the white-balance digital gain doubled, read by frames 2 and 3
    const std::string case_dir = copy_sample(dir);
    fs::copy(case_dir + "/cfgs/f1", case_dir + "/cfgs/f2");
    for (int p = 0; p < 4; ++p)
        edit_json(case_dir + "/cfgs/f2/rtl_wbc_p" + std::to_string(p) + ".json",
                  [](picojson::object &root) {
                      root["isp_wbc"].get<picojson::object>()["d_gain"] =
                          picojson::value(picojson::object{{"val", picojson::value(512.0)}});
                  });
    isp_case::replay_settings settings;
    settings.run.case_path = case_dir;
    settings.run.part_h = settings.run.part_v = 2;
    settings.run.channels                     = 2;
    settings.run.frames                       = 3;
    for (const char *name : {"wbc", "cc", "lsc", "gamma"})
        settings.run.modules.push_back(isp_case::find_module(name));
    settings.keep_bytes = settings.keep_platform_records = true;
    const std::string dump                               = dir.mkdir("dump");
    isp_case::dump_writer writer(dump, settings);
    std::vector<std::string> pushed; /* every push's bytes, pointer members cleared */
    const isp_case::replay_result result =
        isp_case::replay(settings, [&](const isp_case::replay_step &step) {
            writer.write_step(step);
            for (const isp_case::module_step &m : step.modules)
                for (const isp_case::op_outcome &op : m.ops)
                    for (const isp_case::pushed_group &p : op.pushes) {
                        const std::vector<uint8_t> raw = isp_case::without_pointers(
                            p.group ? p.group->c_type : nullptr, p.bytes);
                        pushed.emplace_back(raw.begin(), raw.end());
                    }
        });
    isp_case::run_record record;
    EXPECT_TRUE(writer.finish(record, isp_case::judge(record, false)));
    EXPECT_TRUE(result.platform_problems.empty());
    const isp_case::dump_summary summary = writer.summary();
    EXPECT_TRUE(summary.problems.empty());
    // 4 loads x (3 wbc + 3 cc + 3 lsc + 3 gamma groups); setup and frame 1 give 13 distinct
    // groups and the two partition-size arrays behind cc init, frame 2 one more wbc ctrl, each
    // decoded once; no C-model file for cc init and lsc mesh, one per partition for lsc coord
    EXPECT_EQ((std::vector<size_t>{summary.pushes, summary.raw_objects, summary.decoded_files,
                                   summary.cmodel_files}),
              (std::vector<size_t>{48, 16, 14, 14}));

    // the store read back is the run, push for push
    const isp_case::dump d = isp_case::open_dump(dump);
    ASSERT_EQ(d.pushes.size(), pushed.size());
    for (size_t i = 0; i < pushed.size(); ++i)
        EXPECT_EQ(isp_case::read_push(d, d.pushes[i]).bytes, pushed[i]) << i;
    const auto push_of = [&](const std::string &step, const std::string &module, uint32_t cmd) {
        for (const isp_case::dump_push &p : d.pushes)
            if (isp_case::step_dir(p.step) == step && p.module == module && p.command == cmd)
                return p;
        ADD_FAILURE() << step << " " << module << " " << cmd;
        return isp_case::dump_push();
    };
    // d_gain 1.0 in u10.8, four gains 1.0 in u4.8, clip level 1023.0 in u14.6, little-endian
    EXPECT_EQ(isp_case::read_push(d, push_of("frame1", "wbc", 1)).bytes,
              std::string("\x00\x01\x00\x00\x00\x01\x00\x01\x00\x01\x00\x01\xc0\xff\x00\x00", 16));
    EXPECT_EQ(read_file(dump + "/" + push_of("frame1", "wbc", 1).cmodel.at(0)),
              "{\n  \"clip_level\": 1023,\n  \"d_gain\": 1,\n  \"wb_gain\": [\n    1,\n    1,\n"
              "    1,\n    1\n  ]\n}\n\n");
    // the colour-correction init group: clock bit 0, its two pointers cleared; the partition
    // sizes behind them: 960 x 540 for each of 4 partitions
    const isp_case::dump_push cc_init = push_of("setup", "cc", 3);
    EXPECT_EQ(isp_case::read_push(d, cc_init).bytes,
              std::string(sizeof(_isp_clc_user_init_t), '\0'));
    ASSERT_EQ(cc_init.pointees.size(), 2u);
    EXPECT_EQ(d.store.read(cc_init.pointees[0].second),
              std::string("\xc0\x03\xc0\x03\xc0\x03\xc0\x03", 8));

    const unsigned ptr = sizeof(void *);
    const struct {
        std::string file, member, expected;
    } members[] = {
        {"setup/wbc/cmd01_ctrl", "d_gain",
         R"({"code":256,"count":1,"elem_size":4,"format":"u10.8","name":"d_gain","offset":0,)"
         R"("per_partition":false,"pointer":false,"register":"isp_wbc.d_gain.val",)"
         R"("signed":false,"value":1})"},
        {"frame3/wbc/cmd01_ctrl", "wb_gain",
         R"({"codes":[256,256,256,256],"count":4,"elem_size":2,"format":"u4.8","name":"wb_gain",)"
         R"("offset":4,"per_partition":false,"pointer":false,)"
         R"("register":"isp_wbc.wb_gain0.val0","registers":["isp_wbc.wb_gain0.val0",)"
         R"("isp_wbc.wb_gain0.val1","isp_wbc.wb_gain2.val2","isp_wbc.wb_gain2.val3"],)"
         R"("signed":false,"values":[1,1,1,1]})"},
        // only the grid's four partitions of the 256 elements
        {"frame1/lsc/cmd01_setup", "img_size_h",
         R"({"codes":[960,960,960,960],"count":256,"elem_size":2,"format":"u14",)"
         R"("name":"img_size_h","offset":522,"per_partition":true,"pointer":false,)"
         R"("register":"isp_lsc.img_size.h","registers":["isp_lsc.img_size.h",)"
         R"("isp_lsc.img_size.h","isp_lsc.img_size.h","isp_lsc.img_size.h"],)"
         R"("signed":false,"values":[960,960,960,960]})"},
        {"setup/cc/cmd03_init", "part_size_v",
         isp_test::format(
             R"({"code":0,"count":1,"elem_size":%u,"format":"u14","name":"part_size_v",)"
             R"("offset":%u,"per_partition":false,"pointer":true,"register":"isp_clc.part_size.v",)"
             R"("signed":false,"target":{"codes":[540,540,540,540],"elem_size":2,)"
             R"("per_partition":true}})",
             ptr, 2 * ptr)},
    };
    for (const auto &row : members) {
        const std::string step = row.file.substr(0, row.file.find('/'));
        const std::string module =
            row.file.substr(step.size() + 1, row.file.rfind('/') - step.size() - 1);
        const uint32_t cmd = uint32_t(std::stoul(row.file.substr(row.file.rfind("cmd") + 3, 2)));
        const picojson::value decoded =
            read_json_file(dump + "/" + push_of(step, module, cmd).json);
        std::string found;
        for (const picojson::value &m : decoded.get("members").get<picojson::array>())
            if (m.get("name").to_str() == row.member) found = m.serialize();
        EXPECT_EQ(found, row.expected) << row.file << " " << row.member;
    }

    // frame 2 is frame 1 but for wbc ctrl (the first push), frame 3 repeats frame 2; the
    // pushes name their step's register files without listing them
    const picojson::value manifest = read_json_file(dump + "/manifest.json");
    const picojson::array &steps   = manifest.get("steps").get<picojson::array>();
    ASSERT_EQ(steps.size(), 4u);
    EXPECT_EQ(steps[2].get("except").serialize(),
              R"({"0":{"block":"wbc","channel":0,"cmd":1,"files":{"cmodel":["decoded\/wbc\/)"
              R"(cmd01_ctrl-48011ca27b5022a4.cmodel.json"],"json":"decoded\/wbc\/cmd01_ctrl-)"
              R"(48011ca27b5022a4.json"},"group":"ctrl","module":"wbc","object":"48011ca27b50)"
              R"(22a47727f7ab7cf66e6809a5322a77aeb8dc689444f1793d5ebb","size":16,)"
              R"("type":"_isp_wbc_user_ctrl_t"}})");
    EXPECT_EQ(steps[3].serialize(),
              R"({"same_as":2,"step":{"dir":2,"frame":3,"phase":"frame"},"step_dir":"frame3"})");
    EXPECT_EQ(
        read_file(dump + "/index.txt").substr(read_file(dump + "/index.txt").find("frame 2")),
        "frame 2 (f2): the pushes of frame 1, but\n  wbc/cmd01_ctrl                           "
        "decoded/wbc/cmd01_ctrl-48011ca27b5022a4.json\nframe 3 (f2 again): the pushes of "
        "frame 2\n");
}

/* Two dumps written at once into one store keep each structure once; a damaged store is refused
 * naming the pack or the index and the object. */
TEST(IspCaseDump, SharedStoreKeepsStructuresOnceAndRefusesDamage) {
    temp_dir dir;
    const std::string base   = dir.path() + "/base",
                      replay = ISP_CASE_EMULATOR " '" ISP_CASE_TOOL "' replay " ISP_SAMPLE_CASE_DIR
                                                 " -q",
                      raw_only = " --raw-only --store " + base + " --dump " + base + "/";
    ASSERT_EQ(std::system((replay + raw_only + "a >/dev/null & " + replay + raw_only +
                           "b >/dev/null; wait $!")
                              .c_str()),
              0);
    const std::string own = dump_of(dir, "own", ISP_SAMPLE_CASE_DIR, "--raw-only");
    std::vector<std::string> files;
    for (const auto &[name, bytes] : tree(base)) files.push_back(name);
    EXPECT_EQ(files, (std::vector<std::string>{"a/manifest.json", "b/manifest.json", "objects.idx",
                                               "objects.pack"}));
    EXPECT_EQ(read_json_file(base + "/a/manifest.json").get("store").to_str(), "..");
    // the store is what one dump alone keeps, however the two writers interleaved
    for (const char *file : {"/objects.idx", "/objects.pack"})
        EXPECT_EQ(fs::file_size(base + file), fs::file_size(own + file)) << file;
    for (const char *name : {"/a", "/b"})
        EXPECT_EQ(run_tool(dir, "diff " + own + " " + base + name).status, 0) << name;

    const std::string idx = read_file(own + "/objects.idx");
    std::string pack      = read_file(own + "/objects.pack");
    pack[0] ^= 1;  // the first object: ifa setup's 4 bytes
    std::ofstream(own + "/objects.pack", std::ios::binary) << pack;
    tool_run run = run_tool(dir, "diff " + own + " " + base + "/a");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err, "isp-case diff: " + own + "/objects.pack: object " + idx.substr(0, 64) +
                           " (4 bytes at 0) does not match its hash\n");

    const std::string last = idx.substr(idx.rfind('\n', idx.size() - 2) + 1);
    std::ofstream(base + "/objects.idx", std::ios::binary)
        << idx.substr(0, idx.size() - last.size());
    run = run_tool(dir, "diff " + base + "/a " + base + "/b");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err.substr(0, run.err.find(": push ")),
              "isp-case diff: " + base + "/a/manifest.json");
    EXPECT_EQ(run.err.substr(run.err.find(": object ")),
              ": object " + last.substr(0, 64) + " is not in the store " + base + "/objects.idx\n");
}

/* One register value changed in f1, one module left out, a damaged dump; two dumps of one case
 * are the same bytes. Differences are named by the step and the frame directory it read. */
/* The white-balance digital gain of cfgs/f1 (or another frame directory) doubled (code 256 to
 * 512) in every partition. */
void double_wbc_gain(const std::string &case_dir, const std::string &frame_dir = "f1") {
    for (int p = 0; p < 4; ++p)
        edit_json(case_dir + "/cfgs/" + frame_dir + "/rtl_wbc_p" + std::to_string(p) + ".json",
                  [](picojson::object &root) {
                      root["isp_wbc"].get<picojson::object>()["d_gain"] =
                          picojson::value(picojson::object{{"val", picojson::value(512.0)}});
                  });
}

TEST(IspCaseDiff, NamesEveryDifferenceByStepAndExitsByOutcome) {
    temp_dir dir;
    const std::string changed = copy_sample(dir);
    double_wbc_gain(changed);
    std::string all_but_gamma;
    for (const isp_case::module_info *m : isp_case::pipeline_order())
        if (std::string(m->name) != "gamma")
            all_but_gamma += std::string(all_but_gamma.empty() ? "" : ",") + m->name;
    const std::string a = dump_of(dir, "a", ISP_SAMPLE_CASE_DIR);
    const std::string b = dump_of(dir, "b", changed);
    const std::string c = dump_of(dir, "c", ISP_SAMPLE_CASE_DIR, "--modules " + all_but_gamma);
    EXPECT_TRUE(tree(a) == tree(dump_of(dir, "a2", ISP_SAMPLE_CASE_DIR)));  // byte for byte
    const std::string cut = dump_of(dir, "cut", ISP_SAMPLE_CASE_DIR);
    // the gain doubled from frame 2 on: B's frames 2 and 3 differ from what A repeats of frame 1,
    // equal to B's frame 1
    const std::string late = copy_sample(dir, "late");
    fs::copy(late + "/cfgs/f1", late + "/cfgs/f2");
    double_wbc_gain(late, "f2");
    const std::string a3 = dump_of(dir, "a3", ISP_SAMPLE_CASE_DIR, "--frames 3");
    const std::string l3 = dump_of(dir, "l3", late, "--frames 3");
    fs::resize_file(cut + "/objects.pack", 7);
    const std::string broken = copy_sample(dir, "broken");
    std::ofstream(broken + "/cfgs/f1/rtl_wbc_p2.json") << "{";
    /* the replays of cases go to a temporary directory of the test's, left empty */
    const std::string scratch = dir.path() + "/tmp";
    fs::create_directory(scratch);
    const char *tmpdir           = std::getenv("TMPDIR");
    const std::string old_tmpdir = tmpdir ? tmpdir : "";
    setenv("TMPDIR", scratch.c_str(), 1);

    // frame 2 reads f1 again: one entry for both frames
    const std::string files  = " in cfgs/f1/rtl_wbc_p0.json, cfgs/f1/rtl_wbc_p1.json and 2 more",
                      d_gain = "    ctrl.d_gain at isp_wbc.d_gain.val" + files +
                               ": code 256 | 512, value 1 | 2";
    const std::string two =
        "summary: 465 pushes in A, 465 in B; 2 differ (2 differences), 0 only "
        "in A, 0 only in B";
    const struct {
        std::string args;
        int status;
        lines_t out;
        std::string err;
    } cases[] = {
        {a + " " + a,
         0,
         {"summary: 465 pushes in A, 465 in B; 0 differ (0 differences), 0 only in A, 0 only in B",
          "result: identical"},
         ""},
        {a + " " + b,
         1,
         {"frames 1-2 (f1, then f1 again)", "  wbc", d_gain, two, "result: different"},
         ""},
        {a3 + " " + l3 + " --stat",
         1,
         {"  wbc     ctrl   2            2       0          0",
          "summary: 620 pushes in A, 620 in B; 2 differ (2 differences), 0 only in A, 0 only in B"},
         ""},
        // codes reach the hardware: no tolerance hides them
        {a + " " + b + " --tolerance 1000", 1, {"result: different"}, ""},
        {a + " " + b + " --frame 2",
         1,
         {"frame 2 (f1 again)", d_gain,
          "summary: 155 pushes in A, 155 in B; 1 differ (1 differences), 0 only in A, 0 only in B"},
         ""},
        {a + " " + c,
         1,
         {"setup (f0) to frame 2 (f1 again)", "  gamma",
          "    only in A: cmd01_setup, cmd02_dither, cmd03_lut",
          "summary: 465 pushes in A, 456 in B; 0 differ (0 differences), 9 only in A, 0 only in B"},
         ""},
        {a + " " + b + " --first",
         1,
         {"first divergence: frame 1 (f1): wbc.ctrl.d_gain at isp_wbc.d_gain.val" + files +
              ": code 256 | 512, value 1 | 2",
          "result: different"},
         ""},
        {a + " " + b + " --stat",
         1,
         {"  module  group  differences  pushes  only in A  only in B",
          "  wbc     ctrl   2            2       0          0", two},
         ""},
        {a + " " + b + " --quiet", 1, {}, ""},
        // cases are replayed for the comparison, a case beside a dump as that dump was made
        {std::string(ISP_SAMPLE_CASE_DIR) + " " + changed, 1, {d_gain, two}, ""},
        {std::string(ISP_SAMPLE_CASE_DIR) + " " + c + " -q", 0, {}, ""},
        {a + " " + b + " --tolerance nan", 2, {}, "--tolerance: nan is not a finite number\n"},
        {a + " " + b + " --first --stat", 2, {}, "--first excludes --stat\n"},
        {a + " " + cut,
         3,
         {},
         "isp-case diff: " + cut + "/objects.pack: 7 bytes, too short for object " +
             "be1e25032d4050e17998904d09610417e4a77316fddefdd9e5b5ee7ff329b133 (408 bytes at 4) "
             "that " +
             cut + "/objects.idx lists\n"},
        {broken + " " + a,
         3,
         {},
         "isp-case replay: 1 file(s) of " + broken + " would stop the library:\n"},
    };
    for (const auto &row : cases) {
        const tool_run run = run_tool(dir, "diff " + row.args);
        EXPECT_EQ(run.status, row.status) << row.args << "\n" << run.out << run.err;
        expect_lines(run.out, row.out);
        if (row.args.find("-q") != std::string::npos) {
            EXPECT_EQ(run.out, "") << row.args;
        }
        EXPECT_EQ(run.err.substr(0, run.err.find('\n') + 1), row.err) << row.args;
    }
    EXPECT_EQ(last_lines(run_tool(dir, "diff " + broken + " " + a).err, 1),
              lines_t{"isp-case diff: " + broken + ": cannot be replayed: 1 file(s) of " + broken +
                      " would stop the library"});
    if (tmpdir)
        setenv("TMPDIR", old_tmpdir.c_str(), 1);
    else
        unsetenv("TMPDIR");
    EXPECT_TRUE(fs::is_empty(scratch));

    const tool_run json          = run_tool(dir, "diff " + a + " " + b + " --format json");
    const picojson::value report = isp_test::parse_object(json.out)["differences"];
    ASSERT_EQ(report.get<picojson::array>().size(), 1u) << json.out;
    EXPECT_EQ(report.get<picojson::array>()[0].serialize(),
              R"({"a":{"code":256,"format":"u10.8","register":"isp_wbc.d_gain.val","value":1},)"
              R"("b":{"code":512,"format":"u10.8","register":"isp_wbc.d_gain.val","value":2},)"
              R"("channel":0,"cmd":1,"file_a":"decoded\/wbc\/cmd01_ctrl-c024260ded49453e.json",)"
              R"("file_b":"decoded\/wbc\/cmd01_ctrl-48011ca27b5022a4.json",)"
              R"("files":["cfgs\/f1\/rtl_wbc_p0.json","cfgs\/f1\/rtl_wbc_p1.json",)"
              R"("cfgs\/f1\/rtl_wbc_p2.json","cfgs\/f1\/rtl_wbc_p3.json"],"group":"ctrl",)"
              R"("index":null,"kind":"code","last_step":{"dir":1,"frame":2,"phase":"frame"},)"
              R"("member":"d_gain","module":"wbc","step":{"dir":1,"frame":1,"phase":"frame"},)"
              R"j("step_name":"frames 1-2 (f1, then f1 again)","steps":2,)j"
              R"("text":"wbc.ctrl.d_gain at isp_wbc.d_gain.val in cfgs\/f1\/rtl_wbc_p0.json, )"
              R"(cfgs\/f1\/rtl_wbc_p1.json and 2 more: code 256 | 512, value 1 | 2"})");
}

/* The recorder preloaded into a replay: what the library handed the wrapper, read by diff as a
 * dump; a recording it cannot write costs one line on standard error and changes nothing else. */
TEST(IspCaseRecording, PreloadedRecorderMatchesTheToolsDumpAndNeverChangesTheReplay) {
    temp_dir dir;
    const auto recorded = [&](const std::string &case_dir, const std::string &recording) {
        /* under the emulator, the environment of the emulated process, not the emulator's */
        const std::string preload = "LD_PRELOAD=" ISP_RECORD_LIBRARY, into = "ISP_RECORD_DIR=";
        /* in a sanitized build the tool and the recorder both link the AddressSanitizer runtime,
         * which then no longer comes first in the process's library list: it works all the same */
        const std::string sanitizer = "ASAN_OPTIONS=\"${ASAN_OPTIONS}:verify_asan_link_order=0\" ";
        const std::string env       = std::string(ISP_CASE_EMULATOR).empty()
                                          ? sanitizer + preload + " " + into + "'" + recording + "' "
                                          : "QEMU_SET_ENV='" + preload + "," + into + recording + "' ";
        return collect(
            dir, std::system((env + ISP_CASE_EMULATOR " '" ISP_CASE_TOOL "' replay " + case_dir +
                              " >'" + dir.path() + "/tool.out' 2>'" + dir.path() + "/tool.err'")
                                 .c_str()));
    };
    const std::string changed = copy_sample(dir);
    double_wbc_gain(changed);
    const std::string dump = dump_of(dir, "dump", ISP_SAMPLE_CASE_DIR);
    const tool_run plain   = run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR);
    const tool_run same    = recorded(ISP_SAMPLE_CASE_DIR, dir.path() + "/same");
    const tool_run other   = recorded(changed, dir.path() + "/other");
    std::ofstream(dir.path() + "/file") << "not a directory";
    const tool_run unusable = recorded(ISP_SAMPLE_CASE_DIR, dir.path() + "/file/rec");
    for (const tool_run *run : {&same, &unusable}) {
        EXPECT_EQ(run->status, plain.status);
        EXPECT_EQ(run->out, plain.out);
    }
    EXPECT_EQ(same.err, "");
    EXPECT_EQ(unusable.err,
              "isp-record: " + dir.path() +
                  "/file/rec: Not a directory; recording stopped, the pipeline goes on\n");
    EXPECT_FALSE(fs::exists(dir.path() + "/file/rec/manifest.json"));

    const tool_run identical = run_tool(dir, "diff " + dir.path() + "/same " + dump);
    EXPECT_EQ(identical.status, 0) << identical.out << identical.err;
    expect_lines(identical.out, {"  note: tool differs: libisp_record " ISP_JSON_VERSION
                                 " | isp-case " ISP_JSON_VERSION,
                                 "summary: 465 pushes in A, 465 in B; 0 differ (0 differences), 0 "
                                 "only in A, 0 only in B"});
    const tool_run different = run_tool(dir, "diff " + dir.path() + "/other " + dump);
    EXPECT_EQ(different.status, 1) << different.out << different.err;
    expect_lines(different.out,
                 {"frames 1-2 (f1, then f1 again)", "  wbc",
                  "    ctrl.d_gain at isp_wbc.d_gain.val in cfgs/f1/rtl_wbc_p0.json, "
                  "cfgs/f1/rtl_wbc_p1.json and 2 more: code 512 | 256, value 2 | 1",
                  "result: different"});
}

/* Places the dump and the export cannot use: one line on standard error naming the place and
 * the reason, nothing on standard output, nothing created. */
TEST(IspCaseOutput, UnusableDumpAndExportPlacesAreRefusedBeforeAnyWork) {
    temp_dir dir;
    const std::string file     = dir.write("a_file", "x");
    const std::string occupied = dir.write("occupied/stale.bin", "old"),
                      used     = dir.path() + "/occupied";
    const std::string out      = dir.path() + "/out";
    const std::string locked   = dir.mkdir("locked");
    const std::string case_dir = copy_sample(dir, "suite/case"), suite = dir.path() + "/suite";
    const std::string not_dump = dir.write("mine/notes.txt", "keep"), mine = dir.path() + "/mine";
    const auto before = tree(case_dir);
    const struct {
        std::string args;
        int status;
        std::string err;
        bool unprivileged;
    } cases[] = {
        {"replay " ISP_SAMPLE_CASE_DIR " --dump " + file, 1,
         "isp-case replay: " + file + ": not a directory\n", false},
        {"replay " ISP_SAMPLE_CASE_DIR " --dump " + used, 1,
         "isp-case replay: " + used + ": not empty (--force replaces its contents)\n", false},
        // data loss: --force would have emptied the case, or a directory that is not a dump
        {"replay " + case_dir + " --dump " + case_dir + " --force", 1,
         "isp-case replay: " + case_dir + ": is the case directory itself\n", false},
        {"replay " + case_dir + " --dump " + suite + "/. --force", 1,
         "isp-case replay: " + suite + "/.: holds the case " + case_dir + "\n", false},
        {"replay " + case_dir + " --dump " + case_dir + "/cfgs/f2", 1,
         "isp-case replay: " + case_dir +
             "/cfgs/f2: lies inside the case's cfgs/, where the library looks for frame "
             "directories\n",
         false},
        {"replay " + case_dir + " --dump " + mine + " --force", 1,
         "isp-case replay: " + mine +
             ": not empty and not a dump (no manifest.json): --force empties only a previous "
             "dump\n",
         false},
        {"export " ISP_SAMPLE_CASE_DIR " --frame 0 --partition 0 --out " + file, 1,
         "isp-case export: " + file + ": not a directory\n", false},
        {"export " ISP_SAMPLE_CASE_DIR " --frame 5 --partition 0 --out " + out, 3,
         "isp-case export: no frame directory cfgs/f5\n", false},
        // a directory only its owner may write: root's, seen by nobody
        {"replay " ISP_SAMPLE_CASE_DIR " --dump " + locked + "/dump", 1,
         "isp-case replay: " + locked + "/dump: cannot create it: Permission denied\n", true},
        {"export " ISP_SAMPLE_CASE_DIR " --frame 0 --partition 0 --out " + locked, 1,
         "isp-case export: " + locked + ": cannot write into it: Permission denied\n", true},
    };
    // the tool's output files go into the test directory, which everyone may write
    fs::permissions(dir.path(), fs::perms::all);
    fs::permissions(locked, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                                fs::perms::others_read | fs::perms::others_exec);
    if (getuid() != 0) fs::permissions(locked, fs::perms::owner_write, fs::perm_options::remove);
    bool skipped = false;
    for (const auto &row : cases) {
        const tool_run run =
            row.unprivileged ? run_tool_unprivileged(dir, row.args) : run_tool(dir, row.args);
        if (row.unprivileged && (run.status == 120 || run.status == 126 || run.status == 127)) {
            skipped = true;
            continue;
        }
        EXPECT_EQ(run.status, row.status) << row.args;
        EXPECT_EQ(run.err, row.err) << row.args;
        EXPECT_TRUE(run.out.empty()) << row.args;
    }
    EXPECT_FALSE(fs::exists(out));
    EXPECT_EQ(read_file(occupied), "old");
    EXPECT_TRUE(fs::is_empty(locked));
    EXPECT_EQ(tree(case_dir), before);
    EXPECT_EQ(read_file(not_dump), "keep");

    dir.write("occupied/manifest.json", "{}");  // a previous dump
    const tool_run forced =
        run_tool(dir, "replay " ISP_SAMPLE_CASE_DIR " --dump " + used + " --force");
    EXPECT_EQ(forced.status, 0) << forced.err;
    EXPECT_FALSE(fs::exists(occupied));
    EXPECT_TRUE(fs::exists(used + "/manifest.json"));
    if (skipped) GTEST_SKIP() << "the tool cannot be run as an unprivileged user here";
}

TEST(IspCaseReport, SamplePageIsOneOfflineFileWithEveryPicture) {
    temp_dir dir;
    const std::string dump     = dump_of(dir, "d", ISP_SAMPLE_CASE_DIR);
    const std::string manifest = read_file(dump + "/manifest.json");
    // a page never replaces a file of the dump it is made from
    const tool_run refused = run_tool(dir, "report " + dump + " -o " + dump + "/manifest.json");
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "isp-case report: " + dump + "/manifest.json: a file of the dump " +
                               dump + " the page is made from; write the page elsewhere\n");
    EXPECT_EQ(read_file(dump + "/manifest.json"), manifest);
    const tool_run run = run_tool(dir, "report " + dump + " -o " + dir.path() + "/r.html");
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    const std::string page = read_file(dir.path() + "/r.html");
    EXPECT_LT(page.size(), 2u << 20);
    for (const char *outside : {"http", "src=", "<script", "<link", "url(", "@import"})
        EXPECT_EQ(page.find(outside), std::string::npos) << outside;

    const std::vector<xml_element> elements = parse_xml(page);
    EXPECT_EQ(of_all(elements, "section", "id"),
              (lines_t{"verdict", "summary", "pushes", "step-setup", "step-frame2"}));
    // the summary from the manifest
    lines_t facts;
    for (const std::string &row : of_all(elements, "tr", "", "grid"))
        if (row.rfind("grid", 0) == 0) facts.push_back(row);
    EXPECT_EQ(facts, lines_t{"grid2x2 (4 partitions)"});
    EXPECT_EQ(of_all(elements, "p", "", "ok"), lines_t{"ok"});

    // every curve and mesh once in each step shown, and partition grids laid out by the grid
    const lines_t pictures = of_all(elements, "svg", "aria-label");
    for (const char *picture :
         {"gamma curve (gamma lut#3)", "hdrc compression curve (hdrc hdrc_lut#3)",
          "hidrc inverse-compression curve (hidrc hidrc_lut#2)",
          "black-level linearisation (lin lin#3)", "black-level linearisation (blc c1 lin#3)",
          "lsc gain mesh R", "lsc gain mesh B", "lsc coord#2 locat.x (u10)",
          "ae_stat init#1 wr_addr0 (code)"})
        EXPECT_EQ(count_of(pictures, picture), 2u) << picture;
    std::map<std::string, std::string> text_of;
    for (const xml_element &e : elements)
        if (e.name == "svg") text_of[e.attributes.at("aria-label")] = e.text;
    // 1920x1080 in 2x2: partitions 1 and 3 start at column 960; the colour-correction sizes
    // come from the arrays behind its pointers
    EXPECT_EQ(text_of["lsc coord#2 locat.x (u10)"],
              "lsc coord#2 locat.x (u10)partition 00partition 1960partition 20partition 3960");
    EXPECT_EQ(text_of["cc init#3 part_size_v (u14)"],
              "cc init#3 part_size_v (u14)partition 0540partition 1540partition 2540partition "
              "3540");
    // the meshes hold plain numbers: codes, and the heat map says so
    const std::string &mesh = text_of["lsc gain mesh R"];
    EXPECT_NE(mesh.find("row 0, column 0: 6522"), std::string::npos);
    EXPECT_EQ(mesh.substr(mesh.size() - 4), "code");
    EXPECT_EQ(count_of(of_all(elements, "caption"), "csc RGB to YUV matrix (s2.10)"), 2u);

    // member tables: a member of a block without register rows shows its code only
    lines_t rows;
    for (const std::string &row : of_all(elements, "tr"))
        if (row.rfind("reservednoneno register row", 0) == 0 || row.rfind("d_gainu10.8", 0) == 0)
            rows.push_back(row);
    ASSERT_GE(rows.size(), 2u);
    EXPECT_EQ(rows.front(), "reservednoneno register row0-");
    EXPECT_EQ(count_of(rows, "d_gainu10.8isp_wbc.d_gain.val2561"), 2u);
}

TEST(IspCaseReport, AgainstShowsBothCurvesAndMarksTheChange) {
    temp_dir dir;
    const std::string changed = copy_sample(dir);
    // gamma points 64 and 65 (the pair of grp0 element 32) dropped to zero in every file
    for (const char *frame : {"f0", "f1"})
        for (int p = 0; p < 4; ++p)
            edit_json(changed + "/cfgs/" + frame + "/rtl_gamma_p" + std::to_string(p) + ".json",
                      [](picojson::object &root) {
                          picojson::object &pair = root["isp_gamma"]
                                                       .get<picojson::object>()["grp0"]
                                                       .get<picojson::array>()[32]
                                                       .get<picojson::object>()["gam_lut"]
                                                       .get<picojson::object>();
                          pair["low"] = pair["high"] = picojson::value(0.0);
                      });
    const std::string a = dump_of(dir, "a", ISP_SAMPLE_CASE_DIR), b = dump_of(dir, "b", changed);
    const tool_run run = run_tool(
        dir, "report " + a + " --against " + b + " --frame 1 -o " + dir.path() + "/r.html");
    ASSERT_EQ(run.status, 0) << run.out << run.err;
    const std::vector<xml_element> elements = parse_xml(read_file(dir.path() + "/r.html"));

    EXPECT_EQ(of_all(elements, "section", "id"),
              (lines_t{"verdict", "summary", "changes", "pushes", "step-setup", "step-frame1"}));
    // what changed: the curve alone, in each of the three steps; sRGB at 0.5 is 187.5 in u8.4;
    // point 2k comes from the "low" field of element k
    const std::string change =
        "gamma lut#3gam_lut2 of 129[64] 187.5 &#8594; 0 (u8.4) from "
        "isp_gamma.grp0[32].gam_lut.low";
    EXPECT_EQ(
        of_all(elements, "tr", "", "gamma lut#3"),
        (lines_t{"setup (f0)" + change, "frame 1 (f1)" + change, "frame 2 (f1 again)" + change}));
    // B's two points, code and real value, highlighted in the member tables of setup and frame 1
    EXPECT_EQ(of_all(elements, "mark"), lines_t(8, "0"));
    // the curve drawn twice, once per run, with a legend naming each
    size_t drawn = 0;
    for (const xml_element &e : elements)
        if (e.name == "svg" && e.attributes.count("aria-label") &&
            e.attributes.at("aria-label") == "gamma curve (gamma lut#3)")
            drawn += e.text.find("A: " + a) != std::string::npos &&
                     e.text.find("B: " + b) != std::string::npos;
    EXPECT_EQ(drawn, 2u);
    // the lut group of setup and of frame 1, nothing else
    EXPECT_EQ(of_all(elements, "details", "open").size(), 2u);
}

/* A stored run per case: unchanged, it passes; one value changed in one frame of one case fails
 * that case alone, named in register terms; cases added to or gone from the suite are named;
 * ignored members and the rewrite of what differs. */
TEST(IspCaseBaseline, ChangedAddedAndRemovedCasesAreNamedAgainstTheStoredRuns) {
    const temp_dir dir;
    for (const char *name : {"a", "b", "c"}) copy_sample(dir, std::string("suite/") + name);
    const std::string suite = dir.path() + "/suite", base = dir.path() + "/base";
    const std::string batch = "batch " + suite + " --frames 2 -j 2 --baseline " + base;
    ASSERT_EQ(run_tool(dir, "batch " + suite + " --frames 2 --save-baseline " + base).status, 0);
    const tool_run same = run_tool(dir, batch);
    EXPECT_EQ(same.status, 0) << same.out << same.err;
    expect_lines(same.out, {"  cases       3 run, 3 passed, 0 failed"});

    for (int p = 0; p < 4; ++p)
        replace_in(suite + "/b/cfgs/f1/rtl_wbc_p" + std::to_string(p) + ".json", "\"val1\": 256",
                   "\"val1\": 300");
    const std::string first =
        "baseline: frame 1 (f1): wbc.ctrl.wb_gain[1] at isp_wbc.wb_gain0.val1 in "
        "cfgs/f1/rtl_wbc_p0.json, cfgs/f1/rtl_wbc_p1.json and 2 more: code 256 | 300, value 1 | "
        "1.171875; 1 more difference";
    const tool_run changed = run_tool(dir, batch + " --json " + dir.path() + "/r.json");
    EXPECT_EQ(changed.status, 1);
    expect_lines(changed.out,
                 {"  cases       3 run, 2 passed, 1 failed", "  failed      b: " + first});
    const picojson::array cases =
        isp_test::parse_object(read_file(dir.path() + "/r.json"))["cases"].get<picojson::array>();
    ASSERT_EQ(cases.size(), 3u);
    EXPECT_EQ(cases[0].get("baseline").get("state").to_str(), "same");
    picojson::object divergence =
        cases[1].get("baseline").get("first_divergence").get<picojson::object>();
    EXPECT_EQ(divergence["text"].to_str(), first.substr(10));
    divergence.erase("text");
    EXPECT_EQ(
        picojson::value(divergence).serialize(),
        R"({"codes":[256,300],"element":1,"files":["cfgs\/f1\/rtl_wbc_p0.json",)"
        R"("cfgs\/f1\/rtl_wbc_p1.json","cfgs\/f1\/rtl_wbc_p2.json","cfgs\/f1\/rtl_wbc_p3.json"],)"
        R"("frame_dir":"f1","group":"ctrl","kind":"code","member":"wb_gain","module":"wbc",)"
        R"("more":1,"register":"isp_wbc.wb_gain0.val1","step":"frame 1","values":[1,1.171875]})");

    // members known to vary, on the command line or in a file
    EXPECT_EQ(run_tool(dir, batch + " --ignore 'wbc.ctrl.wb_*'").status, 0);
    std::ofstream(dir.path() + "/ignore") << "# white balance varies\n\n  wbc.*.wb_gain  \n";
    EXPECT_EQ(run_tool(dir, batch + " --ignore-file " + dir.path() + "/ignore").status, 0);
    EXPECT_EQ(run_tool(dir, batch + " --ignore 'wbc.ctrl.d_*'").status, 1);

    copy_sample(dir, "suite/d");
    fs::remove_all(suite + "/c");
    const tool_run moved = run_tool(dir, batch);
    EXPECT_EQ(moved.status, 1);
    expect_lines(moved.out, {"  failed      d: baseline: not in baseline",
                             "  failed      c: in the baseline, not in the suite"});

    const tool_run update = run_tool(dir, batch + " --update-baseline");
    expect_lines(update.out, {"  cases       3 run, 3 passed, 0 failed",
                              "  rewritten   b (updated), d (added)"});
    fs::remove_all(base + "/c");
    const tool_run again = run_tool(dir, batch);
    EXPECT_EQ(again.status, 0) << again.out;

    // a store cut short fails every case with the reader's reason, and is not taken as a change
    fs::resize_file(base + "/objects.pack", 7);
    const tool_run cut = run_tool(dir, batch + " --update-baseline");
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(count_lines_starting(cut.out, "  failed      b: baseline: " + base +
                                                "/objects.pack: 7 bytes, too short for object"),
              1u)
        << cut.out;
    EXPECT_EQ(cut.out.find("rewritten"), std::string::npos);
}

/* The reports of a suite's shards as one: every case once, a shard without a report named with
 * its cases, reports that do not belong together refused. */
TEST(IspCaseMerge, ShardReportsMergeIntoOneAndMissingShardsAreNamed) {
    const temp_dir dir;
    for (const char *name : {"a", "b", "c"}) copy_sample(dir, std::string("suite/") + name);
    replace_in(dir.path() + "/suite/c/cfgs/f1/rtl_wbc_p2.json", "\"val1\": 256", "\"val1\": 300");
    const std::string out = dir.path() + "/";
    for (const char *k : {"1", "2", "3"})
        run_tool(dir, "batch " + out + "suite --frames 1 --strict --shard " + k + "/3 --json " +
                          out + "s" + k + ".json");
    run_tool(dir, "batch " + out + "suite --frames 1 --shard 1/2 --json " + out + "half.json");
    run_tool(dir, "batch " + out + "suite/a --frames 1 --json " + out + "other.json");

    const tool_run all = run_tool(dir, "merge " + out + "s1.json " + out + "s3.json " + out +
                                           "s2.json --junit " + out + "all.xml");
    EXPECT_EQ(all.status, 1) << all.out << all.err;
    expect_lines(all.out, {"  cases       3 in the suite, 3 run, 2 passed, 1 failed, 0 missing"});
    EXPECT_EQ(count_lines_starting(all.out, "  failed      c: check: 0 errors, 1 warning"), 1u)
        << all.out;

    const tool_run gap = run_tool(
        dir, "merge " + out + "s1.json " + out + "s3.json --junit " + out + "m.xml --format json");
    EXPECT_EQ(gap.status, 1);
    picojson::object merged = isp_test::parse_object(gap.out);
    EXPECT_EQ(merged["missing_shards"].serialize(), "[2]");
    EXPECT_EQ(merged["missing_cases"].serialize(), R"(["b"])");
    const std::string junit = read_file(out + "m.xml");
    EXPECT_NE(junit.find("tests=\"3\" failures=\"2\""), std::string::npos) << junit;
    EXPECT_NE(junit.find("<failure message=\"shard 2/3: no report\" type=\"missing\">"),
              std::string::npos);
    const tool_run text = run_tool(dir, "merge " + out + "s1.json " + out + "s3.json");
    expect_lines(text.out, {"shard 2/3  missing: no report", "  missing     shard 2/3: b"});

    const struct {
        std::string second, err;
    } refused[] = {
        {"s1.json", "s1.json: shard 1/3 again (" + out + "s1.json has it)"},
        {"half.json", "half.json: shard 1/2, but " + out + "s1.json is a shard of 3"},
        {"other.json", "other.json: a shard of another suite (1 case, id "},
        {"m.xml", "m.xml: not JSON"},
    };
    for (const auto &row : refused) {
        const tool_run run = run_tool(dir, "merge " + out + "s1.json " + out + row.second);
        EXPECT_EQ(run.status, 3) << row.second;
        EXPECT_EQ(run.err.rfind("isp-case merge: " + out + row.err, 0), 0u) << run.err;
    }
}

}  // namespace
