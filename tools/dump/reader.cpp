/* Reading a dump: the manifest and the decoded member files it names. */
#include "tools/dump/reader.h"

#include <algorithm>

namespace isp_case {
namespace report {
namespace {

const picojson::value &at(const picojson::value &o, const char *key) {
    static const picojson::value null;
    return o.is<picojson::object>() && o.contains(key) ? o.get(key) : null;
}

std::vector<double> numbers(const picojson::value &v) {
    std::vector<double> out;
    if (v.is<double>()) out.push_back(v.get<double>());
    if (v.is<picojson::array>())
        for (const picojson::value &e : v.get<picojson::array>())
            out.push_back(e.is<double>() ? e.get<double>() : 0.0);
    return out;
}

std::string text(const picojson::value &v) {
    return v.is<std::string>() ? v.get<std::string>() : std::string();
}

member_view member_of(const picojson::value &m) {
    member_view v;
    v.name     = text(at(m, "name"));
    v.format   = text(at(m, "format"));
    v.location = text(at(m, "register"));
    v.count    = unsigned(at(m, "count").is<double>() ? at(m, "count").get<double>() : 1);
    v.pointer  = at(m, "pointer").is<bool>() && at(m, "pointer").get<bool>();
    /* a pointer is shown by the array it leads to, where that was recorded */
    const picojson::value &holder = at(m, "target").is<picojson::object>() ? at(m, "target") : m;
    v.per_partition =
        at(holder, "per_partition").is<bool>() && at(holder, "per_partition").get<bool>();
    v.scalar = holder.contains("code");
    v.codes  = numbers(at(holder, v.scalar ? "code" : "codes"));
    v.values = numbers(at(holder, v.scalar ? "value" : "values"));
    return v;
}

bool read_push(const std::string &dir, const manifest_push &p, push_view &out, std::string &error) {
    picojson::value decoded;
    if (!read_json_file(dir + "/" + p.json, decoded, error)) return false;
    if (!at(decoded, "members").is<picojson::array>()) {
        error = dir + "/" + p.json + ": not a decoded structure";
        return false;
    }
    out.id     = p.id;
    out.step   = p.step;
    out.module = p.module;
    out.block  = p.block;
    /* the channelled modules keep one directory per channel */
    out.channel = p.bin.find("/chn") == std::string::npos ? -1 : p.channel;
    out.command = int(p.cmd);
    out.group   = p.group;
    out.type    = p.type;
    out.size    = p.size;
    out.file    = p.bin;
    out.problem = text(at(decoded, "problem"));
    for (const manifest_source &s : p.sources) out.sources.push_back(s.file);
    for (const picojson::value &m : decoded.get("members").get<picojson::array>())
        out.members.push_back(member_of(m));
    return true;
}

}  // namespace

const member_view *push_view::member(const std::string &name) const {
    for (const member_view &m : members)
        if (m.name == name) return &m;
    return nullptr;
}

bool load_dump(const std::string &dir, dump_view &out, std::string &error) {
    const std::string path = dir + "/manifest.json";
    picojson::value root;
    if (!read_json_file(path, root, error)) return false;
    if (!manifest_from_json(root, out.facts, error)) {
        error = path + ": " + error;
        return false;
    }
    out.dir = dir;
    for (const manifest_push &p : out.facts.pushes) {
        if (std::find(out.steps.begin(), out.steps.end(), p.step) == out.steps.end())
            out.steps.push_back(p.step);
        push_view view;
        if (!read_push(dir, p, view, error)) return false;
        out.pushes.push_back(std::move(view));
    }
    out.facts.pushes.clear();
    return true;
}

}  // namespace report
}  // namespace isp_case
