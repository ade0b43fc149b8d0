/* Drives the 34 modules through frames of the sample case on the simulated platform. */
#include "bench/sample_case.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "modules/tables.h"

namespace isp_bench {
namespace {

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
    const isp::module_desc *desc;
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
    /* along the picture path, as isp-case replays it */
    for (const isp::module_desc *desc : isp::pipeline_order()) {
        module m{desc, nullptr, JsonModuleHandle{}};
        m.handle.pipe = &pipe_;
        isp::registration_of (*desc)(&m.ops);
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
        const bool channelled = isp::file_kind_of(*m.desc) == isp::file_kind::per_channel;
        for (int c = 0; c < (channelled ? k_channels : 1); ++c)
            for (int p = 0; p < k_grid_h * k_grid_v; ++p)
                files.push_back(case_dir_ + "/" + isp::relative_file(*m.desc, last, p, c));
    }
    return files;
}

}  // namespace isp_bench
