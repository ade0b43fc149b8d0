/* The manifest to JSON and back. */
#include "tools/dump/manifest.h"

#include <algorithm>
#include <cstdio>

#include "tools/core/file_probe.h"
#include "tools/core/overrides.h"
#include "tools/output/json.h"

namespace isp_case {
namespace {

using picojson::value;

value strings(const std::vector<std::string> &items) {
    picojson::array a;
    for (const std::string &s : items) a.push_back(value(s));
    return value(a);
}

value text_or_null(const std::string &text) {
    return text.empty() ? value() : value(text);
}

value step_json(const step_id &step) {
    picojson::object o;
    o["phase"] = value(phase_name(step.kind));
    o["frame"] = json_number(step.number);
    o["dir"]   = json_number(step.dir);
    return value(o);
}

}  // namespace

std::vector<manifest_source> sources_read(const isp::module_desc &module, int dir, int channel,
                                          int partitions) {
    std::vector<manifest_source> sources;
    for (int p = 0; p < partitions; ++p)
        sources.push_back({p, channel, isp::relative_file(module, dir, p, channel)});
    return sources;
}

picojson::value push_json(const manifest_push &p, int partitions) {
    picojson::object o;
    o["module"]                    = value(p.module);
    o["block"]                     = value(p.block);
    o["channel"]                   = json_number(p.channel);
    o["cmd"]                       = json_number(p.cmd);
    o["group"]                     = text_or_null(p.group);
    o["type"]                      = text_or_null(p.type);
    o["size"]                      = json_number(static_cast<double>(p.size));
    const isp::module_desc *module = isp::find_module(p.module);
    const auto read_from           = [&](int dir) {
        const auto same = [](const manifest_source &x, const manifest_source &y) {
            return x.partition == y.partition && x.channel == y.channel && x.file == y.file;
        };
        const std::vector<manifest_source> usual =
            sources_read(*module, dir, p.channel, partitions);
        return std::equal(p.sources.begin(), p.sources.end(), usual.begin(), usual.end(), same);
    };
    if (module && !read_from(p.id.dir) && read_from(p.read_dir))
        o["read"] = json_number(p.read_dir - p.id.dir);
    else if (!module || !read_from(p.id.dir)) {
        picojson::array sources;
        for (const manifest_source &s : p.sources) {
            picojson::object so;
            so["partition"] = json_number(s.partition);
            so["channel"]   = json_number(s.channel);
            so["file"]      = value(s.file);
            sources.push_back(value(so));
        }
        o["sources"] = value(sources);
    }
    o["object"] = value(p.object);
    picojson::object pointees;
    for (const auto &[member, key] : p.pointees) pointees[member] = value(key);
    if (!pointees.empty()) o["pointees"] = value(pointees);
    picojson::object files;
    files["json"]   = text_or_null(p.json);
    files["cmodel"] = strings(p.cmodel);
    if (!p.json.empty()) o["files"] = value(files);
    return value(o);
}

picojson::value step_entry_json(const step_id &step, const std::vector<picojson::value> &pushes) {
    picojson::object o;
    o["step"]     = step_json(step);
    o["step_dir"] = value(step_dir(step));
    o["pushes"]   = value(pushes);
    return value(o);
}

picojson::value repeated_step_json(const step_id &step, int same_as,
                                   const std::vector<std::pair<size_t, picojson::value>> &except) {
    picojson::object o;
    o["step"]     = step_json(step);
    o["step_dir"] = value(step_dir(step));
    o["same_as"]  = json_number(same_as);
    if (!except.empty()) {
        picojson::object changed;
        for (const auto &[index, entry] : except) changed[std::to_string(index)] = entry;
        o["except"] = value(changed);
    }
    return value(o);
}

picojson::value manifest_json(const manifest &m) {
    picojson::object o;
    o["manifest_version"] = json_number(manifest_version);
    o["tool"]             = value(m.tool);
    o["library"]          = value(m.library);
    o["case"]             = value(m.case_path);
    o["store"]            = value(m.store);
    picojson::object grid;
    grid["h"]          = json_number(m.part_h);
    grid["v"]          = json_number(m.part_v);
    grid["partitions"] = json_number(m.part_h * m.part_v);
    o["grid"]          = value(grid);
    o["channels"]      = json_number(m.channels);
    o["frames"]        = json_number(m.frames);
    o["pointer_bytes"] = json_number(m.pointer_bytes);
    o["modules"]       = strings(m.modules);
    o["bypass"]        = strings(m.bypass);
    if (!m.overrides.empty()) o["overrides"] = overrides_json(m.overrides);
    o["steps"] = value(picojson::array());
    if (m.judged) {
        o["verdict"]             = verdict_json(m.run);
        o["findings"]            = findings_json(m.findings);
        o["findings_not_listed"] = json_number(static_cast<double>(m.findings_not_listed));
    }
    return value(o);
}

bool read_file_bytes(const std::string &path, std::string &out, std::string &error) {
    /* a dump's files: a manifest of many thousand frames is large, a FIFO never read */
    const file_read read = read_regular_file(path, 1LL << 32, out);
    if (read.problem.empty()) return true;
    error = path + ": cannot be read" + (read.absent ? "" : ": " + read.problem);
    return false;
}

bool read_json_file(const std::string &path, picojson::value &out, std::string &error) {
    std::string text;
    if (!read_file_bytes(path, text, error)) return false;
    const std::string parse_error = picojson::parse(out, text);
    if (parse_error.empty()) return true;
    error = path + ": not JSON: " + parse_error;
    return false;
}

}  // namespace isp_case
