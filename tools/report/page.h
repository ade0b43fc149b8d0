/* The report page of a dump, or of two dumps side by side: one HTML file that a browser shows
 * offline, with inline SVG and one inline stylesheet, no script. */
#ifndef ISP_CASE_REPORT_PAGE_H
#define ISP_CASE_REPORT_PAGE_H

#include <string>
#include <vector>

#include "tools/dump/reader.h"

namespace isp_case {
namespace report {

/* The steps a page shows: init and frame `frame`, the last frame of the dump when frame < 0.
 * Returns an empty list with a message when the frame is not in the dump. */
std::vector<std::string> shown_steps(const dump_view &dump, int frame, std::string &error);

/* The page of `a`, compared with `b` when b is not null. */
std::string render_page(const dump_view &a, const dump_view *b,
                        const std::vector<std::string> &steps);

}  // namespace report
}  // namespace isp_case

#endif
