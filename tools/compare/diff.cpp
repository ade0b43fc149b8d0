/* The diff subcommand: two manifests matched push by push, then the decoded members of each
 * matched pair element by element. */
#include "tools/compare/diff.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <map>
#include <stdexcept>
#include <vector>

#include <fmt/core.h>

#include "tools/dump/manifest.h"
#include "tools/core/settings.h"

namespace isp_case {
namespace {

using picojson::value;

/* A dump that cannot be read: ends the comparison with status 3. */
struct unreadable : std::runtime_error {
    using std::runtime_error::runtime_error;
};

value read_json(const std::string &path) {
    value v;
    std::string error;
    if (!read_json_file(path, v, error)) throw unreadable(error);
    return v;
}

manifest read_manifest(const std::string &dir) {
    const value v = read_json(dir + "/manifest.json");
    manifest m;
    std::string error;
    if (!manifest_from_json(v, m, error)) throw unreadable(dir + "/manifest.json: " + error);
    return m;
}

/* setup, then frame 1, frame 2, ..., then teardown */
int step_rank(const step_id &step) {
    return step.kind == phase::setup ? -1 : step.kind == phase::frame ? step.number : INT_MAX;
}

std::string push_key(const manifest_push &p) {
    return fmt::format("{}/{}/{}/{}/{}", p.step, p.module, p.channel, p.cmd, p.group);
}

/* "cmd01_ctrl", "chn1/cmd03_lin": the push's file name in its module's directory */
std::string push_label(const manifest_push &p) {
    std::string label = fmt::format("cmd{:02}", p.cmd);
    if (!p.group.empty()) label += "_" + p.group;
    if (p.bin.find("/chn") != std::string::npos) label = fmt::format("chn{}/{}", p.channel, label);
    return label;
}

/* One element of a member as the decoded file gives it. */
struct element {
    value code, real;
};

struct member_diff {
    std::string member;
    long index  = -1; /* -1 for a scalar, or for a member one side lacks */
    bool only_a = false, only_b = false;
    element a, b;
};

/* A push of either side with what differs in it. */
struct push_diff {
    const manifest_push *push = nullptr;
    bool only_a = false, only_b = false;
    std::vector<member_diff> members;
    size_t order = 0;
};

std::vector<element> elements_of(const picojson::object &member) {
    std::vector<element> out;
    auto scalar = member.find("code");
    if (scalar != member.end()) {
        auto real = member.find("value");
        out.push_back({scalar->second, real == member.end() ? value() : real->second});
        return out;
    }
    /* a pointer compares by what it leads to */
    auto target                    = member.find("target");
    const picojson::object *holder = &member;
    if (target != member.end() && target->second.is<picojson::object>())
        holder = &target->second.get<picojson::object>();
    auto codes = holder->find("codes");
    if (codes == holder->end() || !codes->second.is<picojson::array>()) return out;
    auto reals               = holder->find("values");
    const picojson::array &c = codes->second.get<picojson::array>();
    const picojson::array *r = reals != holder->end() && reals->second.is<picojson::array>()
                                   ? &reals->second.get<picojson::array>()
                                   : nullptr;
    for (size_t k = 0; k < c.size(); ++k)
        out.push_back({c[k], r && k < r->size() ? (*r)[k] : value()});
    return out;
}

bool differ(const element &a, const element &b, double tolerance) {
    const bool reals = a.real.is<double>() && b.real.is<double>();
    const value &x = reals ? a.real : a.code, &y = reals ? b.real : b.code;
    if (x.is<double>() && y.is<double>())
        return std::fabs(x.get<double>() - y.get<double>()) > tolerance;
    return x.serialize() != y.serialize();
}

/* name -> member object of a decoded structure, in memory order */
std::vector<std::pair<std::string, const picojson::object *>> members_of(const value &decoded,
                                                                         const std::string &path) {
    std::vector<std::pair<std::string, const picojson::object *>> out;
    if (!decoded.is<picojson::object>() || !decoded.get("members").is<picojson::array>())
        throw unreadable(path + ": not a decoded structure");
    for (const value &m : decoded.get("members").get<picojson::array>()) {
        if (!m.is<picojson::object>() || !m.get("name").is<std::string>())
            throw unreadable(path + ": a member without a name");
        out.emplace_back(m.get("name").get<std::string>(), &m.get<picojson::object>());
    }
    return out;
}

std::string raw_bytes(const std::string &path) {
    std::string bytes, error;
    if (!read_file_bytes(path, bytes, error)) throw unreadable(error);
    return bytes;
}

void compare_push(const diff_settings &s, const manifest_push &pa, const manifest_push &pb,
                  push_diff &out) {
    const std::string path_a = s.a + "/" + pa.json, path_b = s.b + "/" + pb.json;
    const value da = read_json(path_a), db = read_json(path_b);
    const auto ma = members_of(da, path_a), mb = members_of(db, path_b);
    if (ma.empty() && mb.empty()) {
        /* no layout on either side: the bytes are all there is to compare */
        if (raw_bytes(s.a + "/" + pa.bin) != raw_bytes(s.b + "/" + pb.bin))
            out.members.push_back({"(bytes)", -1, false, false, {}, {}});
        return;
    }
    std::map<std::string, const picojson::object *> by_name(mb.begin(), mb.end());
    for (const auto &[name, member] : ma) {
        auto other = by_name.find(name);
        if (other == by_name.end()) {
            out.members.push_back({name, -1, true, false, {}, {}});
            continue;
        }
        const std::vector<element> ea = elements_of(*member), eb = elements_of(*other->second);
        const bool scalar = member->count("code") && other->second->count("code");
        for (size_t k = 0; k < std::max(ea.size(), eb.size()); ++k) {
            const element a = k < ea.size() ? ea[k] : element{},
                          b = k < eb.size() ? eb[k] : element{};
            if (differ(a, b, s.tolerance))
                out.members.push_back({name, scalar ? -1 : long(k), false, false, a, b});
        }
        by_name.erase(other);
    }
    for (const auto &[name, member] : mb)
        if (by_name.count(name)) out.members.push_back({name, -1, false, true, {}, {}});
}

std::string shown(const value &v) {
    return v.is<picojson::null>() ? "-" : v.serialize();
}

value side_json(const element &e) {
    picojson::object o;
    o["code"]  = e.code;
    o["value"] = e.real;
    return value(o);
}

struct comparison {
    manifest a, b;
    std::vector<push_diff> pushes; /* only those that differ, grouped per step and module */
    std::vector<std::string> notes;
    size_t differing = 0, only_a = 0, only_b = 0, members = 0;
};

void header_notes(comparison &c) {
    auto note = [&](const char *what, const std::string &a, const std::string &b) {
        if (a != b) c.notes.push_back(fmt::format("{} differs: {} | {}", what, a, b));
    };
    note("tool", c.a.tool, c.b.tool);
    note("library", c.a.library, c.b.library);
    note("case", c.a.case_path, c.b.case_path);
    note("grid", fmt::format("{}x{}", c.a.part_h, c.a.part_v),
         fmt::format("{}x{}", c.b.part_h, c.b.part_v));
    note("channels", std::to_string(c.a.channels), std::to_string(c.b.channels));
    note("frames", std::to_string(c.a.frames), std::to_string(c.b.frames));
    note("pointer size", std::to_string(c.a.pointer_bytes), std::to_string(c.b.pointer_bytes));
    auto joined = [](const std::vector<std::string> &v) {
        std::string s;
        for (const std::string &x : v) s += (s.empty() ? "" : ",") + x;
        return s;
    };
    note("modules", joined(c.a.modules), joined(c.b.modules));
    note("bypass", joined(c.a.bypass), joined(c.b.bypass));
}

comparison compare(const diff_settings &s) {
    comparison c;
    c.a = read_manifest(s.a);
    c.b = read_manifest(s.b);
    header_notes(c);

    /* the same push may come twice in a step: matched by occurrence */
    std::map<std::string, std::vector<size_t>> in_b;
    for (size_t i = 0; i < c.b.pushes.size(); ++i) in_b[push_key(c.b.pushes[i])].push_back(i);
    std::map<std::string, size_t> used;
    std::vector<bool> matched(c.b.pushes.size(), false);
    std::map<std::string, size_t> module_rank;
    for (const manifest *m : {&c.a, &c.b})
        for (const manifest_push &p : m->pushes) module_rank.emplace(p.module, module_rank.size());

    std::vector<push_diff> all;
    for (const manifest_push &pa : c.a.pushes) {
        push_diff d;
        d.push                 = &pa;
        const std::string key  = push_key(pa);
        const size_t occurence = used[key]++;
        auto it                = in_b.find(key);
        if (it == in_b.end() || occurence >= it->second.size()) {
            d.only_a = true;
            ++c.only_a;
        } else {
            matched[it->second[occurence]] = true;
            compare_push(s, pa, c.b.pushes[it->second[occurence]], d);
            if (d.members.empty()) continue;
            ++c.differing;
            c.members += d.members.size();
        }
        all.push_back(std::move(d));
    }
    for (size_t i = 0; i < c.b.pushes.size(); ++i) {
        if (matched[i]) continue;
        push_diff d;
        d.push   = &c.b.pushes[i];
        d.only_b = true;
        ++c.only_b;
        all.push_back(std::move(d));
    }
    for (size_t i = 0; i < all.size(); ++i) all[i].order = i;
    std::stable_sort(all.begin(), all.end(), [&](const push_diff &x, const push_diff &y) {
        const int sx = step_rank(x.push->id), sy = step_rank(y.push->id);
        if (sx != sy) return sx < sy;
        return module_rank[x.push->module] < module_rank[y.push->module];
    });
    c.pushes = std::move(all);
    return c;
}

/* Element lines shown per member in the text form; the JSON form lists them all. */
constexpr size_t k_shown_elements = 8;

void print_text(std::FILE *out, const diff_settings &s, const comparison &c) {
    fmt::print(out, "diff of {} and {}\n", s.a, s.b);
    for (const std::string &n : c.notes) fmt::print(out, "  note: {}\n", n);
    std::string step, module;
    for (size_t i = 0; i < c.pushes.size(); ++i) {
        const push_diff &d     = c.pushes[i];
        const manifest_push &p = *d.push;
        if (p.step != step) {
            fmt::print(out, "{}\n", p.step);
            step = p.step, module.clear();
        }
        if (p.module != module) {
            fmt::print(out, "  {}\n", p.module);
            module = p.module;
        }
        const std::string label = push_label(p);
        if (d.only_a || d.only_b) {
            /* the pushes of a module one side lacks, on one line */
            std::string labels = label;
            for (; i + 1 < c.pushes.size(); ++i) {
                const push_diff &n = c.pushes[i + 1];
                if (n.only_a != d.only_a || n.only_b != d.only_b || n.push->step != p.step ||
                    n.push->module != p.module)
                    break;
                labels += ", " + push_label(*n.push);
            }
            fmt::print(out, "    only in {}: {}\n", d.only_a ? "A" : "B", labels);
            continue;
        }
        std::map<std::string, size_t> per_member;
        for (const member_diff &m : d.members) {
            if (m.only_a || m.only_b) {
                fmt::print(out, "    {} {}: member only in {}\n", label, m.member,
                           m.only_a ? "A" : "B");
                continue;
            }
            if (per_member[m.member]++ >= k_shown_elements) continue;
            const std::string name =
                m.index < 0 ? m.member : fmt::format("{}[{}]", m.member, m.index);
            std::string line = fmt::format("    {} {}: code {} -> {}", label, name, shown(m.a.code),
                                           shown(m.b.code));
            if (!m.a.real.is<picojson::null>() || !m.b.real.is<picojson::null>())
                line += fmt::format(", value {} -> {}", shown(m.a.real), shown(m.b.real));
            fmt::print(out, "{}\n", line);
        }
        for (const auto &[name, count] : per_member)
            if (count > k_shown_elements)
                fmt::print(out, "    {} {}: {} more elements differ\n", label, name,
                           count - k_shown_elements);
    }
    fmt::print(
        out,
        "summary: {} pushes in A, {} in B; {} differ ({} members or elements), {} only in A, "
        "{} only in B\n",
        c.a.pushes.size(), c.b.pushes.size(), c.differing, c.members, c.only_a, c.only_b);
    const bool same = c.differing == 0 && c.only_a == 0 && c.only_b == 0;
    fmt::print(out, "result: {}\n", same ? "identical" : "different");
}

void print_json(std::FILE *out, const diff_settings &s, const comparison &c) {
    picojson::object o;
    o["a"]         = value(s.a);
    o["b"]         = value(s.b);
    o["tolerance"] = value(s.tolerance);
    picojson::array notes;
    for (const std::string &n : c.notes) notes.push_back(value(n));
    o["notes"] = value(notes);
    picojson::array differences;
    for (const push_diff &d : c.pushes) {
        picojson::object base;
        base["step"]    = value(d.push->step);
        base["module"]  = value(d.push->module);
        base["channel"] = value(double(d.push->channel));
        base["cmd"]     = value(double(d.push->cmd));
        base["group"]   = value(d.push->group);
        if (d.only_a || d.only_b) {
            base["kind"] = value(std::string(d.only_a ? "push_only_in_a" : "push_only_in_b"));
            differences.push_back(value(base));
            continue;
        }
        for (const member_diff &m : d.members) {
            picojson::object e = base;
            e["member"]        = value(m.member);
            e["index"]         = m.index < 0 ? value() : value(double(m.index));
            if (m.only_a || m.only_b) {
                e["kind"] = value(std::string(m.only_a ? "member_only_in_a" : "member_only_in_b"));
            } else {
                e["kind"] = value(std::string("member"));
                e["a"]    = side_json(m.a);
                e["b"]    = side_json(m.b);
            }
            differences.push_back(value(e));
        }
    }
    o["differences"] = value(differences);
    picojson::object summary;
    summary["pushes_a"]  = value(double(c.a.pushes.size()));
    summary["pushes_b"]  = value(double(c.b.pushes.size()));
    summary["differing"] = value(double(c.differing));
    summary["members"]   = value(double(c.members));
    summary["only_in_a"] = value(double(c.only_a));
    summary["only_in_b"] = value(double(c.only_b));
    o["summary"]         = value(summary);
    o["identical"]       = value(c.differing == 0 && c.only_a == 0 && c.only_b == 0);
    fmt::print(out, "{}\n", value(o).serialize(true));
}

}  // namespace

int diff_dumps(const diff_settings &settings, std::FILE *out, std::FILE *err) {
    comparison c;
    try {
        c = compare(settings);
    } catch (const unreadable &e) {
        fmt::print(err, "isp-case diff: {}\n", e.what());
        return exit_no_case;
    }
    if (settings.json)
        print_json(out, settings, c);
    else
        print_text(out, settings, c);
    return c.differing == 0 && c.only_a == 0 && c.only_b == 0 ? exit_ok : exit_failed;
}

}  // namespace isp_case
