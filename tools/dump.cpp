/* Writing the pushed groups of a replay. */
#include "tools/dump.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fmt/core.h>

#include "isp_json_utils.h"

namespace isp_case {
namespace fs = std::filesystem;

namespace {

std::string step_dir(const replay_step &step) {
    if (step.name.rfind("frame ", 0) == 0) return "frame" + step.name.substr(6);
    return "init";
}

bool write_bytes(const std::string &path, const std::vector<uint8_t> &bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char *>(bytes.data()), std::streamsize(bytes.size()));
    return bool(out);
}

/* Decodes a pushed structure with its exporter; the bytes are copied into storage aligned for
 * any structure first. */
picojson::value exported(const group_info &group, const std::vector<uint8_t> &bytes,
                         uint8_t partition) {
    std::vector<max_align_t> storage((group.size + sizeof(max_align_t) - 1) / sizeof(max_align_t));
    std::memcpy(storage.data(), bytes.data(), group.size);
    picojson::object out;
    group.exporter(storage.data(), out, partition);
    return picojson::value(out);
}

}  // namespace

class dump_writer {
  public:
    dump_writer(const std::string &dir, const replay_settings &settings)
        : dir_(dir), partitions_(std::min(settings.run.part_h * settings.run.part_v, 256)) {}

    void write(const std::string &step, const module_info &module, const pushed_group &push) {
        const std::string base = join(dump_name(step, module, push));
        std::error_code error;
        fs::create_directories(fs::path(base).parent_path(), error);
        raw(base + ".bin", push.bytes);
        if (!push.part_size_h.empty()) {
            raw(base + ".part_size_h.bin", push.part_size_h);
            raw(base + ".part_size_v.bin", push.part_size_v);
        }
        if (!push.group || !push.group->exporter) return;
        if (push.bytes.size() != push.group->size) {
            summary_.problems.push_back(
                fmt::format("{}.bin: {} bytes recorded, the structure has {}", base,
                            push.bytes.size(), push.group->size));
            return;
        }
        if (!push.group->per_partition) {
            cmodel(base + ".json", push, 0);
            return;
        }
        for (int p = 0; p < partitions_; ++p)
            cmodel(fmt::format("{}.p{}.json", base, p), push, static_cast<uint8_t>(p));
    }

    dump_summary summary() const { return summary_; }

  private:
    std::string join(const std::string &relative) const { return dir_ + "/" + relative; }

    void raw(const std::string &path, const std::vector<uint8_t> &bytes) {
        if (write_bytes(path, bytes))
            ++summary_.raw_files;
        else
            summary_.problems.push_back(path + ": cannot be written");
    }

    void cmodel(const std::string &path, const pushed_group &push, uint8_t partition) {
        try {
            write_json_file(path, exported(*push.group, push.bytes, partition));
            ++summary_.cmodel_files;
        } catch (const std::exception &e) {
            summary_.problems.push_back(path + ": the exporter raised " + e.what());
        }
    }

    std::string dir_;
    int partitions_;
    dump_summary summary_;
};

std::string dump_name(const std::string &step, const module_info &module,
                      const pushed_group &push) {
    std::string name = step + "/" + module.name + "/";
    if (module.kind == file_kind::per_channel) name += fmt::format("chn{}/", push.channel);
    name += fmt::format("cmd{:02}", push.cmd);
    if (push.group) name += std::string("_") + push.group->name;
    return name;
}

dump_stream::dump_stream(const std::string &dir, const replay_settings &settings)
    : writer_(new dump_writer(dir, settings)) {}

dump_stream::~dump_stream() = default;

void dump_stream::write(const replay_step &step) {
    for (const module_step &m : step.modules)
        for (const op_outcome &op : m.ops)
            for (const pushed_group &push : op.pushes)
                writer_->write(step_dir(step), *m.module, push);
}

dump_summary dump_stream::summary() const {
    return writer_->summary();
}

}  // namespace isp_case
