/* The register map the tool shows, against rows copied by hand from the blocks' register tables,
 * and `where` both ways on the members whose elements come from crossed registers. */
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/regmap/print.h"
#include "tools/regmap/regmap.h"

namespace {

using isp_case::regmap_field;

struct expected_row {
    const char *path, *format, *range, *element, *pushed_by, *cmodel_key;
};

std::vector<regmap_field> fields_of(const char *block) {
    return isp_case::block_fields(*isp::find_block_map(block));
}

void expect_rows(const std::vector<regmap_field> &fields, size_t first,
                 const std::vector<expected_row> &rows) {
    ASSERT_GE(fields.size(), first + rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        const regmap_field &f = fields[first + i];
        EXPECT_EQ(f.path + " " + f.row->format + " " + isp_case::range_words(f) + " " +
                      f.element_text + " " + isp_case::users_words(f) + " " + f.cmodel_key,
                  std::string(rows[i].path) + " " + rows[i].format + " " + rows[i].range + " " +
                      rows[i].element + " " + rows[i].pushed_by + " " + rows[i].cmodel_key)
            << "field " << first + i;
    }
}

TEST(RegisterMap, WhiteBalanceBlockIsItsRegisterTableInReadOrder) {
    const std::vector<regmap_field> fields = fields_of("wbc");
    ASSERT_EQ(fields.size(), 9u);
    expect_rows(fields, 0,
                {
                    {"isp_wbc.d_gain.val", "u10.8", "0 .. 1023.99609375 step 0.00390625", "d_gain",
                     "wbc ctrl cmd 1", "d_gain"},
                    {"isp_wbc.wb_gain0.val0", "u4.8", "0 .. 15.99609375 step 0.00390625",
                     "wb_gain[0]", "wbc ctrl cmd 1", "wb_gain[0]"},
                    {"isp_wbc.wb_gain0.val1", "u4.8", "0 .. 15.99609375 step 0.00390625",
                     "wb_gain[1]", "wbc ctrl cmd 1", "wb_gain[1]"},
                    {"isp_wbc.wb_gain2.val2", "u4.8", "0 .. 15.99609375 step 0.00390625",
                     "wb_gain[2]", "wbc ctrl cmd 1", "wb_gain[2]"},
                    {"isp_wbc.wb_gain2.val3", "u4.8", "0 .. 15.99609375 step 0.00390625",
                     "wb_gain[3]", "wbc ctrl cmd 1", "wb_gain[3]"},
                    {"isp_wbc.clip_level.val", "u14.6", "0 .. 16383.984375 step 0.015625",
                     "clip_level", "wbc ctrl cmd 1", "clip_level"},
                    {"isp_wbc.offset_in.val", "u14.6", "0 .. 16383.984375 step 0.015625",
                     "offset_in", "wbc setup cmd 2", "offset_in"},
                    {"isp_wbc.offset_out.val", "u14.6", "0 .. 16383.984375 step 0.015625",
                     "offset_out", "wbc setup cmd 2", "offset_out"},
                    // the init group has no exporter
                    {"isp_wbc.bayer_pattern.val", "u2", "0 .. 3 step 1", "bayer_pattern",
                     "wbc init cmd 3", ""},
                });
}

TEST(RegisterMap, GammaCurveReadsHighBeforeLowAndItsLastPointOnItsOwn) {
    const std::vector<regmap_field> fields = fields_of("gamma");
    ASSERT_EQ(fields.size(), 7u + 3u + 129u);
    // the 15-bit word is read first and lands second; the offsets differ in precision
    expect_rows(fields, 3,
                {
                    {"isp_gamma.dither_pmask.val15", "u15", "0 .. 32767 step 1", "dither_pmask[1]",
                     "gamma setup cmd 1", ""},
                    {"isp_gamma.dither_pmask.val16", "u16", "0 .. 65535 step 1", "dither_pmask[0]",
                     "gamma setup cmd 1", ""},
                    {"isp_gamma.gamma_offset.out", "u8.2", "0 .. 255.75 step 0.25", "offset_out",
                     "gamma setup cmd 1", "offset_out"},
                    {"isp_gamma.gamma_offset.in", "u8.4", "0 .. 255.9375 step 0.0625", "offset_in",
                     "gamma setup cmd 1", "offset_in"},
                    {"isp_gamma.dither.seed_enable", "u1", "0 .. 1 step 1", "dither_seed_enable",
                     "gamma dither cmd 2", "dither_seed_enable"},
                });
    expect_rows(fields, 10,
                {
                    {"isp_gamma.grp0[0].gam_lut.high", "u8.4", "0 .. 255.9375 step 0.0625",
                     "gam_lut[1]", "gamma lut cmd 3", "lut[1]"},
                    {"isp_gamma.grp0[0].gam_lut.low", "u8.4", "0 .. 255.9375 step 0.0625",
                     "gam_lut[0]", "gamma lut cmd 3", "lut[0]"},
                    {"isp_gamma.grp0[1].gam_lut.high", "u8.4", "0 .. 255.9375 step 0.0625",
                     "gam_lut[3]", "gamma lut cmd 3", "lut[3]"},
                });
    expect_rows(fields, 10 + 127,
                {
                    {"isp_gamma.grp0[63].gam_lut.low", "u8.4", "0 .. 255.9375 step 0.0625",
                     "gam_lut[126]", "gamma lut cmd 3", "lut[126]"},
                    {"isp_gamma.gam_lut_65.low", "u8.4", "0 .. 255.9375 step 0.0625",
                     "gam_lut[128]", "gamma lut cmd 3", "lut[128]"},
                });
}

TEST(RegisterMap, WhereMapsRegisterPathsToElementsAndBack) {
    const std::vector<regmap_field> all = isp_case::all_fields();
    const struct {
        const char *path, *element;
    } pairs[] = {
        // element k of "matrix_list" carries coefficient k ("val0") and k + 6 ("val1")
        {"isp_clc.matrix_list[1].matrix_list0.val1", "cc.clc.matrix_list[0][7]"},
        {"isp_clc.matrix_list[5].matrix_list7.val0", "cc.clc.matrix_list[7][5]"},
        {"isp_gamma.gam_lut_65.low", "gamma.lut.gam_lut[128]"},
        {"isp_gamma.grp0[63].gam_lut.high", "gamma.lut.gam_lut[127]"},
        // knot k in "low", knot k + 7 in "high"; lin_lut_y is knot-major
        {"isp_blc.grp0[3].lin_lut_x.high", "lin.lin.lin_lut_x[10]"},
        {"isp_blc.lin_lut_x_14.low", "lin.lin.lin_lut_x[14]"},
        {"isp_blc.grp3[6].lin_lut_y2.low", "lin.lin.lin_lut_y[26]"},
        {"isp_wbc.wb_gain2.val3", "wbc.ctrl.wb_gain[3]"},
    };
    for (const auto &p : pairs) {
        std::string problem;
        const auto from_path = isp_case::where(all, p.path, problem);
        ASSERT_FALSE(from_path.empty()) << p.path << ": " << problem;
        std::vector<std::string> elements;
        for (const auto &a : from_path)
            for (const auto &u : a.field->users)
                elements.push_back(u.module + "." + u.group + "." + a.field->element_text);
        EXPECT_NE(std::find(elements.begin(), elements.end(), p.element), elements.end()) << p.path;
        const auto from_element = isp_case::where(all, p.element, problem);
        ASSERT_EQ(from_element.size(), 1u) << p.element << ": " << problem;
        EXPECT_EQ(from_element[0].field->path, p.path);
    }

    std::string problem;
    const auto partition = isp_case::where(all, "cc.init.part_size_v[3]", problem);
    ASSERT_EQ(partition.size(), 1u);
    EXPECT_EQ(partition[0].field->path + " " +
                  isp_case::element_for_partition(*partition[0].field, partition[0].partition),
              "isp_clc.part_size.v part_size_v[3]");
    for (const auto &miss :
         {std::pair<const char *, const char *>{"wbc.ctrl.wb_gain[4]",
                                                "no register row fills "
                                                "wbc.ctrl.wb_gain[4]"},
          {"isp_wbc.wb_gain1.val1", "no register row reads isp_wbc.wb_gain1.val1"},
          {"wbc.lut.d_gain", "module wbc has no group \"lut\""}}) {
        EXPECT_TRUE(isp_case::where(all, miss.first, problem).empty());
        EXPECT_EQ(problem, miss.second);
    }
}

}  // namespace
