/* The register coverage of a suite: for every field of every block whose register files the
 * suite holds, how many cases, frames and partitions give it a value, the spread of its values
 * and how often they sit at the format's limits. Each file is read once through the lint's
 * reader; what is kept is a fixed tally per field, never the values themselves. */
#ifndef ISP_CASE_COVERAGE_H
#define ISP_CASE_COVERAGE_H

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <vector>

#include "tools/core/settings.h"
#include "tools/regmap/regmap.h"

namespace isp_case {

/* Distinct values a field's tally tells apart; past it the count reads "64+". */
constexpr size_t coverage_distinct_cap = 64;

/* One field over the whole suite. Integers are those the register files hold, as the library
 * reads them (truncated and saturated); real values are integer times the format's step. */
struct field_coverage {
    regmap_field field;
    field_range range;
    uint32_t cases = 0, frames = 0;  /* frames: frame directories of all cases */
    uint32_t partitions = 0;         /* partitions of all frames of all cases */
    uint64_t values     = 0;         /* files that give it a number (channels count apart) */
    int64_t min = 0, max = 0;        /* when values > 0 */
    uint64_t at_min = 0, at_max = 0; /* values at (or past) the format's smallest, largest code */
    size_t distinct = 0;             /* at most coverage_distinct_cap */
    bool more       = false;         /* more distinct values than the cap */

    bool held() const { return values > 0; }
    bool constant() const { return distinct == 1; }
};

struct unreadable_file {
    std::string path, problem;
};

struct coverage_report {
    size_t cases = 0, files_read = 0;
    size_t files_unmapped = 0; /* files of blocks without a register map: not read */
    std::vector<unreadable_file> unreadable;
    std::vector<std::string> blocks;    /* blocks whose files the suite holds, in map order */
    std::vector<field_coverage> fields; /* every field of those blocks, in register map order */
};

/* Cases are added one by one; the report can be taken at any time. */
class coverage_tally {
  public:
    coverage_tally();
    /* Reads every register file a replay with these settings reads, each once. A file that is
     * not there is not counted: the case does not use the block (check says more). */
    void add_case(const run_settings &settings);
    coverage_report report() const;

  private:
    struct block_slots {
        const isp::block_map *map = nullptr;
        std::vector<std::vector<uint32_t>> by_row; /* field slot by row and index of its range */
        bool used = false;
    };
    struct last_place {
        uint32_t case_id = UINT32_MAX;
        int frame = 0, partition = 0;
    };
    void count(uint32_t slot, uint32_t case_id, int frame, int partition, int64_t integer);

    std::vector<block_slots> blocks_;
    std::vector<field_coverage> fields_;
    std::vector<last_place> places_;
    std::vector<std::vector<int64_t>> distinct_; /* sorted, capped */
    size_t cases_ = 0, files_read_ = 0, files_unmapped_ = 0;
    std::vector<unreadable_file> unreadable_;
};

/* Least exercised first: fewest distinct values (a field no file holds has none), then fewest
 * cases, then fewest values; ties keep the register map's order. */
std::vector<const field_coverage *> least_exercised(const coverage_report &report);

/* The cases the command line names, with the settings to read them with: suites and cases
 * found as batch finds them (each case's own defaults), dumps by the case their manifest
 * records, with the grid, channels, frames and modules of that run. A case named twice is read
 * once. False with a message on a path that is neither, a dump that cannot be read or whose
 * case is not there, or no case at all. */
bool coverage_cases(const std::vector<std::string> &paths, std::vector<case_options> &cases,
                    std::string &error);

}  // namespace isp_case

#endif
