/* The report page of a dump, or of two dumps side by side: one HTML file that a browser shows
 * offline, with inline SVG and one inline stylesheet, no script. */
#ifndef ISP_CASE_REPORT_PAGE_H
#define ISP_CASE_REPORT_PAGE_H

#include <map>
#include <set>
#include <string>
#include <vector>

#include "tools/compare/engine.h"
#include "tools/dump/reader.h"

namespace isp_case {
namespace report {

/* A push of a step the page shows, with its members. */
struct shown_push {
    size_t index = 0; /* in the dump's pushes */
    dump_push push;
    decoded_push decoded;
};

/* One row of "what changed": a member of a pushed group that differs, or a push one run lacks. */
struct change_row {
    const dump_push *push = nullptr;
    size_t index          = 0; /* of the push in its dump: A's, or B's for a push A lacks */
    bool only_a = false, only_b = false;
    std::string member, format;
    size_t elements = 0, total = 0; /* elements differing, of the member's */
    difference first;               /* the first difference of the member */
};

/* What the comparison engine found between the two runs, gathered for the page. */
struct page_changes {
    comparison_summary summary;
    std::vector<change_row> rows;
    std::vector<bool> differs; /* per push of A */
    /* the differing elements of the members of A's shown pushes */
    std::map<size_t, std::map<std::string, std::set<size_t>>> marks;
};

struct page_run {
    const dump *run = nullptr;
    std::vector<shown_push> shown; /* the pushes of the steps shown, in replay order */
};

struct page_input {
    page_run a, b;                    /* b.run null: one run */
    std::vector<step_id> steps;       /* shown: setup and one frame */
    std::vector<size_t> b_of_a;       /* A's push -> B's, push_pairs::npos for none */
    std::map<size_t, size_t> shown_b; /* B's push index -> its place in b.shown */
    page_changes changes;
};

/* The steps a page shows: setup and frame `frame`, the last frame of the dump when frame < 0.
 * Returns an empty list with a message when the frame is not in the dump. */
std::vector<step_id> shown_steps(const dump &d, int frame, std::string &error);

std::string render_page(const page_input &input);

}  // namespace report
}  // namespace isp_case

#endif
