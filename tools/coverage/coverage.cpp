/* The coverage tally: one slot per register map field, filled file by file. */
#include "tools/coverage/coverage.h"

#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <filesystem>
#include <set>
#include <tuple>

#include <fmt/core.h>

#include "tools/core/batch.h"
#include "tools/core/file_probe.h"
#include "tools/dump/reader.h"
#include "tools/lint/lint.h"

namespace isp_case {

coverage_tally::coverage_tally() {
    size_t count                      = 0;
    const isp::block_map *const *maps = isp::block_maps(&count);
    for (size_t b = 0; b < count; ++b) {
        block_slots slots;
        slots.map = maps[b];
        slots.by_row.resize(maps[b]->row_count);
        for (const regmap_field &f : block_fields(*maps[b])) {
            std::vector<uint32_t> &row = slots.by_row[size_t(f.row - maps[b]->rows)];
            const uint32_t at          = f.index - f.row->keys.first;
            if (row.size() <= at) row.resize(at + 1, UINT32_MAX);
            row[at] = uint32_t(fields_.size());
            field_coverage c;
            c.field = f;
            c.range = range_of(f);
            fields_.push_back(std::move(c));
        }
        blocks_.push_back(std::move(slots));
    }
    places_.resize(fields_.size());
    distinct_.resize(fields_.size());
}

void coverage_tally::count(uint32_t slot, uint32_t case_id, int frame, int partition,
                           int64_t integer) {
    field_coverage &c = fields_[slot];
    last_place &last  = places_[slot];
    /* a case's files come frame by frame and partition by partition, so a place is counted
     * when it changes */
    if (last.case_id != case_id) {
        ++c.cases;
        last = {case_id, INT_MIN, INT_MIN};
    }
    if (last.frame != frame) {
        if (frame >= 0) ++c.frames; /* pattern files lie in no frame directory */
        last.frame     = frame;
        last.partition = INT_MIN;
    }
    if (last.partition != partition) {
        ++c.partitions;
        last.partition = partition;
    }
    if (c.values++ == 0) c.min = c.max = integer;
    c.min = std::min(c.min, integer);
    c.max = std::max(c.max, integer);
    if (integer <= c.range.min) ++c.at_min;
    if (integer >= c.range.max) ++c.at_max;
    std::vector<int64_t> &seen = distinct_[slot];
    const auto at              = std::lower_bound(seen.begin(), seen.end(), integer);
    if (at != seen.end() && *at == integer) return;
    if (seen.size() < coverage_distinct_cap)
        seen.insert(at, integer);
    else
        c.more = true;
}

void coverage_tally::add_case(const run_settings &settings) {
    std::vector<planned_file> plan = plan_reads(settings);
    std::stable_sort(plan.begin(), plan.end(), [](const planned_file &a, const planned_file &b) {
        return std::tie(a.frame, a.partition, a.channel) <
               std::tie(b.frame, b.partition, b.channel);
    });
    const uint32_t case_id = uint32_t(cases_++);
    for (const planned_file &planned : plan) {
        const std::string path = join_path(settings.case_path, planned.relative);
        const auto block = std::find_if(blocks_.begin(), blocks_.end(), [&](const block_slots &b) {
            return strcmp(b.map->block, planned.readers.front()->block) == 0;
        });
        if (block == blocks_.end() || !has_register_map(*block->map)) {
            struct stat st;
            if (stat(path.c_str(), &st) == 0) ++files_unmapped_;
            continue;
        }
        const probed_file probe = probe_file(path);
        if (probe.state == file_state::missing) continue;
        ++files_read_;
        if (probe.state != file_state::ok) {
            unreadable_.push_back({path, describe(probe)});
            continue;
        }
        block->used = true;
        read_integers(*block->map, probe.doc,
                      [&](const isp::field_row &row, uint32_t index, int64_t integer) {
                          const std::vector<uint32_t> &slots =
                              block->by_row[size_t(&row - block->map->rows)];
                          const uint32_t at = index - row.keys.first;
                          if (at < slots.size() && slots[at] != UINT32_MAX)
                              count(slots[at], case_id, planned.frame, planned.partition, integer);
                      });
    }
}

coverage_report coverage_tally::report() const {
    coverage_report r;
    r.cases          = cases_;
    r.files_read     = files_read_;
    r.files_unmapped = files_unmapped_;
    r.unreadable     = unreadable_;
    for (const block_slots &b : blocks_)
        if (b.used) r.blocks.push_back(b.map->block);
    for (size_t i = 0; i < fields_.size(); ++i) {
        const std::string block = fields_[i].field.map->block;
        if (std::find(r.blocks.begin(), r.blocks.end(), block) == r.blocks.end()) continue;
        r.fields.push_back(fields_[i]);
        r.fields.back().distinct = distinct_[i].size();
    }
    return r;
}

std::vector<const field_coverage *> least_exercised(const coverage_report &report) {
    std::vector<const field_coverage *> order;
    for (const field_coverage &c : report.fields) order.push_back(&c);
    std::stable_sort(order.begin(), order.end(),
                     [](const field_coverage *a, const field_coverage *b) {
                         return std::make_tuple(a->distinct + a->more, a->cases, a->values) <
                                std::make_tuple(b->distinct + b->more, b->cases, b->values);
                     });
    return order;
}

namespace {

namespace fs = std::filesystem;

/* The case a dump was replayed from, with that run's settings. */
bool dump_case(const std::string &dir, case_options &options, std::string &error) {
    dump d;
    try {
        d = open_dump(dir);
    } catch (const dump_error &e) {
        error = e.what();
        return false;
    }
    if (d.recording || d.case_path.empty()) {
        error = dir +
                ": a recording made on the board names no case, and coverage reads a case's "
                "register files";
        return false;
    }
    if (!is_directory(d.case_path)) {
        error = fmt::format(
            "{}: the case it was replayed from, {}, is not there; coverage reads a case's "
            "register files",
            dir, d.case_path);
        return false;
    }
    options.case_path = d.case_path;
    options.grid      = fmt::format("{}x{}", d.part_h, d.part_v);
    options.channels  = d.channels;
    options.frames    = d.frames;
    options.modules   = d.modules;
    return true;
}

}  // namespace

bool coverage_cases(const std::vector<std::string> &paths, std::vector<case_options> &cases,
                    std::string &error) {
    std::set<fs::path> seen;
    const auto add = [&](case_options options) {
        std::error_code failed;
        const fs::path real = fs::canonical(options.case_path, failed);
        if (seen.insert(failed ? fs::path(options.case_path) : real).second)
            cases.push_back(std::move(options));
    };
    for (const std::string &path : paths) {
        if (is_directory(path) && fs::exists(fs::path(path) / "manifest.json")) {
            case_options options;
            if (!dump_case(path, options, error)) return false;
            add(options);
            continue;
        }
        std::vector<batch_case> found;
        if (!find_cases({path}, found, error)) return false;
        if (found.empty()) {
            error = path + ": no case found (a case is a directory holding cfgs/)";
            return false;
        }
        for (const batch_case &c : found) {
            case_options options;
            options.case_path = c.path;
            add(options);
        }
    }
    return true;
}

}  // namespace isp_case
