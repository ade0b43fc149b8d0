/* Pairing the pushes of two dumps and comparing each pair's members. */
#include "tools/compare/engine.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <unordered_map>

#include <fmt/core.h>

#include "isp_framework.h"

namespace isp_case {
namespace {

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
    add_files(files, d.a.get(), m, d.index);
    add_files(files, d.b.get(), n ? n : m, d.index);
    return files;
}

bool values_apart(double x, double y, double tolerance) {
    if (std::isfinite(x) != std::isfinite(y)) return true;
    return std::isfinite(x) && std::fabs(x - y) > tolerance;
}

/* A dump's pushes of one step, by index, in replay order. */
using step_pushes = std::vector<size_t>;

/* f(A's pushes, B's pushes) for each step either dump has, setup first, then the frames in
 * order and teardown: a step's pushes wherever the manifest lists them. */
template <class F>
void for_each_step_pair(const dump &a, const dump &b, F f) {
    using rank = std::pair<int, int>;
    std::map<rank, std::pair<std::vector<size_t>, std::vector<size_t>>> spans; /* of A, B */
    for (const auto &[d, side] : {std::make_pair(&a, 0), std::make_pair(&b, 1)})
        for (size_t s = 0; s < d->pushes.spans().size(); ++s) {
            auto &both = spans[step_rank(d->pushes.spans()[s].step)];
            (side == 0 ? both.first : both.second).push_back(s);
        }
    const auto pushes_of = [](const dump &d, const std::vector<size_t> &of) {
        step_pushes out;
        for (size_t s : of)
            for (size_t i = d.pushes.spans()[s].first; i < d.pushes.span_end(s); ++i)
                out.push_back(i);
        return out;
    };
    for (const auto &[r, both] : spans) f(pushes_of(a, both.first), pushes_of(b, both.second));
}

/* The pairs of one step: the k-th push of a module, channel and command in A with the k-th in
 * B. */
struct step_pairs {
    std::vector<size_t> b_of_a, b_alone;
};
step_pairs pair_step(const dump &a, const step_pushes &in_a, const dump &b,
                     const step_pushes &in_b) {
    using key         = std::tuple<const std::string &, int, uint32_t>;
    const auto key_of = [](const dump_push &p) { return key(p.module, p.channel, p.command); };
    std::map<key, std::vector<size_t>> of_b;
    for (size_t j : in_b) of_b[key_of(b.pushes.listed(j))].push_back(j);
    std::map<key, size_t> seen;
    std::set<size_t> paired;
    step_pairs out;
    for (size_t i : in_a) {
        const key k             = key_of(a.pushes.listed(i));
        const size_t occurrence = seen[k]++;
        const auto it           = of_b.find(k);
        if (it == of_b.end() || occurrence >= it->second.size()) {
            out.b_of_a.push_back(push_pairs::npos);
            continue;
        }
        out.b_of_a.push_back(it->second[occurrence]);
        paired.insert(it->second[occurrence]);
    }
    for (size_t j : in_b)
        if (!paired.count(j)) out.b_alone.push_back(j);
    return out;
}

/* The decoded pushes of a dump while the steps that push them follow one another: a repeated
 * frame reads what the frame before it read. */
class decoded_cache {
  public:
    explicit decoded_cache(const dump &d) : dump_(d) {}
    /* drops what neither this step nor the one before read */
    void next_step() {
        ++step_;
        for (auto it = held_.begin(); it != held_.end();)
            it = it->second.first + 1 < step_ ? held_.erase(it) : std::next(it);
    }
    const decoded_push &read(size_t push) {
        const size_t listed = dump_.pushes.listed_index(push);
        auto it             = held_.find(listed);
        if (it == held_.end())
            it = held_.emplace(listed, std::make_pair(step_, read_push(dump_, dump_.pushes[push])))
                     .first;
        it->second.first = step_;
        return it->second.second;
    }

  private:
    const dump &dump_;
    size_t step_ = 0;
    std::unordered_map<size_t, std::pair<size_t, decoded_push>> held_;
};

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
    push_pairs out;
    out.b_of_a.assign(a.pushes.size(), push_pairs::npos);
    for_each_step_pair(a, b, [&](const step_pushes &in_a, const step_pushes &in_b) {
        const step_pairs paired = pair_step(a, in_a, b, in_b);
        for (size_t k = 0; k < in_a.size(); ++k) out.b_of_a[in_a[k]] = paired.b_of_a[k];
        out.b_alone.insert(out.b_alone.end(), paired.b_alone.begin(), paired.b_alone.end());
    });
    std::sort(out.b_alone.begin(), out.b_alone.end());
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
    constexpr size_t none = push_pairs::npos;
    /* modules in the order the runs first push them: a repeated push adds none */
    std::unordered_map<std::string, size_t> module_rank;
    for (const dump *d : {&a, &b})
        for (const dump_push &p : d->pushes.all_listed())
            module_rank.emplace(p.module, module_rank.size());
    decoded_cache cache_a(a), cache_b(b);
    std::set<std::pair<size_t, size_t>> equal; /* listed pushes of A and B found equal */

    comparison_summary summary;
    const difference_sink counted = [&](const difference &d) {
        if (options.limit && summary.differences >= options.limit) return;
        ++summary.differences;
        sink(d);
    };
    bool stopped = false;
    for_each_step_pair(a, b, [&](const step_pushes &in_a, const step_pushes &in_b) {
        if (stopped) return;
        const step_id &step = in_a.empty() ? b.pushes.step(in_b[0]) : a.pushes.step(in_a[0]);
        if (options.frame && !is_frame_step(step, *options.frame)) return;
        cache_a.next_step(), cache_b.next_step();
        const step_pairs paired = pair_step(a, in_a, b, in_b);
        std::vector<std::pair<size_t, size_t>> order; /* (A's push, B's push) */
        for (size_t k = 0; k < in_a.size(); ++k) order.emplace_back(in_a[k], paired.b_of_a[k]);
        for (size_t j : paired.b_alone) order.emplace_back(none, j);
        const auto rank_of = [&](const std::pair<size_t, size_t> &e) {
            return module_rank
                [(e.first != none ? a.pushes.listed(e.first) : b.pushes.listed(e.second)).module];
        };
        std::stable_sort(order.begin(), order.end(),
                         [&](const auto &x, const auto &y) { return rank_of(x) < rank_of(y); });
        for (const auto &[i, j] : order) {
            if (options.limit && summary.differences >= options.limit) {
                stopped = true;
                return;
            }
            summary.pushes_a += i != none;
            summary.pushes_b += j != none;
            difference d;
            if (i != none) d.a = std::make_shared<const dump_push>(a.pushes[i]);
            if (j != none) d.b = std::make_shared<const dump_push>(b.pushes[j]);
            d.push_a = i, d.push_b = j;
            if (i == none || j == none) {
                d.kind =
                    i == none ? difference_kind::push_only_in_b : difference_kind::push_only_in_a;
                ++(i == none ? summary.only_b : summary.only_a);
                d.files = files_of(d, nullptr, nullptr);
                counted(d);
                continue;
            }
            const std::pair<size_t, size_t> listed = {a.pushes.listed_index(i),
                                                      b.pushes.listed_index(j)};
            if (equal.count(listed)) continue;
            const size_t before = summary.differences;
            compare_structures(cache_a.read(i), cache_b.read(j), options.tolerance, d, counted);
            summary.differing += summary.differences != before;
            if (summary.differences == before) equal.insert(listed);
        }
    });
    return summary;
}

}  // namespace isp_case
