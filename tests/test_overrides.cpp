/* Register values set from the command line: parsing and encoding, what a replay pushes with
 * them, and the variant cases and sweeps of isp-case edit, byte for byte. */

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/test_support.h"
#include "tools/core/overrides.h"
#include "tools/dump/reader.h"

namespace {

namespace fs = std::filesystem;
using isp_case::value_override;
using isp_test::read_file;
using isp_test::temp_dir;

struct tool_run {
    int status = -1;
    std::string out, err;
};

/* isp-case with its output in files of dir, its temporary files in dir/tmp. */
tool_run run_tool(const temp_dir &dir, const std::string &args) {
    dir.mkdir("tmp");
    const int raw =
        std::system(("TMPDIR='" + dir.path() + "/tmp' " ISP_CASE_EMULATOR " '" ISP_CASE_TOOL "' " +
                     args + " >'" + dir.path() + "/tool.out' 2>'" + dir.path() + "/tool.err'")
                        .c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, read_file(dir.path() + "/tool.out"),
            read_file(dir.path() + "/tool.err")};
}

/* Every regular file under root by relative path, with its bytes. */
std::map<std::string, std::string> tree(const std::string &root) {
    std::map<std::string, std::string> files;
    for (const auto &e : fs::recursive_directory_iterator(root))
        if (e.is_regular_file())
            files[fs::relative(e.path(), root).string()] = read_file(e.path().string());
    return files;
}

/* The code the wbc ctrl group pushed for d_gain at a step of a dump. */
int64_t pushed_d_gain(const std::string &dump_dir, const std::string &step) {
    const isp_case::dump d = isp_case::open_dump(dump_dir);
    for (const isp_case::dump_push &p : d.pushes)
        if (isp_case::step_dir(p.step) == step && p.module == "wbc" && p.group == "ctrl")
            return int64_t(isp_case::read_push(d, p).member("d_gain")->codes.at(0));
    return -1;
}

TEST(Overrides, ParsesSelectorsAndEncodesThroughTheFormat) {
    value_override o;
    ASSERT_EQ(isp_case::parse_override("f3-5:p1:isp_wbc.d_gain.val=1.5", o), "");
    EXPECT_EQ(o.first_frame, 3);
    EXPECT_EQ(o.last_frame, 5);
    EXPECT_EQ(o.partition, 1);
    EXPECT_EQ(o.field->path, "isp_wbc.d_gain.val");
    EXPECT_EQ(o.raw, 384);
    ASSERT_EQ(isp_case::parse_override("f2:isp_wbc.d_gain.val=raw:300", o), "");
    EXPECT_EQ(o.first_frame, 2);
    EXPECT_EQ(o.last_frame, 2);
    EXPECT_EQ(o.partition, -1);
    EXPECT_EQ(o.raw, 300);
    EXPECT_EQ(o.value, 1.171875);
    /* the nearest code; a signed field holds its negative integer, the converter encodes it */
    ASSERT_EQ(isp_case::parse_override("isp_wbc.d_gain.val=1.3", o), "");
    EXPECT_EQ(o.raw, 333);
    EXPECT_EQ(o.value, 1.30078125);
    ASSERT_EQ(isp_case::parse_override("isp_clc.hr_lpf0.val0=-0.5", o), "");
    EXPECT_EQ(o.raw, -64);
    ASSERT_EQ(isp_case::parse_override("isp_clc.hr_lpf0.val0=raw:-255", o), "");

    const std::map<std::string, std::string> refused = {
        {"isp_wbc.d_gain.val=1024", "1024 is out of range for u10.8 (0 to 1023.99609375)"},
        {"isp_wbc.d_gain.val=-0.01", "-0.01 is out of range for u10.8 (0 to 1023.99609375)"},
        {"isp_wbc.d_gain.val=raw:262144", "raw 262144 is out of range for u10.8 (0 to 262143)"},
        {"isp_clc.hr_lpf0.val0=-2", "-2 is out of range for s1.7 (-1.9921875 to 1.9921875)"},
        {"isp_clc.hr_lpf0.val0=raw:-256", "raw -256 is out of range for s1.7 (-255 to 255)"},
        {"isp_wbc.d_gain.vol=1",
         "unknown register \"isp_wbc.d_gain.vol\"; did you mean "
         "\"isp_wbc.d_gain.val\"?"},
        {"isp_wbc.d_gain.val=1.5x",
         "\"1.5x\" is not a number (raw:N gives the register file's integer)"},
        {"f5-3:isp_wbc.d_gain.val=1", "a frame selector is fN: or fA-B: with A <= B"},
        {"p256:isp_wbc.d_gain.val=1", "a partition selector is pN: with N from 0 to 255"},
        {"isp_wbc.d_gain.val",
         "expected [fFRAMES:][pN:]REGISTER.FIELD=VALUE (VALUE a real value "
         "or raw:N)"},
    };
    for (const auto &[text, message] : refused)
        EXPECT_EQ(isp_case::parse_override(text, o), message) << text;
}

TEST(Overrides, SweepSpacesValuesEvenlyAndRefusesTwoOfOneCode) {
    std::vector<value_override> values;
    ASSERT_EQ(isp_case::parse_sweep("isp_wbc.d_gain.val=1:2.5:4", values), "");
    std::vector<int64_t> raws;
    for (const value_override &v : values) raws.push_back(v.raw);
    EXPECT_EQ(raws, (std::vector<int64_t>{256, 384, 512, 640}));
    EXPECT_EQ(isp_case::parse_sweep("isp_wbc.d_gain.val=1:1.002:4", values),
              "1 and 1.0006666666666666 are the same value in u10.8 (raw 256): choose fewer "
              "values or a wider range");
    EXPECT_EQ(isp_case::parse_sweep("isp_wbc.d_gain.val=1:2", values),
              "expected REGISTER.FIELD=START:STOP:COUNT (COUNT 1 or more)");
}

/* One frame in real value, every frame in raw form: the pushed codes, the manifest's list, the
 * case untouched and no overlay left behind. */
TEST(Overrides, ReplayPushesTheSetValuesAndLeavesTheCase) {
    temp_dir dir;
    const auto before     = tree(ISP_SAMPLE_CASE_DIR);
    const std::string one = dir.path() + "/one", all = dir.path() + "/all";
    tool_run run = run_tool(
        dir, "replay -q " ISP_SAMPLE_CASE_DIR " --set f1:isp_wbc.d_gain.val=1.5 --dump " + one);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("  set         f1:isp_wbc.d_gain.val=1.5 (value 1.5, raw 384) in 4 "
                           "files\n"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(pushed_d_gain(one, "setup"), 256);
    EXPECT_EQ(pushed_d_gain(one, "frame1"), 384);
    EXPECT_EQ(pushed_d_gain(one, "frame2"), 384); /* the second frame reads f1 again */

    run = run_tool(dir, "replay -q " ISP_SAMPLE_CASE_DIR
                        " --set isp_wbc.d_gain.val=raw:300 "
                        "--set p0:isp_wbc.wb_gain0.val0=2 --dump " +
                            all);
    ASSERT_EQ(run.status, 0) << run.err;
    for (const char *step : {"setup", "frame1", "frame2"})
        EXPECT_EQ(pushed_d_gain(all, step), 300) << step;
    const isp_case::dump d = isp_case::open_dump(all);
    ASSERT_EQ(d.overrides.size(), 2u);
    EXPECT_EQ(d.overrides[0].set, "isp_wbc.d_gain.val=raw:300");
    EXPECT_EQ(d.overrides[0].files, 8);
    EXPECT_EQ(d.overrides[1].raw, 512);
    EXPECT_EQ(d.overrides[1].files, 2);
    EXPECT_EQ(d.case_path, ISP_SAMPLE_CASE_DIR);
    ASSERT_EQ(run_tool(dir, "report " + all + " -o " + dir.path() + "/page.html").status, 0);
    EXPECT_NE(read_file(dir.path() + "/page.html")
                  .find("isp_wbc.d_gain.val=raw:300 (value 1.171875, raw 300) in 8 files"),
              std::string::npos);

    EXPECT_EQ(tree(ISP_SAMPLE_CASE_DIR), before);
    EXPECT_TRUE(fs::is_empty(dir.path() + "/tmp"));

    run = run_tool(dir, "check --format json " ISP_SAMPLE_CASE_DIR " --set isp_wbc.d_gain.val=1.3");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(isp_test::parse_object(run.out).at("overrides").serialize(),
              R"([{"files":8,"raw":333,"set":"isp_wbc.d_gain.val=1.3","value":1.30078125}])");

    run = run_tool(dir, "check " ISP_SAMPLE_CASE_DIR " --set f2:isp_wbc.d_gain.val=1");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(run.err,
              "isp-case check: --set f2:isp_wbc.d_gain.val=1: the case has no frame "
              "directory f2 (it has f0 to f1)\n");
}

/* The variant holds the new number where the old one was, every other byte as it was, and
 * reads clean; a second edit into it needs --force. */
TEST(Overrides, EditChangesOnlyTheNumbers) {
    temp_dir dir;
    const std::string out = dir.path() + "/variant";
    tool_run run =
        run_tool(dir, "edit " ISP_SAMPLE_CASE_DIR " --set f1:isp_wbc.d_gain.val=2 -o " + out);
    ASSERT_EQ(run.status, 0) << run.err;
    const std::string before = "\"d_gain\": {\"val\": 256}", after = "\"d_gain\": {\"val\": 512}";
    auto expected = tree(ISP_SAMPLE_CASE_DIR);
    for (int p = 0; p < 4; ++p) {
        std::string &changed = expected.at("cfgs/f1/rtl_wbc_p" + std::to_string(p) + ".json");
        const size_t at      = changed.find(before);
        ASSERT_NE(at, std::string::npos);
        changed.replace(at, before.size(), after);
    }
    EXPECT_EQ(tree(out), expected);
    EXPECT_EQ(run_tool(dir, "check --strict " + out).status, 0);

    run = run_tool(dir, "edit " ISP_SAMPLE_CASE_DIR " --set isp_wbc.d_gain.val=2 -o " + out);
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, "isp-case edit: " + out + ": not empty (--force replaces its contents)\n");
    EXPECT_EQ(
        run_tool(dir, "edit " ISP_SAMPLE_CASE_DIR " --set isp_wbc.d_gain.val=2 --force -o " + out)
            .status,
        0);
}

TEST(Overrides, SweepWritesOneCasePerValueForBatch) {
    temp_dir dir;
    const std::string out = dir.path() + "/sweep";
    tool_run run          = run_tool(dir, "edit " ISP_SAMPLE_CASE_DIR
                                          " --sweep isp_wbc.d_gain.val=0.5:2:4 --set isp_wbc.d_gain.val=9 "
                                                   "-o " +
                                              out);
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<std::string> names;
    for (const auto &e : fs::directory_iterator(out)) names.push_back(e.path().filename());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"d_gain.val=0.5", "d_gain.val=1", "d_gain.val=1.5",
                                               "d_gain.val=2"}));
    /* the swept value wins over a --set of the same register */
    EXPECT_NE(read_file(out + "/d_gain.val=1.5/cfgs/f0/rtl_wbc_p3.json")
                  .find("\"d_gain\": {\"val\": 384}"),
              std::string::npos);
    run = run_tool(dir, "batch -j2 " + out);
    EXPECT_EQ(run.status, 0) << run.out;
}

}  // namespace
