/* Command-line values and the case's own defaults. */
#include "tools/core/settings.h"

#include <algorithm>
#include <regex>

#include "isp_framework.h"

namespace isp_case {

bool parse_grid(const std::string &text, int &part_h, int &part_v) {
    static const std::regex grid("([0-9]{1,3})x([0-9]{1,3})");
    std::smatch m;
    if (!std::regex_match(text, m, grid)) return false;
    part_h = std::stoi(m[1]);
    part_v = std::stoi(m[2]);
    return part_h <= 255 && part_v <= 255;
}

int parse_log_level(const std::string &text) {
    if (text == "error") return 3;
    if (text == "warning") return 4;
    if (text == "debug") return 7;
    if (text.size() == 1 && text[0] >= '0' && text[0] <= '7') return text[0] - '0';
    return -1;
}

bool resolve_settings(const case_options &options, run_settings &settings, case_contents &contents,
                      std::string &error) {
    settings.case_path = options.case_path;
    if (!is_directory(options.case_path)) {
        error = options.case_path + ": no such case directory";
        return false;
    }
    if (options.case_path.size() >= ISP_CASE_PATH_SIZE) {
        error = options.case_path + ": the case path is longer than the pipeline's " +
                std::to_string(ISP_CASE_PATH_SIZE - 1) + " characters";
        return false;
    }
    contents = discover(options.case_path);
    if (!options.grid || !parse_grid(*options.grid, settings.part_h, settings.part_v))
        default_grid(contents.partitions, settings.part_h, settings.part_v);
    settings.channels = options.channels.value_or(std::max(contents.channels, 1));
    settings.frames   = options.frames.value_or(std::max(contents.frames, 1));
    settings.modules.clear();
    for (const std::string &name : options.modules) {
        const module_info *module = find_module(name);
        if (!module) {
            error = name + ": no such module";
            return false;
        }
        settings.modules.push_back(module);
    }
    if (options.modules.empty()) settings.modules = pipeline_order();
    return true;
}

}  // namespace isp_case
