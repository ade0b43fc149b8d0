/* Pairing the pushes of two dumps and comparing each pair's members. */
#include "tools/compare/engine.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <unordered_map>

#include <fmt/core.h>

#include "isp_framework.h"

namespace isp_case {
namespace {

using push_key = std::tuple<int, int, std::string, int, uint32_t>;

push_key key_of(const dump_push &p) {
    return {int(p.step.kind), p.step.number, p.module, p.channel, p.command};
}

/* setup, frame 1, frame 2, ..., teardown */
std::pair<int, int> step_rank(const step_id &s) {
    return {int(s.kind), s.number};
}

element_side side_of(const dump_member &m, long index) {
    element_side s;
    s.format       = m.format;
    const size_t k = index < 0 ? 0 : size_t(index);
    /* an element names the row that fills it; the member, its first row */
    s.location = index >= 0 && k < m.locations.size() && !m.locations[k].empty() ? m.locations[k]
                                                                                 : m.location;
    if (k >= m.codes.size()) return s;
    s.present = true;
    s.code    = m.codes[k];
    s.value   = k < m.values.size() ? m.values[k] : NAN;
    return s;
}

void add_files(std::vector<std::string> &files, const dump_push *p, const dump_member *m,
               long index) {
    if (!p) return;
    const auto add = [&](const dump_source &s) {
        if (std::find(files.begin(), files.end(), s.file) == files.end()) files.push_back(s.file);
    };
    if (m && m->per_partition && index >= 0) {
        /* partition p's elements come p-th, as many each as the structure holds per partition */
        const long per = m->count >= ISP_MAX_PARTITIONS ? long(m->count / ISP_MAX_PARTITIONS) : 1;
        for (const dump_source &s : p->sources)
            if (s.partition == index / per) return add(s);
    }
    for (const dump_source &s : p->sources) add(s);
}

/* the element's register files, as both runs name them */
std::vector<std::string> files_of(const difference &d, const dump_member *m, const dump_member *n) {
    std::vector<std::string> files;
    add_files(files, d.a, m, d.index);
    add_files(files, d.b, n ? n : m, d.index);
    return files;
}

bool values_apart(double x, double y, double tolerance) {
    if (std::isfinite(x) != std::isfinite(y)) return true;
    return std::isfinite(x) && std::fabs(x - y) > tolerance;
}

}  // namespace

const char *kind_name(difference_kind kind) {
    static const char *const names[] = {
#define ISP_CASE_KIND_NAME(id, name) name,
        ISP_CASE_DIFFERENCE_KINDS(ISP_CASE_KIND_NAME)
#undef ISP_CASE_KIND_NAME
    };
    return names[size_t(kind)];
}

std::string tolerance_problem(double tolerance) {
    if (!std::isfinite(tolerance)) return "not a finite number";
    if (tolerance < 0) return "negative";
    return "";
}

std::vector<std::string> header_notes(const dump &a, const dump &b) {
    std::vector<std::string> notes;
    auto note = [&](const char *what, const std::string &x, const std::string &y) {
        if (x != y) notes.push_back(fmt::format("{} differs: {} | {}", what, x, y));
    };
    auto joined = [](const std::vector<std::string> &v) {
        std::string s;
        for (const std::string &x : v) s += (s.empty() ? "" : ",") + x;
        return s;
    };
    note("tool", a.tool, b.tool);
    note("library", a.library, b.library);
    note("case", a.case_path, b.case_path);
    note("grid", fmt::format("{}x{}", a.part_h, a.part_v),
         fmt::format("{}x{}", b.part_h, b.part_v));
    note("channels", std::to_string(a.channels), std::to_string(b.channels));
    note("frames", std::to_string(a.frames), std::to_string(b.frames));
    note("pointer size", std::to_string(a.pointer_bytes), std::to_string(b.pointer_bytes));
    note("modules", joined(a.modules), joined(b.modules));
    note("bypass", joined(a.bypass), joined(b.bypass));
    return notes;
}

push_pairs pair_pushes(const dump &a, const dump &b) {
    /* the same push may come twice in a step: the k-th of A pairs with the k-th of B */
    std::map<push_key, std::vector<size_t>> in_b;
    for (size_t i = 0; i < b.pushes.size(); ++i) in_b[key_of(b.pushes[i])].push_back(i);
    std::map<push_key, size_t> seen;
    std::vector<bool> paired(b.pushes.size(), false);
    push_pairs out;
    out.b_of_a.reserve(a.pushes.size());
    for (const dump_push &p : a.pushes) {
        const push_key key      = key_of(p);
        const size_t occurrence = seen[key]++;
        const auto it           = in_b.find(key);
        if (it == in_b.end() || occurrence >= it->second.size()) {
            out.b_of_a.push_back(push_pairs::npos);
            continue;
        }
        out.b_of_a.push_back(it->second[occurrence]);
        paired[it->second[occurrence]] = true;
    }
    for (size_t i = 0; i < b.pushes.size(); ++i)
        if (!paired[i]) out.b_alone.push_back(i);
    return out;
}

void compare_structures(const decoded_push &a, const decoded_push &b, double tolerance,
                        difference d, const difference_sink &sink) {
    if (a.members.empty() && b.members.empty()) {
        /* no layout on either side: the bytes are all there is to compare */
        if (a.bytes != b.bytes) {
            d.kind  = difference_kind::bytes;
            d.files = files_of(d, nullptr, nullptr);
            sink(d);
        }
        return;
    }
    std::unordered_map<std::string, const dump_member *> in_b;
    for (const dump_member &m : b.members) in_b.emplace(m.name, &m);
    for (const dump_member &m : a.members) {
        d.member      = m.name;
        d.index       = -1;
        d.count       = m.codes.size();
        d.in_a        = side_of(m, -1);
        d.files       = files_of(d, &m, nullptr);
        const auto it = in_b.find(m.name);
        if (it == in_b.end()) {
            d.kind = difference_kind::member_only_in_a;
            d.in_b = {};
            sink(d);
            continue;
        }
        const dump_member &n = *it->second;
        in_b.erase(it);
        d.in_b  = side_of(n, -1);
        d.count = std::max(m.codes.size(), n.codes.size());
        if (m.format != n.format) {
            d.kind = difference_kind::format;
            sink(d);
        }
        if (m.location != n.location) {
            d.kind = difference_kind::location;
            sink(d);
        }
        const bool scalar = m.scalar && n.scalar;
        for (size_t k = 0; k < std::max(m.codes.size(), n.codes.size()); ++k) {
            d.index = scalar ? -1 : long(k);
            d.in_a  = side_of(m, long(k));
            d.in_b  = side_of(n, long(k));
            if (m.per_partition || n.per_partition) d.files = files_of(d, &m, &n);
            if (!d.in_a.present || !d.in_b.present || d.in_a.code != d.in_b.code)
                d.kind = difference_kind::code;
            else if (values_apart(d.in_a.value, d.in_b.value, tolerance))
                d.kind = difference_kind::value;
            else
                continue;
            sink(d);
        }
    }
    d.index = -1;
    d.in_a  = {};
    for (const dump_member &n : b.members)
        if (in_b.count(n.name)) {
            d.kind   = difference_kind::member_only_in_b;
            d.member = n.name;
            d.count  = n.codes.size();
            d.in_b   = side_of(n, -1);
            d.files  = files_of(d, nullptr, &n);
            sink(d);
        }
}

comparison_summary compare_dumps(const dump &a, const dump &b, const compare_options &options,
                                 const difference_sink &sink) {
    const push_pairs pairs = pair_pushes(a, b);
    constexpr size_t none  = push_pairs::npos;
    std::vector<std::pair<size_t, size_t>> order; /* (A's push, B's push) */
    for (size_t i = 0; i < a.pushes.size(); ++i) order.emplace_back(i, pairs.b_of_a[i]);
    for (size_t j : pairs.b_alone) order.emplace_back(none, j);
    const auto push_of = [&](const std::pair<size_t, size_t> &e) -> const dump_push & {
        return e.first != none ? a.pushes[e.first] : b.pushes[e.second];
    };
    if (options.frame) {
        const auto elsewhere = [&](const std::pair<size_t, size_t> &e) {
            return !is_frame_step(push_of(e).step, *options.frame);
        };
        order.erase(std::remove_if(order.begin(), order.end(), elsewhere), order.end());
    }
    /* modules in the order the runs first push them */
    std::unordered_map<std::string, size_t> module_rank;
    for (const dump *d : {&a, &b})
        for (const dump_push &p : d->pushes) module_rank.emplace(p.module, module_rank.size());
    std::stable_sort(order.begin(), order.end(), [&](const auto &x, const auto &y) {
        const dump_push &px = push_of(x), &py = push_of(y);
        if (step_rank(px.step) != step_rank(py.step))
            return step_rank(px.step) < step_rank(py.step);
        return module_rank[px.module] < module_rank[py.module];
    });

    comparison_summary summary;
    const difference_sink counted = [&](const difference &d) {
        if (options.limit && summary.differences >= options.limit) return;
        ++summary.differences;
        sink(d);
    };
    for (const auto &[i, j] : order) {
        if (options.limit && summary.differences >= options.limit) break;
        summary.pushes_a += i != none;
        summary.pushes_b += j != none;
        difference d;
        d.a      = i != none ? &a.pushes[i] : nullptr;
        d.b      = j != none ? &b.pushes[j] : nullptr;
        d.push_a = i, d.push_b = j;
        if (i == none || j == none) {
            d.kind = i == none ? difference_kind::push_only_in_b : difference_kind::push_only_in_a;
            ++(i == none ? summary.only_b : summary.only_a);
            d.files = files_of(d, nullptr, nullptr);
            counted(d);
            continue;
        }
        const size_t before = summary.differences;
        compare_structures(read_push(a, a.pushes[i]), read_push(b, b.pushes[j]), options.tolerance,
                           d, counted);
        summary.differing += summary.differences != before;
    }
    return summary;
}

}  // namespace isp_case
