#include "tests/support/test_support.h"

#include <dirent.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

namespace isp_test {
namespace {

void remove_tree(const std::string &path) {
    if (DIR *dir = opendir(path.c_str())) {
        while (dirent *entry = readdir(dir)) {
            std::string name = entry->d_name;
            if (name == "." || name == "..") continue;
            std::string child = path + "/" + name;
            struct stat st;
            if (lstat(child.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
                remove_tree(child);
            else
                unlink(child.c_str());
        }
        closedir(dir);
    }
    rmdir(path.c_str());
}

void make_parents(const std::string &path) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        ::mkdir(path.substr(0, slash).c_str(), 0755);
}

}  // namespace

temp_dir::temp_dir() {
    const char *base = getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/isp_json_test_XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (!mkdtemp(buffer.data())) throw std::runtime_error("mkdtemp failed");
    path_ = buffer.data();
}

temp_dir::~temp_dir() { remove_tree(path_); }

std::string temp_dir::write(const std::string &relative, const std::string &text) const {
    std::string full = path_ + "/" + relative;
    make_parents(full);
    std::ofstream out(full, std::ios::binary);
    out << text;
    return full;
}

std::string temp_dir::mkdir(const std::string &relative) const {
    std::string full = path_ + "/" + relative;
    make_parents(full + "/");
    return full;
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

picojson::object parse_object(const std::string &text) {
    picojson::value value;
    std::string error = picojson::parse(value, text);
    EXPECT_EQ(error, "") << text;
    if (!value.is<picojson::object>()) return picojson::object();
    return value.get<picojson::object>();
}

std::vector<std::string> split_lines(const std::string &text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

pipe::pipe(uint8_t part_h, uint8_t part_v, const std::string &case_path, int32_t channels) {
    ctx.attr.part_h = part_h;
    ctx.attr.part_v = part_v;
    ctx.reg_shadow = &shadow;
    ctx.channel_count = channels;
    std::strncpy(ctx.case_path, case_path.c_str(), sizeof ctx.case_path - 1);
}

JsonModuleHandle pipe::handle(uint32_t trigger_arg) {
    JsonModuleHandle handle{};
    handle.pipe = &ctx;
    handle.trigger_arg = trigger_arg;
    return handle;
}

}  // namespace isp_test
