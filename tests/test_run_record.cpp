/* The run record of isp-case: how steps are named, what an operation's outcome counts as, the
 * verdict on a run, and findings read back from their JSON. */

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/core/run_record.h"

namespace {

using lines_t = std::vector<std::string>;
using isp_case::phase;

/* A case f0..f3: setup reads f0, cycle N reads fN, the cycles after the third read f3 again. */
TEST(RunRecordStep, NamedByTheFrameDirectoryItRead) {
    const struct {
        isp_case::step_id step;
        std::string name, dir, files;
    } rows[] = {
        {isp_case::setup_step(), "setup", "setup", "cfgs/f0"},
        {isp_case::frame_step(1, 3), "frame 1", "frame1", "cfgs/f1"},
        {isp_case::frame_step(3, 3), "frame 3", "frame3", "cfgs/f3"},
        {isp_case::frame_step(5, 3), "frame 5 (f3 again)", "frame5", "cfgs/f3"},
        {isp_case::frame_step(1, 0), "frame 1 (f0 again)", "frame1", "cfgs/f0"},
        {isp_case::teardown_step(), "teardown", "teardown", ""},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(isp_case::step_name(row.step), row.name);
        EXPECT_EQ(isp_case::step_dir(row.step), row.dir) << row.name;
        EXPECT_EQ(isp_case::step_files(row.step), row.files) << row.name;
    }
}

/* What an operation's outcome counts as. */
TEST(RunRecordFindings, EachOutcomeHasASeverity) {
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
    isp_case::module_step m{
        isp_case::find_module("wbc"), {raised, returned, converted, warned, quiet}, -1, {}};
    lines_t found;
    for (const isp_case::finding &f : isp_case::findings_of(isp_case::frame_step(4, 3), m))
        found.push_back(isp_case::finding_line(f));
    EXPECT_EQ(found,
              (lines_t{
                  "frame 4 (f3 again): error: wbc: process: raised: bad [operation-raised]",
                  "frame 4 (f3 again): error: wbc: process: returned 0x80011980 "
                  "[operation-failed]",
                  "frame 4 (f3 again): error: wbc: process: read json_obj failed: d_gain.val "
                  "[field-not-read]",
                  "frame 4 (f3 again): warning: wbc: sync: [W] context already calloc! "
                  "[library-warning]",
              }));

    // read back from the JSON every output writes, member for member, places and all
    isp_case::finding_tally tally;
    tally.add(isp_case::findings_of(isp_case::setup_step(), m));
    tally.add(isp_case::findings_of(isp_case::frame_step(1, 3), m));
    for (const isp_case::finding &f : tally.kept()) {
        isp_case::finding back;
        ASSERT_TRUE(isp_case::finding_from_json(isp_case::finding_json(f), back));
        EXPECT_EQ(isp_case::finding_json(back).serialize(), isp_case::finding_json(f).serialize());
    }
    isp_case::finding back;
    EXPECT_FALSE(isp_case::finding_from_json(picojson::value("error"), back));
}

/* Errors (findings, platform problems, dump problems) fail a run; warnings make it not clean,
 * and fail it under --strict. */
TEST(RunRecordVerdict, ErrorsFailWarningsFailOnlyUnderStrict) {
    const auto found = [](isp_case::severity level, size_t i) {
        isp_case::finding f;
        f.level   = level;
        f.message = std::to_string(i); /* distinct faults, not one found again */
        return f;
    };
    const struct {
        size_t errors, warnings, platform, dump;
        bool strict;
        std::string text, counts;
    } rows[] = {
        {0, 0, 0, 0, true, "ok", "0 errors, 0 warnings"},
        {0, 2, 0, 0, false, "not clean: 2 warnings", "0 errors, 2 warnings"},
        {0, 1, 0, 0, true, "FAILED: 1 warning (--strict)", "0 errors, 1 warning (--strict)"},
        {12, 0, 0, 0, false, "FAILED: 12 errors", "12 errors, 0 warnings"},
        {8, 1, 1, 0, true, "FAILED: 9 errors, 1 warning", "9 errors, 1 warning"},
        {0, 0, 0, 1, false, "FAILED: 1 error", "1 error, 0 warnings"},
        {1000, 0, 0, 0, false, "FAILED: 1,000 errors", "1,000 errors, 0 warnings"},
    };
    for (const auto &row : rows) {
        isp_case::run_record record(3);
        for (size_t i = 0; i < row.errors; ++i) record.add(found(isp_case::severity::error, i));
        for (size_t i = 0; i < row.warnings; ++i) record.add(found(isp_case::severity::warning, i));
        record.add_platform_problems(std::vector<std::string>(row.platform, "a leak"));
        record.add_dump_problems(row.dump);
        const isp_case::verdict v = isp_case::judge(record, row.strict);
        EXPECT_EQ(v.text(), row.text);
        EXPECT_EQ(v.counts_text(), row.counts) << row.text;
        EXPECT_EQ(v.passed(), row.text.rfind("FAILED", 0) != 0) << row.text;
        EXPECT_LE(record.findings().kept().size(), 3u);
    }
}

}  // namespace

namespace {

/* A finding of the lint on REG.FIELD of cfgs/fN/rtl_wbc_pP.json, at line 6, column 6. */
isp_case::finding in_file(isp_case::finding_kind kind, int frame, int partition,
                          const std::string &message, const std::string &reg = "",
                          const std::string &field = "") {
    isp_case::finding f;
    f.level = kind == isp_case::finding_kind::unknown_key ? isp_case::severity::warning
                                                          : isp_case::severity::error;
    f.kind  = kind;
    f.frame = frame, f.partition = partition;
    f.file =
        "c/cfgs/f" + std::to_string(frame) + "/rtl_wbc_p" + std::to_string(partition) + ".json";
    f.line = f.column = 6;
    f.module = "wbc", f.reg = reg, f.field = field, f.message = message;
    f.format = "u10.8", f.hardware = "0 (0)";
    return f;
}

/* The entries of the lint's findings, then of wbc's operation on the steps, and their count. */
lines_t entries(std::vector<isp_case::finding> found, isp_case::op_outcome op = {},
                const std::vector<isp_case::step_id> &steps = {}) {
    op.ran = true;
    for (const isp_case::step_id &step : steps) {
        const auto run = isp_case::findings_of(step, {isp_case::find_module("wbc"), {op}, -1, {}});
        found.insert(found.end(), run.begin(), run.end());
    }
    isp_case::finding_tally tally(SIZE_MAX);
    tally.add(found);
    lines_t lines;
    for (const isp_case::finding &f : tally.kept()) lines.push_back(isp_case::finding_line(f));
    return lines.push_back(isp_case::counted(tally.counts().errors, "error")), lines;
}

}  // namespace

TEST(FindingGroups, TheSameFaultInEveryPartitionIsOneEntry) {
    std::vector<isp_case::finding> found;
    for (int p : {0, 1, 2, 3, 5})
        found.push_back(in_file(isp_case::finding_kind::type, 0, p, p == 5 ? "other" : "bad"));
    EXPECT_EQ(entries(found),
              (lines_t{"c/cfgs/f0/rtl_wbc_p0.json:6:6: error: wbc: bad (p0-p3) [type]",
                       "c/cfgs/f0/rtl_wbc_p5.json:6:6: error: wbc: other [type]", "2 errors"}));
}

TEST(FindingGroups, TheSameFaultInEveryFrameOrStepIsOneEntry) {
    std::vector<isp_case::finding> found;
    for (int frame : {0, 1, 2, 3, 7})
        found.push_back(in_file(isp_case::finding_kind::type, frame, 1, "bad"));
    isp_case::op_outcome raised;
    raised.kind      = isp_case::op_kind::process;
    raised.exception = "bad";
    EXPECT_EQ(entries(found, raised,
                      {isp_case::frame_step(1, 2), isp_case::frame_step(2, 2),
                       isp_case::frame_step(3, 2)}),
              (lines_t{"c/cfgs/f0/rtl_wbc_p1.json:6:6: error: wbc: bad (f0-f3,f7) [type]",
                       "frame 1: error: wbc: process: raised: bad (at 3 steps, frame 1 to frame 3 "
                       "(f2 again)) [operation-raised]",
                       "2 errors"}));
}

/* A misspelt register hides each of its fields, a misspelt field only itself. */
TEST(FindingGroups, AMissingKeyBesideItsNearMissIsOneFinding) {
    using isp_case::finding_kind;
    std::vector<isp_case::finding> found = {
        in_file(finding_kind::unknown_key, 0, 0, "unknown register", "d_gian"),
        in_file(finding_kind::unknown_key, 0, 0, "unknown field", "wb_gain0", "vla0"),
        in_file(finding_kind::unknown_key, 0, 0, "unknown register too", "zzz"),
        in_file(finding_kind::missing_field, 0, 0, "missing", "d_gain", "val"),
        in_file(finding_kind::missing_field, 0, 0, "missing", "wb_gain0", "val0"),
        in_file(finding_kind::missing_field, 0, 0, "missing", "wb_gain0", "val1")};
    found[0].probably = "d_gain", found[1].probably = "val0";
    EXPECT_EQ(entries(found),
              (lines_t{"c/cfgs/f0/rtl_wbc_p0.json:6:6: error: wbc: \"d_gian\" is probably "
                       "\"d_gain\": the field d_gain.val (u10.8) reads as 0 [missing-field]",
                       "c/cfgs/f0/rtl_wbc_p0.json:6:6: error: wbc: \"vla0\" is probably \"val0\": "
                       "the field wb_gain0.val0 (u10.8) reads as 0 [missing-field]",
                       "c/cfgs/f0/rtl_wbc_p0.json:6:6: warning: wbc: unknown register too "
                       "[unknown-key]",
                       "c/cfgs/f0/rtl_wbc_p0.json:6:6: error: wbc: missing [missing-field]",
                       "3 errors"}));
}

/* The converter's message on a value the lint found unreadable is a place of that finding, for
 * every module that reads the file; another field's message is a finding of its own. */
TEST(FindingGroups, TheRunsMessageOnAValueTheLintExplainsIsAttached) {
    isp_case::finding missing =
        in_file(isp_case::finding_kind::missing_field, 0, 0, "missing", "d_gain", "val");
    missing.module = "awb, wbc";
    isp_case::op_outcome init;
    init.kind     = isp_case::op_kind::init;
    init.messages = {"read json_obj failed: d_gain.val", "read json_obj failed: d_gain.vol"};
    EXPECT_EQ(entries({missing}, init, {isp_case::setup_step(), isp_case::frame_step(1, 1)}),
              (lines_t{"c/cfgs/f0/rtl_wbc_p0.json:6:6: error: awb, wbc: missing (at 2 steps, setup "
                       "to frame 1) [missing-field]",
                       "setup: error: wbc: init: read json_obj failed: d_gain.vol (at 2 steps, "
                       "setup to frame 1) [field-not-read]",
                       "2 errors"}));
}
