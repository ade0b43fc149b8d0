/* Differences merged over consecutive steps: a gain that differs the same way in frames 2, 3 and
 * 4 is one entry "frames 2-4", not three. */
#ifndef ISP_CASE_COMPARE_RUNS_H
#define ISP_CASE_COMPARE_RUNS_H

#include <stddef.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tools/compare/engine.h"

namespace isp_case {

/* One difference over consecutive steps: the same module, channel, command, group, member and
 * element, the same kind, codes, values, formats and register paths on both sides. */
struct difference_run {
    difference first; /* as its first step had it: first.push().step, first.files */
    step_id last;     /* the step it last came in */
    size_t steps = 1;
};

/* Takes the engine's differences in the order it hands them out and hands on each run once a
 * step passes without it; runs that end together come in the order of their first difference.
 * Only the runs still open (those of the last two steps) are held. */
class run_merger {
  public:
    using sink = std::function<void(const difference_run &)>;
    /* the steps of both runs, for which steps follow one another */
    run_merger(const dump &a, const dump &b, sink out);

    void operator()(const difference &d);
    /* Hands on the runs still open. */
    void finish();

  private:
    struct open_run {
        difference_run run;
        std::string key;
    };
    bool follows(const step_id &later, const step_id &earlier) const;
    /* hands on the open runs whose last step is not `kept`, those ending first first */
    void close_all_but(const step_id *kept);

    std::vector<step_id> steps_; /* of both dumps, in replay order */
    sink out_;
    std::vector<open_run> open_; /* in the order they began */
    std::map<std::string, size_t> by_key_;
    bool started_ = false;
    step_id current_;
};

}  // namespace isp_case

#endif
