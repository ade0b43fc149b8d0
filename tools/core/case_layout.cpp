/* Case discovery and the read plan of a replay. */
#include "tools/core/case_layout.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>

namespace isp_case {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> entries(const std::string &dir) {
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator(dir, error))
        names.push_back(entry.path().filename().string());
    return names;
}

std::string frame_dir(const std::string &case_path, int frame) {
    return join_path(case_path, "cfgs/f" + std::to_string(frame));
}

}  // namespace

std::string join_path(const std::string &dir, const std::string &relative) {
    return dir + "/" + relative;
}

/* stat and a directory test, as the library decides whether a frame exists */
bool is_directory(const std::string &path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

case_contents discover(const std::string &case_path) {
    case_contents found;
    while (is_directory(frame_dir(case_path, found.frames))) ++found.frames;

    static const std::regex frame_name("f([0-9]+)");
    for (const std::string &name : entries(join_path(case_path, "cfgs"))) {
        std::smatch m;
        if (!std::regex_match(name, m, frame_name)) continue;
        if (m[1].length() > 9 || name != "f" + std::to_string(std::stoi(m[1]))) {
            if (is_directory(join_path(case_path, "cfgs/" + name))) found.misnamed.push_back(name);
            continue;
        }
        const int frame = std::stoi(m[1]);
        if (frame > found.frames && is_directory(frame_dir(case_path, frame)))
            found.unreached.push_back(frame);
    }
    std::sort(found.unreached.begin(), found.unreached.end());
    std::sort(found.misnamed.begin(), found.misnamed.end());

    static const std::regex register_file("rtl_[a-z0-9_]+?_p([0-9]+)(_chn([0-9]+))?\\.json");
    for (const std::string &name : entries(frame_dir(case_path, 0))) {
        std::smatch m;
        if (!std::regex_match(name, m, register_file)) continue;
        found.partitions = std::max(found.partitions, std::stoi(m[1]) + 1);
        if (m[3].matched) found.channels = std::max(found.channels, std::stoi(m[3]) + 1);
    }

    static const std::regex pattern_file("isp_nrlite_ptn_([0-9]+)\\.json");
    int pattern_partitions = 0;
    for (const std::string &name : entries(case_path)) {
        std::smatch m;
        if (!std::regex_match(name, m, pattern_file)) continue;
        ++found.pattern_files;
        pattern_partitions = std::max(pattern_partitions, std::stoi(m[1]) + 1);
    }
    if (found.partitions == 0) found.partitions = pattern_partitions;
    return found;
}

void default_grid(int partitions, int &part_h, int &part_v) {
    part_h = part_v = 1;
    for (int v = 1; v * v <= partitions; ++v) {
        if (partitions % v != 0) continue;
        part_v = v;
        part_h = partitions / v;
    }
}

std::vector<int> frames_stepped(const std::string &case_path, int loads, int channels_per_load) {
    std::vector<int> frames;
    int frame       = 0;
    bool last_frame = false;
    for (int load = 0; load < loads; ++load) {
        for (int channel = 0; channel < channels_per_load; ++channel) {
            frames.push_back(frame);
            if (last_frame) continue;
            if (is_directory(frame_dir(case_path, frame + 1)))
                ++frame;
            else
                last_frame = true;
        }
    }
    return frames;
}

std::vector<planned_file> plan_reads(const run_settings &settings) {
    std::vector<planned_file> plan;
    std::map<std::string, size_t> index_of;
    auto read = [&](const module_info &module, const std::string &relative, int partition,
                    int frame, int channel) {
        auto it = index_of.find(relative);
        if (it == index_of.end()) {
            index_of[relative] = plan.size();
            plan.push_back({relative, partition, frame, channel, {&module}});
            return;
        }
        std::vector<const module_info *> &readers = plan[it->second].readers;
        if (std::find(readers.begin(), readers.end(), &module) == readers.end())
            readers.push_back(&module);
    };

    // the partition index is 8 bits wide in the library and wraps after 255
    const int partitions = settings.part_h * settings.part_v;
    /* once the last frame directory is reached every load reads what the one before read, so
     * a replay of a million frames reads no file that a few more than the case's frames do not */
    int directories = 0;
    while (is_directory(frame_dir(settings.case_path, directories))) ++directories;
    const int loads = std::min(1 + settings.frames, directories + 2);
    for (const module_info *module : settings.modules) {
        if (file_kind_of(*module) == file_kind::pattern) {
            for (int p = 0; p < partitions; ++p)
                read(*module, relative_file(*module, 0, p % 256, 0), p % 256, -1, 0);
            continue;
        }
        int channels = 1;
        if (file_kind_of(*module) == file_kind::per_channel) {
            if (settings.channels < 1 || settings.channels > max_channels) continue;
            channels = settings.channels;
        }
        const std::vector<int> frames = frames_stepped(settings.case_path, loads, channels);
        for (size_t i = 0; i < frames.size(); ++i)
            for (int p = 0; p < partitions; ++p)
                read(*module, relative_file(*module, frames[i], p % 256, int(i) % channels),
                     p % 256, frames[i], int(i) % channels);
    }
    return plan;
}

}  // namespace isp_case
