/* One entry per fault: the keys that make findings the same, the near-miss pairing and the
 * compact text of a group's places. */
#include "tools/core/finding_groups.h"

#include <algorithm>

#include <fmt/core.h>

namespace isp_case {
namespace {

const size_t places_per_finding = 64;

/* What makes two findings the same fault: everything but where they were found. */
std::string key_of(const finding &f) {
    return fmt::format("{}|{}|{}|{}|{}|{}|{}|{}|{}|{}|{}|{}", int(f.level), int(f.kind), f.line,
                       f.column, f.module, f.reg, f.field, f.value, f.format, f.hardware, f.message,
                       f.file.empty() && f.step.empty() ? "settings" : "");
}

finding_place place_of(const finding &f) {
    return {f.file, f.step, f.frame, f.partition, f.channel};
}

void add_place(finding &entry, const finding_place &place) {
    if (entry.places.size() < places_per_finding)
        entry.places.push_back(place);
    else
        ++entry.places_not_kept;
}

/* A value no converter can read, or the converter's own message on it in the lint: the run's
 * "read json_obj failed" for it says the same. */
bool explains_unread(const finding &f) {
    return f.step.empty() && !f.reg.empty() &&
           (f.kind == finding_kind::missing_field || f.kind == finding_kind::type ||
            f.kind == finding_kind::field_not_read);
}

std::vector<std::string> modules_of(const std::string &list) {
    std::vector<std::string> names;
    for (size_t at = 0; at <= list.size();) {
        const size_t comma = std::min(list.find(", ", at), list.size());
        if (comma > at) names.push_back(list.substr(at, comma - at));
        at = comma + 2;
    }
    return names;
}

std::string explainer_key(const std::string &module, const finding &f) {
    return module + "|" + f.reg + "|" + f.field;
}

/* 0,1,2,3,5 as "p0-p3,p5" */
std::string ranges(const std::set<int> &values, const char *prefix) {
    std::string text;
    for (auto it = values.begin(); it != values.end();) {
        const int first = *it;
        int last        = first;
        while (++it != values.end() && *it == last + 1) ++last;
        text += fmt::format("{}{}{}", text.empty() ? "" : ",", prefix, first);
        if (last > first) text += fmt::format("-{}{}", prefix, last);
    }
    return text;
}

}  // namespace

void finding_tally::add(const finding &f) {
    if (f.kind == finding_kind::field_not_read && !f.step.empty() && !f.reg.empty()) {
        const auto by = explainers_.find(explainer_key(f.module, f));
        if (by != explainers_.end()) {
            if (by->second < kept_.size()) add_place(kept_[by->second], place_of(f));
            return;
        }
    }
    const std::string key = key_of(f);
    const auto known      = entries_.find(key);
    if (known != entries_.end()) {
        if (known->second < kept_.size()) add_place(kept_[known->second], place_of(f));
        return;
    }
    ++(f.level == severity::error ? counts_.errors : counts_.warnings);
    const size_t index = kept_.size() < limit_ ? kept_.size() : SIZE_MAX;
    entries_[key]      = index;
    if (explains_unread(f))
        for (const std::string &module : modules_of(f.module))
            explainers_.emplace(explainer_key(module, f), index);
    if (index == SIZE_MAX) return;
    kept_.push_back(f);
    if (f.places.empty()) kept_.back().places = {place_of(f)};
}

void finding_tally::add(const std::vector<finding> &findings) {
    for (const finding &f : pair_near_misses(findings)) add(f);
}

std::vector<finding> pair_near_misses(const std::vector<finding> &findings) {
    /* the pairs of each unknown key, listed where it was */
    std::vector<std::vector<finding>> pairs(findings.size());
    std::vector<bool> paired(findings.size());
    for (size_t u = 0; u < findings.size(); ++u) {
        const finding &unknown = findings[u];
        if (unknown.kind != finding_kind::unknown_key || unknown.probably.empty()) continue;
        /* a register's misspelling hides every field of it, a field's only that field */
        const bool register_key = unknown.field.empty();
        for (size_t m = 0; m < findings.size(); ++m) {
            const finding &missing = findings[m];
            if (paired[m] || missing.kind != finding_kind::missing_field ||
                missing.file != unknown.file ||
                (register_key ? missing.reg != unknown.probably
                              : missing.reg != unknown.reg || missing.field != unknown.probably))
                continue;
            paired[u] = paired[m] = true;
            finding f             = missing;
            f.line                = unknown.line;
            f.column              = unknown.column;
            f.message             = fmt::format(
                            "\"{}\" is probably \"{}\": {} {}{} ({}) {}",
                register_key ? unknown.reg : unknown.field, unknown.probably,
                missing.hardware.empty() ? "the table" : "the field", missing.reg,
                missing.field.empty() ? "" : "." + missing.field, missing.format,
                missing.hardware.empty() ? "is not found and the converter raises picojson's "
                                                       "type error"
                                                     : "reads as 0");
            pairs[u].push_back(std::move(f));
        }
    }
    std::vector<finding> out;
    for (size_t i = 0; i < findings.size(); ++i) {
        if (!paired[i]) out.push_back(findings[i]);
        for (finding &f : pairs[i]) out.push_back(std::move(f));
    }
    return out;
}

std::string places_text(const finding &f) {
    std::set<int> frames, partitions, channels;
    std::vector<std::string> steps;
    size_t files = 0;
    for (const finding_place &p : f.places) {
        if (!p.step.empty()) {
            if (std::find(steps.begin(), steps.end(), p.step) == steps.end())
                steps.push_back(p.step);
            continue;
        }
        ++files;
        if (p.frame >= 0) frames.insert(p.frame);
        if (p.partition >= 0) partitions.insert(p.partition);
        if (p.channel >= 0) channels.insert(p.channel);
    }
    std::string text;
    if (files > 1) {
        for (const auto &[values, prefix] :
             {std::make_pair(&frames, "f"), std::make_pair(&channels, "c"),
              std::make_pair(&partitions, "p")})
            if (values->size() > 1) text += (text.empty() ? "" : " ") + ranges(*values, prefix);
    }
    const size_t more = f.places_not_kept;
    if (!steps.empty() && (files > 0 || steps.size() > 1 || more)) {
        /* a run's message on a lint finding, or a run's finding over several steps */
        text += text.empty() ? "" : "; ";
        if (steps.size() + more == 1)
            text += "at " + steps.front();
        else
            text += more ? fmt::format("at {} steps from {}", grouped(steps.size() + more),
                                       steps.front())
                         : fmt::format("at {} steps, {} to {}", steps.size(), steps.front(),
                                       steps.back());
    } else if (more) {
        text += fmt::format("{}and {} more places", text.empty() ? "" : "; ", grouped(more));
    }
    return text;
}

}  // namespace isp_case
