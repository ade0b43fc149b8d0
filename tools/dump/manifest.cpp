/* The manifest to JSON and back. */
#include "tools/dump/manifest.h"

#include <stdexcept>

#include "tools/core/file_probe.h"

namespace isp_case {
namespace {

using picojson::value;

value number(double v) {
    return value(v);
}

value strings(const std::vector<std::string> &items) {
    picojson::array a;
    for (const std::string &s : items) a.push_back(value(s));
    return value(a);
}

value text_or_null(const std::string &text) {
    return text.empty() ? value() : value(text);
}

/* Reading: every accessor throws with the key it missed, caught once by manifest_from_json. */
const value &at(const picojson::object &o, const char *key) {
    auto it = o.find(key);
    if (it == o.end()) throw std::runtime_error(std::string("no \"") + key + "\"");
    return it->second;
}

const picojson::object &object_at(const picojson::object &o, const char *key) {
    const value &v = at(o, key);
    if (!v.is<picojson::object>()) throw std::runtime_error(std::string(key) + ": not an object");
    return v.get<picojson::object>();
}

const picojson::array &array_at(const picojson::object &o, const char *key) {
    const value &v = at(o, key);
    if (!v.is<picojson::array>()) throw std::runtime_error(std::string(key) + ": not an array");
    return v.get<picojson::array>();
}

std::string string_at(const picojson::object &o, const char *key) {
    const value &v = at(o, key);
    if (v.is<picojson::null>()) return "";
    if (!v.is<std::string>()) throw std::runtime_error(std::string(key) + ": not a string");
    return v.get<std::string>();
}

double number_at(const picojson::object &o, const char *key) {
    const value &v = at(o, key);
    if (!v.is<double>()) throw std::runtime_error(std::string(key) + ": not a number");
    return v.get<double>();
}

std::vector<std::string> strings_at(const picojson::object &o, const char *key) {
    std::vector<std::string> out;
    for (const value &v : array_at(o, key)) {
        if (!v.is<std::string>()) throw std::runtime_error(std::string(key) + ": not a string");
        out.push_back(v.get<std::string>());
    }
    return out;
}

}  // namespace

picojson::value push_json(const manifest_push &p) {
    picojson::object o;
    o["step"]    = value(p.step);
    o["module"]  = value(p.module);
    o["block"]   = value(p.block);
    o["channel"] = number(p.channel);
    o["cmd"]     = number(p.cmd);
    o["group"]   = text_or_null(p.group);
    o["type"]    = text_or_null(p.type);
    o["size"]    = number(static_cast<double>(p.size));
    picojson::array sources;
    for (const manifest_source &s : p.sources) {
        picojson::object so;
        so["partition"] = number(s.partition);
        so["channel"]   = number(s.channel);
        so["file"]      = value(s.file);
        sources.push_back(value(so));
    }
    o["sources"] = value(sources);
    picojson::object files;
    files["bin"]     = value(p.bin);
    files["json"]    = value(p.json);
    files["cmodel"]  = strings(p.cmodel);
    files["targets"] = strings(p.targets);
    o["files"]       = value(files);
    return value(o);
}

namespace {

manifest_push push_from(const picojson::object &o) {
    manifest_push p;
    p.step    = string_at(o, "step");
    p.module  = string_at(o, "module");
    p.block   = string_at(o, "block");
    p.channel = static_cast<int>(number_at(o, "channel"));
    p.cmd     = static_cast<uint32_t>(number_at(o, "cmd"));
    p.group   = string_at(o, "group");
    p.type    = string_at(o, "type");
    p.size    = static_cast<size_t>(number_at(o, "size"));
    for (const value &s : array_at(o, "sources")) {
        if (!s.is<picojson::object>()) throw std::runtime_error("sources: not an object");
        const picojson::object &so = s.get<picojson::object>();
        p.sources.push_back({static_cast<int>(number_at(so, "partition")),
                             static_cast<int>(number_at(so, "channel")), string_at(so, "file")});
    }
    const picojson::object &files = object_at(o, "files");
    p.bin                         = string_at(files, "bin");
    p.json                        = string_at(files, "json");
    p.cmodel                      = strings_at(files, "cmodel");
    p.targets                     = strings_at(files, "targets");
    return p;
}

}  // namespace

picojson::value manifest_json(const manifest &m) {
    picojson::object o;
    o["manifest_version"] = number(manifest_version);
    o["tool"]             = value(m.tool);
    o["library"]          = value(m.library);
    o["case"]             = value(m.case_path);
    picojson::object grid;
    grid["h"]          = number(m.part_h);
    grid["v"]          = number(m.part_v);
    grid["partitions"] = number(m.part_h * m.part_v);
    o["grid"]          = value(grid);
    o["channels"]      = number(m.channels);
    o["frames"]        = number(m.frames);
    o["pointer_bytes"] = number(m.pointer_bytes);
    o["modules"]       = strings(m.modules);
    o["bypass"]        = strings(m.bypass);
    picojson::array pushes;
    for (const manifest_push &p : m.pushes) pushes.push_back(push_json(p));
    o["pushes"] = value(pushes);
    return value(o);
}

bool manifest_from_json(const picojson::value &v, manifest &out, std::string &error) {
    try {
        if (!v.is<picojson::object>()) throw std::runtime_error("not a JSON object");
        const picojson::object &o = v.get<picojson::object>();
        if (number_at(o, "manifest_version") != manifest_version)
            throw std::runtime_error("manifest_version is not " + std::to_string(manifest_version));
        manifest m;
        m.tool                       = string_at(o, "tool");
        m.library                    = string_at(o, "library");
        m.case_path                  = string_at(o, "case");
        const picojson::object &grid = object_at(o, "grid");
        m.part_h                     = static_cast<int>(number_at(grid, "h"));
        m.part_v                     = static_cast<int>(number_at(grid, "v"));
        m.channels                   = static_cast<int>(number_at(o, "channels"));
        m.frames                     = static_cast<int>(number_at(o, "frames"));
        m.pointer_bytes              = static_cast<unsigned>(number_at(o, "pointer_bytes"));
        m.modules                    = strings_at(o, "modules");
        m.bypass                     = strings_at(o, "bypass");
        for (const value &p : array_at(o, "pushes")) {
            if (!p.is<picojson::object>()) throw std::runtime_error("pushes: not an object");
            m.pushes.push_back(push_from(p.get<picojson::object>()));
        }
        out = std::move(m);
        return true;
    } catch (const std::exception &e) {
        error = e.what();
        return false;
    }
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
