#include "tests/support/test_support.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace isp_test {

temp_dir::temp_dir() {
    const char *base = getenv("TMPDIR");
    std::string name = std::string(base && *base ? base : "/tmp") + "/isp_json_test_XXXXXX";
    if (!mkdtemp(&name[0])) throw std::runtime_error("mkdtemp failed");
    path_ = name;
}

temp_dir::~temp_dir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string temp_dir::write(const std::string &relative, const std::string &text) const {
    const std::string full = path_ + "/" + relative;
    std::filesystem::create_directories(std::filesystem::path(full).parent_path());
    std::ofstream(full, std::ios::binary) << text;
    return full;
}

std::string temp_dir::mkdir(const std::string &relative) const {
    std::filesystem::create_directories(path_ + "/" + relative);
    return path_ + "/" + relative;
}

std::string read_file(const std::string &path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string data_text(const std::string &relative) {
    return read_file(std::string(ISP_TEST_DATA_DIR) + "/" + relative);
}

picojson::object parse_object(const std::string &text) {
    picojson::value value;
    EXPECT_EQ(picojson::parse(value, text), "") << text;
    return value.is<picojson::object>() ? value.get<picojson::object>() : picojson::object();
}

std::vector<std::string> split_lines(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

std::string stderr_of(const std::function<void()> &body) {
    testing::internal::CaptureStderr();
    body();
    return testing::internal::GetCapturedStderr();
}

void add_failed(std::vector<std::string> &lines, const std::string &reg,
                const std::vector<std::string> &fields, int times) {
    for (int i = 0; i < times; ++i)
        for (const std::string &field : fields)
            lines.push_back("read json_obj failed: " + reg + "." + field);
}

std::string runtime_error_of(const std::function<void()> &body) {
    try {
        body();
    } catch (const std::runtime_error &error) {
        return error.what();
    }
    return "no exception";
}

std::string type_error(const char *type) {
    return std::string("\"type mismatch! call is<type>() before get<type>()\" && is<") + type +
           ">()";
}

std::string format(const char *fmt, ...) {
    char text[512];
    va_list args;
    va_start(args, fmt);
    vsnprintf(text, sizeof text, fmt, args);
    va_end(args);
    return text;
}

std::string error_line(const std::string &function, int line, uint32_t code,
                       const std::string &text) {
    return format("[E][%32s][%4d]: Error [%x]: %s\n", function.c_str(), line, code, text.c_str());
}

void expect_log(size_t index, const std::string &text, int32_t level) {
    const std::vector<isp_sim::log_line> &lines = isp_sim::log_lines();
    ASSERT_EQ(lines.size(), index + 1) << text;
    EXPECT_EQ(lines.back().level, level);
    EXPECT_EQ(lines.back().tag, "ISP");
    EXPECT_EQ(lines.back().flag, 1);
    EXPECT_EQ(lines.back().text, text);
}

std::vector<std::string> names_of(const std::vector<isp_sim::call> &calls) {
    std::vector<std::string> names;
    for (const isp_sim::call &c : calls) names.push_back(c.function);
    return names;
}

std::vector<isp_sim::call> calls_since(size_t mark) {
    const std::vector<isp_sim::call> &all = isp_sim::calls();
    return std::vector<isp_sim::call>(all.begin() + static_cast<long>(mark), all.end());
}

std::vector<isp_sim::call> pushes_with(uint32_t cmd) {
    std::vector<isp_sim::call> found;
    for (const isp_sim::call &c : pushes())
        if (c.cmd == cmd) found.push_back(c);
    return found;
}

std::vector<uint32_t> commands_of(const std::vector<isp_sim::call> &calls) {
    std::vector<uint32_t> commands;
    for (const isp_sim::call &c : calls)
        if (c.function == "vin_hal_wrapper_setup") commands.push_back(c.cmd);
    return commands;
}

pipe::pipe(uint8_t part_h, uint8_t part_v, const std::string &case_path, int32_t channels) {
    ctx.attr.part_h   = part_h;
    ctx.attr.part_v   = part_v;
    ctx.reg_shadow    = &shadow;
    ctx.channel_count = channels;
    std::strncpy(ctx.case_path, case_path.c_str(), sizeof ctx.case_path - 1);
}

JsonModuleHandle pipe::handle(uint32_t trigger_arg) {
    JsonModuleHandle handle{};
    handle.pipe        = &ctx;
    handle.trigger_arg = trigger_arg;
    return handle;
}

JsonModuleOps *ops_of(register_fn reg) {
    JsonModuleOps *ops = nullptr;
    EXPECT_EQ(reg(&ops), 0);
    return ops;
}

std::vector<isp_sim::call> replay(register_fn reg, const temp_dir &case_dir, uint8_t part_h,
                                  uint8_t part_v, int32_t channels) {
    isp_sim::reset();
    isp_sim::set_log_echo(false);
    pipe p(part_h, part_v, case_dir.path(), channels);
    module_instance m(reg, p);
    EXPECT_EQ(m.create(), 0);
    EXPECT_EQ(m.init(), 0);
    const std::vector<isp_sim::call> pushed = pushes();
    EXPECT_EQ(m.deinit(), 0);
    EXPECT_EQ(m.destroy(), 0);
    EXPECT_EQ(isp_sim::problems(), std::vector<std::string>());
    isp_sim::set_log_echo(true);
    return pushed;
}

void platform_test::SetUp() {
    isp_sim::reset();
    isp_sim::set_log_echo(false);
}

void platform_test::TearDown() {
    if (quiet_) testing::internal::GetCapturedStderr();
    EXPECT_EQ(isp_sim::problems(), expected_problems);
    isp_sim::reset();
    isp_sim::set_log_echo(true);
}

void platform_test::quiet_stderr() {
    testing::internal::CaptureStderr();
    quiet_ = true;
}

std::string platform_test::frame_file(int frame, const std::string &name,
                                      const std::string &text) const {
    return case_dir.write("cfgs/f" + std::to_string(frame) + "/" + name, text);
}

}  // namespace isp_test
