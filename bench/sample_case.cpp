/* Drives the 34 modules through frames of the sample case on the simulated platform. */
#include "bench/sample_case.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "fuzz/module_files.h"

namespace isp_bench {
namespace {

/* The order of the picture through the ISP, as isp-case replays it: blc before lin, so that the
 * module holding one wrapper per channel creates the shared black-level wrappers. */
const char *const k_pipeline_order[] = {
    "ifa",      "bl_det",   "blc",     "lin",      "hdr",          "dpc",      "raw2dnr",
    "lsc",      "wbc",      "ae_stat", "awb_stat", "af_stat",      "hidrc",    "hdrc",
    "rltm",     "demosaic", "gic",     "fcc",      "edge_enhance", "cc",       "gamma",
    "depurple", "dehaze",   "csc",     "hs2dlut",  "ccmp",         "ycproc",   "sharpen",
    "scm",      "y2dnr",    "yuv3dnr", "ainr",     "eis_pre",      "eis_post",
};

const isp_modules::module_file &module_named(const char *name) {
    for (const isp_modules::module_file &m : isp_modules::modules)
        if (strcmp(m.name, name) == 0) return m;
    throw std::logic_error(std::string("no module ") + name);
}

bool is_dir(const std::string &path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

std::string sample_case_dir() {
    const char *dir = getenv("ISP_BENCH_CASE");
    return dir && *dir ? dir : ISP_SAMPLE_CASE_DIR;
}

picojson::value parse_file(const std::string &path) {
    std::string text;
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st;
    if (fd < 0 || fstat(fd, &st) != 0) {
        perror(path.c_str());
        abort();
    }
    text.resize(static_cast<size_t>(st.st_size));
    size_t got = 0;
    for (ssize_t n; got < text.size() && (n = read(fd, &text[got], text.size() - got)) > 0;)
        got += static_cast<size_t>(n);
    close(fd);
    text.resize(got);
    picojson::value value;
    const std::string error = picojson::parse(value, text);
    if (!error.empty()) {
        fprintf(stderr, "%s: %s\n", path.c_str(), error.c_str());
        abort();
    }
    return value;
}

struct frame_runner::module {
    const isp_modules::module_file *file;
    JsonModuleOps *ops;
    JsonModuleHandle handle;
};

frame_runner::frame_runner(const std::string &case_dir) : case_dir_(case_dir) {
    if (case_dir.size() >= sizeof pipe_.case_path)
        throw std::invalid_argument("case path too long");
    pipe_.attr.part_h   = k_grid_h;
    pipe_.attr.part_v   = k_grid_v;
    pipe_.reg_shadow    = &shadow_;
    pipe_.channel_count = k_channels;
    strncpy(pipe_.case_path, case_dir.c_str(), sizeof pipe_.case_path - 1);
    for (const char *name : k_pipeline_order) {
        module m{&module_named(name), nullptr, JsonModuleHandle{}};
        m.handle.pipe = &pipe_;
        m.file->register_module(&m.ops);
        modules_.push_back(m);
    }
    for (module &m : modules_)
        if (m.ops->create(&m.handle) != 0) throw std::runtime_error("create failed");
    for (module &m : modules_)
        if (m.ops->init(&m.handle) != 0) throw std::runtime_error("init failed");
}

frame_runner::~frame_runner() {
    for (module &m : modules_) m.ops->deinit(&m.handle);
    for (module &m : modules_) m.ops->destroy(&m.handle);
}

bool frame_runner::frame() {
    bool ok = true;
    for (module &m : modules_) ok &= m.ops->process(&m.handle) == 0;
    for (module &m : modules_) ok &= m.ops->trigger(&m.handle) == 0;
    return ok;
}

std::vector<std::string> frame_runner::frame_files() const {
    int last = 0;
    while (is_dir(case_dir_ + "/cfgs/f" + std::to_string(last + 1))) ++last;
    std::vector<std::string> files;
    for (const module &m : modules_) {
        const int channels = m.file->kind == isp_modules::file_kind::channelled ? k_channels : 1;
        for (int c = 0; c < channels; ++c)
            for (int p = 0; p < k_grid_h * k_grid_v; ++p)
                files.push_back(isp_modules::path_of(*m.file, case_dir_, last, p, c));
    }
    return files;
}

}  // namespace isp_bench
