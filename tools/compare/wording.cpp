/* Differences as lines in register terms. */
#include "tools/compare/wording.h"

#include <cmath>

#include <fmt/core.h>

#include "convert/common/register_map.h"

namespace isp_case {
namespace {

/* a line names at most this many register files: a member of every partition of a large grid
 * would otherwise name them all */
constexpr size_t k_named_files = 2;

std::string files_text(const std::vector<std::string> &files) {
    std::string text;
    for (size_t i = 0; i < files.size() && i < k_named_files; ++i)
        text += (i ? ", " : "") + files[i];
    if (files.size() > k_named_files)
        text += fmt::format(" and {} more", files.size() - k_named_files);
    return text;
}

std::string side_code(const element_side &s) {
    return s.present ? number_text(s.code) : "-";
}

std::string side_value(const element_side &s) {
    return s.present ? number_text(s.value) : "-";
}

std::string or_none(const std::string &s) {
    return s.empty() ? "none" : s;
}

}  // namespace

std::string number_text(double v) {
    return std::isfinite(v) ? fmt::format("{}", v) : "-";
}

std::string member_name(const dump_push &p, const std::string &member, bool with_module) {
    std::string name = p.channelled ? fmt::format("channel {} ", p.channel) : "";
    if (with_module) name += p.module + ".";
    name += p.group.empty() ? fmt::format("cmd{:02}", p.command) : p.group;
    return member.empty() ? name : name + "." + member;
}

/* "[7]", or "[0][7]" for an element of a two-dimensional member, as the driver's structure
 * declares it */
static std::string index_text(const dump_push &p, const std::string &member, long index) {
    const isp::struct_desc *layout = p.type.empty() ? nullptr : isp::find_struct(p.type.c_str());
    for (uint32_t i = 0; layout && i < layout->member_count; ++i) {
        const isp::member_desc &m = layout->members[i];
        if (m.inner && !m.per_partition && member == m.name)
            return fmt::format("[{}][{}]", index / long(m.inner), index % long(m.inner));
    }
    return fmt::format("[{}]", index);
}

std::string element_name(const difference &d, bool with_module) {
    const std::string name = member_name(d.push(), d.member, with_module);
    return d.index < 0 ? name : name + index_text(d.push(), d.member, d.index);
}

std::string difference_what(const difference &d) {
    switch (d.kind) {
        case difference_kind::push_only_in_a:
            return "pushed only in A";
        case difference_kind::push_only_in_b:
            return "pushed only in B";
        case difference_kind::member_only_in_a:
            return "only in A";
        case difference_kind::member_only_in_b:
            return "only in B";
        case difference_kind::format:
            return fmt::format("format {} | {}", or_none(d.in_a.format), or_none(d.in_b.format));
        case difference_kind::location:
            return fmt::format("register {} | {}", or_none(d.in_a.location),
                               or_none(d.in_b.location));
        case difference_kind::bytes:
            return "bytes differ";
        case difference_kind::code:
        case difference_kind::value:
            break;
    }
    std::string what = fmt::format("code {} | {}", side_code(d.in_a), side_code(d.in_b));
    if (!d.in_a.format.empty() || !d.in_b.format.empty())
        what += fmt::format(", value {} | {}", side_value(d.in_a), side_value(d.in_b));
    return what;
}

std::string difference_text(const difference &d, bool with_module, const step_id *last) {
    std::string text = element_name(d, with_module);
    /* a register difference names both paths in what differs */
    const std::string &path = d.in_a.location.empty() ? d.in_b.location : d.in_a.location;
    if (d.kind != difference_kind::location && !path.empty()) text += " at " + path;
    std::vector<std::string> files = d.files;
    const step_id &first           = d.push().step;
    if (last && last->dir != first.dir) {
        const std::string dir = step_files(first) + "/";
        for (std::string &f : files)
            if (f.compare(0, dir.size(), dir) == 0)
                f = fmt::format("cfgs/f{{{}..{}}}/{}", first.dir, last->dir, f.substr(dir.size()));
    }
    if (!files.empty()) text += " in " + files_text(files);
    return text + ": " + difference_what(d);
}

std::string first_divergence_text(const difference &first, std::optional<size_t> more) {
    std::string text = step_label(first.push().step) + ": " + difference_text(first);
    if (!more) return text;
    if (*more == 0) return text + "; nothing else differs";
    return text + fmt::format("; {} more difference{}", *more, *more == 1 ? "" : "s");
}

divergence first_divergence(const dump &a, const dump &b, const compare_options &options) {
    divergence found;
    found.summary = compare_dumps(a, b, options, [&](const difference &d) {
        if (found.first)
            ++found.more;
        else
            found.first = d;
    });
    return found;
}

std::string step_range_label(const step_id &first, const step_id &last) {
    if (first == last) return step_label(first);
    if (first.kind != phase::frame || last.kind != phase::frame)
        return step_label(first) + " to " + step_label(last);
    /* the directories in turn, then the last one read again */
    std::string dirs = first.dir == last.dir ? fmt::format("f{}", first.dir)
                                             : fmt::format("f{}-f{}", first.dir, last.dir);
    if (first.again())
        dirs += " again";
    else if (last.again())
        dirs += fmt::format(", then f{} again", last.dir);
    return fmt::format("frames {}-{} ({})", first.number, last.number, dirs);
}

}  // namespace isp_case
