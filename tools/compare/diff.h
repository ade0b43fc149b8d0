/* The diff subcommand's printers over the comparison engine: the differences of two dumps per
 * step and module as text, or as one JSON object. */
#ifndef ISP_CASE_DIFF_H
#define ISP_CASE_DIFF_H

#include <cstdio>
#include <optional>
#include <string>

namespace isp_case {

struct diff_settings {
    std::string a, b;       /* dump directories */
    double tolerance = 0.0; /* on real values; codes always compare exactly */
    std::optional<int> frame;
    bool json = false;
};

/* Prints the comparison on out, a dump that cannot be read on err; returns the exit status:
 * 0 identical, 1 different, 3 a dump that cannot be read or lacks the frame asked for. */
int diff_dumps(const diff_settings &settings, std::FILE *out, std::FILE *err);

}  // namespace isp_case

#endif
