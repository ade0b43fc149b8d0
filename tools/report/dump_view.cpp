/* Reading a dump: the manifest and the decoded member files it names. */
#include "tools/report/dump_view.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fmt/core.h>
#include <picojson.h>

#include "tools/case_layout.h"
#include "tools/module_table.h"

namespace isp_case {
namespace report {
namespace {

bool read_json(const std::string &path, picojson::value &out, std::string &error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = path + ": cannot be read";
        return false;
    }
    std::stringstream text;
    text << in.rdbuf();
    const std::string parse_error = picojson::parse(out, text.str());
    if (!parse_error.empty()) {
        error = path + ": " + parse_error;
        return false;
    }
    if (!out.is<picojson::object>()) {
        error = path + ": the root is not an object";
        return false;
    }
    return true;
}

const picojson::value &at(const picojson::object &o, const std::string &key) {
    static const picojson::value null;
    const auto it = o.find(key);
    return it == o.end() ? null : it->second;
}

std::string text_of(const picojson::value &v) {
    if (v.is<std::string>()) return v.get<std::string>();
    if (v.is<double>()) return fmt::format("{}", v.get<double>());
    return v.is<picojson::null>() ? std::string() : v.serialize();
}

std::vector<std::string> texts_of(const picojson::value &v) {
    std::vector<std::string> out;
    if (v.is<picojson::array>())
        for (const picojson::value &e : v.get<picojson::array>()) out.push_back(text_of(e));
    return out;
}

/* Numbers of a value, nested arrays flattened in index order; the shape of the first path. */
void flatten(const picojson::value &v, std::vector<double> &out, std::vector<size_t> *shape,
             size_t depth = 0) {
    if (v.is<double>()) {
        out.push_back(v.get<double>());
        return;
    }
    if (v.is<bool>()) {
        out.push_back(v.get<bool>() ? 1 : 0);
        return;
    }
    if (!v.is<picojson::array>()) return;
    const picojson::array &a = v.get<picojson::array>();
    if (shape && shape->size() == depth) shape->push_back(a.size());
    for (const picojson::value &e : a) flatten(e, out, shape, depth + 1);
}

}  // namespace

const member_view *push_view::member(const std::string &name) const {
    for (const member_view &m : members)
        if (m.name == name) return &m;
    return nullptr;
}

const push_view *dump_view::find(const std::string &step, const std::string &module,
                                 const std::string &group, int channel) const {
    for (const push_view &p : pushes)
        if (p.step == step && p.module == module && p.group == group && p.channel == channel)
            return &p;
    return nullptr;
}

namespace {

namespace fs = std::filesystem;

std::string file_text(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<double> words_of(const std::string &bytes, size_t first, size_t count) {
    std::vector<double> out;
    for (size_t i = 0; i < count && first + 4 * i + 4 <= bytes.size(); ++i) {
        uint32_t w;
        std::memcpy(&w, bytes.data() + first + 4 * i, 4);
        out.push_back(w);
    }
    return out;
}

member_view raw_member(const std::string &name, std::vector<double> codes) {
    member_view m;
    m.name  = name;
    m.shape = {codes.size()};
    m.codes = std::move(codes);
    return m;
}

/* Groups without a C-model form: the tables that hold raw numbers, named as in their structures,
 * and any other structure as its 32-bit words. */
std::vector<member_view> raw_members(const std::string &block, const std::string &group,
                                     const std::string &bytes, const fs::path &base) {
    if (block == "lsc" && group == "mesh") {
        /* four Bayer tables of 285 entries, one after the other */
        std::vector<member_view> out;
        const char *const names[4] = {"rr_mesh", "gr_mesh", "gb_mesh", "bb_mesh"};
        for (size_t t = 0; t < 4; ++t)
            out.push_back(raw_member(names[t], words_of(bytes, t * 285 * 4, 285)));
        return out;
    }
    if (block == "clc" && group == "init") {
        /* the clock enable byte, then two host addresses: the partition sizes they lead to are
         * dumped beside the structure */
        std::vector<member_view> out = {raw_member("manual_clk_en", {double(uint8_t(bytes[0]))})};
        for (const char *sizes : {"part_size_h", "part_size_v"}) {
            const std::string side = file_text(base.string() + "." + sizes + ".bin");
            member_view m;
            m.name          = sizes;
            m.per_partition = true;
            for (size_t i = 0; i + 2 <= side.size(); i += 2)
                m.codes.push_back(uint8_t(side[i]) | uint8_t(side[i + 1]) << 8);
            m.shape = {m.codes.size()};
            out.push_back(std::move(m));
        }
        return out;
    }
    if (group == "hdrc_lut" || group == "hidrc_lut")
        return {raw_member(group, words_of(bytes, 0, bytes.size() / 4))};
    if (bytes.size() % 4 == 0) return {raw_member("words", words_of(bytes, 0, bytes.size() / 4))};
    std::vector<double> codes(bytes.begin(), bytes.end());
    for (double &c : codes) c = double(uint8_t(c));
    return {raw_member("bytes", codes)};
}

/* The keys of C-model objects as members with real values; per-partition files side by side. */
std::vector<member_view> cmodel_members(const std::vector<picojson::object> &parts) {
    std::vector<member_view> out;
    if (parts.empty()) return out;
    for (const auto &entry : parts.front()) {
        member_view m;
        m.name          = entry.first;
        m.per_partition = parts.size() > 1;
        for (const picojson::object &part : parts) {
            std::vector<size_t> shape;
            flatten(at(part, entry.first), m.values, &shape);
            if (m.shape.empty()) m.shape = shape;
        }
        out.push_back(std::move(m));
    }
    return out;
}

/* The numbered subdirectories "<prefix><N>" of dir, by N. */
std::vector<int> numbered(const fs::path &dir, const std::string &prefix) {
    std::vector<int> out;
    std::error_code error;
    for (const auto &e : fs::directory_iterator(dir, error)) {
        const std::string name = e.path().filename().string();
        if (e.is_directory() && name.rfind(prefix, 0) == 0 && name.size() > prefix.size() &&
            name.find_first_not_of("0123456789", prefix.size()) == std::string::npos)
            out.push_back(std::stoi(name.substr(prefix.size())));
    }
    std::sort(out.begin(), out.end());
    return out;
}

/* The pushes of one module's directory (one channel's), in the order the module pushes them. */
void read_pushes(const fs::path &dir, const module_info &module, const std::string &step,
                 int channel, dump_view &out, int &partitions) {
    std::vector<std::pair<size_t, fs::path>> files;
    std::error_code error;
    for (const auto &e : fs::directory_iterator(dir, error)) {
        const std::string name = e.path().filename().string();
        if (name.rfind("cmd", 0) != 0 || e.path().extension() != ".bin" ||
            name.find('.') != name.rfind('.'))
            continue;
        const std::string group = e.path().stem().string().substr(6);
        const auto at_group     = std::find_if(module.converters.begin(), module.converters.end(),
                                               [&](const char *c) { return group == c; });
        files.push_back({size_t(at_group - module.converters.begin()), e.path()});
    }
    std::sort(files.begin(), files.end());
    for (const auto &f : files) {
        push_view p;
        p.step                  = step;
        p.module                = module.name;
        p.channel               = channel;
        p.command               = std::atoi(f.second.filename().string().c_str() + 3);
        p.group                 = f.second.stem().string().substr(6);
        p.file                  = fs::relative(f.second, out.dir).string();
        const std::string bytes = file_text(f.second);
        p.size                  = bytes.size();
        std::vector<picojson::object> parts;
        const fs::path base = f.second.parent_path() / f.second.stem();
        picojson::value v;
        std::string ignored;
        if (read_json(base.string() + ".json", v, ignored))
            parts.push_back(v.get<picojson::object>());
        for (int part = 0;
             read_json(base.string() + ".p" + std::to_string(part) + ".json", v, ignored); ++part) {
            parts.push_back(v.get<picojson::object>());
            partitions = std::max(partitions, part + 1);
        }
        p.members =
            parts.empty() ? raw_members(module.block, p.group, bytes, base) : cmodel_members(parts);
        out.pushes.push_back(std::move(p));
    }
}

/* What a manifest beside the pushes records about the run. */
void read_manifest(const std::string &dir, dump_view &out) {
    picojson::value root;
    std::string ignored;
    if (!read_json(dir + "/manifest.json", root, ignored)) return;
    const picojson::object &m = root.get<picojson::object>();
    out.tool_version          = text_of(at(m, "tool"));
    out.library_version       = text_of(at(m, "library"));
    out.case_path             = text_of(at(m, "case"));
    out.failures              = texts_of(at(m, "failures"));
    out.warnings              = texts_of(at(m, "warnings"));
}

}  // namespace

bool load_dump(const std::string &dir, dump_view &out, std::string &error) {
    if (!fs::is_directory(fs::path(dir) / "init")) {
        error = dir + ": not a dump (no init directory)";
        return false;
    }
    out.dir                        = dir;
    std::vector<std::string> steps = {"init"};
    for (int frame : numbered(dir, "frame")) steps.push_back("frame" + std::to_string(frame));
    out.frames     = int(steps.size()) - 1;
    int partitions = 1;
    for (const std::string &step : steps) {
        out.steps.push_back(step);
        for (const module_info &module : modules()) {
            const fs::path at_module = fs::path(dir) / step / module.name;
            if (!fs::is_directory(at_module)) continue;
            if (step == "init") out.modules.push_back(module.name);
            if (module.kind != file_kind::per_channel) {
                read_pushes(at_module, module, step, -1, out, partitions);
                continue;
            }
            for (int channel : numbered(at_module, "chn")) {
                out.channels = std::max(out.channels, channel + 1);
                read_pushes(at_module / ("chn" + std::to_string(channel)), module, step, channel,
                            out, partitions);
            }
        }
    }
    default_grid(partitions, out.part_h, out.part_v);
    read_manifest(dir, out);
    return true;
}

}  // namespace report
}  // namespace isp_case
