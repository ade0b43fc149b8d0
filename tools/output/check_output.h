/* The case check: the lint of every file a replay reads and of the run's settings, printed as
 * text or as one JSON document. */
#ifndef ISP_CASE_CHECK_H
#define ISP_CASE_CHECK_H

#include <cstdio>

#include "tools/lint/lint.h"

namespace isp_case {

using check_result = lint_result;

check_result check_case(const run_settings &settings, const case_contents &contents);
/* One line per finding, then a count per kind and the result. */
void print_check(std::FILE *out, const run_settings &settings, const check_result &result);
/* The run, the counts and every finding as one JSON document (schema in docs/isp-case.md). */
void print_check_json(std::FILE *out, const run_settings &settings, const check_result &result);
/* One GitHub workflow annotation per finding: "::error file=F,line=L,col=C,title=KIND::TEXT". */
void print_check_github(std::FILE *out, const check_result &result);

}  // namespace isp_case

#endif
