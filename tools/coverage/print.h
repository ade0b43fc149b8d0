/* Views of a suite's register coverage, every one least exercised field first: text for people,
 * JSON and CSV for scripts, one offline HTML page. */
#ifndef ISP_CASE_COVERAGE_PRINT_H
#define ISP_CASE_COVERAGE_PRINT_H

#include <cstdio>
#include <string>

#include "tools/coverage/coverage.h"

namespace isp_case {

void print_coverage_text(std::FILE *out, const coverage_report &report);
void print_coverage_json(std::FILE *out, const coverage_report &report);
void print_coverage_csv(std::FILE *out, const coverage_report &report);
std::string coverage_page(const coverage_report &report);

}  // namespace isp_case

#endif
