/* Every problem of a case that would stop or spoil a replay, found without aborting: the files a
 * replay reads are parsed here, and the converters run on them with their messages and
 * exceptions caught. */
#ifndef ISP_CASE_CHECK_H
#define ISP_CASE_CHECK_H

#include <cstdio>
#include <string>
#include <vector>

#include "tools/case_layout.h"

namespace isp_case {

enum class problem_kind {
    frame_directory, /* cfgs/f0 missing, or a frame directory after a gap */
    missing_file,
    unreadable_file,
    syntax,
    non_finite,
    not_object,
    field,    /* a converter printed "read json_obj failed: ..." */
    raises,   /* a converter raised (curves and meshes) */
    channels, /* a channel count the channelled modules reject */
    grid,     /* an empty grid the modules that test it reject */
};

struct problem {
    problem_kind kind;
    std::string where; /* the file or directory, empty for settings */
    std::string text;
    size_t count = 1; /* field problems: how many messages of this text */
};

struct check_result {
    size_t files_read = 0;
    std::vector<problem> problems;
};

/* The files a replay reads that would end the process inside the library: missing, unreadable,
 * not JSON, or holding a number out of range. */
std::vector<problem> replay_blockers(const run_settings &settings);

check_result check_case(const run_settings &settings, const case_contents &contents);
void print_check(std::FILE *out, const run_settings &settings, const check_result &result);

}  // namespace isp_case

#endif
