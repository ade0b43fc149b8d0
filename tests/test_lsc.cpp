/* Lens shading block: two partition files through converters, exporters and module, the
 * bayer-pattern key with its trailing blank, the read order, and the raw-number curves and
 * meshes of every block raising picojson's type error on a missing or mistyped entry. */
#include <gtest/gtest.h>

#include "blocks/hdrc.h"
#include "blocks/lsc.h"
#include "isp_json_modules.h"
#include "tests/support/block_case.h"

namespace {

TEST(Lsc, CaseConvertsExportsAndReplays) {
    /* partition 1 differs in its output offset, width, location and mesh range */
    isp_test::check_block(
        {"lsc",
         {"lsc/rtl_lsc_p0.json", "lsc/rtl_lsc_p1.json"},
         R"({"_isp_lsc_user_setup_t": {"offset_in": 4096, "offset_out": 3264, "bayer_pattern": 2,
                 "img_size_v": [1080, 1080], "img_size_h": [960, 944]},
             "_isp_lsc_user_coord_t": {"mesh_length_h": 68, "mesh_length_w": 60,
                 "inv_mesh_length_h": 61681, "inv_mesh_length_w": 69905,
                 "inv_mesh_length_str.h": [61681, 61681], "inv_mesh_length_str.w": [69905, 83886],
                 "locat.x": [0, 960], "mesh_start.x": [0, 16], "mesh_end.y": [16, 16],
                 "mesh_end.x": [16, 32]},
             "_isp_lsc_user_mesh_t": {"rr_mesh": [4096, 4099, "..."], "gr_mesh": [4096, 4098, "..."],
                 "gb_mesh": [4097, 4099, "..."], "bb_mesh": [4096, 4100, "..."]}})",
         // offsets over 2^6; partition 1's pairs in member order, the inverses over 2^22
         R"({"_isp_lsc_user_setup_t": {"offset_in": 64, "offset_out": 51},
             "_isp_lsc_user_coord_t": {
                 "inv_mesh_length": [0.014705896377563477, 0.016666650772094727],
                 "inv_mesh_start": [0.014705896377563477, 0.019999980926513672],
                 "locat": [0, 960], "mesh_end": [16, 32], "mesh_length": [68, 60],
                 "mesh_start": [0, 16]}})",
         {{"lsc", qv_isp_module_lsc_json_register, {0, 1, 2, 3}}}});
}

TEST(Lsc, FieldsReportInReadOrderWithTheBlankOfTheBayerPattern) {
    EXPECT_EQ(
        isp_test::failures_of("rtl_to_drv_lsc_user_setup", isp_test::parse_object(R"({"isp_lsc": {
                  "offset_in": {"dt": 64}, "offset_out": {"dt": 64},
                  "bayer_pattern": {"mode": 3}, "img_size": {"v": 8, "h": 8}}})")),
        isp_test::failed({{"bayer_pattern", {"mode "}}}));
    EXPECT_EQ(isp_test::failures_of("rtl_to_drv_lsc_user_coord", {}, 5),
              isp_test::failed({{"mesh_length", {"h", "w"}},
                                {"inv_mesh_length_h", {"h"}},
                                {"inv_mesh_length_w", {"w"}},
                                {"inv_mesh_length_str_h", {"h"}},
                                {"inv_mesh_length_str_w", {"w"}},
                                {"locat", {"y", "x"}},
                                {"mesh_start", {"y", "x"}},
                                {"mesh_end", {"y", "x"}}}));
}

/* Raw-number tables are not caught and print nothing: a missing table or entry, or an entry that
 * is not a number, raises picojson's type error (a missing top key: RegisterMaps), one kind per
 * row over the three readers of such tables. */
TEST(RawTables, MissingOrMistypedEntriesRaiseTheTypeError) {
    enum spoil { no_table, short_table, text_entry };
    const struct {
        const char *converter, *file, *table;
        spoil how;
        const char *type;
    } rows[] = {
        {"rtl_to_drv_lsc_user_mesh", "lsc/rtl_lsc_p0.json", "gb_mesh", no_table, "array"},
        {"rtl_to_drv_lsc_user_mesh", "lsc/rtl_lsc_p0.json", "rr_mesh", text_entry, "double"},
        {"rtl_to_drv_hdrc_user_hdrc_lut", "hdrc/rtl_hdrc_p0.json", "hdrc_lut", short_table,
         "double"},
        {"rtl_to_drv_hidrc_user_hidrc_lut", "hidrc/rtl_hidrc_p0.json", "hidrc_lut", no_table,
         "array"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.converter) + " " + row.table + " " + std::to_string(row.how));
        picojson::object root = isp_test::data_object(row.file);
        const std::string top =
            "isp_" + std::string(row.file).substr(0, std::string(row.file).find('/'));
        picojson::object &registers = root[top].get<picojson::object>();
        picojson::array &table      = registers[row.table].get<picojson::array>();
        if (row.how == short_table) table.pop_back();
        if (row.how == text_entry) table[10] = picojson::value("10");
        if (row.how == no_table) registers.erase(row.table);
        const isp_test::conversion c = isp_test::convert_named(row.converter, root, 0, 0xAB);
        EXPECT_EQ(c.error, isp_test::type_error(row.type));
        EXPECT_TRUE(c.lines.empty());
    }
    /* what was written before stays: the lsc tables before the missing one; nothing of the
     * packed curve, which is read whole first */
    picojson::object no_gb = isp_test::data_object("lsc/rtl_lsc_p0.json");
    no_gb["isp_lsc"].get<picojson::object>().erase("gb_mesh");
    _isp_lsc_user_mesh_t mesh;
    isp_test::copy_bytes(isp_test::convert_named("rtl_to_drv_lsc_user_mesh", no_gb, 0, 9).bytes,
                         mesh);
    EXPECT_EQ(mesh.gr_mesh[284], 4096u + 2 * 284);
    EXPECT_EQ(mesh.gb_mesh[0], 0x09090909u);
    picojson::object short_curve = isp_test::data_object("hdrc/rtl_hdrc_p0.json");
    short_curve["isp_hdrc"].get<picojson::object>()["hdrc_lut"].get<picojson::array>().pop_back();
    _isp_hdrc_user_hdrc_lut_t lut;
    isp_test::copy_bytes(
        isp_test::convert_named("rtl_to_drv_hdrc_user_hdrc_lut", short_curve, 0, 0xAB).bytes, lut);
    EXPECT_EQ(lut.hdrc_lut[0], 0xABABABABu);
}

}  // namespace
