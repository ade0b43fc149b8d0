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

using isp_test::clear;  // in place: a copy need not keep padding bytes
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

/* What the fixtures hold, written out by hand, after partitions 0 and 1. */
void fill_expected(_isp_lsc_user_setup_t &setup) {
    clear(setup);
    setup.offset_in     = 4096;
    setup.offset_out    = 3264;  // partition 1's; partition 0 has 3200
    setup.bayer_pattern = 2;
    setup.img_size_v[0] = 1080;
    setup.img_size_h[0] = 960;
    setup.img_size_v[1] = 1080;
    setup.img_size_h[1] = 944;
}

void fill_expected(_isp_lsc_user_coord_t &coord) {
    clear(coord);
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

/* Compares bytes with the hand-filled expected structure of type T, padding included. */
template <typename T>
void expect_bytes(const void *actual, size_t size, const std::string &what) {
    T expected;
    fill_expected(expected);
    ASSERT_EQ(size, sizeof(T)) << what;
    EXPECT_EQ(std::memcmp(actual, &expected, sizeof(T)), 0) << what;
}

template <typename T>
void expect_filled(const T &actual, const std::string &what) {
    expect_bytes<T>(&actual, sizeof actual, what);
}

TEST(LscConvert, RegisterFilesFillEveryGroup) {
    picojson::object files[2] = {fixture(0), fixture(1)};
    _isp_lsc_user_setup_t setup;
    _isp_lsc_user_coord_t coord;
    _isp_lsc_user_mesh_t mesh;
    clear(setup), clear(coord), clear(mesh);
    testing::internal::CaptureStderr();
    for (uint8_t p = 0; p < 2; ++p) {
        EXPECT_EQ(rtl_to_drv_lsc_user_setup(files[p], &setup, p), 0);
        EXPECT_EQ(rtl_to_drv_lsc_user_coord(files[p], &coord, p), 0);
        EXPECT_EQ(rtl_to_drv_lsc_user_mesh(files[p], &mesh, p), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    expect_filled(setup, "setup");
    expect_filled(coord, "coord");
    expect_filled(mesh, "mesh");
}

TEST(LscConvert, OtherPartitionsElementsAreLeftAlone) {
    picojson::object p1 = fixture(1);
    _isp_lsc_user_setup_t setup{};
    _isp_lsc_user_coord_t coord{};
    setup.img_size_h[0] = coord.locat[0].x = coord.inv_mesh_length_str[2].w = 77;
    rtl_to_drv_lsc_user_setup(p1, &setup, 1);
    rtl_to_drv_lsc_user_coord(p1, &coord, 1);
    EXPECT_EQ(setup.img_size_h[1], 944u);
    EXPECT_EQ(setup.img_size_h[0], 77u);
    EXPECT_EQ(coord.locat[1].x, 960u);
    EXPECT_EQ(coord.locat[0].x, 77u);
    EXPECT_EQ(coord.inv_mesh_length_str[2].w, 77u);
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
void expect_push(const isp_sim::call &push, uint32_t cmd) {
    EXPECT_EQ(push.cmd, cmd);
    expect_bytes<T>(push.payload.data(), push.payload.size(), "command " + std::to_string(cmd));
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

    const std::vector<isp_sim::call> pushes = isp_sim::calls_of("vin_hal_wrapper_setup");
    ASSERT_EQ(pushes.size(), 4u);
    EXPECT_EQ(pushes[0].cmd, 0u);  // the default parameters
    expect_push<_isp_lsc_user_setup_t>(pushes[1], 1);
    expect_push<_isp_lsc_user_coord_t>(pushes[2], 2);
    expect_push<_isp_lsc_user_mesh_t>(pushes[3], 3);

    EXPECT_EQ(ops->deinit(&handle), 0);
    EXPECT_EQ(ops->destroy(&handle), 0);
    EXPECT_TRUE(isp_sim::problems().empty());
}

}  // namespace
