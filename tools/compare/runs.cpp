/* Merging a difference that repeats over consecutive steps into one run. */
#include "tools/compare/runs.h"

#include <algorithm>

#include <fmt/core.h>

namespace isp_case {
namespace {

std::pair<int, int> rank(const step_id &s) {
    return {int(s.kind), s.number};
}

std::string side_key(const element_side &s) {
    return fmt::format("{}\x1f{}\x1f{}\x1f{}\x1f{}", s.present, s.code, s.value, s.format,
                       s.location);
}

/* everything that makes two steps' differences one, the step and the files aside */
std::string key_of(const difference &d) {
    const dump_push &p = d.push();
    return fmt::format("{}\x1f{}\x1f{}\x1f{}\x1f{}\x1f{}\x1f{}\x1f{}\x1e{}\x1e{}", p.module,
                       p.channel, p.command, p.group, d.member, d.index, int(d.kind), d.count,
                       side_key(d.in_a), side_key(d.in_b));
}

}  // namespace

run_merger::run_merger(const dump &a, const dump &b, sink out) : out_(std::move(out)) {
    for (const dump *d : {&a, &b})
        for (const step_id &s : d->steps)
            if (std::find(steps_.begin(), steps_.end(), s) == steps_.end()) steps_.push_back(s);
    std::stable_sort(steps_.begin(), steps_.end(),
                     [](const step_id &x, const step_id &y) { return rank(x) < rank(y); });
}

bool run_merger::follows(const step_id &later, const step_id &earlier) const {
    const auto at = std::find(steps_.begin(), steps_.end(), earlier);
    return at != steps_.end() && at + 1 != steps_.end() && *(at + 1) == later;
}

void run_merger::close_all_but(const step_id *kept) {
    std::vector<open_run> still;
    /* a run that ended a step earlier comes before one that ends in the step kept */
    for (int pass = 0; pass < 2; ++pass)
        for (const open_run &r : open_) {
            const bool ends_now = r.run.last == current_;
            if (!(kept && *kept == r.run.last) && pass == int(ends_now)) out_(r.run);
        }
    for (open_run &r : open_)
        if (kept && *kept == r.run.last) still.push_back(std::move(r));
    open_ = std::move(still);
    by_key_.clear();
    for (size_t i = 0; i < open_.size(); ++i) by_key_[open_[i].key] = i;
}

void run_merger::operator()(const difference &d) {
    const step_id &step = d.push().step;
    if (!started_ || step != current_) {
        /* the runs the step just ended did not reach stay open only if this step follows it */
        if (started_) close_all_but(follows(step, current_) ? &current_ : nullptr);
        current_ = step;
        started_ = true;
    }
    std::string key = key_of(d);
    const auto it   = by_key_.find(key);
    /* the same push twice in a step is two runs: a run takes one difference per step */
    if (it != by_key_.end() && open_[it->second].run.last != step) {
        difference_run &run = open_[it->second].run;
        run.last            = step;
        ++run.steps;
        return;
    }
    by_key_[key] = open_.size();
    open_.push_back({{d, step, 1}, std::move(key)});
}

void run_merger::finish() {
    if (started_) close_all_but(nullptr);
    started_ = false;
}

}  // namespace isp_case
