/* The lint of a case: every register file a replay would read, parsed as the library parses it,
 * its values held against the block's register map (type, range and precision in the field's
 * fixed-point format, unknown and repeated keys), the partitions of a load compared on members
 * that are not per partition, the converters run on it with their messages and exceptions caught,
 * and the run's settings against what the modules accept. check prints the findings; replay runs
 * the same lint before anything else, so the two never disagree. */
#ifndef ISP_CASE_LINT_H
#define ISP_CASE_LINT_H

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "convert/common/register_map.h"
#include "tools/core/case_layout.h"
#include "tools/core/findings.h"
#include "tools/lint/json_locations.h"

namespace isp_case {

struct lint_result {
    size_t files_read = 0;
    std::vector<finding> findings; /* settings and frames first, then file by file in read order */
};

lint_result lint_case(const run_settings &settings, const case_contents &contents);

/* Findings that end the process inside the library before a replay could report anything. */
bool stops_library(const finding &f);

/* A value a partition's file gives a member that is not per partition: after a load only the
 * last partition's value reaches the hardware, so the partitions must agree. */
struct single_value {
    std::string label, text, format, modules;
    json_place at;
    std::vector<uint32_t> codes; /* one code, or a whole table */
};
/* by group, member and element */
using single_values = std::map<std::string, single_value>;

/* The modules that run a converter group on the file, ", "-separated; empty when none does. */
using group_readers = std::function<std::string(const char *group)>;

/* One parsed register file (its root an object) against a block map with rows: unknown keys,
 * then every row that a reader runs, in read order. `unreadable` receives "register.field" of
 * every field the converters report as not read, `raising` the groups whose tables raise. */
std::vector<finding> lint_rows(const isp::block_map &map, const located_document &doc,
                               const std::string &file, const group_readers &readers,
                               single_values *singles, std::vector<std::string> *unreadable,
                               std::vector<std::string> *raising);

/* The integer each field of a parsed register file holds, found through the paths the lint
 * checks: `each` receives the row, the index of the row's path range and the number as the
 * library reads it (a field's truncated and saturated to a signed 32-bit integer, a table
 * entry's to an unsigned one), for every field whose file gives it a number. Missing fields
 * and values of other types are passed over: the lint reports them. */
using field_integer =
    std::function<void(const isp::field_row &row, uint32_t index, int64_t integer)>;
void read_integers(const isp::block_map &map, const located_document &doc,
                   const field_integer &each);

}  // namespace isp_case

#endif
