/* Lens shading block: register files to driver structures and back to C-model values. */
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "blocks/lsc.h"
#include "isp_json_modules.h"
#include "isp_sim.h"
#include "tests/support/test_support.h"

namespace {

using isp_test::parse_object;
using isp_test::split_lines;

const char *const type_error_object =
    "\"type mismatch! call is<type>() before get<type>()\" && is<object>()";
const char *const type_error_array =
    "\"type mismatch! call is<type>() before get<type>()\" && is<array>()";
const char *const type_error_number =
    "\"type mismatch! call is<type>() before get<type>()\" && is<double>()";

std::string fixture_path(int partition) {
    return std::string(ISP_TEST_DATA_DIR) + "/lsc/rtl_lsc_p" + std::to_string(partition) + ".json";
}

picojson::object fixture(int partition) {
    return parse_object(isp_test::read_file(fixture_path(partition)));
}

std::string serialized(const picojson::object &object) {
    return picojson::value(object).serialize();
}

/* A JSON array of the given numbers, written as text. */
std::string json_numbers(const std::vector<std::string> &numbers) {
    std::string text = "[";
    for (size_t i = 0; i < numbers.size(); ++i) text += (i ? "," : "") + numbers[i];
    return text + "]";
}

/* "0", "1", ..., count - 1 as JSON numbers with a fraction part ("0.0", ...). */
std::vector<std::string> counting(size_t count) {
    std::vector<std::string> numbers;
    for (size_t i = 0; i < count; ++i) numbers.push_back(std::to_string(i) + ".0");
    return numbers;
}

/* The message and exception text of a call that must throw std::runtime_error. */
template <typename Call>
std::string thrown_by(Call call) {
    try {
        call();
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return "(nothing thrown)";
}

TEST(LscConvert, SetupKeepsEachPartitionsImageSize) {
    _isp_lsc_user_setup_t setup{};
    setup.img_size_v[2] = setup.img_size_h[2] = 77;
    picojson::object p0 = fixture(0), p1 = fixture(1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtl_to_drv_lsc_user_setup(p0, &setup, 0), 0);
    EXPECT_EQ(rtl_to_drv_lsc_user_setup(p1, &setup, 1), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    EXPECT_EQ(setup.offset_in, 4096u);
    EXPECT_EQ(setup.offset_out, 3264u);  // partition 1's value
    EXPECT_EQ(setup.bayer_pattern, 2u);
    EXPECT_EQ(setup.img_size_v[0], 1080u);
    EXPECT_EQ(setup.img_size_h[0], 960u);
    EXPECT_EQ(setup.img_size_v[1], 1080u);
    EXPECT_EQ(setup.img_size_h[1], 944u);
    EXPECT_EQ(setup.img_size_v[2], 77u);
    EXPECT_EQ(setup.img_size_h[2], 77u);
}

TEST(LscConvert, BayerPatternFieldKeyEndsInABlank) {
    picojson::object root = parse_object(R"({"isp_lsc": {
        "offset_in": {"dt": 64}, "offset_out": {"dt": 64},
        "bayer_pattern": {"mode": 3}, "img_size": {"v": 8, "h": 8}}})");
    _isp_lsc_user_setup_t setup{};
    setup.bayer_pattern = 1;
    testing::internal::CaptureStderr();
    rtl_to_drv_lsc_user_setup(root, &setup, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "read json_obj failed: bayer_pattern.mode \n");
    EXPECT_EQ(setup.bayer_pattern, 0u);

    root = parse_object(R"({"isp_lsc": {"bayer_pattern": {"mode ": 3}}})");
    testing::internal::CaptureStderr();
    rtl_to_drv_lsc_user_setup(root, &setup, 0);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(setup.bayer_pattern, 3u);
}

TEST(LscConvert, CoordFillsThePartitionsRecords) {
    _isp_lsc_user_coord_t coord{};
    picojson::object p0 = fixture(0), p1 = fixture(1);
    testing::internal::CaptureStderr();
    rtl_to_drv_lsc_user_coord(p0, &coord, 0);
    rtl_to_drv_lsc_user_coord(p1, &coord, 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    EXPECT_EQ(coord.mesh_length_h, 68u);
    EXPECT_EQ(coord.mesh_length_w, 60u);
    EXPECT_EQ(coord.inv_mesh_length_h, 61681u);
    EXPECT_EQ(coord.inv_mesh_length_w, 69905u);
    EXPECT_EQ(coord.inv_mesh_length_str[0].h, 61681u);
    EXPECT_EQ(coord.inv_mesh_length_str[0].w, 69905u);
    EXPECT_EQ(coord.inv_mesh_length_str[1].h, 61681u);
    EXPECT_EQ(coord.inv_mesh_length_str[1].w, 83886u);
    EXPECT_EQ(coord.locat[0].y, 0u);
    EXPECT_EQ(coord.locat[0].x, 0u);
    EXPECT_EQ(coord.locat[1].y, 0u);
    EXPECT_EQ(coord.locat[1].x, 960u);
    EXPECT_EQ(coord.mesh_start[0].x, 0u);
    EXPECT_EQ(coord.mesh_start[1].x, 16u);
    EXPECT_EQ(coord.mesh_end[0].y, 16u);
    EXPECT_EQ(coord.mesh_end[0].x, 16u);
    EXPECT_EQ(coord.mesh_end[1].y, 16u);
    EXPECT_EQ(coord.mesh_end[1].x, 32u);
}

TEST(LscConvert, MissingTopKeyReportsEveryCoordFieldInOrder) {
    picojson::object root = parse_object(R"({"isp_dem": {}})");
    _isp_lsc_user_coord_t coord{};
    coord.mesh_length_h = coord.inv_mesh_length_w = 5;
    coord.locat[5].x = coord.mesh_end[5].y = 5;
    testing::internal::CaptureStderr();
    rtl_to_drv_lsc_user_coord(root, &coord, 5);
    const std::vector<std::string> expected = {"read json_obj failed: mesh_length.h",
                                               "read json_obj failed: mesh_length.w",
                                               "read json_obj failed: inv_mesh_length_h.h",
                                               "read json_obj failed: inv_mesh_length_w.w",
                                               "read json_obj failed: inv_mesh_length_str_h.h",
                                               "read json_obj failed: inv_mesh_length_str_w.w",
                                               "read json_obj failed: locat.y",
                                               "read json_obj failed: locat.x",
                                               "read json_obj failed: mesh_start.y",
                                               "read json_obj failed: mesh_start.x",
                                               "read json_obj failed: mesh_end.y",
                                               "read json_obj failed: mesh_end.x"};
    EXPECT_EQ(split_lines(testing::internal::GetCapturedStderr()), expected);
    EXPECT_EQ(coord.mesh_length_h, 0u);
    EXPECT_EQ(coord.inv_mesh_length_w, 0u);
    EXPECT_EQ(coord.locat[5].x, 0u);
    EXPECT_EQ(coord.mesh_end[5].y, 0u);
    ASSERT_EQ(root.count("isp_lsc"), 1u);
    EXPECT_TRUE(root["isp_lsc"].is<picojson::null>());
}

TEST(LscMesh, RegisterFileFillsFourRawTables) {
    picojson::object root = fixture(0);
    _isp_lsc_user_mesh_t mesh{};
    testing::internal::CaptureStderr();
    EXPECT_EQ(rtl_to_drv_lsc_user_mesh(root, &mesh, 0), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    for (uint32_t i = 0; i < ISP_LSC_MESH_SIZE; ++i) {
        ASSERT_EQ(mesh.rr_mesh[i], 4096 + 3 * i) << i;
        ASSERT_EQ(mesh.gr_mesh[i], 4096 + 2 * i) << i;
        ASSERT_EQ(mesh.gb_mesh[i], 4097 + 2 * i) << i;
        ASSERT_EQ(mesh.bb_mesh[i], 4096 + 4 * i) << i;
    }
}

TEST(LscMesh, NumbersAreTruncatedAndSaturatedWithoutEncoding) {
    std::vector<std::string> rr = counting(ISP_LSC_MESH_SIZE);
    rr[1]                       = "-3.7";
    rr[2]                       = "7.9";
    rr[3]                       = "1e12";
    rr[4]                       = "4294967295.5";
    const std::string table     = json_numbers(rr);
    picojson::object root =
        parse_object(R"({"isp_lsc": {"rr_mesh": )" + table + R"(, "gr_mesh": )" + table +
                     R"(, "gb_mesh": )" + table + R"(, "bb_mesh": )" + table + "}}");
    _isp_lsc_user_mesh_t mesh{};
    rtl_to_drv_lsc_user_mesh(root, &mesh, 0);
    EXPECT_EQ(mesh.rr_mesh[0], 0u);
    EXPECT_EQ(mesh.rr_mesh[1], 0u);
    EXPECT_EQ(mesh.rr_mesh[2], 7u);
    EXPECT_EQ(mesh.rr_mesh[3], 4294967295u);
    EXPECT_EQ(mesh.rr_mesh[4], 4294967295u);
    EXPECT_EQ(mesh.rr_mesh[5], 5u);
    EXPECT_EQ(mesh.rr_mesh[284], 284u);
    EXPECT_EQ(mesh.bb_mesh[284], 284u);
}

TEST(LscMesh, MissingTableThrowsAfterTheTablesBeforeIt) {
    picojson::object root = fixture(0);
    root["isp_lsc"].get<picojson::object>().erase("gb_mesh");
    _isp_lsc_user_mesh_t mesh;
    for (uint32_t i = 0; i < ISP_LSC_MESH_SIZE; ++i)
        mesh.rr_mesh[i] = mesh.gr_mesh[i] = mesh.gb_mesh[i] = mesh.bb_mesh[i] = 9;
    testing::internal::CaptureStderr();
    EXPECT_EQ(thrown_by([&] { rtl_to_drv_lsc_user_mesh(root, &mesh, 0); }), type_error_array);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");  // nothing caught, nothing printed
    EXPECT_EQ(mesh.rr_mesh[284], 4096u + 3 * 284);
    EXPECT_EQ(mesh.gr_mesh[284], 4096u + 2 * 284);
    EXPECT_EQ(mesh.gb_mesh[0], 9u);
    EXPECT_EQ(mesh.bb_mesh[0], 9u);
    EXPECT_TRUE(root["isp_lsc"].get<picojson::object>()["gb_mesh"].is<picojson::null>());
}

TEST(LscMesh, BadEntryThrowsKeepingTheEntriesBeforeIt) {
    std::vector<std::string> rr = counting(ISP_LSC_MESH_SIZE);
    rr[10]                      = "\"10\"";
    picojson::object root = parse_object(R"({"isp_lsc": {"rr_mesh": )" + json_numbers(rr) + "}}");
    _isp_lsc_user_mesh_t mesh{};
    mesh.rr_mesh[9] = mesh.rr_mesh[10] = mesh.rr_mesh[11] = 77;
    EXPECT_EQ(thrown_by([&] { rtl_to_drv_lsc_user_mesh(root, &mesh, 0); }), type_error_number);
    EXPECT_EQ(mesh.rr_mesh[9], 9u);
    EXPECT_EQ(mesh.rr_mesh[10], 77u);
    EXPECT_EQ(mesh.rr_mesh[11], 77u);
}

TEST(LscMesh, ShortTableThrowsAtItsEnd) {
    picojson::object root = parse_object(R"({"isp_lsc": {"rr_mesh": )" +
                                         json_numbers(counting(ISP_LSC_MESH_SIZE - 1)) + "}}");
    _isp_lsc_user_mesh_t mesh{};
    mesh.rr_mesh[284] = 9;
    EXPECT_EQ(thrown_by([&] { rtl_to_drv_lsc_user_mesh(root, &mesh, 0); }), type_error_number);
    EXPECT_EQ(mesh.rr_mesh[283], 283u);
    EXPECT_EQ(mesh.rr_mesh[284], 9u);
}

TEST(LscMesh, MissingTopKeyThrowsTheObjectError) {
    picojson::object root = parse_object(R"({"isp_wbc": {}})");
    _isp_lsc_user_mesh_t mesh{};
    EXPECT_EQ(thrown_by([&] { rtl_to_drv_lsc_user_mesh(root, &mesh, 0); }), type_error_object);
}

TEST(LscExport, SetupWritesOnlyTheOffsets) {
    _isp_lsc_user_setup_t setup{};
    setup.offset_in      = 4096;
    setup.offset_out     = 65535;
    setup.bayer_pattern  = 3;
    setup.img_size_v[0]  = 1080;
    picojson::object out = parse_object(R"({"offset_in": [1], "gain": 2})");
    EXPECT_EQ(drv_to_cmodel_lsc_user_setup(&setup, out, 0), 0);
    EXPECT_EQ(serialized(out), R"({"gain":2,"offset_in":64,"offset_out":1023.984375})");
}

TEST(LscExport, CoordWritesThePartitionsPairsInMemberOrder) {
    _isp_lsc_user_coord_t coord{};
    coord.mesh_length_h          = 68;
    coord.mesh_length_w          = 60;
    coord.inv_mesh_length_h      = 1u << 22;
    coord.inv_mesh_length_w      = 1u << 21;
    coord.inv_mesh_length_str[3] = {1u << 20, 3u << 20};
    coord.locat[3]               = {540, 960};
    coord.mesh_start[3]          = {8, 16};
    coord.mesh_end[3]            = {17, 33};
    coord.locat[0]               = {1, 1};
    picojson::object out;
    EXPECT_EQ(drv_to_cmodel_lsc_user_coord(&coord, out, 3), 0);
    EXPECT_EQ(serialized(out),
              R"({"inv_mesh_length":[1,0.5],"inv_mesh_start":[0.25,0.75],"locat":[540,960],)"
              R"("mesh_end":[17,33],"mesh_length":[68,60],"mesh_start":[8,16]})");
}

TEST(LscExport, ConvertedFilesExportEachFieldOverItsScale) {
    picojson::object p0 = fixture(0), p1 = fixture(1);
    _isp_lsc_user_setup_t setup{};
    _isp_lsc_user_coord_t coord{};
    rtl_to_drv_lsc_user_setup(p0, &setup, 0);
    rtl_to_drv_lsc_user_coord(p0, &coord, 0);
    rtl_to_drv_lsc_user_coord(p1, &coord, 1);
    picojson::object out;
    drv_to_cmodel_lsc_user_setup(&setup, out, 0);
    drv_to_cmodel_lsc_user_coord(&coord, out, 1);
    // 4096 / 2^6, 3200 / 2^6; 61681, 69905, 83886 / 2^22
    EXPECT_EQ(serialized(out),
              R"({"inv_mesh_length":[0.014705896377563477,0.016666650772094727],)"
              R"("inv_mesh_start":[0.014705896377563477,0.019999980926513672],)"
              R"("locat":[0,960],"mesh_end":[16,32],"mesh_length":[68,60],"mesh_start":[0,16],)"
              R"("offset_in":64,"offset_out":50})");
}

/* One pushed group: its command and the bytes of the structure, compared whole. */
template <typename T>
void expect_push(const isp_sim::call &push, uint32_t cmd, const T &expected) {
    EXPECT_EQ(push.cmd, cmd);
    ASSERT_EQ(push.payload.size(), sizeof(T)) << "command " << cmd;
    EXPECT_EQ(std::memcmp(push.payload.data(), &expected, sizeof(T)), 0) << "command " << cmd;
}

TEST(LscReplay, ModulePushesTheGroupsOfBothPartitions) {
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    isp_test::temp_dir dir;
    dir.write("cfgs/f0/rtl_lsc_p0.json", isp_test::read_file(fixture_path(0)));
    dir.write("cfgs/f0/rtl_lsc_p1.json", isp_test::read_file(fixture_path(1)));
    isp_test::pipe pipe(2, 1, dir.path());
    JsonModuleHandle handle = pipe.handle();
    JsonModuleOps *ops      = nullptr;
    ASSERT_EQ(qv_isp_module_lsc_json_register(&ops), 0);
    ASSERT_EQ(ops->create(&handle), 0);
    ASSERT_EQ(ops->init(&handle), 0);

    _isp_lsc_user_setup_t setup;
    std::memset(&setup, 0, sizeof setup);
    setup.offset_in     = 4096;
    setup.offset_out    = 3264;
    setup.bayer_pattern = 2;
    setup.img_size_v[0] = 1080;
    setup.img_size_h[0] = 960;
    setup.img_size_v[1] = 1080;
    setup.img_size_h[1] = 944;
    _isp_lsc_user_coord_t coord;
    std::memset(&coord, 0, sizeof coord);
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
    _isp_lsc_user_mesh_t mesh;
    for (uint32_t i = 0; i < ISP_LSC_MESH_SIZE; ++i) {
        mesh.rr_mesh[i] = 4096 + 3 * i;
        mesh.gr_mesh[i] = 4096 + 2 * i;
        mesh.gb_mesh[i] = 4097 + 2 * i;
        mesh.bb_mesh[i] = 4096 + 4 * i;
    }
    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 4u);
    EXPECT_EQ(pushes[0].cmd, 0u);  // the default parameters
    expect_push(pushes[1], 1, setup);
    expect_push(pushes[2], 2, coord);
    expect_push(pushes[3], 3, mesh);

    EXPECT_EQ(ops->deinit(&handle), 0);
    EXPECT_EQ(ops->destroy(&handle), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
