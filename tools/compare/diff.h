/* The diff subcommand's printers over the comparison engine: the differences of two dumps per
 * step and module as text, or as one JSON object, each difference repeated over consecutive
 * steps once with its range; or the first divergence only, counts per module and group, or
 * nothing but the exit status. */
#ifndef ISP_CASE_DIFF_H
#define ISP_CASE_DIFF_H

#include <cstdio>
#include <optional>
#include <string>

namespace isp_case {

enum class diff_view {
    all,   /* every difference, merged over consecutive steps */
    first, /* the first difference; the dumps are read no further */
    stat,  /* counts per module and group */
    quiet, /* nothing: the exit status says it */
};

struct diff_settings {
    std::string a, b;           /* what to compare, as the user named them */
    std::string dump_a, dump_b; /* the dump directories, where not a and b themselves (a case
                                 * replayed into a temporary directory) */
    double tolerance = 0.0;     /* on real values; codes always compare exactly */
    std::optional<int> frame;
    bool json      = false;
    diff_view view = diff_view::all;
};

/* Prints the comparison on out, a dump that cannot be read on err; returns the exit status:
 * 0 identical, 1 different, 3 a dump that cannot be read or lacks the frame asked for. The
 * output is written as the dumps are read: a push that cannot be read ends it where it is. */
int diff_dumps(const diff_settings &settings, std::FILE *out, std::FILE *err);

}  // namespace isp_case

#endif
