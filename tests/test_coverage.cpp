/* Register coverage of small hand-built suites against counts made by hand: places, spread,
 * limits, the cap on distinct values and the order of the text view. */
#include <stdio.h>
#include <stdlib.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/test_support.h"
#include "tools/coverage/coverage.h"
#include "tools/coverage/print.h"

namespace {

using isp_case::coverage_report;
using isp_case::field_coverage;
using isp_test::temp_dir;

/* A white balance file: d_gain varies, wb_gain0.val0 is always 1.0, the rest as given. */
std::string wbc_file(const std::string &d_gain, const std::string &more = "") {
    return "{\"isp_wbc\": {\"d_gain\": {\"val\": " + d_gain + "}, \"wb_gain0\": {\"val0\": 256}" +
           more + "}}";
}

coverage_report coverage_of(const std::string &suite) {
    std::vector<isp_case::case_options> cases;
    std::string error;
    EXPECT_TRUE(isp_case::coverage_cases({suite}, cases, error)) << error;
    isp_case::coverage_tally tally;
    for (const isp_case::case_options &options : cases) {
        isp_case::run_settings settings;
        isp_case::case_contents contents;
        EXPECT_TRUE(isp_case::resolve_settings(options, settings, contents, error)) << error;
        tally.add_case(settings);
    }
    return tally.report();
}

const field_coverage &field(const coverage_report &r, const std::string &path) {
    for (const field_coverage &c : r.fields)
        if (c.field.path == path) return c;
    throw std::runtime_error("no field " + path);
}

std::string text_of(const coverage_report &r) {
    char *buffer = nullptr;
    size_t size  = 0;
    FILE *out    = open_memstream(&buffer, &size);
    isp_case::print_coverage_text(out, r);
    fclose(out);
    const std::string text(buffer, size);
    free(buffer);
    return text;
}

/* Three cases: a with two frames of two partitions, b with one file, c with two frames. */
class ThreeCaseSuite : public ::testing::Test {
  protected:
    void SetUp() override {
        dir.write("suite/a/cfgs/f0/rtl_wbc_p0.json", wbc_file("256"));
        dir.write("suite/a/cfgs/f0/rtl_wbc_p1.json", wbc_file("300"));
        dir.write("suite/a/cfgs/f1/rtl_wbc_p0.json", wbc_file("256"));
        dir.write("suite/a/cfgs/f1/rtl_wbc_p1.json", wbc_file("262143.7"));  // truncated
        dir.write("suite/b/cfgs/f0/rtl_wbc_p0.json",
                  wbc_file("384", ", \"bayer_pattern\": {\"val\": 3}"));
        dir.write("suite/c/cfgs/f0/rtl_wbc_p0.json",
                  wbc_file("0", ", \"clip_level\": {\"val\": \"12\"}"));  // not a number
        dir.write("suite/c/cfgs/f1/rtl_wbc_p0.json", wbc_file("256"));
        report = coverage_of(dir.path() + "/suite");
    }
    temp_dir dir;
    coverage_report report;
};

TEST_F(ThreeCaseSuite, CountsPlacesSpreadAndLimitsOfEachField) {
    EXPECT_EQ(report.cases, 3u);
    EXPECT_EQ(report.files_read, 7u);
    ASSERT_EQ(report.blocks, std::vector<std::string>{"wbc"});
    ASSERT_EQ(report.fields.size(), 9u);  // every field of the block, held or not

    const field_coverage &gain = field(report, "isp_wbc.d_gain.val");
    EXPECT_EQ(gain.cases, 3u);
    EXPECT_EQ(gain.frames, 5u);
    EXPECT_EQ(gain.partitions, 7u);
    EXPECT_EQ(gain.values, 7u);
    EXPECT_EQ(gain.distinct, 5u);  // 0, 256, 300, 384, 262143
    EXPECT_EQ(gain.min, 0);
    EXPECT_EQ(gain.max, 262143);  // u10.8's largest code
    EXPECT_EQ(gain.at_min, 1u);
    EXPECT_EQ(gain.at_max, 1u);
    EXPECT_FALSE(gain.constant());

    EXPECT_FALSE(field(report, "isp_wbc.clip_level.val").held());
}

TEST_F(ThreeCaseSuite, TextViewListsTheLeastExercisedFirst) {
    const std::vector<std::string> lines = isp_test::split_lines(text_of(report));
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 5),
              (std::vector<std::string>{
                  "Register coverage of 3 cases: 7 register files read, block wbc",
                  "  fields held: 3 of 9 (6 that no case holds)",
                  "  constant: 2 fields never moved from one value across the suite",
                  "  at the format's limits: 2 fields with a value at the largest code, 1 at "
                  "the smallest",
                  "  least exercised first: fewest distinct values, then fewest cases, then "
                  "fewest values",
              }));
    EXPECT_EQ(std::vector<std::string>(lines.begin() + 6, lines.end()),
              (std::vector<std::string>{
                  "  register                   format  cases  frames  partitions  values  "
                  "distinct  min      max                     at min  at max",
                  "  isp_wbc.wb_gain0.val1      u4.8    0      0       0           0       0       "
                  "  -        -                       0       0",
                  "  isp_wbc.wb_gain2.val2      u4.8    0      0       0           0       0       "
                  "  -        -                       0       0",
                  "  isp_wbc.wb_gain2.val3      u4.8    0      0       0           0       0       "
                  "  -        -                       0       0",
                  "  isp_wbc.clip_level.val     u14.6   0      0       0           0       0       "
                  "  -        -                       0       0",
                  "  isp_wbc.offset_in.val      u14.6   0      0       0           0       0       "
                  "  -        -                       0       0",
                  "  isp_wbc.offset_out.val     u14.6   0      0       0           0       0       "
                  "  -        -                       0       0",
                  // one value: in one case before in three, against the map's order
                  "  isp_wbc.bayer_pattern.val  u2      1      1       1           1       1       "
                  "  3 (3)    3 (3)                   0       1",
                  "  isp_wbc.wb_gain0.val0      u4.8    3      5       7           7       1       "
                  "  256 (1)  256 (1)                 0       0",
                  "  isp_wbc.d_gain.val         u10.8   3      5       7           7       5       "
                  "  0 (0)    262143 (1023.99609375)  1       1",
              }));
}

TEST(Coverage, DistinctValuesPastTheCapAreCountedAsMore) {
    temp_dir dir;
    for (int frame = 0; frame <= int(isp_case::coverage_distinct_cap); ++frame)
        dir.write("case/cfgs/f" + std::to_string(frame) + "/rtl_wbc_p0.json",
                  wbc_file(std::to_string(frame)));
    const isp_case::coverage_report report = coverage_of(dir.path() + "/case");
    const field_coverage &gain             = field(report, "isp_wbc.d_gain.val");
    EXPECT_EQ(gain.values, isp_case::coverage_distinct_cap + 1);
    EXPECT_EQ(gain.distinct, isp_case::coverage_distinct_cap);
    EXPECT_TRUE(gain.more);
    EXPECT_EQ(gain.max, int64_t(isp_case::coverage_distinct_cap));  // min and max stay exact
}

}  // namespace
