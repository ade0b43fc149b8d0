/* Comparing two dumps member by member through their manifests: the pushes one side lacks and
 * every member whose codes or values differ, grouped per step and module. */
#ifndef ISP_CASE_DIFF_H
#define ISP_CASE_DIFF_H

#include <cstdio>
#include <string>

namespace isp_case {

struct diff_settings {
    std::string a, b;       /* dump directories */
    double tolerance = 0.0; /* on real values, and on the codes of members without a format */
    bool json        = false;
};

/* Prints the comparison on out (text, or one JSON object), a dump that cannot be read on err;
 * returns the exit status: 0 identical, 1 different, 3 a dump that cannot be read. */
int diff_dumps(const diff_settings &settings, std::FILE *out, std::FILE *err);

}  // namespace isp_case

#endif
