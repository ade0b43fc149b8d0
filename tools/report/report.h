/* isp-case report: the page of a dump, or of two dumps compared. */
#ifndef ISP_CASE_REPORT_REPORT_H
#define ISP_CASE_REPORT_REPORT_H

#include <string>

namespace isp_case {

struct report_settings {
    std::string dump_dir, against_dir; /* against_dir empty: one run */
    std::string out_file = "report.html";
    int frame            = -1;  /* the step "frame N" shown beside setup; -1 for the last one */
    double tolerance     = 0.0; /* on real values, as diff */
};

/* Writes the page; messages go to standard error. Returns an exit status: 0 written, 1 the page
 * could not be written, 2 a page that would overwrite a file of a dump it reads, 3 a dump that
 * cannot be read or a frame it does not hold. */
int run_report(const report_settings &settings);

}  // namespace isp_case

#endif
