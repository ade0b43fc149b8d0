/* Differences in register terms, one line each, for every printer of a comparison and for the
 * reasons of a failed case: the step with the frame directory it read, module, group, member and
 * element, the register path of the row that fills it, its register files, both codes and real
 * values. */
#ifndef ISP_CASE_COMPARE_WORDING_H
#define ISP_CASE_COMPARE_WORDING_H

#include <stddef.h>

#include <optional>
#include <string>

#include "tools/compare/engine.h"

namespace isp_case {

/* "256", "1.5"; "-" for a value that is not a finite number. */
std::string number_text(double v);

/* "wbc.ctrl.d_gain", "channel 1 cc.lin.x", "wbc.ctrl" for the push itself; a command the tool
 * does not know is named by its number, "wbc.cmd05"; without the module under a module's
 * heading: "ctrl.d_gain". */
std::string member_name(const dump_push &p, const std::string &member, bool with_module = true);
/* The member's name with the element: "wbc.ctrl.d_gain[0]". */
std::string element_name(const difference &d, bool with_module = true);

/* What differs, after the element: "code 256 | 384, value 1 | 1.5", "format u10.8 | u10.9",
 * "register isp_wbc.d_gain.val | isp_wbc.x.val", "only in A", "bytes differ". */
std::string difference_what(const difference &d);

/* "wbc.ctrl.d_gain[0] at isp_wbc.d_gain.val in cfgs/f2/rtl_wbc_p0.json: code 256 | 384, value
 * 1 | 1.5": the difference without its step. Given the last step of a run of steps that read
 * several frame directories, the files name them all: "cfgs/f{2..4}/rtl_wbc_p0.json". */
std::string difference_text(const difference &d, bool with_module = true,
                            const step_id *last = nullptr);

/* "frame 2 (f2): wbc.ctrl.d_gain[0] at isp_wbc.d_gain.val in cfgs/f2/rtl_wbc_p0.json: code
 * 256 | 384, value 1 | 1.5; 3 more differences". `more` counts the differences after it as the
 * engine hands them out (element by element, step by step); without it the line ends after the
 * values. */
std::string first_divergence_text(const difference &first, std::optional<size_t> more);

/* The first difference of two dumps and how many follow it. */
struct divergence {
    std::optional<difference> first;
    size_t more = 0;
    comparison_summary summary;
};
divergence first_divergence(const dump &a, const dump &b, const compare_options &options);

/* "frame 2 (f2)" for one step, "frames 2-4 (f2-f4)", "frames 5-7 (f3 again)", "frames 2-5 (f2-f3,
 * then f3 again)", "setup (f0) to frame 2 (f2)" for consecutive steps first to last. */
std::string step_range_label(const step_id &first, const step_id &last);

}  // namespace isp_case

#endif
