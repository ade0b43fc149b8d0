/* Lens shading block: register files to driver structures and back to C-model values. */
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/lsc.h"
#include "isp_json_modules.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::bytes_of;
using isp_test::clear;
using isp_test::parse_object;
using isp_test::runtime_error_of;
using isp_test::serialized;
using isp_test::stderr_of;
using isp_test::type_error;

picojson::object fixture(int partition) {
    return isp_test::data_object("lsc/rtl_lsc_p" + std::to_string(partition) + ".json");
}

/* A mesh table of the numbers 0.0, 1.0, ... written as text, with some replaced. */
std::string mesh_text(size_t count, const std::vector<std::pair<size_t, std::string>> &changes) {
    std::vector<std::string> numbers;
    for (size_t i = 0; i < count; ++i) numbers.push_back(std::to_string(i) + ".0");
    for (const auto &change : changes) numbers[change.first] = change.second;
    std::string text = "[";
    for (size_t i = 0; i < numbers.size(); ++i) text += (i ? "," : "") + numbers[i];
    return text + "]";
}

/* What the fixtures hold, written out by hand, after partitions 0 and 1. */
void fill_expected(_isp_lsc_user_setup_t &setup) {
    setup.offset_in     = 4096;
    setup.offset_out    = 3264;  // partition 1's; partition 0 has 3200
    setup.bayer_pattern = 2;
    setup.img_size_v[0] = 1080;
    setup.img_size_h[0] = 960;
    setup.img_size_v[1] = 1080;
    setup.img_size_h[1] = 944;
}
void fill_expected(_isp_lsc_user_coord_t &coord) {
    coord.mesh_length_h          = 68;
    coord.mesh_length_w          = 60;
    coord.inv_mesh_length_h      = 61681;
    coord.inv_mesh_length_w      = 69905;
    coord.inv_mesh_length_str[0] = {61681, 69905};
    coord.inv_mesh_length_str[1] = {61681, 83886};
    coord.locat[1]               = {0, 960};
    coord.mesh_start[1]          = {0, 16};
    coord.mesh_end[0]            = {16, 16};
    coord.mesh_end[1]            = {16, 32};
}
void fill_expected(_isp_lsc_user_mesh_t &mesh) {
    for (uint32_t i = 0; i < ISP_LSC_MESH_SIZE; ++i) {
        mesh.rr_mesh[i] = 4096 + 3 * i;
        mesh.gr_mesh[i] = 4096 + 2 * i;
        mesh.gb_mesh[i] = 4097 + 2 * i;
        mesh.bb_mesh[i] = 4096 + 4 * i;
    }
}

/* The bytes of the expected structure, padding included. */
template <typename T>
std::vector<uint8_t> expected() {
    return isp_test::bytes_filled<T>(fill_expected);
}

TEST(LscConvert, PartitionFilesFillEveryGroupAndLeaveOtherPartitionsAlone) {
    picojson::object files[2] = {fixture(0), fixture(1)};
    _isp_lsc_user_setup_t setup;
    _isp_lsc_user_coord_t coord;
    _isp_lsc_user_mesh_t mesh;
    clear(setup), clear(coord), clear(mesh);
    setup.img_size_h[2] = coord.locat[2].x = coord.inv_mesh_length_str[2].w = 77;
    EXPECT_EQ(stderr_of([&] {
                  for (uint8_t p = 0; p < 2; ++p) {
                      EXPECT_EQ(rtl_to_drv_lsc_user_setup(files[p], &setup, p), 0);
                      EXPECT_EQ(rtl_to_drv_lsc_user_coord(files[p], &coord, p), 0);
                      EXPECT_EQ(rtl_to_drv_lsc_user_mesh(files[p], &mesh, p), 0);
                  }
              }),
              "");
    EXPECT_EQ(setup.img_size_h[2], 77u);
    EXPECT_EQ(coord.locat[2].x, 77u);
    EXPECT_EQ(coord.inv_mesh_length_str[2].w, 77u);
    setup.img_size_h[2] = coord.locat[2].x = coord.inv_mesh_length_str[2].w = 0;
    EXPECT_EQ(bytes_of(setup), expected<_isp_lsc_user_setup_t>());
    EXPECT_EQ(bytes_of(coord), expected<_isp_lsc_user_coord_t>());
    EXPECT_EQ(bytes_of(mesh), expected<_isp_lsc_user_mesh_t>());

    /* setup writes only the offsets; coord the partition's pairs, in member order */
    picojson::object out = parse_object(R"({"offset_in": [1], "gain": 2})");
    EXPECT_EQ(drv_to_cmodel_lsc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(drv_to_cmodel_lsc_user_coord(&coord, out, 1), 0);
    // 4096 / 2^6, 3264 / 2^6; 61681, 69905, 83886 / 2^22
    EXPECT_EQ(serialized(out),
              R"({"gain":2,"inv_mesh_length":[0.014705896377563477,0.016666650772094727],)"
              R"("inv_mesh_start":[0.014705896377563477,0.019999980926513672],)"
              R"("locat":[0,960],"mesh_end":[16,32],"mesh_length":[68,60],"mesh_start":[0,16],)"
              R"("offset_in":64,"offset_out":51})");
}

TEST(LscConvert, BayerPatternFieldKeyEndsInABlank) {
    picojson::object root = parse_object(R"({"isp_lsc": {
        "offset_in": {"dt": 64}, "offset_out": {"dt": 64},
        "bayer_pattern": {"mode": 3}, "img_size": {"v": 8, "h": 8}}})");
    _isp_lsc_user_setup_t setup{};
    setup.bayer_pattern = 1;
    EXPECT_EQ(stderr_of([&] { rtl_to_drv_lsc_user_setup(root, &setup, 0); }),
              "read json_obj failed: bayer_pattern.mode \n");
    EXPECT_EQ(setup.bayer_pattern, 0u);
}

TEST(LscConvert, MissingTopKeyReportsEveryCoordFieldInOrder) {
    picojson::object root = parse_object(R"({"isp_dem": {}})");
    _isp_lsc_user_coord_t coord{};
    coord.mesh_length_h = coord.inv_mesh_length_w = 5;
    coord.locat[5].x = coord.mesh_end[5].y = 5;
    EXPECT_EQ(isp_test::stderr_lines_of([&] { rtl_to_drv_lsc_user_coord(root, &coord, 5); }),
              (std::vector<std::string>{
                  "read json_obj failed: mesh_length.h", "read json_obj failed: mesh_length.w",
                  "read json_obj failed: inv_mesh_length_h.h",
                  "read json_obj failed: inv_mesh_length_w.w",
                  "read json_obj failed: inv_mesh_length_str_h.h",
                  "read json_obj failed: inv_mesh_length_str_w.w", "read json_obj failed: locat.y",
                  "read json_obj failed: locat.x", "read json_obj failed: mesh_start.y",
                  "read json_obj failed: mesh_start.x", "read json_obj failed: mesh_end.y",
                  "read json_obj failed: mesh_end.x"}));
    EXPECT_EQ(coord.mesh_length_h, 0u);
    EXPECT_EQ(coord.inv_mesh_length_w, 0u);
    EXPECT_EQ(coord.locat[5].x, 0u);
    EXPECT_EQ(coord.mesh_end[5].y, 0u);
    EXPECT_TRUE(root.at("isp_lsc").is<picojson::null>());
}

/* The mesh reads raw numbers: truncated and saturated to unsigned, not encoded. */
TEST(LscMesh, NumbersAreTruncatedAndSaturatedWithoutEncoding) {
    const std::string table =
        mesh_text(ISP_LSC_MESH_SIZE, {{1, "-3.7"}, {2, "7.9"}, {3, "1e12"}, {4, "4294967295.5"}});
    picojson::object root =
        parse_object(R"({"isp_lsc": {"rr_mesh": )" + table + R"(, "gr_mesh": )" + table +
                     R"(, "gb_mesh": )" + table + R"(, "bb_mesh": )" + table + "}}");
    _isp_lsc_user_mesh_t mesh{};
    rtl_to_drv_lsc_user_mesh(root, &mesh, 0);
    const uint32_t first[6] = {0, 0, 7, 4294967295u, 4294967295u, 5};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(mesh.rr_mesh[i], first[i]) << i;
    EXPECT_EQ(mesh.rr_mesh[284], 284u);
    EXPECT_EQ(mesh.bb_mesh[284], 284u);
}

/* Nothing is caught and nothing printed: a missing top key, table or entry, or an entry that is
 * not a number, raises picojson's type error, and the entries before it stay written. */
TEST(LscMesh, MissingOrMalformedTablesThrowKeepingWhatWasWritten) {
    picojson::object no_gb = fixture(0);
    no_gb["isp_lsc"].get<picojson::object>().erase("gb_mesh");
    _isp_lsc_user_mesh_t mesh;
    for (uint32_t i = 0; i < ISP_LSC_MESH_SIZE; ++i)
        mesh.rr_mesh[i] = mesh.gr_mesh[i] = mesh.gb_mesh[i] = mesh.bb_mesh[i] = 9;
    EXPECT_EQ(stderr_of([&] {
                  EXPECT_EQ(runtime_error_of([&] { rtl_to_drv_lsc_user_mesh(no_gb, &mesh, 0); }),
                            type_error("array"));
              }),
              "");
    EXPECT_EQ(mesh.rr_mesh[284], 4096u + 3 * 284);
    EXPECT_EQ(mesh.gr_mesh[284], 4096u + 2 * 284);
    EXPECT_EQ(mesh.gb_mesh[0], 9u);
    EXPECT_EQ(mesh.bb_mesh[0], 9u);
    EXPECT_TRUE(no_gb["isp_lsc"].get<picojson::object>()["gb_mesh"].is<picojson::null>());

    picojson::object bad_entry = parse_object(
        R"({"isp_lsc": {"rr_mesh": )" + mesh_text(ISP_LSC_MESH_SIZE, {{10, "\"10\""}}) + "}}");
    EXPECT_EQ(runtime_error_of([&] { rtl_to_drv_lsc_user_mesh(bad_entry, &mesh, 0); }),
              type_error("double"));
    EXPECT_EQ(mesh.rr_mesh[9], 9u);
    EXPECT_EQ(mesh.rr_mesh[10], 4096u + 3 * 10);

    picojson::object short_table =
        parse_object(R"({"isp_lsc": {"rr_mesh": )" + mesh_text(ISP_LSC_MESH_SIZE - 1, {}) + "}}");
    EXPECT_EQ(runtime_error_of([&] { rtl_to_drv_lsc_user_mesh(short_table, &mesh, 0); }),
              type_error("double"));
    EXPECT_EQ(mesh.rr_mesh[283], 283u);
    EXPECT_EQ(mesh.rr_mesh[284], 4096u + 3 * 284);

    picojson::object no_top = parse_object(R"({"isp_wbc": {}})");
    EXPECT_EQ(runtime_error_of([&] { rtl_to_drv_lsc_user_mesh(no_top, &mesh, 0); }),
              type_error("object"));
}

TEST(LscModule, ReplaysTheGroupsOfBothPartitions) {
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_lsc_p0.json", isp_test::data_text("lsc/rtl_lsc_p0.json"));
    dir.write("cfgs/f0/rtl_lsc_p1.json", isp_test::data_text("lsc/rtl_lsc_p1.json"));
    const std::vector<isp_sim::call> pushes =
        isp_test::replay(qv_isp_module_lsc_json_register, dir, 2);
    ASSERT_EQ(isp_test::commands_of(pushes), (std::vector<uint32_t>{0, 1, 2, 3}));
    EXPECT_EQ(pushes[1].payload, expected<_isp_lsc_user_setup_t>());
    EXPECT_EQ(pushes[2].payload, expected<_isp_lsc_user_coord_t>());
    EXPECT_EQ(pushes[3].payload, expected<_isp_lsc_user_mesh_t>());
}

}  // namespace
